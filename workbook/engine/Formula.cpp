#include "workbook/engine/Formula.h"

namespace wagemill::engine {

namespace {

/// Moves the relative parts; answers whether the corner is still inside the sheet.
bool shiftPart(ReferencePart& part, int rows, int columns)
{
    if (part.rowRelative)
        part.row += rows;
    if (part.columnRelative)
        part.column += columns;
    return isInsideSheet({part.row, part.column});
}

/// A reference that leaves the sheet becomes bad; whole rows and columns keep their full extent.
void shiftReference(ReferenceToken& token, int rows, int columns)
{
    if (token.bad)
        return;
    const bool wholeColumns = token.last && token.first.row == 0 && token.last->row == maxRows - 1;
    const bool wholeRows = token.last && token.first.column == 0 && token.last->column == maxColumns - 1;
    const int rowShift = wholeColumns ? 0 : rows;
    const int columnShift = wholeRows ? 0 : columns;
    bool inside = shiftPart(token.first, rowShift, columnShift);
    if (token.last)
        inside = shiftPart(*token.last, rowShift, columnShift) && inside;
    if (!inside) {
        token.bad = true;
        token.first = {};
        if (token.last)
            token.last = ReferencePart{};
    }
}

} // namespace

Formula shiftedFormula(const Formula& formula, int rows, int columns)
{
    Formula shifted = formula;
    for (Token& token : shifted.tokens)
        if (auto* reference = std::get_if<ReferenceToken>(&token))
            shiftReference(*reference, rows, columns);
    return shifted;
}

} // namespace wagemill::engine
