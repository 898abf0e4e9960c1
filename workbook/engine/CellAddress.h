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
    CellAddress first() const { return {firstRow, firstColumn}; }
    bool contains(CellAddress cell) const
    {
        return cell.row >= firstRow && cell.row <= lastRow && cell.column >= firstColumn && cell.column <= lastColumn;
    }
};

/// One corner of a reference. A relative row or column moves when the formula is copied.
struct ReferencePart {
    int row = 0;
    int column = 0;
    bool rowRelative = true;
    bool columnRelative = true;

    bool operator==(const ReferencePart&) const = default;
};

/// Makes `first` the upper left corner and `last` the lower right one; each row and column stays relative or absolute.
void orderCorners(ReferencePart& first, ReferencePart& last);

/// The cells from one corner to the other, whichever way round they are.
CellRect cellsBetween(const ReferencePart& corner, const ReferencePart& other);

/// A cell or area as it is written, "$B$4:N28", "A:C", "2:12". Whole rows and columns are areas that reach across the
/// sheet; the direction in which they do is absolute.
struct WrittenReference {
    ReferencePart first; ///< the upper left corner
    std::optional<ReferencePart> last;
    std::size_t length = 0; ///< bytes read

    CellRect cells() const { return cellsBetween(first, last.value_or(first)); }
};

bool isInsideSheet(CellAddress cell);

/// "A", "Z", "AA", "IV" for columns 0, 25, 26, 255.
std::string columnName(int column);

/// "D5" for row 4, column 3.
std::string addressText(CellAddress cell);

/// Letters, digits and signs that a name or a reference may hold.
bool isNameByte(char byte);

/// Reads from the beginning of `text`, in any case; nothing when it does not begin with a reference inside the sheet,
/// or that is the beginning of a longer word.
std::optional<WrittenReference> readReference(std::string_view text);

/// The cells of a whole text such as "D5", "A1:B7" or "2:12" (columns 0 to 255); nothing when it is not a reference.
std::optional<CellRect> parseAddress(std::string_view text);

} // namespace wagemill::engine
