#include "app/base/Dispatch.h"
#include "app/base/PlatformFiles.h"
#include "app/base/WindowsHandle.h"
#include "app/base/WindowsText.h"

#include <aclapi.h>
#include <ole2.h>
#include <sddl.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <system_error>
#include <utility>

namespace wagemill::platform {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void throwLastError()
{
    throw std::system_error(static_cast<int>(::GetLastError()), windowsErrors());
}

void require(BOOL outcome)
{
    if (!outcome)
        throwLastError();
}

struct FreeLocalMemory {
    void operator()(void* memory) const { ::LocalFree(memory); }
};

/// A security identifier that the process's token holds: TokenUser is who runs the program, TokenOwner whom its new
/// files belong to, which is the administrators' group for some of its members.
class TokenIdentifier {
public:
    explicit TokenIdentifier(TOKEN_INFORMATION_CLASS which)
    {
        HANDLE token = nullptr;
        if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token))
            return;
        const WindowsHandle owner(token);
        DWORD size = 0;
        m_isKnown = ::GetTokenInformation(token, which, m_bytes.data(), static_cast<DWORD>(m_bytes.size()), &size) != 0;
    }

    /// Null when the system does not say.
    PSID identifier() const
    {
        static_assert(offsetof(TOKEN_USER, User.Sid) == offsetof(TOKEN_OWNER, Owner)); // both begin with it
        return m_isKnown ? reinterpret_cast<const TOKEN_OWNER*>(m_bytes.data())->Owner : nullptr;
    }

private:
    alignas(TOKEN_USER) std::array<std::byte, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> m_bytes = {};
    bool m_isKnown = false;
};

bool isIdentifier(PSID identifier, TOKEN_INFORMATION_CLASS which)
{
    const TokenIdentifier own(which);
    return own.identifier() != nullptr && ::EqualSid(identifier, own.identifier());
}

/// True where the disk keeps no owners.
/// handle  opened with READ_CONTROL
bool isUsersOwn(HANDLE handle)
{
    DWORD flags = 0;
    if (!::GetVolumeInformationByHandleW(handle, nullptr, 0, nullptr, nullptr, &flags, nullptr, 0) ||
        (flags & FILE_PERSISTENT_ACLS) == 0)
        return true;
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR raw = nullptr;
    if (::GetSecurityInfo(handle, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr, nullptr, nullptr,
                          &raw) != ERROR_SUCCESS)
        return false;
    const std::unique_ptr<void, FreeLocalMemory> descriptor(raw);
    return owner != nullptr && (isIdentifier(owner, TokenUser) || isIdentifier(owner, TokenOwner));
}

/// What a new file or folder is made with that belongs to the user and that the user and the system alone may enter,
/// whatever the folder around it grants others.
class PrivateSecurity {
public:
    PrivateSecurity()
    {
        const TokenIdentifier user(TokenUser);
        wchar_t* text = nullptr;
        if (user.identifier() == nullptr || !::ConvertSidToStringSidW(user.identifier(), &text))
            return;
        const std::unique_ptr<wchar_t, FreeLocalMemory> textOwner(text);
        const std::wstring name(text);
        // Owner the user; nothing inherited; full access for the user and the system, also to what is made inside.
        const std::wstring rules = L"O:" + name + L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;" + name + L")";
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        if (::ConvertStringSecurityDescriptorToSecurityDescriptorW(rules.c_str(), SDDL_REVISION_1, &descriptor,
                                                                   nullptr))
            m_descriptor.reset(descriptor);
        m_attributes.lpSecurityDescriptor = descriptor;
    }

    /// Null, for the permissions of the folder around it, when the system does not say who the user is.
    SECURITY_ATTRIBUTES* attributes() { return m_descriptor ? &m_attributes : nullptr; }

private:
    std::unique_ptr<void, FreeLocalMemory> m_descriptor;
    SECURITY_ATTRIBUTES m_attributes = {sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
};

constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// Null when it cannot be opened.
WindowsHandle openFile(const fs::path& path, DWORD access, DWORD share, DWORD disposition, DWORD flags,
                       SECURITY_ATTRIBUTES* security = nullptr)
{
    const HANDLE handle = ::CreateFileW(path.c_str(), access, share, security, disposition, flags, nullptr);
    return WindowsHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

WindowsHandle openFile(const fs::path& path, Opening how, SECURITY_ATTRIBUTES* userAlone)
{
    switch (how) {
    case Opening::Read:
        return openFile(path, GENERIC_READ, shareAll, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
    case Opening::ReadOwn:
        return openFile(path, GENERIC_READ, shareAll, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT);
    case Opening::Write:
        return openFile(path, GENERIC_WRITE | READ_CONTROL | FILE_READ_ATTRIBUTES, FILE_SHARE_READ, OPEN_ALWAYS,
                        FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, userAlone);
    case Opening::MakePrivate:
        return openFile(path, GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, userAlone);
    case Opening::MakeNormal:
        return openFile(path, GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
    }
    return nullptr;
}

/// file  opened with READ_CONTROL and FILE_READ_ATTRIBUTES
FileFacts factsOf(HANDLE file)
{
    BY_HANDLE_FILE_INFORMATION info = {};
    if (::GetFileType(file) != FILE_TYPE_DISK || !::GetFileInformationByHandle(file, &info))
        return {};
    FILE_ATTRIBUTE_TAG_INFO tag = {};
    const bool isLink = (info.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
                        (!::GetFileInformationByHandleEx(file, FileAttributeTagInfo, &tag, sizeof tag) ||
                         IsReparseTagNameSurrogate(tag.ReparseTag));
    const bool isFolder = (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const auto type = isLink ? fs::file_type::symlink : isFolder ? fs::file_type::directory : fs::file_type::regular;
    const std::uint64_t size = std::uint64_t{info.nFileSizeHigh} << 32U | info.nFileSizeLow;
    return {type, isUsersOwn(file), true, info.nNumberOfLinks, size};
}

/// The most that one call is asked to move.
DWORD blockOf(std::size_t bytes)
{
    constexpr std::size_t max = std::size_t{1} << 24U;
    return static_cast<DWORD>(std::min(bytes, max));
}

} // namespace

std::optional<FileFacts> factsAt(const fs::path& path)
{
    const WindowsHandle file = openFile(path, READ_CONTROL | FILE_READ_ATTRIBUTES, shareAll, OPEN_EXISTING,
                                        FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT);
    return file ? std::optional(factsOf(file.get())) : std::nullopt;
}

OpenFile::OpenFile(const fs::path& path, Opening how)
{
    PrivateSecurity security;
    m_handle = reinterpret_cast<std::intptr_t>(openFile(path, how, security.attributes()).release());
    require(m_handle != 0);
}

OpenFile::~OpenFile()
{
    const WindowsHandle closed(reinterpret_cast<HANDLE>(m_handle));
}

FileFacts OpenFile::facts() const
{
    return factsOf(reinterpret_cast<HANDLE>(m_handle));
}

std::size_t OpenFile::read(std::span<std::byte> buffer) const
{
    DWORD count = 0;
    require(::ReadFile(reinterpret_cast<HANDLE>(m_handle), buffer.data(), blockOf(buffer.size()), &count, nullptr));
    return count;
}

std::size_t OpenFile::write(std::span<const std::byte> bytes) const
{
    DWORD count = 0;
    require(::WriteFile(reinterpret_cast<HANDLE>(m_handle), bytes.data(), blockOf(bytes.size()), &count, nullptr));
    return count;
}

void OpenFile::flush() const
{
    require(::FlushFileBuffers(reinterpret_cast<HANDLE>(m_handle)));
}

void OpenFile::close()
{
    require(::CloseHandle(reinterpret_cast<HANDLE>(std::exchange(m_handle, 0))));
}

void deleteByForce(const fs::path& path)
{
    using namespace automation;
    const Apartment apartment;
    try {
        const Dispatch fileSystem(L"Scripting.FileSystemObject", CLSCTX_INPROC_SERVER);
        fileSystem.invoke(fileSystem.identifiers({L"DeleteFile"}), CallKind::Call,
                          arguments(Variant::ofText(path.native()), Variant::ofBoolean(true)));
    } catch (const CallFailure&) {
        return; // ignored
    }
}

/// Of a file that another program has open the system says that access is denied, and to whoever asks for its deletion
/// what is the matter.
void renameFile(const fs::path& from, const fs::path& to)
{
    if (::MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING))
        return;
    const auto error = static_cast<int>(::GetLastError());
    const WindowsHandle target = openFile(to, DELETE, shareAll, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT);
    const bool isOpenElsewhere = !target && ::GetLastError() == ERROR_SHARING_VIOLATION;
    throw std::system_error(isOpenElsewhere ? ERROR_SHARING_VIOLATION : error, windowsErrors());
}

fs::path parentOfPrivateFolders()
{
    std::array<wchar_t, MAX_PATH + 1> folder;
    const DWORD length = ::GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
    return {folder.data(), folder.data() + std::min<std::size_t>(length, folder.size())};
}

void makePrivateFolder(const fs::path& folder)
{
    PrivateSecurity security;
    require(::CreateDirectoryW(folder.c_str(), security.attributes()));
}

/// The lock is a mutex that all programs share that know the folder, however they name it.
std::optional<std::shared_ptr<void>> tryToLockFolder(const fs::path& folder)
{
    const WindowsHandle open = openFile(folder, 0, shareAll, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    BY_HANDLE_FILE_INFORMATION info = {};
    if (!open || !::GetFileInformationByHandle(open.get(), &info))
        return nullptr;
    const std::wstring name = L"Global\\Wagemill-" + std::to_wstring(info.dwVolumeSerialNumber) + L"-" +
                              std::to_wstring(info.nFileIndexHigh) + L"-" + std::to_wstring(info.nFileIndexLow);
    WindowsHandle mutex(::CreateMutexW(nullptr, FALSE, name.c_str()));
    if (!mutex)
        return nullptr;
    const DWORD outcome = ::WaitForSingleObject(mutex.get(), 0);
    if (outcome != WAIT_OBJECT_0 && outcome != WAIT_ABANDONED) // of a program that died
        return std::nullopt;
    return std::shared_ptr<void>(mutex.release(), [](HANDLE held) {
        ::ReleaseMutex(held);
        ::CloseHandle(held);
    });
}

fs::path environmentPath(const char* name)
{
    const std::wstring wideName = toWide(name);
    std::wstring value(::GetEnvironmentVariableW(wideName.c_str(), nullptr, 0), L'\0'); // its ending zero counted
    value.resize(::GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size())));
    return value;
}

void setEnvironmentPath(const char* name, const fs::path& value)
{
    ::SetEnvironmentVariableW(toWide(name).c_str(), value.c_str());
}

void endProcess()
{
    ::OleFlushClipboard(); // what the user copied from a field must outlive the program
    // Ends without asking the libraries in the process to tidy up; what must be undone has been undone.
    ::TerminateProcess(::GetCurrentProcess(), 0);
    std::abort(); // not reached
}

} // namespace wagemill::platform
