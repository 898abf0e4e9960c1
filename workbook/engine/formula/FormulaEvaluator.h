#pragma once

#include "workbook/engine/Book.h"
#include "workbook/engine/formula/Coercion.h"
#include "workbook/engine/formula/Operand.h"
#include "workbook/engine/formula/Recalculation.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace wagemill::engine {

/// Thrown while a function or token is evaluated: the error is its value. Never leaves the evaluator.
struct FormulaFailure {
    ErrorCode error = ErrorCode::Value;
};

/// Thrown while a formula is evaluated: it holds a part that we cannot evaluate. Never leaves the evaluator.
struct CannotEvaluate {
    std::string part = "a formula of a kind that is not supported"; ///< for the user: a function's name, or in words
};

/// Evaluates formulas of one workbook, one after the other. Cells that one of them reads may have to be computed before
/// it goes on, by another evaluator.
class FormulaEvaluator {
public:
    /// valuesLeft  of CalculationSettings::maxArrayValues, for all formulas together
    FormulaEvaluator(const ComputedBook& book, const CalculationSettings& settings, std::size_t& valuesLeft);

    /// The formula's value, never Empty; of an array formula a value or an array. Nothing when the formula holds a part
    /// that we cannot evaluate.
    /// cell   the one that the formula is read for
    /// array  null: the formula is not that of an array
    std::optional<Operand> evaluate(const Formula& formula, std::size_t sheet, CellAddress cell,
                                    const ArrayArea* array);
    /// The part that could not be evaluated, when the last answer was nothing.
    const std::string& missingPart() const { return m_missingPart; }

    // What functions see of the evaluation:
    const ComputedBook& book() const { return m_book; }
    const CoercionRules& rules() const { return m_rules; }
    std::size_t sheet() const { return m_sheet; }
    CellAddress cell() const { return m_cell; }
    /// The one value that the operand stands for: of several cells the one in the formula's row or column, of an array
    /// the first.
    CellValue single(const Operand& operand) const;
    /// Room for so many values in arrays, or time to look at them; throws CannotEvaluate when one formula, or all of
    /// the workbook together, asks for too many.
    void reserveValues(std::size_t count);

private:
    class TokenRun;
    friend class TokenRun;

    Operand arrayAnswer(Operand answer, const CellRect& area);
    /// Evaluates tokens and answers the one operand that they leave. Throws FormulaFailure or CannotEvaluate.
    Operand run(const std::vector<Token>& tokens);

    const ComputedBook& m_book;
    CoercionRules m_rules;
    std::size_t m_sheet = 0;
    CellAddress m_cell;
    int m_nameDepth = 0;
    bool m_wantsArrays = false;   ///< the formula is that of an array: it never reads one cell of several
    std::size_t m_valuesLeft = 0; ///< for the present formula
    std::size_t& m_allValuesLeft; ///< for those that follow too
    std::string m_missingPart;
    std::vector<Operand> m_stack; ///< kept from formula to formula, so that evaluation seldom allocates
};

/// What an array formula's answer gives to the cell in a place of its area, counting from 0; never Empty.
CellValue elementOf(const ComputedBook& book, const Operand& answer, int row, int column);

/// A reference of a name's formula, which is written as for cell A1; it wraps around the sheet's edges.
ReferenceToken seenFrom(CellAddress cell, ReferenceToken token);

/// The areas that a token means, as seen from a formula on `sheet`, one for each sheet that it names; #REF! when they
/// are gone or in another workbook.
Operand referredCells(const Book& book, std::size_t sheet, const ReferenceToken& token);

/// An array with compute(row, column) in each place.
template <class Compute>
Operand arrayOf(FormulaEvaluator& evaluator, int rows, int columns, Compute compute)
{
    const std::size_t size = static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
    evaluator.reserveValues(size);
    auto array = std::make_shared<ValueArray>(ValueArray{rows, columns, {}});
    array->values.reserve(size);
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column)
            array->values.push_back(compute(row, column));
    return std::shared_ptr<const ValueArray>(std::move(array));
}

} // namespace wagemill::engine
