#include "workbook/engine/formula/Operand.h"

namespace wagemill::engine {

namespace {

const CellValue emptyValue;
const CellValue severalAreas = ErrorCode::Value;
const CellValue unknownName = ErrorCode::Name;

} // namespace

std::span<const Area> areasOf(const Operand& operand)
{
    if (const auto* const area = std::get_if<Area>(&operand))
        return {area, 1};
    if (const auto* const several = std::get_if<std::shared_ptr<const std::vector<Area>>>(&operand))
        return **several;
    return {};
}

const CellValue& cellValue(const Book& book, std::size_t sheet, CellAddress address)
{
    const auto& rows = book.sheets[sheet]->rows();
    if (static_cast<std::size_t>(address.row) >= rows.size())
        return emptyValue;
    const auto& cells = rows[static_cast<std::size_t>(address.row)].cells;
    const auto cell = std::ranges::lower_bound(cells, address.column, {}, &Cell::column);
    return cell != cells.end() && cell->column == address.column ? cell->value : emptyValue;
}

ValueGrid::ValueGrid(const Book& book, const Operand& operand) : m_book(book), m_values(&emptyValue)
{
    if (const auto* const value = std::get_if<CellValue>(&operand)) {
        m_values = value;
    } else if (const auto* const area = std::get_if<Area>(&operand)) {
        m_area = area;
        m_rows = area->cells.rows();
        m_columns = area->cells.columns();
        const int sheetRows = static_cast<int>(book.sheets[area->sheet]->rows().size());
        m_usedRows = std::clamp(sheetRows - area->cells.firstRow, 0, m_rows);
    } else if (const auto* const array = std::get_if<std::shared_ptr<const ValueArray>>(&operand)) {
        m_values = (*array)->values.data();
        m_rows = m_usedRows = (*array)->rows;
        m_columns = (*array)->columns;
    } else if (std::holds_alternative<CalledName>(operand)) {
        m_values = &unknownName;
    } else if (!areasOf(operand).empty()) {
        m_values = &severalAreas;
    }
}

const CellValue& ValueGrid::at(int row, int column) const
{
    if (m_area != nullptr)
        return cellValue(m_book, m_area->sheet, {m_area->cells.firstRow + row, m_area->cells.firstColumn + column});
    return m_values[static_cast<std::size_t>(row) * static_cast<std::size_t>(m_columns) +
                    static_cast<std::size_t>(column)];
}

} // namespace wagemill::engine
