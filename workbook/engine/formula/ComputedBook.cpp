#include "workbook/engine/formula/ComputedBook.h"

#include <limits>

namespace wagemill::engine {

namespace {

const CellValue nothing;

} // namespace

const CellValue& ComputedBook::computed(const Cell& cell) const
{
    m_compute(cell);
    return cell.value;
}

std::span<double> ComputedBook::numbersOf(std::size_t sheet, int column) const
{
    constexpr std::size_t maxKept = std::size_t{1} << 20; // 8 MiB; a file of few bytes can have many long columns
    const auto found = m_numbers.find({sheet, column});
    if (found != m_numbers.end())
        return found->second;
    const std::size_t rowCount = rows(sheet).size();
    if (rowCount > maxKept - m_numbersKept)
        return {};
    m_numbersKept += rowCount;
    auto& kept = m_numbers[{sheet, column}];
    kept.assign(rowCount, std::numeric_limits<double>::quiet_NaN());
    return kept;
}

const CellValue& cellValue(const ComputedBook& book, std::size_t sheet, CellAddress address)
{
    const auto rows = book.rows(sheet);
    if (static_cast<std::size_t>(address.row) >= rows.size())
        return nothing;
    const auto& cells = rows[static_cast<std::size_t>(address.row)].cells;
    const auto cell = std::ranges::lower_bound(cells, address.column, {}, &Cell::column);
    return cell != cells.end() && cell->column == address.column ? book.valueOf(*cell) : nothing;
}

} // namespace wagemill::engine
