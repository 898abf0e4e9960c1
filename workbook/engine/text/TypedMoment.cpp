#include "workbook/engine/text/TypedMoment.h"

#include "app/base/text/LetterCase.h"
#include "app/base/text/PlainCharacters.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <vector>

namespace wagemill::engine {

namespace {

/// No moment is longer; what is, need not be searched for one.
constexpr std::size_t longestMoment = 80;

constexpr std::string_view digits = "0123456789";

/// A whole number of at most `maxDigits` digits and nothing else.
std::optional<int> wholeNumber(std::string_view text, std::size_t maxDigits)
{
    if (text.empty() || text.size() > maxDigits || text.find_first_not_of(digits) != std::string_view::npos)
        return std::nullopt;
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
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

/// Day and month, or month and year, in figures: "1/2", "3/2026".
std::optional<TypedMoment> readFigures(std::string_view text, const std::vector<std::string_view>& parts,
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
    const bool figures = parts.size() == 2 && wholeNumber(parts[0], 4) && wholeNumber(parts[1], 4);
    if (figures)
        return readFigures(text, parts, formats, today);
    return parts.size() <= 3 ? readNamedMonth(parts, formats, today) : std::nullopt;
}

bool endsWithWord(std::string_view text, std::string_view word)
{
    return !word.empty() && text.size() > word.size() && sameIgnoringCase(text.substr(text.size() - word.size()), word);
}

enum class HalfDay { None, Morning, Afternoon };

/// Takes "AM" or "PM", or the user's words for them, from the end; "A" and "P" only behind minutes.
HalfDay takeHalfDay(std::string_view& text, const RegionalFormats& formats)
{
    const std::string morning = plainCharacters(formats.amText, formats);
    const std::string afternoon = plainCharacters(formats.pmText, formats);
    const bool minutes = text.find(':') != std::string_view::npos;
    const auto take = [&text, minutes](std::initializer_list<std::string_view> words) {
        for (const std::string_view word : words)
            if ((word.size() > 1 || minutes) && endsWithWord(text, word)) {
                text.remove_suffix(word.size());
                text.remove_suffix(text.size() - 1 - text.find_last_not_of(' '));
                return true;
            }
        return false;
    };
    if (take({morning, "AM", "A"}))
        return HalfDay::Morning;
    return take({afternoon, "PM", "P"}) ? HalfDay::Afternoon : HalfDay::None;
}

/// Hours, minutes and seconds as typed, with a part of a second.
struct ClockText {
    std::vector<std::string_view> parts;
    std::string_view secondFraction;
};

ClockText splitClock(std::string_view text, const RegionalFormats& formats)
{
    ClockText clock;
    const bool dotted = formats.timeSeparator == "." && text.find(':') == std::string_view::npos;
    const char separator = dotted ? '.' : ':';
    const std::string decimal = plainCharacters(formats.decimalSeparator, formats);
    const std::size_t point = dotted || decimal.empty() ? std::string_view::npos : text.find(decimal);
    if (point != std::string_view::npos) {
        clock.secondFraction = text.substr(point + decimal.size());
        text = text.substr(0, point);
    }
    for (std::size_t end = text.find(separator); end != std::string_view::npos; end = text.find(separator)) {
        clock.parts.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    clock.parts.push_back(text);
    return clock;
}

const char* clockFormat(bool halfDay, bool seconds, bool fraction, bool beyondDay)
{
    if (fraction)
        return "mm:ss.0";
    if (beyondDay)
        return "[h]:mm:ss";
    if (halfDay)
        return seconds ? "h:mm:ss AM/PM" : "h:mm AM/PM";
    return seconds ? "h:mm:ss" : "h:mm";
}

std::optional<TypedMoment> readTime(std::string_view text, const RegionalFormats& formats)
{
    const HalfDay half = takeHalfDay(text, formats);
    const auto [parts, fraction] = splitClock(text, formats);
    const bool fitting =
        parts.size() <= 3 && (parts.size() >= 2 || half != HalfDay::None) && (fraction.empty() || parts.size() == 3);
    if (!fitting || fraction.size() > 9 || fraction.find_first_not_of(digits) != std::string_view::npos)
        return std::nullopt;
    const auto hours = wholeNumber(parts[0], 4);
    const auto minutes = parts.size() < 2 ? 0 : wholeNumber(parts[1], 2);
    const auto seconds = parts.size() < 3 ? 0 : wholeNumber(parts[2], 2);
    if (!hours || !minutes || !seconds || *minutes > 59 || *seconds > 59 || (half != HalfDay::None && *hours > 12))
        return std::nullopt;

    const int hour = half == HalfDay::None ? *hours : *hours % 12 + (half == HalfDay::Afternoon ? 12 : 0);
    double second = *seconds;
    for (double place = 0.1; const char digit : fraction) {
        second += (digit - '0') * place;
        place /= 10;
    }
    const double days = (hour * 3600.0 + *minutes * 60.0 + second) / 86400.0;
    return TypedMoment{std::nullopt, days,
                       clockFormat(half != HalfDay::None, parts.size() == 3, !fraction.empty(), hour > 23)};
}

} // namespace

std::optional<TypedMoment> readMoment(std::string_view plain, const RegionalFormats& formats, CalendarDate today)
{
    if (plain.size() > longestMoment || plain.find_first_of(digits) == std::string_view::npos)
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

} // namespace wagemill::engine
