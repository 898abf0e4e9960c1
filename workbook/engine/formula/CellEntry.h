#pragma once

#include "app/base/text/DateText.h"
#include "app/base/text/RegionalFormats.h"
#include "workbook/engine/Book.h"

#include <string_view>

namespace wagemill::engine {

/// Puts `text` into a cell as if a user typed it: a formula after "=", else the value that readTypedText gives. A cell
/// in General format takes the number format that typing suggests; a cell with another format keeps it. Throws
/// EngineError, naming the cell, when the address lies outside the sheet, the text is too long or the formula cannot be
/// read; the cell is then empty: what it held before, perhaps an example, is not what the user typed.
void enterText(Book& book, std::size_t sheet, CellAddress address, std::string_view text,
               const RegionalFormats& formats, CalendarDate today);

} // namespace wagemill::engine
