#pragma once

namespace wagemill::test {

/// From here on the kernel ends this process with SIGSYS when it starts a process or opens a socket. Threads are
/// allowed. False where the kernel knows no such filter.
bool forbidProcessesAndSockets();

} // namespace wagemill::test
