#include "tests/support/EmbeddedBuilds.h"

#include "resources/PayrollTemplate.h"
#include "tests/support/RecordedWindows.h"

#include <random>

namespace wagemill::test {

EmbeddedBuilds::EmbeddedBuilds(std::span<const std::byte> templateBytes)
{
    services.spreadsheet = {[this] { return std::make_unique<EmbeddedApplication>(RegionalFormats{}, m_clipboard); },
                            &m_clipboard};
    services.templateResource = [templateBytes] {
        return templateBytes.empty() ? payrollTemplateFile() : templateBytes;
    };
    services.randomNumber = [chance = std::minstd_rand()](std::int32_t low, std::int32_t span) mutable {
        return low + static_cast<std::int32_t>(chance() % static_cast<std::uint32_t>(span));
    };
}

EmbeddedBuilds::Built EmbeddedBuilds::build(const PayrollData& data) const
{
    RecordedWindows windows;
    buildPayrollWorkbook(data, windows, services);
    return {windows.workbook, windows.picture};
}

} // namespace wagemill::test
