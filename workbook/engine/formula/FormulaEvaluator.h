#pragma once

#include "workbook/engine/Book.h"
#include "workbook/engine/formula/Coercion.h"
#include "workbook/engine/formula/Operand.h"
#include "workbook/engine/formula/Recalculation.h"

#include <cstddef>
#include <functional>
#include <variant>
#include <vector>

namespace wagemill::engine {

/// Thrown while a function or token is evaluated: the error is its value. Never leaves the evaluator.
struct FormulaFailure {
    ErrorCode error = ErrorCode::Value;
};

/// The formula needs cells that are not computed yet; it is to be evaluated again afterwards.
struct PendingArea {
    Area area;
};

/// The formula holds a part that we cannot evaluate.
struct CannotEvaluate {};

/// What a formula answers; a value is never Empty.
using Evaluation = std::variant<CellValue, PendingArea, CannotEvaluate>;

/// Evaluates formulas of one workbook, one after the other.
class FormulaEvaluator {
public:
    /// isPending  whether an area holds cells whose value is not computed yet. It is asked only about references that
    ///            cannot be read off the formula: those that functions compute and those behind a name.
    FormulaEvaluator(const Book& book, const CalculationSettings& settings, std::function<bool(const Area&)> isPending);

    Evaluation evaluate(const Formula& formula, std::size_t sheet, CellAddress cell);
    /// The element of an array formula's answer that belongs into the cell, one of `area`.
    /// The book's values that it refers to must stay as they are until all its cells are computed.
    Evaluation evaluateElement(const Formula& formula, std::size_t sheet, CellAddress cell, const CellRect& area);

    // What functions see of the evaluation:
    const Book& book() const { return m_book; }
    const CalculationSettings& settings() const { return m_settings; }
    const CoercionRules& rules() const { return m_rules; }
    std::size_t sheet() const { return m_sheet; }
    CellAddress cell() const { return m_cell; }
    /// An area that a function computed, checked to be ready. Throws PendingArea.
    Area ready(const Area& area) const;
    /// The one value that the operand stands for: of several cells the one in the formula's row or column, of an array
    /// the first.
    CellValue single(const Operand& operand) const;
    /// Room for so many values in arrays, or time to look at them; throws CannotEvaluate when one formula, or all of
    /// the workbook together, asks for too many.
    void reserveValues(std::size_t count);

private:
    class TokenRun;
    friend class TokenRun;

    /// What compute() answers, as the value of the cell.
    template <class Compute>
    Evaluation evaluated(std::size_t sheet, CellAddress cell, Compute compute);
    /// Evaluates tokens and answers the one operand that they leave. Throws FormulaFailure, PendingArea or
    /// CannotEvaluate.
    Operand run(const std::vector<Token>& tokens);

    const Book& m_book;
    const CalculationSettings& m_settings;
    std::function<bool(const Area&)> m_isPending;
    CoercionRules m_rules;
    std::size_t m_sheet = 0;
    CellAddress m_cell;
    int m_nameDepth = 0;
    bool m_wantsArrays = false;              ///< the formula is that of an array: it never reads one cell of several
    std::size_t m_valuesLeft = 0;            ///< for the present formula
    std::size_t m_allValuesLeft;             ///< for those that follow too
    const Formula* m_arrayFormula = nullptr; ///< the last one, computed once for all its cells
    Operand m_arrayAnswer;
    std::vector<Operand> m_stack; ///< kept from formula to formula, so that evaluation seldom allocates
};

/// The areas that a reference token means, as seen from a formula on `sheet`: one for each sheet that it names; none
/// when the reference is bad or foreign. visit(const Area&)
template <class Visit>
void forEachArea(const Book& book, std::size_t sheet, const ReferenceToken& token, Visit visit)
{
    if (token.bad)
        return;
    const ReferencePart& first = token.first;
    const ReferencePart& last = token.last ? *token.last : token.first;
    // a copied formula may have moved one corner past the other
    const CellRect cells{std::min(first.row, last.row), std::min(first.column, last.column),
                         std::max(first.row, last.row), std::max(first.column, last.column)};
    if (!token.externSheet)
        return visit(Area{sheet, cells});
    if (*token.externSheet >= book.externSheets.size())
        return;
    const ExternSheet& sheets = book.externSheets[*token.externSheet];
    if (sheets.supportingBook >= book.supportingBooks.size() ||
        book.supportingBooks[sheets.supportingBook].kind != SupportingBook::Kind::Own || sheets.first < 0)
        return;
    for (auto i = static_cast<std::size_t>(sheets.first);
         static_cast<std::ptrdiff_t>(i) <= sheets.last && i < book.sheets.size(); ++i)
        visit(Area{i, cells});
}

} // namespace wagemill::engine
