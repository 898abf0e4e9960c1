#include "workbook/engine/formula/FormulaParser.h"

#include "app/base/text/TextScanner.h"
#include "app/base/text/Unicode.h"
#include "workbook/engine/Formula.h"
#include "workbook/engine/FunctionTable.h"
#include "workbook/engine/formula/FormulaFunctions.h"
#include "workbook/engine/formula/Operators.h"
#include "workbook/engine/formula/ReferenceText.h"
#include "workbook/engine/text/TypedText.h"
#include "workbook/engine/xls/FormulaTokens.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <stdexcept>

namespace wagemill::engine {

namespace {

constexpr std::size_t maxFormulaCharacters = 8192;
constexpr std::size_t maxQuotedCharacters = 100; ///< of a formula in a message
constexpr std::size_t maxTextUnits = 255;
constexpr std::size_t maxArrayBytes = 6000; ///< of constant arrays: they share a record of the file with the tokens
constexpr int maxNesting = 100; ///< of brackets and function calls: far beyond any real formula, harmless to the stack
constexpr int maxArguments = 30;
constexpr std::string_view blanks = " \t\r\n";

/// Whether a file has room for it.
bool fitsFile(const Formula& formula)
try {
    ByteWriter tokens;
    ByteWriter arrays;
    xls::writeFormula(formula, tokens, arrays);
    return arrays.size() <= maxArrayBytes;
} catch (const std::length_error&) {
    return false;
}

/// index  in Book::names
NameToken nameToken(OperandClass operandClass, std::size_t index)
{
    return {operandClass, std::nullopt, static_cast<std::uint16_t>(index + 1)};
}

/// "3 or 4 arguments"
std::string argumentsOf(const FunctionInfo& function)
{
    if (function.maxArguments == 0)
        return "no arguments";
    std::string count = std::to_string(function.minArguments);
    if (function.maxArguments > function.minArguments)
        count += (function.maxArguments == function.minArguments + 1 ? " or " : " to ") +
                 std::to_string(function.maxArguments);
    return count + (function.maxArguments == 1 ? " argument" : " arguments");
}

/// Whether an operand answers cells (what ":", " " and "," may join) or a value.
enum class Answer { Cells, Value };

/// Lets IF and CHOOSE leap over the arguments that do not count ([MS-XLS] 2.5.198.34 and following).
class Jumps {
public:
    Jumps(std::uint16_t function, std::vector<Token>& tokens) : m_function(function), m_tokens(tokens) {}

    void argumentRead(int position)
    {
        using enum AttributeToken::Kind;
        if (m_function != ifFunction && m_function != chooseFunction)
            return;
        m_jumps.push_back(m_tokens.size());
        const auto kind = position > 1 ? Goto : m_function == ifFunction ? If : Choose;
        m_tokens.emplace_back(AttributeToken{kind, 0, 0, {}});
        if (m_function == chooseFunction || position == 2)
            leadToNext(m_jumps.front());
    }

    void functionWritten()
    {
        for (std::size_t i = 1; i < m_jumps.size(); ++i)
            leadToNext(m_jumps[i]);
    }

private:
    void leadToNext(std::size_t jump) { std::get<AttributeToken>(m_tokens[jump]).targets.push_back(m_tokens.size()); }

    std::uint16_t m_function;
    std::vector<Token>& m_tokens;
    std::vector<std::size_t> m_jumps; ///< the first one decides, the others leave
};

/// Recursive descent; tokens are written in reverse Polish order as they are met, their classes are set at the end.
class Parser {
public:
    Parser(std::string_view text, Book& book, std::size_t sheet, const RegionalFormats& formats)
        : m_text(text),
          m_scanner(text),
          m_book(book),
          m_sheet(sheet),
          m_formats(formats),
          m_commaIsDecimal(formats.decimalSeparator == ",")
    {
    }

    Formula parse()
    {
        if (characterCount(m_text) > maxFormulaCharacters)
            fail("it is longer than " + std::to_string(maxFormulaCharacters) + " characters", m_text.size());
        accept('=');
        expression();
        skipBlanks();
        if (!m_scanner.atEnd())
            fail(m_scanner.peek() == ')' ? "there is one closing bracket too many" : "an operator is missing");
        assignOperandClasses(m_tokens);
        Formula formula{std::move(m_tokens)};
        if (!fitsFile(formula))
            fail("it is too long for a workbook of this kind");
        for (std::string& name : m_unknownNames)
            m_book.names.push_back({std::move(name), std::nullopt, {}, {}});
        return formula;
    }

private:
    [[noreturn]] void fail(const std::string& why, std::size_t at) const
    {
        const std::u32string start = toUtf32(m_text.substr(0, 4 * maxQuotedCharacters));
        throw FormulaError('"' + toUtf8(std::u32string_view(start).substr(0, maxQuotedCharacters)) +
                           "\" cannot be read: " + why + " (character " +
                           std::to_string(characterCount(m_text.substr(0, at)) + 1) + ").");
    }
    [[noreturn]] void fail(const std::string& why) const { fail(why, m_scanner.position()); }

    void skipBlanks() { m_scanner.skipBlanks(blanks); }
    bool accept(char sign)
    {
        skipBlanks();
        return m_scanner.skip(sign);
    }
    bool atSeparator() const { return m_scanner.peek() == ';' || (m_scanner.peek() == ',' && !m_commaIsDecimal); }
    std::string_view wordAhead() const { return TextScanner(m_scanner).takeWhile(isNameByte); }
    /// Takes a sign that was seen to come next; where it is.
    std::size_t takeSign()
    {
        m_scanner.take(1);
        return m_scanner.position() - 1;
    }

    void emit(Token token) { m_tokens.push_back(std::move(token)); }
    Answer emitValue(Token token)
    {
        emit(std::move(token));
        return Answer::Value;
    }
    Answer emitCells(Token token)
    {
        emit(std::move(token));
        return Answer::Cells;
    }

    template <class Read>
    auto nested(Read read)
    {
        if (++m_nesting > maxNesting)
            fail("it is nested more than " + std::to_string(maxNesting) + " levels deep");
        const auto answer = read();
        --m_nesting;
        return answer;
    }

    Answer expression(int lowestPrecedence = 1)
    {
        Answer answer = signedOperand();
        skipBlanks();
        for (const auto* next = operatorAhead(); next != nullptr && next->precedence >= lowestPrecedence;
             next = operatorAhead()) {
            m_scanner.take(next->sign.size());
            expression(next->precedence + 1); // operators of one rank work from the left, "^" too
            answer = emitValue(OperatorToken{next->op});
            skipBlanks();
        }
        return answer;
    }

    const BinaryOperator* operatorAhead() const
    {
        const auto found = std::ranges::find_if(
            binaryOperators, [this](const auto& each) { return m_scanner.rest().starts_with(each.sign); });
        return found == binaryOperators.end() ? nullptr : &*found;
    }

    Answer signedOperand()
    {
        std::vector<Operator> signs;
        for (skipBlanks(); m_scanner.peek() == '-' || m_scanner.peek() == '+'; skipBlanks())
            signs.push_back(m_scanner.take(1) == "-" ? Operator::Negate : Operator::UnaryPlus);
        Answer answer = intersection();
        for (; !signs.empty(); signs.pop_back())
            answer = emitValue(OperatorToken{signs.back()});
        while (accept('%'))
            answer = emitValue(OperatorToken{Operator::Percent});
        return answer;
    }

    bool operandFollowsBlanks() const
    {
        TextScanner ahead = m_scanner;
        ahead.skipBlanks(blanks);
        const char next = ahead.peek();
        return ahead.position() > m_scanner.position() &&
               (isNameByte(next) || next == '$' || next == '\'' || next == '(');
    }

    Answer intersection()
    {
        const Answer answer = range();
        while (answer == Answer::Cells && operandFollowsBlanks()) {
            skipBlanks();
            if (const std::size_t at = m_scanner.position(); range() != Answer::Cells)
                fail("an operator is missing", at);
            emit(OperatorToken{Operator::Intersection});
        }
        return answer;
    }

    Answer range()
    {
        const Answer answer = operand();
        while (answer == Answer::Cells && m_scanner.skip(':')) {
            if (const std::size_t at = m_scanner.position(); operand() != Answer::Cells)
                fail("a cell is missing after \":\"", at);
            emit(OperatorToken{Operator::Range});
        }
        return answer;
    }

    Answer operand()
    {
        if (m_scanner.atEnd())
            fail("it ends where a value is missing");
        const char next = m_scanner.peek();
        if (next == '(')
            return nested([this] { return brackets(); });
        if (next == '"')
            return emitValue(TextToken{text()});
        if (next == '{')
            return emitValue(constantArray());
        if (const auto error = acceptError())
            return *error == ErrorCode::Reference ? emitCells(ErrorToken{*error}) : emitValue(ErrorToken{*error});
        if (const auto sheets = readSheets(m_scanner.rest()))
            return sheetReference(*sheets);
        if (const auto written = readReference(m_scanner.rest()))
            return reference(std::nullopt, *written);
        if (isDigit(next) || m_scanner.startsWith(m_formats.decimalSeparator))
            return emitValue(NumberToken{number()});
        if (isNameByte(next))
            return word();
        fail("a value is missing");
    }

    Answer brackets()
    {
        const std::size_t opening = takeSign();
        const Answer answer = expression();
        for (skipBlanks(); atSeparator(); skipBlanks()) {
            const std::size_t separator = takeSign();
            if (answer != Answer::Cells || expression() != Answer::Cells)
                fail("only cells can be joined by \",\"", separator);
            emit(OperatorToken{Operator::Union});
        }
        if (!accept(')'))
            fail("the bracket is never closed", opening);
        emit(OperatorToken{Operator::Brackets});
        return answer;
    }

    Answer reference(std::optional<std::uint16_t> externSheet, const WrittenReference& written)
    {
        m_scanner.take(written.length);
        return emitCells(ReferenceToken{OperandClass::Value, externSheet, written.first, written.last, false});
    }

    std::size_t sheetNamed(std::string_view name) const
    {
        if (name.find('[') != std::string_view::npos)
            fail("other workbooks cannot be referred to");
        const auto index = m_book.sheetIndex(name);
        if (!index)
            fail("there is no sheet named \"" + std::string(name) + "\"");
        return *index;
    }

    Answer sheetReference(const WrittenSheets& sheets)
    {
        const std::size_t first = sheetNamed(sheets.first);
        const std::string_view referred = m_scanner.rest().substr(sheets.length);
        const auto written = readReference(referred);
        const std::string bad = errorText(ErrorCode::Reference);
        const bool isBad = startsWithIgnoringCase(referred, bad);
        if (!written && !isBad) {
            m_scanner.take(sheets.length);
            return definedName(wordAhead(), first);
        }
        const std::size_t last = sheets.last ? sheetNamed(*sheets.last) : first;
        const std::uint16_t externSheet = m_book.externSheetFor(std::min(first, last), std::max(first, last));
        m_scanner.take(sheets.length);
        if (written)
            return reference(externSheet, *written);
        m_scanner.take(bad.size());
        return emitCells(ReferenceToken{OperandClass::Value, externSheet, {}, std::nullopt, true});
    }

    Answer word()
    {
        const std::string_view name = wordAhead();
        if (m_scanner.peek(name.size()) == '(')
            return call(name);
        const auto logical = logicalNamed(name);
        if (!logical)
            return definedName(name, m_sheet);
        m_scanner.take(name.size());
        return emitValue(LogicalToken{*logical});
    }

    /// As findName(), but a name that nobody knows is entered without a formula: the formula that uses it answers
    /// #NAME?.
    std::optional<std::size_t> nameIndex(std::string_view name, std::size_t sheet)
    {
        const std::optional<std::size_t> index = findName(m_book, name, sheet);
        if (index || !canBeName(name))
            return index;
        const auto isSame = [name](const std::string& known) { return sameIgnoringCase(known, name); };
        const auto found = std::ranges::find_if(m_unknownNames, isSame);
        const auto place = static_cast<std::size_t>(found - m_unknownNames.begin());
        if (found == m_unknownNames.end())
            m_unknownNames.emplace_back(name);
        return m_book.names.size() + place;
    }

    Answer definedName(std::string_view name, std::size_t sheet)
    {
        const auto index = nameIndex(name, sheet);
        if (!index)
            fail('"' + std::string(name) + "\" is not a cell, name or function");
        m_scanner.take(name.size());
        return emitCells(nameToken(OperandClass::Value, *index));
    }

    /// Reads the arguments with the brackets around them and answers how many there are; an argument left out counts.
    template <class ArgumentRead>
    int arguments(ArgumentRead argumentRead)
    {
        const std::size_t opening = takeSign();
        if (accept(')'))
            return 0;
        for (int count = 1;; ++count) {
            skipBlanks();
            if (count > maxArguments)
                fail("there are more than " + std::to_string(maxArguments) + " arguments");
            if (atSeparator() || m_scanner.peek() == ')')
                emit(MissingArgumentToken{});
            else
                expression();
            argumentRead(count);
            if (accept(')'))
                return count;
            if (m_scanner.atEnd())
                fail("the bracket is never closed", opening);
            if (!atSeparator())
                fail("a separator is missing");
            takeSign();
        }
    }

    Answer call(std::string_view name)
    {
        const std::size_t at = m_scanner.position();
        const FunctionInfo* const info = findFunction(name);
        if (info == nullptr)
            return namedCall(name);
        m_scanner.take(name.size());
        Jumps jumps(info->id, m_tokens);
        const int count = nested([&] { return arguments([&](int position) { jumps.argumentRead(position); }); });
        if (count < info->minArguments || count > info->maxArguments)
            fail(std::string(info->name) + " needs " + argumentsOf(*info), at);
        if (info->id == sumFunction && count == 1)
            emit(AttributeToken{AttributeToken::Kind::Sum, 0, 0, {}});
        else
            emit(FunctionToken{OperandClass::Value, info->id, static_cast<std::uint8_t>(count),
                               info->minArguments != info->maxArguments});
        jumps.functionWritten();
        return info->resultClass == 'R' ? Answer::Cells : Answer::Value;
    }

    /// A function that the format has no number for is called by its name.
    Answer namedCall(std::string_view name)
    {
        if (const FunctionBinding* const addIn = findBinding(name); addIn != nullptr)
            emit(addInName(storedName(*addIn)));
        else if (const auto index = nameIndex(name, m_sheet))
            emit(nameToken(OperandClass::Reference, *index));
        else
            fail("there is no function named \"" + std::string(name) + "\"");
        m_scanner.take(name.size());
        const int count = nested([this] { return arguments([](int) {}); });
        return emitValue(FunctionToken{OperandClass::Value, addInFunction, static_cast<std::uint8_t>(count + 1), true});
    }

    /// The name under which formulas of the book call a function of an add-in or of a later version.
    NameToken addInName(const std::string& name)
    {
        constexpr std::int16_t wholeBook = -2;
        if (!m_book.sheets.empty())
            m_book.externSheetFor(0); // our own book comes first in the list
        auto& books = m_book.supportingBooks;
        auto addIn = std::ranges::find(books, SupportingBook::Kind::AddIn, &SupportingBook::kind);
        if (addIn == books.end())
            addIn = books.insert(addIn, SupportingBook{SupportingBook::Kind::AddIn, {}, {}, {}});
        const auto index = static_cast<std::uint16_t>(placeIn(addIn->externNames, name) + 1);
        const ExternSheet entry{static_cast<std::uint16_t>(addIn - books.begin()), wholeBook, wholeBook};
        return {OperandClass::Reference, placeIn(m_book.externSheets, entry), index};
    }

    double number()
    {
        std::string plain(m_scanner.rest());
        const std::size_t point = m_scanner.digitsAhead();
        const std::string& separator = m_formats.decimalSeparator;
        const bool hasPoint = m_scanner.rest().substr(point).starts_with(separator);
        if (hasPoint)
            plain.replace(point, separator.size(), ".");
        else if (point == 0 || plain[point] == '.')
            plain.resize(point); // "." does not belong to the number
        double value = 0;
        const auto [end, error] = std::from_chars(plain.data(), plain.data() + plain.size(), value);
        if (error != std::errc())
            fail(error == std::errc::result_out_of_range ? "the number is too large or too small"
                                                         : "a number is missing");
        const auto length = static_cast<std::size_t>(end - plain.data());
        m_scanner.take(length > point && hasPoint ? length + separator.size() - 1 : length);
        return value;
    }

    std::string text()
    {
        const auto quoted = readQuoted(m_scanner.rest());
        if (!quoted)
            fail("the text is never closed");
        if (utf16Length(quoted->content) > maxTextUnits)
            fail("a text has more than " + std::to_string(maxTextUnits) + " characters");
        m_scanner.take(quoted->length);
        return quoted->content;
    }

    std::optional<ErrorCode> acceptError()
    {
        for (const auto& [error, name] : errorNames)
            if (m_scanner.skipIgnoringCase(name))
                return error;
        return std::nullopt;
    }

    CellValue arrayElement()
    {
        skipBlanks();
        if (m_scanner.peek() == '"')
            return text();
        if (const auto error = acceptError())
            return *error;
        if (const auto logical = logicalNamed(wordAhead())) {
            m_scanner.take(wordAhead().size());
            return *logical;
        }
        const bool negative = accept('-');
        skipBlanks();
        return numberValue(negative ? -number() : number());
    }

    std::vector<CellValue> arrayRow()
    {
        std::vector<CellValue> row;
        do
            row.push_back(arrayElement());
        while (accept(m_commaIsDecimal ? '\\' : ','));
        return row;
    }

    ArrayToken constantArray()
    {
        const std::size_t opening = takeSign();
        ArrayToken array;
        do {
            std::vector<CellValue> row = arrayRow();
            if (array.rows++ == 0)
                array.columns = static_cast<int>(row.size());
            if (static_cast<int>(row.size()) != array.columns)
                fail("the rows of the constant array differ in length", opening);
            std::ranges::move(row, std::back_inserter(array.values));
        } while (accept(';'));
        if (!accept('}'))
            fail("the constant array is never closed", opening);
        if (array.columns > maxColumns)
            fail("the constant array has more than " + std::to_string(maxColumns) + " columns", opening);
        return array;
    }

    std::string_view m_text;
    TextScanner m_scanner;
    Book& m_book;
    std::size_t m_sheet;
    const RegionalFormats& m_formats;
    bool m_commaIsDecimal;
    int m_nesting = 0;
    std::vector<Token> m_tokens;
    std::vector<std::string> m_unknownNames; ///< to enter in the book when the formula can be read
};

} // namespace

Formula parseFormula(std::string_view text, Book& book, std::size_t sheet, const RegionalFormats& formats)
{
    return Parser(text, book, sheet, formats).parse();
}

} // namespace wagemill::engine
