// Input: a byte that chooses the region, then the text typed into a cell.

#include "tests/fuzz/FuzzBook.h"
#include "tests/fuzz/FuzzRegions.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/support/OpenRecalculateWrite.h"
#include "workbook/engine/formula/CellEntry.h"
#include "workbook/engine/formula/Recalculation.h"
#include "workbook/engine/text/NumberFormat.h"

namespace wagemill::fuzz {

using namespace engine;

void tryInput(Input input)
{
    static Book book = preparedBook();
    const RegionalFormats& region = regionOf(takeByte(input));
    Cell& cell = book.sheets.front()->at({0, 0});
    cell = Cell{};
    try {
        enterText(book, 0, {0, 0}, asText(input), region, {2026, 3, 31});
    } catch (const EngineError&) {
        require(cell.value == CellValue(Empty()) && !cell.formula, "a text that is refused leaves the cell as it was");
        return;
    }
    recalculate(book, {region, 46112.75});
    test::requireFiniteNumbers(book);
    showValue(cell.value, book.styles.numberFormatCode(book.styles.format(cell.format).numberFormat), region);
}

} // namespace wagemill::fuzz
