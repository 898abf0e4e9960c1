#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace wagemill {

/// A field of an employee that could not be refilled from the store.
struct RefillFailure {
    std::int16_t row;  ///< of the employee, from 0
    std::size_t field; ///< index into rowFields
    std::string reason;
};

/// All of them in one text that fits the screen. Fields one after the other with the same reason share a line:
///   Employee 2, Hourly Wage: "abc" is not a number.
///   Employee 2, Overtime Rate to employee 25, Other Deduction: The settings in ... cannot be read: ...
/// failures  in the order of the window, at least one
std::string refillReport(std::span<const RefillFailure> failures);

} // namespace wagemill
