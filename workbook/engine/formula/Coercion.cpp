#include "workbook/engine/formula/Coercion.h"

#include "app/base/text/LetterCase.h"
#include "workbook/engine/text/NumberFormat.h"
#include "workbook/engine/text/SerialDay.h"
#include "workbook/engine/text/TypedText.h"

namespace wagemill::engine {

namespace {

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
    return readTypedText(text, rules.formats, dateOfSerialDay(static_cast<int>(rules.now), false), rules.dates1904)
        .value;
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
    if (const auto* const error = std::get_if<ErrorCode>(&value))
        return *error;
    if (const auto* const text = std::get_if<std::string>(&value)) {
        if (const auto number = numberInText(*text, rules))
            return *number;
        return ErrorCode::Value;
    }
    return value == CellValue(true) ? 1.0 : 0.0;
}

std::variant<std::string, ErrorCode> toText(const CellValue& value, const CoercionRules& rules)
{
    if (const auto* const number = std::get_if<double>(&value))
        return fullNumberText(*number, rules.formats);
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
        if (const auto logical = logicalNamed(*text))
            return *logical;
        return ErrorCode::Value;
    }
    const auto number = toNumber(value, rules);
    if (const auto* const error = std::get_if<ErrorCode>(&number))
        return *error;
    return std::get<double>(number) != 0;
}

int compareValues(const CellValue& a, const CellValue& b)
{
    if (a.index() != b.index() && (isEmpty(a) || isEmpty(b)))
        return isEmpty(a) ? compareValues(emptyLike(b), b) : compareValues(a, emptyLike(a));
    if (a.index() != b.index()) // the alternatives are in the order of their kinds
        return compareNumbers(a.index(), b.index());
    if (const auto* const text = std::get_if<std::string>(&a))
        return compareIgnoringCase(*text, std::get<std::string>(b));
    if (const auto* const logical = std::get_if<bool>(&a))
        return compareNumbers(*logical, std::get<bool>(b));
    const auto* const number = std::get_if<double>(&a);
    return number == nullptr ? 0 : compareNumbers(*number, std::get<double>(b));
}

} // namespace wagemill::engine
