#pragma once

#include "app/base/text/RegionalFormats.h"
#include "drawing/Drawing.h"
#include "workbook/engine/Book.h"

#include <optional>
#include <set>
#include <vector>

namespace wagemill::engine {

/// On paper a digit of the default font is not rounded to whole pixels, so columns are a little wider there, and grid
/// lines are those that the print set-up wants.
enum class Medium { Screen, Paper };

/// Where the cells of a range lie on its picture, and how they look: what every part of the picture asks.
class PictureGrid {
public:
    /// Throws EngineError when the range holds more than four million cells.
    PictureGrid(const Book& book, const Sheet& sheet, const CellRect& range, Medium medium);

    const Book& book() const { return m_book; }
    const Sheet& sheet() const { return m_sheet; }
    const CellRect& range() const { return m_range; }
    bool showsGridLines() const { return m_medium == Medium::Screen ? m_sheet.showGridLines : m_sheet.print.gridLines; }
    /// Those that are not hidden, ascending.
    const std::vector<int>& columns() const { return m_columns; }
    const std::vector<int>& rows() const { return m_rows; }

    double left(int column) const { return m_lefts[static_cast<std::size_t>(column - m_range.firstColumn)]; }
    double top(int row) const { return m_tops[static_cast<std::size_t>(row - m_range.firstRow)]; }
    double width() const { return m_lefts.back(); }
    double height() const { return m_tops.back(); }
    /// Of an area inside the range.
    drawing::Rect rectOf(const CellRect& area) const;

    /// The cell's own format, or that of its row or column.
    const CellFormat& formatAt(CellAddress address) const;
    /// The colour of the cell's background; none where it is plain. Of a merged area that of its first cell.
    std::optional<Rgb> fillAt(CellAddress address) const;
    /// The merged area that holds the cell, or the cell itself; not cut to the range.
    CellRect areaOf(CellAddress address) const;
    bool isMerged(CellAddress address) const { return mergedAt(address) != nullptr; }
    /// Whether a merged area hides the cell: it is not the area's first.
    bool isCovered(CellAddress address) const;

private:
    const CellRect* mergedAt(CellAddress address) const;

    const Book& m_book;
    const Sheet& m_sheet;
    CellRect m_range;
    Medium m_medium;
    std::vector<int> m_columns;
    std::vector<int> m_rows;
    std::vector<double> m_lefts; ///< of every column of the range, and the end of the last
    std::vector<double> m_tops;
    std::vector<std::vector<const CellRect*>> m_mergedByRow;
};

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
