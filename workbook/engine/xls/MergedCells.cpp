#include "workbook/engine/xls/MergedCells.h"

#include <algorithm>
#include <array>
#include <tuple>

namespace wagemill::engine::xls {

namespace {

bool isMergedArea(const CellRect& area)
{
    return isInsideSheet({area.firstRow, area.firstColumn}) && isInsideSheet({area.lastRow, area.lastColumn}) &&
           area.rows() >= 1 && area.columns() >= 1 && (area.rows() > 1 || area.columns() > 1);
}

} // namespace

std::vector<CellRect> withoutOverlaps(std::vector<CellRect> areas)
{
    std::erase_if(areas, [](const CellRect& area) { return !isMergedArea(area); });
    std::ranges::sort(areas, {}, [](const CellRect& area) { return std::tuple(area.firstRow, area.firstColumn); });
    std::array<int, maxColumns> takenTo; // by column: the last row that an area before takes
    takenTo.fill(-1);
    std::erase_if(areas, [&](const CellRect& area) {
        const auto first = takenTo.begin() + area.firstColumn;
        const auto last = takenTo.begin() + area.lastColumn + 1;
        if (std::any_of(first, last, [&](int row) { return row >= area.firstRow; }))
            return true;
        std::fill(first, last, area.lastRow);
        return false;
    });
    return areas;
}

} // namespace wagemill::engine::xls
