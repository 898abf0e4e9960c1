#pragma once

#include "drawing/Drawing.h"
#include "entry/data/PayrollData.h"
#include "workbook/engine/Book.h"

namespace wagemill::bench {

/// Every result is a median of this many measurements.
inline constexpr int measurements = 21;

/// So many employees, each with data of their own in all 17 fields.
PayrollData payroll(int employees);

/// What a build of so many employees saves.
engine::Book filledBook(int employees);
/// The picture that the preview shows of it.
drawing::Drawing stubPicture(const engine::Book& book);

} // namespace wagemill::bench
