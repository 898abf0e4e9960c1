#pragma once

#include <QCursor>
#include <QImage>
#include <QPoint>

#include <cstddef>
#include <filesystem>
#include <span>

namespace wagemill {

struct CursorPicture {
    QImage image;   ///< with alpha; 1 to 256 pixels a side
    QPoint hotSpot; ///< in pixels from the top left, inside the image
};

/// The picture of a cursor file that comes nearest to 32 x 32 pixels, in the format described as "ICO file format"
/// (https://learn.microsoft.com/previous-versions/ms997538(v=msdn.10)): a directory, and per picture an uncompressed
/// bitmap of 1, 4, 8, 24 or 32 bits with its transparency mask, or a PNG file. Pixels that would invert what lies below
/// become black.
/// Throws std::runtime_error with the reason for anything else.
CursorPicture readCursor(std::span<const std::byte> file);

/// Throws std::runtime_error that names the file and the reason.
QCursor loadCursorFile(const std::filesystem::path& file);

} // namespace wagemill
