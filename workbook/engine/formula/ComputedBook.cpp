#include "workbook/engine/formula/ComputedBook.h"

#include <limits>

namespace wagemill::engine {

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
    static const CellValue nothing;
    const Cell* const cell = book.model().sheets[sheet]->find(address);
    return cell != nullptr ? book.valueOf(*cell) : nothing;
}

} // namespace wagemill::engine
