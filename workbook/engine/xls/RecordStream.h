#pragma once

#include "workbook/engine/Sheet.h"
#include "workbook/engine/xls/RecordFields.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace wagemill::engine::xls {

/// One record as it lies in the workbook stream.
struct Record {
    std::size_t offset = 0; ///< of its head
    std::uint16_t id = 0;
    std::span<const std::byte> data;
    std::vector<std::span<const std::byte>> continued; ///< data of the CONTINUE records after it

    ByteReader reader() const { return ByteReader(data); }
    KeptRecord kept() const;
};

/// All data of a Record or KeptRecord in one piece; for records whose continuation adds nothing of its own.
std::vector<std::byte> joined(const auto& record)
{
    std::vector<std::byte> all(record.data.begin(), record.data.end());
    for (const auto& piece : record.continued)
        all.insert(all.end(), piece.begin(), piece.end());
    return all;
}

/// Reads record after record. Throws DamagedFile when one runs past the end.
class RecordReader {
public:
    explicit RecordReader(std::span<const std::byte> stream, std::size_t offset = 0) : m_reader(stream, offset) {}
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
    std::vector<std::byte> take();

    /// Begins a record of at most 8224 bytes, whose data is what is written to the returned stream before the
    /// next one begins. Throws std::length_error when the record before became too long.
    ByteWriter& begin(std::uint16_t id);

    /// A record with these data; what one record cannot hold goes on in CONTINUE records.
    void write(std::uint16_t id, std::span<const std::byte> data);
    void write(std::uint16_t id, std::string_view data) { write(id, std::as_bytes(std::span(data))); }
    void write(const KeptRecord& record);
    /// A record of numbers of 16 bits.
    void writeU16(std::uint16_t id, const auto&... numbers) { FieldWriter(begin(id)).u16(numbers...); }
    void putU32(std::size_t offset, std::size_t value)
    {
        wagemill::putU32(m_stream.view(), offset, static_cast<std::uint32_t>(value));
    }

private:
    /// Sets the size of the present record.
    void finish();

    ByteWriter m_stream;
    std::size_t m_dataStart = 0; ///< of the present record; 0: there is none yet
};

/// What belongs to the records of one number.
template <class Value>
struct ById {
    std::uint16_t id;
    Value value;
};

template <class Value, std::size_t count>
consteval std::array<ById<Value>, count> sortedById(std::array<ById<Value>, count> entries)
{
    std::ranges::sort(entries, {}, &ById<Value>::id);
    return entries;
}

/// Null where there is nothing.
auto findById(const auto& sorted, std::uint16_t id) -> decltype(&sorted.begin()->value)
{
    const auto found = std::lower_bound(sorted.begin(), sorted.end(), id,
                                        [](const auto& entry, std::uint16_t wanted) { return entry.id < wanted; });
    return found != sorted.end() && found->id == id ? &found->value : nullptr;
}

/// Whether a kept record has its own place after the record before it in the table, or any place beside that one.
enum class Order : std::uint8_t { Next, Mixed };

/// One place in the order that the format prescribes for records: `write` makes them, or a kept one is written, or,
/// where none was kept, one with the bytes of `fallback`. Without both only what was kept is written there.
template <class Writer>
struct Place {
    constexpr Place(std::uint16_t number, void (Writer::*writeRecords)()) : id(number), write(writeRecords) {}
    constexpr Place(std::uint16_t number, std::string_view data) : id(number), fallback(data) {}
    constexpr Place(std::uint16_t number, Order orderOfKept = Order::Next) : id(number), order(orderOfKept) {}

    std::uint16_t id;
    void (Writer::*write)() = nullptr;
    std::optional<std::string_view> fallback;
    Order order = Order::Next;
};

/// The records' places, lowest first.
template <class Writer, std::size_t count>
consteval std::array<ById<int>, count> ranksOf(const std::array<Place<Writer>, count>& places)
{
    std::array<ById<int>, count> ranks{};
    int rank = -1;
    for (std::size_t index = 0; index < count; ++index) {
        rank += places[index].order == Order::Next ? 1 : 0;
        ranks[index] = {places[index].id, rank};
    }
    return sortedById(ranks);
}

/// Records kept from the file, to be written at their place among those that we make ourselves. Records that belong
/// to others (embedded charts, custom views, unknown ones) stay after them; what lies inside a chart or custom view is
/// no record of the sheet, whatever its number. Records of a fixed size that have another are left out.
class KeptRecords {
public:
    /// ranks  of the records that have a place of their own, ascending; must outlive this
    KeptRecords(const std::vector<KeptRecord>& records, std::span<const ById<int>> ranks);
    /// The data of the first record of that number; the standard ones where none of that size was kept.
    std::span<const std::byte> data(std::uint16_t id, std::string_view standard) const;
    /// Writes what comes before the place of record `id`.
    void writeBefore(std::uint16_t id, RecordWriter& target) { writeUpTo(rankOf(id), target); }
    /// Writes the records of number `id`, and those that follow them. False when there is none.
    bool writeAt(std::uint16_t id, RecordWriter& target);
    /// Leaves out the records of number `id`, with what they began, when their place comes.
    void leaveOut(std::uint16_t id) { m_leftOut.push_back(id); }

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
    int rankOf(std::uint16_t id, int otherwise = 0) const;
    bool isLeftOut(std::uint16_t id) const;
    void writeUpTo(int rank, RecordWriter& target);

    std::span<const ById<int>> m_ranks;
    std::vector<Placed> m_placed;
    std::size_t m_written = 0;
    std::vector<std::uint16_t> m_leftOut;
};

template <class Writer>
void writePlaces(Writer& writer, std::span<const Place<Writer>> places, KeptRecords& kept, RecordWriter& target)
{
    for (const auto& [id, write, fallback, order] : places) {
        if (write == nullptr && !fallback)
            continue;
        kept.writeBefore(id, target);
        if (write != nullptr)
            (writer.*write)();
        else if (!kept.writeAt(id, target))
            target.write(id, *fallback);
    }
}

} // namespace wagemill::engine::xls
