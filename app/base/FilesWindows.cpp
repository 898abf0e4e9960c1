#include "app/base/Dispatch.h"
#include "app/base/PlatformFiles.h"
#include "app/base/WindowsErrors.h"
#include "app/base/WindowsHandle.h"
#include "app/base/text/WideText.h"

#include <aclapi.h>
#include <ole2.h>
#include <sddl.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <io.h>
#include <string>
#include <system_error>

namespace wagemill::platform {

namespace fs = std::filesystem;

namespace {

void require(BOOL outcome)
{
    if (!outcome)
        throw std::system_error(static_cast<int>(::GetLastError()), windowsErrors());
}

using LocalMemory = std::unique_ptr<void, decltype([](void* memory) { ::LocalFree(memory); })>;

/// "S-1-5-..."; empty when the system does not say.
std::wstring textOf(PSID identifier)
{
    wchar_t* text = nullptr;
    if (identifier == nullptr || !::ConvertSidToStringSidW(identifier, &text))
        return {};
    const LocalMemory owner(text);
    return text;
}

/// A security identifier that the process's token holds: TokenUser is who runs the program, TokenOwner whom its new
/// files belong to, which is the administrators' group for some of its members.
std::wstring tokenIdentifier(TOKEN_INFORMATION_CLASS which)
{
    HANDLE token = nullptr;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token))
        return {};
    const WindowsHandle owner(token);
    alignas(TOKEN_USER) std::array<std::byte, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> bytes = {};
    static_assert(offsetof(TOKEN_USER, User.Sid) == offsetof(TOKEN_OWNER, Owner)); // both begin with it
    DWORD size = 0;
    if (!::GetTokenInformation(token, which, bytes.data(), static_cast<DWORD>(bytes.size()), &size))
        return {};
    return textOf(reinterpret_cast<const TOKEN_OWNER*>(bytes.data())->Owner);
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
    const LocalMemory descriptor(raw);
    const std::wstring name = textOf(owner);
    return !name.empty() && (name == tokenIdentifier(TokenUser) || name == tokenIdentifier(TokenOwner));
}

/// What a new file or folder is made with that belongs to the user and that the user and the system alone may enter,
/// whatever the folder around it grants others. Null, for the permissions of that folder, when the system does not say
/// who the user is.
LocalMemory privateSecurity()
{
    const std::wstring user = tokenIdentifier(TokenUser);
    // Owner the user; nothing inherited; full access for the user and the system, also to what is made inside.
    const std::wstring rules = L"O:" + user + L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;" + user + L")";
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ::ConvertStringSecurityDescriptorToSecurityDescriptorW(rules.c_str(), SDDL_REVISION_1, &descriptor, nullptr);
    return LocalMemory(descriptor);
}

constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// Null when it cannot be opened.
WindowsHandle openHandle(const fs::path& path, DWORD access, DWORD share, DWORD disposition, DWORD flags,
                         PSECURITY_DESCRIPTOR security = nullptr)
{
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, security, FALSE};
    const HANDLE handle = ::CreateFileW(path.c_str(), access, share, &attributes, disposition, flags, nullptr);
    return WindowsHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
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

} // namespace

std::optional<FileFacts> factsAt(const fs::path& path)
{
    const WindowsHandle file = openHandle(path, READ_CONTROL | FILE_READ_ATTRIBUTES, shareAll, OPEN_EXISTING,
                                          FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT);
    return file ? std::optional(factsOf(file.get())) : std::nullopt;
}

FileFacts factsOf(int descriptor)
{
    return factsOf(reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor)));
}

int openFile(const fs::path& path, Opening how)
{
    struct Way {
        DWORD access;
        DWORD share;
        DWORD disposition;
        DWORD flags;
        bool isPrivate;
    };
    constexpr Way ways[] = {
        // in the order of Opening
        {GENERIC_READ, shareAll, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, false},
        {GENERIC_READ, shareAll, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, false},
        {GENERIC_WRITE | READ_CONTROL | FILE_READ_ATTRIBUTES, FILE_SHARE_READ, OPEN_ALWAYS,
         FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, true},
        {GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, true},
        {GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, false},
    };
    const auto& [access, share, disposition, flags, isPrivate] = ways[static_cast<std::size_t>(how)];
    const LocalMemory security = isPrivate ? privateSecurity() : nullptr;
    WindowsHandle handle = openHandle(path, access, share, disposition, flags, security.get());
    require(handle != nullptr);
    return ::_open_osfhandle(reinterpret_cast<std::intptr_t>(handle.release()), _O_BINARY);
}

void flush(int descriptor)
{
    require(::FlushFileBuffers(reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor))));
}

void deleteByForce(const fs::path& path)
{
    using namespace automation;
    const Apartment apartment;
    try {
        const Dispatch fileSystem(L"Scripting.FileSystemObject", CLSCTX_INPROC_SERVER);
        fileSystem.invoke(fileSystem.identifiers({L"DeleteFile"}), CallKind::Call,
                          {Variant::ofText(path.native()), Variant::ofBoolean(true)});
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
    const WindowsHandle target = openHandle(to, DELETE, shareAll, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT);
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
    const LocalMemory userAlone = privateSecurity();
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, userAlone.get(), FALSE};
    require(::CreateDirectoryW(folder.c_str(), &attributes));
}

/// The lock is a mutex that all programs share that know the folder, however they name it.
std::optional<std::shared_ptr<void>> tryToLockFolder(const fs::path& folder)
{
    const WindowsHandle open = openHandle(folder, 0, shareAll, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
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
