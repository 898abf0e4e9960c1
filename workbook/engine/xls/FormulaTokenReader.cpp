#include "app/base/Bytes.h"
#include "workbook/engine/FunctionTable.h"
#include "workbook/engine/xls/FormulaTokenNumbers.h"
#include "workbook/engine/xls/FormulaTokensXls.h"
#include "workbook/engine/xls/RecordStrings.h"
#include "workbook/engine/xls/SheetRecords.h"

#include <algorithm>
#include <array>
#include <utility>

namespace wagemill::engine::xls {

namespace {

constexpr std::size_t usualTokenSize = 4;

/// A token that we keep rather than read: the formula becomes opaque.
struct UnknownToken {};

ReferencePart storedPart(std::uint16_t row, std::uint16_t column)
{
    return {row, column & 0xFF, (column & ptg::rowRelative) != 0, (column & ptg::columnRelative) != 0};
}

/// A part whose relative row and column are distances from `origin`, around the edges of the sheet.
ReferencePart offsetPart(std::uint16_t row, std::uint16_t column, CellAddress origin)
{
    ReferencePart part = storedPart(row, column);
    if (part.rowRelative)
        part.row = (part.row + origin.row) % maxRows;
    if (part.columnRelative)
        part.column = (part.column + origin.column) % maxColumns;
    return part;
}

bool isInsideSheetColumns(std::uint16_t column)
{
    return (column & 0x3F00U) == 0;
}

class FormulaReader {
public:
    FormulaReader(std::span<const std::byte> tokens, std::span<const std::byte> behind, const FormulaContext& context)
        : m_tokens(tokens), m_behind(behind), m_context(context)
    {
    }

    Formula read()
    {
        m_formula.tokens.reserve(m_tokens.remaining() / usualTokenSize + 1);
        while (!m_tokens.atEnd()) {
            m_starts[m_formula.tokens.size()] = static_cast<std::uint16_t>(m_tokens.position());
            readToken();
        }
        m_starts[m_formula.tokens.size()] = static_cast<std::uint16_t>(m_tokens.position());
        if (m_depth != 1)
            throw DamagedFile("a formula is no expression");
        resolveJumps();
        return std::move(m_formula);
    }

    bool hasMemoryTokens() const { return m_hasMemoryTokens; }

private:
    void readToken()
    {
        const std::uint8_t id = m_tokens.u8();
        if (id >= 0x80)
            throw UnknownToken{};
        if (id < 0x20) {
            readPlainToken(id);
            return;
        }
        m_class = static_cast<OperandClass>(id >> 5U);
        readClassifiedToken(static_cast<std::uint8_t>((id & 0x1FU) | 0x20U));
    }

    void readPlainToken(std::uint8_t id)
    {
        if (id >= ptg::firstOperator && id <= ptg::lastOperator)
            return readOperator(static_cast<Operator>(id));
        switch (id) {
        case ptg::missingArgument:
            return push(MissingArgumentToken{});
        case ptg::text:
            return push(TextToken{readShortString(m_tokens)});
        case ptg::attribute:
            return readAttribute();
        case ptg::error:
            return push(ErrorToken{errorOfCode(m_tokens.u8())});
        case ptg::logical:
            return push(LogicalToken{m_tokens.u8() != 0});
        case ptg::integer:
            return push(NumberToken{static_cast<double>(m_tokens.u16())});
        case ptg::number:
            return readNumber();
        default:
            throw UnknownToken{};
        }
    }

    void readOperator(Operator op)
    {
        if (op == Operator::Intersection || op == Operator::Union || op == Operator::Range)
            wantReferences(2);
        pop(static_cast<std::uint8_t>(op) < ptg::firstUnaryOperator ? 2 : 1);
        push(OperatorToken{op});
    }

    /// Some programs write the operands of range operators as values, which they never are.
    void wantReferences(std::size_t operands)
    {
        for (std::size_t index = m_depth - std::min(operands, m_depth); index < m_depth; ++index)
            if (auto* const reference = std::get_if<ReferenceToken>(&m_formula.tokens[m_operands[index]]))
                reference->operandClass = OperandClass::Reference;
    }

    void readClassifiedToken(std::uint8_t id)
    {
        switch (id) {
        case ptg::array:
            return readArray();
        case ptg::function:
            return readFunction();
        case ptg::functionWithCount:
            return readFunctionWithCount();
        case ptg::name:
            return readName(std::nullopt);
        case ptg::externName:
            return readName(m_tokens.u16());
        case ptg::cell:
        case ptg::area:
        case ptg::cellOffset:
        case ptg::areaOffset:
        case ptg::badCell:
        case ptg::badArea:
            return readReference(id, std::nullopt);
        case ptg::sheetCell:
        case ptg::sheetArea:
        case ptg::badSheetCell:
        case ptg::badSheetArea:
            return readReference(id, m_tokens.u16());
        case ptg::memoryArea:
        case ptg::memoryError:
        case ptg::memoryNone:
        case ptg::memoryFunction:
            return readMemoryToken(id);
        default:
            throw UnknownToken{};
        }
    }

    void readNumber()
    {
        const CellValue value = numberValue(m_tokens.real());
        if (const double* number = std::get_if<double>(&value))
            push(NumberToken{*number});
        else
            push(ErrorToken{std::get<ErrorCode>(value)});
    }

    void readAttribute()
    {
        using Kind = AttributeToken::Kind;
        const std::uint8_t flags = m_tokens.u8();
        const std::uint16_t data = m_tokens.u16();
        const std::size_t end = m_tokens.position();
        switch (flags) {
        case ptg::attributeIf:
            return addJump(Kind::If, {end + data});
        case ptg::attributeGoto:
            return addJump(Kind::Goto, {end + data + 1});
        case ptg::attributeChoose:
            return readChoose(data);
        case ptg::attributeSum:
            pop(1);
            return push(AttributeToken{Kind::Sum, flags, 0, {}});
        case ptg::attributeVolatile:
            return add(AttributeToken{Kind::Volatile, flags, data, {}});
        case ptg::attributeSpace:
        case ptg::attributeSpace | ptg::attributeVolatile:
            return add(AttributeToken{Kind::Space, flags, data, {}});
        case 0:
        case ptg::attributeAssign:
        case ptg::attributeAssign | ptg::attributeVolatile:
            return add(AttributeToken{Kind::Other, flags, data, {}});
        default:
            throw UnknownToken{};
        }
    }

    /// The jumps to the choices and to the end count from the beginning of their list.
    void readChoose(std::uint16_t choices)
    {
        const std::size_t start = m_tokens.position();
        std::vector<std::size_t> targets;
        for (int index = 0; index <= choices; ++index)
            targets.push_back(start + m_tokens.u16());
        addJump(AttributeToken::Kind::Choose, std::move(targets));
    }

    /// targets  offsets into the tokens; resolveJumps() makes token numbers of them
    void addJump(AttributeToken::Kind kind, std::vector<std::size_t> targets)
    {
        m_jumps.push_back(m_formula.tokens.size());
        add(AttributeToken{kind, 0, 0, std::move(targets)});
    }

    void resolveJumps()
    {
        const std::span starts(m_starts.data(), m_formula.tokens.size() + 1);
        for (const std::size_t jump : m_jumps)
            for (std::size_t& target : std::get<AttributeToken>(m_formula.tokens[jump]).targets) {
                const auto found = std::ranges::lower_bound(starts, target);
                if (found == starts.end() || *found != target)
                    throw DamagedFile("a formula jumps into the middle of a token");
                target = static_cast<std::size_t>(found - starts.begin());
            }
    }

    void readArray()
    {
        m_tokens.skip(7);
        ArrayToken array;
        array.operandClass = m_class;
        array.columns = m_behind.u8() + 1;
        array.rows = m_behind.u16() + 1;
        const std::size_t count = static_cast<std::size_t>(array.rows) * static_cast<std::size_t>(array.columns);
        if (count * 4 > m_behind.remaining()) // no value takes less than four bytes
            throw DamagedFile("a constant array in a formula is cut off");
        array.values.reserve(count);
        for (std::size_t index = 0; index < count; ++index)
            array.values.push_back(readArrayValue());
        push(std::move(array));
    }

    CellValue readArrayValue()
    {
        const std::uint8_t kind = m_behind.u8();
        if (kind == ptg::arrayText)
            return readString(m_behind);
        ByteReader value(m_behind.bytes(8));
        switch (kind) {
        case ptg::arrayEmpty:
            return Empty{};
        case ptg::arrayNumber:
            return numberValue(value.real());
        case ptg::arrayLogical:
            return value.u8() != 0;
        case ptg::arrayError:
            return errorOfCode(value.u8());
        default:
            throw DamagedFile("a constant array in a formula holds a value of an unknown kind");
        }
    }

    void readFunction()
    {
        const std::uint16_t id = m_tokens.u16();
        const FunctionInfo* const function = findFunction(id);
        if (function == nullptr || function->minArguments != function->maxArguments)
            throw UnknownToken{};
        addFunction({m_class, id, function->minArguments, false});
    }

    void readFunctionWithCount()
    {
        const std::uint8_t arguments = m_tokens.u8();
        const std::uint16_t id = m_tokens.u16();
        if (arguments > 0x7F || id > 0x7FFF)
            throw UnknownToken{}; // a command of a macro sheet
        const FunctionInfo* const function = findFunction(id);
        const bool fixed = function != nullptr && function->minArguments == function->maxArguments &&
                           function->minArguments == arguments;
        addFunction({m_class, id, arguments, !fixed});
    }

    void addFunction(const FunctionToken& function)
    {
        pop(function.arguments);
        push(function);
    }

    void readName(std::optional<std::uint16_t> externSheet)
    {
        const std::uint32_t index = m_tokens.u32();
        const bool known = externSheet ? *externSheet < m_context.externSheets : index >= 1 && index <= m_context.names;
        if (known && index <= 0xFFFF)
            push(NameToken{m_class, externSheet, static_cast<std::uint16_t>(index)});
        else
            push(ErrorToken{ErrorCode::Name});
    }

    void readReference(std::uint8_t id, std::optional<std::uint16_t> externSheet)
    {
        const bool isArea = id == ptg::area || id == ptg::areaOffset || id == ptg::badArea || id == ptg::sheetArea ||
                            id == ptg::badSheetArea;
        const bool isOffset = id == ptg::cellOffset || id == ptg::areaOffset;
        ReferenceToken token;
        token.operandClass = m_class;
        token.externSheet = externSheet;
        token.bad = id == ptg::badCell || id == ptg::badArea || id == ptg::badSheetCell || id == ptg::badSheetArea;
        if (externSheet && *externSheet >= m_context.externSheets) {
            token.externSheet.reset();
            token.bad = true;
        }
        const std::uint16_t firstRow = m_tokens.u16();
        const std::uint16_t lastRow = isArea ? m_tokens.u16() : firstRow;
        const std::uint16_t firstColumn = m_tokens.u16();
        const std::uint16_t lastColumn = isArea ? m_tokens.u16() : firstColumn;
        if (!isOffset && !(isInsideSheetColumns(firstColumn) && isInsideSheetColumns(lastColumn)))
            token.bad = true;
        if (isArea)
            token.last.emplace();
        if (!token.bad) {
            const auto part = [&](std::uint16_t row, std::uint16_t column) {
                return isOffset ? offsetPart(row, column, m_context.origin) : storedPart(row, column);
            };
            token.first = part(firstRow, firstColumn);
            if (isArea) {
                token.last = part(lastRow, lastColumn);
                orderCorners(token.first, *token.last);
            }
        }
        push(token);
    }

    /// A mark before a sub-expression whose tokens follow; it leaves nothing behind itself.
    void readMemoryToken(std::uint8_t id)
    {
        m_hasMemoryTokens = true;
        OpaqueToken token;
        token.isMark = true;
        token.bytes.push_back(static_cast<std::byte>(id | (static_cast<unsigned>(m_class) - 1U) << 5U));
        const auto operands = m_tokens.bytes(id == ptg::memoryFunction ? 2 : 6);
        token.bytes.insert(token.bytes.end(), operands.begin(), operands.end());
        if (id == ptg::memoryArea) {
            const std::size_t position = m_behind.position();
            const std::size_t size = 2 + m_behind.u16() * std::size_t{8};
            m_behind.seek(position);
            const auto areas = m_behind.bytes(size);
            token.trailingBytes.assign(areas.begin(), areas.end());
        }
        add(std::move(token));
    }

    void add(Token token) { m_formula.tokens.push_back(std::move(token)); }

    void push(Token token)
    {
        m_operands[m_depth++] = static_cast<std::uint16_t>(m_formula.tokens.size());
        add(std::move(token));
    }

    void pop(std::size_t operands)
    {
        if (operands > m_depth)
            throw DamagedFile("a formula lacks an operand");
        m_depth -= operands;
    }

    ByteReader m_tokens;
    ByteReader m_behind;
    FormulaContext m_context;
    Formula m_formula;
    OperandClass m_class = OperandClass::Value;
    std::array<std::uint16_t, maxFormulaBytes> m_operands; ///< the stack: the last token of each operand
    std::size_t m_depth = 0;
    std::array<std::uint16_t, maxFormulaBytes + 1> m_starts; ///< of each token, and the end
    std::vector<std::size_t> m_jumps;
    bool m_hasMemoryTokens = false;
};

Formula opaqueFormula(std::span<const std::byte> tokens, std::span<const std::byte> behind)
{
    return {{OpaqueToken{{tokens.begin(), tokens.end()}, {behind.begin(), behind.end()}}}};
}

/// Marks of sub-expressions hold sizes in bytes, so their formula must be written as it was read.
bool writesBack(const Formula& formula, std::span<const std::byte> tokens)
{
    ByteWriter written;
    ByteWriter behind;
    writeFormula(formula, written, behind);
    return std::ranges::equal(written.view(), tokens);
}

} // namespace

Formula readFormula(std::span<const std::byte> tokens, std::span<const std::byte> behind, const FormulaContext& context)
{
    if (tokens.size() > maxFormulaBytes)
        throw DamagedFile("a formula is longer than 1800 bytes");
    try {
        FormulaReader reader(tokens, behind, context);
        Formula formula = reader.read();
        if (reader.hasMemoryTokens() && !writesBack(formula, tokens))
            return opaqueFormula(tokens, behind);
        return formula;
    } catch (const UnknownToken&) {
        return opaqueFormula(tokens, behind);
    }
}

std::optional<CellAddress> sharedBase(std::span<const std::byte> tokens)
{
    if (tokens.size() != 5)
        return std::nullopt;
    ByteReader reader(tokens);
    const std::uint8_t id = reader.u8();
    if (id != ptg::partOfShared && id != ptg::partOfTable)
        return std::nullopt;
    const int row = reader.u16();
    return CellAddress{row, reader.u16()};
}

std::optional<CellAddress> sharedBase(const Formula& formula)
{
    const auto* token = formula.tokens.size() == 1 ? std::get_if<OpaqueToken>(&formula.tokens.front()) : nullptr;
    return token == nullptr ? std::nullopt : sharedBase(std::span<const std::byte>(token->bytes));
}

} // namespace wagemill::engine::xls
