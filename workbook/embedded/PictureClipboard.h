#pragma once

#include "drawing/Drawing.h"
#include "workbook/spreadsheet/Spreadsheet.h"

#include <optional>

namespace wagemill {

/// The embedded engine's own clipboard, so that pay stubs never reach other programs and what the user had copied
/// stays. It holds one picture, as the bytes of a bitmap file (.bmp, 24 bits a pixel) whose resolution is 96 dots per
/// inch times the scale it was drawn at: shown by its resolution it has its natural size.
class EmbeddedPictureClipboard : public PictureClipboard {
public:
    /// Draws the picture at `scale` pixels per pixel at 96 dots per inch; a picture too large for that is drawn at the
    /// largest scale, not below 1, at which it fits. Throws SpreadsheetError when it is too large at scale 1; the
    /// clipboard is then empty.
    void copy(const drawing::Drawing& picture, double scale);
    void clear() { m_picture.reset(); }

    /// Formats: 0, or 2 and 8 (bitmaps). Throws SpreadsheetError when there is no picture in that format.
    Picture GetData(std::int16_t format) override;

private:
    std::optional<Picture> m_picture;
};

} // namespace wagemill
