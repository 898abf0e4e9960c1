#include "workbook/engine/text/FormatCode.h"

#include "app/base/text/TextScanner.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace wagemill::engine {

namespace {

using Kind = FormatToken::Kind;
using Tokens = std::vector<FormatToken>;

constexpr std::size_t maxSections = 4;

/// Far beyond the 255 characters that a file can hold.
constexpr std::size_t maxCodeLength = 4096;

/// Built-in formats that show the user's own short date, which the first one is.
constexpr std::array<std::string_view, 2> shortDates = {"m/d/yy", "m/d/yy h:mm"};

/// In the order of the standard palette.
constexpr auto colorNames =
    std::to_array<std::string_view>({"black", "white", "red", "green", "blue", "yellow", "magenta", "cyan"});

struct DateField {
    char letter;
    Kind kind;
    Kind elapsed; ///< in brackets; Literal where there is no such form
};

constexpr auto dateFields = std::to_array<DateField>({
    {'y', Kind::Year, Kind::Literal},
    {'m', Kind::Month, Kind::ElapsedMinutes},
    {'d', Kind::Day, Kind::Literal},
    {'h', Kind::Hour, Kind::ElapsedHours},
    {'s', Kind::Second, Kind::ElapsedSeconds},
});

/// Words and signs with a meaning of their own; words without regard to case.
struct Word {
    std::string_view text;
    Kind kind;
    std::size_t count = 1;
};

constexpr auto words = std::to_array<Word>({
    {"0", Kind::Zero},
    {"#", Kind::Hash},
    {"?", Kind::Question},
    {".", Kind::Point},
    {",", Kind::Comma},
    {"%", Kind::Percent},
    {"/", Kind::Slash},
    {"@", Kind::Text},
    {":", Kind::TimeSeparator},
    {"e+", Kind::Exponent},
    {"e-", Kind::Exponent},
    {"general", Kind::General},
    {"am/pm", Kind::HalfDay, 2},
    {"a/p", Kind::HalfDay},
});

char lowerLetter(char byte)
{
    return isLetter(byte) ? static_cast<char>(byte | 0x20) : byte;
}

/// A run of one letter in either case, from the start of the scanner's text.
std::string_view takeRun(TextScanner& scanner)
{
    return scanner.takeWhile([first = lowerLetter(scanner.peek())](char byte) { return lowerLetter(byte) == first; });
}

bool isDateKind(Kind kind)
{
    return kind >= Kind::ShortDate && kind <= Kind::HalfDay;
}

bool isSeconds(Kind kind)
{
    return kind == Kind::Second || kind == Kind::ElapsedSeconds;
}

const DateField* dateFieldOf(char letter)
{
    const auto* field = std::ranges::find(dateFields, lowerLetter(letter), &DateField::letter);
    return field == dateFields.end() ? nullptr : field;
}

/// Reads a code into the raw tokens of its sections.
class CodeReader {
public:
    explicit CodeReader(std::string_view code) : m_scanner(code)
    {
        if (std::ranges::find(shortDates, code) != shortDates.end())
            add(Kind::ShortDate, m_scanner.take(shortDates.front().size()));
    }

    std::optional<std::vector<FormatSection>> read()
    {
        while (!m_scanner.atEnd())
            if (!readToken() || m_sections.size() > maxSections)
                return std::nullopt;
        return std::move(m_sections);
    }

private:
    FormatSection& section() { return m_sections.back(); }
    void add(Kind kind, std::string_view text, std::size_t count = 1)
    {
        section().tokens.push_back({kind, std::string(text), count});
    }

    /// Takes the next token; false when there is none.
    bool readToken()
    {
        if (m_scanner.skip(';')) {
            m_sections.emplace_back();
            return true;
        }
        if (m_scanner.skip('"')) {
            add(Kind::Literal, m_scanner.takeWhile([](char byte) { return byte != '"'; }));
            return m_scanner.skip('"');
        }
        if (m_scanner.skip('['))
            return readBracket();
        if (std::string_view("\\_*").find(m_scanner.peek()) != std::string_view::npos)
            return readEscape(m_scanner.take(1).front());
        return readWord() || readDateField() || readLiteral();
    }

    /// "\x" shows x, "_x" the width of x, which is a blank here, "*x" fills the cell with x, which is the cell's
    /// business.
    bool readEscape(char escape)
    {
        const std::string_view shown = m_scanner.takeCharacter();
        if (escape != '*')
            add(Kind::Literal, escape == '_' ? " " : shown);
        return !shown.empty();
    }

    bool readWord()
    {
        const char first = lowerLetter(m_scanner.peek());
        const std::string_view rest = m_scanner.rest();
        for (const auto& [text, kind, count] : words)
            if (text.front() == first && m_scanner.skipIgnoringCase(text)) {
                add(kind, rest.substr(0, text.size()), count);
                return true;
            }
        return false;
    }

    bool readDateField()
    {
        const DateField* const field = dateFieldOf(m_scanner.peek());
        if (field != nullptr)
            add(field->kind, "", takeRun(m_scanner).size());
        return field != nullptr;
    }

    /// The letters of calendars and forms that we do not show are refused.
    bool readLiteral()
    {
        if (std::string_view("begn").find(lowerLetter(m_scanner.peek())) != std::string_view::npos)
            return false;
        add(Kind::Literal, m_scanner.takeCharacter());
        return true;
    }

    bool readBracket()
    {
        TextScanner inside(m_scanner.takeWhile([](char byte) { return byte != ']'; }));
        if (inside.skip('$'))
            readCurrency(inside.rest());
        else if (!readElapsed(inside) && !readCondition(inside))
            readColor(inside);
        return m_scanner.skip(']');
    }

    /// "[$€-407]" shows the currency symbol; the number after it names a language.
    void readCurrency(std::string_view symbol)
    {
        if (const std::string_view shown = symbol.substr(0, symbol.rfind('-')); !shown.empty())
            add(Kind::Literal, shown);
    }

    bool readElapsed(TextScanner inside)
    {
        const DateField* const field = dateFieldOf(inside.peek());
        const std::size_t count = takeRun(inside).size();
        if (field == nullptr || field->elapsed == Kind::Literal || !inside.atEnd())
            return false;
        add(field->elapsed, "", count);
        return true;
    }

    bool readCondition(TextScanner inside)
    {
        const auto isIn = [](std::string_view text, char byte) { return text.find(byte) != std::string_view::npos; };
        const std::string_view sign = inside.takeWhile([&](char byte) { return isIn("<=>", byte); });
        FormatCondition condition = {isIn(sign, '<'), isIn(sign, '='), isIn(sign, '>')};
        const std::string_view number = inside.rest();
        const auto result = std::from_chars(number.data(), number.data() + number.size(), condition.operand);
        if (sign.empty() || sign.size() > 2 || result.ec != std::errc())
            return false;
        section().condition = condition;
        return true;
    }

    /// "[Red]", "[Color5]" (of the standard palette); other brackets choose digits and calendars that we do not show.
    void readColor(TextScanner inside)
    {
        const auto* const name = std::ranges::find_if(
            colorNames, [&](std::string_view color) { return sameIgnoringCase(color, inside.rest()); });
        auto index = static_cast<std::size_t>(name - colorNames.begin());
        if (name == colorNames.end())
            index = inside.skipIgnoringCase("color") ? static_cast<std::size_t>(inside.takeNumber(2).value_or(0)) - 1
                                                     : standardPalette().size();
        if (index < standardPalette().size())
            section().color = standardPalette()[index];
    }

    TextScanner m_scanner;
    std::vector<FormatSection> m_sections = std::vector<FormatSection>(1);
};

FormatSection::Kind kindOf(const Tokens& tokens)
{
    const auto contains = [&tokens](Kind kind) {
        return std::ranges::find(tokens, kind, &FormatToken::kind) != tokens.end();
    };
    if (std::ranges::any_of(tokens, isDateKind, &FormatToken::kind))
        return FormatSection::Kind::Date;
    if (contains(Kind::Text))
        return FormatSection::Kind::Text;
    if (contains(Kind::General))
        return FormatSection::Kind::General;
    if (std::ranges::none_of(tokens, &FormatToken::isDigit))
        return FormatSection::Kind::Number;
    if (contains(Kind::Exponent))
        return FormatSection::Kind::Scientific;
    return contains(Kind::Slash) ? FormatSection::Kind::Fraction : FormatSection::Kind::Number;
}

/// "m" after hours or before seconds is minutes.
void nameMinutes(Tokens& tokens)
{
    FormatToken* previous = nullptr;
    const auto canBeMinutes = [](const FormatToken& token) { return token.kind == Kind::Month && token.count <= 2; };
    for (FormatToken& token : tokens) {
        if (!isDateKind(token.kind) || token.kind == Kind::HalfDay)
            continue;
        if (previous != nullptr && canBeMinutes(token) &&
            (previous->kind == Kind::Hour || previous->kind == Kind::ElapsedHours))
            token.kind = Kind::Minute;
        if (previous != nullptr && isSeconds(token.kind) && canBeMinutes(*previous))
            previous->kind = Kind::Minute;
        previous = &token;
    }
}

/// Joins a point and its zeros after seconds; what else belongs to numbers is literal text in a date.
void finishDate(Tokens& tokens)
{
    nameMinutes(tokens);
    Tokens finished;
    bool inFraction = false;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        FormatToken& token = tokens[i];
        const bool afterSeconds = !finished.empty() && isSeconds(finished.back().kind);
        const bool zeroFollows = i + 1 < tokens.size() && tokens[i + 1].kind == Kind::Zero;
        if (token.kind == Kind::Point && afterSeconds && zeroFollows) {
            finished.push_back({Kind::SecondFraction, ".", 0});
            inFraction = true;
        } else if (token.isDigit() && inFraction) {
            ++finished.back().count;
        } else {
            inFraction = false;
            if (!isDateKind(token.kind) && token.kind != Kind::TimeSeparator)
                token.kind = Kind::Literal;
            finished.push_back(std::move(token));
        }
    }
    tokens = std::move(finished);
}

/// Commas group between two digits, scale by 1000 each after the last one, and are text elsewhere.
void finishNumber(FormatSection& section)
{
    bool afterDigit = false;
    bool beforePoint = true;
    bool inExponent = false;
    Tokens& tokens = section.tokens;
    for (auto token = tokens.begin(); token != tokens.end(); ++token) {
        if (token->kind == Kind::Comma && afterDigit) {
            const auto end = std::ranges::find_if(
                token, tokens.end(), [](Kind kind) { return kind != Kind::Comma; }, &FormatToken::kind);
            if (end != tokens.end() && end->isDigit())
                section.grouped = section.grouped || beforePoint;
            else
                section.scalePower -= 3 * static_cast<int>(end - token);
            token = end - 1;
            afterDigit = false;
            continue;
        }
        afterDigit = token->isDigit();
        if (token->kind == Kind::Percent)
            section.scalePower += 2;
        const bool divides = token->kind == Kind::Point || token->kind == Kind::Exponent;
        const bool isSecond = inExponent || (token->kind == Kind::Point && !beforePoint);
        beforePoint = beforePoint && !divides;
        inExponent = inExponent || token->kind == Kind::Exponent;
        if (token->kind == Kind::Comma || (divides && isSecond))
            token->kind = Kind::Literal;
    }
    std::erase_if(tokens, [](const FormatToken& token) { return token.kind == Kind::Comma; });
}

} // namespace

std::optional<std::vector<FormatSection>> readFormatCode(std::string_view code)
{
    if (code.size() > maxCodeLength)
        return std::nullopt;
    if (code.empty() || sameIgnoringCase(code, "general"))
        return std::vector<FormatSection>();
    auto sections = CodeReader(code).read();
    if (!sections)
        return std::nullopt;
    for (FormatSection& section : *sections) {
        section.kind = kindOf(section.tokens);
        if (section.kind == FormatSection::Kind::Date)
            finishDate(section.tokens);
        else
            finishNumber(section);
    }
    return sections;
}

} // namespace wagemill::engine
