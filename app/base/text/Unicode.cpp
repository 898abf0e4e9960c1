#include "app/base/text/Unicode.h"

#include <algorithm>
#include <array>

namespace wagemill {

namespace {

constexpr char32_t replacementCharacter = 0xFFFD;

/// The characters 0x80 to 0x9F of the Windows code page 1252; the others are those of Unicode (Microsoft, "Code Page
/// 1252 Windows Latin 1").
constexpr auto windowsCharacters =
    std::to_array<char32_t>({0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
                             0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
                             0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178});
constexpr std::uint8_t firstWindowsCharacter = 0x80;

bool isCodePoint(char32_t character)
{
    return character < 0xD800 || (character > 0xDFFF && character <= 0x10FFFF);
}

/// Bytes that follow the first byte of a sequence, -1 when no sequence begins with it.
int continuationBytes(std::uint8_t first)
{
    if (first >= 0xC2 && first < 0xE0)
        return 1;
    if (first >= 0xE0 && first < 0xF0)
        return 2;
    return first >= 0xF0 && first < 0xF5 ? 3 : -1;
}

/// Of several bytes.
char32_t readSequence(std::string_view text, std::size_t& position)
{
    constexpr char32_t smallest[] = {0, 0x80, 0x800, 0x10000};
    const auto first = static_cast<std::uint8_t>(text[position++]);
    const int count = continuationBytes(first);
    if (count < 0 || text.size() - position < static_cast<std::size_t>(count))
        return replacementCharacter;
    char32_t character = first & (0x3FU >> count);
    for (int i = 0; i < count; ++i) {
        const auto next = static_cast<std::uint8_t>(text[position + static_cast<std::size_t>(i)]);
        if ((next & 0xC0U) != 0x80)
            return replacementCharacter;
        character = character << 6U | (next & 0x3FU);
    }
    if (character < smallest[count] || !isCodePoint(character))
        return replacementCharacter;
    position += static_cast<std::size_t>(count);
    return character;
}

/// Of a character beyond ASCII.
void appendSequence(std::string& text, char32_t character)
{
    const int count = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    constexpr unsigned leads[] = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(leads[count] | character >> (6U * static_cast<unsigned>(count)));
    for (int i = count - 1; i >= 0; --i)
        text += static_cast<char>(0x80U | (character >> (6U * static_cast<unsigned>(i)) & 0x3FU));
}

void appendUtf8(std::string& text, char32_t character)
{
    if (character < 0x80)
        text += static_cast<char>(character);
    else
        appendSequence(text, isCodePoint(character) ? character : replacementCharacter);
}

/// Reads one sequence and moves `position` past it; past one byte when it is not valid.
char32_t readCodePoint(std::string_view text, std::size_t& position)
{
    const auto first = static_cast<std::uint8_t>(text[position]);
    if (first >= 0x80)
        return readSequence(text, position);
    ++position;
    return first;
}

} // namespace

std::u32string toUtf32(std::string_view text)
{
    std::u32string characters;
    characters.reserve(text.size());
    for (std::size_t position = 0; position < text.size();)
        characters += readCodePoint(text, position);
    return characters;
}

std::string toUtf8(std::u32string_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    for (const char32_t character : text)
        appendUtf8(bytes, character);
    return bytes;
}

std::u16string toUtf16(std::string_view text)
{
    std::u16string units;
    units.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const char32_t character = readCodePoint(text, position);
        if (character > 0xFFFF)
            units += static_cast<char16_t>(0xD7C0U + (character >> 10U));
        units += static_cast<char16_t>(character > 0xFFFF ? 0xDC00U + (character & 0x3FFU) : character);
    }
    return units;
}

std::string toUtf8(std::u16string_view text)
{
    const auto isHalf = [](char16_t unit, unsigned start) { return (unit & 0xFC00U) == start; };
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t character = text[i];
        if (isHalf(text[i], 0xD800) && i + 1 < text.size() && isHalf(text[i + 1], 0xDC00))
            character = 0x10000U + ((character & 0x3FFU) << 10U) + (text[++i] & 0x3FFU);
        appendUtf8(bytes, character);
    }
    return bytes;
}

std::filesystem::path toPath(std::string_view utf8)
{
    return std::u8string(utf8.begin(), utf8.end());
}

std::size_t characterCount(std::string_view utf8)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(utf8, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

std::size_t utf16Length(std::string_view utf8)
{
    std::size_t length = 0;
    for (const char each : utf8) {
        const auto byte = static_cast<unsigned char>(each);
        length += (byte & 0xC0U) == 0x80U ? 0U : byte >= 0xF0U ? 2U : 1U;
    }
    return length;
}

char32_t fromCodePage1252(std::uint8_t character)
{
    const std::size_t index = static_cast<std::size_t>(character) - firstWindowsCharacter; // huge before the first
    return index < windowsCharacters.size() ? windowsCharacters[index] : character;
}

std::optional<std::uint8_t> toCodePage1252(char32_t character)
{
    const auto found = std::ranges::find(windowsCharacters, character);
    if (found != windowsCharacters.end())
        return static_cast<std::uint8_t>(firstWindowsCharacter + (found - windowsCharacters.begin()));
    return character <= 0xFF ? std::optional(static_cast<std::uint8_t>(character)) : std::nullopt;
}

} // namespace wagemill
