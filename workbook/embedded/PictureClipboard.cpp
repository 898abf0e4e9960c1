#include "workbook/embedded/PictureClipboard.h"

#include "workbook/embedded/PicturePainter.h"

#include <algorithm>
#include <array>

namespace wagemill {

namespace {

/// Any picture, a bitmap, a device independent bitmap: the clipboard formats that a bitmap file answers.
constexpr std::array<std::int16_t, 3> bitmapFormats = {0, 2, 8};

} // namespace

void EmbeddedPictureClipboard::copy(const drawing::Drawing& picture, double scale)
{
    m_picture.reset();
    const double natural = std::min(scale, 1.0);
    m_picture = Picture{std::make_shared<const std::vector<std::byte>>(
        bitmapFileOf(picture, std::max(natural, scaleThatFits(picture, scale))))};
}

Picture EmbeddedPictureClipboard::GetData(std::int16_t format)
{
    if (!m_picture || std::ranges::find(bitmapFormats, format) == bitmapFormats.end())
        throw SpreadsheetError("the clipboard holds no picture");
    return *m_picture;
}

} // namespace wagemill
