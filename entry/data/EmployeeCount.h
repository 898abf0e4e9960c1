#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>

namespace wagemill {

/// As many as the payroll template has room for.
inline constexpr std::int16_t maxEmployees = 25;

struct EmployeeCount {
    std::int16_t count = 1;
    bool isAsWanted = true;
    bool operator==(const EmployeeCount&) const = default;
};

/// How many employees the window is to hold, as asked for in plain digits: 1 to 25, one when nothing is asked for. Of
/// another number the nearest of these is taken, of anything else one.
inline EmployeeCount employeeCount(std::string_view wanted)
{
    if (wanted.empty())
        return {};
    if (wanted.find_first_not_of("0123456789") != std::string_view::npos)
        return {1, false};
    std::int16_t count = maxEmployees + 1; // stays when there are too many digits
    std::from_chars(wanted.data(), wanted.data() + wanted.size(), count);
    const std::int16_t nearest = std::clamp(count, std::int16_t{1}, maxEmployees);
    return {nearest, nearest == count};
}

} // namespace wagemill
