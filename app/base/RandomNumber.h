#pragma once

#include <chrono>
#include <cstdint>
#include <random>

namespace wagemill {

/// A whole number from `low` to `low` + `span` - 1, at random: the generator is seeded from the clock before each draw.
/// span  at least 1
inline std::int32_t randomWholeNumber(std::int32_t low, std::int32_t span)
{
    // The clock alone would draw equal numbers within one of its ticks, and two programs started at once the same ones.
    const auto timer = static_cast<unsigned>(std::chrono::system_clock::now().time_since_epoch().count());
    std::mt19937 generator(timer ^ std::random_device{}());
    return static_cast<std::int32_t>(std::uniform_real_distribution<double>(0, 1)(generator) * span) + low;
}

} // namespace wagemill
