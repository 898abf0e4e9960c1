// Input: a whole file, or the workbook stream alone (whatever does not begin as a compound file): most of a file's
// bytes are sectors and padding, and mutations of the stream reach the records far more often.

#include "app/base/Bytes.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/support/OpenRecalculateWrite.h"
#include "workbook/engine/xls/CompoundFile.h"

#include <algorithm>

namespace wagemill::fuzz {

namespace {

std::vector<std::byte> containerOf(Input stream)
{
    engine::KeptStream workbook{{"Workbook"}, false, {stream.begin(), stream.end()}};
    workbook.data.resize(std::max<std::size_t>(workbook.data.size(), 4096));
    return engine::xls::writeCompoundFile(std::span(&workbook, 1));
}

} // namespace

void tryInput(Input input)
{
    const bool isCompoundFile = input.size() >= 8 && ByteReader(input).u64() == engine::xls::compoundFileSignature;
    const auto first = test::openRecalculateWrite(isCompoundFile ? input : containerOf(input));
    if (first.written.empty())
        return;
    const auto second = test::openRecalculateWrite(first.written);
    require(second.refusal.empty(), "what we wrote is read and written again, not refused: " + second.refusal);
}

} // namespace wagemill::fuzz
