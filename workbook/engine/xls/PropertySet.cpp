#include "workbook/engine/xls/CompoundFile.h"
#include "workbook/engine/xls/RecordStrings.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

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
constexpr std::uint16_t timeType = 0x40;

constexpr std::uint32_t codePageProperty = 1;
constexpr std::size_t firstSectionOffset = 44;

constexpr std::uint16_t westernCodePage = 1252;
constexpr std::uint16_t utf8CodePage = 65001;

/// What a SummaryInformation stream holds, in the order in which we write it.
using Member = std::variant<std::string DocumentProperties::*, std::uint64_t DocumentProperties::*>;
constexpr auto summaryMembers = std::to_array<ById<Member>>({
    {2, &DocumentProperties::title},
    {4, &DocumentProperties::author},
    {8, &DocumentProperties::lastAuthor},
    {18, &DocumentProperties::application},
    {12, &DocumentProperties::created},
    {13, &DocumentProperties::saved},
});

/// Some programs leave out what fills the last four bytes of the section.
void fillSection(std::vector<std::byte>& stream, std::size_t section)
{
    const std::size_t size = ByteReader(stream, section).u32();
    if (section + size != stream.size())
        return;
    const std::size_t whole = (size + 3) / 4 * 4;
    stream.resize(section + whole);
    putU32(stream, section, static_cast<std::uint32_t>(whole));
}

/// A value with its type before it; nothing for what is not set.
void appendValue(ByteWriter& values, std::uint64_t time)
{
    if (time == 0)
        return;
    values.u32(timeType);
    values.u64(time);
}

void appendValue(ByteWriter& values, const std::string& utf8)
{
    if (utf8.empty())
        return;
    values.u32(textType);
    values.u32(static_cast<std::uint32_t>(utf8.size() + 1));
    values.bytes(std::as_bytes(std::span(utf8)));
    values.zeros(4 - utf8.size() % 4);
}

/// A property set stream of one section; texts beyond ASCII are written as UTF-8.
std::vector<std::byte> propertySet(const FormatId& format, const DocumentProperties& properties)
{
    const bool isPlain = isAscii(properties.title + properties.author + properties.lastAuthor + properties.application);
    constexpr std::uint32_t sectionOffset = 48;
    std::vector<std::pair<std::uint32_t, std::size_t>> offsets = {{codePageProperty, 0}}; // by id, in the values
    ByteWriter values;
    values.u32(shortType);
    values.u32(isPlain ? westernCodePage : utf8CodePage);
    for (const auto& [id, member] : summaryMembers) {
        const std::size_t offset = values.size();
        std::visit([&](auto held) { appendValue(values, properties.*held); }, member);
        if (values.size() > offset)
            offsets.emplace_back(id, offset);
    }
    ByteWriter stream;
    stream.u16(0xFFFE);
    stream.u16(0);
    stream.u32(0x00020105); // written by a 32-bit Windows program, as all programs say
    stream.zeros(16);
    stream.u32(1);
    stream.bytes(std::as_bytes(std::span(format)));
    stream.u32(sectionOffset);
    const auto head = static_cast<std::uint32_t>(8 + offsets.size() * 8);
    stream.u32(head + static_cast<std::uint32_t>(values.size()));
    stream.u32(static_cast<std::uint32_t>(offsets.size()));
    for (const auto& [id, offset] : offsets) {
        stream.u32(id);
        stream.u32(head + static_cast<std::uint32_t>(offset));
    }
    stream.bytes(values.view());
    return stream.take();
}

void stampSummary(std::vector<std::byte>& stream, const DocumentProperties& properties)
{
    try {
        const std::size_t section = ByteReader(stream, firstSectionOffset).u32();
        fillSection(stream, section);
        ByteReader reader(stream, section + 4);
        for (std::uint32_t left = reader.u32(); left > 0; --left) {
            const std::uint32_t id = reader.u32();
            const std::size_t place = section + reader.u32();
            const auto* const found = std::ranges::find(summaryMembers, id, &ById<Member>::id);
            const auto* const time = found == summaryMembers.end()
                                         ? nullptr
                                         : std::get_if<std::uint64_t DocumentProperties::*>(&found->value);
            if (time == nullptr || properties.**time == 0)
                continue;
            ByteReader value(stream, place);
            if (value.u32() == timeType && value.remaining() >= sizeof(std::uint64_t))
                putU64(stream, value.position(), properties.**time);
        }
    } catch (const DamagedFile&) {
        return; // a workbook is not refused for what it says about itself
    }
}

} // namespace

void putProperties(std::vector<KeptStream>& streams, const DocumentProperties& properties)
{
    const std::vector<std::string> summaryPath = {"\x05SummaryInformation"};
    const std::vector<std::string> documentPath = {"\x05"
                                                   "DocumentSummaryInformation"};
    if (const auto summary = std::ranges::find(streams, summaryPath, &KeptStream::path); summary != streams.end())
        stampSummary(summary->data, properties);
    else
        streams.push_back({summaryPath, false, propertySet(summaryFormat, properties)});
    if (std::ranges::find(streams, documentPath, &KeptStream::path) == streams.end())
        streams.push_back({documentPath, false, propertySet(documentSummaryFormat, {})});
}

} // namespace wagemill::engine::xls
