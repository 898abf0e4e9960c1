#pragma once

#include "app/base/Files.h"
#include "workbook/PayrollBuild.h"

#include <filesystem>
#include <string>
#include <vector>

namespace wagemill::test {

/// The windows of a build that nobody looks at: what was done to them, and what they were given.
struct RecordedWindows : BuildWindows {
    std::vector<std::string> calls;
    std::vector<std::byte> picture;
    std::filesystem::path workbook; ///< the saved one; empty until there is one

    void freezeDrawing() override { calls.emplace_back("freeze"); }
    void unfreezeDrawing() override { calls.emplace_back("unfreeze"); }
    void showHourglass() override { calls.emplace_back("hourglass"); }
    void showArrow() override { calls.emplace_back("arrow"); }
    void showPicture(const std::filesystem::path& path) override
    {
        picture = readBytesFromFile(path);
        calls.emplace_back("picture " + path.filename().string());
    }
    void passWorkbook(const std::filesystem::path& path) override
    {
        workbook = path;
        calls.emplace_back("workbook " + path.filename().string());
    }
    void showPreview() override { calls.emplace_back("show preview"); }
    void hideEntry() override { calls.emplace_back("hide entry"); }
};

} // namespace wagemill::test
