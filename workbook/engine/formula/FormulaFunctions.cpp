#include "workbook/engine/formula/FormulaFunctions.h"

#include "app/base/text/LetterCase.h"
#include "workbook/engine/FunctionTable.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace wagemill::engine {

namespace {

constexpr std::string_view laterVersionPrefix = "_xlfn.";
constexpr std::size_t functionNumbers = 512; ///< the format's numbers stay below

const Operand leftOut = MissingArgument{};

template <class Value>
Value valueOrThrow(const std::variant<Value, ErrorCode>& result)
{
    if (const auto* const error = std::get_if<ErrorCode>(&result))
        throw FormulaFailure{*error}; // caught where the function was called, never leaves the evaluator
    return std::get<Value>(result);
}

/// All functions in the order of their names, and those with a number under it; the format has the classes of these.
struct Bindings {
    std::vector<FunctionBinding> byName;
    std::array<const FunctionBinding*, functionNumbers> byNumber{};

    Bindings()
    {
        for (const auto table : {logicalFunctions, mathFunctions, statisticalFunctions, textFunctions, dateFunctions,
                                 lookupFunctions, financialFunctions})
            byName.insert(byName.end(), table.begin(), table.end());
        std::ranges::sort(byName, {}, &FunctionBinding::name);
        for (FunctionBinding& binding : byName)
            if (const FunctionInfo* const info = findFunction(binding.name); info != nullptr) {
                binding.parameterClasses = info->parameterClasses;
                byNumber.at(info->id) = &binding;
            }
    }
};

const Bindings& bindings()
{
    static const Bindings all;
    return all;
}

} // namespace

bool FunctionCall::has(std::size_t index) const
{
    return index < count() && !std::holds_alternative<MissingArgument>(m_arguments[index]);
}

const Operand& FunctionCall::operand(std::size_t index) const
{
    return index < count() ? m_arguments[index] : leftOut;
}

CellValue FunctionCall::firstValue(std::size_t index) const
{
    return areasOf(operand(index)).empty() ? value(index) : ValueGrid(book(), operand(index)).at(0, 0);
}

double FunctionCall::number(std::size_t index) const
{
    return valueOrThrow(toNumber(value(index), rules()));
}

int FunctionCall::integer(std::size_t index) const
{
    const double whole = std::floor(number(index));
    if (whole < std::numeric_limits<int>::min() || whole > std::numeric_limits<int>::max())
        throw FormulaFailure{ErrorCode::Value};
    return static_cast<int>(whole);
}

std::string FunctionCall::text(std::size_t index) const
{
    return valueOrThrow(toText(value(index), rules()));
}

bool FunctionCall::logical(std::size_t index) const
{
    return valueOrThrow(toLogical(value(index), rules()));
}

const FunctionBinding* findBinding(std::uint16_t id)
{
    return id < functionNumbers ? bindings().byNumber[id] : nullptr;
}

const FunctionBinding* findBinding(std::string_view name)
{
    if (startsWithIgnoringCase(name, laterVersionPrefix))
        name.remove_prefix(laterVersionPrefix.size());
    const std::string wanted = upperText(name);
    const auto& byName = bindings().byName;
    const auto found = std::ranges::lower_bound(byName, wanted, {}, &FunctionBinding::name);
    return found != byName.end() && found->name == wanted ? &*found : nullptr;
}

std::string storedName(const FunctionBinding& function)
{
    const std::string_view prefix = function.origin == FunctionOrigin::LaterVersion ? laterVersionPrefix : "";
    return std::string(prefix) + std::string(function.name);
}

} // namespace wagemill::engine
