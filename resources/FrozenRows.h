#pragma once

#include "workbook/engine/Sheet.h"

#include <vector>

namespace wagemill {

/// The records of a sheet whose first `rows` rows stay in view, in the order of the format ([MS-XLS] 2.1.7.20.5).
std::vector<engine::CarriedRecord> frozenRowRecords(int rows);

} // namespace wagemill
