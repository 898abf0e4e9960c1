#pragma once

#include "drawing/Drawing.h"

#include <cstddef>
#include <vector>

class QImage;

namespace wagemill {

/// The picture at `scale` image pixels per pixel at 96 dots per inch, drawn at that resolution on white. Where lines
/// break and what is cut is the same at every scale.
/// Throws SpreadsheetError when the image would be larger than 32767 pixels in either direction or memory is short.
QImage paintedPicture(const drawing::Drawing& picture, double scale);

/// The same as the bytes of a bitmap file (.bmp, 24 bits a pixel) whose resolution is 96 dots per inch times `scale`.
/// It is drawn in strips, so a picture may be longer than an image can be.
/// Throws SpreadsheetError when the file would be larger than mostBitmapBytes or memory is short.
std::vector<std::byte> bitmapFileOf(const drawing::Drawing& picture, double scale);

/// The largest scale, at most `scale`, at which the bitmap file stays within mostBitmapBytes; possibly below 1.
double scaleThatFits(const drawing::Drawing& picture, double scale);

/// A sheet of 400 pay stubs takes half of this at scale 1.
inline constexpr std::size_t mostBitmapBytes = std::size_t{512} << 20U;

} // namespace wagemill
