#include "workbook/engine/xls/ByteCursor.h"

#include "workbook/engine/xls/DamagedFile.h"

#include <stdexcept>

namespace wagemill::engine::xls {

void ByteReader::throwTooShort()
{
    throw DamagedFile("data ends before it is complete");
}

void ByteWriter::throwOutside()
{
    throw std::out_of_range("A place that was never written cannot be replaced.");
}

} // namespace wagemill::engine::xls
