#pragma once

#include "tests/workbook/BuildCases.h"

#include <vector>

namespace wagemill::test {

/// 500 IDs that a spreadsheet may take for something else (blank, wildcards, numbers, dates, logicals, formulas, 255
/// letters), 25 to a workbook, each beside what it may be mistaken for.
std::vector<BuildCase> oddIdCases();

} // namespace wagemill::test
