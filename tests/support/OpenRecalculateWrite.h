#pragma once

#include "workbook/engine/formula/Recalculation.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <cmath>
#include <cstddef>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace wagemill::test {

/// What became of the bytes of a workbook, whole or damaged.
struct Outcome {
    std::string refusal; ///< why they could not be opened, or not be written again; empty: both went well
    std::vector<std::byte> written;
};

/// Whatever was read or computed, a number is one. Throws std::logic_error.
inline void requireFiniteNumbers(const engine::Book& book)
{
    for (const auto& sheet : book.sheets)
        for (const engine::Row& row : sheet->rows())
            for (const engine::Cell& cell : row.cells)
                if (const auto* const number = std::get_if<double>(&cell.value); number && !std::isfinite(*number))
                    throw std::logic_error("a cell of " + sheet->name + " holds what is not a number");
}

/// Opens the bytes, computes every formula again and writes the workbook again. The only failure allowed is a refusal
/// in words, which names the file where it cannot be opened; throws std::logic_error where it does not.
inline Outcome openRecalculateWrite(std::span<const std::byte> file)
{
    constexpr const char* name = "wages.xls";
    engine::Book book;
    try {
        book = engine::xls::readWorkbook(file, name);
    } catch (const engine::EngineError& refusal) {
        if (std::string(refusal.what()).find(name) == std::string::npos)
            throw std::logic_error(std::string("a refusal that does not name the file: ") + refusal.what());
        return {refusal.what(), {}};
    }
    engine::recalculate(book, {{}, 46112.75});
    requireFiniteNumbers(book);
    try {
        return {"", engine::xls::writeWorkbook(book, engine::xls::FileKind::Workbook)};
    } catch (const engine::EngineError& refusal) {
        return {refusal.what(), {}};
    }
}

} // namespace wagemill::test
