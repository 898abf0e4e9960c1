#pragma once

#include "drawing/Drawing.h"
#include "entry/data/PayrollData.h"
#include "workbook/engine/Book.h"

#include <filesystem>

namespace wagemill::bench {

/// Every result is a median of this many measurements.
inline constexpr int measurements = 21;

/// So many employees, each with data of their own in all 17 fields.
PayrollData payroll(int employees);

/// The template, filled and recalculated.
engine::Book filledBook(int employees);
/// The picture that the preview shows of a filled book.
drawing::Drawing stubPicture(const engine::Book& book);

/// Open the template file, fill, paste, recalculate, save to a file, open that file. Both files are in `folder`, which
/// holds the template as "template.xlt".
engine::Book engineJob(const PayrollData& payroll, const std::filesystem::path& folder);

} // namespace wagemill::bench
