#include "app/base/Files.h"
#include "drawing/DrawingFile.h"
#include "resources/PayrollTemplate.h"
#include "tests/support/EmbeddedBuilds.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/workbook/BuildCases.h"
#include "workbook/engine/picture/SheetPages.h"
#include "workbook/engine/picture/SheetPicture.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <gtest/gtest.h>

#include <array>
#include <span>

namespace wagemill::test {

namespace {

constexpr drawing::PaperSize a4 = {793.7, 1122.5};

void append(std::vector<std::byte>& all, std::span<const std::byte> more)
{
    all.insert(all.end(), more.begin(), more.end());
}

} // namespace

// A change of one of these is seen by every user. Compare what make_results (tests/judges) and template_builder write
// before and after; when every difference is wanted, the checksum that is shown is the new one.
TEST(SameResults, OfEveryBuildCase)
{
    const TemporaryFolder folder;
    const ScopedEnvironment temporary("TEMP", folder.path().string());
    std::vector<std::byte> workbooks;
    std::vector<std::byte> pictures;
    std::vector<std::byte> pages;
    const EmbeddedBuilds embedded;
    for (const BuildCase& build : buildCases()) {
        const std::filesystem::path file = embedded.build(build.data).workbook;
        engine::Book book = engine::xls::readWorkbook(readBytesFromFile(file), file.string());
        std::filesystem::remove(file);
        book.properties.created = book.properties.saved = 1;
        append(workbooks, engine::xls::writeWorkbook(book, engine::xls::FileKind::Workbook));
        for (std::size_t sheet = 0; sheet < book.sheets.size(); ++sheet) {
            const auto used = book.sheets[sheet]->usedRange().value();
            append(pictures, drawingFile(engine::sheetPicture(book, *book.sheets[sheet], used, {})));
            for (const drawing::Page& page : engine::sheetPages(book, sheet, a4, {"3/31/2026", "9:41", "a", "b"}, {}))
                for (const drawing::PlacedDrawing& part : page.parts) {
                    append(pages, drawingFile(part.drawing));
                    const std::array place = {part.left, part.top, part.scale};
                    append(pages, std::as_bytes(std::span(place)));
                }
        }
    }
    EXPECT_EQ(drawingChecksum(payrollTemplateFile()), 0xDC05D4215B2EAD92U) << "template.xlt";
    EXPECT_EQ(drawingChecksum(workbooks), 0x1D662FA991C0C886U);
    EXPECT_EQ(drawingChecksum(pictures), 0x67D4A04F76367AC3U);
    EXPECT_EQ(drawingChecksum(pages), 0x6E670B593065CFE9U);
}

} // namespace wagemill::test
