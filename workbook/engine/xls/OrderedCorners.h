#pragma once

#include "workbook/engine/Formula.h"

#include <utility>

namespace wagemill::engine::xls {

/// Makes `first` the upper left corner and `last` the lower right one; each row and column stays relative or absolute.
inline void orderCorners(ReferencePart& first, ReferencePart& last)
{
    if (first.row > last.row) {
        std::swap(first.row, last.row);
        std::swap(first.rowRelative, last.rowRelative);
    }
    if (first.column > last.column) {
        std::swap(first.column, last.column);
        std::swap(first.columnRelative, last.columnRelative);
    }
}

} // namespace wagemill::engine::xls
