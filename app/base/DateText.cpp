#include "app/base/DateText.h"

#include "app/base/NumberText.h"
#include "app/base/PlainCharacters.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <vector>

namespace wagemill {

namespace {

/// A field of a date pattern such as "MM", or the literal text between two fields.
struct PatternPart {
    char field = '\0'; ///< 'd', 'M' or 'y'; 0 for literal text
    std::size_t length = 0;
    std::string literal;
};

bool isField(char character)
{
    return character == 'd' || character == 'M' || character == 'y';
}

/// Splits a pattern at its fields; '' within or outside of quotes is one apostrophe.
std::vector<PatternPart> partsOfPattern(std::string_view pattern)
{
    std::vector<PatternPart> parts;
    bool quoted = false;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char character = pattern[i];
        if (character == '\'' && pattern.substr(i, 2) != "''") {
            quoted = !quoted;
        } else if (!quoted && isField(character)) {
            const std::size_t end = std::min(pattern.find_first_not_of(character, i), pattern.size());
            parts.push_back({character, end - i, ""});
            i = end - 1;
        } else {
            if (parts.empty() || parts.back().field != '\0')
                parts.emplace_back();
            parts.back().literal += character;
            i += character == '\'' ? 1 : 0;
        }
    }
    return parts;
}

bool isDayName(const PatternPart& part)
{
    return part.field == 'd' && part.length >= 3;
}

std::string paddedNumber(int number, std::size_t width)
{
    std::string digits = std::to_string(number);
    if (digits.size() < width)
        digits.insert(0, width - digits.size(), '0');
    return digits;
}

std::size_t weekday(CalendarDate date)
{
    const std::chrono::sys_days day{std::chrono::days{daysSinceEpoch(date)}};
    return std::chrono::weekday{day}.c_encoding();
}

std::string fieldText(const PatternPart& part, CalendarDate date, const RegionalFormats& formats)
{
    if (isDayName(part))
        return (part.length == 3 ? formats.shortDayNames : formats.dayNames).at(weekday(date));
    if (part.field == 'M' && part.length >= 3)
        return (part.length == 3 ? formats.shortMonthNames : formats.monthNames)
            .at(static_cast<std::size_t>(date.month - 1));
    const int number = part.field == 'd' ? date.day : part.field == 'M' ? date.month : date.year;
    return toLocalDigits(paddedNumber(number, part.field == 'y' ? 4 : part.length), formats);
}

std::string lowerCase(std::string text)
{
    for (char& character : text)
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character - 'A' + 'a');
    return text;
}

std::string comparableName(std::string name)
{
    if (name.ends_with('.'))
        name.pop_back();
    return lowerCase(std::move(name));
}

void skipBlanks(std::string_view& text)
{
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
}

bool skip(std::string_view& text, std::string_view start)
{
    if (!text.starts_with(start))
        return false;
    text.remove_prefix(start.size());
    return true;
}

constexpr std::string_view plainDigits = "0123456789";

std::size_t digitCount(std::string_view text)
{
    return std::min(text.find_first_not_of(plainDigits), text.size());
}

std::optional<int> takeNumber(std::string_view& text, std::size_t maxDigits)
{
    const std::size_t digits = digitCount(text);
    if (digits == 0 || digits > maxDigits)
        return std::nullopt;
    int number = 0;
    std::from_chars(text.data(), text.data() + digits, number);
    text.remove_prefix(digits);
    return number;
}

/// With two digits or four.
std::optional<int> takeYear(std::string_view& text)
{
    return digitCount(text) % 2 == 0 ? takeNumber(text, 4) : std::nullopt;
}

/// Takes a month name from the start of the text; the longest that fits, for "Juni" may begin with "Jun".
std::optional<int> takeMonthName(std::string_view& text, const RegionalFormats& formats)
{
    std::optional<int> month;
    std::size_t longest = 0;
    const std::string lower = lowerCase(std::string(text));
    for (const auto* names : {&formats.monthNames, &formats.shortMonthNames})
        for (std::size_t i = 0; i < names->size(); ++i) {
            const std::string name = lowerCase(plainCharacters((*names)[i], formats));
            if (name.size() > longest && lower.starts_with(name)) {
                longest = name.size();
                month = static_cast<int>(i) + 1;
            }
        }
    text.remove_prefix(longest);
    return month;
}

int& partOf(CalendarDate& date, const PatternPart& part)
{
    return part.field == 'y' ? date.year : part.field == 'M' ? date.month : date.day;
}

/// Takes one field into the date; false when the text does not begin with one.
bool takeField(std::string_view& text, const PatternPart& part, const RegionalFormats& formats, CalendarDate& date)
{
    const bool named = part.field == 'M' && part.length >= 3;
    const auto number = part.field == 'y' ? takeYear(text) : named ? takeMonthName(text, formats) : takeNumber(text, 2);
    if (!number)
        return false;
    partOf(date, part) = *number;
    return true;
}

/// What may stand between two fields: the pattern's own text or, throughout one date, another separator.
class Separation {
public:
    /// Takes the text between two fields. Blanks around it do not count.
    bool take(std::string_view& text, const std::string& literal)
    {
        const bool blanks = text.starts_with(' ');
        skipBlanks(text);
        const std::string_view rest = text;
        if (!literal.empty() && skip(text, literal))
            return takenAs('p', text);
        text = rest;
        for (const char separator : {'/', '-', '.'})
            if (skip(text, std::string_view(&separator, 1)))
                return takenAs(separator, text);
        return takenAs(literal.empty() && blanks ? 'p' : ' ', text) && blanks;
    }

private:
    bool takenAs(char kind, std::string_view& text)
    {
        skipBlanks(text);
        const bool same = m_kind == '\0' || m_kind == kind;
        m_kind = kind;
        return same;
    }

    char m_kind = '\0'; ///< 'p' the pattern's own
};

using Fields = std::vector<PatternPart>;

/// The first date from `earliest` on whose year ends in the two digits of date.year.
CalendarDate withFullYear(CalendarDate date, CalendarDate earliest)
{
    date.year += earliest.year / 100 * 100;
    if (date < earliest)
        date.year += 100;
    return date;
}

/// Reads fields in the pattern's order. Literal text at the ends and day names may be missing.
/// earliest  where the hundred years begin that a year of two digits is one of
std::optional<CalendarDate> readInOrder(std::string_view text, const Fields& parts, const RegionalFormats& formats,
                                        CalendarDate earliest)
{
    CalendarDate date;
    bool shortYear = false;
    Separation separation;
    std::string literal;
    int fields = 0;
    for (const PatternPart& part : parts) {
        if (part.field == '\0') {
            literal = plainCharacters(part.literal, formats);
            continue;
        }
        if (fields == 0)
            skip(text, literal);
        else if (!separation.take(text, literal))
            return std::nullopt;
        skipBlanks(text);
        literal.clear();
        shortYear = shortYear || (part.field == 'y' && digitCount(text) == 2);
        if (!takeField(text, part, formats, date))
            return std::nullopt;
        ++fields;
    }
    skipBlanks(text);
    skip(text, literal);
    if (shortYear)
        date = withFullYear(date, earliest);
    return fields == 3 && text.empty() && isValidDate(date) ? std::optional(date) : std::nullopt;
}

/// The first of the hundred years that two digits stand for in a cell.
constexpr CalendarDate firstOfTwoDigitYears = {1930, 1, 1};

/// Two digits each of day and month and four of the year, in the pattern's order.
std::optional<CalendarDate> splitEightDigits(std::string_view text, const Fields& parts)
{
    CalendarDate date;
    for (const PatternPart& part : parts) {
        const std::size_t width = part.field == '\0' ? 0 : part.field == 'y' ? 4 : 2;
        std::string_view number = text.substr(0, width);
        text.remove_prefix(number.size());
        if (const auto read = takeNumber(number, width))
            partOf(date, part) = *read;
    }
    return text.empty() && isValidDate(date) ? std::optional(date) : std::nullopt;
}

/// The pattern without day names, which readers may leave out and the date determines.
Fields withoutDayNames(Fields parts)
{
    const auto name = std::find_if(parts.begin(), parts.end(), isDayName);
    if (name == parts.end())
        return parts;
    const bool literalFollows = name + 1 != parts.end() && (name + 1)->field == '\0';
    parts.erase(name, name + (literalFollows ? 2 : 1));
    return parts;
}

std::string_view withoutDayName(std::string_view text, const RegionalFormats& formats)
{
    for (const auto* names : {&formats.dayNames, &formats.shortDayNames})
        for (const std::string& name : *names)
            if (!name.empty() && text.starts_with(name)) {
                text.remove_prefix(name.size());
                text.remove_prefix(std::min(text.find_first_not_of(" ,."), text.size()));
                return text;
            }
    return text;
}

std::string nameOf(const PatternPart& field)
{
    return field.field == 'y' ? "year" : field.field == 'M' ? "month" : "day";
}

Fields fieldsOf(const RegionalFormats& formats)
{
    return withoutDayNames(partsOfPattern(formats.shortDatePattern));
}

/// plain, earliest  see plainCharacters and readInOrder
std::optional<CalendarDate> readYearFirstOrInOrder(std::string_view plain, const RegionalFormats& formats,
                                                   CalendarDate earliest)
{
    static const Fields yearFirst = partsOfPattern("yyyy-M-d");
    if (digitCount(plain) == 4)
        if (const auto date = readInOrder(plain, yearFirst, formats, earliest))
            return date;
    return readInOrder(withoutDayName(plain, formats), fieldsOf(formats), formats, earliest);
}

} // namespace

bool isValidDate(CalendarDate date)
{
    using namespace std::chrono;
    return date.year >= 1 && date.year <= 9999 && date.month >= 1 && date.month <= 12 && date.day >= 1 &&
           date.day <= 31 &&
           year_month_day{year{date.year}, month{static_cast<unsigned>(date.month)},
                          day{static_cast<unsigned>(date.day)}}
               .ok();
}

int daysSinceEpoch(CalendarDate date)
{
    using namespace std::chrono;
    const year_month_day day_{year{date.year}, month{static_cast<unsigned>(date.month)},
                              day{static_cast<unsigned>(date.day)}};
    return static_cast<int>(sys_days{day_}.time_since_epoch().count());
}

CalendarDate dateFromDaysSinceEpoch(int count)
{
    using namespace std::chrono;
    const year_month_day date{sys_days{days{count}}};
    return {static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day()))};
}

std::string shortDateText(CalendarDate date, const RegionalFormats& formats)
{
    std::string text;
    for (const PatternPart& part : partsOfPattern(formats.shortDatePattern))
        text += part.field == '\0' ? part.literal : fieldText(part, date, formats);
    return text;
}

std::optional<CalendarDate> readShortDate(std::string_view text, const RegionalFormats& formats)
{
    return readYearFirstOrInOrder(plainCharacters(text, formats), formats, firstOfTwoDigitYears);
}

std::optional<CalendarDate> readTypedDate(std::string_view text, const RegionalFormats& formats, CalendarDate today)
{
    const std::string plain = plainCharacters(text, formats);
    const bool eightDigits = plain.size() == 8 && digitCount(plain) == 8;
    const auto date = eightDigits ? splitEightDigits(plain, fieldsOf(formats))
                                  : readYearFirstOrInOrder(plain, formats, {today.year - 50, today.month, today.day});
    return date && *date >= firstPickedDate ? date : std::nullopt;
}

bool isTypedToItsEnd(std::string_view text, const RegionalFormats& formats)
{
    const std::string plain = plainCharacters(text, formats);
    const std::size_t end = plain.find_last_of(plainDigits) + 1; // 0 where there is no digit
    const std::size_t lastDigits = end - (plain.substr(0, end).find_last_not_of(plainDigits) + 1);
    return lastDigits >= 4 || (lastDigits >= 2 && digitCount(plain) >= 4);
}

std::string dateOrder(const RegionalFormats& formats)
{
    std::string order;
    for (const PatternPart& part : fieldsOf(formats))
        if (part.field != '\0')
            order += (order.empty() ? "" : ", ") + nameOf(part);
    return order;
}

int yearOfTwoDigits(int year)
{
    return withFullYear({year, 1, 1}, firstOfTwoDigitYears).year;
}

std::optional<int> monthOfName(std::string_view name, const RegionalFormats& formats)
{
    const std::string wanted = comparableName(std::string(name));
    for (const auto* names : {&formats.monthNames, &formats.shortMonthNames})
        for (std::size_t i = 0; i < names->size(); ++i)
            if (!wanted.empty() && comparableName(plainCharacters((*names)[i], formats)) == wanted)
                return static_cast<int>(i) + 1;
    return std::nullopt;
}

bool isDayFirst(const RegionalFormats& formats)
{
    for (const PatternPart& part : partsOfPattern(formats.shortDatePattern))
        if (part.field != '\0' && !isDayName(part) && part.field != 'y')
            return part.field == 'd';
    return false;
}

} // namespace wagemill
