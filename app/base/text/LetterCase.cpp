#include "app/base/text/LetterCase.h"

#include "app/base/text/Unicode.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace wagemill {

namespace {

/// Every `step`-th letter from `firstUpper` to `lastUpper` has its small letter `distance` further on.
struct CaseRange {
    char32_t firstUpper;
    char32_t lastUpper;
    std::int32_t distance;
    char32_t step;
};

constexpr auto caseRanges = std::to_array<CaseRange>({
    {0x0041, 0x005A, 32, 1}, // A to Z
    {0x00C0, 0x00D6, 32, 1}, // Latin-1, around the multiplication sign
    {0x00D8, 0x00DE, 32, 1},
    {0x0100, 0x012E, 1, 2}, // Latin Extended-A, around the dotless i and the long s
    {0x0132, 0x0136, 1, 2},
    {0x0139, 0x0147, 1, 2},
    {0x014A, 0x0176, 1, 2},
    {0x0178, 0x0178, -121, 1}, // Ÿ, whose small letter is of Latin-1
    {0x0179, 0x017D, 1, 2},
    {0x0388, 0x038A, 37, 1}, // Greek
    {0x0391, 0x03A1, 32, 1},
    {0x03A3, 0x03AB, 32, 1},
    {0x0400, 0x040F, 80, 1}, // Cyrillic
    {0x0410, 0x042F, 32, 1},
    {0x0460, 0x0480, 1, 2},
    {0x048A, 0x04BE, 1, 2},
    {0x1E00, 0x1E94, 1, 2}, // Latin Extended Additional
    {0x1EA0, 0x1EFE, 1, 2},
});

std::string mapped(std::string_view utf8, char32_t (*mapping)(char32_t))
{
    std::u32string characters = toUtf32(utf8);
    std::ranges::transform(characters, characters.begin(), mapping);
    return toUtf8(characters);
}

bool isAscii(char byte)
{
    return static_cast<unsigned char>(byte) < 0x80;
}

char32_t lowerAscii(char byte)
{
    return lowerCase(static_cast<unsigned char>(byte));
}

} // namespace

char32_t lowerCase(char32_t letter)
{
    if (letter < 0x80)
        return letter >= U'A' && letter <= U'Z' ? letter + 32 : letter;
    for (const CaseRange& range : caseRanges)
        if (letter >= range.firstUpper && letter <= range.lastUpper && (letter - range.firstUpper) % range.step == 0)
            return letter + static_cast<char32_t>(range.distance);
    return letter;
}

char32_t upperCase(char32_t letter)
{
    if (letter < 0x80)
        return letter >= U'a' && letter <= U'z' ? letter - 32 : letter;
    for (const CaseRange& range : caseRanges) {
        const char32_t upper = letter - static_cast<char32_t>(range.distance);
        if (upper >= range.firstUpper && upper <= range.lastUpper && (upper - range.firstUpper) % range.step == 0)
            return upper;
    }
    return letter;
}

std::string lowerText(std::string_view utf8)
{
    return mapped(utf8, lowerCase);
}

std::string upperText(std::string_view utf8)
{
    return mapped(utf8, upperCase);
}

int compareIgnoringCase(std::string_view a, std::string_view b)
{
    const auto [left, right] = std::ranges::mismatch(a, b, [](char one, char other) {
        return isAscii(one) && isAscii(other) && lowerAscii(one) == lowerAscii(other);
    });
    const std::string_view restOfA(left, a.end());
    const std::string_view restOfB(right, b.end());
    if (restOfA.empty() || restOfB.empty())
        return static_cast<int>(restOfB.empty()) - static_cast<int>(restOfA.empty());
    if (isAscii(*left) && isAscii(*right))
        return lowerAscii(*left) < lowerAscii(*right) ? -1 : 1;
    return lowerText(restOfA).compare(lowerText(restOfB)); // bytes of UTF-8 are in the order of their code points
}

bool sameIgnoringCase(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && compareIgnoringCase(a, b) == 0; // both letters of a pair have as many bytes
}

bool startsWithIgnoringCase(std::string_view text, std::string_view start)
{
    return sameIgnoringCase(text.substr(0, start.size()), start);
}

} // namespace wagemill
