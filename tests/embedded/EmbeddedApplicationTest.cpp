#include "workbook/embedded/EmbeddedApplication.h"
#include "app/base/Files.h"
#include "resources/PayrollTemplate.h"
#include "tests/support/FailureOf.h"
#include "tests/support/TemporaryFolder.h"
#include "workbook/engine/text/NumberFormat.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <gtest/gtest.h>

#include <ctime>
#include <functional>
#include <iomanip>
#include <sstream>

using namespace wagemill;
using namespace wagemill::test;

namespace {

std::string today()
{
    const std::time_t now = std::time(nullptr);
    std::ostringstream text;
    text << std::put_time(std::localtime(&now), "%F");
    return text.str();
}

class EmbeddedApplicationTest : public testing::Test {
protected:
    EmbeddedApplicationTest() { writeBytesToFile(payrollTemplateFile(), templatePath); }

    std::unique_ptr<EmbeddedApplication> newSession()
    {
        return std::make_unique<EmbeddedApplication>(RegionalFormats{}, clipboard);
    }

    /// What a cell of the saved file shows, read from its bytes.
    std::string shown(const std::filesystem::path& file, std::size_t sheet, const char* address)
    {
        const engine::Book book = engine::xls::readWorkbook(readBytesFromFile(file), file.string());
        const engine::Cell* cell = book.sheets.at(sheet)->find(engine::parseAddress(address)->first());
        if (cell == nullptr)
            return "";
        const auto& format = book.styles.format(cell->format);
        return engine::showValue(cell->value, book.styles.numberFormatCode(format.numberFormat), {}).text;
    }

    TemporaryFolder folder;
    std::filesystem::path templatePath = folder / "template.xlt";
    std::filesystem::path savedPath = folder / "saved.xls";
    EmbeddedPictureClipboard clipboard;
};

TEST_F(EmbeddedApplicationTest, FillsCopiesAndSavesWhatAnotherSessionReads)
{
    const auto session = newSession();
    session->Workbooks()->OpenReadOnly(templatePath.string());
    const auto book = session->Workbooks(session->Workbooks()->count());
    book->Sheets(1)->PutCells(4, 4, "$15.00");
    book->Sheets(1)->PutCells(4, 7, "7.65%");
    book->Sheets(2)->PutCells(4, 4, "40");
    book->Sheets(2)->PutCells(2, 12, "=TEXT(TODAY(),\"yyyy-mm-dd\")");
    book->Sheets(3)->Activate();
    book->Sheets(3)->Rows("2:12")->Select();
    session->Selection()->Copy();
    book->Sheets(3)->Range("A14")->Select();
    session->Selection()->PasteSpecial(PasteType::All, PasteOperation::None, false, false);
    book->Sheets(3)->PutCells(15, 8, "2");
    session->Range("D5")->Select();
    book->SaveAs(savedPath.string(), FileFormat::WorkbookNormal);

    EXPECT_EQ(shown(savedPath, 0, "G4"), "7.65%");
    EXPECT_EQ(shown(savedPath, 1, "I4"), "$600.00");
    EXPECT_EQ(shown(savedPath, 1, "L2"), today());
    EXPECT_EQ(shown(savedPath, 2, "H9"), "$600.00");
    EXPECT_EQ(shown(savedPath, 2, "H15"), "2"); // the second stub asks for its own employee
    EXPECT_EQ(shown(savedPath, 2, "H21"), "$0.00");
    const engine::Book reread = engine::xls::readWorkbook(readBytesFromFile(savedPath), "saved.xls");
    EXPECT_EQ(reread.activeSheet, 2U);
    EXPECT_EQ(reread.sheets[2]->selection.active, (engine::CellAddress{4, 3}));
    EXPECT_FALSE(reread.isTemplate);
    for (int row = 2; row <= 12; ++row)
        EXPECT_EQ(reread.sheets[2]->rowHeightTwips(row + 11), reread.sheets[2]->rowHeightTwips(row - 1)) << row;

    const auto other = newSession();
    const auto reopened = other->Workbooks()->Open(savedPath.string());
    EXPECT_EQ(reopened->ActiveSheet()->Name(), "Individual paystubs");
    const auto used = reopened->ActiveSheet()->UsedRange();
    EXPECT_GE(used->Rows(used->Rows()->count())->Row(), 23);
    used->CopyPicture();
    EXPECT_GT(clipboard.GetData(0).fileBytes->size(), 1000U);
}

TEST_F(EmbeddedApplicationTest, KeepsSeveralWorkbooksApart)
{
    const auto session = newSession();
    const auto first = session->Workbooks()->Open(templatePath.string());
    const auto second = session->Workbooks()->Open(templatePath.string());
    first->Sheets(3)->PutCells(2, 3, "first");
    session->PutDisplayAlerts(false);
    first->SaveAs(savedPath.string(), FileFormat::Excel8);
    first->Close();
    EXPECT_EQ(session->Workbooks()->count(), 1);
    second->SaveAs((folder / "second.xls").string(), FileFormat::Excel8);
    EXPECT_EQ(shown(savedPath, 2, "C2"), "first");
    EXPECT_NE(shown(folder / "second.xls", 2, "C2"), "first");
}

TEST_F(EmbeddedApplicationTest, SaysWhatItDoesNotCompute)
{
    std::string notice;
    EmbeddedApplication session(RegionalFormats{}, clipboard,
                                [&notice](std::string text) { notice = std::move(text); });
    const auto book = session.Workbooks()->Open(templatePath.string());
    for (const int row : {9, 6, 7})
        book->Sheets(1)->PutCells(row, 3, "=IF(B" + std::to_string(row) + ">0,DDB(2400,300,10,1),0)");
    book->Sheets(1)->PutCells(8, 3, "=Foo(1)");
    book->Sheets(1)->PutCells(5, 3, "=IF(B5<0,DDB(2400,300,10,1),Smith)");
    book->SaveAs(savedPath.string(), FileFormat::Excel8);
    EXPECT_EQ(
        notice,
        "The workbook holds formulas that Wagemill does not compute:\n"
        "- DDB, first in cell C6 of the sheet \"Employee information\"\n"
        "- Foo, first in cell C8 of the sheet \"Employee information\"\n"
        "Cells with such a formula keep the value they were saved with; where you typed one, the cell shows #NAME?.");
    for (const char* cell : {"C5", "C6", "C8"})
        EXPECT_EQ(shown(savedPath, 0, cell), "#NAME?") << cell;
}

TEST_F(EmbeddedApplicationTest, RefusesWhatItCannotDoWithAMessage)
{
    const auto session = newSession();
    const auto book = session->Workbooks()->Open(templatePath.string());
    const auto sheet = book->Sheets(3);
    const auto range = sheet->Range("A1");
    const std::string missing = (folder / "missing.xls").string();
    writeBytesToFile(std::vector<std::byte>(10), folder / "text.xls");
    struct {
        std::function<void()> work;
        std::string part;
    } const cases[] = {
        {[&] { session->Workbooks()->Open(missing); }, missing},
        {[&] { session->Workbooks()->Open((folder / "text.xls").string()); }, "text.xls"},
        {[&] { book->Sheets(4); }, "no sheet number 4"},
        {[&] { book->Sheets(0); }, "no sheet number 0"},
        {[&] { session->Workbooks(2); }, "no workbook number 2"},
        {[&] { sheet->Rows("A1"); }, "\"A1\" is not a range"},
        {[&] { sheet->Range("nowhere"); }, "\"nowhere\" is not a range"},
        {[&] { sheet->PutCells(65537, 1, "x"); }, "does not exist"},
        {[&] { sheet->PutCells(1, 0, "x"); }, "does not exist"},
        {[&] { sheet->PutCells(2, 3, "=1+"); }, "Cell C2 of the sheet \"Individual paystubs\" is left empty"},
        {[&] { range->Select(); }, "another sheet is active"},
        {[&] { session->Selection()->PasteSpecial(PasteType::All, PasteOperation::None, false, false); }, "copied"},
        {[&] { book->SaveAs(templatePath.string(), FileFormat::Excel8); }, "already a file"},
        {[&] { book->SaveAs("/no such folder/x.xls", FileFormat::Excel8); }, "/no such folder/x.xls"},
        {[&] { session->PutVisible(true); }, "no window"},
        {[&] { sheet->UsedRange()->Rows(1000); }, "no row 1000"},
    };
    for (const auto& [work, part] : cases)
        EXPECT_NE(failureOf(work).find(part), std::string::npos) << part << " is not in: " << failureOf(work);
}

TEST_F(EmbeddedApplicationTest, FailsOnWhatIsClosedOrQuit)
{
    const auto session = newSession();
    const auto book = session->Workbooks()->Open(templatePath.string());
    const auto sheet = book->Sheets(1);
    const auto range = sheet->UsedRange();
    const std::function<void()> uses[] = {
        [&] { book->Sheets(1); },       [&] { book->SaveAs(savedPath.string(), FileFormat::Excel8); },
        [&] { book->Close(); },         [&] { sheet->PutCells(4, 2, "x"); },
        [&] { sheet->Activate(); },     [&] { range->CopyPicture(); },
        [&] { range->Rows()->count(); }};
    sheet->PutCells(4, 2, "x");
    EXPECT_NE(failureOf([&] { book->Close(); }), ""); // unsaved, and nobody can be asked
    session->PutDisplayAlerts(false);
    book->Close();
    for (const auto& use : uses)
        EXPECT_EQ(failureOf(use), "The workbook is closed.");
    EXPECT_EQ(failureOf([&] { session->Range("A1"); }), "No workbook is open.");
    session->Quit();
    for (const auto& use : uses)
        EXPECT_EQ(failureOf(use), "The spreadsheet session has ended.");
    EXPECT_EQ(failureOf([&] { session->Version(); }), "The spreadsheet session has ended.");
    EXPECT_EQ(failureOf([&] { session->Quit(); }), "The spreadsheet session has ended.");
    const auto bookOfNoSession = newSession()->Workbooks()->Open(templatePath.string());
    EXPECT_EQ(failureOf([&] { bookOfNoSession->Sheets(1); }), "The spreadsheet session has ended.");
}

} // namespace
