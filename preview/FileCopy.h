#pragma once

#include <filesystem>

namespace wagemill {

/// Copies the bytes of a file of the user's own. The new name appears with its last byte or not at all, replacing a
/// file or link of that name, and then is on the disk: a copy that fails half-way leaves nothing. Throws
/// std::runtime_error that names both files and the reason; a file cannot be copied onto itself.
void copyFile(const std::filesystem::path& from, const std::filesystem::path& to);

/// Whether both paths are one name of one file. A link to the file is another name: it can go without the file.
bool isSameFile(const std::filesystem::path& one, const std::filesystem::path& other);

} // namespace wagemill
