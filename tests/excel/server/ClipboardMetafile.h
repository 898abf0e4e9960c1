#pragma once

#include <cstddef>
#include <span>

namespace wagemill::test {

/// Puts the picture of a bitmap file (24 bits a pixel, no palette) on the system's clipboard as an enhanced metafile,
/// as large as it is at 96 dots per inch. Throws SpreadsheetError when another program holds the clipboard.
void copyAsMetafile(std::span<const std::byte> bitmapFile);

} // namespace wagemill::test
