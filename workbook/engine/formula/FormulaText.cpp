#include "workbook/engine/CellAddress.h"
#include "workbook/engine/FunctionTable.h"
#include "workbook/engine/formula/FormulaParser.h"
#include "workbook/engine/formula/ReferenceText.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace wagemill::engine {

namespace {

constexpr std::uint16_t addInFunction = 255;
constexpr std::string_view unreadable = "?"; ///< stands for tokens that we keep without understanding them

std::string_view sign(Operator op)
{
    static constexpr auto signs = std::to_array<std::string_view>(
        {"+", "-", "*", "/", "^", "&", "<", "<=", "=", ">=", ">", "<>", " ", ",", ":", "+", "-", "%"});
    return signs[static_cast<std::size_t>(op) - static_cast<std::size_t>(Operator::Add)];
}

std::string numberAsText(double number)
{
    std::array<char, 32> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    std::string text(buffer.data(), result.ptr);
    std::ranges::replace(text, 'e', 'E');
    return text;
}

std::string constantText(const CellValue& value)
{
    if (const auto* const number = std::get_if<double>(&value))
        return numberAsText(*number);
    if (const auto* const text = std::get_if<std::string>(&value))
        return quoted(*text, '"');
    if (const auto* const logical = std::get_if<bool>(&value))
        return *logical ? "TRUE" : "FALSE";
    if (const auto* const error = std::get_if<ErrorCode>(&value))
        return errorText(*error);
    return "";
}

std::string partText(const ReferencePart& part, bool withRow, bool withColumn)
{
    std::string text;
    if (withColumn)
        text += (part.columnRelative ? "" : "$") + columnName(part.column);
    if (withRow)
        text += (part.rowRelative ? "" : "$") + std::to_string(part.row + 1);
    return text;
}

/// Writes the tokens with a stack of the operands' texts.
class Writer {
public:
    explicit Writer(const Book& book) : m_book(book) {}

    std::string written() const { return m_operands.size() == 1 ? m_operands.back() : std::string(unreadable); }

    void operator()(const NumberToken& token) { put(numberAsText(token.number)); }
    void operator()(const TextToken& token) { put(quoted(token.text, '"')); }
    void operator()(const LogicalToken& token) { put(token.value ? "TRUE" : "FALSE"); }
    void operator()(const ErrorToken& token) { put(errorText(token.error)); }
    void operator()(const MissingArgumentToken& /*token*/) { put(""); }
    void operator()(const OpaqueToken& token)
    {
        if (!token.isMark)
            put(std::string(unreadable));
    }
    void operator()(const ReferenceToken& token);
    void operator()(const NameToken& token) { put(nameText(token)); }
    void operator()(const OperatorToken& token);
    void operator()(const FunctionToken& token);
    void operator()(const ArrayToken& token);
    void operator()(const AttributeToken& token)
    {
        if (token.kind == AttributeToken::Kind::Sum)
            put("SUM(" + taken() + ")");
    }

private:
    void put(std::string text) { m_operands.push_back(std::move(text)); }
    std::string taken();
    std::string sheetsOf(std::uint16_t externSheet) const;
    std::string nameText(const NameToken& token) const;

    const Book& m_book;
    std::vector<std::string> m_operands;
};

std::string Writer::taken()
{
    if (m_operands.empty())
        return std::string(unreadable); // tokens of a damaged file
    std::string text = std::move(m_operands.back());
    m_operands.pop_back();
    return text;
}

std::string Writer::sheetsOf(std::uint16_t externSheet) const
{
    const auto nameOf = [this](std::int16_t index) {
        const bool exists = index >= 0 && static_cast<std::size_t>(index) < m_book.sheets.size();
        return exists ? m_book.sheets[static_cast<std::size_t>(index)]->name : std::string("#REF");
    };
    if (externSheet >= m_book.externSheets.size())
        return "#REF!";
    const ExternSheet& entry = m_book.externSheets[externSheet];
    std::string name = nameOf(entry.first);
    if (entry.last != entry.first)
        name += ":" + nameOf(entry.last);
    return sheetPrefix(name);
}

std::string Writer::nameText(const NameToken& token) const
{
    const auto at = [&](const auto& names) { return token.index >= 1 && token.index <= names.size(); };
    const auto index = static_cast<std::size_t>(token.index) - 1;
    if (!token.externSheet)
        return at(m_book.names) ? m_book.names[index].name : errorText(ErrorCode::Name);
    if (*token.externSheet < m_book.externSheets.size()) {
        const std::size_t book = m_book.externSheets[*token.externSheet].supportingBook;
        if (book < m_book.supportingBooks.size() && at(m_book.supportingBooks[book].externNames))
            return m_book.supportingBooks[book].externNames[index];
    }
    return errorText(ErrorCode::Name);
}

void Writer::operator()(const ReferenceToken& token)
{
    std::string text = token.externSheet ? sheetsOf(*token.externSheet) : "";
    if (token.bad) {
        text += errorText(ErrorCode::Reference);
    } else if (!token.last) {
        text += partText(token.first, true, true);
    } else {
        const bool withRow = token.first.row != 0 || token.last->row != maxRows - 1;
        const bool withColumn = token.first.column != 0 || token.last->column != maxColumns - 1 || !withRow;
        text += partText(token.first, withRow, withColumn) + ":" + partText(*token.last, withRow, withColumn);
    }
    put(std::move(text));
}

void Writer::operator()(const OperatorToken& token)
{
    std::string right = taken();
    switch (token.op) {
    case Operator::Brackets:
        return put("(" + right + ")");
    case Operator::UnaryPlus:
    case Operator::Negate:
        return put(std::string(sign(token.op)) + right);
    case Operator::Percent:
        return put(right + "%");
    default:
        const std::string left = taken();
        return put(left + std::string(sign(token.op)) + right);
    }
}

void Writer::operator()(const FunctionToken& token)
{
    std::vector<std::string> arguments(token.arguments);
    std::generate(arguments.rbegin(), arguments.rend(), [this] { return taken(); });
    const FunctionInfo* const info = findFunction(token.function);
    std::string name(info == nullptr ? unreadable : info->name);
    if (token.function == addInFunction && !arguments.empty()) {
        name = arguments.front();
        name.erase(0, name.starts_with("_xlfn.") ? 6 : 0);
        arguments.erase(arguments.begin());
    }
    std::string text = name + "(";
    for (std::size_t i = 0; i < arguments.size(); ++i)
        text += (i == 0 ? "" : ",") + arguments[i];
    put(text + ")");
}

void Writer::operator()(const ArrayToken& token)
{
    std::string text = "{";
    for (std::size_t i = 0; i < token.values.size(); ++i) {
        if (i > 0)
            text += i % static_cast<std::size_t>(std::max(token.columns, 1)) == 0 ? ";" : ",";
        text += constantText(token.values[i]);
    }
    put(text + "}");
}

} // namespace

std::string formulaText(const Formula& formula, const Book& book)
{
    Writer writer(book);
    for (const Token& token : formula.tokens)
        std::visit(writer, token);
    return "=" + writer.written();
}

} // namespace wagemill::engine
