#include "workbook/engine/formula/Coercion.h"
#include "workbook/engine/formula/Criterion.h"
#include "workbook/engine/formula/FormulaFunctions.h"
#include "workbook/engine/formula/ReferenceText.h"

#include <array>
#include <cmath>
#include <optional>

namespace wagemill::engine {

namespace {

enum class Direction : std::uint8_t { Down, Across };

/// A row or a column of values in which a key is sought.
class Line {
public:
    Line(const ValueGrid& grid, Direction direction) : m_grid(grid), m_down(direction == Direction::Down) {}

    int size() const { return m_down ? m_grid.usedRows() : m_grid.usedRows() > 0 ? m_grid.columns() : 0; }
    const CellValue& operator[](int index) const { return m_down ? m_grid.at(index, 0) : m_grid.at(0, index); }

private:
    const ValueGrid& m_grid;
    bool m_down;
};

std::optional<int> exactPosition(const Line& line, const CellValue& key)
{
    const LookupKey wanted(key);
    for (int i = 0; i < line.size(); ++i)
        if (wanted.matches(line[i]))
            return i;
    return std::nullopt;
}

/// The last place whose value is not past the key, in values that ascend. Values of another kind than the key's are
/// passed over.
std::optional<int> ascendingPosition(const Line& line, const CellValue& key)
{
    const CellValue wanted = isEmpty(key) ? CellValue(0.0) : key;
    int low = 0;
    int high = line.size(); // everything before low is not past the key, everything from high on is
    std::optional<int> best;
    while (low < high) {
        const int middle = low + (high - low) / 2;
        int tested = middle;
        while (tested >= low && line[tested].index() != wanted.index())
            --tested;
        if (tested < low) {
            low = middle + 1;
        } else if (compareValues(line[tested], wanted) <= 0) {
            best = tested;
            low = middle + 1;
        } else {
            high = tested;
        }
    }
    return best;
}

/// The first place that holds the key, else the last one before the values, which descend, are past it.
std::optional<int> descendingPosition(const Line& line, const CellValue& key)
{
    const CellValue wanted = isEmpty(key) ? CellValue(0.0) : key;
    std::optional<int> best;
    for (int i = 0; i < line.size(); ++i) {
        if (line[i].index() != wanted.index())
            continue;
        const int order = compareValues(line[i], wanted);
        if (order >= 0)
            best = i;
        if (order <= 0)
            break;
    }
    return best;
}

/// VLOOKUP, or HLOOKUP with rows and columns exchanged.
template <Direction direction>
Answer tableLookup(const FunctionCall& call)
{
    constexpr bool down = direction == Direction::Down;
    const ValueGrid grid(call.book(), call.operand(1));
    const int answer = call.integer(2);
    if (answer < 1)
        return ErrorCode::Value;
    if (answer > (down ? grid.columns() : grid.rows()))
        return ErrorCode::Reference;
    const CellValue key = call.value(0);
    const Line line(grid, direction);
    const bool approximate = call.count() < 4 || (call.has(3) && call.logical(3));
    const auto found = approximate ? ascendingPosition(line, key) : exactPosition(line, key);
    if (!found)
        return ErrorCode::NotAvailable;
    return down ? grid.at(*found, answer - 1) : grid.at(answer - 1, *found);
}

/// The longer side of the range is searched; the answer is in its last row or column, or in the third argument.
Answer lookup(const FunctionCall& call)
{
    const ValueGrid grid(call.book(), call.operand(1));
    const auto direction = grid.columns() > grid.rows() ? Direction::Across : Direction::Down;
    const auto found = ascendingPosition(Line(grid, direction), call.value(0));
    if (!found)
        return ErrorCode::NotAvailable;
    const ValueGrid answers(call.book(), call.operand(call.has(2) ? 2 : 1));
    const bool across = answers.columns() > answers.rows();
    const int row = across ? answers.rows() - 1 : *found;
    const int column = across ? *found : answers.columns() - 1;
    if (row >= answers.rows() || column >= answers.columns())
        return ErrorCode::NotAvailable;
    return answers.at(row, column);
}

Answer match(const FunctionCall& call)
{
    const ValueGrid grid(call.book(), call.operand(1));
    if (grid.rows() != 1 && grid.columns() != 1)
        return ErrorCode::NotAvailable;
    const double type = call.number(2, call.count() > 2 ? 0 : 1);
    const Line line(grid, grid.rows() == 1 ? Direction::Across : Direction::Down);
    const CellValue key = call.value(0);
    const auto found = type == 0  ? exactPosition(line, key)
                       : type > 0 ? ascendingPosition(line, key)
                                  : descendingPosition(line, key);
    return found ? Answer(*found + 1) : ErrorCode::NotAvailable;
}

/// A row, a column or one place of the grid, counting from 1; 0 asks for all rows or columns. A reference where it can
/// be one.
Answer part(const FunctionCall& call, const ValueGrid& grid, int row, int column)
{
    if (grid.area() == nullptr && row > 0 && column > 0)
        return grid.at(row - 1, column - 1);
    if (grid.area() == nullptr)
        return arrayOf(call.evaluator(), row > 0 ? 1 : grid.rows(), column > 0 ? 1 : grid.columns(),
                       [&](int r, int c) { return grid.at(row > 0 ? row - 1 : r, column > 0 ? column - 1 : c); });
    Area area = *grid.area();
    if (row > 0)
        area.cells.firstRow = area.cells.lastRow = area.cells.firstRow + row - 1;
    if (column > 0)
        area.cells.firstColumn = area.cells.lastColumn = area.cells.firstColumn + column - 1;
    return area;
}

Answer index(const FunctionCall& call)
{
    const auto areas = areasOf(call.operand(0));
    const int areaNumber = call.integer(3, 1);
    if (areaNumber < 1 || areaNumber > std::max(static_cast<int>(areas.size()), 1))
        return ErrorCode::Reference;
    const Operand chosen = areas.empty() ? call.operand(0) : Operand(areas[static_cast<std::size_t>(areaNumber) - 1]);
    const ValueGrid grid(call.book(), chosen);
    const bool oneIndex = call.count() < 3 && grid.rows() == 1; // in a single row the one index is the column's
    const int row = oneIndex ? 1 : call.integer(1, 0);
    const int column = oneIndex ? call.integer(1, 0) : call.integer(2, grid.columns() == 1 ? 1 : 0);
    if (row < 0 || column < 0)
        return ErrorCode::Value;
    if (row > grid.rows() || column > grid.columns())
        return ErrorCode::Reference;
    return part(call, grid, row, column);
}

/// The choice of a CHOOSE that has no jumps.
Answer choose(const FunctionCall& call)
{
    const int index = call.integer(0);
    if (index < 1 || static_cast<std::size_t>(index) >= call.count())
        return ErrorCode::Value;
    return call.operand(static_cast<std::size_t>(index));
}

/// The first and the last of so many rows or columns, upwards or to the left where the count is negative; nothing where
/// they leave the sheet.
std::optional<std::pair<int, int>> span(std::int64_t start, std::int64_t count, int limit)
{
    const std::int64_t first = count < 0 ? start + count + 1 : start;
    const std::int64_t last = count < 0 ? start : start + count - 1;
    if (count == 0 || first < 0 || last >= limit)
        return std::nullopt;
    return std::pair{static_cast<int>(first), static_cast<int>(last)};
}

Answer offset(const FunctionCall& call)
{
    const auto areas = areasOf(call.operand(0));
    if (areas.size() != 1)
        return ErrorCode::Value;
    const CellRect& base = areas.front().cells;
    const auto rows = span(std::int64_t{base.firstRow} + call.integer(1), call.integer(3, base.rows()), maxRows);
    const auto columns =
        span(std::int64_t{base.firstColumn} + call.integer(2), call.integer(4, base.columns()), maxColumns);
    if (!rows || !columns)
        return ErrorCode::Reference;
    return Area{areas.front().sheet, {rows->first, columns->first, rows->second, columns->second}};
}

/// The cells that a defined name means, else #REF!.
Answer namedArea(const FunctionCall& call, std::string_view name, std::size_t sheet)
{
    const Book& book = call.book().model();
    const auto found = findName(book, name, sheet);
    const auto* const tokens = found ? &book.names[*found].formula.tokens : nullptr;
    const auto* const token =
        tokens != nullptr && tokens->size() == 1 ? std::get_if<ReferenceToken>(&tokens->front()) : nullptr;
    return token != nullptr ? referredCells(book, sheet, seenFrom(call.evaluator().cell(), *token))
                            : errorOperand(ErrorCode::Reference);
}

/// The reference that a text or a defined name spells; #REF! when it spells none.
Answer indirect(const FunctionCall& call)
{
    const std::string text = call.text(0);
    const Book& book = call.book().model();
    std::size_t sheet = call.evaluator().sheet();
    std::string_view rest = text;
    if (const auto sheets = readSheets(rest)) {
        const auto named = book.sheetIndex(sheets->first);
        if (!named || sheets->last)
            return ErrorCode::Reference;
        sheet = *named;
        rest.remove_prefix(sheets->length);
    }
    const auto written = readReference(rest);
    if (!call.logical(1, true))
        return ErrorCode::Reference;
    if (!written || written->length != rest.size())
        return namedArea(call, rest, sheet);
    return Area{sheet, written->cells()};
}

/// What comes before a reference to the sheet; in quotation marks where the name needs them.
std::string sheetPrefix(std::string_view sheet)
{
    const bool isPlain = std::ranges::all_of(sheet, [](char byte) { return isNameByte(byte) || byte == ':'; }) &&
                         sheet.find_first_of("0123456789") != 0 && !readReference(sheet);
    if (isPlain)
        return std::string(sheet) + "!";
    std::string quoted;
    for (const char byte : sheet)
        quoted.append(byte == '\'' ? 2 : 1, byte);
    return "'" + quoted + "'!";
}

/// type  1: $A$1, 2: A$1, 3: $A1, 4: A1; R1C1 notation when the fourth argument is false
Answer address(const FunctionCall& call)
{
    const int row = call.integer(0);
    const int column = call.integer(1);
    const int type = call.integer(2, 1);
    if (!isInsideSheet({row - 1, column - 1}) || type < 1 || type > 4)
        return ErrorCode::Value;
    const bool rowAbsolute = type == 1 || type == 2;
    const bool columnAbsolute = type == 1 || type == 3;
    const auto inBrackets = [](int number, bool absolute) {
        return absolute ? std::to_string(number) : "[" + std::to_string(number) + "]";
    };
    std::string text = call.has(4) ? sheetPrefix(call.text(4)) : "";
    if (call.logical(3, true))
        text += (columnAbsolute ? "$" : "") + columnName(column - 1) + (rowAbsolute ? "$" : "") + std::to_string(row);
    else
        text += "R" + inBrackets(row, rowAbsolute) + "C" + inBrackets(column, columnAbsolute);
    return text;
}

/// The row or column, counting from 1, of the reference's first cell, or of the formula's own; all of them where an
/// array is wanted.
template <int CellRect::*first, int CellAddress::*own>
Answer position(const FunctionCall& call)
{
    if (!call.has(0))
        return call.evaluator().cell().*own + 1;
    const auto areas = areasOf(call.operand(0));
    if (areas.empty())
        return ErrorCode::Value;
    const CellRect& cells = areas.front().cells;
    if (!call.wantsArray())
        return cells.*first + 1;
    constexpr bool isRow = own == &CellAddress::row;
    return arrayOf(call.evaluator(), isRow ? cells.rows() : 1, isRow ? 1 : cells.columns(),
                   [&](int row, int column) { return CellValue(cells.*first + 1.0 + row + column); });
}

Answer transposed(const FunctionCall& call)
{
    const ValueGrid grid(call.book(), call.operand(0));
    return arrayOf(call.evaluator(), grid.columns(), grid.rows(),
                   [&](int row, int column) { return grid.at(column, row); });
}

constexpr auto table = std::to_array<FunctionBinding>({
    {"VLOOKUP", tableLookup<Direction::Down>},
    {"HLOOKUP", tableLookup<Direction::Across>},
    {"LOOKUP", lookup},
    {"MATCH", match},
    {"INDEX", index},
    {"CHOOSE", choose},
    {"OFFSET", offset},
    {"INDIRECT", indirect},
    {"ADDRESS", address},
    {"ROW", position<&CellRect::firstRow, &CellAddress::row>},
    {"COLUMN", position<&CellRect::firstColumn, &CellAddress::column>},
    {"TRANSPOSE", transposed},
    {"ROWS", [](const FunctionCall& call) -> Answer { return ValueGrid(call.book(), call.operand(0)).rows(); }},
    {"COLUMNS", [](const FunctionCall& call) -> Answer { return ValueGrid(call.book(), call.operand(0)).columns(); }},
    {"AREAS", [](const FunctionCall& call) -> Answer { return areasOf(call.operand(0)).size(); }},
});

} // namespace

constinit const std::span<const FunctionBinding> lookupFunctions = table;

} // namespace wagemill::engine
