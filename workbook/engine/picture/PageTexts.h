#pragma once

#include "drawing/Drawing.h"

#include <array>
#include <string>
#include <string_view>

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

} // namespace wagemill::engine
