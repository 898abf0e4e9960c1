#pragma once

#include "app/base/Interface.h"
#include "entry/data/PayrollData.h"
#include "workbook/sessions/Session.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>

namespace wagemill {

/// What a build does to the windows around it.
class BuildWindows : public Interface {
public:
    virtual void freezeDrawing() = 0;   ///< the entry window keeps its last picture
    virtual void unfreezeDrawing() = 0; ///< and draws again
    virtual void showHourglass() = 0;
    virtual void showArrow() = 0;
    /// Loads the bitmap into the preview. Throws with file and reason.
    virtual void showPicture(const std::filesystem::path& picture) = 0;
    /// Hands the preview the saved workbook.
    virtual void passWorkbook(const std::filesystem::path& workbook) = 0;
    virtual void showPreview() = 0;
    virtual void hideEntry() = 0;
};

/// What a build needs from outside.
struct BuildServices {
    SpreadsheetPlatform spreadsheet;
    RegionalFormats formats;
    /// The template in the program. Throws when it cannot be read.
    std::function<std::span<const std::byte>()> templateResource;
    /// A random number, from the first argument on; the second says how many there are to draw from.
    std::function<std::int32_t(std::int32_t low, std::int32_t span)> randomNumber;
};

/// Fills the template with the payroll data, saves it under a fresh name in the temporary folder, takes its picture
/// and shows the preview. Runs to its end: a failing step is reported in the error dialog, and the next step follows.
/// What the spreadsheet application has to say about the workbook is said last.
void buildPayrollWorkbook(const PayrollData& data, BuildWindows& windows, const BuildServices& services);

} // namespace wagemill
