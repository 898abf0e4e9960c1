#include "workbook/engine/xls/RecordStrings.h"

#include "app/base/text/Unicode.h"

#include <algorithm>
#include <stdexcept>

namespace wagemill::engine::xls {

namespace {

constexpr std::uint8_t wideFlag = 0x01;
constexpr std::uint8_t phoneticFlag = 0x04;
constexpr std::uint8_t richFlag = 0x08;

bool isAscii(std::string_view text)
{
    return std::ranges::all_of(text, [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

void writeCharacters(ByteWriter& target, const Characters& characters)
{
    target.u8(characters.wide ? wideFlag : std::uint8_t{0});
    characters.append(target, 0, characters.count);
}

} // namespace

Characters::Characters(std::string_view utf8)
{
    if (isAscii(utf8)) {
        latin1 = utf8;
        count = latin1.size();
        return;
    }
    units = toUtf16(utf8);
    count = units.size();
    wide = std::ranges::any_of(units, [](char16_t unit) { return unit > 0xFF; });
    if (!wide)
        std::ranges::transform(units, std::back_inserter(latin1),
                               [](char16_t unit) { return static_cast<char>(unit); });
}

void Characters::append(ByteWriter& target, std::size_t first, std::size_t length) const
{
    if (wide)
        for (const char16_t unit : std::u16string_view(units).substr(first, length))
            target.u16(unit);
    else
        target.bytes(std::as_bytes(std::span(latin1)).subspan(first, length));
}

std::string readCharacters(ByteReader& source, std::size_t count, bool wide)
{
    const auto bytes = source.bytes(wide ? count * 2 : count);
    if (!wide && std::ranges::all_of(bytes, [](std::byte byte) { return byte < std::byte{0x80}; }))
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    std::u16string units(count, u'\0');
    ByteReader reader(bytes);
    for (char16_t& unit : units)
        unit = wide ? reader.u16() : reader.u8();
    return toUtf8(units);
}

std::string readStringWithoutCount(ByteReader& source, std::size_t count)
{
    const std::uint8_t flags = source.u8();
    const std::size_t runs = (flags & richFlag) != 0 ? source.u16() : 0;
    const std::size_t phonetic = (flags & phoneticFlag) != 0 ? source.u32() : 0;
    std::string text = readCharacters(source, count, (flags & wideFlag) != 0);
    source.skip(runs * 4);
    source.skip(phonetic);
    return text;
}

std::string readShortString(ByteReader& source)
{
    const std::size_t count = source.u8();
    return readStringWithoutCount(source, count);
}

std::string readString(ByteReader& source)
{
    const std::size_t count = source.u16();
    return readStringWithoutCount(source, count);
}

std::string readLastString(ByteReader& source)
{
    const std::size_t count = source.u16();
    return source.remaining() == count ? readCharacters(source, count, false) : readStringWithoutCount(source, count);
}

void writeShortString(ByteWriter& target, std::string_view utf8)
{
    const Characters characters(utf8);
    if (characters.count > 0xFF)
        throw std::length_error("The text \"" + std::string(utf8.substr(0, 40)) +
                                "...\" is longer than 255 characters.");
    target.u8(static_cast<std::uint8_t>(characters.count));
    writeCharacters(target, characters);
}

void writeString(ByteWriter& target, std::string_view utf8)
{
    const Characters characters(utf8);
    if (characters.count > 0xFFFF)
        throw std::length_error("The text \"" + std::string(utf8.substr(0, 40)) +
                                "...\" is longer than 65535 characters.");
    target.u16(static_cast<std::uint16_t>(characters.count));
    writeCharacters(target, characters);
}

} // namespace wagemill::engine::xls
