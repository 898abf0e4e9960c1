#pragma once

#include "app/base/text/RegionalFormats.h"
#include "workbook/engine/Book.h"

#include <cstddef>
#include <map>
#include <string>

namespace wagemill::engine {

/// What evaluation needs from outside, handed in so that a test can set it.
struct CalculationSettings {
    RegionalFormats formats; ///< for numbers written as text
    double now = 0;          ///< the present moment as a 1900 serial day with its fraction, in the user's time zone
    /// What the arrays of all formulas together may have; those after that keep their stored values. Few bytes of a
    /// file can ask for very many, again and again; this is far beyond any workbook that people make.
    std::size_t maxArrayValues = std::size_t{1} << 23;
};

struct CellPlace {
    std::size_t sheet = 0; ///< position in Book::sheets
    CellAddress cell;

    auto operator<=>(const CellPlace&) const = default;
};

/// What formulas hold that we cannot evaluate, functions by their names, and the first cell with each.
using MissingParts = std::map<std::string, CellPlace>;

/// Computes every formula of the workbook, in any order of dependence, and leaves the results in the cells' values.
/// Cells that read themselves, if only by way of others, become 0, or are iterated where the workbook says so. A
/// formula with parts we cannot evaluate keeps its stored value; one that was typed and has none becomes #NAME?.
MissingParts recalculate(Book& book, const CalculationSettings& settings);

} // namespace wagemill::engine
