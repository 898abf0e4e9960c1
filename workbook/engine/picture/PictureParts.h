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

/// Borders and grid lines of the range: where two cells share an edge one line, the stronger; pieces that look the same
/// joined to one line.
/// runOver  cells whose left edge a text runs over: no grid line there
std::vector<drawing::Line> pictureLines(const PictureGrid& grid, const std::set<CellAddress>& runOver);

} // namespace wagemill::engine
