#pragma once

#include <filesystem>

namespace wagemill {

/// Copies the bytes of a file. The new name appears with its last byte or not at all: a copy that fails half-way leaves
/// nothing behind. A file copied onto itself stays as it is.
/// Throws std::runtime_error that names both files and the reason.
void copyFile(const std::filesystem::path& from, const std::filesystem::path& to);

/// Whether both paths lead to one file.
bool isSameFile(const std::filesystem::path& one, const std::filesystem::path& other);

} // namespace wagemill
