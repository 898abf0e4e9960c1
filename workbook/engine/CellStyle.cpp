#include "workbook/engine/CellStyle.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace wagemill::engine {

namespace {

/// Built-in number formats, [MS-XLS] 2.4.126.
constexpr auto builtInFormats = std::to_array<std::pair<std::uint16_t, std::string_view>>({
    {0, "General"},
    {1, "0"},
    {2, "0.00"},
    {3, "#,##0"},
    {4, "#,##0.00"},
    {5, R"("$"#,##0_);\("$"#,##0\))"},
    {6, R"("$"#,##0_);[Red]\("$"#,##0\))"},
    {7, R"("$"#,##0.00_);\("$"#,##0.00\))"},
    {8, R"("$"#,##0.00_);[Red]\("$"#,##0.00\))"},
    {9, "0%"},
    {10, "0.00%"},
    {11, "0.00E+00"},
    {12, "# ?/?"},
    {13, R"(# ??/??)"},
    {14, "m/d/yy"},
    {15, "d-mmm-yy"},
    {16, "d-mmm"},
    {17, "mmm-yy"},
    {18, "h:mm AM/PM"},
    {19, "h:mm:ss AM/PM"},
    {20, "h:mm"},
    {21, "h:mm:ss"},
    {22, "m/d/yy h:mm"},
    {37, R"(#,##0_);\(#,##0\))"},
    {38, R"(#,##0_);[Red]\(#,##0\))"},
    {39, R"(#,##0.00_);\(#,##0.00\))"},
    {40, R"(#,##0.00_);[Red]\(#,##0.00\))"},
    {41, R"(_(* #,##0_);_(* \(#,##0\);_(* "-"_);_(@_))"},
    {42, R"(_("$"* #,##0_);_("$"* \(#,##0\);_("$"* "-"_);_(@_))"},
    {43, R"(_(* #,##0.00_);_(* \(#,##0.00\);_(* "-"??_);_(@_))"},
    {44, R"(_("$"* #,##0.00_);_("$"* \(#,##0.00\);_("$"* "-"??_);_(@_))"},
    {45, "mm:ss"},
    {46, "[h]:mm:ss"},
    {47, "mm:ss.0"},
    {48, "##0.0E+0"},
    {49, "@"},
});

/// Identifiers whose codes every workbook writes although they are built in: their text depends on the region.
constexpr auto alwaysWritten = std::to_array<std::uint16_t>({5, 6, 7, 8, 41, 42, 43, 44});

constexpr std::array<std::uint32_t, 56> standardColors = {
    0x000000, 0xFFFFFF, 0xFF0000, 0x00FF00, 0x0000FF, 0xFFFF00, 0xFF00FF, 0x00FFFF, 0x800000, 0x008000,
    0x000080, 0x808000, 0x800080, 0x008080, 0xC0C0C0, 0x808080, 0x9999FF, 0x993366, 0xFFFFCC, 0xCCFFFF,
    0x660066, 0xFF8080, 0x0066CC, 0xCCCCFF, 0x000080, 0xFF00FF, 0xFFFF00, 0x00FFFF, 0x800080, 0x800000,
    0x008080, 0x0000FF, 0x00CCFF, 0xCCFFFF, 0xCCFFCC, 0xFFFF99, 0x99CCFF, 0xFF99CC, 0xCC99FF, 0xFFCC99,
    0x3366FF, 0x33CCCC, 0x99CC00, 0xFFCC00, 0xFF9900, 0xFF6600, 0x666699, 0x969696, 0x003366, 0x339966,
    0x003300, 0x333300, 0x993300, 0x993366, 0x333399, 0x333333,
};

/// Colour indices that no palette changes: its first standard colours.
constexpr std::size_t fixedColors = 8;

/// Normal and the outline styles (0 to 14), the default cell format (15), Comma to Percent (16 to 20): the list that
/// the format prescribes, [MS-XLS] 2.5.282.
std::vector<CellFormat> firstFormats()
{
    std::vector<CellFormat> formats;
    const auto addStyle = [&formats](int font, std::uint16_t numberFormat, std::uint8_t usedAttributes) {
        formats.push_back({.font = static_cast<std::uint16_t>(font),
                           .numberFormat = numberFormat,
                           .isStyle = true,
                           .parent = noParent,
                           .usedAttributes = usedAttributes});
    };
    addStyle(0, 0, 0);
    for (int index = 1; index < defaultCellFormat; ++index)
        addStyle(index > 4 ? 0 : (index + 1) / 2, 0, 0xF4);
    formats.emplace_back();
    for (const std::uint16_t numberFormat : std::to_array<std::uint16_t>({43, 41, 44, 42, 9}))
        addStyle(1, numberFormat, 0xF8);
    return formats;
}

template <class Entry>
std::uint16_t limitedPlaceIn(std::vector<Entry>& table, const Entry& wanted, std::size_t max, const std::string& what)
{
    if (table.size() >= max && std::ranges::find(table, wanted) == table.end())
        throw std::length_error("The workbook has no room for another " + what + ".");
    return placeIn(table, wanted);
}

} // namespace

std::string_view builtInNumberFormat(std::uint16_t identifier)
{
    const auto found =
        std::ranges::find(builtInFormats, identifier, &std::pair<std::uint16_t, std::string_view>::first);
    return found == builtInFormats.end() ? "General" : found->second;
}

const std::array<Rgb, 56>& standardPalette()
{
    static const std::array<Rgb, 56> palette = [] {
        std::array<Rgb, 56> colors;
        std::ranges::transform(standardColors, colors.begin(), [](std::uint32_t color) {
            return Rgb{static_cast<std::uint8_t>(color >> 16U), static_cast<std::uint8_t>(color >> 8U),
                       static_cast<std::uint8_t>(color)};
        });
        return colors;
    }();
    return palette;
}

StyleTable::StyleTable() : fonts(4), formats(firstFormats())
{
    for (const std::uint16_t identifier : alwaysWritten)
        numberFormats.emplace(identifier, builtInNumberFormat(identifier));
}

std::string_view StyleTable::numberFormatCode(std::uint16_t identifier) const
{
    const auto found = numberFormats.find(identifier);
    return found == numberFormats.end() ? builtInNumberFormat(identifier) : std::string_view(found->second);
}

std::uint16_t StyleTable::numberFormatFor(std::string_view code)
{
    for (const auto& [identifier, known] : numberFormats)
        if (known == code)
            return identifier;
    for (const auto& [identifier, known] : builtInFormats)
        if (known == code && !numberFormats.contains(identifier))
            return identifier;
    const std::uint16_t last = numberFormats.empty() ? std::uint16_t{0} : numberFormats.rbegin()->first;
    if (last == 0xFFFF)
        throw std::length_error("The workbook has no room for another number format.");
    const std::uint16_t identifier = std::max(firstOwnNumberFormat, static_cast<std::uint16_t>(last + 1));
    numberFormats.emplace(identifier, code);
    return identifier;
}

std::uint16_t StyleTable::formatFor(const CellFormat& format)
{
    return limitedPlaceIn(formats, format, maxFormats, "cell format");
}

std::uint16_t StyleTable::fontFor(const Font& font)
{
    return limitedPlaceIn(fonts, font, maxFonts, "font");
}

const CellFormat& StyleTable::format(std::uint16_t index) const
{
    return formats[index < formats.size() ? index : defaultCellFormat];
}

const Font& StyleTable::fontOf(const CellFormat& format) const
{
    return fonts[format.font];
}

Rgb StyleTable::rgb(ColorIndex color, Rgb automatic) const
{
    if (color < fixedColors)
        return standardPalette()[color];
    const std::size_t index = color - fixedColors;
    return index < palette.size() ? palette[index] : automatic;
}

} // namespace wagemill::engine
