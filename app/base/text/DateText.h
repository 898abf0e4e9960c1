#pragma once

#include "app/base/text/RegionalFormats.h"

#include <optional>
#include <string>
#include <string_view>

namespace wagemill {

/// A day of the Gregorian calendar.
struct CalendarDate {
    int year = 2000;
    int month = 1;
    int day = 1;

    auto operator<=>(const CalendarDate&) const = default;
};

bool isValidDate(CalendarDate date);
/// Days since 1 January 1970, negative before.
int daysSinceEpoch(CalendarDate date);
CalendarDate dateFromDaysSinceEpoch(int days);

/// The date in the user's short form, always with four digits of year: "3/31/2026".
std::string shortDateText(CalendarDate date, const RegionalFormats& formats);
/// Reads what shortDateText writes, and the same order with other separators ("/", "-", ".", blank; the same one
/// throughout), with a year of two digits (1930 to 2029), or the year first in four digits, as yyyy-mm-dd. Nothing when
/// the text is not a day of the calendar.
std::optional<CalendarDate> readShortDate(std::string_view text, const RegionalFormats& formats);

/// The first and the last day that a period can end on.
inline constexpr CalendarDate firstPickedDate = {1601, 1, 1};
inline constexpr CalendarDate lastPickedDate = {9999, 12, 31};
/// Reads the whole of a text that was typed into the date field: what readShortDate reads, and eight digits without
/// separators. Two digits of a year mean the date that is at most 50 years from `today`. Nothing for the days
/// outside of those two.
///   "3/31/26" -> 31 March 2026    "03312026" -> the same    "2026-03-31" -> the same    "2/30/2026" -> nothing
std::optional<CalendarDate> readTypedDate(std::string_view text, const RegionalFormats& formats, CalendarDate today);
/// Whether a date that was read needs no further digit: its year has four and its last part at least two. A user who
/// types "2026-03-3" may be about to type "2026-03-31".
bool isTypedToItsEnd(std::string_view text, const RegionalFormats& formats);
/// The order in which the user writes a date, "month, day, year".
std::string dateOrder(const RegionalFormats& formats);

/// The full year of one typed with two digits: 30 to 99 are of the last century, 0 to 29 of this one.
int yearOfTwoDigits(int year);
/// The month, 1 to 12, of a name or short name in the user's language; a dot after it and case do not
/// count. `name` is in plain characters (see plainCharacters).
std::optional<int> monthOfName(std::string_view name, const RegionalFormats& formats);
/// Whether the user writes the day before the month.
bool isDayFirst(const RegionalFormats& formats);

} // namespace wagemill
