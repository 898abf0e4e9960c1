#pragma once

#include "app/base/text/RegionalFormats.h"

#include <filesystem>
#include <string>

namespace wagemill {

/// The pay stubs of a saved workbook in words, a sentence for each, for those who cannot see its picture:
///   "Pay stub of Ned Hollister: gross pay $997.00, net pay $688.90."
/// and at the end how many there are without amounts, as for employees left blank:  "2 pay stubs without amounts."
/// Read from the file itself, whichever application wrote it. Empty when it holds no stubs or cannot be read; never
/// throws.
std::string describeStubs(const std::filesystem::path& workbook, const RegionalFormats& formats);

} // namespace wagemill
