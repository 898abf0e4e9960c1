#pragma once

#include <atomic>
#include <cstdint>
#include <thread>

namespace wagemill::automation {

/// Watches the calls to Excel, which let nothing else run. When one has not come back after 20 seconds, a message of
/// its own thread says that Excel may be asking something, and offers to bring Excel to the front. It goes when the
/// call comes back.
class CallWatch {
public:
    /// A call is under way for as long as this lives; there is one at a time.
    class Call {
    public:
        Call();
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;
        ~Call();
    };

    /// How long a call may take before the user is asked.
    static inline std::atomic<std::uint64_t> patience = 20'000; // milliseconds

private:
    friend class Call;
    CallWatch();
    static CallWatch& ofTheProgram();

    void watch(const std::stop_token& stop);
    void ask();

    std::atomic<std::uint64_t> m_begin = 0; ///< of the call that is under way, in milliseconds; 0: there is none
    std::uint64_t m_asked = 0;              ///< the begin of the call that the user was last asked about
    std::jthread m_thread;
};

} // namespace wagemill::automation
