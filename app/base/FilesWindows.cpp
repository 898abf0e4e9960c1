#include "app/base/Files.h"
#include "app/base/PlatformFiles.h"
#include "app/base/WindowsText.h"

#include <windows.h>

#include <aclapi.h>
#include <oleauto.h>
#include <sddl.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <random>
#include <stdexcept>
#include <system_error>

namespace wagemill {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void throwFileError(std::string_view what, const fs::path& path, DWORD code)
{
    throw std::runtime_error(std::string(what) + " \"" + toUtf8(path.native()) + "\": " + systemErrorText(code) + ".");
}

[[noreturn]] void throwNoPlainFile(std::string_view what, const fs::path& path)
{
    throw std::runtime_error(std::string(what) + " \"" + toUtf8(path.native()) + "\": it is no plain file.");
}

struct CloseHandleOf {
    using pointer = HANDLE;
    void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};

/// A handle that closes itself; never INVALID_HANDLE_VALUE.
using Handle = std::unique_ptr<void, CloseHandleOf>;

Handle asHandle(HANDLE handle)
{
    return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

struct FreeLocal {
    void operator()(void* memory) const { ::LocalFree(memory); }
};

/// The text form of the user's security identifier, "S-1-5-21-..."; empty when the system does not tell it.
std::wstring userIdentifier()
{
    HANDLE raw = nullptr;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &raw))
        return {};
    const Handle token(raw);
    alignas(TOKEN_USER) std::array<std::byte, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> user;
    DWORD size = 0;
    wchar_t* text = nullptr;
    if (!::GetTokenInformation(token.get(), TokenUser, user.data(), static_cast<DWORD>(user.size()), &size) ||
        !::ConvertSidToStringSidW(reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid, &text))
        return {};
    const std::unique_ptr<wchar_t, FreeLocal> owner(text);
    return text;
}

/// The permissions of what the user and the system alone may enter, whatever the folder around it grants others.
class PrivateSecurity {
public:
    PrivateSecurity()
    {
        const std::wstring user = userIdentifier();
        if (user.empty())
            return; // then the surrounding folder's permissions hold
        const std::wstring rules = L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;" + user + L")";
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        if (::ConvertStringSecurityDescriptorToSecurityDescriptorW(rules.c_str(), SDDL_REVISION_1, &descriptor,
                                                                   nullptr))
            m_descriptor.reset(descriptor);
        m_attributes.lpSecurityDescriptor = descriptor;
    }

    SECURITY_ATTRIBUTES* attributes() { return m_descriptor ? &m_attributes : nullptr; }

private:
    std::unique_ptr<void, FreeLocal> m_descriptor;
    SECURITY_ATTRIBUTES m_attributes = {sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
};

/// Whether the open file is a link to another place rather than the file that it names.
bool isLink(HANDLE file)
{
    FILE_ATTRIBUTE_TAG_INFO info = {};
    return ::GetFileInformationByHandleEx(file, FileAttributeTagInfo, &info, sizeof info) &&
           (info.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsReparseTagNameSurrogate(info.ReparseTag);
}

/// Whether the open file belongs to the user, or to the group that owns what the user makes. Where the file system
/// knows no owners everything is the user's.
bool isOfThisUser(HANDLE file)
{
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (::GetSecurityInfo(file, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr, nullptr, nullptr,
                          &descriptor) != ERROR_SUCCESS)
        return true;
    const std::unique_ptr<void, FreeLocal> freeAtEnd(descriptor);
    HANDLE raw = nullptr;
    if (owner == nullptr || !::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &raw))
        return true;
    const Handle token(raw);
    alignas(TOKEN_USER) std::array<std::byte, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> holder;
    static_assert(sizeof(TOKEN_OWNER) <= sizeof(TOKEN_USER));
    const auto size = static_cast<DWORD>(holder.size());
    DWORD ignored = 0;
    return (::GetTokenInformation(raw, TokenUser, holder.data(), size, &ignored) &&
            ::EqualSid(owner, reinterpret_cast<const TOKEN_USER*>(holder.data())->User.Sid)) ||
           (::GetTokenInformation(raw, TokenOwner, holder.data(), size, &ignored) &&
            ::EqualSid(owner, reinterpret_cast<const TOKEN_OWNER*>(holder.data())->Owner));
}

/// Why a file is not to be touched; "" when it is a plain file of the user's own that has no other name.
std::string_view objectionTo(HANDLE file)
{
    BY_HANDLE_FILE_INFORMATION info = {};
    if (isLink(file))
        return "it is a link";
    if (::GetFileType(file) != FILE_TYPE_DISK || !::GetFileInformationByHandle(file, &info) ||
        (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return "it is no plain file";
    if (!isOfThisUser(file))
        return "it belongs to another user";
    return info.nNumberOfLinks > 1 ? "it has a second name elsewhere" : "";
}

void requireOwn(std::string_view what, const fs::path& path, HANDLE file)
{
    if (const std::string_view objection = objectionTo(file); !objection.empty())
        throw std::runtime_error(std::string(what) + " \"" + toUtf8(path.native()) + "\": " + std::string(objection) +
                                 ". Please remove it, or let TEMP name another folder.");
}

/// The most that one call is asked to move.
DWORD blockOf(std::size_t bytes)
{
    constexpr std::size_t largest = std::size_t{1} << 24U;
    return static_cast<DWORD>(std::min(bytes, largest));
}

} // namespace

namespace {

/// Answers ERROR_SUCCESS, or what stopped it.
DWORD writeAll(HANDLE file, std::span<const std::byte> bytes)
{
    while (!bytes.empty()) {
        DWORD written = 0;
        if (!::WriteFile(file, bytes.data(), blockOf(bytes.size()), &written, nullptr))
            return ::GetLastError();
        bytes = bytes.subspan(written);
    }
    return ERROR_SUCCESS;
}

Handle openToRead(const fs::path& path, DWORD flags)
{
    return asHandle(::CreateFileW(path.c_str(), GENERIC_READ | READ_CONTROL,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL | flags, nullptr));
}

std::vector<std::byte> readAll(HANDLE file, const fs::path& path)
{
    constexpr std::string_view failure = "Cannot read the file";
    LARGE_INTEGER size = {};
    if (!::GetFileSizeEx(file, &size))
        throwFileError(failure, path, ::GetLastError());
    std::vector<std::byte> bytes(static_cast<std::size_t>(size.QuadPart));
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        DWORD count = 0;
        if (!::ReadFile(file, bytes.data() + filled, blockOf(bytes.size() - filled), &count, nullptr))
            throwFileError(failure, path, ::GetLastError());
        if (count == 0)
            break;
        filled += count;
    }
    bytes.resize(filled);
    return bytes;
}

} // namespace

void writeBytesToFile(std::span<const std::byte> bytes, const fs::path& path)
{
    constexpr std::string_view failure = "Cannot write the file";
    PrivateSecurity security;
    const Handle file = asHandle(::CreateFileW(path.c_str(), GENERIC_WRITE | FILE_READ_ATTRIBUTES | READ_CONTROL,
                                               FILE_SHARE_READ, security.attributes(), OPEN_ALWAYS,
                                               FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    if (!file)
        throwFileError(failure, path, ::GetLastError());
    requireOwn(failure, path, file.get());
    if (const DWORD error = writeAll(file.get(), bytes); error != ERROR_SUCCESS)
        throwFileError(failure, path, error);
}

std::vector<std::byte> readBytesFromFile(const fs::path& path)
{
    const Handle file = openToRead(path, 0);
    if (!file)
        throwFileError("Cannot read the file", path, ::GetLastError());
    if (::GetFileType(file.get()) != FILE_TYPE_DISK)
        throwNoPlainFile("Cannot read", path);
    return readAll(file.get(), path);
}

std::vector<std::byte> readOwnFile(const fs::path& path)
{
    const Handle file = openToRead(path, FILE_FLAG_OPEN_REPARSE_POINT);
    if (!file)
        throwFileError("Cannot read the file", path, ::GetLastError());
    requireOwn("Cannot open", path, file.get());
    return readAll(file.get(), path);
}

void requireOwnFile(const fs::path& path)
{
    // Backup semantics open folders too; what cannot be opened at all is refused when it is used.
    if (const Handle file = openToRead(path, FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS))
        requireOwn("Cannot open", path, file.get());
}

namespace platform {

namespace {

/// Keeps the thread able to call automation objects; it may be already.
class AutomationThread {
public:
    AutomationThread() : m_entered(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {}
    AutomationThread(const AutomationThread&) = delete;
    AutomationThread& operator=(const AutomationThread&) = delete;
    ~AutomationThread()
    {
        if (m_entered)
            ::CoUninitialize();
    }

private:
    bool m_entered;
};

struct ReleaseObject {
    void operator()(IUnknown* object) const { object->Release(); }
};

struct FreeBstr {
    void operator()(wchar_t* text) const { ::SysFreeString(text); }
};

std::unique_ptr<IDispatch, ReleaseObject> createByName(const wchar_t* className)
{
    CLSID id;
    void* object = nullptr;
    if (FAILED(::CLSIDFromProgID(className, &id)) ||
        FAILED(::CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, &object)))
        return nullptr;
    return std::unique_ptr<IDispatch, ReleaseObject>(static_cast<IDispatch*>(object));
}

/// DeleteFile(path, force) of the scripting object; arguments go in the reverse order.
void callDeleteFile(IDispatch& fileSystem, const fs::path& path, bool force)
{
    std::wstring name = L"DeleteFile";
    wchar_t* names = name.data();
    DISPID member = DISPID_UNKNOWN;
    if (FAILED(fileSystem.GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &member)))
        return;
    const std::unique_ptr<wchar_t, FreeBstr> pathText(::SysAllocString(path.c_str()));
    std::array<VARIANTARG, 2> arguments = {};
    arguments[0].vt = VT_BOOL;
    arguments[0].boolVal = force ? VARIANT_TRUE : VARIANT_FALSE;
    arguments[1].vt = VT_BSTR;
    arguments[1].bstrVal = pathText.get();
    DISPPARAMS parameters = {arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
    static_cast<void>(fileSystem.Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, nullptr,
                                        nullptr, nullptr)); // nobody is told of a failure
}

fs::path parentOfPrivateFolders()
{
    std::array<wchar_t, MAX_PATH + 1> folder;
    const DWORD length = ::GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
    return {folder.data(), folder.data() + std::min<std::size_t>(length, folder.size())};
}

/// What runs at endProcess, first registered last, as at exit.
std::vector<void (*)()>& endWork()
{
    static std::vector<void (*)()> work;
    return work;
}

} // namespace

void deleteByForce(const fs::path& path)
{
    const AutomationThread thread;
    if (const auto fileSystem = createByName(L"Scripting.FileSystemObject"))
        callDeleteFile(*fileSystem, path, true);
}

void writeNewFile(std::span<const std::byte> bytes, const fs::path& path, FileLife life)
{
    PrivateSecurity security;
    const Handle file = asHandle(::CreateFileW(path.c_str(), GENERIC_WRITE, 0,
                                               life == FileLife::Temporary ? security.attributes() : nullptr,
                                               CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD error = file ? writeAll(file.get(), bytes) : ::GetLastError();
    if (error == ERROR_SUCCESS && life == FileLife::Kept && !::FlushFileBuffers(file.get()))
        error = ::GetLastError();
    if (error != ERROR_SUCCESS)
        throw std::system_error(static_cast<int>(error), std::system_category());
}

/// A mutex named after the folder: a folder that is opened without sharing could not be used by Excel either.
std::shared_ptr<void> lockFolder(const fs::path& folder, std::chrono::milliseconds patience)
{
    std::wstring name = fs::absolute(folder).lexically_normal().native();
    ::CharLowerBuffW(name.data(), static_cast<DWORD>(name.size()));
    std::ranges::replace(name, L'\\', L'/'); // a backslash would lead out of the name space
    const std::shared_ptr<void> mutex(::CreateMutexW(nullptr, FALSE, (L"Local\\Wagemill " + name).c_str()),
                                      [](HANDLE handle) {
                                          if (handle != nullptr)
                                              ::CloseHandle(handle);
                                      });
    if (!mutex)
        return nullptr;
    const DWORD outcome = ::WaitForSingleObject(mutex.get(), static_cast<DWORD>(patience.count()));
    if (outcome == WAIT_TIMEOUT)
        throw std::runtime_error("The folder \"" + toUtf8(folder.native()) +
                                 "\" is in use: another program is making a workbook there.");
    return {mutex.get(), [mutex](HANDLE handle) { ::ReleaseMutex(handle); }};
}

fs::path makePrivateFolder()
{
    constexpr int attempts = 100;
    PrivateSecurity security;
    std::random_device chance;
    fs::path folder;
    DWORD reason = ERROR_ALREADY_EXISTS;
    for (int attempt = 0; attempt < attempts && reason == ERROR_ALREADY_EXISTS; ++attempt) {
        folder = parentOfPrivateFolders() / ("wagemill-" + std::to_string(chance()));
        if (::CreateDirectoryW(folder.c_str(), security.attributes()))
            return folder;
        reason = ::GetLastError();
    }
    throwFileError("Cannot make a temporary folder", folder, reason);
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

void atEveryEnd(void (*work)())
{
    std::atexit(work);
    endWork().push_back(work);
}

void endProcess()
{
    std::for_each(endWork().rbegin(), endWork().rend(), [](void (*work)()) { work(); });
    // Ends without asking the libraries in the process to tidy up; what must be undone has been undone.
    ::TerminateProcess(::GetCurrentProcess(), 0);
    std::abort(); // not reached
}

} // namespace platform

} // namespace wagemill
