#pragma once

#include "workbook/engine/Book.h"

#include <filesystem>

namespace wagemill {

/// The workbook that a folder of text files describes, its formulas computed: "workbook.txt" and the sheets that it
/// names. Throws std::runtime_error with file and line.
engine::Book describedWorkbook(const std::filesystem::path& folder);

} // namespace wagemill
