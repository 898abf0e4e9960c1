#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace wagemill::engine {

inline constexpr int maxRows = 65536;
inline constexpr int maxColumns = 256;

/// A cell's place; row and column count from 0.
struct CellAddress {
    int row = 0;
    int column = 0;

    auto operator<=>(const CellAddress&) const = default;
};

/// A block of cells, both corners included; rows and columns count from 0.
struct CellRect {
    int firstRow = 0;
    int firstColumn = 0;
    int lastRow = 0;
    int lastColumn = 0;

    bool operator==(const CellRect&) const = default;
    int rows() const { return lastRow - firstRow + 1; }
    int columns() const { return lastColumn - firstColumn + 1; }
    bool contains(CellAddress cell) const
    {
        return cell.row >= firstRow && cell.row <= lastRow && cell.column >= firstColumn && cell.column <= lastColumn;
    }
};

bool isInsideSheet(CellAddress cell);

/// "A", "Z", "AA", "IV" for columns 0, 25, 26, 255.
std::string columnName(int column);

/// "D5" for row 4, column 3.
std::string addressText(CellAddress cell);

/// Reads "D5", "A1:B7" or whole rows "2:12" (columns 0 to 255), in any case and with or without "$"; empty when the
/// text is no such address or lies outside the sheet.
std::optional<CellRect> parseAddress(std::string_view text);

} // namespace wagemill::engine
