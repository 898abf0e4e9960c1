#include "workbook/engine/xls/RecordStream.h"

#include "app/base/Bytes.h"
#include "workbook/engine/xls/BiffRecords.h"

#include <algorithm>
#include <stdexcept>

namespace wagemill::engine::xls {

namespace {

constexpr std::size_t recordHead = 4;

/// Substreams and custom views nested in a sheet; every record within keeps the place of the one that began them.
class Nesting {
public:
    bool isInside() const { return m_depth > 0; }
    void follow(std::uint16_t id)
    {
        if (id == record::bof || id == record::customViewBegin)
            ++m_depth;
        else if ((id == record::eof || id == record::customViewEnd) && m_depth > 0)
            --m_depth;
    }

private:
    int m_depth = 0;
};

} // namespace

std::vector<std::byte> Record::joined() const
{
    std::vector<std::byte> all(data.begin(), data.end());
    for (const auto& piece : continued)
        all.insert(all.end(), piece.begin(), piece.end());
    return all;
}

KeptRecord Record::kept() const
{
    KeptRecord copy{id, {data.begin(), data.end()}, {}};
    for (const auto& piece : continued)
        copy.continued.emplace_back(piece.begin(), piece.end());
    return copy;
}

RecordReader::RecordReader(std::span<const std::byte> stream, std::size_t offset) : m_reader(stream)
{
    m_reader.seek(offset);
}

std::span<const std::byte> RecordReader::piece()
{
    const std::size_t size = m_reader.u16();
    if (size > m_reader.remaining())
        throw DamagedFile("a record runs past the end of the workbook; the file may be cut off");
    return m_reader.bytes(size);
}

bool RecordReader::next(Record& record)
{
    if (m_reader.remaining() < recordHead)
        return false;
    record.offset = m_reader.position();
    record.id = m_reader.u16();
    record.data = piece();
    record.continued.clear();
    while (m_reader.remaining() >= recordHead) {
        const std::size_t position = m_reader.position();
        if (m_reader.u16() != record::continuation) {
            m_reader.seek(position);
            break;
        }
        record.continued.push_back(piece());
    }
    return true;
}

ByteWriter& RecordWriter::begin(std::uint16_t id)
{
    m_stream.u16(id);
    m_stream.u16(0);
    m_dataStart = m_stream.size();
    return m_stream;
}

void RecordWriter::finish()
{
    const std::size_t size = m_stream.size() - m_dataStart;
    if (size > largestRecord)
        throw std::length_error("A record of the workbook would be longer than 8224 bytes.");
    putU16(m_stream.view(), m_dataStart - 2, static_cast<std::uint16_t>(size));
}

void RecordWriter::write(std::uint16_t id, std::span<const std::byte> data)
{
    const auto head = data.first(std::min(data.size(), largestRecord));
    begin(id).bytes(head);
    finish();
    if (head.size() < data.size())
        write(record::continuation, data.subspan(head.size()));
}

void RecordWriter::writeU16(std::uint16_t id, std::uint16_t value)
{
    begin(id).u16(value);
    finish();
}

void RecordWriter::write(const KeptRecord& record)
{
    write(record.id, record.data);
    for (const auto& piece : record.continued)
        write(record::continuation, piece);
}

KeptRecords::KeptRecords(const std::vector<KeptRecord>& records, RankOf rankOf) : m_rankOf(rankOf)
{
    m_placed.reserve(records.size());
    Nesting nesting;
    int rank = 0;
    const KeptRecord* owner = nullptr;
    for (const KeptRecord& record : records) {
        if (!nesting.isInside()) {
            owner = &record;
            if (record.id != record::bof)
                rank = rankOf(record.id).value_or(rank);
        }
        nesting.follow(record.id);
        m_placed.push_back({rank, &record, owner});
    }
    std::ranges::stable_sort(m_placed, {}, &Placed::rank);
}

const KeptRecord* KeptRecords::find(std::uint16_t id) const
{
    const auto found = std::ranges::find_if(m_placed, [id](const Placed& placed) { return is(placed, id); });
    return found == m_placed.end() ? nullptr : found->record;
}

void KeptRecords::writeBefore(std::uint16_t id, RecordWriter& target)
{
    writeUpTo(m_rankOf(id).value_or(0), target);
}

bool KeptRecords::writeAt(std::uint16_t id, RecordWriter& target)
{
    writeBefore(id, target);
    const std::size_t before = m_written;
    writeUpTo(m_rankOf(id).value_or(0) + 1, target);
    const auto written = std::span(m_placed).subspan(before, m_written - before);
    return !isLeftOut(id) && std::ranges::any_of(written, [id](const Placed& placed) { return is(placed, id); });
}

void KeptRecords::leaveOut(std::uint16_t id)
{
    m_leftOut.push_back(id);
}

void KeptRecords::leaveOutWrongSizes()
{
    for (const Placed& placed : m_placed)
        if (const KeptRecord& record = *placed.record;
            is(placed, record.id) && fixedSize(record.id).value_or(record.data.size()) != record.data.size())
            leaveOut(record.id);
}

bool KeptRecords::isLeftOut(std::uint16_t id) const
{
    return std::ranges::find(m_leftOut, id) != m_leftOut.end();
}

void KeptRecords::writeUpTo(int rank, RecordWriter& target)
{
    for (; m_written < m_placed.size() && m_placed[m_written].rank < rank; ++m_written)
        if (!isLeftOut(m_placed[m_written].owner->id))
            target.write(*m_placed[m_written].record);
}

} // namespace wagemill::engine::xls
