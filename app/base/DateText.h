#pragma once

#include "app/base/RegionalFormats.h"

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
/// Reads what shortDateText writes, and the same order with other separators ("/", "-", ".", blank), with a year of two
/// digits (1930 to 2029), or as yyyy-mm-dd. Nothing when the text is no day of the calendar.
std::optional<CalendarDate> readShortDate(std::string_view text, const RegionalFormats& formats);

} // namespace wagemill
