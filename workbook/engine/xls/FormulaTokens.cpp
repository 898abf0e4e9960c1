#include "workbook/engine/xls/FormulaTokens.h"

#include "workbook/engine/FunctionTable.h"
#include "workbook/engine/xls/RecordStrings.h"
#include "workbook/engine/xls/SheetRecords.h"

#include <algorithm>
#include <array>
#include <bit>
#include <stdexcept>
#include <utility>

namespace wagemill::engine::xls {

namespace {

namespace ptg {

// Token numbers, [MS-XLS] 2.5.198.25; those from 0x20 on are of the reference class, 0x20 more is the value class and
// 0x40 more the array class.
constexpr std::uint8_t partOfShared = 0x01;
constexpr std::uint8_t partOfTable = 0x02;
constexpr std::uint8_t firstOperator = 0x03;
constexpr std::uint8_t firstUnaryOperator = 0x12;
constexpr std::uint8_t lastOperator = 0x15;
constexpr std::uint8_t missingArgument = 0x16;
constexpr std::uint8_t text = 0x17;
constexpr std::uint8_t attribute = 0x19;
constexpr std::uint8_t error = 0x1C;
constexpr std::uint8_t logical = 0x1D;
constexpr std::uint8_t integer = 0x1E;
constexpr std::uint8_t number = 0x1F;
constexpr std::uint8_t array = 0x20;
constexpr std::uint8_t function = 0x21;
constexpr std::uint8_t functionWithCount = 0x22;
constexpr std::uint8_t name = 0x23;
constexpr std::uint8_t memoryArea = 0x26;
constexpr std::uint8_t memoryError = 0x27;
constexpr std::uint8_t memoryNone = 0x28;
constexpr std::uint8_t memoryFunction = 0x29;
constexpr std::uint8_t externName = 0x39;

// Kinds of attribute tokens, bits of their second byte.
constexpr std::uint8_t attributeVolatile = 0x01;
constexpr std::uint8_t attributeIf = 0x02;
constexpr std::uint8_t attributeChoose = 0x04;
constexpr std::uint8_t attributeGoto = 0x08;
constexpr std::uint8_t attributeSum = 0x10;
constexpr std::uint8_t attributeAssign = 0x20;
constexpr std::uint8_t attributeSpace = 0x40;

// Bits of a column that mark relative parts.
constexpr std::uint16_t columnRelative = 0x4000;
constexpr std::uint16_t rowRelative = 0x8000;

// Kinds of values in a constant array, [MS-XLS] 2.5.198.44.
constexpr std::uint8_t arrayEmpty = 0;
constexpr std::uint8_t arrayNumber = 1;
constexpr std::uint8_t arrayText = 2;
constexpr std::uint8_t arrayLogical = 4;
constexpr std::uint8_t arrayError = 16;

} // namespace ptg

/// Tokens of references, of the reference class: a cell's number; that of an area is one more.
struct ReferenceKind {
    std::uint8_t cell;
    bool hasSheet = false;
    bool bad = false;
    bool isOffset = false; ///< distances from the formula's cell, in shared formulas
};
constexpr auto referenceKinds = std::to_array<ReferenceKind>({
    {.cell = 0x24},
    {.cell = 0x2A, .bad = true},
    {.cell = 0x2C, .isOffset = true},
    {.cell = 0x3A, .hasSheet = true},
    {.cell = 0x3C, .hasSheet = true, .bad = true},
});

constexpr std::size_t usualTokenSize = 4;
constexpr std::size_t maxFormulaBytes = 1800; ///< of the tokens

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

class FormulaReader {
public:
    FormulaReader(std::span<const std::byte> tokens, std::span<const std::byte> trailing, const FormulaContext& context)
        : m_tokens(tokens), m_trailing(trailing), m_context(context)
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
            throw DamagedFile("a formula is not an expression");
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
        if (id < 0x20)
            return readPlainToken(id);
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
            wantReferences();
        pop(static_cast<std::uint8_t>(op) < ptg::firstUnaryOperator ? 2 : 1);
        push(OperatorToken{op});
    }

    /// Some programs write the operands of range operators as values, which they never are.
    void wantReferences()
    {
        for (std::size_t index = m_depth - std::min<std::size_t>(2, m_depth); index < m_depth; ++index)
            if (auto* const reference = std::get_if<ReferenceToken>(&m_formula.tokens[m_operands[index]]))
                reference->operandClass = OperandClass::Reference;
    }

    void readClassifiedToken(std::uint8_t id)
    {
        switch (id) {
        case ptg::array:
            return readArray();
        case ptg::function:
            return readFunction(false);
        case ptg::functionWithCount:
            return readFunction(true);
        case ptg::name:
            return readName(std::nullopt);
        case ptg::externName:
            return readName(m_tokens.u16());
        case ptg::memoryArea:
        case ptg::memoryError:
        case ptg::memoryNone:
        case ptg::memoryFunction:
            return readMemoryToken(id);
        default:
            const auto* const kind = std::ranges::find_if(
                referenceKinds, [id](const ReferenceKind& each) { return id == each.cell || id == each.cell + 1; });
            if (kind == referenceKinds.end())
                throw UnknownToken{};
            return readReference(*kind, id != kind->cell);
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
        case 0:
        case ptg::attributeVolatile:
        case ptg::attributeAssign:
        case ptg::attributeAssign | ptg::attributeVolatile:
        case ptg::attributeSpace:
        case ptg::attributeSpace | ptg::attributeVolatile:
            return add(AttributeToken{Kind::Remark, flags, data, {}});
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
        array.columns = m_trailing.u8() + 1;
        array.rows = m_trailing.u16() + 1;
        const std::size_t count = static_cast<std::size_t>(array.rows) * static_cast<std::size_t>(array.columns);
        if (count * 4 > m_trailing.remaining()) // no value takes less than four bytes
            throw DamagedFile("a constant array in a formula is cut off");
        array.values.reserve(count);
        for (std::size_t index = 0; index < count; ++index)
            array.values.push_back(readArrayValue());
        push(std::move(array));
    }

    CellValue readArrayValue()
    {
        const std::uint8_t kind = m_trailing.u8();
        if (kind == ptg::arrayText)
            return readString(m_trailing);
        ByteReader value(m_trailing.bytes(8));
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

    void readFunction(bool isCounted)
    {
        const std::uint8_t count = isCounted ? m_tokens.u8() : std::uint8_t{0};
        const std::uint16_t id = m_tokens.u16();
        const FunctionInfo* const function = findFunction(id);
        const bool isFixed = function != nullptr && function->minArguments == function->maxArguments;
        if (isCounted ? count > 0x7F || id > 0x7FFF : !isFixed)
            throw UnknownToken{}; // a command of a macro sheet, or a function whose arguments nobody knows
        const std::uint8_t arguments = isCounted ? count : function->minArguments;
        pop(arguments);
        push(FunctionToken{m_class, id, arguments, !isFixed || function->minArguments != arguments});
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

    void readReference(const ReferenceKind& kind, bool isArea)
    {
        ReferenceToken token;
        token.operandClass = m_class;
        token.bad = kind.bad;
        if (kind.hasSheet) {
            token.externSheet = m_tokens.u16();
            if (*token.externSheet >= m_context.externSheets) {
                token.externSheet.reset();
                token.bad = true;
            }
        }
        const std::uint16_t firstRow = m_tokens.u16();
        const std::uint16_t lastRow = isArea ? m_tokens.u16() : firstRow;
        const std::uint16_t firstColumn = m_tokens.u16();
        const std::uint16_t lastColumn = isArea ? m_tokens.u16() : firstColumn;
        if (!kind.isOffset && ((firstColumn | lastColumn) & 0x3F00U) != 0)
            token.bad = true; // outside the sheet
        if (isArea)
            token.last.emplace();
        if (!token.bad) {
            const auto part = [&](std::uint16_t row, std::uint16_t column) {
                return kind.isOffset ? offsetPart(row, column, m_context.origin) : storedPart(row, column);
            };
            token.first = part(firstRow, firstColumn);
            if (isArea) {
                token.last = part(lastRow, lastColumn);
                orderCorners(token.first, *token.last);
            }
        }
        push(token);
    }

    /// A mark before a sub-expression whose tokens follow; it has no value.
    void readMemoryToken(std::uint8_t id)
    {
        m_hasMemoryTokens = true;
        OpaqueToken token;
        token.isMark = true;
        token.bytes.push_back(static_cast<std::byte>(id | (static_cast<unsigned>(m_class) - 1U) << 5U));
        const auto operands = m_tokens.bytes(id == ptg::memoryFunction ? 2 : 6);
        token.bytes.insert(token.bytes.end(), operands.begin(), operands.end());
        if (id == ptg::memoryArea) {
            const std::size_t size = 2 + ByteReader(m_trailing).u16() * std::size_t{8};
            const auto areas = m_trailing.bytes(size);
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
    ByteReader m_trailing;
    FormulaContext m_context;
    Formula m_formula;
    OperandClass m_class = OperandClass::Value;
    std::array<std::uint16_t, maxFormulaBytes> m_operands; ///< the stack: the last token of each operand
    std::size_t m_depth = 0;
    std::array<std::uint16_t, maxFormulaBytes + 1> m_starts; ///< of each token, and the end
    std::vector<std::size_t> m_jumps;
    bool m_hasMemoryTokens = false;
};

bool isVolatileFunction(const Token& token)
{
    const auto* function = std::get_if<FunctionToken>(&token);
    const FunctionInfo* const info = function == nullptr ? nullptr : findFunction(function->function);
    return info != nullptr && info->isVolatile;
}

bool isVolatileMark(const Token& token)
{
    const auto* attribute = std::get_if<AttributeToken>(&token);
    return attribute != nullptr && (attribute->flags & ptg::attributeVolatile) != 0;
}

std::uint16_t columnField(const ReferencePart& part)
{
    return static_cast<std::uint16_t>(part.column | (part.columnRelative ? ptg::columnRelative : 0) |
                                      (part.rowRelative ? ptg::rowRelative : 0));
}

class FormulaWriter {
public:
    FormulaWriter(const Formula& formula, ByteWriter& tokens, ByteWriter& trailing)
        : m_formula(formula), m_tokens(tokens), m_trailing(trailing), m_origin(tokens.size())
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
            putU16(m_tokens.view(), jump.place, static_cast<std::uint16_t>(m_starts[jump.target] - jump.origin));
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
        const auto* const kind = std::ranges::find_if(referenceKinds, [&](const ReferenceKind& each) {
            return !each.isOffset && each.hasSheet == token.externSheet.has_value() && each.bad == token.bad;
        });
        writeClassified(static_cast<std::uint8_t>(kind->cell + (isArea ? 1 : 0)), token.operandClass);
        if (token.externSheet)
            m_tokens.u16(*token.externSheet);
        if (token.bad)
            m_tokens.zeros(isArea ? 8 : 4);
        else
            writeParts(token.first, token.last);
    }

    void operator()(const NameToken& token)
    {
        writeClassified(token.externSheet ? ptg::externName : ptg::name, token.operandClass);
        if (token.externSheet)
            m_tokens.u16(*token.externSheet);
        m_tokens.u32(token.index);
    }

    void operator()(const FunctionToken& token)
    {
        writeClassified(token.variable ? ptg::functionWithCount : ptg::function, token.operandClass);
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
        case AttributeToken::Kind::Remark:
            return attribute(token.flags, token.data);
        }
    }

    void operator()(const ArrayToken& token)
    {
        writeClassified(ptg::array, token.operandClass);
        m_tokens.zeros(7);
        m_trailing.u8(static_cast<std::uint8_t>(token.columns - 1));
        m_trailing.u16(static_cast<std::uint16_t>(token.rows - 1));
        for (const CellValue& value : token.values)
            std::visit([&](const auto& held) { writeArrayValue(held); }, value);
    }

    void operator()(const OpaqueToken& token)
    {
        m_tokens.bytes(token.bytes);
        m_trailing.bytes(token.trailingBytes);
    }

private:
    struct Jump {
        std::size_t place;  ///< where its distance is put
        std::size_t origin; ///< from where it counts
        std::size_t target; ///< token number
    };

    void writeClassified(std::uint8_t id, OperandClass operandClass)
    {
        m_tokens.u8(static_cast<std::uint8_t>(id + ((static_cast<unsigned>(operandClass) - 1U) << 5U)));
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
        m_jumps.push_back({end - 2, end + lead, token.targets.front()});
    }

    void writeChoose(const AttributeToken& token)
    {
        attribute(ptg::attributeChoose, static_cast<std::uint16_t>(token.targets.size() - 1));
        const std::size_t start = m_tokens.size();
        for (const std::size_t target : token.targets) {
            m_jumps.push_back({m_tokens.size(), start, target});
            m_tokens.u16(0);
        }
    }

    /// A copied area may have its corners the wrong way round; the file wants the first one first.
    void writeParts(ReferencePart first, std::optional<ReferencePart> last)
    {
        if (last)
            orderCorners(first, *last);
        m_tokens.u16(static_cast<std::uint16_t>(first.row));
        if (last)
            m_tokens.u16(static_cast<std::uint16_t>(last->row));
        m_tokens.u16(columnField(first));
        if (last)
            m_tokens.u16(columnField(*last));
    }

    void writeArrayValue(const Empty& /*value*/) { writeArrayBits(ptg::arrayEmpty, 0); }
    void writeArrayValue(double value) { writeArrayBits(ptg::arrayNumber, std::bit_cast<std::uint64_t>(value)); }
    void writeArrayValue(bool value) { writeArrayBits(ptg::arrayLogical, value ? 1 : 0); }
    void writeArrayValue(ErrorCode value) { writeArrayBits(ptg::arrayError, static_cast<std::uint64_t>(value)); }
    void writeArrayBits(std::uint8_t kind, std::uint64_t bits)
    {
        m_trailing.u8(kind);
        m_trailing.u64(bits);
    }
    void writeArrayValue(const std::string& value)
    {
        m_trailing.u8(ptg::arrayText);
        writeString(m_trailing, value);
    }

    const Formula& m_formula;
    ByteWriter& m_tokens;
    ByteWriter& m_trailing;
    std::size_t m_origin;
    std::vector<std::size_t> m_starts;
    std::vector<Jump> m_jumps;
};

/// Marks of sub-expressions hold sizes in bytes, so their formula must be written as it was read.
bool writesBack(const Formula& formula, std::span<const std::byte> tokens)
{
    ByteWriter written;
    ByteWriter trailing;
    writeFormula(formula, written, trailing);
    return std::ranges::equal(written.view(), tokens);
}

} // namespace

Formula readFormula(std::span<const std::byte> tokens, std::span<const std::byte> trailing,
                    const FormulaContext& context)
{
    if (tokens.size() > maxFormulaBytes)
        throw DamagedFile("a formula is longer than 1800 bytes");
    try {
        FormulaReader reader(tokens, trailing, context);
        Formula formula = reader.read();
        if (!reader.hasMemoryTokens() || writesBack(formula, tokens))
            return formula;
    } catch (const UnknownToken&) { // it is kept as a whole
    }
    return {{OpaqueToken{{tokens.begin(), tokens.end()}, {trailing.begin(), trailing.end()}}}};
}

void writeFormula(const Formula& formula, ByteWriter& tokens, ByteWriter& trailing)
{
    FormulaWriter(formula, tokens, trailing).write();
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

void writeSharedBase(const ArrayArea& array, ByteWriter& tokens)
{
    tokens.u8(array.isTable() ? ptg::partOfTable : ptg::partOfShared);
    tokens.u16(static_cast<std::uint16_t>(array.cells.firstRow));
    tokens.u16(static_cast<std::uint16_t>(array.cells.firstColumn));
}

} // namespace wagemill::engine::xls
