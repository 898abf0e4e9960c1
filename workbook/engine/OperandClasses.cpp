#include "workbook/engine/Formula.h"

#include "workbook/engine/FunctionTable.h"

#include <algorithm>

namespace wagemill::engine {

namespace {

/// Walks the tokens from the last to the first: each token finds on top of the stack what it is wanted as, and leaves
/// there what it wants its own operands to be.
class ClassAssignment {
public:
    /// formula  Array for an array formula, else Value
    explicit ClassAssignment(OperandClass formula) : m_value(formula) {}

    void operator()(ReferenceToken& token) { token.operandClass = taken(); }
    void operator()(NameToken& token) { token.operandClass = taken(); }
    void operator()(FunctionToken& token)
    {
        const OperandClass wanted = taken();
        const FunctionInfo* const info = findFunction(token.function);
        const char result = info == nullptr ? 'V' : info->resultClass;
        const bool answersReference = result == 'R' && wanted == OperandClass::Reference;
        token.operandClass = answersReference                ? OperandClass::Reference
                             : wanted == OperandClass::Array ? OperandClass::Array
                                                             : OperandClass::Value;
        const bool eachElement = wanted == OperandClass::Array && result != 'R';
        const std::string_view classes =
            info == nullptr || info->parameterClasses.empty() ? "R" : info->parameterClasses;
        for (std::size_t i = 0; i < token.arguments; ++i) {
            const char parameter = classes[std::min(i, classes.size() - 1)];
            if (parameter == 'R')
                want(OperandClass::Reference);
            else
                want(parameter == 'A' || eachElement ? OperandClass::Array : m_value);
        }
    }

    void operator()(const OperatorToken& token)
    {
        const OperandClass wanted = taken();
        const OperandClass operand = wanted == OperandClass::Array ? OperandClass::Array : m_value;
        switch (token.op) {
        case Operator::Brackets:
            want(wanted);
            break;
        case Operator::Range:
        case Operator::Union:
        case Operator::Intersection:
            want(OperandClass::Reference);
            want(OperandClass::Reference);
            break;
        case Operator::Negate:
        case Operator::UnaryPlus:
        case Operator::Percent:
            want(operand);
            break;
        default:
            want(operand);
            want(operand);
        }
    }

    void operator()(const AttributeToken& token)
    {
        if (token.kind == AttributeToken::Kind::Sum) {
            taken();
            want(OperandClass::Reference);
        }
    }
    void operator()(const auto& /*constant*/) { taken(); }

private:
    void want(OperandClass operandClass) { m_wanted.push_back(operandClass); }
    OperandClass taken()
    {
        const OperandClass wanted = m_wanted.back();
        m_wanted.pop_back();
        return wanted;
    }

    OperandClass m_value; ///< of what is wanted as a value: in an array formula that is an array
    std::vector<OperandClass> m_wanted = {m_value};
};

bool isJump(const Token& token)
{
    const auto* const attribute = std::get_if<AttributeToken>(&token);
    return attribute != nullptr && !attribute->targets.empty();
}

void assign(OperandClass formula, std::vector<Token>& tokens)
{
    ClassAssignment assignment(formula);
    std::for_each(tokens.rbegin(), tokens.rend(), [&](Token& token) { std::visit(assignment, token); });
}

} // namespace

void assignOperandClasses(std::vector<Token>& tokens)
{
    assign(OperandClass::Value, tokens);
}

std::vector<Token> asArrayFormula(std::vector<Token> tokens)
{
    std::erase_if(tokens, isJump);
    if (std::ranges::none_of(tokens, [](const Token& token) { return std::holds_alternative<OpaqueToken>(token); }))
        assign(OperandClass::Array, tokens);
    return tokens;
}

} // namespace wagemill::engine
