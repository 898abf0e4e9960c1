#pragma once

#include <cstddef>
#include <span>

namespace wagemill {

/// The payroll template, an Excel 97-2003 template. The bytes live as long as the program.
std::span<const std::byte> payrollTemplateFile();

} // namespace wagemill
