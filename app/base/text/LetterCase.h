#pragma once

#include <string>
#include <string_view>

namespace wagemill {

/// Simple one-to-one case mapping of the Latin, Greek and Cyrillic letters (Unicode Character Database); every other
/// character is answered as it is. The same in every locale.
char32_t lowerCase(char32_t letter);
char32_t upperCase(char32_t letter);

std::string lowerText(std::string_view utf8);
std::string upperText(std::string_view utf8);

/// Below, at or above 0 as `a` comes before, is the same as or comes after `b`, without regard to case.
int compareIgnoringCase(std::string_view a, std::string_view b);
bool sameIgnoringCase(std::string_view a, std::string_view b);
bool startsWithIgnoringCase(std::string_view text, std::string_view start);

} // namespace wagemill
