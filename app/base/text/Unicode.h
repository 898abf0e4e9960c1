#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace wagemill {

/// The code points of a UTF-8 text; every byte that is not part of a valid sequence is U+FFFD.
std::u32string toUtf32(std::string_view text);
/// The UTF-8 text of code points; what is not a code point becomes U+FFFD.
std::string toUtf8(std::u32string_view text);

/// The same in UTF-16, the units that spreadsheets and their files count. A surrogate without its partner becomes
/// U+FFFD.
std::u16string toUtf16(std::string_view text);
std::string toUtf8(std::u16string_view text);

/// The path that a UTF-8 text names. (std::filesystem reads a narrow text in another encoding on Windows.)
std::filesystem::path toPath(std::string_view utf8);

/// How many characters a valid UTF-8 text has, and how many UTF-16 units, which is what spreadsheets count.
std::size_t characterCount(std::string_view utf8);
std::size_t utf16Length(std::string_view utf8);

/// A character of the Windows code page 1252 in Unicode, and back; nothing for what that code page does not hold.
char32_t fromCodePage1252(std::uint8_t character);
std::optional<std::uint8_t> toCodePage1252(char32_t character);

} // namespace wagemill
