#pragma once

#include "workbook/engine/PrintSetup.h"
#include "workbook/engine/xls/RecordStream.h"

namespace wagemill::engine::xls {

/// Reads a record of the print set-up into `setup`; one that is damaged changes nothing. False for any other record.
bool readPrintRecord(const Record& record, PrintSetup& setup);

/// Writes the record of that number, which is one of the print set-up; none for breaks where there are none.
void writePrintRecord(RecordWriter& target, std::uint16_t id, const PrintSetup& setup);

} // namespace wagemill::engine::xls
