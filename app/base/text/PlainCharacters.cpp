#include "app/base/text/PlainCharacters.h"

#include "app/base/text/Unicode.h"

#include <array>

namespace wagemill {

namespace {

struct Alternatives {
    char32_t first;
    char32_t last;
    char32_t plain;
};

/// Stands for characters that are dropped; no text holds it.
constexpr char32_t dropped = 0xFFFFFFFF;

constexpr auto alternatives = std::to_array<Alternatives>({
    {0x0009, 0x000D, U' '},    // tabulator and line ends
    {0x00A0, 0x00A0, U' '},    // no-break blank
    {0x00AD, 0x00AD, dropped}, // soft hyphen
    {0x00B4, 0x00B4, U'\''},   // acute accent
    {0x02BC, 0x02BC, U'\''},   // modifier apostrophe
    {0x060C, 0x060C, U','},    // Arabic comma
    {0x061C, 0x061C, dropped}, // Arabic letter mark
    {0x066A, 0x066A, U'%'},    // Arabic percent sign
    {0x066B, 0x066B, U'.'},    // Arabic decimal separator
    {0x066C, 0x066C, U','},    // Arabic thousands separator
    {0x2000, 0x200A, U' '},    // typographic blanks
    {0x200B, 0x200F, dropped}, // zero-width blanks, joiners and direction marks
    {0x2010, 0x2015, U'-'},    // hyphens and dashes
    {0x2018, 0x2019, U'\''},   // quotation marks used as apostrophes
    {0x202A, 0x202E, dropped}, // direction embeddings
    {0x202F, 0x202F, U' '},    // narrow no-break blank
    {0x205F, 0x205F, U' '},    // mathematical blank
    {0x2066, 0x2069, dropped}, // direction isolates
    {0x2212, 0x2212, U'-'},    // minus sign
    {0x2E41, 0x2E41, U','},    // reversed comma
    {0x3000, 0x3000, U' '},    // ideographic blank
    {0xFE63, 0xFE63, U'-'},    // small hyphen
    {0xFEFF, 0xFEFF, dropped}, // byte order mark
    {0xFFE5, 0xFFE5, 0x00A5}   // full-width yen sign
});

char32_t plainCharacter(char32_t character, char32_t zeroDigit)
{
    if (character >= zeroDigit && character <= zeroDigit + 9)
        return U'0' + (character - zeroDigit);
    if (character > U' ' && character < 0x7F)
        return character;
    if (character >= 0xFF01 && character <= 0xFF5E)
        return character - 0xFF01 + U'!';
    for (const auto& [first, last, plain] : alternatives)
        if (character >= first && character <= last)
            return plain;
    return character;
}

} // namespace

std::string plainCharacters(std::string_view text, const RegionalFormats& formats)
{
    std::u32string plain = toUtf32(text);
    for (char32_t& character : plain)
        character = plainCharacter(character, formats.zeroDigit);
    std::erase(plain, dropped);
    plain.erase(plain.find_last_not_of(U' ') + 1);
    plain.erase(0, plain.find_first_not_of(U' '));
    return toUtf8(plain);
}

} // namespace wagemill
