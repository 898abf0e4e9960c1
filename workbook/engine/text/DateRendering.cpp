#include "workbook/engine/text/FormatCode.h"

#include "app/base/text/NumberText.h"
#include "app/base/text/TextScanner.h"
#include "workbook/engine/text/SerialDay.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace wagemill::engine {

namespace {

using Kind = FormatToken::Kind;

constexpr std::int64_t secondsPerDay = 86'400;

/// Digits of a second that a serial day can tell apart; further ones are zeros.
constexpr std::size_t maxSecondDigits = 3;

/// A point in time in the parts that a code names.
struct Moment {
    CalendarDate date;
    int weekday = 0;             ///< 0 Sunday
    std::int64_t seconds = 0;    ///< since serial day 0
    std::int64_t subSeconds = 0; ///< in units of the last digit shown

    int hour() const { return static_cast<int>(seconds % secondsPerDay / 3600); }
};

/// Digits of a second that the section shows.
std::size_t secondDigits(const FormatSection& section)
{
    std::size_t count = 0;
    for (const FormatToken& token : section.tokens)
        count = std::max(count, token.kind == Kind::SecondFraction ? token.count : 0);
    return std::min(count, maxSecondDigits);
}

/// Times are rounded to the last digit of a second that is shown, dates alone are not.
std::optional<Moment> momentOf(double serial, const FormatSection& section, bool dates1904)
{
    if (!(serial >= 0 && serial < lastSerialDay(dates1904) + 1.0))
        return std::nullopt;
    const bool hasTime = std::ranges::any_of(
        section.tokens, [](Kind kind) { return kind >= Kind::Hour && kind <= Kind::HalfDay; }, &FormatToken::kind);
    const auto units = static_cast<std::int64_t>(std::pow(10.0, secondDigits(section)));
    const double exact = serial * static_cast<double>(secondsPerDay * units);
    const auto count = static_cast<std::int64_t>(hasTime ? std::round(exact) : std::floor(exact));
    const std::int64_t seconds = count / units;
    const int day = hasTime ? static_cast<int>(seconds / secondsPerDay) : static_cast<int>(serial);
    if (day > lastSerialDay(dates1904))
        return std::nullopt; // the last evening, rounded up
    return Moment{dateOfSerialDay(day, dates1904), weekdayOf(day, dates1904), seconds, count % units};
}

std::string monthText(int month, std::size_t letters, const RegionalFormats& formats)
{
    if (letters <= 2)
        return paddedNumber(month, letters);
    const auto index = static_cast<std::size_t>(month - 1);
    const std::string& name = (letters == 3 ? formats.shortMonthNames : formats.monthNames).at(index);
    return letters == 5 ? std::string(TextScanner(name).takeCharacter()) : name;
}

std::string dayText(const Moment& moment, std::size_t letters, const RegionalFormats& formats)
{
    if (letters <= 2)
        return paddedNumber(moment.date.day, letters);
    return (letters == 3 ? formats.shortDayNames : formats.dayNames).at(static_cast<std::size_t>(moment.weekday));
}

std::string subSecondText(const Moment& moment, const FormatToken& token, const RegionalFormats& formats)
{
    std::string digits = paddedNumber(moment.subSeconds, std::min(token.count, maxSecondDigits));
    digits.resize(std::max(digits.size(), token.count), '0');
    return formats.decimalSeparator + digits;
}

std::string fieldText(const FormatToken& token, const Moment& moment, bool halfDays, const RegionalFormats& formats)
{
    switch (token.kind) {
    case Kind::ShortDate:
        return shortDateText(moment.date, formats);
    case Kind::Year:
        return token.count <= 2 ? paddedNumber(moment.date.year % 100, 2) : paddedNumber(moment.date.year, 4);
    case Kind::Month:
        return monthText(moment.date.month, token.count, formats);
    case Kind::Day:
        return dayText(moment, token.count, formats);
    case Kind::Hour:
        return paddedNumber(halfDays ? (moment.hour() + 11) % 12 + 1 : moment.hour(),
                            std::min<std::size_t>(token.count, 2));
    case Kind::Minute:
        return paddedNumber(moment.seconds / 60 % 60, token.count);
    case Kind::Second:
        return paddedNumber(moment.seconds % 60, std::min<std::size_t>(token.count, 2));
    case Kind::SecondFraction:
        return subSecondText(moment, token, formats);
    case Kind::ElapsedHours:
        return paddedNumber(moment.seconds / 3600, token.count);
    case Kind::ElapsedMinutes:
        return paddedNumber(moment.seconds / 60, token.count);
    case Kind::ElapsedSeconds:
        return paddedNumber(moment.seconds, token.count);
    case Kind::HalfDay:
        if (token.count == 1)
            return moment.hour() < 12 ? "A" : "P";
        return moment.hour() < 12 ? formats.amText : formats.pmText;
    case Kind::TimeSeparator:
        return formats.timeSeparator;
    default:
        return token.text;
    }
}

} // namespace

std::optional<std::string> renderDate(double serial, const FormatSection& section, const RegionalFormats& formats,
                                      bool dates1904)
{
    const auto moment = momentOf(serial, section, dates1904);
    if (!moment)
        return std::nullopt;
    const bool halfDays = std::ranges::find(section.tokens, Kind::HalfDay, &FormatToken::kind) != section.tokens.end();
    std::string text;
    for (const FormatToken& token : section.tokens) {
        const std::string piece = fieldText(token, *moment, halfDays, formats);
        text += token.kind == Kind::Literal ? piece : toLocalDigits(piece, formats);
    }
    return text;
}

} // namespace wagemill::engine
