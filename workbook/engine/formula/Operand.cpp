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

ValueGrid::ValueGrid(const ComputedBook& book, const Operand& operand) : m_book(book), m_values(&emptyValue)
{
    if (const auto* const value = std::get_if<CellValue>(&operand)) {
        m_values = value;
    } else if (const auto* const area = std::get_if<Area>(&operand)) {
        m_area = area;
        m_rows = area->cells.rows();
        m_columns = area->cells.columns();
        m_usedRows = std::clamp(static_cast<int>(book.rows(area->sheet).size()) - area->cells.firstRow, 0, m_rows);
        book.countRows(m_usedRows);
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
