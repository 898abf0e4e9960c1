#pragma once

#include "app/base/text/DateText.h"

#include <optional>

namespace wagemill::engine {

inline constexpr int daysBetweenSystems = 1462; ///< serial day of 1 January 1904 in the 1900 system

/// A serial day as a calendar shows it. Day 0 of the 1900 system is 0 January 1900, day 60 29 February 1900, which
/// never was; both are kept, as every workbook counts on them.
CalendarDate dateOfSerialDay(int serialDay, bool dates1904);

/// The serial day of a date whose month and day may lie outside the calendar, "month 13" or "day 0": they run on.
/// year  1900 (1904) to 9999
int serialDayOf(int year, int month, int day, bool dates1904);

/// As the application counts weekdays, 0 is Sunday: serial day 1 of 1900 passes for one, so that they are wrong before
/// March 1900.
int weekdayOf(int serialDay, bool dates1904);

/// Largest serial day: 31 December 9999.
int lastSerialDay(bool dates1904);

} // namespace wagemill::engine
