#include "workbook/engine/Sheet.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace wagemill::engine {

namespace {

/// Where the cell of that column is or would be put.
auto cellPosition(auto& cells, int column)
{
    return std::ranges::lower_bound(cells, column, {}, &Cell::column);
}

const ColumnRun* columnRun(const std::vector<ColumnRun>& columns, int column)
{
    const auto run = std::ranges::find_if(
        columns, [&](const ColumnRun& candidate) { return column >= candidate.first && column <= candidate.last; });
    return run == columns.end() ? nullptr : &*run;
}

/// The area moved along, when all of it is among the rows that are copied; a copy of a part keeps the value alone, as
/// does one of a data table.
std::shared_ptr<const ArrayArea> shiftedArray(const ArrayArea& array, int first, int last, int rows)
{
    if (array.isTable() || array.cells.firstRow < first || array.cells.lastRow > last)
        return nullptr;
    ArrayArea shifted = array;
    shifted.cells.firstRow += rows;
    shifted.cells.lastRow += rows;
    return std::make_shared<const ArrayArea>(std::move(shifted));
}

/// A row as it is pasted so many rows further down, copied together with the rows from `first` to `last`.
Row shiftedRow(const Row& source, int first, int last, int rows)
{
    Row copy = source;
    for (Cell& cell : copy.cells) {
        if (cell.formula)
            cell.formula = std::make_shared<const Formula>(shiftedFormula(*cell.formula, rows, 0));
        if (cell.array && !(cell.array = shiftedArray(*cell.array, first, last, rows)))
            cell.formula.reset();
    }
    return copy;
}

} // namespace

bool Row::isPlain() const
{
    return !heightTwips && !heightSetByHand && !hidden && outlineLevel == 0 && !collapsed && !format;
}

const Cell* Sheet::find(CellAddress address) const
{
    const Row* const foundRow = findRow(address.row);
    if (foundRow == nullptr)
        return nullptr;
    const auto position = cellPosition(foundRow->cells, address.column);
    return position != foundRow->cells.end() && position->column == address.column ? &*position : nullptr;
}

Cell* Sheet::find(CellAddress address)
{
    return const_cast<Cell*>(std::as_const(*this).find(address)); // the cell is ours, and we are not const
}

Cell& Sheet::at(CellAddress address)
{
    if (!isInsideSheet(address))
        throw std::out_of_range("Row " + std::to_string(address.row + 1) + ", column " +
                                std::to_string(address.column + 1) + " lies outside the sheet.");
    Row& wanted = row(address.row);
    auto position = cellPosition(wanted.cells, address.column);
    if (position == wanted.cells.end() || position->column != address.column) {
        Cell made;
        made.column = static_cast<std::int16_t>(address.column); // checked to be inside the sheet
        made.format = formatAt(address);
        position = wanted.cells.insert(position, std::move(made));
    }
    return *position;
}

std::uint16_t Sheet::formatAt(CellAddress address) const
{
    if (const Cell* const cell = find(address))
        return cell->format;
    if (const Row* const found = findRow(address.row); found != nullptr && found->format)
        return *found->format;
    const ColumnRun* const run = columnRun(columns, address.column);
    return run == nullptr ? defaultCellFormat : run->format;
}

const CellValue& Sheet::value(CellAddress address) const
{
    static const CellValue nothing;
    const Cell* const cell = find(address);
    return cell == nullptr ? nothing : cell->value;
}

Row& Sheet::row(int index)
{
    if (static_cast<std::size_t>(index) >= m_rows.size())
        m_rows.resize(static_cast<std::size_t>(index) + 1);
    return m_rows[static_cast<std::size_t>(index)];
}

const Row* Sheet::findRow(int index) const
{
    return index >= 0 && static_cast<std::size_t>(index) < m_rows.size() ? &m_rows[static_cast<std::size_t>(index)]
                                                                         : nullptr;
}

std::optional<CellRect> Sheet::usedRange() const
{
    std::optional<CellRect> used;
    for (int index = 0; index < static_cast<int>(m_rows.size()); ++index) {
        const auto& cells = m_rows[static_cast<std::size_t>(index)].cells;
        if (cells.empty())
            continue;
        const CellRect before = used.value_or(CellRect{index, cells.front().column, index, cells.back().column});
        used = {before.firstRow, std::min<int>(before.firstColumn, cells.front().column), index,
                std::max<int>(before.lastColumn, cells.back().column)};
    }
    return used;
}

int Sheet::columnWidth(int column) const
{
    const ColumnRun* const run = columnRun(columns, column);
    if (run == nullptr)
        return (defaultColumnWidth * 7 + 5) * 256 / 7; // five pixels of margin, a digit of the default font is seven
    return run->hidden ? 0 : run->width;
}

int Sheet::rowHeightTwips(int index) const
{
    const Row* const found = findRow(index);
    if (found == nullptr)
        return defaultRowHeightTwips;
    return found->hidden ? 0 : found->heightTwips.value_or(defaultRowHeightTwips);
}

void Sheet::copyRows(int first, int last, int target)
{
    const int distance = target - first;
    if (last + distance >= maxRows)
        throw std::out_of_range("Rows " + std::to_string(first + 1) + " to " + std::to_string(last + 1) +
                                " cannot be pasted at row " + std::to_string(target + 1) +
                                ": they would leave the sheet.");
    if (distance == 0)
        return;
    std::vector<Row> copies;
    copies.reserve(static_cast<std::size_t>(last - first) + 1);
    for (int index = first; index <= last; ++index)
        copies.push_back(findRow(index) != nullptr ? shiftedRow(*findRow(index), first, last, distance) : Row{});
    for (int index = 0; index < static_cast<int>(copies.size()); ++index)
        row(target + index) = std::move(copies[static_cast<std::size_t>(index)]);

    const auto inside = [](const CellRect& area, int from, int to) {
        return area.firstRow >= from && area.lastRow <= to;
    };
    std::vector<CellRect> pasted;
    for (const CellRect& area : merged)
        if (inside(area, first, last))
            pasted.push_back({area.firstRow + distance, area.firstColumn, area.lastRow + distance, area.lastColumn});
    std::erase_if(merged, [&](const CellRect& area) { return inside(area, target, last + distance); });
    merged.insert(merged.end(), pasted.begin(), pasted.end());
}

} // namespace wagemill::engine
