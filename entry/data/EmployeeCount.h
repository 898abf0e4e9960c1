#pragma once

#include <charconv>
#include <cstdint>
#include <string_view>

namespace wagemill {

/// As many as the payroll template has room for.
inline constexpr std::int16_t mostEmployees = 25;

/// How many employees the window is to hold, as asked for in plain digits: 1 to 25. Anything else is one.
inline std::int16_t employeeCount(std::string_view wanted)
{
    std::int16_t count = 1;
    const auto [end, error] = std::from_chars(wanted.data(), wanted.data() + wanted.size(), count);
    const bool isNumber = error == std::errc() && end == wanted.data() + wanted.size();
    return isNumber && count >= 1 && count <= mostEmployees ? count : std::int16_t{1};
}

} // namespace wagemill
