#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace wagemill {

/// The bitmap file (.bmp) of a bitmap as the clipboard holds it: any of its headers (BITMAPCOREHEADER to
/// BITMAPV5HEADER), colour masks, colour table and pixels in one piece. What they say, resolution and direction of the
/// rows included, stays. Layout: https://learn.microsoft.com/windows/win32/gdi/bitmap-storage Throws SpreadsheetError
/// when there is no such bitmap.
std::vector<std::byte> fileOfPackedBitmap(std::span<const std::byte> packedBitmap);

} // namespace wagemill
