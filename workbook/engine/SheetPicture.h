#pragma once

#include "app/base/RegionalFormats.h"
#include "workbook/engine/Book.h"

#include <string>
#include <vector>

namespace wagemill::engine {

/// All lengths are in pixels at 96 dots per inch, from the picture's top-left corner.
struct PictureRect {
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;
};

struct PictureFill {
    PictureRect area;
    Rgb color;
};

struct PictureLine {
    double x1 = 0;
    double y1 = 0;
    double x2 = 0;
    double y2 = 0;
    BorderStyle style = BorderStyle::Thin;
    Rgb color;
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
    int indent = 0;
    bool hashesWhenTooWide = false; ///< a number: "###" where it does not fit the cell
    bool alwaysHashes = false;      ///< "###" whatever the width: a negative date
    /// Shorter forms of a number in General, longest first, to be tried before "###".
    std::vector<std::string> shorterForms;
};

/// What a range looks like on the screen, as a list to draw: first the fills, then the lines, then the texts.
struct SheetPicture {
    double width = 0;
    double height = 0;
    std::vector<PictureFill> fills;
    std::vector<PictureLine> lines;
    std::vector<PictureText> texts;
};

/// The picture of `range` of a sheet of the book, as its window shows it.
SheetPicture sheetPicture(const Book& book, const Sheet& sheet, const CellRect& range, const RegionalFormats& formats);

} // namespace wagemill::engine
