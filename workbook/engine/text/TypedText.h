#pragma once

#include "app/base/text/DateText.h"
#include "workbook/engine/CellValue.h"

#include <optional>
#include <string>
#include <string_view>

namespace wagemill::engine {

/// What typing a text into a cell means, formulas apart.
struct TypedValue {
    CellValue value;
    /// The number format that typing suggests to a cell in General format; empty: none. A code, or for the date the
    /// built-in "m/d/yy".
    std::string numberFormat = {};
    bool quotePrefix = false; ///< the text came after an apostrophe
};

/// What TRUE or FALSE says, in any case; nothing for another word.
std::optional<bool> logicalNamed(std::string_view word);

/// The value that a cell takes when a user types `text` into it, and the number format typing suggests:
///   "$15.00" -> 15.0, currency    "7.65%" -> 0.0765, "0.00%"    "%" -> the text "%"    "" -> empty
///   "3/31/2026" -> 46112.0, date  (serial days; 1 is 1 January 1900, 29 February 1900 counts)
/// text       UTF-8, at most 32767 characters, not beginning with "=": formulas are read by parseFormula. A leading "'"
///            makes everything after it text.
/// formats    the user's separators, currency symbol and date order
/// today      completes a date such as "1/2"; handed in, never looked up
/// dates1904  the workbook counts its days from 1 January 1904
TypedValue readTypedText(std::string_view text, const RegionalFormats& formats, CalendarDate today,
                         bool dates1904 = false);

} // namespace wagemill::engine
