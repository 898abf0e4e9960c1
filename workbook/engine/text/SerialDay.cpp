#include "workbook/engine/text/SerialDay.h"

namespace wagemill::engine {

namespace {

constexpr int epochIn1900 = 25569; ///< serial day of 1 January 1970
constexpr int epochIn1904 = epochIn1900 - daysBetweenSystems;
constexpr int falseLeapDay = 60;

} // namespace

CalendarDate dateOfSerialDay(int serialDay, bool dates1904)
{
    if (dates1904)
        return dateFromDaysSinceEpoch(serialDay - epochIn1904);
    if (serialDay == 0)
        return {1900, 1, 0};
    if (serialDay == falseLeapDay)
        return {1900, 2, 29};
    return dateFromDaysSinceEpoch(serialDay - epochIn1900 + (serialDay < falseLeapDay ? 1 : 0));
}

int serialDayOf(int year, int month, int day, bool dates1904)
{
    const int months = year * 12 + month - 1;
    const int since1970 = daysSinceEpoch({months / 12, months % 12 + 1, 1});
    if (dates1904)
        return since1970 + epochIn1904 + day - 1;
    const int first = since1970 + epochIn1900;
    return (first <= falseLeapDay ? first - 1 : first) + day - 1; // January and February 1900 are one day earlier
}

int weekdayOf(int serialDay, bool dates1904)
{
    return (serialDay + (dates1904 ? daysBetweenSystems : 0) + 6) % 7;
}

int lastSerialDay(bool dates1904)
{
    return 2958465 - (dates1904 ? daysBetweenSystems : 0);
}

} // namespace wagemill::engine
