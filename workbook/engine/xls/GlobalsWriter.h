#pragma once

#include "workbook/engine/Book.h"
#include "workbook/engine/xls/BiffRecords.h"
#include "workbook/engine/xls/BiffWriter.h"
#include "workbook/engine/xls/RecordStream.h"
#include "workbook/engine/xls/RecordStrings.h"

#include <cstddef>
#include <vector>

namespace wagemill::engine::xls {

/// The kind of substream that a sheet is written as: a worksheet, or what its kept BOF says.
SubstreamType substreamType(const Sheet& sheet);

/// Writes the globals of a workbook. Answers where the offset of each sheet is to be put in.
/// activeSheet  a visible one
std::vector<std::size_t> writeGlobals(const Book& book, FileKind kind, std::size_t activeSheet,
                                      const SharedStringTable& strings, RecordWriter& target);

} // namespace wagemill::engine::xls
