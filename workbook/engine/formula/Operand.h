#pragma once

#include "workbook/engine/Book.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <variant>
#include <vector>

namespace wagemill::engine {

/// A block of cells of one sheet of the book.
struct Area {
    std::size_t sheet = 0; ///< position in Book::sheets
    CellRect cells;

    bool operator==(const Area&) const = default;
};

/// Values in rows and columns, row by row; never empty.
struct ValueArray {
    int rows = 1;
    int columns = 1;
    std::vector<CellValue> values;
};

/// An argument that was left out, "IF(A1,,2)".
struct MissingArgument {
    bool operator==(const MissingArgument&) const = default;
};

/// A name that stands for a function of an add-in or of a later version of the application.
struct CalledName {
    std::string_view name; ///< of the book, which outlives the evaluation
};

/// What stands on the stack while a formula is evaluated. Several areas come from "," and from areas of several sheets.
using Operand = std::variant<CellValue, MissingArgument, Area, std::shared_ptr<const std::vector<Area>>,
                             std::shared_ptr<const ValueArray>, CalledName>;

inline Operand errorOperand(ErrorCode error)
{
    return CellValue(error);
}

/// The areas that the operand refers to; none when it is a value.
std::span<const Area> areasOf(const Operand& operand);

/// Calls visit(CellAddress, const Cell&) for each cell of the area that is there, row by row.
template <class Visit>
void forEachCell(const Book& book, const Area& area, Visit visit)
{
    const auto& rows = book.sheets[area.sheet]->rows();
    const int lastRow = std::min(area.cells.lastRow, static_cast<int>(rows.size()) - 1);
    for (int row = area.cells.firstRow; row <= lastRow; ++row) {
        const auto& cells = rows[static_cast<std::size_t>(row)].cells;
        auto cell = std::ranges::lower_bound(cells, area.cells.firstColumn, {}, &Cell::column);
        for (; cell != cells.end() && cell->column <= area.cells.lastColumn; ++cell)
            visit(CellAddress{row, cell->column}, *cell);
    }
}

/// The value of one cell, Empty where there is none.
const CellValue& cellValue(const Book& book, std::size_t sheet, CellAddress address);

/// Rows and columns of values, be they cells, an array or one value. Refers to the book and the operand.
class ValueGrid {
public:
    /// operand  anything but several areas, which read as #VALUE!
    ValueGrid(const Book& book, const Operand& operand);

    int rows() const { return m_rows; }
    int columns() const { return m_columns; }
    /// Rows up to the last one that may hold a value; the rest is empty.
    int usedRows() const { return m_usedRows; }
    /// row, column  inside the grid, counting from 0
    const CellValue& at(int row, int column) const;
    /// The cells, when the grid is a part of a sheet.
    const Area* area() const { return m_area; }

private:
    const Book& m_book;
    const Area* m_area = nullptr;
    const CellValue* m_values = nullptr;
    int m_rows = 1;
    int m_columns = 1;
    int m_usedRows = 1;
};

} // namespace wagemill::engine
