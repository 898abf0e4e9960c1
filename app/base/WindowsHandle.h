#pragma once

#include <windows.h>

#include <memory>

namespace wagemill {

struct CloseWindowsHandle {
    using pointer = HANDLE;
    void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};

/// A handle that closes itself; null for none. Built on Windows alone.
using WindowsHandle = std::unique_ptr<void, CloseWindowsHandle>;

} // namespace wagemill
