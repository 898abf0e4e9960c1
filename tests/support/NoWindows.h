#pragma once

#include "workbook/PayrollBuild.h"

#include <filesystem>

namespace wagemill::test {

/// For builds that nobody looks at.
struct NoWindows : BuildWindows {
    void freezeDrawing() override {}
    void unfreezeDrawing() override {}
    void showHourglass() override {}
    void showArrow() override {}
    void showPicture(const std::filesystem::path& /*picture*/) override {}
    void passWorkbook(const std::filesystem::path& saved) override { workbook = saved; }
    void showPreview() override {}
    void hideEntry() override {}

    std::filesystem::path workbook; ///< the saved one; empty until there is one
};

} // namespace wagemill::test
