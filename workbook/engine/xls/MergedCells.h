#pragma once

#include "workbook/engine/CellAddress.h"

#include <vector>

namespace wagemill::engine::xls {

/// The areas in ascending order without those that lie outside the sheet, hold a single cell, or overlap an earlier
/// one: the file must have none of these.
std::vector<CellRect> withoutOverlaps(std::vector<CellRect> areas);

} // namespace wagemill::engine::xls
