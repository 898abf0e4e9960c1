#include "workbook/engine/formula/NumberArguments.h"

#include <array>
#include <cmath>
#include <numeric>

namespace wagemill::engine {

namespace {

using Numbers = std::vector<double>;
constexpr std::string_view filterName = "_FilterDatabase"; ///< names the rows that the filter of a sheet looks at
using Summary = CellValue (*)(const Numbers&);

CellValue sumOf(const Numbers& numbers)
{
    return numberValue(std::accumulate(numbers.begin(), numbers.end(), 0.0));
}

CellValue productOf(const Numbers& numbers)
{
    return numberValue(numbers.empty() ? 0.0
                                       : std::accumulate(numbers.begin(), numbers.end(), 1.0, std::multiplies<>()));
}

CellValue smallest(const Numbers& numbers)
{
    return numbers.empty() ? 0.0 : std::ranges::min(numbers);
}

CellValue largest(const Numbers& numbers)
{
    return numbers.empty() ? 0.0 : std::ranges::max(numbers);
}

CellValue mean(const Numbers& numbers)
{
    if (numbers.empty())
        return ErrorCode::DivisionByZero;
    return numberValue(std::accumulate(numbers.begin(), numbers.end(), 0.0) / static_cast<double>(numbers.size()));
}

CellValue median(const Numbers& numbers)
{
    if (numbers.empty())
        return ErrorCode::Number;
    Numbers sorted = numbers;
    std::ranges::sort(sorted);
    const std::size_t middle = sorted.size() / 2;
    return numberValue(sorted.size() % 2 == 1 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2);
}

CellValue mode(const Numbers& numbers)
{
    std::ptrdiff_t most = 1;
    CellValue result = ErrorCode::NotAvailable;
    Numbers sorted = numbers;
    std::ranges::sort(sorted);
    for (auto at = sorted.begin(); at != sorted.end();) {
        const auto end = std::upper_bound(at, sorted.end(), *at);
        if (end - at > most) {
            most = end - at;
            result = *at;
        }
        at = end;
    }
    return result;
}

/// Mean square of the distances from the mean; `lost` is 1 for a sample, 0 for a whole population.
CellValue variance(const Numbers& numbers, double lost)
{
    const auto count = static_cast<double>(numbers.size());
    if (count <= lost)
        return ErrorCode::DivisionByZero;
    const double average = std::accumulate(numbers.begin(), numbers.end(), 0.0) / count;
    double squares = 0;
    for (const double number : numbers)
        squares += (number - average) * (number - average);
    return numberValue(squares / (count - lost));
}

CellValue deviation(const Numbers& numbers, double lost)
{
    const CellValue squared = variance(numbers, lost);
    const auto* const number = std::get_if<double>(&squared);
    return number == nullptr ? squared : numberValue(std::sqrt(*number));
}

CellValue sampleVariance(const Numbers& numbers)
{
    return variance(numbers, 1);
}

CellValue populationVariance(const Numbers& numbers)
{
    return variance(numbers, 0);
}

CellValue sampleDeviation(const Numbers& numbers)
{
    return deviation(numbers, 1);
}

CellValue populationDeviation(const Numbers& numbers)
{
    return deviation(numbers, 0);
}

template <Summary summary>
Operand ofNumbers(const FunctionCall& call)
{
    return summary(numbersOf(call));
}

bool isNumberAsGiven(const FunctionCall& call, std::size_t index)
{
    const CellValue value = call.value(index);
    return !std::holds_alternative<ErrorCode>(value) && std::holds_alternative<double>(toNumber(value, call.rules()));
}

Operand count(const FunctionCall& call)
{
    double total = 0;
    for (std::size_t i = 0; i < call.count(); ++i) {
        if (!isPlaces(call.operand(i)))
            total += isNumberAsGiven(call, i) ? 1 : 0;
        else
            forEachPlace(call.book(), call.operand(i),
                         [&](const CellValue& value) { total += std::holds_alternative<double>(value) ? 1 : 0; });
    }
    return numberAnswer(total);
}

Operand countFilled(const FunctionCall& call)
{
    double total = 0;
    for (std::size_t i = 0; i < call.count(); ++i) {
        if (!isPlaces(call.operand(i)))
            ++total;
        else
            forEachPlace(call.book(), call.operand(i),
                         [&](const CellValue& value) { total += isEmpty(value) ? 0 : 1; });
    }
    return numberAnswer(total);
}

/// A formula that answers "" counts as blank.
Operand countBlank(const FunctionCall& call)
{
    double filled = 0;
    double places = 0;
    for (const Area& area : areasOf(call.operand(0)))
        places += static_cast<double>(area.cells.rows()) * area.cells.columns();
    forEachPlace(call.book(), call.operand(0), [&](const CellValue& value) {
        filled += isEmpty(value) || value == CellValue(std::string()) ? 0 : 1;
    });
    return numberAnswer(places - filled);
}

/// The numbers of the first argument, ascending.
Numbers sortedNumbers(const FunctionCall& call)
{
    Numbers numbers;
    forEachPlace(call.book(), call.operand(0), [&](const CellValue& value) {
        if (const auto* const error = std::get_if<ErrorCode>(&value))
            throw FormulaFailure{*error};
        if (const auto* const number = std::get_if<double>(&value))
            numbers.push_back(*number);
    });
    if (!isPlaces(call.operand(0)))
        numbers.push_back(call.number(0));
    std::ranges::sort(numbers);
    return numbers;
}

/// The k-th number from the top or the bottom, k counting from 1.
template <bool fromTop>
Operand ranked(const FunctionCall& call)
{
    const Numbers numbers = sortedNumbers(call);
    const double place = std::ceil(call.number(1));
    if (place < 1 || place > static_cast<double>(numbers.size()))
        return errorOperand(ErrorCode::Number);
    const auto index = static_cast<std::size_t>(place);
    return numberAnswer(fromTop ? numbers[numbers.size() - index] : numbers[index - 1]);
}

/// The number below which that part of all lies, between two of them where it must.
Operand percentile(const FunctionCall& call)
{
    const Numbers numbers = sortedNumbers(call);
    const double part = call.number(1);
    if (numbers.empty() || part < 0 || part > 1)
        return errorOperand(ErrorCode::Number);
    const double place = part * static_cast<double>(numbers.size() - 1);
    const auto below = static_cast<std::size_t>(place);
    const double above = numbers[std::min(below + 1, numbers.size() - 1)];
    return numberAnswer(numbers[below] + (place - static_cast<double>(below)) * (above - numbers[below]));
}

/// Texts in cells and arrays are 0, logicals 1 or 0.
Operand meanOfAll(const FunctionCall& call)
{
    Numbers numbers;
    for (std::size_t i = 0; i < call.count(); ++i) {
        if (!isPlaces(call.operand(i)))
            numbers.push_back(call.number(i));
        forEachPlace(call.book(), call.operand(i), [&](const CellValue& value) {
            if (const auto* const error = std::get_if<ErrorCode>(&value))
                throw FormulaFailure{*error};
            const auto* const number = std::get_if<double>(&value);
            if (!isEmpty(value))
                numbers.push_back(number != nullptr ? *number : value == CellValue(true) ? 1 : 0);
        });
    }
    return mean(numbers);
}

Operand rank(const FunctionCall& call)
{
    const double number = call.number(0);
    const bool ascending = call.number(2, 0) != 0;
    double before = 0;
    bool found = false;
    forEachPlace(call.book(), call.operand(1), [&](const CellValue& value) {
        if (const auto* const other = std::get_if<double>(&value)) {
            found = found || *other == number;
            before += (ascending ? *other < number : *other > number) ? 1 : 0;
        }
    });
    return found ? numberAnswer(before + 1) : errorOperand(ErrorCode::NotAvailable);
}

bool isSubtotal(const Cell& cell)
{
    constexpr std::uint16_t subtotal = 344;
    return cell.formula && std::ranges::any_of(cell.formula->tokens, [](const Token& token) {
               const auto* const function = std::get_if<FunctionToken>(&token);
               return function != nullptr && function->function == subtotal;
           });
}

/// The rows among which a filter of the sheet hides some; none where it hides nothing.
std::optional<CellRect> filteredRows(const Book& book, std::size_t sheet)
{
    if (book.sheets[sheet]->isFiltered)
        for (const DefinedName& name : book.names)
            if (name.sheet == sheet && name.name == filterName && name.formula.tokens.size() == 1)
                if (const auto* const area = std::get_if<ReferenceToken>(&name.formula.tokens.front()))
                    return CellRect{area->first.row, 0, area->last.value_or(area->first).row, maxColumns - 1};
    return std::nullopt;
}

/// The eleven summaries by their number. Rows that a filter hides do not count, from 101 on no hidden ones, and cells
/// that hold subtotals never.
Operand subtotal(const FunctionCall& call)
{
    constexpr int skipHidden = 100;
    constexpr auto summaries =
        std::to_array<Summary>({mean, nullptr, nullptr, largest, smallest, productOf, sampleDeviation,
                                populationDeviation, sumOf, sampleVariance, populationVariance});
    const int number = call.integer(0);
    const int index = (number > skipHidden ? number - skipHidden : number) - 1;
    if (index < 0 || index >= static_cast<int>(summaries.size()))
        return errorOperand(ErrorCode::Value);
    Numbers numbers;
    double filled = 0;
    std::optional<ErrorCode> error;
    for (std::size_t i = 1; i < call.count(); ++i)
        for (const Area& area : areasOf(call.operand(i))) {
            const auto filtered = filteredRows(call.book().model(), area.sheet);
            forEachCell(call.book(), area, [&](CellAddress address, const Cell& cell) {
                const bool skips = number > skipHidden || (filtered && filtered->contains({address.row, 0}));
                if (isSubtotal(cell) ||
                    (skips && call.book().rows(area.sheet)[static_cast<std::size_t>(address.row)].hidden))
                    return;
                filled += isEmpty(cell.value) ? 0 : 1;
                if (const auto* const found = std::get_if<double>(&cell.value))
                    numbers.push_back(*found);
                else if (const auto* const bad = std::get_if<ErrorCode>(&cell.value); bad != nullptr && !error)
                    error = *bad;
            });
        }
    if (index == 1 || index == 2)
        return numberAnswer(index == 1 ? static_cast<double>(numbers.size()) : filled);
    return error ? errorOperand(*error) : Operand(summaries.at(static_cast<std::size_t>(index))(numbers));
}

constexpr auto table = std::to_array<FunctionBinding>({
    {"AVERAGE", ofNumbers<mean>},
    {"MIN", ofNumbers<smallest>},
    {"MAX", ofNumbers<largest>},
    {"MEDIAN", ofNumbers<median>},
    {"MODE", ofNumbers<mode>},
    {"STDEV", ofNumbers<sampleDeviation>},
    {"STDEVP", ofNumbers<populationDeviation>},
    {"VAR", ofNumbers<sampleVariance>},
    {"VARP", ofNumbers<populationVariance>},
    {"COUNT", count},
    {"COUNTA", countFilled},
    {"COUNTBLANK", countBlank},
    {"AVERAGEA", meanOfAll},
    {"PERCENTILE", percentile},
    {"LARGE", ranked<true>},
    {"SMALL", ranked<false>},
    {"RANK", rank},
    {"SUBTOTAL", subtotal},
});

} // namespace

std::span<const FunctionBinding> statisticalFunctions()
{
    return table;
}

} // namespace wagemill::engine
