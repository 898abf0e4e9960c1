#include "workbook/engine/FunctionTable.h"
#include "workbook/engine/xls/FormulaTokenNumbers.h"
#include "workbook/engine/xls/FormulaTokensXls.h"
#include "workbook/engine/xls/RecordStrings.h"

#include <algorithm>
#include <stdexcept>

namespace wagemill::engine::xls {

namespace {

std::uint8_t withClass(std::uint8_t id, OperandClass operandClass)
{
    return static_cast<std::uint8_t>(id + ((static_cast<unsigned>(operandClass) - 1U) << 5U));
}

bool isVolatileFunction(const Token& token)
{
    const auto* function = std::get_if<FunctionToken>(&token);
    const FunctionInfo* const info = function == nullptr ? nullptr : findFunction(function->function);
    return info != nullptr && info->isVolatile;
}

bool isVolatileMark(const Token& token)
{
    const auto* attribute = std::get_if<AttributeToken>(&token);
    return attribute != nullptr &&
           (attribute->kind == AttributeToken::Kind::Volatile || (attribute->flags & ptg::attributeVolatile) != 0);
}

std::uint16_t columnField(const ReferencePart& part)
{
    return static_cast<std::uint16_t>(part.column | (part.columnRelative ? ptg::columnRelative : 0) |
                                      (part.rowRelative ? ptg::rowRelative : 0));
}

class FormulaWriter {
public:
    FormulaWriter(const Formula& formula, ByteWriter& tokens, ByteWriter& behind)
        : m_formula(formula), m_tokens(tokens), m_behind(behind), m_origin(tokens.size())
    {
    }

    void write()
    {
        const auto& tokens = m_formula.tokens;
        if (std::ranges::any_of(tokens, isVolatileFunction) && std::ranges::none_of(tokens, isVolatileMark))
            attribute(ptg::attributeVolatile, 0);
        m_starts.reserve(tokens.size() + 1);
        for (const Token& token : tokens) {
            m_starts.push_back(m_tokens.size());
            std::visit(*this, token);
        }
        m_starts.push_back(m_tokens.size());
        for (const Jump& jump : m_jumps)
            putU16(m_tokens.view(), jump.place, distance(jump));
        if (m_tokens.size() - m_origin > maxFormulaBytes)
            throw std::length_error("The formula is too long for this kind of file.");
    }

    void operator()(const NumberToken& token)
    {
        const double number = token.number;
        if (number >= 0 && number <= 0xFFFF && number == static_cast<double>(static_cast<std::uint16_t>(number))) {
            m_tokens.u8(ptg::integer);
            m_tokens.u16(static_cast<std::uint16_t>(number));
        } else {
            m_tokens.u8(ptg::number);
            m_tokens.real(number);
        }
    }
    void operator()(const TextToken& token)
    {
        m_tokens.u8(ptg::text);
        writeShortString(m_tokens, token.text);
    }
    void operator()(const LogicalToken& token)
    {
        m_tokens.u8(ptg::logical);
        m_tokens.u8(token.value ? 1 : 0);
    }
    void operator()(const ErrorToken& token)
    {
        m_tokens.u8(ptg::error);
        m_tokens.u8(static_cast<std::uint8_t>(token.error));
    }
    void operator()(const MissingArgumentToken& /*token*/) { m_tokens.u8(ptg::missingArgument); }
    void operator()(const OperatorToken& token) { m_tokens.u8(static_cast<std::uint8_t>(token.op)); }

    void operator()(const ReferenceToken& token)
    {
        const bool isArea = token.last.has_value();
        const std::uint8_t id = token.externSheet ? (token.bad ? ptg::badSheetCell : ptg::sheetCell)
                                                  : (token.bad ? ptg::badCell : ptg::cell);
        m_tokens.u8(withClass(static_cast<std::uint8_t>(id + (isArea ? 1 : 0)), token.operandClass));
        if (token.externSheet)
            m_tokens.u16(*token.externSheet);
        if (token.bad)
            m_tokens.zeros(isArea ? 8 : 4);
        else if (isArea)
            writeArea(token.first, *token.last);
        else
            writeCell(token.first);
    }

    void operator()(const NameToken& token)
    {
        m_tokens.u8(withClass(token.externSheet ? ptg::externName : ptg::name, token.operandClass));
        if (token.externSheet)
            m_tokens.u16(*token.externSheet);
        m_tokens.u32(token.index);
    }

    void operator()(const FunctionToken& token)
    {
        m_tokens.u8(withClass(token.variable ? ptg::functionWithCount : ptg::function, token.operandClass));
        if (token.variable)
            m_tokens.u8(token.arguments);
        m_tokens.u16(token.function);
    }

    void operator()(const AttributeToken& token)
    {
        switch (token.kind) {
        case AttributeToken::Kind::If:
            return writeJump(ptg::attributeIf, token, 0);
        case AttributeToken::Kind::Goto:
            return writeJump(ptg::attributeGoto, token, 1);
        case AttributeToken::Kind::Choose:
            return writeChoose(token);
        case AttributeToken::Kind::Sum:
            return attribute(ptg::attributeSum, 0);
        case AttributeToken::Kind::Volatile:
            return attribute(ptg::attributeVolatile, token.data);
        case AttributeToken::Kind::Space:
        case AttributeToken::Kind::Other:
            return attribute(token.flags, token.data);
        }
    }

    void operator()(const ArrayToken& token)
    {
        m_tokens.u8(withClass(ptg::array, token.operandClass));
        m_tokens.zeros(7);
        m_behind.u8(static_cast<std::uint8_t>(token.columns - 1));
        m_behind.u16(static_cast<std::uint16_t>(token.rows - 1));
        for (const CellValue& value : token.values)
            std::visit([&](const auto& held) { writeArrayValue(held); }, value);
    }

    void operator()(const OpaqueToken& token)
    {
        m_tokens.bytes(token.bytes);
        m_behind.bytes(token.trailingBytes);
    }

private:
    struct Jump {
        std::size_t place;  ///< where its distance stands
        std::size_t origin; ///< from where it counts
        std::size_t target; ///< token number
    };

    std::uint16_t distance(const Jump& jump) const
    {
        const std::size_t target = m_starts[std::min(jump.target, m_starts.size() - 1)];
        return static_cast<std::uint16_t>(target < jump.origin ? 0 : target - jump.origin);
    }

    void attribute(std::uint8_t flags, std::uint16_t data)
    {
        m_tokens.u8(ptg::attribute);
        m_tokens.u8(flags);
        m_tokens.u16(data);
    }

    void writeJump(std::uint8_t kind, const AttributeToken& token, std::size_t lead)
    {
        attribute(kind, 0);
        const std::size_t end = m_tokens.size();
        m_jumps.push_back(
            {end - 2, end + lead, token.targets.empty() ? m_formula.tokens.size() : token.targets.front()});
    }

    void writeChoose(const AttributeToken& token)
    {
        const std::size_t choices = token.targets.empty() ? 0 : token.targets.size() - 1;
        attribute(ptg::attributeChoose, static_cast<std::uint16_t>(choices));
        const std::size_t start = m_tokens.size();
        for (const std::size_t target : token.targets) {
            m_jumps.push_back({m_tokens.size(), start, target});
            m_tokens.u16(0);
        }
    }

    void writeCell(const ReferencePart& part)
    {
        m_tokens.u16(static_cast<std::uint16_t>(part.row));
        m_tokens.u16(columnField(part));
    }

    /// A copied area may have its corners the wrong way round; the file wants the first one first.
    void writeArea(ReferencePart first, ReferencePart last)
    {
        orderCorners(first, last);
        m_tokens.u16(static_cast<std::uint16_t>(first.row));
        m_tokens.u16(static_cast<std::uint16_t>(last.row));
        m_tokens.u16(columnField(first));
        m_tokens.u16(columnField(last));
    }

    void writeArrayValue(Empty /*value*/)
    {
        m_behind.u8(ptg::arrayEmpty);
        m_behind.zeros(8);
    }
    void writeArrayValue(double value)
    {
        m_behind.u8(ptg::arrayNumber);
        m_behind.real(value);
    }
    void writeArrayValue(const std::string& value)
    {
        m_behind.u8(ptg::arrayText);
        writeString(m_behind, value);
    }
    void writeArrayValue(bool value) { writeArrayByte(ptg::arrayLogical, value ? 1 : 0); }
    void writeArrayValue(ErrorCode value) { writeArrayByte(ptg::arrayError, static_cast<std::uint8_t>(value)); }
    void writeArrayByte(std::uint8_t kind, std::uint8_t value)
    {
        m_behind.u8(kind);
        m_behind.u8(value);
        m_behind.zeros(7);
    }

    const Formula& m_formula;
    ByteWriter& m_tokens;
    ByteWriter& m_behind;
    std::size_t m_origin;
    std::vector<std::size_t> m_starts;
    std::vector<Jump> m_jumps;
};

} // namespace

void writeFormula(const Formula& formula, ByteWriter& tokens, ByteWriter& behind)
{
    FormulaWriter(formula, tokens, behind).write();
}

} // namespace wagemill::engine::xls
