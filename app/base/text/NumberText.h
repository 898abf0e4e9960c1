#pragma once

#include "app/base/text/RegionalFormats.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace wagemill {

/// A number as its decimal digits, exactly as written: value = (negative ? -1 : 1) * 0.digits * 10^pointPosition.
/// No leading or trailing zeros; no digits means zero.
struct DecimalNumber {
    bool negative = false;
    std::string digits;
    int pointPosition = 0;

    bool operator==(const DecimalNumber&) const = default;
};

/// How a number was written, beside its value.
struct NumberReading {
    DecimalNumber number;
    bool hasCurrency = false;
    bool hasGroups = false;
    bool hasExponent = false;
    bool hasPercent = false; ///< the number before the sign: "7.65%" reads 7.65
    int decimals = 0;        ///< digits typed after the decimal separator
};

/// Reads a number in the user's format, or nothing when the text is not one: currency symbol, group separators, a sign
/// before, after or as brackets, exponent, the locale's digits or 0 to 9, blanks of every kind around. A percent sign
/// is only read where `allowPercent`. Empty text is not a number, nor is one beyond the range of a double.
/// Group separators are where the user's format puts them or before every third digit: "1,23" is not a number, as is
/// "0,123", which is more likely a decimal fraction from elsewhere.
std::optional<NumberReading> readNumber(std::string_view text, const RegionalFormats& formats,
                                        bool allowPercent = false);

/// Whether the form takes the text as a number.
bool isNumericText(std::string_view text, const RegionalFormats& formats);

/// The nearest double; overflow is nothing.
std::optional<double> toDouble(const DecimalNumber& number);
/// The number's shortest decimal digits that read back as the same double; NaN and infinity have none and are zero.
DecimalNumber toDecimal(double number);
/// The number's first 15 significant digits, which are all that a spreadsheet shows and rounds by: 596.7149999999999 is
/// 596.715.
DecimalNumber toShownDecimal(double number);
/// Rounded to `decimals` digits after the point, halves away from zero, by decimal digits: 1.005 becomes 1.01.
DecimalNumber rounded(const DecimalNumber& number, int decimals);

/// The digits of a number rounded to `decimals` places, without sign: "12" and "50".
struct FixedDigits {
    std::string integer;  ///< without leading zeros; empty below one
    std::string fraction; ///< `decimals` digits
};
FixedDigits fixedDigits(const DecimalNumber& number, int decimals);

/// Whether a group separator follows an integer digit.
/// following  digits between this digit and the decimal separator
/// total      all digits before the decimal separator
bool isGroupEnd(std::size_t following, std::size_t total, const RegionalFormats& formats);
/// A number that is not negative with zeros before it, at least so wide: "05".
std::string paddedNumber(std::int64_t number, std::size_t width);
/// The user's digits for 0 to 9 in a text; other characters stay.
std::string toLocalDigits(std::string_view text, const RegionalFormats& formats);

/// The number with `decimals` digits after the separator, grouped, in the user's currency or number form. What rounds
/// to zero has no sign.
std::string currencyText(const DecimalNumber& number, const RegionalFormats& formats, int decimals = 2);
std::string numberText(const DecimalNumber& number, const RegionalFormats& formats, int decimals = 2);

/// The same from a text: "12.5" -> "$12.50". Throws std::invalid_argument, naming the text, when it is not a number.
std::string currencyTextOf(std::string_view text, const RegionalFormats& formats);
std::string numberTextOf(std::string_view text, const RegionalFormats& formats);

/// Rounds halves to even. Throws std::overflow_error, naming the number, outside -32768 to 32767.
std::int16_t toInt16(double number);
/// Rounds halves to even. Throws std::overflow_error outside the 32-bit range.
std::int32_t toInt32(double number);

/// The separator found by writing one half as text: the second character of "0.5", as UTF-8.
std::string localDecimalSeparator(const RegionalFormats& formats);
/// mode other than -1: every "." and then every "," becomes the local separator; mode -1: the local separator becomes
/// ".".
std::string toLocalNumberText(std::string_view text, const RegionalFormats& formats, std::int16_t mode = 0);

} // namespace wagemill
