#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>
#include <system_error>

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
    const char* const last = wanted.data() + wanted.size();
    std::int16_t count = maxEmployees + 1; // stays when there are too many digits
    const auto [end, error] = std::from_chars(wanted.data(), last, count);
    if (end != last || error == std::errc::invalid_argument || wanted.front() == '-')
        return {1, false};
    const std::int16_t nearest = std::clamp(count, std::int16_t{1}, maxEmployees);
    return {nearest, nearest == count};
}

} // namespace wagemill
