#include "app/base/text/NumberText.h"

#include "app/base/text/PlainCharacters.h"
#include "app/base/text/TextScanner.h"
#include "app/base/text/Unicode.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <vector>

namespace wagemill {

namespace {

/// Far beyond every double and far from overflow in sums.
constexpr std::int64_t pointLimit = 1'000'000'000;

/// The separators and the symbol as they are met in a plain text.
struct PlainFormats {
    explicit PlainFormats(const RegionalFormats& formats)
        : decimal(plainSeparator(formats.decimalSeparator, formats)),
          currencyDecimal(plainSeparator(formats.currencyDecimalSeparator, formats)),
          group(plainSeparator(formats.groupSeparator, formats)),
          currency(plainCharacters(formats.currencySymbol, formats))
    {
    }

    /// A blank is a separator too, though plainCharacters takes blanks at the ends away.
    static std::string plainSeparator(const std::string& separator, const RegionalFormats& formats)
    {
        const std::string plain = plainCharacters(separator, formats);
        return plain.empty() && !separator.empty() ? " " : plain;
    }

    std::string decimal;
    std::string currencyDecimal;
    std::string group;
    std::string currency;
};

/// What is written around the digits of a number, and how often.
struct Marks {
    int minusSigns = 0;
    int plusSigns = 0;
    int openBrackets = 0;
    int closeBrackets = 0;
    int currencies = 0;
    int percents = 0;

    bool fit() const
    {
        return minusSigns + plusSigns + openBrackets <= 1 && openBrackets == closeBrackets &&
               currencies + percents <= 1;
    }
};

/// Takes the marks on one side of the digits, where brackets open or close.
void readMarks(TextScanner& scanner, const PlainFormats& formats, char bracket, int& brackets, Marks& marks)
{
    for (bool found = true; found;) {
        scanner.skipBlanks();
        found = true;
        if (scanner.skip(formats.currency))
            ++marks.currencies;
        else if (scanner.skip('-'))
            ++marks.minusSigns;
        else if (scanner.skip('+'))
            ++marks.plusSigns;
        else if (scanner.skip('%'))
            ++marks.percents;
        else if (scanner.skip(bracket))
            ++brackets;
        else
            found = false;
    }
}

bool isGrouping(const std::vector<std::size_t>& groups, int firstGroup, int furtherGroups)
{
    const auto further = static_cast<std::size_t>(std::max(furtherGroups, 1));
    return groups.back() == static_cast<std::size_t>(firstGroup) && groups.front() >= 1 &&
           groups.front() <= std::max(further, groups.back()) &&
           std::all_of(groups.begin() + 1, groups.end() - 1, [further](std::size_t size) { return size == further; });
}

/// The digits before the decimal separator without their group separators; nothing when groups are misplaced.
std::optional<std::string> readInteger(TextScanner& reader, const PlainFormats& plain, const RegionalFormats& formats,
                                       bool& hasGroups)
{
    std::string digits(reader.takeDigits());
    std::vector<std::size_t> groups = {digits.size()};
    while (!digits.empty() && reader.startsWith(plain.group) && isDigit(reader.peek(plain.group.size()))) {
        reader.skip(plain.group);
        const std::string_view group = reader.takeDigits();
        groups.push_back(group.size());
        digits += group;
    }
    hasGroups = groups.size() > 1;
    if (hasGroups && (digits.front() == '0' ||
                      !(isGrouping(groups, formats.firstGroup, formats.furtherGroups) || isGrouping(groups, 3, 3))))
        return std::nullopt;
    return digits;
}

/// An exponent after the digits, 0 when there is none; clamped far beyond every double.
std::int64_t readExponent(TextScanner& reader, bool& hasExponent)
{
    TextScanner ahead = reader;
    ahead.skipIgnoringCase("e");
    const bool negative = ahead.skip('-');
    if (!negative)
        ahead.skip('+');
    hasExponent = (reader.peek() == 'E' || reader.peek() == 'e') && isDigit(ahead.peek());
    if (!hasExponent)
        return 0;
    std::int64_t exponent = 0;
    for (const char digit : ahead.takeDigits())
        exponent = std::min(exponent * 10 + (digit - '0'), pointLimit);
    reader = ahead;
    return negative ? -exponent : exponent;
}

DecimalNumber decimalNumber(bool negative, std::string digits, std::int64_t pointPosition)
{
    const std::size_t leading = std::min(digits.find_first_not_of('0'), digits.size());
    digits.erase(0, leading);
    digits.erase(digits.find_last_not_of('0') + 1);
    if (digits.empty())
        return {};
    const std::int64_t position = pointPosition - static_cast<std::int64_t>(leading);
    return {negative, std::move(digits), static_cast<int>(std::clamp(position, -pointLimit, pointLimit))};
}

/// Adds one to the last digit; all nines become a single one, and the point moves.
void incrementLastDigit(DecimalNumber& number)
{
    number.digits.erase(number.digits.find_last_not_of('9') + 1);
    if (number.digits.empty()) {
        number.digits = "1";
        ++number.pointPosition;
    } else {
        ++number.digits.back();
    }
}

std::string unsignedText(const FixedDigits& fixed, const RegionalFormats& formats, const std::string& decimalSeparator)
{
    const std::string integer = fixed.integer.empty() ? "0" : fixed.integer;
    std::string text;
    for (std::size_t i = 0; i < integer.size(); ++i) {
        text += integer[i];
        if (isGroupEnd(integer.size() - 1 - i, integer.size(), formats))
            text += formats.groupSeparator;
    }
    if (!fixed.fraction.empty())
        text += decimalSeparator + fixed.fraction;
    return toLocalDigits(text, formats);
}

DecimalNumber numberOf(std::string_view text, const RegionalFormats& formats)
{
    const auto reading = readNumber(text, formats);
    if (!reading)
        throw std::invalid_argument("\"" + std::string(text) + "\" is not a number.");
    return reading->number;
}

void replaceAll(std::string& text, std::string_view from, std::string_view to)
{
    for (auto at = text.find(from); at != std::string::npos && !from.empty(); at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

template <typename Integer>
Integer toInteger(double number, const char* range)
{
    const double whole = std::nearbyint(number); // the default rounding: halves to even
    if (!(whole >= std::numeric_limits<Integer>::min() && whole <= std::numeric_limits<Integer>::max()))
        throw std::overflow_error("The number " + std::to_string(number) + " is outside the range " + range + ".");
    return static_cast<Integer>(whole);
}

/// precision  digits after the first; none: as many as it takes to read the same double
DecimalNumber decimalDigits(double number, std::optional<int> precision)
{
    if (!std::isfinite(number))
        return {};
    std::array<char, 32> buffer{};
    constexpr auto form = std::chars_format::scientific; // "1.25e+02"
    const double size = std::abs(number);
    const auto written = precision ? std::to_chars(buffer.begin(), buffer.end(), size, form, *precision)
                                   : std::to_chars(buffer.begin(), buffer.end(), size, form);
    const char* const mark = std::find(buffer.begin(), written.ptr, 'e');
    int exponent = 0;
    std::from_chars(mark + (mark[1] == '+' ? 2 : 1), written.ptr, exponent);
    std::string digits(buffer.cbegin(), mark);
    std::erase(digits, '.');
    return decimalNumber(number < 0, std::move(digits), std::int64_t{exponent} + 1);
}

} // namespace

std::optional<NumberReading> readNumber(std::string_view text, const RegionalFormats& formats, bool allowPercent)
{
    const std::string plain = plainCharacters(text, formats);
    const PlainFormats plainFormats(formats);
    TextScanner reader(plain);
    NumberReading reading;
    Marks marks;

    readMarks(reader, plainFormats, '(', marks.openBrackets, marks);
    const auto integer = readInteger(reader, plainFormats, formats, reading.hasGroups);
    if (!integer)
        return std::nullopt;
    const bool hasDecimal = reader.skip(plainFormats.decimal);
    const bool hasMoneyDecimal = !hasDecimal && reader.skip(plainFormats.currencyDecimal);
    const std::string_view fraction = hasDecimal || hasMoneyDecimal ? reader.takeDigits() : std::string_view();
    if (integer->empty() && fraction.empty())
        return std::nullopt;
    const std::int64_t exponent = readExponent(reader, reading.hasExponent);
    readMarks(reader, plainFormats, ')', marks.closeBrackets, marks);
    if (!reader.atEnd() || !marks.fit() || (marks.percents > 0 && !allowPercent) ||
        (hasMoneyDecimal && marks.currencies == 0))
        return std::nullopt;

    reading.number = decimalNumber(marks.minusSigns + marks.openBrackets > 0, *integer + std::string(fraction),
                                   static_cast<std::int64_t>(integer->size()) + exponent);
    reading.hasCurrency = marks.currencies > 0;
    reading.hasPercent = marks.percents > 0;
    reading.decimals = static_cast<int>(std::min<std::size_t>(fraction.size(), pointLimit));
    if (!toDouble(reading.number))
        return std::nullopt;
    return reading;
}

bool isNumericText(std::string_view text, const RegionalFormats& formats)
{
    return readNumber(text, formats).has_value();
}

std::optional<double> toDouble(const DecimalNumber& number)
{
    if (number.digits.empty() || number.pointPosition < std::numeric_limits<double>::min_exponent10 - 20)
        return 0.0;
    if (number.pointPosition > std::numeric_limits<double>::max_exponent10 + 1)
        return std::nullopt;
    const std::string text =
        (number.negative ? "-0." : "0.") + number.digits + "e" + std::to_string(number.pointPosition);
    double value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range)
        return number.pointPosition > 0 ? std::nullopt : std::optional(0.0);
    return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

DecimalNumber toDecimal(double number)
{
    return decimalDigits(number, std::nullopt);
}

DecimalNumber toShownDecimal(double number)
{
    constexpr int digitsAfterTheFirst = 14;
    return decimalDigits(number, digitsAfterTheFirst);
}

DecimalNumber rounded(const DecimalNumber& number, int decimals)
{
    const std::int64_t kept = std::int64_t{number.pointPosition} + decimals;
    if (kept < 0)
        return {};
    const auto keptDigits = static_cast<std::size_t>(kept);
    if (keptDigits >= number.digits.size())
        return number;
    DecimalNumber result = number;
    result.digits.resize(keptDigits);
    if (number.digits[keptDigits] >= '5')
        incrementLastDigit(result);
    return decimalNumber(result.negative, result.digits, result.pointPosition);
}

FixedDigits fixedDigits(const DecimalNumber& number, int decimals)
{
    const DecimalNumber value = rounded(number, decimals);
    const auto width = static_cast<std::size_t>(std::max(decimals, 0));
    if (value.digits.empty())
        return {"", std::string(width, '0')};
    const auto integerDigits = static_cast<std::size_t>(std::max(value.pointPosition, 0));
    const auto leadingZeros = static_cast<std::size_t>(std::max(-value.pointPosition, 0));
    FixedDigits fixed{value.digits.substr(0, integerDigits), std::string(leadingZeros, '0')};
    fixed.integer.append(integerDigits - fixed.integer.size(), '0');
    if (integerDigits < value.digits.size())
        fixed.fraction += value.digits.substr(integerDigits);
    fixed.fraction.resize(width, '0');
    return fixed;
}

bool isGroupEnd(std::size_t following, std::size_t total, const RegionalFormats& formats)
{
    if (formats.firstGroup <= 0 || formats.furtherGroups <= 0)
        return false;
    const auto first = static_cast<std::size_t>(formats.firstGroup);
    const auto before = static_cast<std::size_t>(std::max(formats.digitsBeforeGrouping, 1));
    return following >= first && total >= first + before &&
           (following - first) % static_cast<std::size_t>(formats.furtherGroups) == 0;
}

std::string paddedNumber(std::int64_t number, std::size_t width)
{
    const std::string digits = std::to_string(number);
    return std::string(width - std::min(width, digits.size()), '0') + digits;
}

std::string toLocalDigits(std::string_view text, const RegionalFormats& formats)
{
    if (formats.zeroDigit == U'0')
        return std::string(text);
    std::u32string characters = toUtf32(text);
    for (char32_t& character : characters)
        if (character >= U'0' && character <= U'9')
            character = formats.zeroDigit + (character - U'0');
    return toUtf8(characters);
}

std::string currencyText(const DecimalNumber& number, const RegionalFormats& formats, int decimals)
{
    const DecimalNumber value = rounded(number, decimals);
    const std::string& ofMoney = formats.currencyDecimalSeparator;
    const Affixes& affixes = value.negative ? formats.negativeCurrency : formats.currency;
    return affixes.prefix +
           unsignedText(fixedDigits(value, decimals), formats, ofMoney.empty() ? formats.decimalSeparator : ofMoney) +
           affixes.suffix;
}

std::string numberText(const DecimalNumber& number, const RegionalFormats& formats, int decimals)
{
    const DecimalNumber value = rounded(number, decimals);
    return (value.negative ? formats.negativeSign : std::string()) +
           unsignedText(fixedDigits(value, decimals), formats, formats.decimalSeparator);
}

std::string currencyTextOf(std::string_view text, const RegionalFormats& formats)
{
    return currencyText(numberOf(text, formats), formats);
}

std::string numberTextOf(std::string_view text, const RegionalFormats& formats)
{
    return numberText(numberOf(text, formats), formats);
}

std::int16_t toInt16(double number)
{
    return toInteger<std::int16_t>(number, "-32768 to 32767");
}

std::int32_t toInt32(double number)
{
    return toInteger<std::int32_t>(number, "-2147483648 to 2147483647");
}

std::string localDecimalSeparator(const RegionalFormats& formats)
{
    const std::u32string half = toUtf32(numberText({false, "5", 0}, formats, 1));
    return toUtf8(half.substr(1, 1));
}

std::string toLocalNumberText(std::string_view text, const RegionalFormats& formats, std::int16_t mode)
{
    std::string result(text);
    const std::string separator = localDecimalSeparator(formats);
    if (mode == -1) {
        replaceAll(result, separator, ".");
    } else {
        replaceAll(result, ".", separator);
        replaceAll(result, ",", separator);
    }
    return result;
}

} // namespace wagemill
