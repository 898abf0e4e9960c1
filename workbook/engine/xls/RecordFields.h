#pragma once

#include "app/base/Bytes.h"

#include <cstdint>

namespace wagemill::engine::xls {

// The fields of a record are described once, by a function that is given a FieldReader or a FieldWriter and what the
// record is about: the one reads the fields into it, the other writes them.

/// Bits of a number that are a value of their own.
template <class Value>
struct Bits {
    unsigned first; ///< 0 is the lowest
    unsigned count;
    Value& value;
};
template <class Value>
Bits(unsigned, unsigned, Value&) -> Bits<Value>;

class FieldReader {
public:
    explicit FieldReader(ByteReader& source) : m_source(source) {}

    void u8(auto&... fields) { (set(fields, m_source.u8()), ...); }
    void u16(auto&... fields) { (set(fields, m_source.u16()), ...); }
    void u32(auto&... fields) { (set(fields, m_source.u32()), ...); }
    void u64(std::uint64_t& field) { field = m_source.u64(); }
    void real(double& field) { field = m_source.real(); }
    void zeros(std::size_t count) { m_source.skip(count); }
    void bits8(const auto&... bits) { takeApart(m_source.u8(), bits...); }
    void bits16(const auto&... bits) { takeApart(m_source.u16(), bits...); }
    void bits32(const auto&... bits) { takeApart(m_source.u32(), bits...); }

private:
    template <class Field>
    static void set(Field& field, std::uint32_t number)
    {
        field = static_cast<Field>(number);
    }
    static void takeApart(std::uint32_t number, const auto&... bits)
    {
        (set(bits.value, number >> bits.first & ((1U << bits.count) - 1U)), ...);
    }

    ByteReader& m_source;
};

/// Numbers larger than their field lose their upper bits.
class FieldWriter {
public:
    explicit FieldWriter(ByteWriter& target) : m_target(target) {}

    void u8(const auto&... fields) { (m_target.u8(static_cast<std::uint8_t>(fields)), ...); }
    void u16(const auto&... fields) { (m_target.u16(static_cast<std::uint16_t>(fields)), ...); }
    void u32(const auto&... fields) { (m_target.u32(static_cast<std::uint32_t>(fields)), ...); }
    void u64(std::uint64_t field) { m_target.u64(field); }
    void real(double field) { m_target.real(field); }
    void zeros(std::size_t count) { m_target.zeros(count); }
    void bits8(const auto&... bits) { u8(together(bits...)); }
    void bits16(const auto&... bits) { u16(together(bits...)); }
    void bits32(const auto&... bits) { u32(together(bits...)); }

private:
    static std::uint32_t together(const auto&... bits)
    {
        return (... | ((static_cast<std::uint32_t>(bits.value) & ((1U << bits.count) - 1U)) << bits.first));
    }

    ByteWriter& m_target;
};

} // namespace wagemill::engine::xls
