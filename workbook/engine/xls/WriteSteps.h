#pragma once

#include "workbook/engine/xls/RecordStream.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace wagemill::engine::xls {

/// One place in the prescribed order of records: either `write` makes them, or the kept one stands there, or, where
/// none was kept, one with the bytes of `fallback`.
template <typename Writer>
struct WriteStep {
    std::uint16_t id;
    void (Writer::*write)();
    std::string_view fallback = {};
};

template <typename Writer>
void writeSteps(Writer& writer, std::span<const WriteStep<Writer>> steps, KeptRecords& kept, RecordWriter& target)
{
    for (const auto& [id, write, fallback] : steps) {
        kept.writeBefore(id, target);
        if (write != nullptr)
            (writer.*write)();
        else if (!kept.writeAt(id, target))
            target.write(id, std::as_bytes(std::span(fallback)));
    }
}

} // namespace wagemill::engine::xls
