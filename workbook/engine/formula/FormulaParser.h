#pragma once

#include "app/base/text/RegionalFormats.h"
#include "workbook/engine/Book.h"
#include "workbook/engine/Formula.h"

#include <string>
#include <string_view>

namespace wagemill::engine {

/// A formula text that cannot be read; what() quotes it and says what is wrong and at which character.
class FormulaError : public EngineError {
public:
    using EngineError::EngineError;
};

/// Reads a formula as a user types it, "=SUM(B4:D4)*2": English function names, numbers with the user's decimal
/// separator, arguments separated by "," (by ";" where the comma is the decimal separator; ";" always works).
/// Operand classes are set as the file format wants them for a cell's formula.
/// book   gains sheet references that the formula needs, and the names and functions that it does not know: the
///        formula then answers #NAME?
/// sheet  position of the sheet that the formula is typed into
/// Throws FormulaError.
Formula parseFormula(std::string_view text, Book& book, std::size_t sheet, const RegionalFormats& formats);

} // namespace wagemill::engine
