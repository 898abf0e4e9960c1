#include "workbook/engine/formula/FormulaFunctions.h"

#include <array>
#include <optional>

namespace wagemill::engine {

namespace {

/// IF whose arguments were all evaluated, as a formula without jumps has it.
Operand ifFunction(const FunctionCall& call)
{
    const std::size_t chosen = call.logical(0) ? 1 : 2;
    if (chosen >= call.count())
        return CellValue(false);
    return call.operand(chosen);
}

Operand ifError(const FunctionCall& call)
{
    CellValue value = call.value(0);
    return std::holds_alternative<ErrorCode>(value) ? call.value(1) : std::move(value);
}

Operand ifNotAvailable(const FunctionCall& call)
{
    CellValue value = call.value(0);
    return value == CellValue(ErrorCode::NotAvailable) ? call.value(1) : std::move(value);
}

/// Calls visit(bool) for each logical or number of the arguments: in cells and arrays texts and empty places do not
/// count, a text given as such must read "TRUE" or "FALSE". Throws the first error.
template <class Visit>
void forEachLogical(const FunctionCall& call, Visit visit)
{
    const auto visitPlace = [&](const CellValue& value) {
        if (const auto* const error = std::get_if<ErrorCode>(&value))
            throw FormulaFailure{*error};
        if (const auto* const logical = std::get_if<bool>(&value))
            visit(*logical);
        else if (const auto* const number = std::get_if<double>(&value))
            visit(*number != 0);
    };
    for (std::size_t i = 0; i < call.count(); ++i) {
        const Operand& operand = call.operand(i);
        for (const Area& area : areasOf(operand))
            forEachCell(call.book(), area, [&](CellAddress, const Cell& cell) { visitPlace(cell.value); });
        if (const auto* const array = std::get_if<std::shared_ptr<const ValueArray>>(&operand))
            std::ranges::for_each((*array)->values, visitPlace);
        else if (areasOf(operand).empty())
            visit(call.logical(i));
    }
}

Operand combined(const FunctionCall& call, bool start, bool decisive)
{
    bool result = start;
    bool found = false;
    forEachLogical(call, [&](bool value) {
        found = true;
        if (value == decisive)
            result = decisive;
    });
    return found ? CellValue(result) : CellValue(ErrorCode::Value);
}

template <class Kind>
Operand holds(const FunctionCall& call)
{
    return CellValue(std::holds_alternative<Kind>(call.value(0)));
}

Operand isErrorButNotAvailable(const FunctionCall& call)
{
    const CellValue value = call.value(0);
    return CellValue(std::holds_alternative<ErrorCode>(value) && value != CellValue(ErrorCode::NotAvailable));
}

Operand errorType(const FunctionCall& call)
{
    constexpr auto inOrder =
        std::to_array<ErrorCode>({ErrorCode::Null, ErrorCode::DivisionByZero, ErrorCode::Value, ErrorCode::Reference,
                                  ErrorCode::Name, ErrorCode::Number, ErrorCode::NotAvailable});
    const CellValue value = call.value(0);
    for (std::size_t i = 0; i < inOrder.size(); ++i)
        if (value == CellValue(inOrder[i]))
            return CellValue(static_cast<double>(i + 1));
    return errorOperand(ErrorCode::NotAvailable);
}

Operand numberOf(const FunctionCall& call)
{
    const Operand& operand = call.operand(0);
    const CellValue value = areasOf(operand).empty() ? call.value(0) : ValueGrid(call.book(), operand).at(0, 0);
    if (const auto* const logical = std::get_if<bool>(&value))
        return CellValue(*logical ? 1.0 : 0.0);
    if (std::holds_alternative<double>(value) || std::holds_alternative<ErrorCode>(value))
        return value;
    return CellValue(0.0);
}

Operand type(const FunctionCall& call)
{
    const CellValue value = call.value(0);
    constexpr auto codes = std::to_array<double>({1, 1, 2, 4, 16}); // in the order of CellValue's alternatives
    return CellValue(codes.at(value.index()));
}

constexpr auto table = std::to_array<FunctionBinding>({
    {"IF", ifFunction},
    {"IFERROR", ifError, OnError::Pass, FunctionOrigin::LaterVersion, "V"},
    {"IFNA", ifNotAvailable, OnError::Pass, FunctionOrigin::LaterVersion, "V"},
    {"AND", [](const FunctionCall& call) { return combined(call, true, false); }},
    {"OR", [](const FunctionCall& call) { return combined(call, false, true); }},
    {"NOT", [](const FunctionCall& call) { return Operand(CellValue(!call.logical(0))); }},
    {"TRUE", [](const FunctionCall&) { return Operand(CellValue(true)); }},
    {"FALSE", [](const FunctionCall&) { return Operand(CellValue(false)); }},
    {"NA", [](const FunctionCall&) { return errorOperand(ErrorCode::NotAvailable); }},
    {"ISERROR", holds<ErrorCode>, OnError::Pass},
    {"ISERR", isErrorButNotAvailable, OnError::Pass},
    {"ISNA",
     [](const FunctionCall& call) { return Operand(CellValue(call.value(0) == CellValue(ErrorCode::NotAvailable))); },
     OnError::Pass},
    {"ISBLANK", holds<Empty>, OnError::Pass},
    {"ISNUMBER", holds<double>, OnError::Pass},
    {"ISTEXT", holds<std::string>, OnError::Pass},
    {"ISNONTEXT",
     [](const FunctionCall& call) { return Operand(CellValue(!std::holds_alternative<std::string>(call.value(0)))); },
     OnError::Pass},
    {"ISLOGICAL", holds<bool>, OnError::Pass},
    {"ISREF", [](const FunctionCall& call) { return Operand(CellValue(!areasOf(call.operand(0)).empty())); }},
    {"ERROR.TYPE", errorType, OnError::Pass},
    {"N", numberOf, OnError::Pass},
    {"TYPE", type, OnError::Pass},
});

} // namespace

std::span<const FunctionBinding> logicalFunctions()
{
    return table;
}

} // namespace wagemill::engine
