#pragma once

#include "app/base/text/RegionalFormats.h"
#include "drawing/Pages.h"
#include "workbook/engine/Book.h"
#include "workbook/engine/picture/PageTexts.h"

#include <cstddef>
#include <vector>

namespace wagemill::engine {

/// The pages of a sheet as its print set-up wants them: the print area or all that is to be seen, from A1 on, with
/// repeated titles, page breaks, scale, margins, header and footer. A column that the paper is too narrow for goes to
/// no further page, unless the set-up breaks or fits the columns: the sheet is made smaller until it is as wide as the
/// paper. No pages for a sheet with nothing to see.
/// Throws EngineError when a page would hold more than four million cells, or there would be more than 10000 pages.
std::vector<drawing::Page> sheetPages(const Book& book, std::size_t sheet, const drawing::PaperSize& paper,
                                      const PageFacts& facts, const RegionalFormats& formats);

} // namespace wagemill::engine
