#pragma once

#include <benchmark/benchmark.h>

namespace wagemill::bench {

/// Every figure is a median of this many measurements.
inline constexpr int measurements = 21;

/// Shows median and spread of the measurements, in milliseconds of the clock on the wall.
/// seconds  the least time that one measurement takes, over as many turns as fit
inline void repeated(benchmark::internal::Benchmark* benchmark, double seconds = 0.05)
{
    benchmark->Unit(benchmark::kMillisecond)
        ->UseRealTime()
        ->MinTime(seconds)
        ->Repetitions(measurements)
        ->ReportAggregatesOnly();
}

} // namespace wagemill::bench
