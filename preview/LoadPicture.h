#pragma once

#include <QPixmap>

#include <filesystem>

namespace wagemill {

/// A picture file. One of more than 96 dots an inch, up to 384, is that much sharper rather than larger: 192 dots give
/// device pixel ratio 2. Pictures of up to 2 GiB in memory are read.
/// Throws std::runtime_error that names the file and the reason.
QPixmap loadPicture(const std::filesystem::path& file);

} // namespace wagemill
