#pragma once

#include "workbook/engine/Sheet.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

namespace wagemill {

/// Puts the numbers of one record behind each other, in the byte order of the file.
class RecordWriter {
public:
    explicit RecordWriter(std::uint16_t id) { m_record.id = id; }

    RecordWriter& u8(unsigned value) { return number(value, 1); }
    RecordWriter& u16(unsigned value) { return number(value, 2); }
    RecordWriter& real(double value) { return number(std::bit_cast<std::uint64_t>(value), 8); }
    RecordWriter& characters(const std::string& text)
    {
        for (const char character : text)
            u8(static_cast<unsigned char>(character));
        return *this;
    }
    engine::CarriedRecord take() { return std::move(m_record); }

private:
    RecordWriter& number(std::uint64_t value, int bytes)
    {
        for (int byte = 0; byte < bytes; ++byte)
            m_record.data.push_back(static_cast<std::byte>((value >> (8 * byte)) & 0xFFU));
        return *this;
    }

    engine::CarriedRecord m_record;
};

} // namespace wagemill
