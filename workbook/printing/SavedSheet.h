#pragma once

#include "app/base/text/RegionalFormats.h"
#include "drawing/Pages.h"

#include <filesystem>
#include <string>

namespace wagemill {

/// When something is printed, in the user's words.
struct PrintMoment {
    std::string date;
    std::string time;
};

/// The active sheet of a saved workbook, ready to be printed. Read from the file itself, whichever application wrote
/// it. Throws with the file and the reason.
drawing::PrintableSheet savedSheet(const std::filesystem::path& workbook, const RegionalFormats& formats,
                                   const PrintMoment& moment);

} // namespace wagemill
