#pragma once

#include "workbook/engine/Book.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <map>
#include <span>
#include <utility>
#include <vector>

namespace wagemill::engine {

/// A block of cells of one sheet of the book.
struct Area {
    std::size_t sheet = 0; ///< position in Book::sheets
    CellRect cells;

    bool operator==(const Area&) const = default;
};

/// A workbook as its formulas see it: a cell that is not computed yet is computed when its value is read.
class ComputedBook {
public:
    /// compute  called with a cell that waits to be computed; afterwards its value is read, whatever it is. Answers
    ///          false when the formula that reads it has to be evaluated again anyway
    ComputedBook(const Book& book, std::function<bool(const Cell&)> compute)
        : m_book(book), m_compute(std::move(compute))
    {
    }

    const Book& model() const { return m_book; }
    std::span<const Row> rows(std::size_t sheet) const { return m_book.sheets[sheet]->rows(); }
    /// Whether it is worth to read on; the cell is computed.
    bool compute(const Cell& cell) const { return cell.waiting == 0 || m_compute(cell); }
    const CellValue& valueOf(const Cell& cell) const
    {
        compute(cell);
        return cell.value;
    }
    /// Rows of all areas that were read or may have been, as a measure of time.
    std::size_t rowsRead() const { return m_rowsRead; }
    void countRows(int rows) const { m_rowsRead += static_cast<std::size_t>(rows); }

    /// The numbers of a column from row 0 on, NaN where there is something else or nothing that is known yet. They are
    /// kept, because =SUM($A$1:A1) copied down a column reads each of them very often. Empty: there are too many.
    std::span<double> numbersOf(std::size_t sheet, int column) const;

private:
    const Book& m_book;
    std::function<bool(const Cell&)> m_compute;
    mutable std::map<std::pair<std::size_t, int>, std::vector<double>> m_numbers;
    mutable std::size_t m_numbersKept = 0;
    mutable std::size_t m_rowsRead = 0;
};

/// Calls visit(CellAddress, const Cell&) for each cell of the area that is there, row by row; all are computed.
template <class Visit>
void forEachCell(const ComputedBook& book, const Area& area, Visit visit)
{
    const auto rows = book.rows(area.sheet);
    const int lastRow = std::min(area.cells.lastRow, static_cast<int>(rows.size()) - 1);
    book.countRows(std::max(lastRow - area.cells.firstRow + 1, 0));
    for (int row = area.cells.firstRow; row <= lastRow; ++row) {
        const std::span<const Cell> cells = rows[static_cast<std::size_t>(row)].cells;
        auto cell = std::ranges::lower_bound(cells, area.cells.firstColumn, {}, &Cell::column);
        for (; cell != cells.end() && cell->column <= area.cells.lastColumn; ++cell) {
            if (!book.compute(*cell))
                return;
            visit(CellAddress{row, cell->column}, *cell);
        }
    }
}

/// The value of one cell, Empty where there is none.
const CellValue& cellValue(const ComputedBook& book, std::size_t sheet, CellAddress address);

/// Calls visit(const CellValue&) for each cell of the area that is there, row by row, or visit(double) for a number
/// that is known already.
template <class Visit>
void forEachValue(const ComputedBook& book, const Area& area, Visit visit)
{
    constexpr int manyRows = 64;
    const bool isLongColumn = area.cells.columns() == 1 && area.cells.rows() >= manyRows;
    const std::span<double> kept =
        isLongColumn ? book.numbersOf(area.sheet, area.cells.firstColumn) : std::span<double>();
    if (kept.empty())
        return forEachCell(book, area, [&](CellAddress, const Cell& cell) { visit(cell.value); });
    const int lastRow = std::min(area.cells.lastRow, static_cast<int>(kept.size()) - 1);
    book.countRows(std::max(lastRow - area.cells.firstRow + 1, 0));
    for (int row = area.cells.firstRow; row <= lastRow; ++row) {
        double& known = kept[static_cast<std::size_t>(row)];
        if (!std::isnan(known)) {
            visit(known);
        } else if (const Cell* const cell = book.model().sheets[area.sheet]->find({row, area.cells.firstColumn})) {
            if (!book.compute(*cell))
                return;
            if (const auto* const number = std::get_if<double>(&cell->value); number != nullptr && cell->waiting == 0)
                known = *number;
            visit(cell->value);
        }
    }
}

} // namespace wagemill::engine
