#pragma once

#include "app/base/text/RegionalFormats.h"

#include <string>
#include <string_view>

namespace wagemill {

/// A typed text with one character for each that looks or means the same to a reader of numbers and dates, so that what
/// a locale writes and what a keyboard offers compare equal: the user's digits are 0 to 9, every blank is " ", every
/// minus and hyphen "-", every apostrophe "'", full-width forms and the Arabic separators and percent sign their ASCII
/// ones. Invisible direction marks and zero-width blanks are dropped. The result is UTF-8 without blanks at its ends.
std::string plainCharacters(std::string_view text, const RegionalFormats& formats);

} // namespace wagemill
