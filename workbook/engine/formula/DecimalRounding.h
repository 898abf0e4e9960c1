#pragma once

#include <cstdint>

namespace wagemill::engine {

enum class Rounding : std::uint8_t { HalfAwayFromZero, AwayFromZero, TowardZero };

/// Rounds to `decimals` digits after the point (their fraction does not count), negative ones before it, by the
/// number's first 15 decimal digits, as cells show it: 1.005 to 2 digits is 1.01.
double roundedNumber(double number, double decimals, Rounding rounding);

} // namespace wagemill::engine
