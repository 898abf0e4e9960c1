#include "workbook/engine/formula/FormulaFunctions.h"

#include <array>

namespace wagemill::engine {

namespace {

const CellValue notAvailable = ErrorCode::NotAvailable;

template <class Kind>
bool isA(const CellValue& value)
{
    return std::holds_alternative<Kind>(value);
}

/// Whether the test holds for the value of the first argument.
template <auto test>
Answer whether(const FunctionCall& call)
{
    return test(call.value(0));
}

/// The second argument in place of a first one for which the test holds.
template <auto test>
Answer replaced(const FunctionCall& call)
{
    CellValue value = call.value(0);
    return test(value) ? call.value(1) : std::move(value);
}

bool isNotAvailable(const CellValue& value)
{
    return value == notAvailable;
}

/// IF whose arguments were all evaluated, as a formula without jumps has it.
Answer ifFunction(const FunctionCall& call)
{
    const std::size_t chosen = call.logical(0) ? 1 : 2;
    return chosen < call.count() ? call.operand(chosen) : Answer(false);
}

/// AND and OR. In cells and arrays texts and empty places do not count, a text given as such must read "TRUE" or
/// "FALSE".
/// decisive  one such value decides, else the answer is the other
template <bool decisive>
Answer combined(const FunctionCall& call)
{
    bool found = false;
    bool decided = false;
    const auto visit = [&](bool value) {
        found = true;
        decided = decided || value == decisive;
    };
    const auto visitPlace = [&](const CellValue& value) {
        const double* const number = numberIn(value);
        if (const auto* const logical = std::get_if<bool>(&value); logical != nullptr || number != nullptr)
            visit(logical != nullptr ? *logical : *number != 0);
    };
    forEachArgument(call, 0, visitPlace, [&](std::size_t i) { visit(call.logical(i)); });
    return found ? Answer(decided == decisive) : ErrorCode::Value;
}

Answer errorType(const FunctionCall& call)
{
    const CellValue value = call.value(0);
    const auto* const error = std::get_if<ErrorCode>(&value);
    const auto found = std::ranges::find(errorNames, error == nullptr ? ErrorCode{0xFF} : *error, &ErrorName::error);
    return found == errorNames.end() ? Answer(ErrorCode::NotAvailable) : found - errorNames.begin() + 1;
}

Answer numberOf(const FunctionCall& call)
{
    const CellValue value = call.firstValue(0);
    if (const auto* const logical = std::get_if<bool>(&value))
        return *logical ? 1 : 0;
    return isA<double>(value) || isA<ErrorCode>(value) ? Answer(value) : 0;
}

Answer type(const FunctionCall& call)
{
    constexpr auto codes = std::to_array<int>({1, 1, 2, 4, 16}); // in the order of CellValue's alternatives
    return codes.at(call.value(0).index());
}

constexpr auto table = std::to_array<FunctionBinding>({
    {"IF", ifFunction},
    {"IFERROR", replaced<isA<ErrorCode>>, OnError::Pass, FunctionOrigin::LaterVersion, "V"},
    {"IFNA", replaced<isNotAvailable>, OnError::Pass, FunctionOrigin::LaterVersion, "V"},
    {"AND", combined<false>},
    {"OR", combined<true>},
    {"NOT", [](const FunctionCall& call) -> Answer { return !call.logical(0); }},
    {"TRUE", [](const FunctionCall&) -> Answer { return true; }},
    {"FALSE", [](const FunctionCall&) -> Answer { return false; }},
    {"NA", [](const FunctionCall&) -> Answer { return ErrorCode::NotAvailable; }},
    {"ISERROR", whether<isA<ErrorCode>>, OnError::Pass},
    {"ISERR", whether<[](const CellValue& value) { return isA<ErrorCode>(value) && value != notAvailable; }>,
     OnError::Pass},
    {"ISNA", whether<isNotAvailable>, OnError::Pass},
    {"ISBLANK", whether<isA<Empty>>, OnError::Pass},
    {"ISNUMBER", whether<isA<double>>, OnError::Pass},
    {"ISTEXT", whether<isA<std::string>>, OnError::Pass},
    {"ISNONTEXT", whether<[](const CellValue& value) { return !isA<std::string>(value); }>, OnError::Pass},
    {"ISLOGICAL", whether<isA<bool>>, OnError::Pass},
    {"ISREF", [](const FunctionCall& call) -> Answer { return !areasOf(call.operand(0)).empty(); }},
    {"ERROR.TYPE", errorType, OnError::Pass},
    {"N", numberOf, OnError::Pass},
    {"TYPE", type, OnError::Pass},
});

} // namespace

constinit const std::span<const FunctionBinding> logicalFunctions = table;

} // namespace wagemill::engine
