#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace wagemill::test {

/// Where two workbook files differ, a line each: sheets and their names, and of every cell value, formula and look;
/// widths, heights and merged areas.
std::vector<std::string> workbookDifferences(const std::filesystem::path& one, const std::filesystem::path& other);

} // namespace wagemill::test
