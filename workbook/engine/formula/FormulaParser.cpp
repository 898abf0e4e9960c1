#include "workbook/engine/formula/FormulaParser.h"

#include "app/base/Utf8.h"
#include "workbook/engine/FunctionTable.h"
#include "workbook/engine/OperandClasses.h"
#include "workbook/engine/formula/AddInNames.h"
#include "workbook/engine/formula/FormulaFunctions.h"
#include "workbook/engine/formula/ReferenceText.h"
#include "workbook/engine/formula/TextCase.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>

namespace wagemill::engine {

namespace {

constexpr std::size_t maxFormulaCharacters = 8192;
constexpr std::size_t maxTextUnits = 255;
constexpr std::size_t maxArrayBytes = 6000; ///< of constant arrays: they share a record of the file with the tokens
constexpr int maxNesting = 100; ///< of brackets and function calls: far beyond any real formula, harmless to the stack
constexpr std::uint16_t ifFunction = 1;
constexpr std::uint16_t sumFunction = 4;
constexpr std::uint16_t chooseFunction = 100;
constexpr std::uint16_t addInFunction = 255; ///< calls the name that is its first argument
constexpr int maxArguments = 30;
constexpr std::size_t volatileMarkSize = 4; ///< stands in the file before a formula that changes with every calculation

struct BinaryOperator {
    std::string_view sign;
    Operator op;
    int precedence;
};

// A longer sign stands before one that it begins with.
constexpr auto binaryOperators = std::to_array<BinaryOperator>({
    {"<=", Operator::LessOrEqual, 1},
    {">=", Operator::GreaterOrEqual, 1},
    {"<>", Operator::NotEqual, 1},
    {"<", Operator::Less, 1},
    {">", Operator::Greater, 1},
    {"=", Operator::Equal, 1},
    {"&", Operator::Concatenate, 2},
    {"+", Operator::Add, 3},
    {"-", Operator::Subtract, 3},
    {"*", Operator::Multiply, 4},
    {"/", Operator::Divide, 4},
    {"^", Operator::Power, 5},
});

constexpr auto errorCodes = std::to_array<ErrorCode>({
    ErrorCode::Null,
    ErrorCode::DivisionByZero,
    ErrorCode::Value,
    ErrorCode::Reference,
    ErrorCode::Name,
    ErrorCode::Number,
    ErrorCode::NotAvailable,
});

bool startsWithIgnoringCase(std::string_view text, std::string_view start)
{
    return text.size() >= start.size() && compareIgnoringCase(text.substr(0, start.size()), start) == 0;
}

/// index  in Book::names
NameToken nameToken(OperandClass operandClass, std::size_t index)
{
    return {operandClass, std::nullopt, static_cast<std::uint16_t>(index + 1)};
}

/// Whether an operand answers cells (what ":", " " and "," may join) or a value.
enum class Answer { Cells, Value };

/// Recursive descent; tokens are written in reverse Polish order as they are met, their classes are set at the end.
class Parser {
public:
    Parser(std::string_view text, Book& book, std::size_t sheet, const RegionalFormats& formats)
        : m_text(text),
          m_book(book),
          m_sheet(sheet),
          m_formats(formats),
          m_commaIsDecimal(formats.decimalSeparator == ",")
    {
    }

    Formula parse();

private:
    class Nesting;

    [[noreturn]] void fail(const std::string& why, std::size_t at) const;
    [[noreturn]] void fail(const std::string& why) const { fail(why, m_at); }
    std::string_view rest() const { return m_text.substr(m_at); }
    char ahead() const { return m_at < m_text.size() ? m_text[m_at] : '\0'; }
    std::size_t blanksAhead() const;
    void skipBlanks() { m_at += blanksAhead(); }
    bool accept(char sign);
    bool atSeparator() const { return ahead() == ';' || (ahead() == ',' && !m_commaIsDecimal); }
    void emit(Token token) { m_tokens.push_back(std::move(token)); }

    Answer expression(int lowestPrecedence = 1);
    const BinaryOperator* operatorAhead() const;
    Answer signedOperand();
    Answer intersection();
    bool operandFollowsBlanks() const;
    Answer range();
    Answer operand();
    Answer brackets();
    Answer reference(std::optional<std::uint16_t> externSheet, const WrittenReference& written);
    Answer sheetReference(const WrittenSheets& sheets);
    std::uint16_t externSheetFor(const WrittenSheets& sheets);
    std::size_t sheetNamed(std::string_view name) const;
    Answer word();
    Answer definedName(std::string_view name, std::size_t sheet, std::size_t at);
    std::optional<std::size_t> nameIndex(std::string_view name, std::size_t sheet);

    Answer call(std::string_view name, std::size_t at);
    Answer namedCall(const NameToken& name);
    template <class ArgumentRead>
    int arguments(ArgumentRead argumentRead);

    double number();
    std::string text();
    std::optional<ErrorCode> acceptError();
    void constantArray();
    std::vector<CellValue> arrayRow();
    CellValue arrayElement();
    bool acceptColumnSeparator() { return m_commaIsDecimal ? accept('\\') : accept(','); }

    std::string_view m_text;
    Book& m_book;
    std::size_t m_sheet;
    const RegionalFormats& m_formats;
    bool m_commaIsDecimal;
    std::size_t m_at = 0;
    int m_nesting = 0;
    std::vector<Token> m_tokens;
    std::vector<std::string> m_unknownNames; ///< to enter in the book when the formula can be read
};

class Parser::Nesting {
public:
    explicit Nesting(Parser& parser) : m_depth(parser.m_nesting)
    {
        if (++m_depth > maxNesting)
            parser.fail("it is nested more than " + std::to_string(maxNesting) + " levels deep");
    }
    ~Nesting() { --m_depth; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

private:
    int& m_depth;
};

void Parser::fail(const std::string& why, std::size_t at) const
{
    throw FormulaError("The formula cannot be read: " + why + ", at character " +
                       std::to_string(characterCount(m_text.substr(0, at)) + 1) + ".");
}

std::size_t Parser::blanksAhead() const
{
    const std::size_t end = m_text.find_first_not_of(" \t\r\n", m_at);
    return (end == std::string_view::npos ? m_text.size() : end) - m_at;
}

bool Parser::accept(char sign)
{
    skipBlanks();
    if (ahead() != sign || m_at == m_text.size())
        return false;
    ++m_at;
    return true;
}

Formula Parser::parse()
{
    if (characterCount(m_text) > maxFormulaCharacters)
        fail("it is longer than " + std::to_string(maxFormulaCharacters) + " characters", m_text.size());
    accept('=');
    expression();
    skipBlanks();
    if (m_at < m_text.size())
        fail(ahead() == ')' ? "there is a closing bracket too many" : "an operator is missing");
    assignOperandClasses(m_tokens);
    Formula formula{std::move(m_tokens)};
    const StoredSize size = storedSize(formula);
    if (size.tokens > largestFormula - volatileMarkSize || size.behind > maxArrayBytes)
        fail("it is too long for a workbook of this kind");
    for (std::string& name : m_unknownNames)
        m_book.names.push_back({std::move(name), std::nullopt, {}, {}});
    return formula;
}

const BinaryOperator* Parser::operatorAhead() const
{
    const auto found =
        std::ranges::find_if(binaryOperators, [this](const auto& each) { return rest().starts_with(each.sign); });
    return found == binaryOperators.end() ? nullptr : &*found;
}

Answer Parser::expression(int lowestPrecedence)
{
    Answer answer = signedOperand();
    skipBlanks();
    for (const auto* next = operatorAhead(); next != nullptr && next->precedence >= lowestPrecedence;
         next = operatorAhead()) {
        m_at += next->sign.size();
        expression(next->precedence + 1); // operators of one rank work from the left, "^" too
        emit(OperatorToken{next->op});
        answer = Answer::Value;
        skipBlanks();
    }
    return answer;
}

Answer Parser::signedOperand()
{
    std::vector<Operator> signs;
    for (skipBlanks(); ahead() == '-' || ahead() == '+'; skipBlanks())
        signs.push_back(m_text[m_at++] == '-' ? Operator::Negate : Operator::UnaryPlus);
    Answer answer = intersection();
    if (!signs.empty())
        answer = Answer::Value;
    std::for_each(signs.rbegin(), signs.rend(), [this](Operator sign) { emit(OperatorToken{sign}); });
    while (accept('%')) {
        emit(OperatorToken{Operator::Percent});
        answer = Answer::Value;
    }
    return answer;
}

bool Parser::operandFollowsBlanks() const
{
    const std::size_t blanks = blanksAhead();
    if (blanks == 0 || m_at + blanks == m_text.size())
        return false;
    const char next = m_text[m_at + blanks];
    return isNameByte(next) || next == '$' || next == '\'' || next == '(';
}

Answer Parser::intersection()
{
    Answer answer = range();
    while (answer == Answer::Cells && operandFollowsBlanks()) {
        skipBlanks();
        if (const std::size_t at = m_at; range() != Answer::Cells)
            fail("an operator is missing", at);
        emit(OperatorToken{Operator::Intersection});
    }
    return answer;
}

Answer Parser::range()
{
    Answer answer = operand();
    while (answer == Answer::Cells && ahead() == ':') {
        ++m_at;
        if (const std::size_t at = m_at; operand() != Answer::Cells)
            fail("a cell is missing behind \":\"", at);
        emit(OperatorToken{Operator::Range});
    }
    return answer;
}

Answer Parser::operand()
{
    if (m_at == m_text.size())
        fail("it ends where a value is missing");
    const char next = ahead();
    if (next == '(')
        return brackets();
    if (next == '"') {
        emit(TextToken{text()});
        return Answer::Value;
    }
    if (next == '{') {
        constantArray();
        return Answer::Value;
    }
    if (const auto error = acceptError()) {
        emit(ErrorToken{*error});
        return *error == ErrorCode::Reference ? Answer::Cells : Answer::Value;
    }
    if (const auto sheets = readSheets(rest()))
        return sheetReference(*sheets);
    if (const auto written = readReference(rest()))
        return reference(std::nullopt, *written);
    if ((next >= '0' && next <= '9') || rest().starts_with(m_formats.decimalSeparator)) {
        emit(NumberToken{number()});
        return Answer::Value;
    }
    if (isNameByte(next))
        return word();
    fail("a value is missing");
}

Answer Parser::brackets()
{
    const Nesting nesting(*this);
    const std::size_t opening = m_at++;
    Answer answer = expression();
    for (skipBlanks(); atSeparator(); skipBlanks()) {
        const std::size_t separator = m_at++;
        if (answer != Answer::Cells || expression() != Answer::Cells)
            fail("only cells can be joined by \",\"", separator);
        emit(OperatorToken{Operator::Union});
    }
    if (!accept(')'))
        fail("the bracket is never closed", opening);
    emit(OperatorToken{Operator::Brackets});
    return answer;
}

Answer Parser::reference(std::optional<std::uint16_t> externSheet, const WrittenReference& written)
{
    m_at += written.length;
    emit(ReferenceToken{OperandClass::Value, externSheet, written.first, written.last, false});
    return Answer::Cells;
}

std::size_t Parser::sheetNamed(std::string_view name) const
{
    if (name.find('[') != std::string_view::npos)
        fail("other workbooks cannot be referred to");
    const auto index = m_book.sheetIndex(name);
    if (!index)
        fail("there is no sheet named \"" + std::string(name) + "\"");
    return *index;
}

std::uint16_t Parser::externSheetFor(const WrittenSheets& sheets)
{
    const std::size_t first = sheetNamed(sheets.first);
    const std::size_t last = sheets.last ? sheetNamed(*sheets.last) : first;
    if (first == last)
        return m_book.externSheetFor(first);
    const auto [from, to] = std::minmax(first, last);
    const ExternSheet span{m_book.externSheets[m_book.externSheetFor(from)].supportingBook,
                           static_cast<std::int16_t>(from), static_cast<std::int16_t>(to)};
    const auto found = std::ranges::find(m_book.externSheets, span);
    if (found != m_book.externSheets.end())
        return static_cast<std::uint16_t>(found - m_book.externSheets.begin());
    m_book.externSheets.push_back(span);
    return static_cast<std::uint16_t>(m_book.externSheets.size() - 1);
}

Answer Parser::sheetReference(const WrittenSheets& sheets)
{
    const std::string_view behind = rest().substr(sheets.length);
    const auto written = readReference(behind);
    const bool isBad = startsWithIgnoringCase(behind, errorText(ErrorCode::Reference));
    if (!written && !isBad) {
        const std::size_t sheet = sheetNamed(sheets.first);
        m_at += sheets.length;
        const auto end = std::ranges::find_if_not(behind, isNameByte);
        return definedName(behind.substr(0, static_cast<std::size_t>(end - behind.begin())), sheet, m_at);
    }
    const std::uint16_t externSheet = externSheetFor(sheets);
    m_at += sheets.length;
    if (written)
        return reference(externSheet, *written);
    m_at += std::string_view(errorText(ErrorCode::Reference)).size();
    emit(ReferenceToken{OperandClass::Value, externSheet, {}, std::nullopt, true});
    return Answer::Cells;
}

Answer Parser::word()
{
    const std::size_t at = m_at;
    const auto end = std::ranges::find_if_not(rest(), isNameByte);
    const std::string_view name = rest().substr(0, static_cast<std::size_t>(end - rest().begin()));
    m_at += name.size();
    if (ahead() == '(')
        return call(name, at);
    for (const bool value : {true, false})
        if (compareIgnoringCase(name, value ? "TRUE" : "FALSE") == 0) {
            emit(LogicalToken{value});
            return Answer::Value;
        }
    m_at = at;
    return definedName(name, m_sheet, at);
}

/// As findName(), but a name that nobody knows is entered without a formula: the formula that uses it answers #NAME?.
std::optional<std::size_t> Parser::nameIndex(std::string_view name, std::size_t sheet)
{
    const std::optional<std::size_t> index = findName(m_book, name, sheet);
    if (index || !canBeName(name))
        return index;
    const auto isSame = [name](const std::string& known) { return compareIgnoringCase(known, name) == 0; };
    const auto found = std::ranges::find_if(m_unknownNames, isSame);
    const auto place = static_cast<std::size_t>(found - m_unknownNames.begin());
    if (found == m_unknownNames.end())
        m_unknownNames.emplace_back(name);
    return m_book.names.size() + place;
}

Answer Parser::definedName(std::string_view name, std::size_t sheet, std::size_t at)
{
    const auto index = nameIndex(name, sheet);
    if (!index)
        fail("\"" + std::string(name) + "\" is not a cell, name or function", at);
    m_at = at + name.size();
    emit(nameToken(OperandClass::Value, *index));
    return Answer::Cells;
}

/// Lets IF and CHOOSE leap over the arguments that do not count ([MS-XLS] 2.5.198.34 and following).
class Jumps {
public:
    Jumps(std::uint16_t function, std::vector<Token>& tokens) : m_function(function), m_tokens(tokens) {}

    void argumentRead(int position)
    {
        if (m_function != ifFunction && m_function != chooseFunction)
            return;
        if (position == 1) {
            m_start = put(m_function == ifFunction ? AttributeToken::Kind::If : AttributeToken::Kind::Choose);
        } else {
            m_gotos.push_back(put(AttributeToken::Kind::Goto));
            if (m_function == ifFunction && position > 2)
                return;
        }
        if (m_function == chooseFunction || position == 2)
            attribute(m_start).targets.push_back(m_tokens.size());
    }

    void functionWritten()
    {
        for (const std::size_t jump : m_gotos)
            attribute(jump).targets.push_back(m_tokens.size());
    }

private:
    std::size_t put(AttributeToken::Kind kind)
    {
        m_tokens.emplace_back(AttributeToken{kind, 0, 0, {}});
        return m_tokens.size() - 1;
    }
    AttributeToken& attribute(std::size_t index) { return std::get<AttributeToken>(m_tokens[index]); }

    std::uint16_t m_function;
    std::vector<Token>& m_tokens;
    std::size_t m_start = 0;
    std::vector<std::size_t> m_gotos;
};

/// Reads the arguments with the brackets around them and answers how many there are; an argument left out counts.
template <class ArgumentRead>
int Parser::arguments(ArgumentRead argumentRead)
{
    const Nesting nesting(*this);
    const std::size_t opening = m_at++;
    if (accept(')'))
        return 0;
    for (int count = 1;; ++count) {
        skipBlanks();
        if (count > maxArguments)
            fail("there are more than " + std::to_string(maxArguments) + " arguments");
        if (atSeparator() || ahead() == ')')
            emit(MissingArgumentToken{});
        else
            expression();
        argumentRead(count);
        if (accept(')'))
            return count;
        if (!atSeparator())
            fail(m_at == m_text.size() ? "the bracket is never closed" : "a separator is missing",
                 m_at == m_text.size() ? opening : m_at);
        ++m_at;
    }
}

/// A function that the format has no number for is called by its name.
Answer Parser::namedCall(const NameToken& name)
{
    emit(name);
    const int count = arguments([](int) {});
    emit(FunctionToken{OperandClass::Value, addInFunction, static_cast<std::uint8_t>(count + 1), true});
    return Answer::Value;
}

Answer Parser::call(std::string_view name, std::size_t at)
{
    const FunctionInfo* const info = findFunction(name);
    if (info == nullptr) {
        if (const FunctionBinding* const addIn = findBinding(name); addIn != nullptr)
            return namedCall(addInName(m_book, storedName(*addIn)));
        const auto index = nameIndex(name, m_sheet);
        if (!index)
            fail("there is no function named \"" + std::string(name) + "\"", at);
        return namedCall(nameToken(OperandClass::Reference, *index));
    }
    Jumps jumps(info->id, m_tokens);
    const int count = arguments([&](int position) { jumps.argumentRead(position); });
    if (count < info->minArguments || count > info->maxArguments)
        fail(std::string(info->name) + " does not take " + std::to_string(count) + " arguments", at);
    if (info->id == sumFunction && count == 1)
        emit(AttributeToken{AttributeToken::Kind::Sum, 0, 0, {}});
    else
        emit(FunctionToken{OperandClass::Value, info->id, static_cast<std::uint8_t>(count),
                           info->minArguments != info->maxArguments});
    jumps.functionWritten();
    return info->resultClass == 'R' ? Answer::Cells : Answer::Value;
}

double Parser::number()
{
    const std::size_t start = m_at;
    std::string plain;
    const auto takeDigits = [&] {
        while (ahead() >= '0' && ahead() <= '9')
            plain += m_text[m_at++];
    };
    takeDigits();
    if (rest().starts_with(m_formats.decimalSeparator)) {
        m_at += m_formats.decimalSeparator.size();
        plain += '.';
        takeDigits();
    }
    const std::size_t behindE = ahead() == 'e' || ahead() == 'E' ? m_at + 1 : m_text.size();
    const std::size_t sign = m_text.substr(behindE).find_first_of("+-") == 0 ? 1 : 0;
    if (behindE + sign < m_text.size() && m_text[behindE + sign] >= '0' && m_text[behindE + sign] <= '9') {
        plain += 'e';
        if (m_text[behindE] == '-')
            plain += '-';
        m_at = behindE + sign;
        takeDigits();
    }
    double value = 0;
    const auto [end, error] = std::from_chars(plain.data(), plain.data() + plain.size(), value);
    if (error != std::errc() || end != plain.data() + plain.size())
        fail("the number cannot be read", start);
    return value;
}

std::string Parser::text()
{
    const std::size_t start = m_at++;
    std::string content;
    for (;; ++m_at) {
        if (m_at == m_text.size())
            fail("the text is never closed", start);
        if (ahead() == '"' && !m_text.substr(m_at + 1).starts_with('"'))
            break;
        if (ahead() == '"')
            ++m_at; // a doubled quotation mark stands for one
        content += m_text[m_at];
    }
    ++m_at;
    const std::u32string characters = toUtf32(content);
    const auto pairs = std::ranges::count_if(characters, [](char32_t each) { return each > 0xFFFF; });
    if (characters.size() + static_cast<std::size_t>(pairs) > maxTextUnits)
        fail("a text has more than " + std::to_string(maxTextUnits) + " characters", start);
    return content;
}

std::optional<ErrorCode> Parser::acceptError()
{
    for (const ErrorCode error : errorCodes)
        if (startsWithIgnoringCase(rest(), errorText(error))) {
            m_at += std::string_view(errorText(error)).size();
            return error;
        }
    return std::nullopt;
}

CellValue Parser::arrayElement()
{
    skipBlanks();
    if (ahead() == '"')
        return text();
    if (const auto error = acceptError())
        return *error;
    for (const bool value : {true, false})
        if (const std::string_view name = value ? "TRUE" : "FALSE"; startsWithIgnoringCase(rest(), name)) {
            m_at += name.size();
            return value;
        }
    const bool negative = accept('-');
    skipBlanks();
    return numberValue(negative ? -number() : number());
}

std::vector<CellValue> Parser::arrayRow()
{
    std::vector<CellValue> row;
    do
        row.push_back(arrayElement());
    while (acceptColumnSeparator());
    return row;
}

void Parser::constantArray()
{
    const std::size_t opening = m_at++;
    ArrayToken array;
    do {
        std::vector<CellValue> row = arrayRow();
        if (array.rows++ == 0)
            array.columns = static_cast<int>(row.size());
        if (static_cast<int>(row.size()) != array.columns)
            fail("the rows of the constant array are not of one length", opening);
        std::ranges::move(row, std::back_inserter(array.values));
    } while (accept(';'));
    if (!accept('}'))
        fail("the constant array cannot be read");
    if (array.columns > maxColumns)
        fail("the constant array has more than " + std::to_string(maxColumns) + " columns", opening);
    emit(std::move(array));
}

} // namespace

Formula parseFormula(std::string_view text, Book& book, std::size_t sheet, const RegionalFormats& formats)
{
    return Parser(text, book, sheet, formats).parse();
}

} // namespace wagemill::engine
