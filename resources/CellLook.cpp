#include "resources/CellLook.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>

namespace wagemill {

namespace {

using engine::Border;
using engine::BorderStyle;
using engine::CellFormat;
using engine::ColorIndex;
using engine::HorizontalAlignment;
using engine::Rgb;
using engine::VerticalAlignment;

constexpr ColorIndex firstPaletteColor = 8;
constexpr std::uint16_t twipsPerPoint = 20;

/// What a word that stands for itself changes.
const std::map<std::string, LookChange>& plainAttributes()
{
    const auto aligned = [](HorizontalAlignment alignment) {
        return [alignment](CellLook& look) { look.format.horizontal = alignment; };
    };
    const auto standing = [](VerticalAlignment alignment) {
        return [alignment](CellLook& look) { look.format.vertical = alignment; };
    };
    static const std::map<std::string, LookChange> attributes = {
        {"bold", [](CellLook& look) { look.font.weight = 700; }},
        {"left", aligned(HorizontalAlignment::Left)},
        {"center", aligned(HorizontalAlignment::Center)},
        {"right", aligned(HorizontalAlignment::Right)},
        {"top", standing(VerticalAlignment::Top)},
        {"middle", standing(VerticalAlignment::Center)},
        {"bottom", standing(VerticalAlignment::Bottom)},
        {"wrap", [](CellLook& look) { look.format.wrap = true; }},
        {"shrink", [](CellLook& look) { look.format.shrinkToFit = true; }},
        {"unlocked", [](CellLook& look) { look.format.locked = false; }},
    };
    return attributes;
}

const std::map<std::string, BorderStyle> borderStyles = {
    {"hair", BorderStyle::Hair},    {"dotted", BorderStyle::Dotted}, {"dashed", BorderStyle::Dashed},
    {"thin", BorderStyle::Thin},    {"medium", BorderStyle::Medium}, {"thick", BorderStyle::Thick},
    {"double", BorderStyle::Double}};

const std::map<std::string, Border CellFormat::*> borderSides = {{"left", &CellFormat::left},
                                                                 {"right", &CellFormat::right},
                                                                 {"top", &CellFormat::top},
                                                                 {"bottom", &CellFormat::bottom}};

/// What the table calls that, by the line's word. Throws DescriptionError when the word is missing or unknown.
template <class Value>
const Value& named(const std::map<std::string, Value>& table, const DescriptionLine& line, std::size_t word,
                   std::string_view kind)
{
    if (word >= line.words.size())
        line.fail("a " + std::string(kind) + " is missing");
    const auto found = table.find(line.words[word]);
    if (found == table.end())
        line.fail("\"" + line.words[word] + "\" is no " + std::string(kind));
    return found->second;
}

int numberWithin(const DescriptionLine& line, std::size_t word, int least, int most)
{
    if (word >= line.words.size())
        line.fail("a number is missing");
    const int number = line.wholeNumber(word);
    if (number < least || number > most)
        line.fail("\"" + line.words[word] + "\" is not within " + std::to_string(least) + " and " +
                  std::to_string(most));
    return number;
}

Rgb hexColor(const DescriptionLine& line, const std::string& text)
{
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (text.size() != 6 || error != std::errc{} || end != text.data() + text.size())
        line.fail("\"" + text + "\" is no colour: six hexadecimal digits RRGGBB");
    const auto channel = [value](unsigned shift) { return static_cast<std::uint8_t>((value >> shift) & 0xFFU); };
    return {channel(16), channel(8), channel(0)};
}

/// Which groups of attributes differ from those of the Normal style, as the file flags them ([MS-XLS] 2.5.20 CellXF).
std::uint8_t usedAttributes(const CellFormat& format)
{
    const CellFormat plain;
    unsigned used = 0;
    const auto flag = [&used](unsigned bit, bool differs) { used |= differs ? bit : 0U; };
    flag(0x04, format.numberFormat != plain.numberFormat);
    flag(0x08, format.font != plain.font);
    flag(0x10, format.horizontal != plain.horizontal || format.vertical != plain.vertical || format.wrap ||
                   format.shrinkToFit || format.indent != 0);
    flag(0x20, !(format.left == plain.left && format.right == plain.right && format.top == plain.top &&
                 format.bottom == plain.bottom));
    flag(0x40, !(format.fill == plain.fill));
    flag(0x80, !format.locked);
    return static_cast<std::uint8_t>(used);
}

} // namespace

void Looks::defineColor(const DescriptionLine& line)
{
    line.needWords(2, 2);
    const Rgb wanted = hexColor(line, line.words[1]);
    auto& palette = m_styles.palette;
    auto entry = std::ranges::find(palette, wanted);
    if (entry == palette.end()) {
        if (m_nextColor - firstPaletteColor >= static_cast<int>(palette.size()))
            line.fail("the palette has no room for another colour");
        entry = palette.begin() + (m_nextColor++ - firstPaletteColor);
        *entry = wanted;
        m_styles.ownPalette = true;
    }
    m_colors[line.words[0]] = static_cast<ColorIndex>(entry - palette.begin() + firstPaletteColor);
}

void Looks::defineNumberFormat(const DescriptionLine& line)
{
    line.needWords(2, std::numeric_limits<std::size_t>::max());
    m_numberFormats[line.words[0]] = m_styles.numberFormatFor(line.rest[1]);
}

void Looks::defineStyle(const DescriptionLine& line)
{
    line.needWords(2, std::numeric_limits<std::size_t>::max());
    m_styleChanges[line.words[0]] = changes(line, 1);
}

ColorIndex Looks::color(const DescriptionLine& line, std::size_t word) const
{
    return named(m_colors, line, word, "colour");
}

Border Looks::border(const DescriptionLine& line, std::size_t firstWord) const
{
    return {named(borderStyles, line, firstWord, "line style"), color(line, firstWord + 1)};
}

std::vector<LookChange> Looks::changes(const DescriptionLine& line, std::size_t firstWord) const
{
    std::vector<LookChange> changes;
    for (std::size_t at = firstWord; at < line.words.size(); ++at) {
        const std::string& word = line.words[at];
        if (const auto plain = plainAttributes().find(word); plain != plainAttributes().end()) {
            changes.push_back(plain->second);
        } else if (const auto style = m_styleChanges.find(word); style != m_styleChanges.end()) {
            changes.insert(changes.end(), style->second.begin(), style->second.end());
        } else if (word == "size") {
            const auto twips = static_cast<std::uint16_t>(numberWithin(line, ++at, 1, 400) * twipsPerPoint);
            changes.emplace_back([twips](CellLook& look) { look.font.heightTwips = twips; });
        } else if (word == "indent") {
            const auto steps = static_cast<std::uint8_t>(numberWithin(line, ++at, 0, 15));
            changes.emplace_back([steps](CellLook& look) { look.format.indent = steps; });
        } else if (word == "ink") {
            changes.emplace_back([ink = color(line, ++at)](CellLook& look) { look.font.color = ink; });
        } else if (word == "fill") {
            constexpr std::uint8_t solid = 1;
            const engine::Fill fill{solid, color(line, ++at), engine::windowTextColor};
            changes.emplace_back([fill](CellLook& look) { look.format.fill = fill; });
        } else if (word == "format") {
            const std::uint16_t format = named(m_numberFormats, line, ++at, "number format");
            changes.emplace_back([format](CellLook& look) { look.format.numberFormat = format; });
        } else if (word == "line") {
            Border CellFormat::*const side = named(borderSides, line, at + 1, "side");
            changes.emplace_back([side, border = border(line, at + 2)](CellLook& look) { look.format.*side = border; });
            at += 3;
        } else {
            line.fail("\"" + word + "\" is neither an attribute nor a style");
        }
    }
    return changes;
}

std::uint16_t Looks::formatFor(const CellLook& look)
{
    CellFormat format = look.format;
    format.font = m_styles.fontFor(look.font);
    format.usedAttributes = usedAttributes(format);
    return m_styles.formatFor(format);
}

} // namespace wagemill
