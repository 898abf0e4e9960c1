#pragma once

#include "workbook/engine/Book.h"

#include <string_view>

namespace wagemill::engine {

/// The name under which formulas of the book call a function of an add-in or of a later version, entered in the book's
/// lists when it is not there yet.
/// name  ASCII, as files keep it: "EDATE", "_xlfn.IFERROR"
NameToken addInName(Book& book, std::string_view name);

} // namespace wagemill::engine
