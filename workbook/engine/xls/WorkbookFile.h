#pragma once

#include "workbook/engine/Book.h"

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace wagemill::engine::xls {

/// Reads an Excel 97-2003 workbook or template (BIFF8 in an OLE compound file, [MS-XLS] and [MS-CFB]).
/// bytes  the whole file; may be damaged or hostile
/// file   its name, for messages
/// Throws EngineError that names the file and what it is: not a compound file, an older or newer format, encrypted,
/// damaged.
Book readWorkbook(std::span<const std::byte> bytes, std::string_view file);

enum class FileKind { Workbook, Template };

/// The bytes of the whole file: a BIFF8 workbook stream with the cells' present values, and the document properties.
/// Throws EngineError when the book does not fit the format.
std::vector<std::byte> writeWorkbook(const Book& book, FileKind kind);

} // namespace wagemill::engine::xls
