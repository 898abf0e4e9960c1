#pragma once

#include "app/base/text/RegionalFormats.h"

class QLocale;

namespace wagemill {

/// How a locale writes numbers, money and dates, read off what it writes. Years have four digits. The "C" locale, which
/// writes for programs, is taken as the United States.
RegionalFormats regionalFormatsOf(const QLocale& locale);
/// The locale of the user's system settings; the United States where the system speaks to programs ("C").
QLocale userLocale();
/// The formats of that locale.
RegionalFormats userRegionalFormats();

} // namespace wagemill
