#pragma once

#include <memory>

namespace wagemill::automation {

/// While the answer lives, calls from this thread to other processes are waited for without letting any window event
/// run, and one that the other process turns away fails at once. All sessions of the thread share it: they may end in
/// any order. COM is initialised.
std::shared_ptr<void> filterCalls();

} // namespace wagemill::automation
