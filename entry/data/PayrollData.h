#pragma once

#include "entry/data/RowFields.h"

#include <array>
#include <string>
#include <vector>

namespace wagemill {

/// The pay period, as the texts that the window shows.
struct PayrollHeader {
    std::string companyName;
    std::string periodEnding; ///< the user's short date, four digits of year
};

/// One employee, as the texts that the window shows: one for each of rowFields, in that order.
struct EmployeeRow {
    std::array<std::string, rowFields.size()> texts;
};

struct PayrollData {
    PayrollHeader header;
    std::vector<EmployeeRow> rows; ///< every row of the window, blank ones too
};

} // namespace wagemill
