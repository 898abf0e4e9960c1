#pragma once

#include "app/base/text/RegionalFormats.h"

class QLocale;

namespace wagemill {

/// How a locale writes numbers, money and dates, read from what it writes. Years have four digits. The "C" locale,
/// which writes for programs, counts as the United States.
RegionalFormats regionalFormatsOf(const QLocale& locale);
/// The locale of the user's system settings; the United States where the system speaks to programs ("C").
QLocale userLocale();

} // namespace wagemill
