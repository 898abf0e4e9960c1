#include "workbook/engine/formula/Coercion.h"

#include "app/base/NumberText.h"
#include "workbook/engine/formula/TextCase.h"
#include "workbook/engine/text/SerialDay.h"
#include "workbook/engine/text/TypedText.h"

#include <cmath>

namespace wagemill::engine {

namespace {

constexpr int longestInteger = 20; ///< digits before the point; longer numbers are written with an exponent
constexpr int mostLeadingZeros = 8;

Today todayOf(const CoercionRules& rules)
{
    const CalendarDate date = dateOfSerialDay(static_cast<int>(rules.now), false);
    return {date.year, date.month, date.day};
}

std::string plainText(const DecimalNumber& number, const RegionalFormats& formats)
{
    std::string digits = number.digits;
    int point = number.pointPosition;
    if (point <= 0) {
        digits.insert(0, static_cast<std::size_t>(1 - point), '0');
        point = 1;
    }
    const auto integers = static_cast<std::size_t>(point);
    if (digits.size() <= integers)
        return digits.append(integers - digits.size(), '0');
    return digits.substr(0, integers) + formats.decimalSeparator + digits.substr(integers);
}

std::string exponentText(const DecimalNumber& number, const RegionalFormats& formats)
{
    const int exponent = number.pointPosition - 1;
    std::string text = number.digits.substr(0, 1);
    if (number.digits.size() > 1)
        text += formats.decimalSeparator + number.digits.substr(1);
    const std::string power = std::to_string(std::abs(exponent));
    return text + (exponent < 0 ? "E-" : "E+") + (power.size() < 2 ? "0" : "") + power;
}

std::string numberAsText(double value, const RegionalFormats& formats)
{
    const DecimalNumber number = toShownDecimal(value);
    if (number.digits.empty())
        return "0";
    const bool isPlain = number.pointPosition <= longestInteger && number.pointPosition >= -mostLeadingZeros;
    return (number.negative ? "-" : "") + (isPlain ? plainText(number, formats) : exponentText(number, formats));
}

/// Numbers, texts and logicals in the order in which they sort.
int kindRank(const CellValue& value)
{
    if (std::holds_alternative<bool>(value))
        return 2;
    return std::holds_alternative<std::string>(value) ? 1 : 0;
}

CellValue emptyLike(const CellValue& other)
{
    if (std::holds_alternative<std::string>(other))
        return std::string();
    if (std::holds_alternative<bool>(other))
        return false;
    return 0.0;
}

template <class Number>
int compareNumbers(Number a, Number b)
{
    return static_cast<int>(a > b) - static_cast<int>(a < b);
}

} // namespace

CellValue valueInText(std::string_view text, const CoercionRules& rules)
{
    return readTypedText(text, rules.formats, todayOf(rules), rules.dates1904).value;
}

std::optional<double> numberInText(std::string_view text, const CoercionRules& rules)
{
    if (text.empty() || text.starts_with('='))
        return std::nullopt;
    const CellValue typed = valueInText(text, rules);
    const auto* const number = std::get_if<double>(&typed);
    return number == nullptr ? std::nullopt : std::optional(*number);
}

std::variant<double, ErrorCode> toNumber(const CellValue& value, const CoercionRules& rules)
{
    if (const auto* const number = std::get_if<double>(&value))
        return *number;
    if (const auto* const logical = std::get_if<bool>(&value))
        return *logical ? 1.0 : 0.0;
    if (const auto* const error = std::get_if<ErrorCode>(&value))
        return *error;
    if (const auto* const text = std::get_if<std::string>(&value)) {
        if (const auto number = numberInText(*text, rules))
            return *number;
        return ErrorCode::Value;
    }
    return 0.0;
}

std::variant<std::string, ErrorCode> toText(const CellValue& value, const CoercionRules& rules)
{
    if (const auto* const number = std::get_if<double>(&value))
        return numberAsText(*number, rules.formats);
    if (const auto* const logical = std::get_if<bool>(&value))
        return std::string(*logical ? "TRUE" : "FALSE");
    if (const auto* const error = std::get_if<ErrorCode>(&value))
        return *error;
    if (const auto* const text = std::get_if<std::string>(&value))
        return *text;
    return std::string();
}

std::variant<bool, ErrorCode> toLogical(const CellValue& value, const CoercionRules& rules)
{
    if (const auto* const text = std::get_if<std::string>(&value)) {
        if (compareIgnoringCase(*text, "TRUE") == 0)
            return true;
        if (compareIgnoringCase(*text, "FALSE") == 0)
            return false;
        return ErrorCode::Value;
    }
    const auto number = toNumber(value, rules);
    if (const auto* const error = std::get_if<ErrorCode>(&number))
        return *error;
    return std::get<double>(number) != 0;
}

int compareValues(const CellValue& a, const CellValue& b)
{
    if (isEmpty(a) && isEmpty(b))
        return 0;
    if (isEmpty(a))
        return compareValues(emptyLike(b), b);
    if (isEmpty(b))
        return compareValues(a, emptyLike(a));
    if (kindRank(a) != kindRank(b))
        return compareNumbers(kindRank(a), kindRank(b));
    if (const auto* const text = std::get_if<std::string>(&a))
        return compareIgnoringCase(*text, std::get<std::string>(b));
    if (const auto* const logical = std::get_if<bool>(&a))
        return compareNumbers(*logical, std::get<bool>(b));
    return compareNumbers(std::get<double>(a), std::get<double>(b));
}

} // namespace wagemill::engine
