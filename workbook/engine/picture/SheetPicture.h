#pragma once

#include "app/base/text/RegionalFormats.h"
#include "drawing/Drawing.h"
#include "workbook/engine/Book.h"
#include "workbook/engine/picture/PictureGrid.h"

namespace wagemill::engine {

/// The picture of `range` of a sheet of the book, as its window shows it: hidden rows and columns are left out, grid
/// lines are drawn where the sheet shows them. Rotated text is drawn level.
/// Throws EngineError when the range holds more than four million cells.
drawing::Drawing sheetPicture(const Book& book, const Sheet& sheet, const CellRect& range,
                              const RegionalFormats& formats, Medium medium = Medium::Screen);

/// The font as a drawing has it.
drawing::Font drawingFont(const Font& font);

} // namespace wagemill::engine
