#pragma once

#include "app/base/text/RegionalFormats.h"
#include "drawing/Drawing.h"
#include "drawing/Pages.h"
#include "workbook/engine/Book.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace wagemill::engine {

/// What headers and footers tell beside their own text.
struct PageFacts {
    std::string date; ///< of printing, as the user writes it
    std::string time;
    std::string file;   ///< name of the workbook
    std::string folder; ///< of it, with the separator at its end
    std::string sheet = {};
    int page = 1;
    int pages = 1;
};

/// One of the three parts of a header or footer. A part is drawn in one font, that of its first letter.
struct PageText {
    std::string text;
    drawing::Font font;

    bool operator==(const PageText&) const = default;
};

/// The left, centre and right part of a header or footer with its codes carried out ([MS-XLS] 2.4.136 names them):
///   "&L&8Payroll&RPage &P of &N"  ->  "Payroll" in 8 points, "", "Page 1 of 3"
std::array<PageText, 3> pageTexts(std::string_view codes, const drawing::Font& standardFont, const PageFacts& facts);

/// The pages of a sheet as its print set-up wants them: the print area or all that is to be seen, from A1 on, with
/// repeated titles, page breaks, scale, margins, header and footer. A column that the paper is too narrow for goes to
/// no further page, unless the set-up breaks or fits the columns: the sheet is made smaller until it is as wide as the
/// paper. No pages for a sheet with nothing to see.
/// Throws EngineError when a page would hold more than four million cells, or there would be more than 10000 pages.
std::vector<drawing::Page> sheetPages(const Book& book, std::size_t sheet, const drawing::PaperSize& paper,
                                      const PageFacts& facts, const RegionalFormats& formats);

} // namespace wagemill::engine
