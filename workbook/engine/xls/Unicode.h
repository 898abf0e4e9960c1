#pragma once

#include <string>
#include <string_view>

namespace wagemill::engine::xls {

/// UTF-8 as UTF-16. Bytes that are no UTF-8 become U+FFFD.
std::u16string toUtf16(std::string_view utf8);

/// UTF-16 as UTF-8. A surrogate without its partner becomes U+FFFD.
std::string toUtf8(std::u16string_view utf16);

/// How many UTF-16 units the text takes.
std::size_t utf16Length(std::string_view utf8);

/// The capital of a letter of the Latin, Greek or Cyrillic alphabet, for comparing names; any other unit as it is.
char16_t upperCase(char16_t unit);

} // namespace wagemill::engine::xls
