#pragma once

#include "entry/data/PayrollData.h"
#include "workbook/PayrollBuild.h"
#include "workbook/embedded/EmbeddedApplication.h"

#include <cstddef>
#include <filesystem>
#include <span>
#include <vector>

namespace wagemill::test {

/// Builds payroll workbooks through the embedded engine, as the program does without its windows. Needs
/// the folder that TEMP names.
class EmbeddedBuilds {
public:
    /// templateBytes  a template other than the program's own
    explicit EmbeddedBuilds(std::span<const std::byte> templateBytes = {});

    struct Built {
        std::filesystem::path workbook; ///< in the temporary folder; empty when none was saved
        std::vector<std::byte> picture;
    };
    Built build(const PayrollData& data) const;

    BuildServices services;

private:
    EmbeddedPictureClipboard m_clipboard;
};

} // namespace wagemill::test
