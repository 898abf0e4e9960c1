#pragma once

#include "workbook/engine/CellStyle.h"
#include "workbook/engine/xls/RecordStream.h"

#include <cstdint>

namespace wagemill::engine::xls {

/// The file numbers its fonts without 4 ([MS-XLS] 2.5.129 FontIndex): the fifth is 5. StyleTable::fonts has no such
/// gap. The missing font is the first one.
std::uint16_t fontOfFileIndex(std::uint16_t fileIndex);
std::uint16_t fileIndexOfFont(std::uint16_t font);

/// FONT ([MS-XLS] 2.4.122); values outside the format's limits become the nearest allowed ones.
Font readFont(ByteReader& source);
void writeFont(RecordWriter& target, const Font& font);

/// XF ([MS-XLS] 2.4.353); values that the format does not know become the plain ones.
CellFormat readCellFormat(ByteReader& source);
void writeCellFormat(RecordWriter& target, CellFormat format);

/// Whether the file may define a number format of that identifier ([MS-XLS] 2.4.126).
bool isWrittenNumberFormat(std::uint16_t identifier);

void readPalette(ByteReader& source, StyleTable& styles);
/// Writes nothing where the palette is the standard one.
void writePalette(RecordWriter& target, const StyleTable& styles);

} // namespace wagemill::engine::xls
