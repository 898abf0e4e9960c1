#include "workbook/engine/formula/Operators.h"

#include "app/base/text/NumberText.h"
#include "app/base/text/Unicode.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace wagemill::engine {

namespace {

CellValue arithmetic(Operator op, double left, double right)
{
    switch (op) {
    case Operator::Add:
        return numberValue(left + right);
    case Operator::Subtract:
        return numberValue(left - right);
    case Operator::Multiply:
        return numberValue(left * right);
    case Operator::Divide:
        return right == 0 ? CellValue(ErrorCode::DivisionByZero) : numberValue(left / right);
    default:
        return power(left, right);
    }
}

CellValue concatenation(const CellValue& left, const CellValue& right, const CoercionRules& rules)
{
    const auto first = std::get<std::string>(toText(left, rules)); // neither is an error any more
    return textValue(first + std::get<std::string>(toText(right, rules)));
}

bool agree(double a, double b)
{
    constexpr double nearby = 1e-14; // what is farther apart differs in 15 digits
    return a == b ||
           (std::abs(a - b) <= nearby * std::max(std::abs(a), std::abs(b)) && toShownDecimal(a) == toShownDecimal(b));
}

/// Whether both are numbers that agree in 15 significant digits.
bool areSameNumber(const CellValue& a, const CellValue& b)
{
    const auto* const first = std::get_if<double>(&a);
    const auto* const second = std::get_if<double>(&b);
    return first != nullptr && second != nullptr && agree(*first, *second);
}

std::optional<CellRect> common(const CellRect& a, const CellRect& b)
{
    const CellRect rect{std::max(a.firstRow, b.firstRow), std::max(a.firstColumn, b.firstColumn),
                        std::min(a.lastRow, b.lastRow), std::min(a.lastColumn, b.lastColumn)};
    if (rect.rows() < 1 || rect.columns() < 1)
        return std::nullopt;
    return rect;
}

AreasOrError intersectionOf(std::span<const Area> left, std::span<const Area> right)
{
    std::vector<Area> areas;
    for (const Area& a : left)
        for (const Area& b : right)
            if (const auto cells = common(a.cells, b.cells); cells && a.sheet == b.sheet)
                areas.push_back({a.sheet, *cells});
    if (areas.empty())
        return ErrorCode::Null;
    return areas;
}

AreasOrError rangeOf(std::span<const Area> left, std::span<const Area> right)
{
    Area whole = left.front();
    for (const auto areas : {left, right})
        for (const Area& area : areas) {
            if (area.sheet != whole.sheet)
                return ErrorCode::Value;
            whole.cells = {std::min(whole.cells.firstRow, area.cells.firstRow),
                           std::min(whole.cells.firstColumn, area.cells.firstColumn),
                           std::max(whole.cells.lastRow, area.cells.lastRow),
                           std::max(whole.cells.lastColumn, area.cells.lastColumn)};
        }
    return std::vector<Area>{whole};
}

DecimalNumber truncated(DecimalNumber number, int decimals)
{
    const int kept = std::max(number.pointPosition + decimals, 0);
    if (static_cast<std::size_t>(kept) < number.digits.size())
        number.digits.resize(static_cast<std::size_t>(kept));
    return number;
}

} // namespace

bool holds(Operator comparison, int order)
{
    switch (comparison) {
    case Operator::Less:
        return order < 0;
    case Operator::LessOrEqual:
        return order <= 0;
    case Operator::Equal:
        return order == 0;
    case Operator::GreaterOrEqual:
        return order >= 0;
    case Operator::Greater:
        return order > 0;
    default:
        return order != 0;
    }
}

CellValue textValue(std::string text)
{
    if (text.size() > maxTextLength && utf16Length(text) > maxTextLength)
        return ErrorCode::Value;
    return text;
}

CellValue power(double base, double exponent)
{
    if (base == 0 && exponent <= 0)
        return exponent == 0 ? ErrorCode::Number : ErrorCode::DivisionByZero;
    return numberValue(std::pow(base, exponent));
}

double roundedNumber(double number, double decimals, Rounding rounding)
{
    constexpr double maxDecimals = 400; // no double has digits farther from the point
    const auto places = static_cast<int>(std::clamp(decimals, -maxDecimals, maxDecimals));
    const DecimalNumber decimal = toShownDecimal(number);
    DecimalNumber result =
        rounding == Rounding::HalfAwayFromZero ? rounded(decimal, places) : truncated(decimal, places);
    const bool isCut = result.digits.size() < decimal.digits.size();
    if (rounding == Rounding::AwayFromZero && isCut)
        result = result.digits.empty()
                     ? DecimalNumber{decimal.negative, "1", 1 - places}
                     : rounded({decimal.negative, result.digits + '9', decimal.pointPosition}, places);
    return toDouble(result).value_or(std::numeric_limits<double>::infinity());
}

CellValue calculated(Operator op, const CellValue& left, const CellValue& right, const CoercionRules& rules)
{
    if (isComparison(op) || op == Operator::Concatenate) {
        for (const CellValue* const operand : {&left, &right})
            if (std::holds_alternative<ErrorCode>(*operand))
                return *operand;
        if (op == Operator::Concatenate)
            return concatenation(left, right, rules);
        return holds(op, areSameNumber(left, right) ? 0 : compareValues(left, right));
    }
    const auto first = toNumber(left, rules);
    const auto second = toNumber(right, rules);
    for (const auto* const number : {&first, &second}) // a text that is not a number is an error, too
        if (const auto* const error = std::get_if<ErrorCode>(number))
            return *error;
    return arithmetic(op, std::get<double>(first), std::get<double>(second));
}

bool isNothingButRounding(Operator op, const CellValue& left, const CellValue& right)
{
    if (op == Operator::Subtract)
        return areSameNumber(left, right);
    const auto* const added = std::get_if<double>(&right);
    return op == Operator::Add && added != nullptr && areSameNumber(left, -*added);
}

CellValue calculated(Operator op, const CellValue& operand, const CoercionRules& rules)
{
    if (op == Operator::UnaryPlus)
        return operand; // changes nothing, not even a text
    const auto number = toNumber(operand, rules);
    if (const auto* const error = std::get_if<ErrorCode>(&number))
        return *error;
    return numberValue(op == Operator::Percent ? std::get<double>(number) / 100 : -std::get<double>(number));
}

AreasOrError joinedAreas(Operator op, std::span<const Area> left, std::span<const Area> right)
{
    if (op == Operator::Range)
        return rangeOf(left, right);
    if (op == Operator::Intersection)
        return intersectionOf(left, right);
    std::vector<Area> areas(left.begin(), left.end());
    areas.insert(areas.end(), right.begin(), right.end());
    return areas;
}

} // namespace wagemill::engine
