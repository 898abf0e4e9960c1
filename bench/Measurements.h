#pragma once

namespace wagemill::bench {

/// Every result is a median of this many measurements.
inline constexpr int measurements = 21;

} // namespace wagemill::bench
