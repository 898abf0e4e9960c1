#pragma once

#include <cstddef>
#include <vector>

namespace wagemill::test {

/// Puts the picture of a bitmap file (24 bits a pixel, no palette) on the system's clipboard as an enhanced metafile,
/// as large as it is at 96 dots per inch. Throws SpreadsheetError when another program holds the clipboard.
/// drawsLate  it is drawn when somebody fetches it
void copyAsMetafile(std::vector<std::byte> bitmapFile, bool drawsLate);

} // namespace wagemill::test
