#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace wagemill::engine {

/// A new page begins with that row or column, counting from 0.
struct PageBreak {
    std::uint16_t at = 0;
    std::uint16_t first = 0;  ///< the columns or rows that it cuts, as in the file
    std::uint16_t last = 255; ///< all columns; a break before a column cuts rows 0 to 65535

    bool operator==(const PageBreak&) const = default;
};

/// How a sheet is printed. Margins are inches.
struct PrintSetup {
    std::uint16_t paper = 0; ///< its number in the file ([MS-XLS] 2.4.257); 0 is the printer's own
    bool landscape = false;
    std::uint16_t scalePercent = 100; ///< where it is not fitted to pages
    bool fitToPages = false;          ///< made smaller until it needs at most these pages; 0: as many as needed
    std::uint16_t pagesWide = 1;
    std::uint16_t pagesHigh = 1;
    double left = 0.75;
    double right = 0.75;
    double top = 1;
    double bottom = 1;
    double headerMargin = 0.5; ///< between the edge of the paper and the header
    double footerMargin = 0.5;
    bool centerHorizontally = false;
    bool centerVertically = false;
    std::string header; ///< with the codes of the file: &L &C &R, &P page, &N pages, &A sheet, &D date and others
    std::string footer;
    std::vector<PageBreak> rowBreaks; ///< ascending
    std::vector<PageBreak> columnBreaks;
    bool gridLines = false;
    bool headings = false;     ///< column letters and row numbers
    bool overThenDown = false; ///< the order of the pages
    bool ownFirstPage = false; ///< the first page has the number firstPage, else 1
    std::uint16_t firstPage = 1;
    std::uint16_t copies = 1;
    std::uint16_t horizontalResolution = 600; ///< dots per inch
    std::uint16_t verticalResolution = 600;
    std::uint16_t otherFlags = 0; ///< of the SETUP record: draft, comments and the like, kept as they came

    bool operator==(const PrintSetup&) const = default;
};

} // namespace wagemill::engine
