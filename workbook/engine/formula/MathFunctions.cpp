#include "workbook/engine/formula/Criterion.h"
#include "workbook/engine/formula/FormulaFunctions.h"

#include <array>
#include <cmath>
#include <numbers>

namespace wagemill::engine {

namespace {

/// A function of one number; NaN and infinity are #NUM!.
template <auto function>
Answer ofNumber(const FunctionCall& call)
{
    return function(call.number(0));
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

Answer logarithm(const FunctionCall& call)
{
    const double number = call.number(0);
    const double base = call.number(1, 10);
    if (number <= 0 || base <= 0)
        return ErrorCode::Number;
    if (base == 1)
        return ErrorCode::DivisionByZero;
    return base == 10 ? std::log10(number) : std::log(number) / std::log(base);
}

template <Rounding rounding>
Answer round(const FunctionCall& call)
{
    return roundedNumber(call.number(0), call.number(1, 0), rounding);
}

template <auto toWhole>
Answer multiple(const FunctionCall& call)
{
    const double number = call.number(0);
    const double step = call.number(1);
    if (number == 0 || step == 0)
        return step == 0 && number != 0 && toWhole(0.5) == 0 ? Answer(ErrorCode::DivisionByZero) : 0;
    if (number > 0 && step < 0)
        return ErrorCode::Number;
    const double steps = roundedNumber(number / step, 12, Rounding::HalfAwayFromZero); // 0.3 is three steps of 0.1
    return toWhole(steps) * step;
}

Answer remainder(const FunctionCall& call)
{
    const double number = call.number(0);
    const double divisor = call.number(1);
    if (divisor == 0)
        return ErrorCode::DivisionByZero;
    const double rest = std::fmod(number, divisor);
    return rest != 0 && (rest < 0) != (divisor < 0) ? rest + divisor : rest;
}

Answer sum(const FunctionCall& call)
{
    double total = 0;
    forEachNumber(call, 0, [&](double number) { total += number; });
    return total;
}

/// Numbers in the same place of each array multiplied, then added; what is not a number counts as 0.
Answer sumOfProducts(const FunctionCall& call)
{
    std::vector<ValueGrid> grids;
    for (std::size_t i = 0; i < call.count(); ++i)
        grids.emplace_back(call.book(), call.operand(i));
    int rows = grids.front().usedRows();
    for (const ValueGrid& grid : grids) {
        if (grid.rows() != grids.front().rows() || grid.columns() != grids.front().columns())
            return ErrorCode::Value;
        rows = std::min(rows, grid.usedRows());
    }
    double total = 0;
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < grids.front().columns(); ++column) {
            double term = 1;
            for (const ValueGrid& grid : grids) {
                const double* const number = numberIn(grid.at(row, column));
                term *= number == nullptr ? 0 : *number;
            }
            total += term;
        }
    return total;
}

/// The values of the third argument, else the first, whose counterparts in the first meet the criterion, added.
Answer sumIf(const FunctionCall& call)
{
    const Criterion criterion(call.value(1), call.rules());
    const ValueGrid tested(call.book(), call.operand(0));
    const auto areas = areasOf(call.operand(call.has(2) ? 2 : 0));
    if (tested.area() == nullptr || areas.size() != 1)
        return ErrorCode::Value;
    // only the first cell of what is added counts: it is as large as the range that is tested
    const Area& added = areas.front();
    const int rows = std::min(tested.usedRows(), maxRows - added.cells.firstRow);
    const int columns = std::min(tested.columns(), maxColumns - added.cells.firstColumn);
    double total = 0;
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column)
            if (criterion.matches(tested.at(row, column)))
                if (const double* const number = numberIn(cellValue(
                        call.book(), added.sheet, {added.cells.firstRow + row, added.cells.firstColumn + column})))
                    total += *number;
    return total;
}

Answer countIf(const FunctionCall& call)
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
    return count;
}

template <int rest>
Answer hasRest(const FunctionCall& call)
{
    return std::fmod(std::trunc(std::fabs(call.number(0))), 2) == rest;
}

/// The angle of the point (x, y).
Answer angle(const FunctionCall& call)
{
    const double x = call.number(0);
    const double y = call.number(1);
    return x == 0 && y == 0 ? Answer(ErrorCode::DivisionByZero) : std::atan2(y, x);
}

double factorial(double number)
{
    return number < 0 ? NAN : std::round(std::tgamma(std::floor(number) + 1));
}

constexpr auto table = std::to_array<FunctionBinding>({
    {"SUM", sum},
    {"SUMPRODUCT", sumOfProducts},
    {"SUMIF", sumIf, OnError::Pass},
    {"COUNTIF", countIf, OnError::Pass},
    {"ROUND", round<Rounding::HalfAwayFromZero>},
    {"ROUNDUP", round<Rounding::AwayFromZero>},
    {"ROUNDDOWN", round<Rounding::TowardZero>},
    {"TRUNC", round<Rounding::TowardZero>},
    {"INT", ofNumber<[](double number) { return std::floor(number); }>},
    {"ISEVEN", hasRest<0>, OnError::Propagate, FunctionOrigin::AnalysisAddIn, "V"},
    {"ISODD", hasRest<1>, OnError::Propagate, FunctionOrigin::AnalysisAddIn, "V"},
    {"EVEN", ofNumber<even>},
    {"ODD", ofNumber<odd>},
    {"CEILING", multiple<[](double steps) { return std::ceil(steps); }>},
    {"FLOOR", multiple<[](double steps) { return std::floor(steps); }>},
    {"ABS", ofNumber<[](double number) { return std::fabs(number); }>},
    {"SIGN", ofNumber<sign>},
    {"SQRT", ofNumber<[](double number) { return std::sqrt(number); }>},
    {"EXP", ofNumber<[](double number) { return std::exp(number); }>},
    {"LN", ofNumber<[](double number) { return std::log(number); }>},
    {"LOG10", ofNumber<[](double number) { return std::log10(number); }>},
    {"LOG", logarithm},
    {"POWER", [](const FunctionCall& call) -> Answer { return power(call.number(0), call.number(1)); }},
    {"FACT", ofNumber<factorial>},
    {"MOD", remainder},
    {"PI", [](const FunctionCall&) -> Answer { return std::numbers::pi; }},
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

constinit const std::span<const FunctionBinding> mathFunctions = table;

} // namespace wagemill::engine
