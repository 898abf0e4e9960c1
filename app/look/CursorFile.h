#pragma once

#include <QCursor>

#include <filesystem>

namespace wagemill {

/// The picture of a Windows cursor file that comes nearest to 32 x 32 pixels, with its hot spot. Throws
/// std::runtime_error that names the file and the reason.
QCursor loadCursorFile(const std::filesystem::path& file);

} // namespace wagemill
