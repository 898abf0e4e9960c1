#pragma once

#include <QPixmap>

#include <filesystem>

namespace wagemill {

/// A picture file, known by its content whatever its name. A bitmap of more than 96 dots an inch, up to 384, is that
/// much sharper rather than larger: 192 dots give device pixel ratio 2. Bitmaps of up to 2 GiB in memory are read. On
/// Windows also an enhanced metafile, drawn on white as sharp as the sharpest screen. Paper is white where a picture is
/// transparent.
/// Throws std::runtime_error that names the file and the reason.
QPixmap loadPicture(const std::filesystem::path& file);

} // namespace wagemill
