#include "workbook/engine/xls/Unicode.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace wagemill::engine::xls {

namespace {

constexpr char32_t replacement = 0xFFFD;

bool isHighSurrogate(char16_t unit)
{
    return unit >= 0xD800 && unit < 0xDC00;
}

bool isLowSurrogate(char16_t unit)
{
    return unit >= 0xDC00 && unit < 0xE000;
}

void appendUtf8(std::string& text, char32_t character)
{
    const auto tail = [&](unsigned shift) { text.push_back(static_cast<char>(0x80U | (character >> shift & 0x3FU))); };
    if (character < 0x80) {
        text.push_back(static_cast<char>(character));
    } else if (character < 0x800) {
        text.push_back(static_cast<char>(0xC0U | character >> 6U));
        tail(0);
    } else if (character < 0x10000) {
        text.push_back(static_cast<char>(0xE0U | character >> 12U));
        tail(6);
        tail(0);
    } else {
        text.push_back(static_cast<char>(0xF0U | character >> 18U));
        tail(12);
        tail(6);
        tail(0);
    }
}

/// Takes one character off the front of `utf8`, which is not empty.
char32_t takeCharacter(std::string_view& utf8)
{
    const auto byte = [&](std::size_t index) { return static_cast<std::uint8_t>(utf8[index]); };
    const std::uint8_t lead = byte(0);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    char32_t character = length == 1 ? lead : lead & (0x7FU >> length);
    std::size_t used = 1;
    while (used < length && used < utf8.size() && (byte(used) & 0xC0U) == 0x80U)
        character = character << 6U | (byte(used++) & 0x3FU);
    const bool complete = length != 0 && used == length;
    utf8.remove_prefix(used);
    const bool overlong = (length == 3 && character < 0x800) || (length == 4 && character < 0x10000);
    const bool surrogate = character >= 0xD800 && character < 0xE000;
    return complete && !overlong && !surrogate && character <= 0x10FFFF ? character : replacement;
}

} // namespace

std::u16string toUtf16(std::string_view utf8)
{
    std::u16string units;
    units.reserve(utf8.size());
    while (!utf8.empty()) {
        const char32_t character = takeCharacter(utf8);
        if (character < 0x10000) {
            units.push_back(static_cast<char16_t>(character));
        } else {
            units.push_back(static_cast<char16_t>(0xD7C0U + (character >> 10U)));
            units.push_back(static_cast<char16_t>(0xDC00U + (character & 0x3FFU)));
        }
    }
    return units;
}

std::string toUtf8(std::u16string_view utf16)
{
    std::string text;
    text.reserve(utf16.size());
    for (std::size_t index = 0; index < utf16.size(); ++index) {
        const char16_t unit = utf16[index];
        const bool pair = isHighSurrogate(unit) && index + 1 < utf16.size() && isLowSurrogate(utf16[index + 1]);
        if (pair)
            appendUtf8(text, 0x10000U + ((unit - 0xD800U) << 10U) + (utf16[++index] - 0xDC00U));
        else
            appendUtf8(text, isHighSurrogate(unit) || isLowSurrogate(unit) ? replacement : unit);
    }
    return text;
}

std::size_t utf16Length(std::string_view utf8)
{
    if (std::ranges::all_of(utf8, [](char byte) { return static_cast<unsigned char>(byte) < 0x80; }))
        return utf8.size();
    return toUtf16(utf8).size();
}

char16_t upperCase(char16_t unit)
{
    struct Range {
        char16_t first;
        char16_t last;
        int distance; ///< to the capital; 0: capitals and small letters alternate, the small ones odd
    };
    static constexpr auto ranges = std::to_array<Range>({
        {0x61, 0x7A, -32},
        {0xE0, 0xF6, -32},
        {0xF8, 0xFE, -32},
        {0xFF, 0xFF, 121},
        {0x100, 0x12F, 0},
        {0x14A, 0x177, 0},
        {0x3B1, 0x3C1, -32},
        {0x3C3, 0x3CB, -32},
        {0x430, 0x44F, -32},
        {0x450, 0x45F, -80},
        {0x460, 0x481, 0},
    });
    for (const auto& [first, last, distance] : ranges)
        if (unit >= first && unit <= last)
            return static_cast<char16_t>(distance == 0 ? unit & ~1 : unit + distance);
    return unit;
}

} // namespace wagemill::engine::xls
