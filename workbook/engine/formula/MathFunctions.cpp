#include "workbook/engine/formula/Criterion.h"
#include "workbook/engine/formula/DecimalRounding.h"
#include "workbook/engine/formula/NumberArguments.h"
#include "workbook/engine/formula/Operators.h"

#include <array>
#include <cmath>
#include <numbers>

namespace wagemill::engine {

namespace {

/// A function of one number.
template <auto function>
Operand ofNumber(const FunctionCall& call)
{
    return numberAnswer(function(call.number(0)));
}

double squareRoot(double number)
{
    return std::sqrt(number); // NaN below zero becomes #NUM!
}

double naturalLogarithm(double number)
{
    return number <= 0 ? NAN : std::log(number);
}

double decimalLogarithm(double number)
{
    return number <= 0 ? NAN : std::log10(number);
}

double sign(double number)
{
    return number > 0 ? 1 : number < 0 ? -1 : 0;
}

/// The nearest whole number away from zero that is a multiple of two, or odd.
double even(double number)
{
    return std::copysign(2 * std::ceil(std::fabs(number) / 2), number);
}

double odd(double number)
{
    return std::copysign(2 * std::ceil((std::max(std::fabs(number), 1.0) - 1) / 2) + 1, number);
}

Operand logarithm(const FunctionCall& call)
{
    const double number = call.number(0);
    const double base = call.number(1, 10);
    if (number <= 0 || base <= 0)
        return errorOperand(ErrorCode::Number);
    if (base == 1)
        return errorOperand(ErrorCode::DivisionByZero);
    return numberAnswer(base == 10 ? std::log10(number) : std::log(number) / std::log(base));
}

template <Rounding rounding>
Operand round(const FunctionCall& call)
{
    const double decimals = std::clamp(std::trunc(call.number(1, 0)), -400.0, 400.0); // within the digits of a double
    return numberAnswer(roundedNumber(call.number(0), static_cast<int>(decimals), rounding));
}

template <double (*toWhole)(double)>
Operand multiple(const FunctionCall& call)
{
    const double number = call.number(0);
    const double step = call.number(1);
    if (number == 0 || step == 0)
        return step == 0 && number != 0 && toWhole(0.5) == 0 ? errorOperand(ErrorCode::DivisionByZero)
                                                             : numberAnswer(0);
    if (number > 0 && step < 0)
        return errorOperand(ErrorCode::Number);
    const double steps = roundedNumber(number / step, 12, Rounding::HalfAwayFromZero); // 0.3 is three steps of 0.1
    return numberAnswer(toWhole(steps) * step);
}

double floorOf(double number)
{
    return std::floor(number);
}

double ceilingOf(double number)
{
    return std::ceil(number);
}

Operand remainder(const FunctionCall& call)
{
    const double number = call.number(0);
    const double divisor = call.number(1);
    if (divisor == 0)
        return errorOperand(ErrorCode::DivisionByZero);
    const double rest = std::fmod(number, divisor);
    return numberAnswer(rest != 0 && (rest < 0) != (divisor < 0) ? rest + divisor : rest);
}

Operand sum(const FunctionCall& call)
{
    double total = 0;
    forEachNumber(call, 0, [&](double number) { total += number; });
    return numberAnswer(total);
}

Operand product(const FunctionCall& call)
{
    double total = 1;
    bool found = false;
    forEachNumber(call, 0, [&](double number) {
        total *= number;
        found = true;
    });
    return numberAnswer(found ? total : 0);
}

Operand sumOfSquares(const FunctionCall& call)
{
    double total = 0;
    forEachNumber(call, 0, [&](double number) { total += number * number; });
    return numberAnswer(total);
}

/// Numbers in the same place of each array multiplied, then added; what is no number counts as 0.
Operand sumOfProducts(const FunctionCall& call)
{
    std::vector<ValueGrid> grids;
    for (std::size_t i = 0; i < call.count(); ++i)
        grids.emplace_back(call.book(), call.operand(i));
    int rows = grids.front().usedRows();
    for (const ValueGrid& grid : grids) {
        if (grid.rows() != grids.front().rows() || grid.columns() != grids.front().columns())
            return errorOperand(ErrorCode::Value);
        rows = std::min(rows, grid.usedRows());
    }
    double total = 0;
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < grids.front().columns(); ++column) {
            double term = 1;
            for (const ValueGrid& grid : grids) {
                const CellValue& value = grid.at(row, column);
                if (const auto* const error = std::get_if<ErrorCode>(&value))
                    return errorOperand(*error);
                const auto* const number = std::get_if<double>(&value);
                term *= number == nullptr ? 0 : *number;
            }
            total += term;
        }
    return numberAnswer(total);
}

/// Calls visit(const CellValue&) for each value of the third argument, else the first, whose counterpart in the first
/// meets the criterion.
template <class Visit>
void forEachMatch(const FunctionCall& call, Visit visit)
{
    const Criterion criterion(call.value(1), call.rules());
    const ValueGrid tested(call.book(), call.operand(0));
    if (tested.area() == nullptr)
        throw FormulaFailure{ErrorCode::Value};
    Area added = *tested.area();
    if (call.has(2)) {
        const auto areas = areasOf(call.operand(2));
        if (areas.size() != 1)
            throw FormulaFailure{ErrorCode::Value};
        // only its first cell counts: it is as large as the range that is tested
        added.sheet = areas.front().sheet;
        added.cells.firstRow = areas.front().cells.firstRow;
        added.cells.firstColumn = areas.front().cells.firstColumn;
        added.cells.lastRow = std::min(added.cells.firstRow + tested.rows(), maxRows) - 1;
        added.cells.lastColumn = std::min(added.cells.firstColumn + tested.columns(), maxColumns) - 1;
    }
    const int rows = std::min(tested.usedRows(), added.cells.rows());
    const int columns = std::min(tested.columns(), added.cells.columns());
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column)
            if (criterion.matches(tested.at(row, column)))
                visit(cellValue(call.book(), added.sheet,
                                {added.cells.firstRow + row, added.cells.firstColumn + column}));
}

Operand sumIf(const FunctionCall& call)
{
    double total = 0;
    forEachMatch(call, [&](const CellValue& value) {
        if (const auto* const error = std::get_if<ErrorCode>(&value))
            throw FormulaFailure{*error};
        if (const auto* const number = std::get_if<double>(&value))
            total += *number;
    });
    return numberAnswer(total);
}

Operand countIf(const FunctionCall& call)
{
    const Criterion criterion(call.value(1), call.rules());
    double count = 0;
    for (const Area& area : areasOf(call.operand(0))) {
        double there = 0;
        forEachCell(call.book(), area, [&](CellAddress, const Cell& cell) {
            ++there;
            count += criterion.matches(cell.value) ? 1 : 0;
        });
        if (criterion.matches(Empty{}))
            count += static_cast<double>(area.cells.rows()) * area.cells.columns() - there;
    }
    return numberAnswer(count);
}

template <int rest>
Operand hasRest(const FunctionCall& call)
{
    return CellValue(std::fmod(std::trunc(std::fabs(call.number(0))), 2) == rest);
}

/// The angle of the point (x, y).
Operand angle(const FunctionCall& call)
{
    const double x = call.number(0);
    const double y = call.number(1);
    return x == 0 && y == 0 ? errorOperand(ErrorCode::DivisionByZero) : numberAnswer(std::atan2(y, x));
}

Operand powerFunction(const FunctionCall& call)
{
    return power(call.number(0), call.number(1));
}

Operand factorial(const FunctionCall& call)
{
    const double number = std::floor(call.number(0));
    return numberAnswer(number < 0 ? NAN : std::round(std::tgamma(number + 1)));
}

constexpr auto table = std::to_array<FunctionBinding>({
    {"SUM", sum},
    {"PRODUCT", product},
    {"SUMSQ", sumOfSquares},
    {"SUMPRODUCT", sumOfProducts},
    {"SUMIF", sumIf, OnError::Pass},
    {"COUNTIF", countIf, OnError::Pass},
    {"ROUND", round<Rounding::HalfAwayFromZero>},
    {"ROUNDUP", round<Rounding::AwayFromZero>},
    {"ROUNDDOWN", round<Rounding::TowardZero>},
    {"TRUNC", round<Rounding::TowardZero>},
    {"INT", ofNumber<floorOf>},
    {"ISEVEN", hasRest<0>, OnError::Propagate, FunctionOrigin::AnalysisAddIn, "V"},
    {"ISODD", hasRest<1>, OnError::Propagate, FunctionOrigin::AnalysisAddIn, "V"},
    {"EVEN", ofNumber<even>},
    {"ODD", ofNumber<odd>},
    {"CEILING", multiple<ceilingOf>},
    {"FLOOR", multiple<floorOf>},
    {"ABS", ofNumber<[](double number) { return std::fabs(number); }>},
    {"SIGN", ofNumber<sign>},
    {"SQRT", ofNumber<squareRoot>},
    {"EXP", ofNumber<[](double number) { return std::exp(number); }>},
    {"LN", ofNumber<naturalLogarithm>},
    {"LOG10", ofNumber<decimalLogarithm>},
    {"LOG", logarithm},
    {"POWER", powerFunction},
    {"FACT", factorial},
    {"MOD", remainder},
    {"PI", [](const FunctionCall&) { return numberAnswer(std::numbers::pi); }},
    {"SIN", ofNumber<[](double number) { return std::sin(number); }>},
    {"COS", ofNumber<[](double number) { return std::cos(number); }>},
    {"TAN", ofNumber<[](double number) { return std::tan(number); }>},
    {"ASIN", ofNumber<[](double number) { return std::asin(number); }>},
    {"ACOS", ofNumber<[](double number) { return std::acos(number); }>},
    {"ATAN", ofNumber<[](double number) { return std::atan(number); }>},
    {"ATAN2", angle},
    {"RADIANS", ofNumber<[](double number) { return number * std::numbers::pi / 180; }>},
    {"DEGREES", ofNumber<[](double number) { return number * 180 / std::numbers::pi; }>},
});

} // namespace

std::span<const FunctionBinding> mathFunctions()
{
    return table;
}

} // namespace wagemill::engine
