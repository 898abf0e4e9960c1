#pragma once

#include <windows.h>

#include <memory>
#include <string>

/// Whose a file is, and who may enter a new one. Built on Windows alone.
namespace wagemill {

struct CloseWindowsHandle {
    using pointer = HANDLE;
    void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};

/// A handle that closes itself; null for none.
using WindowsHandle = std::unique_ptr<void, CloseWindowsHandle>;

/// The answer of a call that says INVALID_HANDLE_VALUE for none.
WindowsHandle ownedHandle(HANDLE handle);

/// Whether the open file or folder is the user's own. True where the disk keeps no owners.
/// handle  opened with READ_CONTROL
bool isUsersOwn(HANDLE handle);

struct FreeLocalMemory {
    void operator()(void* memory) const { ::LocalFree(memory); }
};

/// What a new file or folder is made with that belongs to the user and that the user and the system alone may enter,
/// whatever the folder around it grants others.
class PrivateSecurity {
public:
    PrivateSecurity();
    /// Null, for the permissions of the folder around it, when the system does not tell who the user is.
    SECURITY_ATTRIBUTES* attributes() { return m_descriptor ? &m_attributes : nullptr; }

private:
    std::unique_ptr<void, FreeLocalMemory> m_descriptor;
    SECURITY_ATTRIBUTES m_attributes = {sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
};

} // namespace wagemill
