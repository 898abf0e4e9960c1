#pragma once

#include "workbook/engine/Formula.h"

#include <vector>

namespace wagemill::engine {

/// Sets the operand class of every token of a cell's formula (OpenOffice.org documentation of the Excel file
/// format, 3.2): the formula and the operands of operators are values, an argument is what its parameter asks for.
/// tokens  complete and balanced, as the parser leaves them
void assignOperandClasses(std::vector<Token>& tokens);

/// The tokens of an array formula, in which every value is wanted as an array, whatever classes the program that wrote
/// them gave. IF and CHOOSE judge each element, so they compute all their arguments and leap over none.
std::vector<Token> asArrayFormula(std::vector<Token> tokens);

} // namespace wagemill::engine
