#pragma once

#include "app/base/text/DateText.h"
#include "workbook/engine/text/TypedText.h"

#include <optional>
#include <string>
#include <string_view>

namespace wagemill::engine {

/// A date, a time of day or both, as typed.
struct TypedMoment {
    std::optional<CalendarDate> date;
    double days = 0;          ///< the time as a part of a day; more than one where hours beyond 24 were typed
    std::string numberFormat; ///< the format that typing it suggests
};

/// Reads a moment in the user's order: "3/31/2026", "1/2" (of this year), "3-Mar", "Mar 2026", "31 March 2026",
/// "2026-03-31", "12:30", "1:30 PM", "3/31/2026 12:30". Blanks alone do not separate numbers: "1 2" is not a date.
/// plain  the text in plain characters (see plainCharacters)
std::optional<TypedMoment> readMoment(std::string_view plain, const RegionalFormats& formats, CalendarDate today);

} // namespace wagemill::engine
