#pragma once

#include "workbook/engine/PrintSetup.h"
#include "workbook/engine/xls/RecordStream.h"

namespace wagemill::engine::xls {

/// Reads a record of the print set-up into `setup`; one that is damaged changes nothing. False for any other record.
bool readPrintRecord(const Record& record, PrintSetup& setup);

/// The records of the print set-up, each group at its place in the sheet.
void writePrintMarks(RecordWriter& target, const PrintSetup& setup); ///< PRINTROWCOL, PRINTGRID
void writePageBreaks(RecordWriter& target, const PrintSetup& setup);
void writePageMargins(RecordWriter& target, const PrintSetup& setup); ///< HEADER to BOTTOMMARGIN
void writePageSetup(RecordWriter& target, const PrintSetup& setup);   ///< SETUP

} // namespace wagemill::engine::xls
