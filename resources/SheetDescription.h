#pragma once

#include "resources/CellLook.h"
#include "resources/DescriptionLines.h"
#include "workbook/engine/Book.h"

#include <vector>

namespace wagemill {

/// Carries out the statements of one sheet's description. Throws DescriptionError.
/// sheet  its position in the book
void describeSheet(engine::Book& book, std::size_t sheet, Looks& looks, const std::vector<DescriptionLine>& lines);

} // namespace wagemill
