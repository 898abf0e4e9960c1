#pragma once

#include "drawing/Drawing.h"
#include "workbook/spreadsheet/Spreadsheet.h"

#include <optional>

namespace wagemill {

/// The embedded engine's own clipboard, so that pay stubs never reach other programs and what the user had copied
/// stays. It holds one picture, a drawing in its file form.
class EmbeddedPictureClipboard : public PictureClipboard {
public:
    void copy(const drawing::Drawing& drawing);
    void clear() { m_picture.reset(); }

    /// Format 0 only, for a drawing is no format of the system's. Throws SpreadsheetError when there is no picture.
    Picture GetData(std::int16_t format) override;

private:
    std::optional<Picture> m_picture;
};

} // namespace wagemill
