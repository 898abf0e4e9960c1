#include "workbook/embedded/PictureClipboard.h"

#include "drawing/DrawingFile.h"

namespace wagemill {

void EmbeddedPictureClipboard::copy(const drawing::Drawing& drawing)
{
    m_picture = Picture{std::make_shared<const std::vector<std::byte>>(drawingFile(drawing))};
}

Picture EmbeddedPictureClipboard::GetData(std::int16_t format)
{
    if (!m_picture || format != 0)
        throw SpreadsheetError("the clipboard holds no picture");
    return *m_picture;
}

} // namespace wagemill
