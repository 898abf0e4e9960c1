#include "drawing/DrawingFile.h"

#include "app/base/Bytes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <concepts>
#include <limits>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>

namespace wagemill {

namespace {

constexpr std::array<char, 7> signature = {'W', 'G', 'M', 'D', 'R', 'A', 'W'};
constexpr std::uint8_t version = 1;
constexpr std::size_t checksumBytes = 8;
constexpr double maxLength = 1e8;

// The one description of the file form, which reader and writer follow alike: the members of each record, and the
// largest value of each whole number.

template <class Record>
auto membersOf(Record& record)
{
    using Plain = std::remove_const_t<Record>; // to be read into, or written
    if constexpr (std::same_as<Plain, drawing::Rect>)
        return std::tie(record.left, record.top, record.width, record.height);
    else if constexpr (std::same_as<Plain, drawing::Color>)
        return std::tie(record.red, record.green, record.blue);
    else if constexpr (std::same_as<Plain, drawing::Fill>)
        return std::tie(record.area, record.color);
    else if constexpr (std::same_as<Plain, drawing::Line>)
        return std::tie(record.x1, record.y1, record.x2, record.y2, record.style, record.color);
    else if constexpr (std::same_as<Plain, drawing::Font>)
        return std::tie(record.name, record.heightTwips, record.bold, record.italic, record.strikeout,
                        record.underline);
    else if constexpr (std::same_as<Plain, drawing::Text>)
        return std::tie(record.cell, record.room, record.text, record.font, record.color, record.align, record.vertical,
                        record.wrap, record.shrink, record.indent, record.hashesWhenTooWide, record.alwaysHashes,
                        record.shorterForms);
    else if constexpr (std::same_as<Plain, drawing::Drawing>)
        return std::tie(record.width, record.height, record.fills, record.lines, record.fonts, record.texts);
}

template <class Value>
constexpr std::uint64_t maxOf = std::numeric_limits<Value>::max();
template <>
constexpr auto maxOf<drawing::LineStyle> = static_cast<std::uint64_t>(drawing::LineStyle::SlantDashDot);
template <>
constexpr auto maxOf<drawing::Align> = static_cast<std::uint64_t>(drawing::Align::Right);
template <>
constexpr auto maxOf<drawing::VerticalAlign> = static_cast<std::uint64_t>(drawing::VerticalAlign::Bottom);

class Writer : public ByteWriter {
public:
    template <class Value>
    void item(const Value& value)
    {
        if constexpr (std::same_as<Value, double>)
            real(value);
        else if constexpr (sizeof value == 1)
            u8(static_cast<std::uint8_t>(value)); // most of them, and quicker
        else if constexpr (std::integral<Value>)
            number<sizeof value>(value);
        else
            std::apply([this](auto&... members) { (item(members), ...); }, membersOf(value));
    }
    void item(const std::string& text)
    {
        u32(static_cast<std::uint32_t>(text.size()));
        bytes(std::as_bytes(std::span(text)));
    }
    template <class Item>
    void item(const std::vector<Item>& items)
    {
        u32(static_cast<std::uint32_t>(items.size()));
        for (const Item& each : items)
            item(each);
    }
};

class Reader : public ByteReader {
public:
    using ByteReader::ByteReader;

    template <class Value>
    void item(Value& value)
    {
        if constexpr (std::same_as<Value, double>) {
            value = real();
            require(std::abs(value) <= maxLength); // not so for what is not a number
        } else if constexpr (std::integral<Value> || std::is_enum_v<Value>) {
            const std::uint64_t read = number<sizeof value>();
            require(read <= maxOf<Value>);
            value = static_cast<Value>(read);
        } else {
            std::apply([this](auto&... members) { (item(members), ...); }, membersOf(value));
        }
    }
    void item(std::string& text)
    {
        const auto taken = bytes(u32());
        text.assign(reinterpret_cast<const char*>(taken.data()), taken.size());
    }
    template <class Item>
    void item(std::vector<Item>& items)
    {
        // One by one: what a damaged count asks for is not there to be read.
        for (std::uint32_t left = u32(); left > 0; --left)
            item(items.emplace_back());
    }
    void require(bool isSound) const
    {
        if (!isSound)
            throw DamagedFile("the drawing is damaged at byte " + std::to_string(position()));
    }
};

} // namespace

std::vector<std::byte> drawingFile(const drawing::Drawing& drawing)
{
    Writer writer;
    writer.bytes(std::as_bytes(std::span(signature)));
    writer.u8(version);
    writer.item(drawing);
    writer.u64(drawingChecksum(writer.view()));
    return writer.take();
}

bool isDrawingFile(std::span<const std::byte> file)
{
    const auto expected = std::as_bytes(std::span(signature));
    return file.size() > expected.size() && std::ranges::equal(file.first(expected.size()), expected);
}

drawing::Drawing readDrawingFile(std::span<const std::byte> file)
{
    if (!isDrawingFile(file))
        throw std::runtime_error("it is not a drawing");
    if (file[signature.size()] != std::byte{version})
        throw std::runtime_error("the drawing was written by another version of Wagemill");
    const std::size_t begin = signature.size() + 1;
    if (file.size() < begin + checksumBytes)
        throw std::runtime_error("the drawing is cut off");
    const auto contents = file.first(file.size() - checksumBytes);
    if (ByteReader(file.last(checksumBytes)).u64() != drawingChecksum(contents))
        throw std::runtime_error("the drawing is damaged or cut off");

    Reader reader(contents.subspan(begin));
    drawing::Drawing drawing;
    reader.item(drawing);
    reader.require(reader.atEnd());
    reader.require(std::ranges::all_of(drawing.texts,
                                       [&](const drawing::Text& text) { return text.font < drawing.fonts.size(); }));
    return drawing;
}

std::uint64_t drawingChecksum(std::span<const std::byte> bytes)
{
    constexpr std::uint64_t prime = 0x100000001B3;
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const std::byte byte : bytes)
        hash = (hash ^ std::to_integer<std::uint64_t>(byte)) * prime;
    return hash;
}

} // namespace wagemill
