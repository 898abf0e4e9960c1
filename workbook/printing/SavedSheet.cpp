#include "workbook/printing/SavedSheet.h"

#include "app/base/Files.h"
#include "workbook/engine/picture/SheetPages.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <memory>

namespace wagemill {

drawing::PrintableSheet savedSheet(const std::filesystem::path& workbook, const RegionalFormats& formats,
                                   const PrintMoment& moment)
{
    const auto book =
        std::make_shared<const engine::Book>(engine::xls::readWorkbook(readBytesFromFile(workbook), workbook.string()));
    const engine::Sheet& sheet = *book->sheets.at(book->activeSheet);
    const engine::PageFacts facts = {.date = moment.date,
                                     .time = moment.time,
                                     .file = workbook.filename().string(),
                                     .folder = (workbook.parent_path() / "").string()};
    return {.title = sheet.name,
            .paper = sheet.print.paper,
            .landscape = sheet.print.landscape,
            .copies = sheet.print.copies,
            .pagesOn = [book, facts, formats](const drawing::PaperSize& paper) {
                return engine::sheetPages(*book, book->activeSheet, paper, facts, formats);
            }};
}

} // namespace wagemill
