#pragma once

#include "app/base/Bytes.h"
#include "workbook/engine/Sheet.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace wagemill::engine::xls {

/// One record as it lies in the workbook stream.
struct Record {
    std::size_t offset = 0; ///< of its head
    std::uint16_t id = 0;
    std::span<const std::byte> data;
    std::vector<std::span<const std::byte>> continued; ///< data of the CONTINUE records behind it

    ByteReader reader() const { return ByteReader(data); }
    /// All data in one piece; for records whose continuation adds nothing of its own.
    std::vector<std::byte> joined() const;
    KeptRecord kept() const;
};

/// Reads record after record. Throws DamagedFile when one runs past the end.
class RecordReader {
public:
    explicit RecordReader(std::span<const std::byte> stream, std::size_t offset = 0);
    /// The next record with what continues it; false at the end of the stream. The spans live as long as the stream.
    bool next(Record& record);

private:
    std::span<const std::byte> piece();

    ByteReader m_reader;
};

/// Appends records to a stream.
class RecordWriter {
public:
    std::size_t offset() const { return m_stream.size(); }
    std::vector<std::byte> take() { return m_stream.take(); }
    void reserve(std::size_t size) { m_stream.reserve(size); }

    /// Begins a record of at most 8224 bytes: its data is written to the stream that this answers, then finish() sets
    /// the size. Throws std::length_error there when it became too long.
    ByteWriter& begin(std::uint16_t id);
    void finish();

    /// A record with these data; what one record cannot hold goes on in CONTINUE records.
    void write(std::uint16_t id, std::span<const std::byte> data);
    void writeU16(std::uint16_t id, std::uint16_t value);
    void write(const KeptRecord& record);
    void putU32(std::size_t offset, std::uint32_t value) { wagemill::putU32(m_stream.view(), offset, value); }

private:
    ByteWriter m_stream;
    std::size_t m_dataStart = 0;
};

/// Records kept from the file, to be written at their place among those that we make ourselves. Records that belong
/// to others (embedded charts, custom views, unknown ones) stay behind them; what lies inside a chart or custom view is
/// no record of the sheet, whatever its number.
class KeptRecords {
public:
    using RankOf = std::optional<int> (*)(std::uint16_t);

    KeptRecords(const std::vector<KeptRecord>& records, RankOf rankOf);
    /// The first record of that number, none where none was kept.
    const KeptRecord* find(std::uint16_t id) const;
    /// Writes what stands before the place of record `id` and .
    void writeBefore(std::uint16_t id, RecordWriter& target);
    /// Writes the records of number `id`, and those that follow them. False when there is none.
    bool writeAt(std::uint16_t id, RecordWriter& target);
    /// Leaves out the records of number `id`, with what they began, when their place comes.
    void leaveOut(std::uint16_t id);
    /// Leaves out records of a fixed size that have another.
    void leaveOutWrongSizes();

private:
    struct Placed {
        int rank;
        const KeptRecord* record;
        const KeptRecord* owner; ///< the record that began what this one lies in; else itself
    };
    static bool is(const Placed& placed, std::uint16_t id)
    {
        return placed.record == placed.owner && placed.record->id == id;
    }
    bool isLeftOut(std::uint16_t id) const;
    void writeUpTo(int rank, RecordWriter& target);

    RankOf m_rankOf;
    std::vector<Placed> m_placed;
    std::size_t m_written = 0;
    std::vector<std::uint16_t> m_leftOut;
};

} // namespace wagemill::engine::xls
