#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace wagemill::engine::xls {

/// Reads little-endian values one behind the other. Every read is checked: throws DamagedFile when the bytes end first.
class ByteReader {
public:
    explicit ByteReader(std::span<const std::byte> bytes) : m_bytes(bytes) {}

    std::size_t position() const { return m_position; }
    std::size_t remaining() const { return m_bytes.size() - m_position; }
    bool atEnd() const { return remaining() == 0; }

    std::uint8_t u8() { return static_cast<std::uint8_t>(little<1>()); }
    std::uint16_t u16() { return static_cast<std::uint16_t>(little<2>()); }
    std::uint32_t u32() { return static_cast<std::uint32_t>(little<4>()); }
    std::uint64_t u64() { return little<8>(); }
    double real() { return std::bit_cast<double>(little<8>()); }
    std::span<const std::byte> bytes(std::size_t count)
    {
        if (count > remaining())
            throwTooShort();
        const std::span taken(m_bytes.data() + m_position, count); // subspan() would check a second time
        m_position += count;
        return taken;
    }
    std::span<const std::byte> rest() { return bytes(remaining()); }
    void skip(std::size_t count) { bytes(count); }
    /// Goes to a position counted from the beginning of the bytes.
    void seek(std::size_t position)
    {
        if (position > m_bytes.size())
            throwTooShort();
        m_position = position;
    }

private:
    template <std::size_t size>
    std::uint64_t little()
    {
        const std::byte* const taken = bytes(size).data();
        std::uint64_t value = 0;
        for (std::size_t index = size; index-- > 0;)
            value = value << 8U | std::to_integer<std::uint64_t>(taken[index]);
        return value;
    }
    [[noreturn]] static void throwTooShort();

    std::span<const std::byte> m_bytes;
    std::size_t m_position = 0;
};

/// Appends little-endian values; what was written may be replaced at its place.
class ByteWriter {
public:
    std::size_t size() const { return m_bytes.size(); }
    std::span<const std::byte> view() const { return m_bytes; }
    std::vector<std::byte> take() { return std::exchange(m_bytes, {}); }
    void clear() { m_bytes.clear(); }
    void reserve(std::size_t size) { m_bytes.reserve(size); }

    void u8(std::uint8_t value) { m_bytes.push_back(static_cast<std::byte>(value)); }
    void u16(std::uint16_t value) { append<2>(value); }
    void u32(std::uint32_t value) { append<4>(value); }
    void u64(std::uint64_t value) { append<8>(value); }
    void real(double value) { append<8>(std::bit_cast<std::uint64_t>(value)); }
    void bytes(std::span<const std::byte> values) { m_bytes.insert(m_bytes.end(), values.begin(), values.end()); }
    void zeros(std::size_t count) { m_bytes.resize(m_bytes.size() + count); }

    /// Replaces what was written at `position`. Throws std::out_of_range when nothing was.
    void putU16(std::size_t position, std::uint16_t value) { replace<2>(position, value); }
    void putU32(std::size_t position, std::uint32_t value) { replace<4>(position, value); }

private:
    template <std::size_t size>
    void append(std::uint64_t value)
    {
        const std::size_t position = m_bytes.size();
        m_bytes.resize(position + size);
        store<size>(m_bytes.data() + position, value);
    }
    template <std::size_t size>
    void replace(std::size_t position, std::uint64_t value)
    {
        if (position > m_bytes.size() || m_bytes.size() - position < size)
            throwOutside();
        store<size>(m_bytes.data() + position, value);
    }
    template <std::size_t size>
    static void store(std::byte* target, std::uint64_t value)
    {
        for (std::size_t index = 0; index < size; ++index)
            target[index] = static_cast<std::byte>(value >> 8 * index);
    }
    [[noreturn]] static void throwOutside();

    std::vector<std::byte> m_bytes;
};

} // namespace wagemill::engine::xls
