#include "workbook/embedded/EmbeddedApplication.h"
#include "workbook/embedded/PictureClipboard.h"
#include "workbook/sessions/Session.h"

#include <cstdlib>
#include <string_view>
#include <utility>

namespace wagemill {

namespace {

std::unique_ptr<Application> noExcelHere()
{
    throw SpreadsheetError("Excel is not available on this system.");
}

} // namespace

SpreadsheetPlatform spreadsheetPlatform(const RegionalFormats& formats, std::function<double()> pictureScale)
{
    static EmbeddedPictureClipboard clipboard;
    const char* const wanted = std::getenv("WAGEMILL_SPREADSHEET");
    if (wanted != nullptr && std::string_view(wanted) == "excel")
        return {noExcelHere, &clipboard};
    return {[formats, scale = std::move(pictureScale)] {
                return std::make_unique<EmbeddedApplication>(formats, clipboard, scale);
            },
            &clipboard};
}

} // namespace wagemill
