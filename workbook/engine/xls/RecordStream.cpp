#include "workbook/engine/xls/RecordStream.h"

#include "workbook/engine/xls/BiffRecords.h"

#include <stdexcept>

namespace wagemill::engine::xls {

namespace {

constexpr std::size_t recordHead = 4;

/// The sizes that the format fixes for the data of records ([MS-XLS] 2.4); of records that are kept.
constexpr auto fixedSizes = sortedById(std::to_array<ById<std::size_t>>({
    {0x0086, 0}, {0x009B, 0}, {0x00D3, 0}, {0x00E2, 0},  {0x01BD, 0},  {0x01C0, 0},  {0x000C, 2},
    {0x000D, 2}, {0x000E, 2}, {0x000F, 2}, {0x0011, 2},  {0x0012, 2},  {0x0013, 2},  {0x0019, 2},
    {0x002B, 2}, {0x0033, 2}, {0x0040, 2}, {0x005E, 2},  {0x005F, 2},  {0x0061, 2},  {0x0063, 2},
    {0x0081, 2}, {0x0082, 2}, {0x008D, 2}, {0x0099, 2},  {0x009C, 2},  {0x009D, 2},  {0x00C1, 2},
    {0x00D5, 2}, {0x00DA, 2}, {0x00DD, 2}, {0x00E1, 2},  {0x00E3, 2},  {0x0160, 2},  {0x0161, 2},
    {0x01AB, 2}, {0x01AF, 2}, {0x01B7, 2}, {0x01BC, 2},  {0x008C, 4},  {0x0097, 4},  {0x00A0, 4},
    {0x0225, 4}, {0x0010, 8}, {0x0080, 8}, {0x0236, 16}, {0x003D, 18}, {0x01B2, 18}, {0x005C, 112},
}));

bool hasWrongSize(const KeptRecord& record)
{
    const std::size_t* const size = findById(fixedSizes, record.id);
    return size != nullptr && *size != record.data.size();
}

} // namespace

KeptRecord Record::kept() const
{
    KeptRecord copy{id, {data.begin(), data.end()}, {}};
    for (const auto& piece : continued)
        copy.continued.emplace_back(piece.begin(), piece.end());
    return copy;
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

std::vector<std::byte> RecordWriter::take()
{
    finish();
    m_dataStart = 0;
    return m_stream.take();
}

ByteWriter& RecordWriter::begin(std::uint16_t id)
{
    finish();
    m_stream.u16(id);
    m_stream.u16(0);
    m_dataStart = m_stream.size();
    return m_stream;
}

void RecordWriter::finish()
{
    if (m_dataStart == 0)
        return;
    const std::size_t size = m_stream.size() - m_dataStart;
    if (size > maxRecordSize)
        throw std::length_error("A record of the workbook would be longer than 8224 bytes.");
    putU16(m_stream.view(), m_dataStart - 2, static_cast<std::uint16_t>(size));
}

void RecordWriter::write(std::uint16_t id, std::span<const std::byte> data)
{
    const auto head = data.first(std::min(data.size(), maxRecordSize));
    begin(id).bytes(head);
    if (head.size() < data.size())
        write(record::continuation, data.subspan(head.size()));
}

void RecordWriter::write(const KeptRecord& record)
{
    write(record.id, record.data);
    for (const auto& piece : record.continued)
        write(record::continuation, piece);
}

KeptRecords::KeptRecords(const std::vector<KeptRecord>& records, std::span<const ById<int>> ranks) : m_ranks(ranks)
{
    m_placed.reserve(records.size());
    int depth = 0; // of substreams and custom views nested in a sheet; every record in them has the place of the first
    int rank = 0;
    const KeptRecord* owner = nullptr;
    for (const KeptRecord& record : records) {
        if (depth == 0) {
            owner = &record;
            if (record.id != record::bof)
                rank = rankOf(record.id, rank);
            if (hasWrongSize(record))
                leaveOut(record.id);
        }
        if (record.id == record::bof || record.id == record::customViewBegin)
            ++depth;
        else if ((record.id == record::eof || record.id == record::customViewEnd) && depth > 0)
            --depth;
        m_placed.push_back({rank, &record, owner});
    }
    std::ranges::stable_sort(m_placed, {}, &Placed::rank);
}

std::span<const std::byte> KeptRecords::data(std::uint16_t id, std::string_view standard) const
{
    const auto found = std::ranges::find_if(m_placed, [id](const Placed& placed) { return is(placed, id); });
    const bool isSound = found != m_placed.end() && found->record->data.size() == standard.size();
    return isSound ? std::span(found->record->data) : std::as_bytes(std::span(standard));
}

bool KeptRecords::writeAt(std::uint16_t id, RecordWriter& target)
{
    writeBefore(id, target);
    const std::size_t before = m_written;
    writeUpTo(rankOf(id) + 1, target);
    const auto written = std::span(m_placed).subspan(before, m_written - before);
    return !isLeftOut(id) && std::ranges::any_of(written, [id](const Placed& placed) { return is(placed, id); });
}

int KeptRecords::rankOf(std::uint16_t id, int otherwise) const
{
    const int* const rank = findById(m_ranks, id);
    return rank == nullptr ? otherwise : *rank;
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
