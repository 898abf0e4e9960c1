#include "resources/CellLook.h"

#include <algorithm>
#include <sstream>

namespace wagemill {

namespace {

using engine::Border;
using engine::BorderStyle;
using engine::CellFormat;
using engine::ColorIndex;

constexpr ColorIndex firstPaletteColor = 8;

const std::map<std::string, BorderStyle> borderStyles = {{"thin", BorderStyle::Thin}, {"thick", BorderStyle::Thick}};

const std::map<std::string, Border CellFormat::*> borderSides = {{"top", &CellFormat::top},
                                                                 {"bottom", &CellFormat::bottom}};

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

/// An attribute of one word.
auto set(auto CellFormat::*member, auto value)
{
    return [member, value](std::istream& /*line*/, CellLook& look) { look.format.*member = value; };
}

} // namespace

std::string restOf(std::istream& line)
{
    std::string rest;
    if (!std::getline(line >> std::ws, rest))
        throw std::runtime_error("a word is missing");
    return rest;
}

Looks::Looks(engine::StyleTable& styles) : m_styles(styles)
{
    m_attributes = {
        {"left", set(&CellFormat::horizontal, engine::HorizontalAlignment::Left)},
        {"right", set(&CellFormat::horizontal, engine::HorizontalAlignment::Right)},
        {"middle", set(&CellFormat::vertical, engine::VerticalAlignment::Center)},
        {"wrap", set(&CellFormat::wrap, true)},
        {"shrink", set(&CellFormat::shrinkToFit, true)},
        {"unlocked", set(&CellFormat::locked, false)},
        {"bold", [](std::istream&, CellLook& look) { look.font.weight = 700; }},
        {"size",
         [](std::istream& line, CellLook& look) {
             constexpr int twipsPerPoint = 20;
             look.font.heightTwips = static_cast<std::uint16_t>(nextWord<int>(line) * twipsPerPoint);
         }},
        {"indent", [](std::istream& line,
                      CellLook& look) { look.format.indent = static_cast<std::uint8_t>(nextWord<int>(line)); }},
        {"ink", [this](std::istream& line, CellLook& look) { look.font.color = named(m_colors, line); }},
        {"fill",
         [this](std::istream& line, CellLook& look) {
             constexpr std::uint8_t solid = 1;
             look.format.fill = {solid, named(m_colors, line), engine::windowTextColor};
         }},
        {"format",
         [this](std::istream& line, CellLook& look) { look.format.numberFormat = named(m_numberFormats, line); }},
        {"line",
         [this](std::istream& line, CellLook& look) {
             Border& side = look.format.*named(borderSides, line);
             side = border(line);
         }},
    };
}

void Looks::defineColor(std::istream& line)
{
    const auto name = nextWord<std::string>(line);
    const auto value = nextWord<std::uint32_t>(line >> std::hex);
    const auto channel = [value](unsigned shift) { return static_cast<std::uint8_t>((value >> shift) & 0xFFU); };
    const engine::Rgb wanted = {channel(16), channel(8), channel(0)};
    auto& palette = m_styles.palette;
    auto entry = std::ranges::find(palette, wanted);
    if (entry == palette.end()) {
        entry = palette.begin() + (m_nextColor++ - firstPaletteColor);
        *entry = wanted;
        m_styles.ownPalette = true;
    }
    m_colors[name] = static_cast<ColorIndex>(entry - palette.begin() + firstPaletteColor);
}

void Looks::defineNumberFormat(std::istream& line)
{
    const auto name = nextWord<std::string>(line);
    m_numberFormats[name] = m_styles.numberFormatFor(restOf(line));
}

void Looks::defineStyle(std::istream& line)
{
    const auto name = nextWord<std::string>(line);
    const std::string attributes = restOf(line);
    CellLook unused;
    apply(attributes, unused); // so that a wrong one is reported here
    m_attributes[name] = [this, attributes](std::istream&, CellLook& look) { apply(attributes, look); };
}

void Looks::apply(const std::string& attributes, CellLook& look) const
{
    std::istringstream words(attributes);
    while (!(words >> std::ws).eof())
        named(m_attributes, words)(words, look);
}

Border Looks::border(std::istream& line) const
{
    return {named(borderStyles, line), named(m_colors, line)};
}

std::uint16_t Looks::formatFor(const CellLook& look)
{
    CellFormat format = look.format;
    format.font = m_styles.fontFor(look.font);
    format.usedAttributes = usedAttributes(format);
    return m_styles.formatFor(format);
}

} // namespace wagemill
