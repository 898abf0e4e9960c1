#include "tests/support/RecordedMessages.h"
#include "tests/support/RecordedWindows.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/workbook/FakeSpreadsheet.h"

#include "app/base/Files.h"
#include "workbook/Excel1.h"
#include "workbook/PayrollBuild.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <span>

using namespace wagemill;
using namespace wagemill::test;

namespace {

EmployeeRow employee(std::string_view id)
{
    EmployeeRow row;
    for (std::size_t field = 0; field < row.texts.size(); ++field)
        row.texts[field] = std::string(id) + "-" + std::to_string(field + 1);
    row.texts[employeeIdField] = id;
    return row;
}

class PayrollBuildTest : public testing::Test {
protected:
    PayrollBuildTest()
    {
        services.spreadsheet = spreadsheet.platform();
        services.templateResource = [this]() -> std::span<const std::byte> { return templateBytes; };
        services.randomNumber = [this](std::int32_t, std::int32_t) { return digits.at(nextDigit++ % digits.size()); };
    }

    void build(std::vector<EmployeeRow> rows)
    {
        buildPayrollWorkbook({{"ACME Inc", "3/31/2026"}, std::move(rows)}, windows, services);
    }

    long count(const std::string& call) const { return std::ranges::count(spreadsheet.calls, call); }

    TemporaryFolder folder;
    ScopedEnvironment temp{"TEMP", folder.path().string()};
    RecordedMessages messages;
    FakeSpreadsheet spreadsheet;
    RecordedWindows windows;
    BuildServices services;
    std::array<std::byte, 3> templateBytes = {std::byte{1}, std::byte{2}, std::byte{3}};
    std::vector<int> digits = {1, 2, 3, 4, 5, 6, 7, 8};
    std::size_t nextDigit = 0;
};

TEST_F(PayrollBuildTest, AsksTheSpreadsheetForEachStepInItsOrder)
{
    build({employee("E1")});
    const std::string path = (folder / "kvarno12345678.xls").string();
    const std::vector<std::string> expected = {
        "new", "1.Workbooks.Open(\"" + (folder / "template.xlt").string() + "\", ReadOnly = True)",
        // the summary of rates and deductions, then that of hours
        "1.Book.Sheets(1).Cells(4, 2) = \"E1\"", "1.Book.Sheets(1).Cells(4, 3) = \"E1-2\"",
        "1.Book.Sheets(1).Cells(4, 4) = \"E1-3\"", "1.Book.Sheets(1).Cells(4, 5) = \"E1-4\"",
        "1.Book.Sheets(1).Cells(4, 6) = \"E1-5\"", "1.Book.Sheets(1).Cells(4, 7) = \"E1-6%\"",
        "1.Book.Sheets(1).Cells(4, 8) = \"E1-7%\"", "1.Book.Sheets(1).Cells(4, 9) = \"E1-8%\"",
        "1.Book.Sheets(1).Cells(4, 10) = \"E1-9%\"", "1.Book.Sheets(1).Cells(4, 12) = \"E1-10\"",
        "1.Book.Sheets(1).Cells(4, 13) = \"E1-11\"", "1.Book.Sheets(2).Cells(4, 2) = \"E1\"",
        "1.Book.Sheets(2).Cells(4, 4) = \"E1-12\"", "1.Book.Sheets(2).Cells(4, 5) = \"E1-13\"",
        "1.Book.Sheets(2).Cells(4, 6) = \"E1-14\"", "1.Book.Sheets(2).Cells(4, 7) = \"E1-15\"",
        "1.Book.Sheets(2).Cells(4, 8) = \"E1-16\"", "1.Book.Sheets(2).Cells(4, 11) = \"E1-17\"",
        "1.Book.Sheets(2).Cells(2, 12) = \"3/31/2026\"",
        // the stub
        "1.Book.Sheets(3).Activate", "1.Book.Sheets(3).Rows(\"2:12\").Select", "1.Selection.Copy",
        "1.Book.Sheets(3).Range(\"A2\").Select", "1.Selection.PasteSpecial(-4104, -4142, False, False)",
        "1.Book.Sheets(3).Cells(2, 3) = \"ACME Inc\"", "1.Book.Sheets(3).Cells(3, 8) = \"E1\"",
        "1.Book.Sheets(3).Range(\"A1\").Select",
        // saved and closed
        "1.Range(\"D5\").Select", "1.Visible = False", "1.Version", "1.Book.SaveAs(\"" + path + "\", FileFormat = 56)",
        "1.DisplayAlerts = False", "1.Book.Close", "1.Quit",
        // opened again for its picture
        "new", "2.Workbooks.Open(\"" + path + "\")", "2.Workbooks.count", "2.Workbooks(1)",
        "2.Book.ActiveSheet.UsedRange.Rows", "2.Book.ActiveSheet.UsedRange.Rows.count",
        "2.Book.ActiveSheet.UsedRange.Rows(11).Row", "2.Book.ActiveSheet.UsedRange.Columns",
        "2.Book.ActiveSheet.UsedRange.Columns.count", "2.Book.ActiveSheet.UsedRange.Columns(11).Column",
        "2.Book.ActiveSheet.Name", "2.Book.ActiveSheet.UsedRange.CopyPicture", "2.DisplayAlerts = False",
        "2.Book.Close", "2.Quit"};
    std::vector<std::string> asked; // without the objects on the way
    for (std::size_t call = 0; call < spreadsheet.calls.size(); ++call)
        if (call + 1 == spreadsheet.calls.size() ||
            !spreadsheet.calls[call + 1].starts_with(spreadsheet.calls[call] + "."))
            asked.push_back(spreadsheet.calls[call]);
    EXPECT_EQ(asked, expected);
    EXPECT_EQ(messages.texts(), std::vector<std::string>());
    EXPECT_EQ(windows.calls, (std::vector<std::string>{"freeze", "hourglass", "hourglass", "hourglass",
                                                       "picture temp.bmp", "workbook kvarno12345678.xls",
                                                       "show preview", "hide entry", "unfreeze", "arrow"}));
    EXPECT_FALSE(fileExists(folder / "template.xlt"));
    EXPECT_FALSE(fileExists(folder / "temp.bmp"));
}

TEST_F(PayrollBuildTest, GivesEveryEmployeeASummaryRowAndAStub)
{
    EmployeeRow blank;
    build({employee("E1"), blank, employee("E3")});
    for (const char* call : {"1.Book.Sheets(1).Cells(4, 2) = \"E1\"", "1.Book.Sheets(1).Cells(5, 2) = \"\"",
                             "1.Book.Sheets(1).Cells(5, 7) = \"%\"", // an empty rate is the sign alone
                             "1.Book.Sheets(1).Cells(6, 2) = \"E3\"", "1.Book.Sheets(2).Cells(6, 11) = \"E3-17\"",
                             "1.Book.Sheets(3).Range(\"A2\").Select", "1.Book.Sheets(3).Range(\"A14\").Select",
                             "1.Book.Sheets(3).Range(\"A26\").Select", "1.Book.Sheets(3).Cells(26, 3) = \"ACME Inc\"",
                             "1.Book.Sheets(3).Cells(3, 8) = \"E1\"", "1.Book.Sheets(3).Cells(15, 8) = \"\"",
                             "1.Book.Sheets(3).Cells(27, 8) = \"E3\""})
        EXPECT_EQ(count(call), 1) << call;
    EXPECT_EQ(count("1.Book.Sheets(2).Cells(2, 12) = \"3/31/2026\""), 3);
    EXPECT_EQ(count("1.Book.Sheets(3).Rows(\"2:12\").Select"), 3);
}

TEST_F(PayrollBuildTest, UsesATemplateThatIsThereAndFreeNamesOnly)
{
    const std::array longer = {std::byte{9}, std::byte{8}, std::byte{7}, std::byte{6}};
    writeBytesToFile(longer, folder / "template.xlt");
    writeBytesToFile(longer, folder / "kvarno11111111.xls");
    digits = {1, 1, 1, 1, 1, 1, 1, 1, 9, 8, 7, 6, 5, 4, 3, 2};
    std::vector<std::byte> opened;
    spreadsheet.fails = [&](int) {
        if (opened.empty())
            opened = readBytesFromFile(folder / "template.xlt");
        return false;
    };
    build({employee("E1")});
    EXPECT_TRUE(std::ranges::equal(opened, longer));
    EXPECT_EQ(count("1.Book.SaveAs(\"" + (folder / "kvarno98765432.xls").string() + "\", FileFormat = 56)"), 1);
}

TEST_F(PayrollBuildTest, ReportsAFailingCellAndGoesOnWithTheNext)
{
    const std::string refused = "1.Book.Sheets(1).Cells(4, 4) = \"E1-3\"";
    spreadsheet.fails = [&](int) { return spreadsheet.calls.back() == refused; };
    build({employee("E1")});
    ASSERT_EQ(messages.shown.size(), 1U);
    EXPECT_EQ(messages.shown[0].text,
              "The call " + refused +
                  " was refused.\r\nin Wagemill2021/08/31.Form1.PushButton22_Click at line 102\r\r"
                  "Please email screenshot of this message to support@quellory.example");
    EXPECT_EQ(messages.shown[0].title, "Application Error");
    EXPECT_EQ(messages.shown[0].icon, MessageIcon::Warning);
    EXPECT_EQ(count("1.Book.Sheets(1).Cells(4, 4) = \"\""), 1) << "a cell that takes no text is emptied";
    EXPECT_EQ(count("1.Book.Sheets(1).Cells(4, 5) = \"E1-4\""), 1);
    EXPECT_EQ(windows.calls.back(), "arrow");
}

/// How the application fails at one of its calls.
enum class Fault { Once, FromThenOn, ApplicationDead };

class FailingBuildTest : public PayrollBuildTest {
protected:
    /// Builds two workbook rows while call number `call`, from 1, fails. False when there are fewer calls than that.
    bool buildFailing(Fault fault, int call)
    {
        int dead = -1;
        spreadsheet.fails = [&, fault, call](int number) {
            const std::string& made = spreadsheet.calls.back();
            const int session = made == "new" ? spreadsheet.sessions + 1 : std::stoi(made);
            if (number == call)
                dead = session;
            return number == call || (fault == Fault::FromThenOn && number > call) ||
                   (fault == Fault::ApplicationDead && session == dead);
        };
        spreadsheet.calls.clear();
        spreadsheet.sessions = 0;
        messages.shown.clear();
        windows.calls.clear();
        build({employee("E1"), employee("E2")});
        return call <= static_cast<int>(spreadsheet.calls.size());
    }

    long cellsPut() const
    {
        return std::ranges::count_if(spreadsheet.calls, [](const std::string& call) {
            return call.find(".Cells(") != std::string::npos && !call.ends_with(" = \"\"");
        });
    }
};

TEST_F(FailingBuildTest, EndsWithUsableWindowsAndNoSessionLeftWhateverFails)
{
    for (const Fault fault : {Fault::Once, Fault::FromThenOn, Fault::ApplicationDead})
        for (int call = 1; buildFailing(fault, call); ++call) {
            const std::string when = "fault " + std::to_string(static_cast<int>(fault)) + " at call " +
                                     std::to_string(call) + ", " +
                                     spreadsheet.calls[static_cast<std::size_t>(call) - 1];
            for (int session = 1; session <= spreadsheet.sessions; ++session)
                EXPECT_EQ(count(std::to_string(session) + ".Quit"), 1) << when;
            const std::vector<std::string> end = {"show preview", "hide entry", "unfreeze", "arrow"};
            EXPECT_TRUE(std::ranges::equal(std::span(windows.calls).last(end.size()), end)) << when;
            EXPECT_FALSE(messages.shown.empty()) << when;
            EXPECT_FALSE(fileExists(folder / "template.xlt")) << when;
            EXPECT_FALSE(fileExists(folder / "temp.bmp")) << when;
        }
}

/// One call that fails costs what hangs on it, and no more. The numbers of the steps are what a screenshot tells us.
TEST_F(FailingBuildTest, ReportsTheStepOfOneFailingCallAndLosesAtMostOneCell)
{
    buildFailing(Fault::Once, 0);
    const std::vector<std::string> calls = spreadsheet.calls;
    const long cells = cellsPut();
    EXPECT_EQ(cells, 2 * 21);
    std::vector<int> steps;
    for (int call = 1; buildFailing(Fault::Once, call); ++call) {
        const std::string& failed = calls[static_cast<std::size_t>(call) - 1];
        ASSERT_FALSE(messages.shown.empty()) << failed;
        EXPECT_TRUE(messages.shown[0].text.starts_with("The call " + failed + " was refused.")) << failed;
        if (const int step = messages.failedSteps()[0]; steps.empty() || steps.back() != step)
            steps.push_back(step);
        if (call > 3) { // the first three make the session and open the template
            EXPECT_GE(cellsPut(), cells - 1) << failed;
            EXPECT_TRUE(messages.shown.size() == 1 || !failed.starts_with("1.")) << failed;
        }
    }
    std::vector<int> expected = {30, 60};
    for (int row = 0; row < 2; ++row)
        expected.insert(expected.end(), {100, 101, 102, 103, 104, 105, 106, 107, 108, 109, 110, 200, 211, 212,
                                         213, 214, 215, 216, 220, 310, 320, 330, 340, 350, 360, 370, 380});
    expected.insert(expected.end(), {400, 410, 430, 440, 450, 460, 500, 520, 10, 20, 30, 40, 50, 540, 550, 560});
    EXPECT_EQ(steps, expected);
}

TEST_F(PayrollBuildTest, SaysLastWhatTheSpreadsheetHasToTell)
{
    services.spreadsheet.takeNotice = [&] {
        EXPECT_FALSE(fileExists(folder / "template.xlt")) << "the build is over";
        return std::string("DDB is not computed.");
    };
    build({employee("E1")});
    EXPECT_EQ(messages.texts(), std::vector<std::string>{"DDB is not computed."});
}

class SnapshotTest : public PayrollBuildTest {
protected:
    void snapshot() { saveCellsActivesheet(workbook.get(), path, *services.spreadsheet.clipboard); }

    std::filesystem::path path = folder / "temp.bmp";
    std::unique_ptr<Application> session = services.spreadsheet.createSession();
    std::unique_ptr<Workbook> workbook = session->Workbooks(1);
};

TEST_F(SnapshotTest, WritesAPictureOnlyOfASheetWithMoreThanOneRowAndReplacesALongerOne)
{
    for (const auto& [lastRow, written] : {std::pair(1, 100U), {2, 3U}}) {
        std::filesystem::remove(path);
        writeBytesToFile(std::vector<std::byte>(100), path);
        spreadsheet.lastRow = lastRow;
        snapshot();
        EXPECT_EQ(readBytesFromFile(path).size(), written) << "last row " << lastRow;
    }
    EXPECT_TRUE(messages.shown.empty());
}

TEST_F(SnapshotTest, FetchesUntilTheClipboardYieldsButNotForEver)
{
    for (const int empty : {0, 1, 2, 998, 999, 1000, 1001, 1'000'000}) {
        spreadsheet.emptyFetches = empty;
        spreadsheet.fetches = 0;
        const auto picture = getClipboardPicture(*services.spreadsheet.clipboard, 0);
        EXPECT_EQ(spreadsheet.fetches, std::min(empty + 1, 1000)) << empty;
        EXPECT_EQ(picture.has_value(), empty < 1000) << empty;
    }
    snapshot();
    ASSERT_EQ(messages.shown.size(), 1U);
    EXPECT_NE(messages.shown[0].text.find("in Wagemill2021/08/31.Excel1.saveCellsActivesheet at line 70"),
              std::string::npos);
}

TEST_F(PayrollBuildTest, SavesInTheFormatOfTheVersion)
{
    struct {
        const char* version;
        FileFormat expected;
    } const cases[] = {{"11.0", FileFormat::WorkbookNormal}, {"12.0", FileFormat::Excel8},
                       {"16.0", FileFormat::Excel8},         {"11.6", FileFormat::Excel8},
                       {"16,0", FileFormat::Excel8},         {"9", FileFormat::WorkbookNormal}};
    const auto session = services.spreadsheet.createSession();
    for (const auto& [version, expected] : cases) {
        spreadsheet.version = version;
        EXPECT_EQ(getSaveFileFormat(services.spreadsheet.createSession, session.get()), expected) << version;
    }
    spreadsheet.version = "beta";
    EXPECT_THROW(getSaveFileFormat(services.spreadsheet.createSession, session.get()), std::invalid_argument);
}

TEST_F(PayrollBuildTest, TellsTheUserWhenThereIsNoSpreadsheet)
{
    int ended = 0;
    setProgramEnd([&] { ++ended; });
    checkExcelPresence(services.spreadsheet.createSession);
    EXPECT_EQ(ended, 0);
    EXPECT_EQ(count("1.Quit"), 0); // released, not quit
    spreadsheet.fails = [](int) { return true; };
    checkExcelPresence(services.spreadsheet.createSession);
    setProgramEnd(nullptr);
    EXPECT_EQ(ended, 1);
    ASSERT_EQ(messages.shown.size(), 1U);
    EXPECT_EQ(messages.shown[0].text,
              "Error 842001. A normal instance of Excel could not be created.\r\n\r\n"
              "1. Please make sure Excel is installed on this computer.\r\n\r\n"
              "2. Please open Excel normally and make sure a blank spreadsheet opens immediately without any "
              "interrupting window (such as an Excel file recovery window).\r\n\r\n"
              "3. Please make sure that when you double-click on a XLS or XLSX file that Excel opens normally without "
              "any interrupting messages.\r\n\r\n"
              "4. All versions of Excel are supported by this software except for the rare Excel Starter and Student "
              "editions.");
    EXPECT_EQ(messages.shown[0].title, "");
    EXPECT_EQ(messages.shown[0].icon, MessageIcon::None);
}

} // namespace
