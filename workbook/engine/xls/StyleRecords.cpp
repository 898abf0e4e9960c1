#include "workbook/engine/xls/StyleRecords.h"

#include "app/base/text/Unicode.h"
#include "workbook/engine/xls/BiffRecords.h"
#include "workbook/engine/xls/RecordStrings.h"

#include <algorithm>

namespace wagemill::engine::xls {

namespace {

constexpr std::uint16_t missingFileFont = 4;
constexpr std::uint16_t italicFlag = 0x02;
constexpr std::uint16_t strikeoutFlag = 0x08;
constexpr std::uint16_t otherFontFlags = 0xF0;
constexpr ColorIndex lastFontColor = 0x51;
constexpr std::size_t longestFontName = 31;

/// `count` bits of `value` from bit `first` on.
std::uint32_t bits(std::uint32_t value, unsigned first, unsigned count)
{
    return value >> first & ((1U << count) - 1U);
}

bool isUnderline(std::uint8_t underline)
{
    return underline <= 2 || underline == 0x21 || underline == 0x22;
}

std::string shortenedFontName(const std::string& name)
{
    std::u16string units = toUtf16(name);
    std::erase(units, u'\0');
    units.resize(std::min(units.size(), longestFontName));
    return units.empty() ? "Arial" : toUtf8(units);
}

Border border(std::uint32_t style, std::uint32_t color)
{
    if (style == 0 || style > static_cast<std::uint32_t>(BorderStyle::SlantDashDot))
        return {};
    return {static_cast<BorderStyle>(style),
            color > windowBackgroundColor ? windowTextColor : static_cast<ColorIndex>(color)};
}

ColorIndex fillColor(std::uint32_t color, ColorIndex automatic)
{
    return color > windowBackgroundColor ? automatic : static_cast<ColorIndex>(color);
}

std::uint32_t styleBits(const Border& border)
{
    return static_cast<std::uint32_t>(border.style);
}

std::uint32_t colorBits(const Border& border)
{
    return border.style == BorderStyle::None ? 0U : border.color & 0x7FU;
}

} // namespace

std::uint16_t fontOfFileIndex(std::uint16_t fileIndex)
{
    if (fileIndex == missingFileFont)
        return 0;
    return fileIndex < missingFileFont ? fileIndex : static_cast<std::uint16_t>(fileIndex - 1);
}

std::uint16_t fileIndexOfFont(std::uint16_t font)
{
    return font < missingFileFont ? font : static_cast<std::uint16_t>(font + 1);
}

Font readFont(ByteReader& source)
{
    Font font;
    font.heightTwips = std::clamp<std::uint16_t>(source.u16(), 20, 8191);
    const std::uint16_t flags = source.u16();
    font.italic = (flags & italicFlag) != 0;
    font.strikeout = (flags & strikeoutFlag) != 0;
    font.otherFlags = static_cast<std::uint8_t>(flags & otherFontFlags);
    const ColorIndex color = source.u16();
    font.color = color <= lastFontColor ? color : automaticFontColor;
    font.weight = std::clamp<std::uint16_t>(source.u16(), 100, 1000);
    const std::uint16_t script = source.u16();
    font.superSubscript = script <= 2 ? script : std::uint16_t{0};
    const std::uint8_t underline = source.u8();
    font.underline = isUnderline(underline) ? underline : std::uint8_t{0};
    const std::uint8_t family = source.u8();
    font.family = family <= 5 ? family : std::uint8_t{0};
    font.characterSet = source.u8();
    source.skip(1);
    font.name = shortenedFontName(readShortString(source));
    return font;
}

void writeFont(RecordWriter& target, const Font& font)
{
    ByteWriter& data = target.begin(record::font);
    data.u16(font.heightTwips);
    data.u16(static_cast<std::uint16_t>((font.italic ? italicFlag : 0) | (font.strikeout ? strikeoutFlag : 0) |
                                        (font.otherFlags & otherFontFlags)));
    data.u16(font.color);
    data.u16(font.weight);
    data.u16(font.superSubscript);
    data.u8(font.underline);
    data.u8(font.family);
    data.u8(font.characterSet);
    data.u8(0);
    writeShortString(data, font.name);
    target.finish();
}

CellFormat readCellFormat(ByteReader& source)
{
    CellFormat format;
    format.font = fontOfFileIndex(source.u16());
    format.numberFormat = source.u16();
    const std::uint16_t flags = source.u16();
    format.locked = bits(flags, 0, 1) != 0;
    format.hidden = bits(flags, 1, 1) != 0;
    format.isStyle = bits(flags, 2, 1) != 0;
    format.quotePrefix = !format.isStyle && bits(flags, 3, 1) != 0;
    format.parent = static_cast<std::uint16_t>(bits(flags, 4, 12));
    const std::uint8_t alignment = source.u8();
    format.horizontal = static_cast<HorizontalAlignment>(bits(alignment, 0, 3));
    format.wrap = bits(alignment, 3, 1) != 0;
    const std::uint32_t vertical = bits(alignment, 4, 3);
    format.vertical = vertical <= 4 ? static_cast<VerticalAlignment>(vertical) : VerticalAlignment::Bottom;
    const std::uint8_t rotation = source.u8();
    format.rotation = rotation <= 180 || rotation == 255 ? rotation : std::uint8_t{0};
    const std::uint8_t indentation = source.u8();
    format.indent = static_cast<std::uint8_t>(bits(indentation, 0, 4));
    format.shrinkToFit = bits(indentation, 4, 1) != 0;
    const std::uint32_t readingOrder = bits(indentation, 6, 2);
    format.readingOrder = readingOrder <= 2 ? static_cast<std::uint8_t>(readingOrder) : std::uint8_t{0};
    format.usedAttributes = static_cast<std::uint8_t>(source.u8() & 0xFCU);
    const std::uint32_t sides = source.u32();
    format.left = border(bits(sides, 0, 4), bits(sides, 16, 7));
    format.right = border(bits(sides, 4, 4), bits(sides, 23, 7));
    format.diagonalDirections = static_cast<std::uint8_t>(bits(sides, 30, 2));
    const std::uint32_t rest = source.u32();
    format.top = border(bits(sides, 8, 4), bits(rest, 0, 7));
    format.bottom = border(bits(sides, 12, 4), bits(rest, 7, 7));
    format.diagonal = border(bits(rest, 21, 4), bits(rest, 14, 7));
    const std::uint32_t pattern = bits(rest, 26, 6);
    format.fill.pattern = pattern <= 18 ? static_cast<std::uint8_t>(pattern) : std::uint8_t{0};
    const std::uint16_t colors = source.u16();
    format.fill.patternColor = fillColor(bits(colors, 0, 7), windowTextColor);
    format.fill.backgroundColor = fillColor(bits(colors, 7, 7), windowBackgroundColor);
    return format;
}

void writeCellFormat(RecordWriter& target, const CellFormat& format)
{
    ByteWriter& data = target.begin(record::extendedFormat);
    data.u16(fileIndexOfFont(format.font));
    data.u16(format.numberFormat);
    data.u16(static_cast<std::uint16_t>((format.locked ? 1 : 0) | (format.hidden ? 2 : 0) | (format.isStyle ? 4 : 0) |
                                        (format.quotePrefix && !format.isStyle ? 8 : 0) | format.parent << 4));
    data.u8(static_cast<std::uint8_t>(static_cast<unsigned>(format.horizontal) | (format.wrap ? 8U : 0U) |
                                      static_cast<unsigned>(format.vertical) << 4U));
    data.u8(format.rotation);
    data.u8(static_cast<std::uint8_t>((format.indent & 0xFU) | (format.shrinkToFit ? 0x10U : 0U) |
                                      static_cast<unsigned>(format.readingOrder) << 6U));
    data.u8(format.usedAttributes);
    data.u32(styleBits(format.left) | styleBits(format.right) << 4U | styleBits(format.top) << 8U |
             styleBits(format.bottom) << 12U | colorBits(format.left) << 16U | colorBits(format.right) << 23U |
             static_cast<std::uint32_t>(format.diagonalDirections) << 30U);
    data.u32(colorBits(format.top) | colorBits(format.bottom) << 7U | colorBits(format.diagonal) << 14U |
             styleBits(format.diagonal) << 21U | static_cast<std::uint32_t>(format.fill.pattern) << 26U);
    data.u16(
        static_cast<std::uint16_t>((format.fill.patternColor & 0x7FU) | (format.fill.backgroundColor & 0x7FU) << 7U));
    target.finish();
}

bool isWrittenNumberFormat(std::uint16_t identifier)
{
    return (identifier >= 5 && identifier <= 8) || (identifier >= 23 && identifier <= 26) ||
           (identifier >= 41 && identifier <= 44) || (identifier >= 63 && identifier <= 66) ||
           (identifier >= firstOwnNumberFormat && identifier <= 392);
}

void readPalette(ByteReader& source, StyleTable& styles)
{
    const std::size_t colors = std::min<std::size_t>(source.u16(), styles.palette.size());
    const auto before = styles.palette;
    for (std::size_t index = 0; index < colors; ++index) {
        Rgb& color = styles.palette[index];
        color.red = source.u8();
        color.green = source.u8();
        color.blue = source.u8();
        source.skip(1);
    }
    styles.ownPalette = styles.palette != before;
}

void writePalette(RecordWriter& target, const StyleTable& styles)
{
    ByteWriter& data = target.begin(record::palette);
    data.u16(static_cast<std::uint16_t>(styles.palette.size()));
    for (const Rgb& color : styles.palette) {
        data.u8(color.red);
        data.u8(color.green);
        data.u8(color.blue);
        data.u8(0);
    }
    target.finish();
}

} // namespace wagemill::engine::xls
