#pragma once

#include "entry/data/PayrollData.h"
#include "workbook/engine/Book.h"

#include <cstddef>
#include <filesystem>
#include <vector>

namespace wagemill::bench {

/// So many employees, each with data of their own in all 17 fields.
PayrollData payroll(int employees);

/// Types the payroll into a workbook opened from the template and pastes a stub for every employee, in the order of a
/// build, through the engine alone.
void fill(engine::Book& book, const PayrollData& payroll);

engine::Book openTemplate();
void recalculate(engine::Book& book);
std::vector<std::byte> save(const engine::Book& book);
engine::Book reopen(const std::vector<std::byte>& bytes);

/// The template, filled and recalculated.
engine::Book filledBook(int employees);

/// Open the template file, fill, paste, recalculate, save to a file, open that file. Both files are in `folder`, which
/// holds the template as "template.xlt".
engine::Book engineJob(const PayrollData& payroll, const std::filesystem::path& folder);

} // namespace wagemill::bench
