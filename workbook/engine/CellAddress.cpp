#include "workbook/engine/CellAddress.h"

#include "app/base/text/TextScanner.h"

#include <algorithm>
#include <utility>

namespace wagemill::engine {

namespace {

/// A row or column as it is written: after a dollar sign where it is absolute.
struct Coordinate {
    std::optional<int> place;
    bool isAbsolute = false;
};

/// Takes a coordinate of at most so many digits off the front of the text, if there is one.
template <class IsDigit>
Coordinate takeCoordinate(std::string_view& text, std::size_t maxDigits, int base, char zero, IsDigit isDigitOfIt)
{
    const std::size_t start = text.starts_with('$') ? 1 : 0;
    std::size_t at = start;
    int number = 0;
    for (; at < text.size() && at < start + maxDigits && isDigitOfIt(text[at]); ++at)
        number = number * base + ((isLetter(text[at]) ? text[at] & 0x5F : text[at]) - zero);
    if (at == start)
        return {};
    text.remove_prefix(at);
    return {number - 1, start == 1};
}

struct Corner {
    Coordinate column;
    Coordinate row;
    std::size_t length = 0;

    ReferencePart part(int otherRow, int otherColumn) const
    {
        return {row.place.value_or(otherRow), column.place.value_or(otherColumn), row.place && !row.isAbsolute,
                column.place && !column.isAbsolute};
    }
};

std::optional<Corner> readCorner(std::string_view text)
{
    std::string_view rest = text;
    Corner corner;
    corner.column = takeCoordinate(rest, 3, 26, 'A' - 1, isLetter);
    corner.row = takeCoordinate(rest, 6, 10, '0', isDigit);
    corner.length = text.size() - rest.size();
    const bool goesOn = !rest.empty() && (isNameByte(rest[0]) || rest[0] == '(' || rest[0] == '!');
    if (corner.length == 0 || goesOn || !isInsideSheet({corner.row.place.value_or(0), corner.column.place.value_or(0)}))
        return std::nullopt;
    return corner;
}

} // namespace

bool isInsideSheet(CellAddress cell)
{
    return cell.row >= 0 && cell.row < maxRows && cell.column >= 0 && cell.column < maxColumns;
}

std::string columnName(int column)
{
    std::string name;
    for (int rest = column + 1; rest > 0; rest = (rest - 1) / 26)
        name.insert(name.begin(), static_cast<char>('A' + (rest - 1) % 26));
    return name;
}

std::string addressText(CellAddress cell)
{
    return columnName(cell.column) + std::to_string(cell.row + 1);
}

CellRect cellsBetween(const ReferencePart& corner, const ReferencePart& other)
{
    return {std::min(corner.row, other.row), std::min(corner.column, other.column), std::max(corner.row, other.row),
            std::max(corner.column, other.column)};
}

void orderCorners(ReferencePart& first, ReferencePart& last)
{
    if (first.row > last.row) {
        std::swap(first.row, last.row);
        std::swap(first.rowRelative, last.rowRelative);
    }
    if (first.column > last.column) {
        std::swap(first.column, last.column);
        std::swap(first.columnRelative, last.columnRelative);
    }
}

bool isNameByte(char byte)
{
    return isLetter(byte) || isDigit(byte) || std::string_view("_.\\?").find(byte) != std::string_view::npos ||
           static_cast<unsigned char>(byte) >= 0x80;
}

std::optional<WrittenReference> readReference(std::string_view text)
{
    const auto first = readCorner(text);
    if (!first)
        return std::nullopt;
    const std::string_view rest = text.substr(first->length);
    if (rest.starts_with(':'))
        if (const auto last = readCorner(rest.substr(1));
            last && last->row.place.has_value() == first->row.place.has_value() &&
            last->column.place.has_value() == first->column.place.has_value()) {
            ReferencePart from = first->part(0, 0);
            ReferencePart to = last->part(maxRows - 1, maxColumns - 1);
            orderCorners(from, to);
            return WrittenReference{from, to, first->length + 1 + last->length};
        }
    if (!first->row.place || !first->column.place)
        return std::nullopt; // a lone "5" or "B"
    return WrittenReference{first->part(0, 0), std::nullopt, first->length};
}

std::optional<CellRect> parseAddress(std::string_view text)
{
    const auto written = readReference(text);
    return written && written->length == text.size() ? std::optional(written->cells()) : std::nullopt;
}

} // namespace wagemill::engine
