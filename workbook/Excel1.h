#pragma once

#include "workbook/spreadsheet/Spreadsheet.h"

#include <cstdint>
#include <filesystem>
#include <optional>

namespace wagemill {

/// Writes a picture of the used range of the workbook's active sheet to `path`, replacing any file of that name. A
/// sheet without anything below row 1 has no picture, and no file is written. Every failure is reported here, in the
/// error dialog; the caller goes on.
/// workbook  null when it could not be opened: that too is reported
void saveCellsActivesheet(Workbook* workbook, const std::filesystem::path& path, PictureClipboard& clipboard);

/// The clipboard's picture. The spreadsheet application fills the clipboard in its own time: up to 1000 attempts are
/// made, without a pause. Nothing when all of them failed; never throws.
/// format  0: whatever picture format the clipboard holds
std::optional<Picture> getClipboardPicture(PictureClipboard& clipboard, std::int16_t format);

} // namespace wagemill
