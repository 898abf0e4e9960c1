#include "drawing/DrawingFile.h"

#include "app/base/Bytes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <concepts>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace wagemill {

namespace {

constexpr std::array<char, 7> signature = {'W', 'G', 'M', 'D', 'R', 'A', 'W'};
constexpr std::uint8_t version = 1;
constexpr std::size_t checksumBytes = 8;
constexpr double maxLength = 1e8;

class Writer : public ByteWriter {
public:
    template <class Value>
    void whole(Value value, std::uint64_t /*max*/)
    {
        if constexpr (sizeof value == 1)
            u8(static_cast<std::uint8_t>(value)); // most of them, and quicker
        else
            number<sizeof value>(static_cast<std::uint64_t>(value));
    }
    void length(double value) { real(value); }
    void text(const std::string& value)
    {
        u32(static_cast<std::uint32_t>(value.size()));
        bytes(std::as_bytes(std::span(value)));
    }
    template <class Item>
    void list(const std::vector<Item>& items)
    {
        u32(static_cast<std::uint32_t>(items.size()));
        for (const Item& item : items)
            transfer(*this, item);
    }
};

class Reader : public ByteReader {
public:
    using ByteReader::ByteReader;

    template <class Value>
    void whole(Value& value, std::uint64_t max)
    {
        const std::uint64_t read = number<sizeof value>();
        require(read <= max);
        value = static_cast<Value>(read);
    }
    void length(double& value)
    {
        value = real();
        require(std::abs(value) <= maxLength); // not so for what is not a number
    }
    void text(std::string& value)
    {
        const auto taken = bytes(u32());
        value.assign(reinterpret_cast<const char*>(taken.data()), taken.size());
    }
    template <class Item>
    void list(std::vector<Item>& items)
    {
        // One by one: what a damaged count asks for is not there to be read.
        for (std::uint32_t left = u32(); left > 0; --left)
            transfer(*this, items.emplace_back());
    }
    void require(bool isSound) const
    {
        if (!isSound)
            throw DamagedFile("the drawing is damaged at byte " + std::to_string(position()));
    }
};

// The one description of the file form, which reader and writer follow alike.

template <class Value, class Item>
concept Either = std::same_as<std::remove_const_t<Value>, Item>; ///< to be read into, or written

constexpr std::uint64_t anyByte = 0xFF;

void transfer(auto& form, Either<std::string> auto& text)
{
    form.text(text);
}

void transfer(auto& form, Either<drawing::Rect> auto& rect)
{
    for (auto* const length : {&rect.left, &rect.top, &rect.width, &rect.height})
        form.length(*length);
}

void transfer(auto& form, Either<drawing::Color> auto& color)
{
    for (auto* const part : {&color.red, &color.green, &color.blue})
        form.whole(*part, anyByte);
}

void transfer(auto& form, Either<drawing::Fill> auto& fill)
{
    transfer(form, fill.area);
    transfer(form, fill.color);
}

void transfer(auto& form, Either<drawing::Line> auto& line)
{
    for (auto* const length : {&line.x1, &line.y1, &line.x2, &line.y2})
        form.length(*length);
    form.whole(line.style, static_cast<std::uint64_t>(drawing::LineStyle::SlantDashDot));
    transfer(form, line.color);
}

void transfer(auto& form, Either<drawing::Font> auto& font)
{
    form.text(font.name);
    form.whole(font.heightTwips, std::numeric_limits<std::uint16_t>::max());
    for (auto* const isSet : {&font.bold, &font.italic, &font.strikeout, &font.underline})
        form.whole(*isSet, 1);
}

void transfer(auto& form, Either<drawing::Text> auto& text)
{
    transfer(form, text.cell);
    transfer(form, text.room);
    form.text(text.text);
    form.whole(text.font, std::numeric_limits<std::uint16_t>::max());
    transfer(form, text.color);
    form.whole(text.align, static_cast<std::uint64_t>(drawing::Align::Right));
    form.whole(text.vertical, static_cast<std::uint64_t>(drawing::VerticalAlign::Bottom));
    form.whole(text.wrap, 1);
    form.whole(text.shrink, 1);
    form.whole(text.indent, anyByte);
    form.whole(text.hashesWhenTooWide, 1);
    form.whole(text.alwaysHashes, 1);
    form.list(text.shorterForms);
}

void transfer(auto& form, Either<drawing::Drawing> auto& drawing)
{
    form.length(drawing.width);
    form.length(drawing.height);
    form.list(drawing.fills);
    form.list(drawing.lines);
    form.list(drawing.fonts);
    form.list(drawing.texts);
}

} // namespace

std::vector<std::byte> drawingFile(const drawing::Drawing& drawing)
{
    Writer writer;
    writer.bytes(std::as_bytes(std::span(signature)));
    writer.u8(version);
    transfer(writer, drawing);
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
    transfer(reader, drawing);
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
