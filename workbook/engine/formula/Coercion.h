#pragma once

#include "app/base/text/RegionalFormats.h"
#include "workbook/engine/CellValue.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace wagemill::engine {

/// What reading a value as another kind needs to know.
struct CoercionRules {
    const RegionalFormats& formats;
    double now = 0; ///< 1900 serial day, completes dates that are written without a year
    bool dates1904 = false;
};

/// What a text that is not a formula becomes when it is typed: 12.5, TRUE, #N/A; else the text.
CellValue valueInText(std::string_view text, const CoercionRules& rules);

/// The number that a text reads as when it is typed, "12.50", "$5", "7%", "3/31/2026"; nothing when it is none.
std::optional<double> numberInText(std::string_view text, const CoercionRules& rules);

/// The value as arithmetic takes it: nothing is 0, a logical 1 or 0, a text the number it reads as, else #VALUE!.
std::variant<double, ErrorCode> toNumber(const CellValue& value, const CoercionRules& rules);

/// The value as "&" takes it: nothing is "", a number its up to 15 digits, a logical TRUE or FALSE.
std::variant<std::string, ErrorCode> toText(const CellValue& value, const CoercionRules& rules);

/// The value as a condition: nothing and 0 are false, other numbers true, the texts "TRUE" and "FALSE" what they say.
std::variant<bool, ErrorCode> toLogical(const CellValue& value, const CoercionRules& rules);

/// Below, at or above 0 as comparison orders two values that are not errors: numbers before texts before logicals,
/// texts without regard to case; an empty cell is like 0, "" or FALSE, whichever the other one asks for.
int compareValues(const CellValue& a, const CellValue& b);

} // namespace wagemill::engine
