#include "app/base/text/LetterCase.h"
#include "workbook/engine/formula/FormulaFunctions.h"
#include "workbook/engine/text/SerialDay.h"

#include <array>
#include <cmath>
#include <set>

namespace wagemill::engine {

namespace {

constexpr int secondsPerDay = 86400;
constexpr int lastYear = 9999;

/// A moment's day, and its second of the day to the nearest one.
struct Moment {
    int day = 0;
    int second = 0;
};

Moment momentOf(const FunctionCall& call, std::size_t index)
{
    const double serial = call.number(index);
    if (serial < 0 || serial >= lastSerialDay(call.dates1904()) + 1)
        throw FormulaFailure{ErrorCode::Number};
    const double day = std::floor(serial);
    const auto second = static_cast<int>(std::lround((serial - day) * secondsPerDay));
    return {static_cast<int>(day), second % secondsPerDay};
}

CalendarDate dateOf(const FunctionCall& call, std::size_t index)
{
    return dateOfSerialDay(momentOf(call, index).day, call.dates1904());
}

Answer serialAnswer(const FunctionCall& call, int year, int month, int day)
{
    const int serial = serialDayOf(year, month, day, call.dates1904());
    return serial < 0 || serial > lastSerialDay(call.dates1904()) ? Answer(ErrorCode::Number) : serial;
}

/// Years, months or days as an argument gives them, no more than the calendar of 10,000 years has.
int calendarArgument(const FunctionCall& call, std::size_t index)
{
    constexpr double maxNumber = 4e6;
    const double number = std::trunc(call.number(index));
    if (std::fabs(number) > maxNumber)
        throw FormulaFailure{ErrorCode::Number};
    return static_cast<int>(number);
}

Answer date(const FunctionCall& call)
{
    const int first = call.dates1904() ? 1904 : 1900;
    int year = calendarArgument(call, 0);
    if (year < first)
        year += 1900;
    const int month = calendarArgument(call, 1);
    const int wholeYears = static_cast<int>(std::floor((month - 1) / 12.0));
    if (year + wholeYears < 1899 || year + wholeYears > lastYear)
        return ErrorCode::Number;
    return serialAnswer(call, year + wholeYears, month - 12 * wholeYears, calendarArgument(call, 2));
}

Answer time(const FunctionCall& call)
{
    const double seconds =
        std::trunc(call.number(0)) * 3600 + std::trunc(call.number(1)) * 60 + std::trunc(call.number(2));
    if (seconds < 0)
        return ErrorCode::Number;
    return std::fmod(seconds, secondsPerDay) / secondsPerDay;
}

/// What a clock shows of one unit: `seconds` long, so many to the next larger one.
template <int seconds, int unitsInNext>
Answer clockPart(const FunctionCall& call)
{
    return momentOf(call, 0).second / seconds % unitsInNext;
}

/// type  1: Sunday is 1, 2: Monday is 1, 3: Monday is 0
Answer weekday(const FunctionCall& call)
{
    const int type = call.integer(1, 1);
    const int fromSunday = weekdayOf(momentOf(call, 0).day, call.dates1904());
    if (type < 1 || type > 3)
        return ErrorCode::Number;
    const int fromMonday = (fromSunday + 6) % 7;
    return type == 1 ? fromSunday + 1 : type == 2 ? fromMonday + 1 : fromMonday;
}

/// Weeks begin on Sunday, or with a second argument of 2 on Monday; 1 January lies in the first one.
Answer weekNumber(const FunctionCall& call)
{
    const int type = call.integer(1, 1);
    const int day = momentOf(call, 0).day;
    if (type < 1 || type > 2)
        return ErrorCode::Number;
    const int firstDay = serialDayOf(dateOf(call, 0).year, 1, 1, call.dates1904());
    return (day - firstDay + (weekdayOf(firstDay, call.dates1904()) + 8 - type) % 7) / 7 + 1;
}

double now(const FunctionCall& call)
{
    return call.rules().now - (call.dates1904() ? daysBetweenSystems : 0);
}

double numberInArgument(const FunctionCall& call)
{
    const auto number = numberInText(call.text(0), call.rules());
    if (!number)
        throw FormulaFailure{ErrorCode::Value};
    return *number;
}

/// The month so many months later, and the day of it that `day` chooses by the first date's and the month's last one.
template <auto day>
Answer monthsLater(const FunctionCall& call)
{
    const CalendarDate start = dateOf(call, 0);
    const int months = start.year * 12 + start.month - 1 + calendarArgument(call, 1);
    if (months < 1900 * 12 || months > lastYear * 12 + 11)
        return ErrorCode::Number;
    const int lastOfMonth =
        dateOfSerialDay(serialDayOf(months / 12, months % 12 + 2, 0, call.dates1904()), call.dates1904()).day;
    return serialAnswer(call, months / 12, months % 12 + 1, day(start.day, lastOfMonth));
}

/// Days between two dates in a year of twelve months with 30 days each (by the United States rule unless the third
/// argument is TRUE).
Answer days360(const FunctionCall& call)
{
    CalendarDate start = dateOf(call, 0);
    CalendarDate end = dateOf(call, 1);
    if (call.logical(2, false)) {
        start.day = std::min(start.day, 30);
        end.day = std::min(end.day, 30);
    } else {
        const bool endsMonth = dateOfSerialDay(momentOf(call, 0).day + 1, call.dates1904()).month != start.month;
        if (endsMonth)
            start.day = 30;
        if (end.day == 31 && start.day == 30)
            end.day = 30;
    }
    return (end.year - start.year) * 360 + (end.month - start.month) * 30 + end.day - start.day;
}

/// Whole years, months or days between two dates; "md", "ym" and "yd" leave out the months and years before.
Answer dateDifference(const FunctionCall& call)
{
    const std::string unit = lowerText(call.text(2));
    const int first = momentOf(call, 0).day;
    const int last = momentOf(call, 1).day;
    if (first > last)
        return ErrorCode::Number;
    const CalendarDate start = dateOf(call, 0);
    const CalendarDate end = dateOf(call, 1);
    const int months = (end.year - start.year) * 12 + end.month - start.month - (end.day < start.day ? 1 : 0);
    const auto daysFrom = [&](int year, int month) {
        return last - serialDayOf(year, month, start.day, call.dates1904());
    };
    if (unit == "d")
        return last - first;
    if (unit == "m")
        return months;
    if (unit == "y")
        return months / 12;
    if (unit == "ym")
        return months % 12;
    if (unit == "md")
        return daysFrom(end.year, end.month - (end.day < start.day ? 1 : 0));
    if (unit == "yd")
        return daysFrom(start.year + months / 12, start.month);
    return ErrorCode::Number;
}

/// Monday to Friday, but for the holidays that an argument may list.
class WorkingDays {
public:
    /// days  how many will be asked for: throws CannotEvaluate when that takes too long
    WorkingDays(const FunctionCall& call, int days) : m_call(call)
    {
        constexpr std::size_t daysForAValue = 16;
        call.evaluator().reserveValues(static_cast<std::size_t>(days) / daysForAValue);
        if (call.has(2))
            forEachNumber(call, 2, [&](double day) { m_holidays.insert(std::floor(day)); });
    }
    bool has(int day) const
    {
        const int weekday = weekdayOf(day, m_call.dates1904());
        return weekday != 0 && weekday != 6 && !m_holidays.contains(day);
    }

private:
    const FunctionCall& m_call;
    std::set<double> m_holidays;
};

Answer workingDaysBetween(const FunctionCall& call)
{
    const int first = momentOf(call, 0).day;
    const int last = momentOf(call, 1).day;
    const WorkingDays days(call, std::abs(last - first));
    int count = 0;
    for (int day = std::min(first, last); day <= std::max(first, last); ++day)
        count += days.has(day) ? 1 : 0;
    return first <= last ? count : -count;
}

Answer workingDayLater(const FunctionCall& call)
{
    const int distance = calendarArgument(call, 1);
    const WorkingDays days(call, std::abs(distance));
    const int step = distance < 0 ? -1 : 1;
    int day = momentOf(call, 0).day;
    for (int left = std::abs(distance); left > 0; left -= days.has(day) ? 1 : 0) {
        day += step;
        if (day < 0 || day > lastSerialDay(call.dates1904()))
            return ErrorCode::Number;
    }
    return day;
}

constexpr auto table = std::to_array<FunctionBinding>({
    {"DATE", date},
    {"TIME", time},
    {"YEAR", [](const FunctionCall& call) -> Answer { return dateOf(call, 0).year; }},
    {"MONTH", [](const FunctionCall& call) -> Answer { return dateOf(call, 0).month; }},
    {"DAY", [](const FunctionCall& call) -> Answer { return dateOf(call, 0).day; }},
    {"HOUR", clockPart<3600, 24>},
    {"MINUTE", clockPart<60, 60>},
    {"SECOND", clockPart<1, 60>},
    {"WEEKDAY", weekday},
    {"WEEKNUM", weekNumber, OnError::Propagate, FunctionOrigin::AnalysisAddIn, "V"},
    {"DATEDIF", dateDifference},
    {"NETWORKDAYS", workingDaysBetween, OnError::Propagate, FunctionOrigin::AnalysisAddIn, "VVR"},
    {"WORKDAY", workingDayLater, OnError::Propagate, FunctionOrigin::AnalysisAddIn, "VVR"},
    {"DATEVALUE", [](const FunctionCall& call) -> Answer { return std::floor(numberInArgument(call)); }},
    {"TIMEVALUE",
     [](const FunctionCall& call) -> Answer {
         const double moment = numberInArgument(call);
         return moment - std::floor(moment);
     }},
    {"TODAY", [](const FunctionCall& call) -> Answer { return std::floor(now(call)); }},
    {"NOW", [](const FunctionCall& call) -> Answer { return now(call); }},
    {"DAYS360", days360},
    {"EDATE", monthsLater<[](int day, int last) { return std::min(day, last); }>, OnError::Propagate,
     FunctionOrigin::AnalysisAddIn, "V"},
    {"EOMONTH", monthsLater<[](int, int last) { return last; }>, OnError::Propagate, FunctionOrigin::AnalysisAddIn,
     "V"},
});

} // namespace

constinit const std::span<const FunctionBinding> dateFunctions = table;

} // namespace wagemill::engine
