#pragma once

#include "workbook/engine/Sheet.h"
#include "workbook/engine/xls/GlobalsReader.h"

#include <cstddef>
#include <span>

namespace wagemill::engine::xls {

/// Reads the substream that begins at `offset` of the workbook stream. A chart sheet is kept as a whole: its first
/// kept record is its BOF. Throws DamagedFile.
void readSheet(std::span<const std::byte> stream, std::size_t offset, ReadContext& context, Sheet& sheet);

} // namespace wagemill::engine::xls
