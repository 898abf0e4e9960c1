#pragma once

#include "app/base/text/DateText.h"
#include "entry/data/RowFields.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace wagemill {

/// A plausible example, so that a new user sees a finished payroll sheet at once. Texts in the order of rowFields;
/// money is a plain number, shown in the user's currency form.
inline constexpr std::string_view sampleCompanyName = "ACME Inc";
inline constexpr std::array<std::string_view, rowFields.size()> sampleRow = {
    "E118", "Ned Hollister", "15", "", "", "10", "15", "1", "4", "2", "5", "39", "7", "15", "8", "10.25", "2",
};

/// The example for one field as the user would see it after typing it.
std::string sampleText(std::size_t field, const RegionalFormats& formats);

/// The last day of the month before `today`.
CalendarDate samplePeriodEnding(CalendarDate today);

} // namespace wagemill
