#include "app/base/RandomNumber.h"

#include <chrono>
#include <random>

namespace wagemill {

std::int32_t randomWholeNumber(std::int32_t low, std::int32_t span)
{
    // The clock alone would draw equal numbers within one of its ticks, and two programs started at once the same ones.
    static std::mt19937 generator(std::random_device{}());
    const auto timer = static_cast<std::uint64_t>(std::chrono::system_clock::now().time_since_epoch().count());
    std::seed_seq seed{static_cast<std::uint32_t>(timer), static_cast<std::uint32_t>(timer >> 32U),
                       static_cast<std::uint32_t>(generator())};
    generator.seed(seed);
    return static_cast<std::int32_t>(std::uniform_real_distribution<double>(0, 1)(generator) * span) + low;
}

} // namespace wagemill
