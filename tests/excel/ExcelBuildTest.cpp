#include "tests/excel/ExcelTest.h"
#include "tests/support/LongForm.h"
#include "tests/workbook/BuildCases.h"

#include "app/base/Files.h"
#include "drawing/DrawingFile.h"
#include "resources/PayrollTemplate.h"
#include "workbook/engine/Book.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <regex>
#include <set>

#include <windows.h>

using namespace wagemill;
using namespace wagemill::test;

namespace {

const PayrollData& dataOf(const std::string& name)
{
    static const std::vector<BuildCase> cases = buildCases();
    return std::ranges::find(cases, name, &BuildCase::name)->data;
}

/// What the build asks of Excel, as the log of the calls writes it, with N for whole numbers and without texts.
const std::set<std::string> listedCalls = {
    "Application.DisplayAlerts put = BOOL False",
    "Application.Quit call",
    "Application.Range item(TEXT)",
    "Application.Selection get",
    "Application.Version get",
    "Application.Visible put = BOOL False",
    "Application.Workbooks get",
    "Application.Workbooks item(I4 N)",
    "Range.Column get",
    "Range.Columns get",
    "Range.Columns item(I4 N)",
    "Range.CopyPicture call",
    "Range.Row get",
    "Range.Rows get",
    "Range.Rows item(I4 N)",
    "Range.Select call",
    "Range.count get",
    "Selection.Copy call",
    "Selection.PasteSpecial call(Paste:=I4 -N, Operation:=I4 -N, SkipBlanks:=BOOL False, Transpose:=BOOL False)",
    "Workbook.ActiveSheet get",
    "Workbook.Close call",
    "Workbook.SaveAs call(TEXT, FileFormat:=I4 N)",
    "Workbook.Sheets item(I2 N)",
    "Workbooks.Open call(TEXT)",
    "Workbooks.Open call(TEXT, OMITTED, BOOL True)",
    "Workbooks.count get",
    "Worksheet.Activate call",
    "Worksheet.Cells put(I2 N, I2 N) = TEXT",
    "Worksheet.Name get",
    "Worksheet.Range item(TEXT)",
    "Worksheet.Rows item(TEXT)",
    "Worksheet.UsedRange get",
};

std::string withoutValues(const std::string& call)
{
    static const std::regex text("TEXT [^,)]*");
    static const std::regex number("(I[24]) (-?)[0-9]+");
    return std::regex_replace(std::regex_replace(call, text, "TEXT"), number, "$1 $2N");
}

/// The workbook's file written again, without what says when it was made.
std::vector<std::byte> contentOf(const std::filesystem::path& workbook)
{
    engine::Book book = engine::xls::readWorkbook(readBytesFromFile(workbook), workbook.string());
    book.keptStreams.clear();
    return engine::xls::writeWorkbook(book, engine::xls::FileKind::Workbook);
}

/// The size that a metafile says it has, in pixels at 96 dots per inch.
SIZE naturalSize(const std::vector<std::byte>& metafile)
{
    ENHMETAHEADER header = {};
    if (metafile.size() < sizeof header)
        return {};
    std::memcpy(&header, metafile.data(), sizeof header);
    return {::MulDiv(header.rclFrame.right - header.rclFrame.left, 96, 2540),
            ::MulDiv(header.rclFrame.bottom - header.rclFrame.top, 96, 2540)};
}

/// What a user must find after any build: the windows usable, the intermediate files gone.
void expectTidy(const RecordedWindows& outcome, const std::filesystem::path& folder, const std::string& when)
{
    ASSERT_GE(outcome.calls.size(), 2U) << when;
    EXPECT_EQ(outcome.calls[outcome.calls.size() - 2], "unfreeze") << when;
    EXPECT_EQ(outcome.calls.back(), "arrow") << when;
    EXPECT_FALSE(fileExists(folder / "template.xlt")) << when;
    EXPECT_FALSE(fileExists(folder / "temp.bmp")) << when;
}

class ExcelBuildTest : public ExcelTest {
protected:
    /// A build whose workbook and picture are those of the engine, without a dialog.
    void expectSameAsTheEngines(const PayrollData& data, const std::string& when)
    {
        const auto through = build(data);
        const auto direct = buildDirectly(data);
        EXPECT_EQ(messages.texts(), std::vector<std::string>()) << when;
        ASSERT_FALSE(through->workbook.empty() || direct->workbook.empty()) << when;
        EXPECT_TRUE(contentOf(through->workbook) == contentOf(direct->workbook)) << when;
        const drawing::Drawing expected = readDrawingFile(direct->picture);
        EXPECT_NEAR(naturalSize(through->picture).cx, expected.width, 1) << when;
        EXPECT_NEAR(naturalSize(through->picture).cy, expected.height, 1) << when;
        expectTidy(*through, folder, when);
        EXPECT_EQ(excelProcessesLeft(), 0) << when;
    }
};

/// Cases of the table that bring automation nothing new, at many calls each.
constexpr auto repeatedCases =
    std::to_array<std::string_view>({"employees-3", "employees-25", "employees-26", "typed-25", "typed-50", "typed-75",
                                     "typed-100", "typed-125", "typed-150", "typed-175"});

TEST_F(ExcelBuildTest, GivesTheWorkbookAndThePictureThatTheEngineGives)
{
    for (const BuildCase& each : buildCases()) {
        if (std::ranges::find(repeatedCases, each.name) != repeatedCases.end())
            continue;
        startAgain();
        expectSameAsTheEngines(each.data, each.name);
    }
}

/// Excel reads what is typed by the regional format that the call names: 05/04/2026 is a day of May or of April.
TEST_F(ExcelBuildTest, TypesInTheRegionalFormatOfTheUser)
{
    struct {
        LCID locale;
        const char* region;
        const char* wage;
        const char* rate;
        const char* periodEnding;
    } const cases[] = {
        {0x0409, "0409", "$1,234.50", "7.65", "5/4/2026"},
        {0x0407, "0407", "1.234,50 \u20AC", "7,65", "05.04.2026"},
        {0x0809, "0809", "\u00A31,234.50", "7.65", "05/04/2026"},
        {0x100C, "100C", "15,00 CHF", "7,65", "05.04.2026"},
    };
    for (const auto& [typedLocale, region, wage, rate, periodEnding] : cases) {
        PayrollData data = dataOf("sample");
        data.header.periodEnding = periodEnding;
        data.rows[0].texts[rowFieldIndex("txtHourlyWage")] = wage;
        data.rows[0].texts[rowFieldIndex("txtSocialSecurityTax")] = rate;
        startAgain(std::vector(2, std::string("region=") + region));
        locale = typedLocale;
        expectSameAsTheEngines(data, region);
    }
}

/// Excel is busy whenever its user edits a cell, and while an add-in starts.
TEST_F(ExcelBuildTest, WaitsForAnExcelThatIsBusy)
{
    const std::string slowStart = "start=3000";
    const std::string everyCall = "busy=0 busyfor=" + std::to_string(shortOrLong(30, 3000)); // milliseconds
    for (const auto& sessions : {std::vector<std::string>(2, everyCall),
                                 {slowStart + " busy=1 busyfor=3000", "busy=30 busyfor=3000"},
                                 {"busy=70 busyfor=3000", slowStart + " busy=1 busyfor=3000"},
                                 {"", "late hold=200"}}) {
        startAgain(sessions);
        expectSameAsTheEngines(dataOf("sample"), sessions.back());
    }
}

TEST_F(ExcelBuildTest, ReportsTheStepThatABusyExcelKeepsWaitingForTenSeconds)
{
    startAgain({"busy=8 busyfor=15000"});
    const auto outcome = build(dataOf("sample"));
    EXPECT_EQ(messages.failedSteps(), std::vector<int>{100});
    EXPECT_TRUE(messages.shown[0].text.starts_with("Excel failed at cell B4: Excel is busy. Please finish"))
        << messages.shown[0].text;
    expectTidy(*outcome, folder, "busy");
}

TEST_F(ExcelBuildTest, AsksForTheListedMembersInTheirListedFormAndNothingElse)
{
    build(dataOf("employees-3"));
    std::set<std::string> calls;
    for (const std::string& call : logged("call"))
        calls.insert(withoutValues(call));
    EXPECT_EQ(calls, listedCalls);
    for (const std::string& name : logged("name")) {
        const std::string member = name.substr(0, name.find(' ')) + " ";
        EXPECT_TRUE(std::ranges::any_of(calls, [&](const auto& call) { return call.starts_with(member); })) << name;
    }
}

TEST_F(ExcelBuildTest, GoesOnWithoutAnExcelThatDies)
{
    const std::string expected = ": Excel has ended, or its process no longer answers.";
    for (const auto& sessions : {std::vector<std::string>{"die=40"}, {"", "die=3"}}) {
        startAgain(sessions);
        const auto start = std::chrono::steady_clock::now();
        const auto outcome = build(dataOf("sample"));
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15)) << sessions.back();
        ASSERT_FALSE(messages.shown.empty()) << sessions.back();
        EXPECT_NE(messages.shown[0].text.find(expected), std::string::npos) << messages.shown[0].text;
        expectTidy(*outcome, folder, sessions.back());
        EXPECT_EQ(excelProcessesLeft(), 0) << sessions.back();
    }
}

/// A template as the user may have left one in the temporary folder: with two sheets.
void writeTemplateWithTwoSheets(const std::filesystem::path& path)
{
    engine::Book book = engine::xls::readWorkbook(payrollTemplateFile(), "template");
    engine::Book smaller;
    smaller.styles = book.styles;
    smaller.addSheet("One");
    smaller.addSheet("Two");
    writeBytesToFile(engine::xls::writeWorkbook(smaller, engine::xls::FileKind::Template), path);
}

TEST_F(ExcelBuildTest, TellsTheUserWhatIsWrongWithExcel)
{
    struct {
        std::vector<std::string> sessions;
        std::vector<int> steps; ///< the first of those reported
        std::string text;
    } const cases[] = {
        {{"nothing=Open"}, {60, 100}, "It may have opened it in Protected View."},
        {{"", "nothing=Open"}, {500, 520}, "It may have opened it in Protected View."},
        {{"nothing=Selection"}, {330, 350}, "Nothing is selected in Excel."},
        {{"", "nothing=ActiveSheet"}, {10, 20}, "Excel gave no worksheet."},
        {{"unknown=PasteSpecial"}, {350}, "Excel failed at \"PasteSpecial\": this version of Excel does not know it."},
        {{"region=0407"},
         {100, 101},
         "Excel failed at cell B4: Excel lacks the language pack of your regional format."},
        {{"refuse=SaveAs silent"}, {430}, "Excel failed at \"SaveAs\": Excel refuses it and gives no reason."},
        {{"", "refuse=CopyPicture"}, {50, 70, 600}, "The test wants this call to fail."},
    };
    for (const auto& [sessions, steps, text] : cases) {
        startAgain(sessions);
        const auto outcome = build(dataOf("sample"));
        std::vector<int> reported = messages.failedSteps();
        reported.resize(std::min(reported.size(), steps.size()));
        EXPECT_EQ(reported, steps) << sessions.back();
        ASSERT_FALSE(messages.shown.empty()) << sessions.back();
        EXPECT_NE(messages.shown[0].text.find(text), std::string::npos) << messages.shown[0].text;
        expectTidy(*outcome, folder, sessions.back());
        EXPECT_EQ(excelProcessesLeft(), 0) << sessions.back();
    }
}

TEST_F(ExcelBuildTest, ReportsEveryCellOfASheetThatIsNotThere)
{
    writeTemplateWithTwoSheets(folder / "template.xlt");
    const auto outcome = build(dataOf("sample"));
    EXPECT_EQ(messages.failedSteps(), (std::vector<int>{310, 320, 330, 340, 350, 360, 370, 380}));
    EXPECT_TRUE(messages.shown[0].text.starts_with("The workbook has no sheet number 3.\r\n"));
    EXPECT_TRUE(fileExists(outcome->workbook));
    expectTidy(*outcome, folder, "two sheets");
}

TEST_F(ExcelBuildTest, SavesInTheOlderFormatOfAnOlderExcel)
{
    startAgain({"version=11.0"});
    const auto outcome = build(dataOf("sample"));
    EXPECT_EQ(messages.texts(), std::vector<std::string>());
    const std::vector<std::string> calls = logged("call");
    EXPECT_TRUE(std::ranges::any_of(calls, [](const std::string& call) {
        return call.starts_with("Workbook.SaveAs ") && call.ends_with(", FileFormat:=I4 -4143)");
    }));
    EXPECT_TRUE(contentOf(outcome->workbook) == contentOf(buildDirectly(dataOf("sample"))->workbook));
}

} // namespace
