#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>

/// What Files.h needs of the system under it; one source file for each system. What fails throws std::system_error.
namespace wagemill::platform {

struct FileFacts {
    std::filesystem::file_type type = std::filesystem::file_type::unknown;
    bool isUsersOwn = false;
    bool isPrivate = false; ///< nobody else may enter it, as far as the system tells
    std::uint64_t names = 1;
    std::uint64_t size = 0;
};

/// Of a link the link's own; nothing where nothing is.
std::optional<FileFacts> factsAt(const std::filesystem::path& path);
FileFacts factsOf(int descriptor);

enum class Opening {
    Read,
    ReadOwn,     ///< not through a link
    Write,       ///< not through a link; made for the user alone where there is none
    MakePrivate, ///< a file that was not there, for the user alone
    MakeNormal,  ///< a file that was not there, with the user's normal permissions
};

/// The descriptor of the open file. Does not wait for a pipe.
int openFile(const std::filesystem::path& path, Opening how);
/// Returns when all that was written is on the disk.
void flush(int descriptor);

/// Deletes the file, a read-only one too; of a link the link itself. Every failure is ignored.
void deleteByForce(const std::filesystem::path& path);

/// The file gets the name `to`, and replaces whatever file or link had it.
void renameFile(const std::filesystem::path& from, const std::filesystem::path& to);

std::filesystem::path parentOfPrivateFolders();
/// Makes a folder that was not there, for the user alone.
void makePrivateFolder(const std::filesystem::path& folder);

/// Locks the folder against other programs until the answer dies, or the process. Null where folders cannot be locked;
/// nothing while another program has it locked.
std::optional<std::shared_ptr<void>> tryToLockFolder(const std::filesystem::path& folder);

/// The value of an environment variable as a path; empty when it is not set.
std::filesystem::path environmentPath(const char* name);
void setEnvironmentPath(const char* name, const std::filesystem::path& value);

/// Ends the process at once, with success.
[[noreturn]] void endProcess();

} // namespace wagemill::platform
