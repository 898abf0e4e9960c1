#pragma once

#include "entry/data/PayrollData.h"
#include "workbook/PayrollBuild.h"
#include "workbook/embedded/EmbeddedApplication.h"

#include <cstddef>
#include <filesystem>
#include <span>

namespace wagemill::test {

/// Builds payroll workbooks through the embedded engine, as the program does without its windows. Needs
/// the folder that TEMP names.
class EmbeddedBuilds {
public:
    /// templateBytes  a template other than the program's own
    explicit EmbeddedBuilds(std::span<const std::byte> templateBytes = {});

    /// The saved workbook, in the temporary folder; empty when none was saved.
    std::filesystem::path build(const PayrollData& data);

private:
    EmbeddedPictureClipboard m_clipboard;
    BuildServices m_services;
};

} // namespace wagemill::test
