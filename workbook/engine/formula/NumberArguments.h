#pragma once

#include "workbook/engine/formula/FormulaFunctions.h"

#include <vector>

namespace wagemill::engine {

/// Calls visit(const CellValue&) for each value in the cells or the array that the operand is; none for a single value.
template <class Visit>
void forEachPlace(const ComputedBook& book, const Operand& operand, Visit visit)
{
    for (const Area& area : areasOf(operand))
        forEachCell(book, area, [&](CellAddress, const Cell& cell) { visit(cell.value); });
    if (const auto* const array = std::get_if<std::shared_ptr<const ValueArray>>(&operand))
        for (const CellValue& value : (*array)->values)
            visit(value);
}

inline bool isPlaces(const Operand& operand)
{
    return !areasOf(operand).empty() || std::holds_alternative<std::shared_ptr<const ValueArray>>(operand);
}

/// Calls visit(double) for each number of the arguments from `first` on, as SUM takes them: in cells and arrays only
/// numbers count; a value given as such is read as a number. Throws the first error.
template <class Visit>
void forEachNumber(const FunctionCall& call, std::size_t first, Visit visit)
{
    const auto visitPlace = [&](const CellValue& value) {
        if (const auto* const number = std::get_if<double>(&value))
            visit(*number);
        else if (const auto* const error = std::get_if<ErrorCode>(&value))
            throw FormulaFailure{*error};
    };
    for (std::size_t i = first; i < call.count(); ++i) {
        const Operand& operand = call.operand(i);
        if (!isPlaces(operand))
            visit(call.number(i));
        for (const Area& area : areasOf(operand))
            forEachValue(call.book(), area, visitPlace, visit);
        if (const auto* const array = std::get_if<std::shared_ptr<const ValueArray>>(&operand))
            std::ranges::for_each((*array)->values, visitPlace);
    }
}

inline std::vector<double> numbersOf(const FunctionCall& call, std::size_t first = 0)
{
    std::vector<double> numbers;
    forEachNumber(call, first, [&](double number) { numbers.push_back(number); });
    return numbers;
}

inline Operand numberAnswer(double number)
{
    return numberValue(number);
}

} // namespace wagemill::engine
