#include "workbook/engine/picture/SheetPicture.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

namespace wagemill::engine {

namespace {

/// The backgrounds of the cells; neighbours of one colour in a row are one area.
std::vector<drawing::Fill> pictureFills(const PictureGrid& grid)
{
    std::vector<drawing::Fill> fills;
    for (const int row : grid.rows()) {
        std::optional<Rgb> before;
        for (const int column : grid.columns()) {
            const std::optional<Rgb> color = grid.fillAt({row, column});
            const drawing::Rect cell = grid.rectOf({row, column, row, column});
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

drawing::Font drawingFont(const Font& font)
{
    constexpr int bold = 600;
    return {.name = font.name,
            .heightTwips = font.heightTwips,
            .bold = font.weight >= bold,
            .italic = font.italic,
            .strikeout = font.strikeout,
            .underline = font.underline != 0};
}

drawing::Drawing sheetPicture(const Book& book, const Sheet& sheet, const CellRect& range,
                              const RegionalFormats& formats, Medium medium)
{
    const PictureGrid grid(book, sheet, range, medium);
    PictureTexts texts = pictureTexts(grid, formats);
    drawing::Drawing picture;
    picture.width = grid.width() + 1;
    picture.height = grid.height() + 1;
    picture.fills = pictureFills(grid);
    picture.lines = pictureLines(grid, texts.runOver);
    std::ranges::transform(book.styles.fonts, std::back_inserter(picture.fonts), drawingFont); // under their own index
    picture.texts = std::move(texts.texts);
    return picture;
}

} // namespace wagemill::engine
