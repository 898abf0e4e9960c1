#pragma once

#include "workbook/engine/Book.h"

#include <cstddef>
#include <vector>

namespace wagemill::engine::xls {

enum class FileKind { Workbook, Template };

/// The bytes of the whole file: a BIFF8 workbook stream with the cells' present values, and the document properties.
/// Throws EngineError when the book does not fit the format.
std::vector<std::byte> writeWorkbook(const Book& book, FileKind kind);

} // namespace wagemill::engine::xls
