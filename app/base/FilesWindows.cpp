#include "app/base/Files.h"
#include "app/base/PlatformFiles.h"
#include "app/base/WindowsOwnership.h"
#include "app/base/WindowsText.h"

#include <ole2.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <system_error>

namespace wagemill {

namespace fs = std::filesystem;

namespace {

/// "Cannot write the file "C:\a.xls": Access is denied."
[[noreturn]] void throwFileError(std::string_view what, const fs::path& path, std::string_view reason)
{
    throw std::runtime_error(std::string(what) + " \"" + toUtf8(path.native()) + "\": " + std::string(reason) + ".");
}

constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

WindowsHandle openFile(const fs::path& path, DWORD access, DWORD share, DWORD disposition, DWORD flags,
                       SECURITY_ATTRIBUTES* security = nullptr)
{
    return ownedHandle(::CreateFileW(path.c_str(), access, share, security, disposition, flags, nullptr));
}

/// Why a file is not to be touched; "" when it is a plain file of the user's own that has no other name. Whoever can
/// give our names to something else could otherwise have us read or write what is not ours.
std::string_view objectionTo(HANDLE file)
{
    BY_HANDLE_FILE_INFORMATION info = {};
    if (::GetFileType(file) != FILE_TYPE_DISK || !::GetFileInformationByHandle(file, &info))
        return "it is no plain file";
    FILE_ATTRIBUTE_TAG_INFO tag = {};
    if ((info.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
        (!::GetFileInformationByHandleEx(file, FileAttributeTagInfo, &tag, sizeof tag) ||
         IsReparseTagNameSurrogate(tag.ReparseTag)))
        return "it is a link";
    if ((info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return "it is no plain file";
    if (!isUsersOwn(file))
        return "it belongs to another user";
    return info.nNumberOfLinks > 1 ? "it has a second name elsewhere" : "";
}

void requireOwn(std::string_view what, const fs::path& path, HANDLE file)
{
    if (const std::string_view objection = objectionTo(file); !objection.empty())
        throwFileError(what, path, std::string(objection) + ". Please remove it, or let TEMP name another folder");
}

/// The most that one call is asked to move.
DWORD blockOf(std::size_t bytes)
{
    constexpr std::size_t largest = std::size_t{1} << 24U;
    return static_cast<DWORD>(std::min(bytes, largest));
}

[[noreturn]] void throwLastError()
{
    throw std::system_error(static_cast<int>(::GetLastError()), windowsErrors());
}

/// Throws std::system_error.
void writeAll(HANDLE file, std::span<const std::byte> bytes)
{
    while (!bytes.empty()) {
        DWORD written = 0;
        if (!::WriteFile(file, bytes.data(), blockOf(bytes.size()), &written, nullptr))
            throwLastError();
        bytes = bytes.subspan(written);
    }
}

/// The rest of the file. Throws std::system_error.
std::vector<std::byte> readAll(HANDLE file)
{
    LARGE_INTEGER size = {};
    if (!::GetFileSizeEx(file, &size))
        throwLastError();
    std::vector<std::byte> bytes(static_cast<std::size_t>(size.QuadPart));
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        DWORD count = 0;
        if (!::ReadFile(file, bytes.data() + filled, blockOf(bytes.size() - filled), &count, nullptr))
            throwLastError();
        if (count == 0)
            break;
        filled += count;
    }
    bytes.resize(filled);
    return bytes;
}

/// Runs the work; a std::system_error of it becomes one that names the file.
template <typename Work>
auto namingTheFile(std::string_view what, const fs::path& path, Work&& work)
{
    try {
        return work();
    } catch (const std::system_error& error) {
        throwFileError(what, path, error.code().message());
    }
}

/// A mutex that all programs share that know the folder, however they name it. Null when there can be none.
WindowsHandle mutexOf(const fs::path& folder)
{
    const WindowsHandle open = openFile(folder, 0, shareAll, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    BY_HANDLE_FILE_INFORMATION info = {};
    if (!open || !::GetFileInformationByHandle(open.get(), &info))
        return nullptr;
    const std::wstring name = L"Global\\Wagemill-" + std::to_wstring(info.dwVolumeSerialNumber) + L"-" +
                              std::to_wstring(info.nFileIndexHigh) + L"-" + std::to_wstring(info.nFileIndexLow);
    return WindowsHandle(::CreateMutexW(nullptr, FALSE, name.c_str()));
}

/// Whether the mutex is ours now; a program that died with it gives it away.
bool acquire(HANDLE mutex, std::chrono::milliseconds patience)
{
    const DWORD outcome = ::WaitForSingleObject(mutex, static_cast<DWORD>(patience.count()));
    return outcome == WAIT_OBJECT_0 || outcome == WAIT_ABANDONED;
}

/// Gives up a mutex that acquire() got.
std::shared_ptr<void> heldMutex(WindowsHandle mutex)
{
    return {mutex.release(), [](HANDLE held) {
                ::ReleaseMutex(held);
                ::CloseHandle(held);
            }};
}

constexpr std::wstring_view privateFolderStem = L"wagemill-run-";

fs::path parentOfPrivateFolders()
{
    std::array<wchar_t, MAX_PATH + 1> folder;
    const DWORD length = ::GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
    return {folder.data(), folder.data() + std::min<std::size_t>(length, folder.size())};
}

bool isPrivateFolderOfOurs(const fs::path& folder)
{
    if (!folder.filename().native().starts_with(privateFolderStem))
        return false;
    const WindowsHandle open = openFile(folder, READ_CONTROL | FILE_READ_ATTRIBUTES, shareAll, OPEN_EXISTING,
                                        FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT);
    BY_HANDLE_FILE_INFORMATION info = {};
    constexpr DWORD kind = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
    return open && ::GetFileInformationByHandle(open.get(), &info) &&
           (info.dwFileAttributes & kind) == FILE_ATTRIBUTE_DIRECTORY && isUsersOwn(open.get());
}

/// Removes what killed runs left behind; it may hold wages.
void removeAbandonedFolders(const fs::path& parent)
{
    std::error_code ignored;
    for (fs::directory_iterator entry(parent, ignored), end; entry != end; entry.increment(ignored)) {
        if (!isPrivateFolderOfOurs(entry->path()))
            continue;
        WindowsHandle mutex = mutexOf(entry->path());
        if (!mutex || !acquire(mutex.get(), std::chrono::milliseconds(0)))
            continue; // its run is alive
        const auto held = heldMutex(std::move(mutex));
        fs::remove_all(entry->path(), ignored);
    }
}

/// What runs at endProcess, first registered last, as at exit.
std::vector<void (*)()>& endWork()
{
    static std::vector<void (*)()> work;
    return work;
}

} // namespace

void writeBytesToFile(std::span<const std::byte> bytes, const fs::path& path)
{
    constexpr std::string_view failure = "Cannot write the file";
    requireOwnFile(path);
    namingTheFile(failure, path, [&] {
        PrivateSecurity security;
        const WindowsHandle file =
            openFile(path, GENERIC_WRITE | READ_CONTROL | FILE_READ_ATTRIBUTES, FILE_SHARE_READ, OPEN_ALWAYS,
                     FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, security.attributes());
        if (!file)
            throwLastError();
        requireOwn(failure, path, file.get());
        writeAll(file.get(), bytes);
    });
}

std::vector<std::byte> readBytesFromFile(const fs::path& path)
{
    constexpr std::string_view failure = "Cannot read the file";
    return namingTheFile(failure, path, [&] {
        const WindowsHandle file = openFile(path, GENERIC_READ, shareAll, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
        if (!file)
            throwLastError();
        if (::GetFileType(file.get()) != FILE_TYPE_DISK)
            throwFileError(failure, path, "it is no plain file");
        return readAll(file.get());
    });
}

std::vector<std::byte> readOwnFile(const fs::path& path)
{
    requireOwnFile(path); // a device must not even be opened; what was put there since is met below
    return namingTheFile("Cannot read the file", path, [&] {
        const WindowsHandle file = openFile(path, GENERIC_READ, shareAll, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT);
        if (!file)
            throwLastError();
        requireOwn("Cannot open", path, file.get());
        return readAll(file.get());
    });
}

void requireOwnFile(const fs::path& path)
{
    const WindowsHandle file = openFile(path, READ_CONTROL | FILE_READ_ATTRIBUTES, shareAll, OPEN_EXISTING,
                                        FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT);
    if (file)
        requireOwn("Cannot open", path, file.get());
}

namespace platform {

void writeNewFile(std::span<const std::byte> bytes, const fs::path& path, FileLife life)
{
    PrivateSecurity security;
    const WindowsHandle file = openFile(path, GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_NORMAL,
                                        life == FileLife::Temporary ? security.attributes() : nullptr);
    if (!file)
        throwLastError();
    writeAll(file.get(), bytes);
    if (life == FileLife::Kept && !::FlushFileBuffers(file.get()))
        throwLastError();
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

fs::path makePrivateFolder()
{
    const fs::path parent = parentOfPrivateFolders();
    removeAbandonedFolders(parent);
    PrivateSecurity security;
    std::random_device chance;
    for (;;) {
        fs::path folder = parent / (std::wstring(privateFolderStem) + std::to_wstring(chance()));
        if (!::CreateDirectoryW(folder.c_str(), security.attributes())) {
            if (::GetLastError() == ERROR_ALREADY_EXISTS)
                continue;
            throwFileError("Cannot make a temporary folder", folder, systemErrorText(::GetLastError()));
        }
        // Held until the process is gone, so that no other start takes the folder for an abandoned one.
        static std::shared_ptr<void> held;
        held = lockFolder(folder, std::chrono::seconds(1));
        if (fileExists(folder))
            return folder;
    }
}

std::shared_ptr<void> lockFolder(const fs::path& folder, std::chrono::milliseconds patience)
{
    WindowsHandle mutex = mutexOf(folder);
    if (!mutex)
        return nullptr;
    if (!acquire(mutex.get(), patience))
        throw std::runtime_error("The folder \"" + toUtf8(folder.native()) +
                                 "\" is in use: another program is making a workbook there.");
    return heldMutex(std::move(mutex));
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
    ::OleFlushClipboard(); // what the user copied from a field must outlive the program
    // Ends without asking the libraries in the process to tidy up; what must be undone has been undone.
    ::TerminateProcess(::GetCurrentProcess(), 0);
    std::abort(); // not reached
}

} // namespace platform

} // namespace wagemill
