#pragma once

#include "entry/EmployeePanel.h"

#include <span>

namespace wagemill {

/// Refills every field of these employees. Throws when some cannot be refilled, with all of them in one text that fits
/// the screen, for a store that cannot be used fails for each of up to 408 fields. Fields one after the other with the
/// same reason share a line:
///   - employee 2, Hourly Wage: "abc" is not a number.
///   - employee 2, Overtime Rate to employee 25, Other Deduction: The settings in ... cannot be read: ...
void refillTogether(std::span<EmployeePanel* const> employees);

} // namespace wagemill
