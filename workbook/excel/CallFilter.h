#pragma once

#include <memory>

struct IMessageFilter;

namespace wagemill::automation {

/// While this lives, calls from this thread to other processes are waited for without letting any window event run, and
/// one that the other process turns away fails at once.
class CallFilter {
public:
    CallFilter(const CallFilter&) = delete;
    CallFilter& operator=(const CallFilter&) = delete;
    ~CallFilter();

    /// The one filter of the thread, which all its sessions share: they may end in any order. COM is initialised.
    static std::shared_ptr<CallFilter> ofThisThread();

private:
    CallFilter();

    IMessageFilter* m_previous = nullptr; ///< the filter that was there before
};

} // namespace wagemill::automation
