#include "app/base/PlatformFiles.h"
#include "workbook/embedded/EmbeddedApplication.h"
#include "workbook/excel/ExcelSession.h"
#include "workbook/sessions/Session.h"

#include <filesystem>
#include <string>
#include <utility>

namespace wagemill {

namespace {

bool isExcelWanted()
{
    const std::filesystem::path wanted = platform::environmentPath("WAGEMILL_SPREADSHEET");
    return wanted == "excel" || (isExcelSystem() && wanted != "embedded");
}

} // namespace

SpreadsheetPlatform spreadsheetPlatform(const RegionalFormats& formats)
{
    if (isExcelWanted())
        return {[] { return createExcelSession(); }, &systemPictureClipboard()};
    static EmbeddedPictureClipboard clipboard;
    static std::string notice;
    return {[formats] {
                return std::make_unique<EmbeddedApplication>(formats, clipboard,
                                                             [](std::string text) { notice = std::move(text); });
            },
            &clipboard, [] { return std::exchange(notice, {}); }};
}

} // namespace wagemill
