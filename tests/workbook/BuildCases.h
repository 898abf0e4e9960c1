#pragma once

#include "entry/data/PayrollData.h"

#include <string>
#include <vector>

namespace wagemill::test {

/// Payroll data, as typed in the United States' form, that every way of building a workbook is tested with.
struct BuildCase {
    std::string name; ///< letters, digits and hyphens: it names files
    PayrollData data;
};

/// The sample, blank rows, long texts, negative and huge amounts; 1, 3, 25 and 26 employees; and 200 employees, 25 a
/// workbook, with the odd IDs, rates and hours that people type.
std::vector<BuildCase> buildCases();

} // namespace wagemill::test
