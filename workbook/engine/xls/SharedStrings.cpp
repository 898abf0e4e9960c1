#include "workbook/engine/xls/SharedStrings.h"

#include "app/base/Bytes.h"
#include "app/base/text/Unicode.h"
#include "workbook/engine/xls/BiffRecords.h"
#include "workbook/engine/xls/RecordStrings.h"
#include "workbook/engine/xls/StyleRecords.h"

#include <algorithm>
#include <stdexcept>

namespace wagemill::engine::xls {

namespace {

constexpr std::uint8_t wideFlag = 0x01;
constexpr std::uint8_t phoneticFlag = 0x04;
constexpr std::uint8_t richFlag = 0x08;
constexpr std::size_t smallestString = 3;
constexpr std::size_t runSize = 4;

/// Reads on from piece to piece of a continued record.
class ContinuedReader {
public:
    explicit ContinuedReader(const Record& record) : m_record(record), m_piece(record.data) {}

    /// The reader of the piece that holds the next byte; what is read from it never lies across two pieces.
    ByteReader& here()
    {
        while (m_piece.atEnd())
            nextPiece();
        return m_piece;
    }
    void skip(std::size_t count)
    {
        while (count > 0) {
            const std::size_t step = std::min(count, here().remaining());
            m_piece.skip(step);
            count -= step;
        }
    }
    /// Characters; where they go on in the next piece, a flag byte says again how wide they are.
    std::u16string characters(std::size_t count, bool wide)
    {
        std::u16string units;
        units.reserve(std::min(count, largestRecord));
        while (units.size() < count) {
            if (m_piece.atEnd())
                wide = (here().u8() & wideFlag) != 0;
            const std::size_t there = m_piece.remaining() / (wide ? 2 : 1);
            if (there == 0 && !m_piece.atEnd())
                throw DamagedFile("a character of a text is cut in two");
            for (std::size_t take = std::min(there, count - units.size()); take > 0; --take)
                units.push_back(wide ? m_piece.u16() : m_piece.u8());
        }
        return units;
    }
    std::size_t bytesLeft() const
    {
        std::size_t left = m_piece.remaining();
        for (std::size_t index = m_next; index < m_record.continued.size(); ++index)
            left += m_record.continued[index].size();
        return left;
    }

private:
    void nextPiece()
    {
        if (m_next >= m_record.continued.size())
            throw DamagedFile("a text is cut off");
        m_piece = ByteReader(m_record.continued[m_next++]);
    }

    const Record& m_record;
    ByteReader m_piece;
    std::size_t m_next = 0;
};

SharedString readSharedString(ContinuedReader& source)
{
    ByteReader& head = source.here();
    const std::size_t count = head.u16();
    const std::uint8_t flags = head.u8();
    const std::size_t runs = (flags & richFlag) != 0 ? source.here().u16() : 0;
    const std::size_t phonetic = (flags & phoneticFlag) != 0 ? source.here().u32() : 0;
    SharedString string;
    string.text = toUtf8(source.characters(count, (flags & wideFlag) != 0));
    std::vector<TextRun> textRuns;
    for (std::size_t index = 0; index < runs; ++index) {
        ByteReader& run = source.here();
        const std::uint16_t first = run.u16();
        textRuns.push_back({first, fontOfFileIndex(run.u16())});
    }
    if (!textRuns.empty())
        string.runs = std::make_shared<const std::vector<TextRun>>(std::move(textRuns));
    source.skip(phonetic);
    return string;
}

/// Appends texts to a record, and goes on in a CONTINUE record where it is full.
class ContinuedWriter {
public:
    ContinuedWriter(RecordWriter& target, std::uint16_t id) : m_target(target), m_recordStart(target.offset())
    {
        m_data = &target.begin(id);
    }

    ByteWriter& data() { return *m_data; }
    std::size_t offset() const { return m_target.offset(); }
    std::size_t offsetInRecord() const { return m_target.offset() - m_recordStart; }
    /// Makes room for bytes that must not be parted.
    void keepTogether(std::size_t size)
    {
        if (room() < size)
            goOn();
    }
    void characters(const Characters& characters)
    {
        const std::size_t unit = characters.wide ? 2 : 1;
        for (std::size_t done = 0; done < characters.count;) {
            if (room() < unit) {
                goOn();
                m_data->u8(characters.wide ? wideFlag : std::uint8_t{0});
            }
            const std::size_t step = std::min(characters.count - done, room() / unit);
            characters.append(*m_data, done, step);
            done += step;
        }
    }
    void finish() { m_target.finish(); }

private:
    std::size_t room() const { return largestRecord + 4 - offsetInRecord(); }
    void goOn()
    {
        m_target.finish();
        m_recordStart = m_target.offset();
        m_data = &m_target.begin(record::continuation);
    }

    RecordWriter& m_target;
    std::size_t m_recordStart;
    ByteWriter* m_data;
};

void throwTooLong()
{
    throw std::length_error("The text is longer than 32767 characters.");
}

} // namespace

std::vector<SharedString> readSharedStrings(const Record& record)
{
    ContinuedReader source(record);
    source.skip(4);
    const std::size_t count = source.here().u32();
    std::vector<SharedString> strings;
    strings.reserve(std::min(count, source.bytesLeft() / smallestString));
    while (strings.size() < count && source.bytesLeft() > 0)
        strings.push_back(readSharedString(source));
    return strings;
}

std::string readLongString(const Record& record)
{
    ContinuedReader source(record);
    const std::size_t count = source.here().u16();
    const std::uint8_t flags = source.here().u8();
    if ((flags & richFlag) != 0)
        source.skip(2);
    if ((flags & phoneticFlag) != 0)
        source.skip(4);
    return toUtf8(source.characters(count, (flags & wideFlag) != 0));
}

void writeLongString(RecordWriter& target, std::uint16_t id, std::string_view text)
{
    const Characters characters(text);
    if (characters.count > longestCellText)
        throwTooLong();
    ContinuedWriter writer(target, id);
    writer.data().u16(static_cast<std::uint16_t>(characters.count));
    writer.data().u8(characters.wide ? wideFlag : std::uint8_t{0});
    writer.characters(characters);
    writer.finish();
}

std::uint32_t SharedStringTable::indexFor(std::string_view text, const TextRuns& runs)
{
    ++m_uses;
    const auto next = static_cast<std::uint32_t>(m_entries.size());
    const auto [index, isNew] =
        runs ? [&] {
            const auto [place, added] = m_rich.try_emplace(runs.get(), next);
            return std::pair(place->second, added);
        }()
             : [&] {
                   const auto [place, added] = m_plain.try_emplace(text, next);
                   return std::pair(place->second, added);
               }();
    if (isNew) {
        if (text.size() > longestCellText && toUtf16(text).size() > longestCellText)
            throwTooLong();
        m_entries.push_back({text, runs});
    }
    return index;
}

void SharedStringTable::write(RecordWriter& target) const
{
    const std::size_t bucketSize = std::max<std::size_t>(8, m_entries.size() / 128 + 1);
    struct Bucket {
        std::size_t offset;
        std::size_t offsetInRecord;
    };
    std::vector<Bucket> buckets;

    ContinuedWriter writer(target, record::sharedStrings);
    writer.data().u32(m_uses);
    writer.data().u32(static_cast<std::uint32_t>(m_entries.size()));
    for (std::size_t index = 0; index < m_entries.size(); ++index) {
        const auto& [text, runs] = m_entries[index];
        const Characters characters(text);
        writer.keepTogether(5 + (characters.wide ? 2 : 1)); // the head never stands alone
        if (index % bucketSize == 0)
            buckets.push_back({writer.offset(), writer.offsetInRecord()});
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
    writer.finish();

    ByteWriter& extended = target.begin(record::extendedSharedStrings);
    extended.u16(static_cast<std::uint16_t>(bucketSize));
    for (const auto& [offset, offsetInRecord] : buckets) {
        extended.u32(static_cast<std::uint32_t>(offset));
        extended.u16(static_cast<std::uint16_t>(offsetInRecord));
        extended.u16(0);
    }
    target.finish();
}

} // namespace wagemill::engine::xls
