#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

namespace wagemill {

/// Bytes that break their file format. what() is the second half of a sentence, "the chain of sectors runs in a
/// circle": whoever knows the file's name says the first.
class DamagedFile : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads little-endian values one after the other. Every read is checked: throws DamagedFile when the bytes end first.
class ByteReader {
public:
    explicit ByteReader(std::span<const std::byte> bytes, std::size_t position = 0) : m_bytes(bytes) { seek(position); }

    std::size_t position() const { return m_position; }
    std::size_t remaining() const { return m_bytes.size() - m_position; }
    bool atEnd() const { return remaining() == 0; }

    template <std::size_t size>
    std::uint64_t number()
    {
        const std::byte* const taken = bytes(size).data();
        std::uint64_t value = 0;
        for (std::size_t index = size; index-- > 0;)
            value = value << 8U | std::to_integer<std::uint64_t>(taken[index]);
        return value;
    }
    std::uint8_t u8() { return static_cast<std::uint8_t>(number<1>()); }
    std::uint16_t u16() { return static_cast<std::uint16_t>(number<2>()); }
    std::uint32_t u32() { return static_cast<std::uint32_t>(number<4>()); }
    std::uint64_t u64() { return number<8>(); }
    double real() { return std::bit_cast<double>(number<8>()); }
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
    [[noreturn]] static void throwTooShort() { throw DamagedFile("data ends before it is complete"); }

    std::span<const std::byte> m_bytes;
    std::size_t m_position = 0;
};

/// Replaces the bytes from `position` on. Throws std::out_of_range when there are too few.
template <std::unsigned_integral Number>
void putNumber(std::span<std::byte> bytes, std::size_t position, Number value)
{
    if (position > bytes.size() || bytes.size() - position < sizeof value)
        throw std::out_of_range("A place that was never written cannot be replaced.");
    for (std::size_t index = 0; index < sizeof value; ++index)
        bytes[position + index] = static_cast<std::byte>(value >> 8 * index);
}
inline constexpr auto putU16 = putNumber<std::uint16_t>;
inline constexpr auto putU32 = putNumber<std::uint32_t>;
inline constexpr auto putU64 = putNumber<std::uint64_t>;

/// Appends little-endian values.
class ByteWriter {
public:
    std::size_t size() const { return m_bytes.size(); }
    std::span<const std::byte> view() const { return m_bytes; }
    std::span<std::byte> view() { return m_bytes; } ///< for putU16() and the like
    std::vector<std::byte> take() { return std::exchange(m_bytes, {}); }
    void clear() { m_bytes.clear(); }
    void reserve(std::size_t size) { m_bytes.reserve(size); }

    template <std::size_t size>
    void number(std::uint64_t value)
    {
        m_bytes.resize(m_bytes.size() + size);
        std::byte* place = m_bytes.data() + m_bytes.size() - size;
        for (std::size_t index = 0; index < size; ++index)
            *place++ = static_cast<std::byte>(value >> 8 * index);
    }
    void u8(std::uint8_t value) { m_bytes.push_back(static_cast<std::byte>(value)); }
    void u16(std::uint16_t value) { number<2>(value); }
    void u32(std::uint32_t value) { number<4>(value); }
    void u64(std::uint64_t value) { number<8>(value); }
    void real(double value) { number<8>(std::bit_cast<std::uint64_t>(value)); }
    void bytes(std::span<const std::byte> values) { m_bytes.insert(m_bytes.end(), values.begin(), values.end()); }
    void zeros(std::size_t count) { m_bytes.resize(m_bytes.size() + count); }

private:
    std::vector<std::byte> m_bytes;
};

} // namespace wagemill
