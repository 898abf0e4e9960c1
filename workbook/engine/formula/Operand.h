#pragma once

#include "workbook/engine/formula/ComputedBook.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <variant>
#include <vector>

namespace wagemill::engine {

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

/// What is on the stack while a formula is evaluated. Several areas come from "," and from areas of several sheets.
using Operand = std::variant<CellValue, MissingArgument, Area, std::shared_ptr<const std::vector<Area>>,
                             std::shared_ptr<const ValueArray>, CalledName>;

inline Operand errorOperand(ErrorCode error)
{
    return CellValue(error);
}

/// The areas that the operand refers to; none when it is a value.
std::span<const Area> areasOf(const Operand& operand);

/// Rows and columns of values, be they cells, an array or one value. Refers to the book and the operand.
class ValueGrid {
public:
    /// operand  anything but several areas, which read as #VALUE!
    ValueGrid(const ComputedBook& book, const Operand& operand);

    int rows() const { return m_rows; }
    int columns() const { return m_columns; }
    /// Rows up to the last one that may hold a value; the rest is empty.
    int usedRows() const { return m_usedRows; }
    /// row, column  inside the grid, counting from 0
    const CellValue& at(int row, int column) const;
    /// The cells, when the grid is a part of a sheet.
    const Area* area() const { return m_area; }

private:
    const ComputedBook& m_book;
    const Area* m_area = nullptr;
    const CellValue* m_values = nullptr;
    int m_rows = 1;
    int m_columns = 1;
    int m_usedRows = 1;
};

} // namespace wagemill::engine
