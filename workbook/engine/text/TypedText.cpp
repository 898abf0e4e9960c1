#include "workbook/engine/text/TypedText.h"

#include "app/base/text/LetterCase.h"
#include "app/base/text/NumberText.h"
#include "app/base/text/PlainCharacters.h"
#include "app/base/text/TextScanner.h"
#include "app/base/text/Unicode.h"
#include "workbook/engine/text/SerialDay.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace wagemill::engine {

namespace {

/// A literal text of a format code: brackets, signs and blanks after a backslash, the rest in quotes.
std::string literalCode(const std::string& text)
{
    constexpr std::u32string_view escaped = U"()-+ \"\u00A0\u202F\u2212";
    std::u32string code;
    bool quoted = false;
    for (const char32_t character : toUtf32(text)) {
        const bool single = escaped.find(character) != std::u32string_view::npos;
        if (quoted == single)
            code += U'"';
        quoted = !single;
        code += single ? std::u32string{U'\\', character} : std::u32string{character};
    }
    return toUtf8(code) + (quoted ? "\"" : "");
}

/// The user's currency form as a format code. A form with brackets leaves the width of one after positive amounts:
///   "$"#,##0.00_);[Red]\("$"#,##0.00\)    #,##0.00\ "€";[Red]\-#,##0.00\ "€"
std::string currencyCode(const RegionalFormats& formats, bool decimals)
{
    const std::string number = decimals ? "#,##0.00" : "#,##0";
    const auto inAffixes = [&number](const Affixes& affixes) {
        return literalCode(affixes.prefix) + number + literalCode(affixes.suffix);
    };
    const std::string space = formats.negativeCurrency.suffix.ends_with(')') ? "_)" : "";
    return inAffixes(formats.currency) + space + ";[Red]" + inAffixes(formats.negativeCurrency);
}

std::string numberCode(const NumberReading& reading, const RegionalFormats& formats)
{
    const bool decimals = reading.decimals > 0;
    if (reading.hasPercent)
        return decimals ? "0.00%" : "0%";
    if (reading.hasCurrency)
        return currencyCode(formats, decimals);
    if (reading.hasExponent)
        return "0.00E+00";
    if (reading.hasGroups)
        return decimals ? "#,##0.00" : "#,##0";
    return "";
}

std::optional<TypedValue> readTypedNumber(std::string_view plain, const RegionalFormats& formats)
{
    auto reading = readNumber(plain, formats, true);
    if (!reading)
        return std::nullopt;
    if (reading->hasPercent && !reading->number.digits.empty())
        reading->number.pointPosition -= 2;
    const auto number = toDouble(reading->number);
    return TypedValue{numberValue(number.value_or(0)), numberCode(*reading, formats)};
}

std::optional<TypedValue> readWord(std::string_view plain)
{
    if (const auto logical = logicalNamed(plain))
        return TypedValue{*logical};
    const auto error =
        std::ranges::find_if(errorNames, [plain](const ErrorName& name) { return sameIgnoringCase(plain, name.text); });
    return error == errorNames.end() ? std::nullopt : std::optional(TypedValue{error->error});
}

/// A date, a time of day or both, as typed.
struct TypedMoment {
    std::optional<CalendarDate> date;
    double days = 0;          ///< the time as a part of a day; more than one where hours beyond 24 were typed
    std::string numberFormat; ///< the format that typing it suggests
};

/// No moment is longer; what is, need not be searched for one.
constexpr std::size_t maxMomentLength = 80;

/// A whole number of at most `maxDigits` digits and nothing else.
std::optional<int> wholeNumber(std::string_view text, std::size_t maxDigits)
{
    TextScanner scanner(text);
    const auto number = scanner.takeNumber(maxDigits);
    return scanner.atEnd() ? number : std::nullopt;
}

std::optional<int> yearOf(std::string_view text)
{
    const auto year = wholeNumber(text, 4);
    if (!year || (text.size() != 2 && text.size() != 4))
        return std::nullopt;
    return text.size() == 2 ? yearOfTwoDigits(*year) : *year;
}

std::optional<TypedMoment> moment(std::optional<int> year, std::optional<int> month, std::optional<int> day,
                                  const char* numberFormat)
{
    if (!year || !month || !day || !isValidDate({*year, *month, *day}))
        return std::nullopt;
    return TypedMoment{CalendarDate{*year, *month, *day}, 0, numberFormat};
}

/// The pieces between blanks, "/", "-", "." and ","; none when the text begins with such a separator.
std::vector<std::string_view> pieces(std::string_view text)
{
    constexpr std::string_view separators = " /-.,";
    std::vector<std::string_view> found;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(separators), text.size());
        if (end == 0)
            return {};
        found.push_back(text.substr(0, end));
        text.remove_prefix(std::min(text.find_first_not_of(separators, end), text.size()));
    }
    return found;
}

/// Day and month, or month and year, in numbers: "1/2", "3/2026".
std::optional<TypedMoment> readNumbers(std::string_view text, const std::vector<std::string_view>& parts,
                                       const RegionalFormats& formats, CalendarDate today)
{
    const bool dotted = formats.shortDatePattern.find('.') != std::string::npos;
    if (text.find_first_of(dotted ? "/-." : "/-") == std::string_view::npos)
        return std::nullopt;
    if (parts[1].size() == 4)
        return moment(yearOf(parts[1]), wholeNumber(parts[0], 2), 1, "mmm-yy");
    const bool dayFirst = isDayFirst(formats);
    return moment(today.year, wholeNumber(parts[dayFirst ? 1 : 0], 2), wholeNumber(parts[dayFirst ? 0 : 1], 2),
                  "d-mmm");
}

/// Dates whose month is a name: "3-Mar", "Mar 3", "Mar 2026", "3-Mar-2026", "March 3, 2026".
std::optional<TypedMoment> readNamedMonth(const std::vector<std::string_view>& parts, const RegionalFormats& formats,
                                          CalendarDate today)
{
    const auto first = monthOfName(parts[0], formats);
    const auto month = first ? first : monthOfName(parts[1], formats);
    const std::string_view beside = first ? parts[1] : parts[0];
    if (parts.size() == 3)
        return moment(yearOf(parts[2]), month, wholeNumber(beside, 2), "d-mmm-yy");
    if (beside.size() == 4 && first)
        return moment(yearOf(beside), month, 1, "mmm-yy");
    return moment(today.year, month, wholeNumber(beside, 2), "d-mmm");
}

std::optional<TypedMoment> readDate(std::string_view text, const RegionalFormats& formats, CalendarDate today)
{
    const std::vector<std::string_view> parts = pieces(text);
    if (parts.size() < 2)
        return std::nullopt;
    const bool separated = text.find_first_not_of("0123456789 ") != std::string_view::npos;
    if (const auto date = separated ? readShortDate(text, formats) : std::nullopt)
        return TypedMoment{date, 0, "m/d/yy"};
    const bool numbers = parts.size() == 2 && wholeNumber(parts[0], 4) && wholeNumber(parts[1], 4);
    if (numbers)
        return readNumbers(text, parts, formats, today);
    return parts.size() <= 3 ? readNamedMonth(parts, formats, today) : std::nullopt;
}

bool endsWithWord(std::string_view text, std::string_view word)
{
    return !word.empty() && text.size() > word.size() && sameIgnoringCase(text.substr(text.size() - word.size()), word);
}

/// Takes "AM" or "PM", or the user's words for them, from the end; "A" and "P" only after minutes. The hour when that
/// half of the day begins.
std::optional<int> takeHalfDay(std::string_view& text, const RegionalFormats& formats)
{
    const bool minutes = text.find(':') != std::string_view::npos;
    const std::pair<int, std::string> words[] = {
        {0, plainCharacters(formats.amText, formats)},  {0, "AM"},  {0, "A"},
        {12, plainCharacters(formats.pmText, formats)}, {12, "PM"}, {12, "P"},
    };
    for (const auto& [hour, word] : words)
        if ((word.size() > 1 || minutes) && endsWithWord(text, word)) {
            text.remove_suffix(word.size());
            text.remove_suffix(text.size() - 1 - text.find_last_not_of(' '));
            return hour;
        }
    return std::nullopt;
}

std::string clockFormat(bool halfDay, bool seconds, bool fraction, bool beyondDay)
{
    if (fraction)
        return "mm:ss.0";
    if (beyondDay)
        return "[h]:mm:ss";
    return std::string(seconds ? "h:mm:ss" : "h:mm") + (halfDay ? " AM/PM" : "");
}

std::optional<TypedMoment> readTime(std::string_view text, const RegionalFormats& formats)
{
    const std::optional<int> half = takeHalfDay(text, formats);
    const bool dotted = formats.timeSeparator == "." && text.find(':') == std::string_view::npos;
    TextScanner scanner(text);
    std::vector<int> parts; // hours, minutes, seconds
    do {
        const auto part = scanner.takeNumber(parts.empty() ? 4 : 2);
        if (!part || parts.size() == 3 || (!parts.empty() && *part > 59))
            return std::nullopt;
        parts.push_back(*part);
    } while (scanner.skip(dotted ? '.' : ':'));
    const bool hasFraction = !dotted && scanner.skip(plainCharacters(formats.decimalSeparator, formats));
    const std::string_view fraction = hasFraction ? scanner.takeDigits() : std::string_view();
    const bool hasSeconds = parts.size() == 3;
    if (!scanner.atEnd() || fraction.size() > 9 || (!fraction.empty() && !hasSeconds) ||
        (half ? parts[0] > 12 : parts.size() < 2))
        return std::nullopt;

    parts.resize(3);
    const int hour = half ? parts[0] % 12 + *half : parts[0];
    double second = parts[2];
    for (double place = 0.1; const char digit : fraction) {
        second += (digit - '0') * place;
        place /= 10;
    }
    const double days = (hour * 3600.0 + parts[1] * 60.0 + second) / 86400.0;
    return TypedMoment{std::nullopt, days, clockFormat(half.has_value(), hasSeconds, !fraction.empty(), hour > 23)};
}

/// Reads a moment in the user's order: "3/31/2026", "1/2" (of this year), "3-Mar", "Mar 2026", "31 March 2026",
/// "2026-03-31", "12:30", "1:30 PM", "3/31/2026 12:30". Blanks alone do not separate numbers: "1 2" is not a date.
/// plain  the text in plain characters (see plainCharacters)
std::optional<TypedMoment> readMoment(std::string_view plain, const RegionalFormats& formats, CalendarDate today)
{
    if (plain.size() > maxMomentLength || std::ranges::none_of(plain, isDigit))
        return std::nullopt;
    if (auto date = readDate(plain, formats, today))
        return date;
    if (auto time = readTime(plain, formats))
        return time;
    for (std::size_t blank = plain.find(' '); blank != std::string_view::npos; blank = plain.find(' ', blank + 1)) {
        const auto time = readTime(plain.substr(blank + 1), formats);
        auto date = time && time->days < 1 ? readDate(plain.substr(0, blank), formats, today) : std::nullopt;
        if (date)
            return TypedMoment{date->date, time->days, "m/d/yy h:mm"};
    }
    return std::nullopt;
}

std::optional<TypedValue> readDateOrTime(std::string_view plain, const RegionalFormats& formats, CalendarDate today,
                                         bool dates1904)
{
    auto moment = readMoment(plain, formats, today);
    const int firstYear = dates1904 ? 1904 : 1900;
    if (!moment || (moment->date && moment->date->year < firstYear))
        return std::nullopt;
    const auto& date = moment->date;
    const int day = date ? serialDayOf(date->year, date->month, date->day, dates1904) : 0;
    return TypedValue{day + moment->days, std::move(moment->numberFormat)};
}

} // namespace

std::optional<bool> logicalNamed(std::string_view word)
{
    if (sameIgnoringCase(word, "TRUE"))
        return true;
    return sameIgnoringCase(word, "FALSE") ? std::optional(false) : std::nullopt;
}

TypedValue readTypedText(std::string_view text, const RegionalFormats& formats, CalendarDate today, bool dates1904)
{
    if (text.starts_with('\''))
        return {std::string(text.substr(1)), "", true};
    const std::string plain = plainCharacters(text, formats);
    if (plain.empty())
        return {};
    if (auto number = readTypedNumber(plain, formats))
        return *number;
    if (auto word = readWord(plain))
        return *word;
    if (auto moment = readDateOrTime(plain, formats, today, dates1904))
        return *moment;
    return {std::string(text)};
}

} // namespace wagemill::engine
