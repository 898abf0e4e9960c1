#include "workbook/engine/FunctionTable.h"
#include "workbook/engine/formula/FormulaFunctions.h"

#include <array>
#include <cmath>
#include <numeric>

namespace wagemill::engine {

namespace {

using Numbers = std::vector<double>;
using Summary = double (*)(const Numbers&); ///< throws FormulaFailure where the numbers have none

constexpr std::string_view filterName = "_FilterDatabase"; ///< names the rows that the filter of a sheet looks at

double total(const Numbers& numbers)
{
    return std::accumulate(numbers.begin(), numbers.end(), 0.0);
}

double product(const Numbers& numbers)
{
    return numbers.empty() ? 0 : std::accumulate(numbers.begin(), numbers.end(), 1.0, std::multiplies<>());
}

double sumOfSquares(const Numbers& numbers)
{
    return std::inner_product(numbers.begin(), numbers.end(), numbers.begin(), 0.0);
}

double smallest(const Numbers& numbers)
{
    return numbers.empty() ? 0 : std::ranges::min(numbers);
}

double largest(const Numbers& numbers)
{
    return numbers.empty() ? 0 : std::ranges::max(numbers);
}

/// The sum shared among so many.
double share(double sum, double count)
{
    if (count <= 0)
        throw FormulaFailure{ErrorCode::DivisionByZero};
    return sum / count;
}

double mean(const Numbers& numbers)
{
    return share(total(numbers), static_cast<double>(numbers.size()));
}

Numbers sorted(Numbers numbers)
{
    std::ranges::sort(numbers);
    return numbers;
}

double median(const Numbers& numbers)
{
    if (numbers.empty())
        throw FormulaFailure{ErrorCode::Number};
    const Numbers ascending = sorted(numbers);
    const std::size_t middle = ascending.size() / 2;
    return ascending.size() % 2 == 1 ? ascending[middle] : (ascending[middle - 1] + ascending[middle]) / 2;
}

double mode(const Numbers& numbers)
{
    const Numbers ascending = sorted(numbers);
    std::ptrdiff_t count = 1;
    const double* found = nullptr;
    for (auto at = ascending.begin(); at != ascending.end();) {
        const auto end = std::upper_bound(at, ascending.end(), *at);
        if (end - at > count) {
            count = end - at;
            found = &*at;
        }
        at = end;
    }
    if (found == nullptr)
        throw FormulaFailure{ErrorCode::NotAvailable};
    return *found;
}

/// Mean square of the distances from the mean; `lost` is 1 for a sample, 0 for a whole population.
template <int lost>
double variance(const Numbers& numbers)
{
    const double average = mean(numbers);
    double squares = 0;
    for (const double number : numbers)
        squares += (number - average) * (number - average);
    return share(squares, static_cast<double>(numbers.size()) - lost);
}

template <int lost>
double deviation(const Numbers& numbers)
{
    return std::sqrt(variance<lost>(numbers));
}

template <Summary summary>
Answer ofNumbers(const FunctionCall& call)
{
    Numbers numbers;
    forEachNumber(call, 0, [&](double number) { numbers.push_back(number); });
    return summary(numbers);
}

Answer count(const FunctionCall& call)
{
    int found = 0;
    forEachArgument(
        call, 0, [&](const CellValue& value) { found += std::holds_alternative<double>(value) ? 1 : 0; },
        [&](std::size_t i) { found += std::holds_alternative<double>(toNumber(call.value(i), call.rules())) ? 1 : 0; });
    return found;
}

Answer countFilled(const FunctionCall& call)
{
    int found = 0;
    forEachArgument(
        call, 0, [&](const CellValue& value) { found += isEmpty(value) ? 0 : 1; }, [&](std::size_t) { ++found; });
    return found;
}

/// A formula that answers "" counts as blank.
Answer countBlank(const FunctionCall& call)
{
    double blanks = 0;
    for (const Area& area : areasOf(call.operand(0)))
        blanks += static_cast<double>(area.cells.rows()) * area.cells.columns();
    forEachPlace(call.book(), call.operand(0), [&](const CellValue& value) {
        blanks -= isEmpty(value) || value == CellValue(std::string()) ? 0 : 1;
    });
    return blanks;
}

/// The numbers of the first argument, ascending.
Numbers sortedNumbers(const FunctionCall& call)
{
    Numbers numbers;
    const bool isPlaces = forEachPlace(call.book(), call.operand(0), [&](const CellValue& value) {
        if (const double* const number = numberIn(value))
            numbers.push_back(*number);
    });
    if (!isPlaces)
        numbers.push_back(call.number(0));
    return sorted(std::move(numbers));
}

/// The k-th number from the top or the bottom, k counting from 1.
template <bool fromTop>
Answer ranked(const FunctionCall& call)
{
    const Numbers numbers = sortedNumbers(call);
    const double place = std::ceil(call.number(1));
    if (place < 1 || place > static_cast<double>(numbers.size()))
        return ErrorCode::Number;
    const auto index = static_cast<std::size_t>(place);
    return fromTop ? numbers[numbers.size() - index] : numbers[index - 1];
}

/// The number below which that part of all is, between two of them where it must be.
Answer percentile(const FunctionCall& call)
{
    const Numbers numbers = sortedNumbers(call);
    const double part = call.number(1);
    if (numbers.empty() || part < 0 || part > 1)
        return ErrorCode::Number;
    const double place = part * static_cast<double>(numbers.size() - 1);
    const auto below = static_cast<std::size_t>(place);
    const double above = numbers[std::min(below + 1, numbers.size() - 1)];
    return numbers[below] + (place - static_cast<double>(below)) * (above - numbers[below]);
}

/// Texts in cells and arrays are 0, logicals 1 or 0.
Answer meanOfAll(const FunctionCall& call)
{
    Numbers numbers;
    const auto visitPlace = [&](const CellValue& value) {
        const double* const number = numberIn(value);
        if (!isEmpty(value))
            numbers.push_back(number != nullptr ? *number : value == CellValue(true) ? 1 : 0);
    };
    forEachArgument(call, 0, visitPlace, [&](std::size_t i) { numbers.push_back(call.number(i)); });
    return mean(numbers);
}

Answer rank(const FunctionCall& call)
{
    const double number = call.number(0);
    const bool ascending = call.number(2, 0) != 0;
    int place = 1;
    bool found = false;
    forEachPlace(call.book(), call.operand(1), [&](const CellValue& value) {
        if (const auto* const other = std::get_if<double>(&value)) {
            found = found || *other == number;
            place += (ascending ? *other < number : *other > number) ? 1 : 0;
        }
    });
    return found ? Answer(place) : ErrorCode::NotAvailable;
}

bool isSubtotal(const Cell& cell)
{
    return cell.formula && std::ranges::any_of(cell.formula->tokens, [](const Token& token) {
               const auto* const function = std::get_if<FunctionToken>(&token);
               return function != nullptr && function->function == subtotalFunction;
           });
}

/// The rows among which a filter of the sheet hides some; none where it hides nothing.
std::optional<CellRect> filteredRows(const Book& book, std::size_t sheet)
{
    if (book.sheets[sheet]->isFiltered)
        for (const DefinedName& name : book.names)
            if (name.sheet == sheet && name.name == filterName && name.formula.tokens.size() == 1)
                if (const auto* const area = std::get_if<ReferenceToken>(&name.formula.tokens.front()))
                    return area->cells();
    return std::nullopt;
}

/// The eleven summaries by their number. Rows that a filter hides do not count, from 101 on no hidden ones, and cells
/// that hold subtotals never.
Answer subtotal(const FunctionCall& call)
{
    constexpr int skipHidden = 100;
    constexpr auto summaries = std::to_array<Summary>({mean, nullptr, nullptr, largest, smallest, product, deviation<1>,
                                                       deviation<0>, total, variance<1>, variance<0>});
    const int number = call.integer(0);
    const int index = (number > skipHidden ? number - skipHidden : number) - 1;
    if (index < 0 || index >= static_cast<int>(summaries.size()))
        return ErrorCode::Value;
    Numbers numbers;
    int filled = 0;
    std::optional<ErrorCode> error;
    for (std::size_t i = 1; i < call.count(); ++i)
        for (const Area& area : areasOf(call.operand(i))) {
            const auto filtered = filteredRows(call.book().model(), area.sheet);
            forEachCell(call.book(), area, [&](CellAddress address, const Cell& cell) {
                const bool skips = number > skipHidden ||
                                   (filtered && address.row >= filtered->firstRow && address.row <= filtered->lastRow);
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
        return index == 1 ? static_cast<int>(numbers.size()) : filled;
    return error ? Answer(*error) : summaries.at(static_cast<std::size_t>(index))(numbers);
}

constexpr auto table = std::to_array<FunctionBinding>({
    {"PRODUCT", ofNumbers<product>},
    {"SUMSQ", ofNumbers<sumOfSquares>},
    {"AVERAGE", ofNumbers<mean>},
    {"MIN", ofNumbers<smallest>},
    {"MAX", ofNumbers<largest>},
    {"MEDIAN", ofNumbers<median>},
    {"MODE", ofNumbers<mode>},
    {"STDEV", ofNumbers<deviation<1>>},
    {"STDEVP", ofNumbers<deviation<0>>},
    {"VAR", ofNumbers<variance<1>>},
    {"VARP", ofNumbers<variance<0>>},
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

constinit const std::span<const FunctionBinding> statisticalFunctions = table;

} // namespace wagemill::engine
