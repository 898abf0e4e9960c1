#include "workbook/engine/CellAddress.h"

#include <algorithm>
#include <cctype>

namespace wagemill::engine {

namespace {

struct Corner {
    std::optional<int> row;
    std::optional<int> column;
};

std::optional<Corner> parseCorner(std::string_view text)
{
    Corner corner;
    std::size_t at = 0;
    const auto skipDollar = [&] {
        if (at < text.size() && text[at] == '$')
            ++at;
    };
    skipDollar();
    int column = 0;
    const std::size_t firstLetter = at;
    for (; at < text.size() && std::isalpha(static_cast<unsigned char>(text[at])) && at - firstLetter < 3; ++at)
        column = column * 26 + (std::toupper(static_cast<unsigned char>(text[at])) - 'A' + 1);
    if (at > firstLetter)
        corner.column = column - 1;
    skipDollar();
    int row = 0;
    const std::size_t firstDigit = at;
    for (; at < text.size() && std::isdigit(static_cast<unsigned char>(text[at])) && at - firstDigit < 6; ++at)
        row = row * 10 + (text[at] - '0');
    if (at > firstDigit)
        corner.row = row - 1;
    if (at != text.size() || (!corner.row && !corner.column))
        return std::nullopt;
    if (corner.row.value_or(0) < 0 || corner.row.value_or(0) >= maxRows || corner.column.value_or(0) >= maxColumns)
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

std::optional<CellRect> parseAddress(std::string_view text)
{
    const std::size_t colon = text.find(':');
    const auto first = parseCorner(text.substr(0, colon));
    const auto last = colon == std::string_view::npos ? first : parseCorner(text.substr(colon + 1));
    if (!first || !last || first->row.has_value() != last->row.has_value() ||
        first->column.has_value() != last->column.has_value())
        return std::nullopt;
    if (colon == std::string_view::npos && (!first->row || !first->column))
        return std::nullopt; // a lone "5" or "B" is no range
    const auto [top, bottom] = std::minmax({first->row.value_or(0), last->row.value_or(maxRows - 1)});
    const auto [left, right] = std::minmax({first->column.value_or(0), last->column.value_or(maxColumns - 1)});
    return CellRect{top, left, bottom, right};
}

} // namespace wagemill::engine
