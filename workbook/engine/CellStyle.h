#pragma once

#include "drawing/Drawing.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace wagemill::engine {

/// An index into the workbook's colours ([MS-XLS] 2.5.161 Icv): 0 to 7 fixed, 8 to 63 the palette, and the following.
using ColorIndex = std::uint16_t;
inline constexpr ColorIndex windowTextColor = 64;
inline constexpr ColorIndex windowBackgroundColor = 65;
inline constexpr ColorIndex automaticFontColor = 0x7FFF;

using Rgb = drawing::Color;

struct Font {
    std::string name = "Arial";
    std::uint16_t heightTwips = 200; ///< a twentieth of a point
    std::uint16_t weight = 400;      ///< 700 is bold
    bool italic = false;
    bool strikeout = false;
    std::uint8_t underline = 0; ///< 0 none, 1 single, 2 double, 0x21 and 0x22 the accounting forms
    std::uint16_t superSubscript = 0;
    std::uint8_t family = 0;
    std::uint8_t characterSet = 0;
    std::uint8_t otherFlags = 0; ///< outline, shadow and the like, kept as they came (bits 4 to 7 of the flags)
    ColorIndex color = automaticFontColor;

    bool operator==(const Font&) const = default;
};

/// Values as in the file ([MS-XLS] 2.5.249 XF).
enum class HorizontalAlignment : std::uint8_t {
    General,
    Left,
    Center,
    Right,
    Fill,
    Justify,
    CenterAcrossSelection,
    Distributed,
};
enum class VerticalAlignment : std::uint8_t { Top, Center, Bottom, Justify, Distributed };

using BorderStyle = drawing::LineStyle;

struct Border {
    BorderStyle style = BorderStyle::None;
    ColorIndex color = windowTextColor;

    bool operator==(const Border&) const = default;
};

/// Fill pattern 0 is none, 1 solid (in the pattern colour), 2 to 18 hatched.
struct Fill {
    std::uint8_t pattern = 0;
    ColorIndex patternColor = windowTextColor;
    ColorIndex backgroundColor = windowBackgroundColor;

    bool operator==(const Fill&) const = default;
};

/// The file format's own limits.
inline constexpr std::size_t maxFormats = 4050;
inline constexpr std::size_t maxFonts = 510;
/// Stands for the parent of a format that is a named style's own.
inline constexpr std::uint16_t noParent = 0xFFF;

/// How a cell looks: one entry of the workbook's table of formats (an XF of the file).
struct CellFormat {
    std::uint16_t font = 0;         ///< index into StyleTable::fonts
    std::uint16_t numberFormat = 0; ///< identifier, see StyleTable::numberFormatCode
    bool locked = true;
    bool hidden = false;
    bool isStyle = false;     ///< a named style's format; no cell may use it
    bool quotePrefix = false; ///< the text was typed after an apostrophe
    std::uint16_t parent = 0; ///< index of the style's format; 0xFFF for a style itself
    HorizontalAlignment horizontal = HorizontalAlignment::General;
    VerticalAlignment vertical = VerticalAlignment::Bottom;
    bool wrap = false;
    bool shrinkToFit = false;
    std::uint8_t rotation = 0;
    std::uint8_t indent = 0;         ///< 0 to 15 steps
    std::uint8_t readingOrder = 0;   ///< 0 by context, 1 left to right, 2 right to left
    std::uint8_t usedAttributes = 0; ///< bits 2 to 7 as in the file: number, font, alignment, border, fill, protection
    Border left = {}, right = {}, top = {}, bottom = {}, diagonal = {};
    std::uint8_t diagonalDirections = 0; ///< bit 0 down, bit 1 up
    Fill fill = {};

    bool operator==(const CellFormat&) const = default;
};

/// The default cell format: the one of every cell, row and column that has no format of its own.
inline constexpr std::uint16_t defaultCellFormat = 15;

/// First identifier that number formats of our own may take; those below are built in ([MS-XLS] 2.4.126 Format).
inline constexpr std::uint16_t firstOwnNumberFormat = 164;

/// The code of a built-in number format in its United States form, "General" where there is none of that identifier.
std::string_view builtInNumberFormat(std::uint16_t identifier);

/// Colour indices 8 to 63 of a new workbook ([MS-XLS] 2.5.161 Icv).
const std::array<Rgb, 56>& standardPalette();

/// The place of `wanted` in the list, added at the end when it is not there.
template <class Element, class Wanted>
std::uint16_t placeIn(std::vector<Element>& list, const Wanted& wanted)
{
    const auto found = std::ranges::find(list, wanted);
    const auto place = static_cast<std::uint16_t>(found - list.begin());
    if (found == list.end())
        list.emplace_back(wanted);
    return place;
}

/// Fonts, number formats, cell formats and colours of one workbook, as the file keeps them: cells name a format by its
/// index, equal formats are shared. Indices never change once given out.
class StyleTable {
public:
    /// The 21 formats, four fonts and standard colours that every new workbook begins with.
    StyleTable();

    std::vector<Font> fonts;
    std::map<std::uint16_t, std::string> numberFormats; ///< codes written in the file, by identifier
    std::vector<CellFormat> formats;
    std::array<Rgb, 56> palette = standardPalette(); ///< written to the file where it differs

    /// The code of a number format, from the file or built in.
    std::string_view numberFormatCode(std::uint16_t identifier) const;
    /// The identifier of a code; an unknown code is given a new one.
    std::uint16_t numberFormatFor(std::string_view code);
    /// The index of an equal cell format, added when missing. Throws std::length_error beyond 4050 formats.
    std::uint16_t formatFor(const CellFormat& format);
    /// The index of an equal font, added when missing. Throws std::length_error beyond 510 fonts.
    std::uint16_t fontFor(const Font& font);

    /// The cell format at `index`, the default one when there is none.
    const CellFormat& format(std::uint16_t index) const;
    const Font& fontOf(const CellFormat& format) const;
    /// The red, green and blue of a colour; automatic colours answer `automatic`.
    Rgb rgb(ColorIndex color, Rgb automatic) const;
};

} // namespace wagemill::engine
