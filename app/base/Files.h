#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wagemill {

/// Whether the file system gives a time of last change for the path; a folder counts too. Never throws.
bool fileExists(const std::filesystem::path& path);

/// Lets pending window events run, then deletes the file, a read-only one too; of a link the link itself. Every failure
/// is ignored. A folder is left alone.
void deleteFileQuietly(const std::filesystem::path& path);

/// Writes the bytes from the first byte of the file on; a longer file keeps its tail. A new file is readable by its
/// owner alone; one that is there is written only when it is the user's own, as requireOwnFile has it.
/// Throws std::runtime_error that names the file and the reason.
void writeBytesToFile(std::span<const std::byte> bytes, const std::filesystem::path& path);

enum class FileLife {
    Temporary, ///< readable by its owner alone, and lost with the power
    Kept,      ///< the user's normal permissions, and on the disk when the call returns
};

/// Writes a file that has all its bytes or is not there: they go under a fresh name beside `path`, which then replaces
/// whatever file or link was there. A failure leaves `path` as it was and nothing beside it.
/// Throws std::runtime_error that names the file and the reason.
void writeWholeFile(std::span<const std::byte> bytes, const std::filesystem::path& path, FileLife life);

/// The whole file. Throws std::runtime_error that names the file and the reason.
std::vector<std::byte> readBytesFromFile(const std::filesystem::path& path);

/// The whole file if it is the user's own, as requireOwnFile has it; of another not a byte is read or waited for.
/// Throws std::runtime_error that names the file and the reason.
std::vector<std::byte> readOwnFile(const std::filesystem::path& path);

/// Throws std::runtime_error that says why, when the path is of anything but a plain file of the user's own: somebody
/// else's, a link, a hard-linked file, a folder, a pipe, a device. Nothing there is not a failure.
void requireOwnFile(const std::filesystem::path& path);

/// The folder of the running program, without a trailing separator. Set once at start.
void setProgramFolder(const std::filesystem::path& folder);
/// A file beside the program: that folder followed by `name`, which begins with a separator ("/HAND-M.CUR").
std::filesystem::path besideProgram(std::string_view name);

/// A file in the folder that the environment variable "TEMP" names: its value followed by `name`, which begins with a
/// separator ("/template.xlt").
std::filesystem::path inTemporaryFolder(std::string_view name);

/// A fresh folder that only the user can enter, in the system's folder for such; those of killed runs are removed
/// first. Throws std::runtime_error that names the folder and the reason.
std::filesystem::path makePrivateFolder();

/// Where TEMP is not set: makes a private folder, makes it TEMP, and removes it when the program ends. Throws as
/// makePrivateFolder does.
void ensureTemporaryFolder();

/// Keeps other programs' builds out of the folder that TEMP names, where all use the same file names, for as long as
/// the answer lives. Waits for a build that is under way. Null where a folder cannot be locked, or need not be. Throws
/// std::runtime_error when another program keeps the folder for more than ten seconds.
[[nodiscard]] std::shared_ptr<void> lockTemporaryFolder();

/// Whether this is a debug run of a developer's build rather than the built program.
bool isDevelopmentRun();

/// What processes pending window events, but nothing that would start other work in the middle of this one: keys,
/// mouse, closing and signals wait until the procedure that asked has ended. Set once at start; without it there are
/// none.
void setWindowEventPump(std::function<void()> pump);
void processWindowEvents();
bool isProcessingWindowEvents();

/// Ends the program at once: no unload handler runs, nothing further is saved.
/// Tests set what happens instead; the default removes the run's own temporary folder and ends the process.
void endProgram();
void setProgramEnd(std::function<void()> end);

} // namespace wagemill
