#pragma once

#include "app/base/Files.h"

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <span>

/// What Files.h needs of the system under it; one source file for each system.
namespace wagemill::platform {

/// Deletes the file, a read-only one too; of a link the link itself. Every failure is ignored.
void deleteByForce(const std::filesystem::path& path);

/// Makes a file that was not there, with the permissions of its life, and writes the bytes. Throws std::system_error;
/// what was written by then is left to the caller.
void writeNewFile(std::span<const std::byte> bytes, const std::filesystem::path& path, FileLife life);

/// The file gets the name `to`, and replaces whatever file or link had it. Throws std::system_error.
void renameFile(const std::filesystem::path& from, const std::filesystem::path& to);

/// A fresh folder that only the user can enter. Where the system does not clear them itself, those that killed runs of
/// the user left behind are removed first. Throws std::runtime_error that names the folder and the reason.
std::filesystem::path makePrivateFolder();

/// Locks the folder against other programs until the answer dies, or the process. Null where folders cannot be locked.
/// Throws std::runtime_error when another keeps it locked for longer than `patience`.
std::shared_ptr<void> lockFolder(const std::filesystem::path& folder, std::chrono::milliseconds patience);

/// The value of an environment variable as a path; empty when it is not set.
std::filesystem::path environmentPath(const char* name);
void setEnvironmentPath(const char* name, const std::filesystem::path& value);

/// `work` runs when the program returns from main, ends by exit, or ends by endProcess.
void atEveryEnd(void (*work)());
/// Ends the process at once, with success.
[[noreturn]] void endProcess();

} // namespace wagemill::platform
