#include "workbook/excel/ExcelSession.h"

namespace wagemill {

namespace {

class NoPictureClipboard : public PictureClipboard {
public:
    Picture GetData(std::int16_t /*format*/) override
    {
        throw SpreadsheetError("Excel copies no pictures on this system.");
    }
};

} // namespace

bool isExcelSystem()
{
    return false;
}

std::unique_ptr<Application> createExcelSession(std::uint32_t /*typingLocale*/)
{
    throw SpreadsheetError("Excel is not available on this system.");
}

PictureClipboard& systemPictureClipboard()
{
    static NoPictureClipboard clipboard;
    return clipboard;
}

} // namespace wagemill
