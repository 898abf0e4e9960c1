#include "workbook/engine/picture/SheetPicture.h"

#include "workbook/engine/picture/PictureGrid.h"
#include "workbook/engine/picture/PictureLines.h"
#include "workbook/engine/picture/PictureTexts.h"

#include <optional>
#include <utility>

namespace wagemill::engine {

namespace {

/// The grounds of the cells; neighbours of one colour in a row are one area.
std::vector<PictureFill> pictureFills(const PictureGrid& grid)
{
    std::vector<PictureFill> fills;
    for (const int row : grid.rows()) {
        std::optional<Rgb> before;
        for (const int column : grid.columns()) {
            const std::optional<Rgb> color = grid.fillAt({row, column});
            const PictureRect cell = grid.rectOf({row, column, row, column});
            if (color && color == before)
                fills.back().area.width += cell.width;
            else if (color)
                fills.push_back({cell, *color});
            before = color;
        }
    }
    return fills;
}

} // namespace

SheetPicture sheetPicture(const Book& book, const Sheet& sheet, const CellRect& range, const RegionalFormats& formats)
{
    const PictureGrid grid(book, sheet, range);
    PictureTexts texts = pictureTexts(grid, formats);
    SheetPicture picture;
    picture.width = grid.width() + 1;
    picture.height = grid.height() + 1;
    picture.fills = pictureFills(grid);
    picture.lines = pictureLines(grid, texts.runOver);
    picture.texts = std::move(texts.texts);
    return picture;
}

} // namespace wagemill::engine
