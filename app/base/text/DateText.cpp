#include "app/base/text/DateText.h"

#include "app/base/text/NumberText.h"
#include "app/base/text/PlainCharacters.h"
#include "app/base/text/TextScanner.h"

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

namespace wagemill {

namespace {

/// A field of a date pattern such as "MM", with the literal text before it.
struct PatternField {
    std::string before;
    char letter = 'd'; ///< 'd', 'M' or 'y'
    std::size_t length = 0;

    bool isDayName() const { return letter == 'd' && length >= 3; }
    bool isMonthName() const { return letter == 'M' && length >= 3; }
    int CalendarDate::*part() const
    {
        return letter == 'y' ? &CalendarDate::year : letter == 'M' ? &CalendarDate::month : &CalendarDate::day;
    }
};

struct DatePattern {
    /// '' within or outside of quotes is one apostrophe.
    explicit DatePattern(std::string_view pattern)
    {
        bool quoted = false;
        for (TextScanner scanner(pattern); !scanner.atEnd();) {
            const char next = scanner.peek();
            if (scanner.skip("''"))
                after += next;
            else if (scanner.skip('\''))
                quoted = !quoted;
            else if (!quoted && (next == 'd' || next == 'M' || next == 'y'))
                fields.push_back({std::exchange(after, ""), next,
                                  scanner.takeWhile([next](char each) { return each == next; }).size()});
            else
                after += scanner.take(1);
        }
    }

    std::vector<PatternField> fields;
    std::string after;
};

std::string fieldText(const PatternField& field, CalendarDate date, const RegionalFormats& formats)
{
    const std::chrono::weekday weekday{std::chrono::sys_days{std::chrono::days{daysSinceEpoch(date)}}};
    if (field.isDayName())
        return (field.length == 3 ? formats.shortDayNames : formats.dayNames).at(weekday.c_encoding());
    if (field.isMonthName())
        return (field.length == 3 ? formats.shortMonthNames : formats.monthNames)
            .at(static_cast<std::size_t>(date.month - 1));
    return toLocalDigits(paddedNumber(date.*field.part(), field.letter == 'y' ? 4 : field.length), formats);
}

std::string_view withoutDot(std::string_view name)
{
    return name.substr(0, name.size() - (name.ends_with('.') ? 1 : 0));
}

/// Takes the longest month name that fits, for "Juni" may begin with "Jun".
std::optional<int> takeMonthName(TextScanner& scanner, const RegionalFormats& formats)
{
    std::optional<int> month;
    std::size_t longest = 0;
    for (const auto* names : {&formats.monthNames, &formats.shortMonthNames})
        for (std::size_t i = 0; i < names->size(); ++i) {
            const std::string name = plainCharacters((*names)[i], formats);
            if (name.size() > longest && startsWithIgnoringCase(scanner.rest(), name)) {
                longest = name.size();
                month = static_cast<int>(i) + 1;
            }
        }
    scanner.take(longest);
    return month;
}

std::optional<int> takeField(TextScanner& scanner, const PatternField& field, const RegionalFormats& formats)
{
    if (field.letter == 'y') // with two digits or four
        return scanner.digitsAhead() % 2 == 0 ? scanner.takeNumber(4) : std::nullopt;
    return field.isMonthName() ? takeMonthName(scanner, formats) : scanner.takeNumber(2);
}

/// What may be between two fields: the pattern's own text or, throughout one date, another separator.
class Separation {
public:
    /// Takes the text between two fields. Blanks around it do not count.
    bool take(TextScanner& scanner, std::string_view literal)
    {
        const bool blanks = scanner.peek() == ' ';
        scanner.skipBlanks();
        if (scanner.skip(literal))
            return takenAs('p', scanner);
        for (const char separator : {'/', '-', '.'})
            if (scanner.skip(separator))
                return takenAs(separator, scanner);
        return takenAs(literal.empty() && blanks ? 'p' : ' ', scanner) && blanks;
    }

private:
    bool takenAs(char kind, TextScanner& scanner)
    {
        scanner.skipBlanks();
        const bool same = m_kind == '\0' || m_kind == kind;
        m_kind = kind;
        return same;
    }

    char m_kind = '\0'; ///< 'p' the pattern's own
};

/// The first date from `earliest` on whose year ends in the two digits of date.year.
CalendarDate withFullYear(CalendarDate date, CalendarDate earliest)
{
    date.year += earliest.year / 100 * 100;
    if (date < earliest)
        date.year += 100;
    return date;
}

/// Reads fields in the pattern's order. Literal text at the ends may be missing.
/// earliest  where the hundred years begin that a year of two digits is one of
std::optional<CalendarDate> readInOrder(std::string_view text, const DatePattern& pattern,
                                        const RegionalFormats& formats, CalendarDate earliest)
{
    CalendarDate date;
    bool shortYear = false;
    Separation separation;
    TextScanner scanner(text);
    for (const PatternField& field : pattern.fields) {
        const std::string before = plainCharacters(field.before, formats);
        if (&field == &pattern.fields.front())
            scanner.skip(before);
        else if (!separation.take(scanner, before))
            return std::nullopt;
        scanner.skipBlanks();
        shortYear = shortYear || (field.letter == 'y' && scanner.digitsAhead() == 2);
        const auto number = takeField(scanner, field, formats);
        if (!number)
            return std::nullopt;
        date.*field.part() = *number;
    }
    scanner.skipBlanks();
    scanner.skip(plainCharacters(pattern.after, formats));
    if (shortYear)
        date = withFullYear(date, earliest);
    return pattern.fields.size() == 3 && scanner.atEnd() && isValidDate(date) ? std::optional(date) : std::nullopt;
}

/// The first of the hundred years that two digits mean in a cell.
constexpr CalendarDate firstOfTwoDigitYears = {1930, 1, 1};

/// Two digits each of day and month and four of the year, in the pattern's order.
std::optional<CalendarDate> splitEightDigits(std::string_view text, const DatePattern& pattern)
{
    CalendarDate date;
    TextScanner scanner(text);
    for (const PatternField& field : pattern.fields) {
        const std::size_t width = field.letter == 'y' ? 4 : 2;
        date.*field.part() = TextScanner(scanner.take(width)).takeNumber(width).value_or(0);
    }
    return scanner.atEnd() && isValidDate(date) ? std::optional(date) : std::nullopt;
}

/// The user's pattern without day names, which readers may leave out and the date determines.
DatePattern readPattern(const RegionalFormats& formats)
{
    DatePattern pattern(formats.shortDatePattern);
    const auto name = std::ranges::find_if(pattern.fields, &PatternField::isDayName);
    if (name != pattern.fields.end()) {
        (name + 1 == pattern.fields.end() ? pattern.after : (name + 1)->before) = name->before;
        pattern.fields.erase(name);
    }
    return pattern;
}

std::string_view withoutDayName(std::string_view text, const RegionalFormats& formats)
{
    TextScanner scanner(text);
    for (const auto* names : {&formats.dayNames, &formats.shortDayNames})
        for (const std::string& name : *names)
            if (scanner.skip(name)) {
                scanner.skipBlanks(" ,.");
                return scanner.rest();
            }
    return text;
}

/// plain, earliest  see plainCharacters and readInOrder
std::optional<CalendarDate> readYearFirstOrInOrder(std::string_view plain, const RegionalFormats& formats,
                                                   CalendarDate earliest)
{
    static const DatePattern yearFirst("yyyy-M-d");
    if (TextScanner(plain).digitsAhead() == 4)
        if (const auto date = readInOrder(plain, yearFirst, formats, earliest))
            return date;
    return readInOrder(withoutDayName(plain, formats), readPattern(formats), formats, earliest);
}

std::chrono::year_month_day calendarDay(CalendarDate date)
{
    return {std::chrono::year{date.year}, std::chrono::month{static_cast<unsigned>(date.month)},
            std::chrono::day{static_cast<unsigned>(date.day)}};
}

} // namespace

bool isValidDate(CalendarDate date)
{
    return date.year >= 1 && date.year <= 9999 && date.month >= 1 && date.month <= 12 && date.day >= 1 &&
           date.day <= 31 && calendarDay(date).ok();
}

int daysSinceEpoch(CalendarDate date)
{
    return static_cast<int>(std::chrono::sys_days{calendarDay(date)}.time_since_epoch().count());
}

CalendarDate dateFromDaysSinceEpoch(int count)
{
    const std::chrono::year_month_day date{std::chrono::sys_days{std::chrono::days{count}}};
    return {static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day()))};
}

std::string shortDateText(CalendarDate date, const RegionalFormats& formats)
{
    const DatePattern pattern(formats.shortDatePattern);
    std::string text;
    for (const PatternField& field : pattern.fields)
        text += field.before + fieldText(field, date, formats);
    return text + pattern.after;
}

std::optional<CalendarDate> readShortDate(std::string_view text, const RegionalFormats& formats)
{
    return readYearFirstOrInOrder(plainCharacters(text, formats), formats, firstOfTwoDigitYears);
}

std::optional<CalendarDate> readTypedDate(std::string_view text, const RegionalFormats& formats, CalendarDate today)
{
    const std::string plain = plainCharacters(text, formats);
    const bool eightDigits = plain.size() == 8 && TextScanner(plain).digitsAhead() == 8;
    const auto date = eightDigits ? splitEightDigits(plain, readPattern(formats))
                                  : readYearFirstOrInOrder(plain, formats, {today.year - 50, today.month, today.day});
    return date && *date >= firstPickedDate ? date : std::nullopt;
}

bool isTypedToItsEnd(std::string_view text, const RegionalFormats& formats)
{
    const std::string plain = plainCharacters(text, formats);
    const auto lastDigit = std::find_if(plain.rbegin(), plain.rend(), isDigit);
    const auto lastDigits = std::find_if_not(lastDigit, plain.rend(), isDigit) - lastDigit;
    return lastDigits >= 4 || (lastDigits >= 2 && TextScanner(plain).digitsAhead() >= 4);
}

std::string dateOrder(const RegionalFormats& formats)
{
    std::string order;
    for (const PatternField& field : readPattern(formats).fields)
        order += std::string(order.empty() ? "" : ", ") + (field.letter == 'y'   ? "year"
                                                           : field.letter == 'M' ? "month"
                                                                                 : "day");
    return order;
}

int yearOfTwoDigits(int year)
{
    return withFullYear({year, 1, 1}, firstOfTwoDigitYears).year;
}

std::optional<int> monthOfName(std::string_view name, const RegionalFormats& formats)
{
    for (const auto* names : {&formats.monthNames, &formats.shortMonthNames})
        for (std::size_t i = 0; i < names->size(); ++i)
            if (sameIgnoringCase(withoutDot(plainCharacters((*names)[i], formats)), withoutDot(name)) && !name.empty())
                return static_cast<int>(i) + 1;
    return std::nullopt;
}

bool isDayFirst(const RegionalFormats& formats)
{
    for (const PatternField& field : readPattern(formats).fields)
        if (field.letter != 'y')
            return field.letter == 'd';
    return false;
}

} // namespace wagemill
