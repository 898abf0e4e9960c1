#pragma once

#include "app/base/Files.h"
#include "workbook/PayrollBuild.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace wagemill::test {

/// What a build left: what was done to the windows, and the picture and the workbook that they were given.
struct BuildOutcome {
    std::vector<std::string> windowCalls;
    std::vector<std::byte> picture;
    std::filesystem::path workbook; ///< empty until there is one
};

/// Windows that nobody looks at.
struct RecordedWindows : BuildWindows {
    BuildOutcome outcome;

    void freezeDrawing() override { outcome.windowCalls.emplace_back("freeze"); }
    void unfreezeDrawing() override { outcome.windowCalls.emplace_back("unfreeze"); }
    void showHourglass() override { outcome.windowCalls.emplace_back("hourglass"); }
    void showArrow() override { outcome.windowCalls.emplace_back("arrow"); }
    void showPicture(const std::filesystem::path& picture) override
    {
        outcome.picture = readBytesFromFile(picture);
        outcome.windowCalls.push_back("picture " + picture.filename().string());
    }
    void passWorkbook(const std::filesystem::path& workbook) override
    {
        outcome.workbook = workbook;
        outcome.windowCalls.push_back("workbook " + workbook.filename().string());
    }
    void showPreview() override { outcome.windowCalls.emplace_back("show preview"); }
    void hideEntry() override { outcome.windowCalls.emplace_back("hide entry"); }
};

} // namespace wagemill::test
