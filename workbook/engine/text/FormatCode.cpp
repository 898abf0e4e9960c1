#include "workbook/engine/text/FormatCode.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace wagemill::engine {

namespace {

using Kind = FormatToken::Kind;
using Tokens = std::vector<FormatToken>;

constexpr std::size_t mostSections = 4;

/// Far beyond the 255 characters that a file can hold; a longer code is none.
constexpr std::size_t longestCode = 4096;

struct NamedColor {
    std::string_view name;
    Rgb color;
};

constexpr auto namedColors = std::to_array<NamedColor>({
    {"black", {0, 0, 0}},
    {"blue", {0, 0, 255}},
    {"cyan", {0, 255, 255}},
    {"green", {0, 255, 0}},
    {"magenta", {255, 0, 255}},
    {"red", {255, 0, 0}},
    {"white", {255, 255, 255}},
    {"yellow", {255, 255, 0}},
});

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

/// Words and signs with a meaning of their own, by their start; words without regard to case.
struct Word {
    std::string_view text;
    FormatToken token;
};

const std::array<Word, 11> words = {{
    {"general", {Kind::General, "General"}},
    {"am/pm", {Kind::HalfDay, "AM/PM", 2}},
    {"a/p", {Kind::HalfDay, "A/P", 1}},
    {"e+", {Kind::Exponent, "+"}},
    {"e-", {Kind::Exponent, "-"}},
    {".", {Kind::Point, "."}},
    {",", {Kind::Comma, ","}},
    {"%", {Kind::Percent, "%"}},
    {"/", {Kind::Slash, "/"}},
    {"@", {Kind::Text, "@"}},
    {":", {Kind::TimeSeparator, ":"}},
}};

std::string lowerCase(std::string_view text)
{
    std::string lower(text);
    for (char& character : lower)
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character - 'A' + 'a');
    return lower;
}

/// Letters of calendars and forms that we do not show; others without a meaning stand for themselves.
bool isReservedLetter(char lower)
{
    return std::string_view("begn").find(lower) != std::string_view::npos;
}

bool isDateKind(Kind kind)
{
    return kind >= Kind::ShortDate && kind <= Kind::HalfDay;
}

const DateField* dateFieldOf(char lower)
{
    const auto* field = std::find_if(dateFields.begin(), dateFields.end(),
                                     [lower](const DateField& candidate) { return candidate.letter == lower; });
    return field == dateFields.end() ? nullptr : field;
}

/// Reads a code into the raw tokens of its sections.
class CodeReader {
public:
    explicit CodeReader(std::string_view code) : m_code(code), m_lower(lowerCase(code)) {}

    std::optional<std::vector<FormatSection>> read()
    {
        m_sections.emplace_back();
        while (m_position < m_code.size())
            if (!readToken() || m_sections.size() > mostSections)
                return std::nullopt;
        return std::move(m_sections);
    }

private:
    FormatSection& section() { return m_sections.back(); }

    /// Takes the token at the position; false when there is none.
    bool readToken()
    {
        const char character = m_lower[m_position];
        switch (character) {
        case ';':
            m_sections.emplace_back();
            ++m_position;
            return true;
        case '"':
            return readQuoted();
        case '[':
            return readBracket();
        case '\\':
        case '_':
        case '*':
            return readEscape(character);
        case '0':
        case '#':
        case '?':
            add({Kind::Digit, std::string(1, character)}, 1);
            return true;
        default:
            return readWord() || readDateField(character) || readLiteral(character);
        }
    }

    void add(FormatToken token, std::size_t length)
    {
        section().tokens.push_back(std::move(token));
        m_position += length;
    }

    bool readQuoted()
    {
        const std::size_t end = m_code.find('"', m_position + 1);
        if (end == std::string_view::npos)
            return false;
        const std::size_t start = m_position + 1;
        add({Kind::Literal, std::string(m_code.substr(start, end - start))}, end - m_position + 1);
        return true;
    }

    /// Bytes of the character at `start`.
    std::size_t characterSize(std::size_t start) const
    {
        std::size_t end = start + 1;
        while (end < m_code.size() && (static_cast<unsigned char>(m_code[end]) & 0xC0U) == 0x80)
            ++end;
        return end - start;
    }

    /// "\x" shows x, "_x" the width of x, which is a blank here, "*x" fills the cell with x, which is the cell's
    /// business.
    bool readEscape(char escape)
    {
        const std::size_t start = m_position + 1;
        if (start >= m_code.size())
            return false;
        const std::size_t size = characterSize(start);
        if (escape != '*')
            add({Kind::Literal, escape == '_' ? " " : std::string(m_code.substr(start, size))}, 0);
        m_position = start + size;
        return true;
    }

    bool readWord()
    {
        const std::string_view rest = std::string_view(m_lower).substr(m_position);
        for (const Word& word : words)
            if (rest.starts_with(word.text)) {
                add(word.token, word.text.size());
                return true;
            }
        return false;
    }

    std::size_t runLength(char lower) const
    {
        return std::min(m_lower.find_first_not_of(lower, m_position), m_lower.size()) - m_position;
    }

    bool readDateField(char lower)
    {
        const DateField* field = dateFieldOf(lower);
        if (field == nullptr)
            return false;
        const std::size_t length = runLength(lower);
        add({field->kind, "", length}, length);
        return true;
    }

    bool readLiteral(char lower)
    {
        if (isReservedLetter(lower))
            return false;
        const std::size_t size = characterSize(m_position);
        add({Kind::Literal, std::string(m_code.substr(m_position, size))}, size);
        return true;
    }

    bool readBracket()
    {
        const std::size_t end = m_code.find(']', m_position);
        if (end == std::string_view::npos)
            return false;
        const std::size_t start = m_position + 1;
        const std::string lower = m_lower.substr(start, end - start);
        m_position = end + 1;
        if (lower.starts_with('$'))
            readCurrency(m_code.substr(start + 1, end - start - 1));
        else if (!readElapsed(lower) && !readCondition(lower))
            readColor(lower);
        return true;
    }

    /// "[$€-407]" shows the currency symbol; the number behind it names a language.
    void readCurrency(std::string_view symbol)
    {
        const std::string_view shown = symbol.substr(0, symbol.rfind('-'));
        if (!shown.empty())
            add({Kind::Literal, std::string(shown)}, 0);
    }

    bool readElapsed(const std::string& lower)
    {
        const DateField* field = lower.empty() ? nullptr : dateFieldOf(lower.front());
        if (field == nullptr || field->elapsed == Kind::Literal ||
            lower.find_first_not_of(lower.front()) != std::string::npos)
            return false;
        add({field->elapsed, "", lower.size()}, 0);
        return true;
    }

    bool readCondition(const std::string& lower)
    {
        const std::size_t length = std::min(lower.find_first_not_of("<>="), lower.size());
        double operand = 0;
        const auto result = std::from_chars(lower.data() + length, lower.data() + lower.size(), operand);
        if (length == 0 || length > 2 || result.ec != std::errc())
            return false;
        section().condition = FormatCondition{lower.substr(0, length), operand};
        return true;
    }

    /// "[Red]", "[Color5]" (of the standard palette); other brackets choose digits and calendars that we do not show.
    void readColor(const std::string& lower)
    {
        const auto* named = std::find_if(namedColors.begin(), namedColors.end(),
                                         [&lower](const NamedColor& color) { return color.name == lower; });
        if (named != namedColors.end()) {
            section().color = named->color;
            return;
        }
        constexpr std::string_view prefix = "color";
        std::size_t number = 0;
        if (!lower.starts_with(prefix))
            return;
        std::from_chars(lower.data() + prefix.size(), lower.data() + lower.size(), number);
        const auto palette = StyleTable().palette;
        if (number >= 1 && number <= palette.size())
            section().color = palette.at(number - 1);
    }

    std::string_view m_code;
    std::string m_lower;
    std::size_t m_position = 0;
    std::vector<FormatSection> m_sections;
};

bool contains(const Tokens& tokens, Kind kind)
{
    return std::any_of(tokens.begin(), tokens.end(), [kind](const FormatToken& token) { return token.kind == kind; });
}

FormatSection::Kind kindOf(const Tokens& tokens)
{
    if (std::any_of(tokens.begin(), tokens.end(), [](const FormatToken& token) { return isDateKind(token.kind); }))
        return FormatSection::Kind::Date;
    if (contains(tokens, Kind::Text))
        return FormatSection::Kind::Text;
    if (contains(tokens, Kind::General))
        return FormatSection::Kind::General;
    if (!contains(tokens, Kind::Digit))
        return FormatSection::Kind::Number;
    if (contains(tokens, Kind::Exponent))
        return FormatSection::Kind::Scientific;
    return contains(tokens, Kind::Slash) ? FormatSection::Kind::Fraction : FormatSection::Kind::Number;
}

/// "m" behind hours or before seconds is minutes.
void nameMinutes(Tokens& tokens)
{
    FormatToken* previous = nullptr;
    for (FormatToken& token : tokens) {
        if (!isDateKind(token.kind) || token.kind == Kind::HalfDay)
            continue;
        const bool behindHours =
            previous != nullptr && (previous->kind == Kind::Hour || previous->kind == Kind::ElapsedHours);
        if (token.kind == Kind::Month && token.count <= 2 && behindHours)
            token.kind = Kind::Minute;
        const bool seconds = token.kind == Kind::Second || token.kind == Kind::ElapsedSeconds;
        if (seconds && previous != nullptr && previous->kind == Kind::Month && previous->count <= 2)
            previous->kind = Kind::Minute;
        previous = &token;
    }
}

/// Joins a point and its zeros behind seconds; what else belongs to figures is literal text in a date.
void finishDate(Tokens& tokens)
{
    nameMinutes(tokens);
    Tokens finished;
    bool inFraction = false;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        FormatToken& token = tokens[i];
        const bool behindSeconds =
            !finished.empty() && (finished.back().kind == Kind::Second || finished.back().kind == Kind::ElapsedSeconds);
        const bool zeroFollows = i + 1 < tokens.size() && tokens[i + 1].text == "0";
        if (token.kind == Kind::Point && behindSeconds && zeroFollows) {
            finished.push_back({Kind::SecondFraction, ".", 0});
            inFraction = true;
        } else if (token.kind == Kind::Digit && inFraction) {
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

/// What the commas from `begin` to `end` mean: they group between two digits, scale behind the last one, and are text
/// elsewhere.
void resolveCommas(FormatSection& section, std::size_t begin, std::size_t end, bool behindDigit, bool beforePoint)
{
    const bool digitFollows = end < section.tokens.size() && section.tokens[end].kind == Kind::Digit;
    if (behindDigit && digitFollows)
        section.grouped = section.grouped || beforePoint;
    else if (behindDigit)
        section.scalePower -= 3 * static_cast<int>(end - begin);
    else
        for (std::size_t i = begin; i < end; ++i)
            section.tokens[i].kind = Kind::Literal;
}

std::size_t endOfCommas(const Tokens& tokens, std::size_t begin)
{
    while (begin < tokens.size() && tokens[begin].kind == Kind::Comma)
        ++begin;
    return begin;
}

void finishNumber(FormatSection& section)
{
    bool behindDigit = false;
    bool beforePoint = true;
    bool inExponent = false;
    for (std::size_t i = 0; i < section.tokens.size(); ++i) {
        if (const std::size_t end = endOfCommas(section.tokens, i); end > i) {
            resolveCommas(section, i, end, behindDigit, beforePoint);
            i = end - 1;
            behindDigit = false;
            continue;
        }
        FormatToken& token = section.tokens[i];
        behindDigit = token.kind == Kind::Digit;
        if (token.kind == Kind::Percent)
            section.scalePower += 2;
        const bool divides = token.kind == Kind::Point || token.kind == Kind::Exponent;
        if (divides && (inExponent || (token.kind == Kind::Point && !beforePoint)))
            token.kind = Kind::Literal; // a second one
        beforePoint = beforePoint && !divides;
        inExponent = inExponent || token.kind == Kind::Exponent;
    }
    std::erase_if(section.tokens, [](const FormatToken& token) { return token.kind == Kind::Comma; });
}

void finish(FormatSection& section)
{
    section.kind = kindOf(section.tokens);
    if (section.kind == FormatSection::Kind::Date)
        finishDate(section.tokens);
    else
        finishNumber(section);
}

/// Built-in formats that show the user's own short date.
std::string_view withoutShortDate(std::string_view code, bool& found)
{
    constexpr std::string_view shortDate = "m/d/yy";
    found = code == shortDate || code == "m/d/yy h:mm";
    return found ? code.substr(shortDate.size()) : code;
}

} // namespace

bool FormatCondition::holds(double number) const
{
    const bool equal = number == operand;
    if (comparison == "<>")
        return !equal;
    const bool strict = comparison.front() == '<' ? number < operand : comparison.front() == '>' && number > operand;
    return strict || (equal && comparison.ends_with('='));
}

std::optional<std::vector<FormatSection>> readFormatCode(std::string_view code)
{
    if (code.size() > longestCode)
        return std::nullopt;
    if (code.empty() || lowerCase(code) == "general")
        return std::vector<FormatSection>();
    bool shortDate = false;
    const std::string_view rest = withoutShortDate(code, shortDate);
    auto sections = CodeReader(rest).read();
    if (!sections)
        return std::nullopt;
    if (shortDate)
        sections->front().tokens.insert(sections->front().tokens.begin(), FormatToken{Kind::ShortDate, "", 1});
    for (FormatSection& section : *sections)
        finish(section);
    return sections;
}

} // namespace wagemill::engine
