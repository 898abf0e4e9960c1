#pragma once

#include <cstdint>

namespace wagemill {

/// A whole number from `low` to `low` + `span` - 1, at random: the generator is seeded from the clock before each draw.
/// span  at least 1
std::int32_t randomWholeNumber(std::int32_t low, std::int32_t span);

} // namespace wagemill
