#pragma once

#include "workbook/engine/formula/FormulaEvaluator.h"
#include "workbook/engine/formula/Operators.h"

#include <concepts>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace wagemill::engine {

/// The arguments of one call, and what reading them needs. A parameter of class V is one value by the time the function
/// sees it, and no error unless the function takes errors. Reading a value that does not fit throws FormulaFailure.
class FunctionCall {
public:
    /// wanted  Array where the function may answer an array, else Value
    FunctionCall(FormulaEvaluator& evaluator, std::span<const Operand> arguments, OperandClass wanted)
        : m_evaluator(evaluator), m_arguments(arguments), m_wanted(wanted)
    {
    }

    FormulaEvaluator& evaluator() const { return m_evaluator; }
    const ComputedBook& book() const { return m_evaluator.book(); }
    const CoercionRules& rules() const { return m_evaluator.rules(); }
    bool dates1904() const { return rules().dates1904; }

    bool wantsArray() const { return m_wanted == OperandClass::Array; }
    std::size_t count() const { return m_arguments.size(); }
    /// Whether the argument is there and not left out.
    bool has(std::size_t index) const;
    /// The argument as it came, MissingArgument where there is none.
    const Operand& operand(std::size_t index) const;
    CellValue value(std::size_t index) const { return m_evaluator.single(operand(index)); }
    /// As value(), but of cells the first one.
    CellValue firstValue(std::size_t index) const;
    double number(std::size_t index) const;
    double number(std::size_t index, double fallback) const { return has(index) ? number(index) : fallback; }
    /// The number without its fraction, rounded down, within the range of int; else #VALUE!.
    int integer(std::size_t index) const;
    int integer(std::size_t index, int fallback) const { return has(index) ? integer(index) : fallback; }
    std::string text(std::size_t index) const;
    bool logical(std::size_t index) const;
    bool logical(std::size_t index, bool fallback) const { return has(index) ? logical(index) : fallback; }

private:
    FormulaEvaluator& m_evaluator;
    std::span<const Operand> m_arguments;
    OperandClass m_wanted;
};

template <class Type>
concept Number = std::is_arithmetic_v<Type> && !std::same_as<Type, bool>;

/// What a function answers, as an operand: NaN and infinity are #NUM!, a text that no cell can hold is #VALUE!.
struct Answer {
    template <Number Type>
    Answer(Type number) : operand(numberValue(static_cast<double>(number)))
    {
    }
    template <std::same_as<bool> Logical>
    Answer(Logical logical) : operand(CellValue(logical))
    {
    }
    Answer(std::string text) : operand(textValue(std::move(text))) {}
    Answer(ErrorCode error) : operand(errorOperand(error)) {}
    Answer(CellValue value) : operand(std::move(value)) {}
    Answer(Area area) : operand(area) {}
    Answer(Operand given) : operand(std::move(given)) {}

    Operand operand;
};

using FunctionBody = Answer (*)(const FunctionCall&);

/// Whether a V-class argument that is an error is the answer already, or the function wants to see it.
enum class OnError : std::uint8_t { Propagate, Pass };

/// Where a function has its place in the file format.
enum class FunctionOrigin : std::uint8_t { Numbered, AnalysisAddIn, LaterVersion };

/// How we compute a function.
struct FunctionBinding {
    std::string_view name; ///< English, upper case
    FunctionBody body = nullptr;
    OnError onError = OnError::Propagate;
    FunctionOrigin origin = FunctionOrigin::Numbered;
    std::string_view parameterClasses = {}; ///< of a function without a number, as in FunctionInfo
};

/// Null when we do not compute that function. A name may carry the prefix under which files keep later functions.
const FunctionBinding* findBinding(std::uint16_t id);
const FunctionBinding* findBinding(std::string_view name);

/// The name under which files keep a function without a number.
std::string storedName(const FunctionBinding& function);

// The functions by subject; each table is in the file of its name.
extern const std::span<const FunctionBinding> logicalFunctions;
extern const std::span<const FunctionBinding> mathFunctions;
extern const std::span<const FunctionBinding> statisticalFunctions;
extern const std::span<const FunctionBinding> textFunctions;
extern const std::span<const FunctionBinding> dateFunctions;
extern const std::span<const FunctionBinding> lookupFunctions;
extern const std::span<const FunctionBinding> financialFunctions;

/// The number that the value is, null when it is something else; throws the error that it is.
inline const double* numberIn(const CellValue& value)
{
    const auto* const number = std::get_if<double>(&value);
    if (const auto* const error = std::get_if<ErrorCode>(&value))
        throw FormulaFailure{*error};
    return number;
}

/// Calls visit(const CellValue&), or for some numbers visit(double), for each value in the cells or the array that the
/// operand is. False when it is a single value.
template <class Visit>
bool forEachPlace(const ComputedBook& book, const Operand& operand, Visit visit)
{
    const auto areas = areasOf(operand);
    for (const Area& area : areas)
        forEachValue(book, area, visit);
    const auto* const array = std::get_if<std::shared_ptr<const ValueArray>>(&operand);
    if (array != nullptr)
        for (const CellValue& value : (*array)->values)
            visit(value);
    return array != nullptr || !areas.empty();
}

/// Calls visitPlace as forEachPlace() does for the arguments from `first` on, and visitGiven(index) for each one that
/// is given as a single value.
template <class VisitPlace, class VisitGiven>
void forEachArgument(const FunctionCall& call, std::size_t first, VisitPlace visitPlace, VisitGiven visitGiven)
{
    for (std::size_t i = first; i < call.count(); ++i)
        if (!forEachPlace(call.book(), call.operand(i), visitPlace))
            visitGiven(i);
}

/// Calls visit(double) for each number of the arguments from `first` on, as SUM takes them: in cells and arrays only
/// numbers count; a value given as such is read as a number. Throws the first error.
template <class Visit>
void forEachNumber(const FunctionCall& call, std::size_t first, Visit visit)
{
    const auto visitPlace = [&]<class Value>(const Value& value) {
        if constexpr (std::same_as<Value, double>)
            visit(value);
        else if (const double* const number = numberIn(value))
            visit(*number);
    };
    forEachArgument(call, first, visitPlace, [&](std::size_t i) { visit(call.number(i)); });
}

} // namespace wagemill::engine
