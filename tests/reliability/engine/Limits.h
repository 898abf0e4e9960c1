#pragma once

#include <sys/resource.h>

#include <ctime>

namespace wagemill::test {

inline constexpr double maxSeconds = WAGEMILL_SANITIZED ? 10 : 1;
inline constexpr long maxMegabytes = WAGEMILL_SANITIZED ? 2048 : 256;

/// Computing time of this process, in seconds: what other programs take from the machine does not count.
inline double secondsUsed()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

/// The most memory that this process ever had.
inline long peakMegabytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

} // namespace wagemill::test
