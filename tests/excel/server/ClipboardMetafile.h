#pragma once

#include <cstddef>
#include <vector>

namespace wagemill::test {

/// Puts the picture in a drawing's file on the system's clipboard as an enhanced metafile, as large as it is at 96 dots
/// per inch. Throws SpreadsheetError when another program holds the clipboard.
/// drawsLate  it is drawn when somebody fetches it
void copyAsMetafile(std::vector<std::byte> drawingFile, bool drawsLate);

} // namespace wagemill::test
