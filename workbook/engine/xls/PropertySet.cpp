#include "workbook/engine/xls/PropertySet.h"

#include "app/base/Utf8.h"
#include "workbook/engine/xls/ByteCursor.h"
#include "workbook/engine/xls/DamagedFile.h"
#include "workbook/engine/xls/RecordStrings.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

namespace wagemill::engine::xls {

namespace {

using FormatId = std::array<std::uint8_t, 16>;
constexpr FormatId summaryFormat = {0xE0, 0x85, 0x9F, 0xF2, 0xF9, 0x4F, 0x68, 0x10,
                                    0xAB, 0x91, 0x08, 0x00, 0x2B, 0x27, 0xB3, 0xD9};
constexpr FormatId documentSummaryFormat = {0x02, 0xD5, 0xCD, 0xD5, 0x9C, 0x2E, 0x1B, 0x10,
                                            0x93, 0x97, 0x08, 0x00, 0x2B, 0x2C, 0xF9, 0xAE};

// Types of values, [MS-OLEPS] 2.2.
constexpr std::uint16_t shortType = 0x02;
constexpr std::uint16_t textType = 0x1E;
constexpr std::uint16_t wideTextType = 0x1F;
constexpr std::uint16_t timeType = 0x40;

constexpr std::uint32_t codePageProperty = 1;
constexpr std::uint32_t mostProperties = 1000;

constexpr std::uint16_t utf16CodePage = 1200;
constexpr std::uint16_t westernCodePage = 1252;
constexpr std::uint16_t utf8CodePage = 65001;

struct TextProperty {
    std::uint32_t id;
    std::string DocumentProperties::*member;
};
constexpr auto textProperties = std::to_array<TextProperty>({
    {2, &DocumentProperties::title},
    {4, &DocumentProperties::author},
    {8, &DocumentProperties::lastAuthor},
    {18, &DocumentProperties::application},
});

struct TimeProperty {
    std::uint32_t id;
    std::uint64_t DocumentProperties::*member;
};
constexpr auto timeProperties = std::to_array<TimeProperty>({
    {12, &DocumentProperties::created},
    {13, &DocumentProperties::saved},
});

/// Code page 1252 from 0x80 to 0x9F; the rest is Latin-1. Zero where it has no character.
constexpr std::array<char16_t, 32> westernCharacters = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                        0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                                        0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                        0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

char16_t westernCharacter(std::uint8_t byte)
{
    if (byte < 0x80 || byte >= 0xA0)
        return byte;
    const char16_t character = westernCharacters[byte - 0x80U];
    return character == 0 ? char16_t{0xFFFD} : character;
}

/// Nothing when the code page lacks a character.
std::optional<std::string> westernText(std::string_view utf8)
{
    std::string text;
    for (const char16_t unit : toUtf16(utf8)) {
        if (unit < 0x80 || (unit >= 0xA0 && unit <= 0xFF)) {
            text.push_back(static_cast<char>(unit));
            continue;
        }
        const auto found = std::ranges::find(westernCharacters, unit);
        if (found == westernCharacters.end())
            return std::nullopt;
        text.push_back(static_cast<char>(0x80 + (found - westernCharacters.begin())));
    }
    return text;
}

std::string decodedText(std::span<const std::byte> bytes, std::uint16_t codePage)
{
    ByteReader reader(bytes);
    std::string text;
    if (codePage == utf16CodePage) {
        text = readCharacters(reader, bytes.size() / 2, true);
    } else if (codePage == utf8CodePage) {
        text = toUtf8(toUtf16({reinterpret_cast<const char*>(bytes.data()), bytes.size()}));
    } else {
        std::u16string units;
        while (!reader.atEnd())
            units.push_back(westernCharacter(reader.u8()));
        text = toUtf8(units);
    }
    return text.substr(0, text.find('\0'));
}

struct Property {
    std::uint32_t id;
    std::size_t offset; ///< in the section
};

/// The first section of a property set stream.
class PropertySection {
public:
    explicit PropertySection(std::span<const std::byte> stream)
    {
        ByteReader reader(stream);
        reader.seek(44);
        const std::size_t offset = reader.u32();
        reader.seek(offset);
        m_section = reader.rest();
        ByteReader section(m_section);
        section.skip(4);
        const std::uint32_t count = std::min(section.u32(), mostProperties);
        for (std::uint32_t index = 0; index < count; ++index) {
            const std::uint32_t id = section.u32();
            m_properties.push_back({id, section.u32()});
        }
    }

    /// The value behind its type; nothing when the property is missing.
    std::optional<ByteReader> value(std::uint32_t id, std::uint16_t& type) const
    {
        const auto found = std::ranges::find(m_properties, id, &Property::id);
        if (found == m_properties.end())
            return std::nullopt;
        ByteReader reader(m_section);
        reader.seek(found->offset);
        type = reader.u16();
        reader.skip(2);
        return reader;
    }

private:
    std::span<const std::byte> m_section;
    std::vector<Property> m_properties;
};

void readText(const PropertySection& section, std::uint32_t id, std::uint16_t codePage, std::string& target)
{
    std::uint16_t type = 0;
    auto value = section.value(id, type);
    if (!value || (type != textType && type != wideTextType))
        return;
    const std::size_t count = value->u32();
    target = type == textType ? decodedText(value->bytes(count), codePage)
                              : decodedText(value->bytes(count * 2), utf16CodePage);
}

/// A property set stream in the making: one section.
class PropertySetWriter {
public:
    explicit PropertySetWriter(std::uint16_t codePage) : m_codePage(codePage)
    {
        begin(codePageProperty, shortType);
        m_values.u32(codePage);
    }

    void time(std::uint32_t id, std::uint64_t time)
    {
        begin(id, timeType);
        m_values.u64(time);
    }
    void text(std::uint32_t id, const std::string& utf8)
    {
        const std::string bytes = m_codePage == westernCodePage ? westernText(utf8).value_or(utf8) : utf8;
        begin(id, textType);
        m_values.u32(static_cast<std::uint32_t>(bytes.size() + 1));
        m_values.bytes(std::as_bytes(std::span(bytes)));
        m_values.zeros(4 - bytes.size() % 4);
    }

    std::vector<std::byte> stream(const FormatId& format) const
    {
        constexpr std::uint32_t sectionOffset = 48;
        ByteWriter stream;
        stream.u16(0xFFFE);
        stream.u16(0);
        stream.u32(0x00020105); // written by a 32-bit Windows program, as all programs say
        stream.zeros(16);
        stream.u32(1);
        stream.bytes(std::as_bytes(std::span(format)));
        stream.u32(sectionOffset);
        const auto head = static_cast<std::uint32_t>(8 + m_properties.size() * 8);
        stream.u32(head + static_cast<std::uint32_t>(m_values.size()));
        stream.u32(static_cast<std::uint32_t>(m_properties.size()));
        for (const auto& [id, offset] : m_properties) {
            stream.u32(id);
            stream.u32(head + static_cast<std::uint32_t>(offset));
        }
        stream.bytes(m_values.view());
        return stream.take();
    }

private:
    void begin(std::uint32_t id, std::uint16_t type)
    {
        m_properties.push_back({id, m_values.size()});
        m_values.u32(type);
    }

    std::uint16_t m_codePage;
    std::vector<Property> m_properties;
    ByteWriter m_values;
};

} // namespace

void readSummary(std::span<const std::byte> stream, DocumentProperties& properties)
{
    try {
        const PropertySection section(stream);
        std::uint16_t type = 0;
        auto codePageValue = section.value(codePageProperty, type);
        const std::uint16_t codePage = codePageValue && type == shortType ? codePageValue->u16() : westernCodePage;
        for (const auto& [id, member] : textProperties)
            readText(section, id, codePage, properties.*member);
        for (const auto& [id, member] : timeProperties) {
            auto value = section.value(id, type);
            if (value && type == timeType)
                properties.*member = value->u64();
        }
    } catch (const DamagedFile&) {
        return; // a workbook is not refused for what it says about itself
    }
}

std::vector<std::byte> writeSummary(const DocumentProperties& properties)
{
    const bool western = std::ranges::all_of(textProperties, [&](const TextProperty& property) {
        return westernText(properties.*property.member).has_value();
    });
    PropertySetWriter writer(western ? westernCodePage : utf8CodePage);
    for (const auto& [id, member] : textProperties)
        if (!(properties.*member).empty())
            writer.text(id, properties.*member);
    for (const auto& [id, member] : timeProperties)
        if (properties.*member != 0)
            writer.time(id, properties.*member);
    return writer.stream(summaryFormat);
}

std::vector<std::byte> writeDocumentSummary()
{
    return PropertySetWriter(westernCodePage).stream(documentSummaryFormat);
}

} // namespace wagemill::engine::xls
