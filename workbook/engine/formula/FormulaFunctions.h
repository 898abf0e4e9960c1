#pragma once

#include "workbook/engine/formula/FormulaEvaluator.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

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

using FunctionBody = Operand (*)(const FunctionCall&);

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

// The functions by subject; each table stands in the file of its name.
std::span<const FunctionBinding> logicalFunctions();
std::span<const FunctionBinding> mathFunctions();
std::span<const FunctionBinding> statisticalFunctions();
std::span<const FunctionBinding> textFunctions();
std::span<const FunctionBinding> dateFunctions();
std::span<const FunctionBinding> lookupFunctions();
std::span<const FunctionBinding> financialFunctions();

} // namespace wagemill::engine
