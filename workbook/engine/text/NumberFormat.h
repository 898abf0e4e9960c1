#pragma once

#include "app/base/text/RegionalFormats.h"
#include "workbook/engine/CellStyle.h"
#include "workbook/engine/CellValue.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wagemill::engine {

/// A value as its cell shows it, before the cell's width is considered.
struct ShownText {
    std::string text = {};         ///< UTF-8; `_x` became a blank
    std::optional<Rgb> color = {}; ///< from a section such as [Red]
    bool isNumber = false;         ///< shown right-aligned, and as "###" where it does not fit
    bool isGeneral = false;        ///< a number in General: digits may be dropped until it fits the column
    bool isNegativeDate = false;   ///< a date format on a value that is not a date: "###" whatever the width
};

/// Digits of a cell of standard width.
inline constexpr int standardCharacters = 11;

/// Renders `value` by a number format code such as `"$"#,##0.00` or `m/d/yy`. Numbers are taken to 15 significant
/// digits and rounded half away from zero; what rounds to zero has no minus sign of its own. "m/d/yy" is the user's
/// short date with a year of four digits. Separators, digits and month names are those of `formats`. An unreadable code
/// shows the value as General does.
/// dates1904  serial day 0 is 1 January 1904
ShownText showValue(const CellValue& value, std::string_view code, const RegionalFormats& formats,
                    bool dates1904 = false);

/// The number as General shows it in a cell of at most `characters` digits, with exponent where needed.
std::string generalText(double number, const RegionalFormats& formats, int characters = standardCharacters);
/// The shorter ones for narrower cells, longest first.
std::vector<std::string> shorterGeneralTexts(double number, const RegionalFormats& formats);

/// The number as formulas make a text of it, "1234.5": all of its 15 digits, with an exponent where more than 20 would
/// be before the separator or more than 8 zeros after it. Its digits and sign are never the user's own.
std::string fullNumberText(double number, const RegionalFormats& formats);

} // namespace wagemill::engine
