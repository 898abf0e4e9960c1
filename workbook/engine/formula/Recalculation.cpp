#include "workbook/engine/formula/Recalculation.h"

#include "workbook/engine/formula/FormulaEvaluator.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

namespace wagemill::engine {

namespace {

using FormulaIndex = std::uint32_t;

struct FormulaCell {
    Cell* cell = nullptr;
    std::uint32_t sheet = 0;
    std::int32_t row = 0;
};

/// All formulas of the workbook, sheet by sheet, row by row, and which of them are computed.
class FormulaList {
public:
    explicit FormulaList(Book& book);

    std::size_t size() const { return m_cells.size(); }
    const FormulaCell& operator[](FormulaIndex index) const { return m_cells[index]; }
    bool isDone(FormulaIndex index) const { return m_done[index] != 0; }
    void setDone(FormulaIndex index);
    /// The first formula in the area from `from` on that is not computed yet.
    std::optional<FormulaIndex> nextPending(const Area& area, FormulaIndex from) const;

private:
    struct SheetIndex {
        std::vector<FormulaIndex> firstOfRow; ///< one more than rows: where the next row's formulas begin
        FormulaIndex firstPending = 0;        ///< every formula of the sheet before it is computed
    };

    std::vector<FormulaCell> m_cells;
    std::vector<std::uint8_t> m_done;
    std::vector<SheetIndex> m_sheets;
};

FormulaList::FormulaList(Book& book)
{
    for (std::size_t i = 0; i < book.sheets.size(); ++i) {
        Sheet& sheet = *book.sheets[i];
        SheetIndex index;
        index.firstPending = static_cast<FormulaIndex>(m_cells.size());
        const auto rows = static_cast<int>(sheet.rows().size());
        for (int row = 0; row < rows; ++row) {
            index.firstOfRow.push_back(static_cast<FormulaIndex>(m_cells.size()));
            for (Cell& cell : sheet.row(row).cells)
                if (cell.formula)
                    m_cells.push_back({&cell, static_cast<std::uint32_t>(i), row});
        }
        index.firstOfRow.push_back(static_cast<FormulaIndex>(m_cells.size()));
        m_sheets.push_back(std::move(index));
    }
    m_done.resize(m_cells.size());
}

void FormulaList::setDone(FormulaIndex index)
{
    m_done[index] = 1;
    SheetIndex& sheet = m_sheets[m_cells[index].sheet];
    while (sheet.firstPending < sheet.firstOfRow.back() && m_done[sheet.firstPending] != 0)
        ++sheet.firstPending;
}

std::optional<FormulaIndex> FormulaList::nextPending(const Area& area, FormulaIndex from) const
{
    const SheetIndex& sheet = m_sheets[area.sheet];
    const auto rows = static_cast<int>(sheet.firstOfRow.size()) - 1;
    if (area.cells.firstRow >= rows || sheet.firstPending == sheet.firstOfRow.back())
        return std::nullopt;
    const auto boundary = [&](int row) { return sheet.firstOfRow[static_cast<std::size_t>(std::min(row, rows))]; };
    const FormulaIndex end = boundary(area.cells.lastRow + 1);
    for (FormulaIndex i = std::max({from, sheet.firstPending, boundary(area.cells.firstRow)}); i < end; ++i) {
        const int column = m_cells[i].cell->column;
        if (m_done[i] == 0 && column >= area.cells.firstColumn && column <= area.cells.lastColumn)
            return i;
    }
    return std::nullopt;
}

/// Whether the token at `index` is the argument of a function that asks where a reference is, not what is in it.
bool isAskedForPlaceOnly(const std::vector<Token>& tokens, std::size_t index)
{
    constexpr std::uint16_t row = 8;
    constexpr std::uint16_t column = 9;
    constexpr std::uint16_t rows = 76;
    constexpr std::uint16_t columns = 77;
    const auto* const function = index + 1 < tokens.size() ? std::get_if<FunctionToken>(&tokens[index + 1]) : nullptr;
    return function != nullptr && function->arguments == 1 &&
           (function->function == row || function->function == column || function->function == rows ||
            function->function == columns);
}

/// Where a formula's search for precedents that are not computed yet stands.
struct PrecedentCursor {
    std::size_t token = 0;
    std::size_t areasPassed = 0; ///< of that token
    FormulaIndex from = 0;       ///< inside the present area
};

/// Depth-first over the precedents with a stack of our own, however long the chain; the cells that depend on themselves
/// are the strongly connected components (Tarjan, "Depth-first search and linear graph algorithms", 1972).
class Calculation {
public:
    Calculation(Book& book, const CalculationSettings& settings)
        : m_book(book),
          m_formulas(book),
          m_evaluator(book, settings, [this](const Area& area) { return m_formulas.nextPending(area, 0).has_value(); }),
          m_number(m_formulas.size()),
          m_lowest(m_formulas.size())
    {
    }

    void run()
    {
        for (FormulaIndex i = 0; i < m_formulas.size(); ++i)
            if (!m_formulas.isDone(i))
                compute(i);
    }

private:
    struct Visit {
        FormulaIndex formula = 0;
        PrecedentCursor cursor;
        std::optional<PendingArea> computedArea; ///< that evaluation met and that has to be computed first
        FormulaIndex computedFrom = 0;
        bool dependsOnItself = false;
    };

    void compute(FormulaIndex first);
    void enter(FormulaIndex formula);
    std::optional<FormulaIndex> nextPrecedent(Visit& visit) const;
    std::optional<FormulaIndex> nextStaticPrecedent(Visit& visit) const;
    void leaveOrEvaluate();
    bool evaluate(Visit& visit);
    void leave();
    void setCycleToZero(FormulaIndex root);

    Book& m_book;
    FormulaList m_formulas;
    FormulaEvaluator m_evaluator;
    std::vector<FormulaIndex> m_number; ///< order in which a formula was entered, from 1; 0: not yet
    std::vector<FormulaIndex> m_lowest; ///< lowest number that the formula leads back to
    FormulaIndex m_entered = 0;
    std::vector<Visit> m_path;
    std::vector<FormulaIndex> m_open; ///< entered, and not known yet to be free of cycles
};

void Calculation::enter(FormulaIndex formula)
{
    m_number[formula] = m_lowest[formula] = ++m_entered;
    m_path.push_back({formula, {}, std::nullopt, 0, false});
    m_open.push_back(formula);
}

void Calculation::compute(FormulaIndex first)
{
    enter(first);
    while (!m_path.empty()) {
        Visit& visit = m_path.back();
        const auto precedent = nextPrecedent(visit);
        if (!precedent) {
            leaveOrEvaluate();
        } else if (m_number[*precedent] == 0) {
            enter(*precedent);
        } else {
            m_lowest[visit.formula] = std::min(m_lowest[visit.formula], m_number[*precedent]);
            visit.dependsOnItself = visit.dependsOnItself || *precedent == visit.formula;
        }
    }
}

std::optional<FormulaIndex> Calculation::nextPrecedent(Visit& visit) const
{
    if (!visit.computedArea)
        return nextStaticPrecedent(visit);
    const auto found = m_formulas.nextPending(visit.computedArea->area, visit.computedFrom);
    if (found)
        visit.computedFrom = *found + 1;
    else
        visit.computedArea.reset();
    return found;
}

std::optional<FormulaIndex> Calculation::nextStaticPrecedent(Visit& visit) const
{
    const FormulaCell& formula = m_formulas[visit.formula];
    const auto& tokens = formula.cell->formula->tokens;
    PrecedentCursor& cursor = visit.cursor;
    for (; cursor.token < tokens.size(); cursor = {cursor.token + 1, 0, 0}) {
        const auto* const reference = std::get_if<ReferenceToken>(&tokens[cursor.token]);
        if (reference == nullptr || isAskedForPlaceOnly(tokens, cursor.token))
            continue;
        std::optional<FormulaIndex> found;
        std::size_t position = 0;
        forEachArea(m_book, formula.sheet, *reference, [&](const Area& area) {
            if (position++ < cursor.areasPassed || found)
                return;
            found = m_formulas.nextPending(area, cursor.from);
            cursor.areasPassed += found ? 0 : 1;
            cursor.from = found ? *found + 1 : 0;
        });
        if (found)
            return found;
    }
    return std::nullopt;
}

/// All precedents are computed, or lead back to here.
void Calculation::leaveOrEvaluate()
{
    Visit& visit = m_path.back();
    const bool leadsBack = m_lowest[visit.formula] < m_number[visit.formula];
    if (leadsBack)
        return leave();
    if (visit.dependsOnItself || m_open.back() != visit.formula) {
        setCycleToZero(visit.formula);
        return leave();
    }
    if (!evaluate(visit))
        return; // it needs other cells first
    m_open.pop_back();
    leave();
}

/// Whether the formula is computed; else the visit knows the area that it needs.
bool Calculation::evaluate(Visit& visit)
{
    const FormulaCell& formula = m_formulas[visit.formula];
    const Cell& cell = *formula.cell;
    const CellAddress address{formula.row, cell.column};
    Evaluation evaluation = cell.array
                                ? m_evaluator.evaluateElement(*cell.formula, formula.sheet, address, cell.array->cells)
                                : m_evaluator.evaluate(*cell.formula, formula.sheet, address);
    if (const auto* const pending = std::get_if<PendingArea>(&evaluation)) {
        visit.computedArea = *pending;
        visit.computedFrom = 0;
        return false;
    }
    if (auto* const value = std::get_if<CellValue>(&evaluation))
        formula.cell->value = std::move(*value);
    else if (isEmpty(formula.cell->value))
        formula.cell->value = ErrorCode::Name; // typed just now: there is no stored value to keep
    m_formulas.setDone(visit.formula);
    return true;
}

void Calculation::leave()
{
    const FormulaIndex left = m_path.back().formula;
    m_path.pop_back();
    if (!m_path.empty()) {
        FormulaIndex& lowest = m_lowest[m_path.back().formula];
        if (!m_formulas.isDone(left))
            lowest = std::min(lowest, m_lowest[left]);
    }
}

void Calculation::setCycleToZero(FormulaIndex root)
{
    for (;;) {
        const FormulaIndex formula = m_open.back();
        m_open.pop_back();
        m_formulas[formula].cell->value = 0.0;
        m_formulas.setDone(formula);
        if (formula == root)
            return;
    }
}

} // namespace

void recalculate(Book& book, const CalculationSettings& settings)
{
    Calculation(book, settings).run();
}

} // namespace wagemill::engine
