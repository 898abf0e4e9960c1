#pragma once

#include "workbook/engine/Book.h"
#include "workbook/engine/xls/RecordStream.h"
#include "workbook/engine/xls/RecordStrings.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace wagemill::engine::xls {

/// The indices of the texts of a sheet's cells, row by row, taken into the table of shared strings.
/// Throws EngineError that names the cell when a text is too long.
std::vector<std::uint32_t> collectStrings(const Sheet& sheet, SharedStringTable& strings);

/// Writes a sheet. strings  what collectStrings() answered
/// Throws EngineError that names the cell when a formula does not fit the format.
void writeSheet(const Book& book, const Sheet& sheet, bool isActive, const std::vector<std::uint32_t>& strings,
                RecordWriter& target);

} // namespace wagemill::engine::xls
