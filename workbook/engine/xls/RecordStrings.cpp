#include "workbook/engine/xls/RecordStrings.h"

#include "app/base/text/Unicode.h"
#include "workbook/engine/xls/Substreams.h"

#include <algorithm>
#include <stdexcept>

namespace wagemill::engine::xls {

namespace {

constexpr std::uint8_t wideFlag = 0x01;
constexpr std::uint8_t phoneticFlag = 0x04;
constexpr std::uint8_t richFlag = 0x08;
constexpr std::size_t minStringSize = 3;
constexpr std::size_t runSize = 4;

/// Reads on from piece to piece of a continued record.
class ContinuedReader {
public:
    explicit ContinuedReader(const Record& record) : m_record(record), m_piece(record.data) {}

    std::uint8_t u8() { return here().u8(); }
    std::uint16_t u16() { return here().u16(); }
    std::uint32_t u32() { return here().u32(); }
    void skip(std::size_t count)
    {
        while (count > 0) {
            const std::size_t step = std::min(count, here().remaining());
            m_piece.skip(step);
            count -= step;
        }
    }
    /// Where characters go on in the next piece, a flag byte says again how wide they are.
    std::string characters(std::size_t count, bool wide)
    {
        std::u16string units;
        units.reserve(std::min(count, maxRecordSize));
        while (units.size() < count) {
            if (m_piece.atEnd())
                wide = (u8() & wideFlag) != 0;
            const std::size_t there = m_piece.remaining() / (wide ? 2 : 1);
            if (there == 0 && !m_piece.atEnd())
                throw DamagedFile("a character of a text is cut in two");
            for (std::size_t take = std::min(there, count - units.size()); take > 0; --take)
                units.push_back(wide ? m_piece.u16() : m_piece.u8());
        }
        return toUtf8(units);
    }
    std::size_t bytesLeft() const
    {
        std::size_t left = m_piece.remaining();
        for (std::size_t index = m_next; index < m_record.continued.size(); ++index)
            left += m_record.continued[index].size();
        return left;
    }

private:
    /// The reader of the piece that holds the next byte; a number never lies across two pieces.
    ByteReader& here()
    {
        while (m_piece.atEnd()) {
            if (m_next >= m_record.continued.size())
                throw DamagedFile("a text is cut off");
            m_piece = ByteReader(m_record.continued[m_next++]);
        }
        return m_piece;
    }

    const Record& m_record;
    ByteReader m_piece;
    std::size_t m_next = 0;
};

std::string charactersOf(ContinuedReader& source, std::size_t count, bool wide)
{
    return source.characters(count, wide);
}

std::string charactersOf(ByteReader& source, std::size_t count, bool wide)
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

TextRuns runsOf(auto& source, std::size_t count)
{
    std::vector<TextRun> runs;
    for (; count > 0; --count) {
        const std::uint16_t first = source.u16();
        runs.push_back({first, fontOfFileIndex(source.u16())});
    }
    return runs.empty() ? nullptr : std::make_shared<const std::vector<TextRun>>(std::move(runs));
}

/// What follows the count of characters.
RichText richTextOf(auto& source, std::size_t count)
{
    const std::uint8_t flags = source.u8();
    const std::size_t runs = (flags & richFlag) != 0 ? source.u16() : 0;
    const std::size_t phonetic = (flags & phoneticFlag) != 0 ? source.u32() : 0;
    RichText text{charactersOf(source, count, (flags & wideFlag) != 0), nullptr};
    text.runs = runsOf(source, runs);
    source.skip(phonetic);
    return text;
}

/// Appends texts to a record, and goes on in a CONTINUE record where it is full.
class ContinuedWriter {
public:
    ContinuedWriter(RecordWriter& target, std::uint16_t id) : m_target(target) { begin(id); }

    ByteWriter& data() { return *m_data; }
    std::size_t offset() const { return m_target.offset(); }
    std::size_t offsetInRecord() const { return m_target.offset() - m_recordStart; }
    /// Makes room for bytes that must not be separated.
    void keepTogether(std::size_t size)
    {
        if (room() < size)
            begin(record::continuation);
    }
    void characters(const Characters& characters)
    {
        const std::size_t unit = characters.wide ? 2 : 1;
        for (std::size_t done = 0; done < characters.count;) {
            if (room() < unit) {
                begin(record::continuation);
                m_data->u8(characters.wide ? wideFlag : std::uint8_t{0});
            }
            const std::size_t step = std::min(characters.count - done, room() / unit);
            characters.append(*m_data, done, step);
            done += step;
        }
    }

private:
    std::size_t room() const { return maxRecordSize + 4 - offsetInRecord(); }
    void begin(std::uint16_t id)
    {
        m_recordStart = m_target.offset();
        m_data = &m_target.begin(id);
    }

    RecordWriter& m_target;
    std::size_t m_recordStart = 0;
    ByteWriter* m_data = nullptr;
};

void requireCellText(std::size_t units)
{
    if (units > maxCellText)
        throw std::length_error("The text is longer than 32767 characters.");
}

Characters charactersUpTo(std::size_t maxUnits, std::string_view utf8)
{
    Characters characters(utf8);
    if (characters.count > maxUnits)
        throw std::length_error("The text \"" + std::string(utf8.substr(0, 40)) + "...\" is longer than " +
                                std::to_string(maxUnits) + " characters.");
    return characters;
}

} // namespace

bool isAscii(std::string_view text)
{
    return std::ranges::all_of(text, [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

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

void Characters::append(ByteWriter& target) const
{
    target.u8(wide ? wideFlag : std::uint8_t{0});
    append(target, 0, count);
}

void Characters::append(ByteWriter& target, std::size_t first, std::size_t length) const
{
    if (wide)
        for (const char16_t unit : std::u16string_view(units).substr(first, length))
            target.u16(unit);
    else
        target.bytes(std::as_bytes(std::span(latin1)).subspan(first, length));
}

std::string readStringWithoutCount(ByteReader& source, std::size_t count)
{
    return richTextOf(source, count).text;
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
    return source.remaining() == count ? charactersOf(source, count, false) : readStringWithoutCount(source, count);
}

TextRuns readRuns(ByteReader& source, std::size_t count)
{
    return runsOf(source, count);
}

void writeShortString(ByteWriter& target, std::string_view utf8)
{
    const Characters characters = charactersUpTo(0xFF, utf8);
    target.u8(static_cast<std::uint8_t>(characters.count));
    characters.append(target);
}

void writeString(ByteWriter& target, std::string_view utf8)
{
    const Characters characters = charactersUpTo(0xFFFF, utf8);
    target.u16(static_cast<std::uint16_t>(characters.count));
    characters.append(target);
}

std::string readLongString(const Record& record)
{
    ContinuedReader source(record);
    const std::size_t count = source.u16();
    return source.characters(count, (source.u8() & wideFlag) != 0);
}

void writeLongString(RecordWriter& target, std::uint16_t id, std::string_view text)
{
    const Characters characters(text);
    requireCellText(characters.count);
    ContinuedWriter writer(target, id);
    writer.data().u16(static_cast<std::uint16_t>(characters.count));
    writer.data().u8(characters.wide ? wideFlag : std::uint8_t{0});
    writer.characters(characters);
}

std::vector<RichText> readSharedStrings(const Record& record)
{
    ContinuedReader source(record);
    source.skip(4);
    const std::size_t count = source.u32();
    std::vector<RichText> strings;
    strings.reserve(std::min(count, source.bytesLeft() / minStringSize));
    while (strings.size() < count && source.bytesLeft() > 0) {
        const std::size_t length = source.u16();
        strings.push_back(richTextOf(source, length));
    }
    return strings;
}

std::uint32_t SharedStringTable::indexFor(std::string_view text, const TextRuns& runs)
{
    ++m_uses;
    const auto next = static_cast<std::uint32_t>(m_entries.size());
    const std::uint32_t index =
        runs ? m_rich.try_emplace(runs.get(), next).first->second : m_plain.try_emplace(text, next).first->second;
    if (index == next) {
        if (text.size() > maxCellText)
            requireCellText(utf16Length(text));
        m_entries.push_back({text, runs});
    }
    return index;
}

void SharedStringTable::write(RecordWriter& target) const
{
    const std::size_t bucketSize = std::max<std::size_t>(8, m_entries.size() / 128 + 1);
    ByteWriter buckets; // where each of them begins, in the stream and in its record
    buckets.u16(static_cast<std::uint16_t>(bucketSize));
    ContinuedWriter writer(target, record::sharedStrings);
    writer.data().u32(m_uses);
    writer.data().u32(static_cast<std::uint32_t>(m_entries.size()));
    for (std::size_t index = 0; index < m_entries.size(); ++index) {
        const auto& [text, runs] = m_entries[index];
        const Characters characters(text);
        writer.keepTogether(5 + (characters.wide ? 2 : 1)); // the head is never alone
        if (index % bucketSize == 0) {
            buckets.u32(static_cast<std::uint32_t>(writer.offset()));
            buckets.u16(static_cast<std::uint16_t>(writer.offsetInRecord()));
            buckets.u16(0);
        }
        writer.data().u16(static_cast<std::uint16_t>(characters.count));
        writer.data().u8(static_cast<std::uint8_t>((characters.wide ? wideFlag : 0) | (runs ? richFlag : 0)));
        if (runs)
            writer.data().u16(static_cast<std::uint16_t>(runs->size()));
        writer.characters(characters);
        for (std::size_t run = 0; runs && run < runs->size(); ++run) {
            writer.keepTogether(runSize);
            writer.data().u16((*runs)[run].first);
            writer.data().u16(fileIndexOfFont((*runs)[run].font));
        }
    }
    target.write(record::extendedSharedStrings, buckets.view());
}

} // namespace wagemill::engine::xls
