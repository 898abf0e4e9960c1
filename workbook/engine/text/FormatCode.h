#pragma once

#include "app/base/text/RegionalFormats.h"
#include "workbook/engine/CellStyle.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wagemill::engine {

/// One element of a number format code (ECMA-376 part 1, 18.8.31 numFmts describes the language).
struct FormatToken {
    enum class Kind {
        Literal,
        Zero, ///< placeholders of digits: "0", "#" and "?"
        Hash,
        Question,
        Point, ///< decimal separator
        Comma, ///< only while the code is read: a group separator or a scale by 1000 in the end
        Percent,
        Exponent, ///< "E+" or "E-"
        Slash,    ///< of a fraction
        General,
        Text,      ///< "@"
        ShortDate, ///< the user's
        Year,
        Month,
        Day,
        Hour,
        Minute,
        Second,
        SecondFraction, ///< count digits after the decimal separator
        ElapsedHours,
        ElapsedMinutes,
        ElapsedSeconds,
        HalfDay, ///< "AM/PM" or, with a count of 1, "A/P"
        TimeSeparator,
    };

    Kind kind = Kind::Literal;
    std::string text = {}; ///< as in the code; of a literal what it shows
    std::size_t count = 1; ///< letters of a date field

    bool isDigit() const { return kind >= Kind::Zero && kind <= Kind::Question; }
};

/// "[>=100]": the condition that a number is less than, equal to or greater than the operand, any of these.
struct FormatCondition {
    bool less = false;
    bool equal = false;
    bool greater = false;
    double operand = 0;

    bool holds(double number) const { return number < operand ? less : number > operand ? greater : equal; }
};

/// What is between two semicolons of a code.
struct FormatSection {
    enum class Kind { Number, Scientific, Fraction, Date, General, Text };

    Kind kind = Kind::Number;
    std::optional<FormatCondition> condition;
    std::optional<Rgb> color;
    std::vector<FormatToken> tokens;
    bool grouped = false;
    int scalePower = 0; ///< the number is shown times 10 to this power: 2 for a percent sign, -3 for a comma at the end
};

/// The one to four sections of a code; none when it is empty or "General", nothing when it cannot be read: an open
/// quote or bracket, one of the letters B, E, G and N alone, more than four sections, excessive length.
std::optional<std::vector<FormatSection>> readFormatCode(std::string_view code);

/// A number in the digits of a format section.
struct RenderedNumber {
    std::string text;
    bool isZero = false; ///< no digit other than zero is shown
};

/// Renders the magnitude of `number` by a section of the kinds Number, Scientific and Fraction, the last one below 10
/// to the power 15: "# ?/?" and "# ??/16".
RenderedNumber renderNumber(double number, const FormatSection& section, const RegionalFormats& formats);

/// Renders a serial day with its part of a day by a section of the kind Date. Nothing when the number is not a date:
/// below zero or after 31 December 9999.
std::optional<std::string> renderDate(double serial, const FormatSection& section, const RegionalFormats& formats,
                                      bool dates1904);

} // namespace wagemill::engine
