#pragma once

#include "app/base/RegionalFormats.h"
#include "workbook/engine/Book.h"

#include <string>
#include <vector>

namespace wagemill::engine {

/// All lengths are in pixels at 96 dots per inch, from the picture's top-left corner.
inline constexpr double picturePadding = 3; ///< between a cell's edge and its text, left and right
inline constexpr double pictureIndent = 9;  ///< one step of indent

struct PictureRect {
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;

    bool operator==(const PictureRect&) const = default;
};

struct PictureFill {
    PictureRect area;
    Rgb color;

    bool operator==(const PictureFill&) const = default;
};

/// A line along the edge between two cells, or across a cell. A line one pixel wide at x covers x to x + 1.
struct PictureLine {
    double x1 = 0;
    double y1 = 0;
    double x2 = 0;
    double y2 = 0;
    BorderStyle style = BorderStyle::Thin;
    Rgb color = {};

    bool operator==(const PictureLine&) const = default;
};

enum class TextAlign { Left, Center, Right };

/// A cell's text. The painter, who knows the font's metrics, breaks, cuts and replaces it by these rules.
struct PictureText {
    PictureRect cell; ///< the cell or merged area
    PictureRect room; ///< where the text may be drawn: the cell, and the empty cells beside it that it may run over
    std::string text; ///< UTF-8, line feeds are line breaks
    Font font;
    Rgb color;
    TextAlign align = TextAlign::Left;
    VerticalAlignment vertical = VerticalAlignment::Bottom;
    bool wrap = false;
    bool shrink = false; ///< drawn in a smaller font until it fits the cell
    int indent = 0;
    bool hashesWhenTooWide = false; ///< a number: "###" where it does not fit the cell
    bool alwaysHashes = false;      ///< "###" whatever the width: a negative date
    /// Shorter forms of a number in General, longest first, to be tried before "###".
    std::vector<std::string> shorterForms;
};

/// What a range looks like on the screen, as a list to draw: first the fills, then the lines, then the texts. The size
/// holds the pixel of the lines along the right and the bottom edge.
struct SheetPicture {
    double width = 0;
    double height = 0;
    std::vector<PictureFill> fills;
    std::vector<PictureLine> lines;
    std::vector<PictureText> texts;
};

/// The picture of `range` of a sheet of the book, as its window shows it: hidden rows and columns are left out, grid
/// lines are drawn where the sheet shows them. Rotated text is drawn level.
/// Throws EngineError when the range holds more than four million cells.
SheetPicture sheetPicture(const Book& book, const Sheet& sheet, const CellRect& range, const RegionalFormats& formats);

} // namespace wagemill::engine
