#include "workbook/engine/formula/Recalculation.h"

#include "workbook/engine/formula/FormulaEvaluator.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <deque>
#include <limits>
#include <map>
#include <vector>

namespace wagemill::engine {

namespace {

using FormulaIndex = std::uint32_t;

/// A formula, or that of an array, which gives all its cells their values.
struct FormulaCell {
    Cell* cell = nullptr; ///< of an array the first one
    std::uint32_t sheet = 0;
    std::int32_t row = 0;
    std::uint32_t number = 0; ///< order in which its computation began, from 1; 0: not yet

    /// Where the formula is, or the area of its array begins.
    CellAddress first() const { return cell->array ? cell->array->cells.first() : CellAddress{row, cell->column}; }
};

/// A formula that is computed, as far as that has come.
struct Visit {
    FormulaIndex formula = 0;
    std::uint32_t lowest = std::numeric_limits<std::uint32_t>::max(); ///< number of a formula in a circle with it
    std::size_t circlesBefore = 0;                                    ///< cells in circles when it began
};

/// Computes a formula when its value is first read, by evaluating it there and then. Where too many wait for one
/// another, all give up and stay on a path of our own, however long the chain, and are evaluated again from its end.
/// Only a cell that is read while it waits is circular; the circles are the strongly connected components of what is
/// read (Tarjan, "Depth-first search and linear graph algorithms", 1972).
class Calculation {
public:
    Calculation(Book& book, const CalculationSettings& settings)
        : m_book(book),
          m_settings(settings),
          m_computed(book, [this](const Cell& cell) { return compute(cell); }),
          m_arrayValuesLeft(settings.maxArrayValues)
    {
        std::map<const ArrayArea*, std::uint32_t> arrays;
        for (std::size_t i = 0; i < book.sheets.size(); ++i)
            for (int row = 0; row < static_cast<int>(book.sheets[i]->rows().size()); ++row)
                for (Cell& cell : book.sheets[i]->row(row).cells) {
                    cell.waiting = 0;
                    if (!cell.formula)
                        continue;
                    const auto next = static_cast<std::uint32_t>(m_formulas.size()) + 1;
                    cell.waiting = cell.array ? arrays.try_emplace(cell.array.get(), next).first->second : next;
                    if (cell.waiting == next)
                        m_formulas.push_back({&cell, static_cast<std::uint32_t>(i), row});
                }
    }

    MissingParts run()
    {
        for (FormulaIndex i = 0; i < m_formulas.size(); ++i) {
            if (m_formulas[i].cell->waiting == 0)
                continue;
            enter(i);
            while (!m_path.empty())
                evaluateLast();
        }
        return std::move(m_missing);
    }

private:
    template <class Action>
    void forEachCellOf(const FormulaCell& formula, Action action)
    {
        const ArrayArea* const array = formula.cell->array.get();
        if (array == nullptr)
            return action(formula.row, *formula.cell);
        Sheet& sheet = *m_book.sheets[formula.sheet];
        const int lastRow = std::min(array->cells.lastRow, static_cast<int>(sheet.rows().size()) - 1);
        for (int row = array->cells.firstRow; row <= lastRow; ++row)
            for (Cell& cell : sheet.row(row).cells)
                if (cell.array.get() == array)
                    action(row, cell);
    }

    /// Of a cell that waits and is read. False when those that wait for it gave up.
    bool compute(const Cell& cell)
    {
        if (m_gaveUp)
            return false;
        const FormulaIndex index = cell.waiting - 1;
        const FormulaCell& formula = m_formulas[index];
        if (formula.number == 0) {
            enter(index);
            evaluateLast();
        }
        if (m_gaveUp || cell.waiting == 0)
            return !m_gaveUp;
        m_path.back().lowest = std::min(m_path.back().lowest, formula.number);
        if (!m_book.iteration.isOn && cell.value != CellValue(0.0))
            forEachCellOf(formula, [](int, Cell& circular) { circular.value = 0.0; });
        return true;
    }

    void enter(FormulaIndex index)
    {
        m_formulas[index].number = ++m_entered;
        m_path.push_back({index, std::numeric_limits<std::uint32_t>::max(), m_circular.size()});
    }

    /// Evaluates the formula at the end of the path, which leaves the path unless it gave up.
    void evaluateLast()
    {
        constexpr std::size_t maxDepth = 32; // some kilobytes of the program's stack each
        m_gaveUp = m_depth == maxDepth;
        if (m_gaveUp)
            return;
        if (m_depth == m_evaluators.size())
            m_evaluators.emplace_back(m_computed, m_settings, m_arrayValuesLeft);
        FormulaEvaluator& evaluator = m_evaluators[m_depth++];
        const FormulaCell& formula = m_formulas[m_path.back().formula];
        const auto answer = evaluate(evaluator, formula);
        if (!m_gaveUp && m_path.back().lowest > formula.number)
            assign(evaluator, formula, answer);
        if (!m_gaveUp && m_path.back().lowest == formula.number && m_book.iteration.isOn)
            iterate(evaluator);
        --m_depth;
        if (!m_gaveUp)
            leave();
    }

    std::optional<Operand> evaluate(FormulaEvaluator& evaluator, const FormulaCell& formula)
    {
        constexpr int rowsForAFormula = 16; // are read in the time that it takes
        m_computed.countRows(rowsForAFormula);
        const Cell& cell = *formula.cell;
        return evaluator.evaluate(*cell.formula, formula.sheet, formula.first(), cell.array.get());
    }

    /// Gives its cells their values, and answers by how much a number has changed.
    double assign(const FormulaEvaluator& evaluator, const FormulaCell& formula, const std::optional<Operand>& answer)
    {
        double change = 0;
        const CellAddress first = formula.first();
        if (!answer) {
            const CellPlace here{formula.sheet, {formula.row, formula.cell->column}};
            CellPlace& known = m_missing.try_emplace(evaluator.missingPart(), here).first->second;
            known = std::min(known, here);
        }
        forEachCellOf(formula, [&](int row, Cell& cell) {
            CellValue value = answer ? elementOf(m_computed, *answer, row - first.row, cell.column - first.column)
                              : isEmpty(cell.value)
                                  ? CellValue(ErrorCode::Name) // typed just now: there is none to keep
                                  : cell.value;
            const auto* const before = std::get_if<double>(&cell.value);
            const auto* const after = std::get_if<double>(&value);
            if (before != nullptr && after != nullptr)
                change = std::max(change, std::abs(*after - *before));
            else if (cell.value != value)
                change = std::numeric_limits<double>::infinity();
            cell.value = std::move(value);
        });
        return change;
    }

    /// Computes the circle that is closed by the formula at the end of the path again and again, beginning with the
    /// values that its cells hold.
    void iterate(FormulaEvaluator& evaluator)
    {
        const Visit last = m_path.back();
        const auto refine = [&](FormulaIndex index) {
            const auto answer = evaluate(evaluator, m_formulas[index]);
            return m_gaveUp ? 0 : assign(evaluator, m_formulas[index], answer);
        };
        std::sort(m_circular.begin() + static_cast<std::ptrdiff_t>(last.circlesBefore), m_circular.end());
        for (int turn = 0; turn < m_book.iteration.maxTurns && m_rowsLeft > 0 && !m_gaveUp; ++turn) {
            const std::size_t before = m_computed.rowsRead();
            double change = refine(last.formula);
            for (std::size_t i = last.circlesBefore; i < m_circular.size(); ++i)
                change = std::max(change, refine(m_circular[i]));
            m_rowsLeft -= std::min(m_rowsLeft, m_computed.rowsRead() - before);
            if (change < m_book.iteration.maxChange)
                return;
        }
    }

    void leave()
    {
        const Visit visit = m_path.back();
        const FormulaCell& formula = m_formulas[visit.formula];
        m_path.pop_back();
        if (visit.lowest > formula.number)
            return forEachCellOf(formula, [](int, Cell& cell) { cell.waiting = 0; });
        m_circular.push_back(visit.formula);
        if (visit.lowest < formula.number) {
            m_path.back().lowest = std::min(m_path.back().lowest, visit.lowest);
            return;
        }
        for (; m_circular.size() > visit.circlesBefore; m_circular.pop_back())
            forEachCellOf(m_formulas[m_circular.back()], [&](int, Cell& cell) {
                if (!m_book.iteration.isOn)
                    cell.value = 0.0;
                cell.waiting = 0;
            });
    }

    Book& m_book;
    const CalculationSettings& m_settings;
    ComputedBook m_computed;
    std::size_t m_arrayValuesLeft;
    std::vector<FormulaCell> m_formulas;       ///< sheet by sheet, row by row; Cell::waiting counts them from 1
    std::deque<FormulaEvaluator> m_evaluators; ///< one for each formula that is evaluated inside of others
    std::size_t m_depth = 0;                   ///< of those
    bool m_gaveUp = false;                     ///< what is being evaluated will be evaluated again
    std::uint32_t m_entered = 0;
    std::size_t m_rowsLeft = std::size_t{1} << 25; ///< to be read by iteration, a fraction of a second of it
    std::vector<Visit> m_path;
    MissingParts m_missing;
    std::vector<FormulaIndex> m_circular; ///< evaluated, and in a circle with a formula on the path
};

} // namespace

MissingParts recalculate(Book& book, const CalculationSettings& settings)
{
    return Calculation(book, settings).run();
}

} // namespace wagemill::engine
