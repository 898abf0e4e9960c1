#include "app/base/Bytes.h"

namespace wagemill {

namespace {

void put(std::span<std::byte> bytes, std::size_t position, std::uint64_t value, std::size_t size)
{
    if (position > bytes.size() || bytes.size() - position < size)
        throw std::out_of_range("A place that was never written cannot be replaced.");
    for (std::size_t index = 0; index < size; ++index)
        bytes[position + index] = static_cast<std::byte>(value >> 8 * index);
}

} // namespace

void ByteReader::throwTooShort()
{
    throw DamagedFile("data ends before it is complete");
}

void putU16(std::span<std::byte> bytes, std::size_t position, std::uint16_t value)
{
    put(bytes, position, value, sizeof value);
}

void putU32(std::span<std::byte> bytes, std::size_t position, std::uint32_t value)
{
    put(bytes, position, value, sizeof value);
}

void putU64(std::span<std::byte> bytes, std::size_t position, std::uint64_t value)
{
    put(bytes, position, value, sizeof value);
}

} // namespace wagemill
