#pragma once

#include "app/base/text/RegionalFormats.h"
#include "workbook/engine/picture/PictureGrid.h"

#include <set>
#include <vector>

namespace wagemill::engine {

struct PictureTexts {
    std::vector<drawing::Text> texts;
    std::set<CellAddress> runOver; ///< cells whose left edge a text runs over: no grid line there
};

/// The texts of the cells that are shown, with the room that each may take.
PictureTexts pictureTexts(const PictureGrid& grid, const RegionalFormats& formats);

} // namespace wagemill::engine
