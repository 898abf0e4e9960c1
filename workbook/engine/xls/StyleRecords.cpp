#include "app/base/text/Unicode.h"
#include "workbook/engine/xls/Substreams.h"

#include <algorithm>
#include <array>

namespace wagemill::engine::xls {

namespace {

constexpr std::uint16_t missingFileFont = 4;
constexpr ColorIndex lastFontColor = 0x51;
constexpr std::size_t maxFontName = 31;

void fontFields(auto form, auto& font)
{
    form.u16(font.heightTwips);
    form.bits16(Bits{1, 1, font.italic}, Bits{3, 1, font.strikeout}, Bits{4, 4, font.otherFlags});
    form.u16(font.color, font.weight, font.superSubscript);
    form.u8(font.underline, font.family, font.characterSet);
    form.zeros(1);
}

void cellFormatFields(auto form, auto& format)
{
    form.u16(format.font, format.numberFormat);
    form.bits16(Bits{0, 1, format.locked}, Bits{1, 1, format.hidden}, Bits{2, 1, format.isStyle},
                Bits{3, 1, format.quotePrefix}, Bits{4, 12, format.parent});
    form.bits8(Bits{0, 3, format.horizontal}, Bits{3, 1, format.wrap}, Bits{4, 3, format.vertical});
    form.u8(format.rotation);
    form.bits8(Bits{0, 4, format.indent}, Bits{4, 1, format.shrinkToFit}, Bits{6, 2, format.readingOrder});
    form.u8(format.usedAttributes);
    form.bits32(Bits{0, 4, format.left.style}, Bits{4, 4, format.right.style}, Bits{8, 4, format.top.style},
                Bits{12, 4, format.bottom.style}, Bits{16, 7, format.left.color}, Bits{23, 7, format.right.color},
                Bits{30, 2, format.diagonalDirections});
    form.bits32(Bits{0, 7, format.top.color}, Bits{7, 7, format.bottom.color}, Bits{14, 7, format.diagonal.color},
                Bits{21, 4, format.diagonal.style}, Bits{26, 6, format.fill.pattern});
    form.bits16(Bits{0, 7, format.fill.patternColor}, Bits{7, 7, format.fill.backgroundColor});
}

void colorFields(auto form, auto& color)
{
    form.u8(color.red, color.green, color.blue);
    form.zeros(1);
}

auto bordersOf(auto& format)
{
    return std::array{&format.left, &format.right, &format.top, &format.bottom, &format.diagonal};
}

std::string shortenedFontName(const std::string& name)
{
    std::u16string units = toUtf16(name);
    std::erase(units, u'\0');
    units.resize(std::min(units.size(), maxFontName));
    return units.empty() ? "Arial" : toUtf8(units);
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
    fontFields(FieldReader(source), font);
    font.heightTwips = std::clamp<std::uint16_t>(font.heightTwips, 20, 8191);
    font.weight = std::clamp<std::uint16_t>(font.weight, 100, 1000);
    if (font.color > lastFontColor)
        font.color = automaticFontColor;
    if (font.superSubscript > 2)
        font.superSubscript = 0;
    if (font.underline > 2 && font.underline != 0x21 && font.underline != 0x22)
        font.underline = 0;
    if (font.family > 5)
        font.family = 0;
    font.name = shortenedFontName(readShortString(source));
    return font;
}

void writeFont(RecordWriter& target, const Font& font)
{
    ByteWriter& data = target.begin(record::font);
    fontFields(FieldWriter(data), font);
    writeShortString(data, font.name);
}

CellFormat readCellFormat(ByteReader& source)
{
    CellFormat format;
    cellFormatFields(FieldReader(source), format);
    format.font = fontOfFileIndex(format.font);
    format.quotePrefix = format.quotePrefix && !format.isStyle;
    if (format.vertical > VerticalAlignment::Distributed)
        format.vertical = VerticalAlignment::Bottom;
    if (format.rotation > 180 && format.rotation != 255)
        format.rotation = 0;
    if (format.readingOrder > 2)
        format.readingOrder = 0;
    format.usedAttributes &= 0xFC;
    for (Border* const border : bordersOf(format))
        if (border->style == BorderStyle::None || border->style > BorderStyle::SlantDashDot)
            *border = {};
        else if (border->color > windowBackgroundColor)
            border->color = windowTextColor;
    if (format.fill.pattern > 18)
        format.fill.pattern = 0;
    if (format.fill.patternColor > windowBackgroundColor)
        format.fill.patternColor = windowTextColor;
    if (format.fill.backgroundColor > windowBackgroundColor)
        format.fill.backgroundColor = windowBackgroundColor;
    return format;
}

void writeCellFormat(RecordWriter& target, CellFormat format)
{
    format.font = fileIndexOfFont(format.font);
    for (Border* const border : bordersOf(format))
        if (border->style == BorderStyle::None)
            border->color = 0;
    cellFormatFields(FieldWriter(target.begin(record::extendedFormat)), format);
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
    for (Rgb& color : std::span(styles.palette).first(colors))
        colorFields(FieldReader(source), color);
}

void writePalette(RecordWriter& target, const StyleTable& styles)
{
    if (styles.palette == standardPalette())
        return;
    ByteWriter& data = target.begin(record::palette);
    data.u16(static_cast<std::uint16_t>(styles.palette.size()));
    for (const Rgb& color : styles.palette)
        colorFields(FieldWriter(data), color);
}

} // namespace wagemill::engine::xls
