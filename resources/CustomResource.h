#pragma once

#include <cstddef>
#include <span>

namespace wagemill {

/// The payroll template, an Excel 97-2003 template.
inline constexpr int payrollTemplateResource = 101;

/// The program's own resources of type CUSTOM, by number. The bytes live as long as the program.
/// Throws std::runtime_error for a number that is none.
std::span<const std::byte> customResource(int number);

} // namespace wagemill
