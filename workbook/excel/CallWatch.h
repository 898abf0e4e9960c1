#pragma once

#include <atomic>
#include <cstdint>

namespace wagemill::automation {

/// A call to Excel is under way for as long as this lives; there is one at a time, and it lets nothing else run. When
/// it has not come back after 20 seconds, a message of another thread says that Excel may be asking something, and
/// offers to bring Excel to the front. The message goes when the call comes back.
class WatchedCall {
public:
    WatchedCall();
    WatchedCall(const WatchedCall&) = delete;
    WatchedCall& operator=(const WatchedCall&) = delete;
    ~WatchedCall();

    /// How long a call may take before the user is asked.
    static inline std::atomic<std::uint64_t> patience = 20'000; // milliseconds
};

} // namespace wagemill::automation
