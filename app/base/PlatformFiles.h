#pragma once

#include <filesystem>

/// What Files.h needs of the system under it; one source file for each system.
namespace wagemill::platform {

/// Deletes the file, a read-only one too; of a link the link itself. Every failure is ignored.
void deleteByForce(const std::filesystem::path& path);

/// A fresh folder that only the user can enter. Throws std::runtime_error that names the folder and the reason.
std::filesystem::path makePrivateFolder();

/// The value of an environment variable as a path; empty when it is not set.
std::filesystem::path environmentPath(const char* name);
void setEnvironmentPath(const char* name, const std::filesystem::path& value);

/// `work` runs when the program returns from main, ends by exit, or ends by endProcess.
void atEveryEnd(void (*work)());
/// Ends the process at once, with success.
[[noreturn]] void endProcess();

} // namespace wagemill::platform
