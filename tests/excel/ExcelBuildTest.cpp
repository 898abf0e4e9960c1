#include "tests/excel/ExcelTest.h"
#include "tests/excel/SameWorkbook.h"
#include "tests/support/LongForm.h"
#include "tests/workbook/BuildCases.h"

#include "app/base/Files.h"
#include "drawing/DrawingFile.h"
#include "resources/CustomResource.h"
#include "workbook/engine/Book.h"
#include "workbook/engine/xls/BiffReader.h"
#include "workbook/engine/xls/BiffWriter.h"

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

/// What the build may ask of Excel, as the log of the calls writes it, and nothing else.
const std::vector<std::string>& listedCalls()
{
    static const std::vector<std::string> calls = {
        R"(Application\.Version get)",
        R"(Application\.Workbooks get)",
        R"(Application\.Workbooks item\(I4 1\))",
        R"(Application\.Visible put = BOOL False)",
        R"(Application\.DisplayAlerts put = BOOL False)",
        R"(Application\.Selection get)",
        R"(Application\.Range item\(TEXT D5\))",
        R"(Application\.Quit call)",
        R"(Workbooks\.Open call\(TEXT [^,]*\\kvarno[1-9]{8}\.xls\))",
        R"(Workbooks\.Open call\(TEXT [^,]*\\template\.xlt, OMITTED, BOOL True\))",
        R"(Workbooks\.count get)",
        R"(Workbook\.Sheets item\(I2 [123]\))",
        R"(Workbook\.ActiveSheet get)",
        R"(Workbook\.SaveAs call\(TEXT [^,]*\\kvarno[1-9]{8}\.xls, FileFormat:=I4 56\))",
        R"(Workbook\.Close call)",
        R"(Worksheet\.Cells put\(I2 \d+, I2 \d+\) = TEXT .*)",
        R"(Worksheet\.Activate call)",
        R"(Worksheet\.Rows item\(TEXT 2:12\))",
        R"(Worksheet\.Range item\(TEXT A\d+\))",
        R"(Worksheet\.Name get)",
        R"(Worksheet\.UsedRange get)",
        R"(Selection\.Copy call)",
        R"(Selection\.PasteSpecial call\(Paste:=I4 -4104, Operation:=I4 -4142, SkipBlanks:=BOOL False, Transpose:=BOOL False\))",
        R"(Range\.Rows get)",
        R"(Range\.Rows item\(I4 \d+\))",
        R"(Range\.Columns get)",
        R"(Range\.Columns item\(I4 \d+\))",
        R"(Range\.count get)",
        R"(Range\.Row get)",
        R"(Range\.Column get)",
        R"(Range\.Select call)",
        R"(Range\.CopyPicture call)",
    };
    return calls;
}

/// Whether a name that was asked for, "Selection.PasteSpecial Paste", is spelt as in a listed call.
bool isListedName(const std::string& name)
{
    const std::size_t blank = std::min(name.find(' '), name.size());
    const std::size_t dot = name.find('.');
    const std::string member = name.substr(0, dot) + "\\" + name.substr(dot, blank - dot) + " ";
    const std::string argument = blank == name.size() ? "" : name.substr(blank + 1) + ":=";
    return std::ranges::any_of(listedCalls(), [&](const std::string& call) {
        return call.starts_with(member) && call.find(argument) != std::string::npos;
    });
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
        EXPECT_EQ(workbookDifferences(through->workbook, direct->workbook), std::vector<std::string>()) << when;
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
        startAnew();
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
        startAnew(std::vector(2, std::string("region=") + region));
        locale = typedLocale;
        expectSameAsTheEngines(data, region);
    }
}

/// Excel is busy whenever its user edits a cell, and while an add-in starts.
TEST_F(ExcelBuildTest, WaitsForAnExcelThatIsBusy)
{
    const std::string slowStart = "start=3000";
    const std::string everyCall = "busy=0 busyfor=" + std::to_string(shortOrLong(30, 3000)); // milliseconds
    for (const auto& told : {std::vector<std::string>(2, everyCall),
                             {slowStart + " busy=1 busyfor=3000", "busy=30 busyfor=3000"},
                             {"busy=70 busyfor=3000", slowStart + " busy=1 busyfor=3000"},
                             {"", "late hold=200"}}) {
        startAnew(told);
        expectSameAsTheEngines(dataOf("sample"), told.back());
    }
}

TEST_F(ExcelBuildTest, ReportsTheStepThatABusyExcelKeepsWaitingForTenSeconds)
{
    startAnew({"busy=8 busyfor=15000"});
    const auto outcome = build(dataOf("sample"));
    EXPECT_EQ(messages.failedSteps(), std::vector<int>{100});
    EXPECT_TRUE(messages.shown[0].text.starts_with("Excel failed at cell B4: Excel is busy. Please finish"))
        << messages.shown[0].text;
    expectTidy(*outcome, folder, "busy");
}

TEST_F(ExcelBuildTest, AsksForTheListedMembersInTheirListedFormAndNothingElse)
{
    build(dataOf("employees-3"));
    std::set<std::string> missing(listedCalls().begin(), listedCalls().end());
    for (const std::string& call : logged("call")) {
        const auto listed = std::ranges::find_if(
            listedCalls(), [&](const std::string& pattern) { return std::regex_match(call, std::regex(pattern)); });
        ASSERT_NE(listed, listedCalls().end()) << call;
        missing.erase(*listed);
    }
    EXPECT_EQ(missing, std::set<std::string>());
    for (const std::string& name : logged("name"))
        EXPECT_TRUE(isListedName(name)) << name;
}

TEST_F(ExcelBuildTest, GoesOnWithoutAnExcelThatDies)
{
    const std::string expected = ": Excel has ended, or its process no longer answers.";
    for (const auto& told : {std::vector<std::string>{"die=40"}, {"", "die=3"}}) {
        startAnew(told);
        const auto start = std::chrono::steady_clock::now();
        const auto outcome = build(dataOf("sample"));
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15)) << told.back();
        ASSERT_FALSE(messages.shown.empty()) << told.back();
        EXPECT_NE(messages.shown[0].text.find(expected), std::string::npos) << messages.shown[0].text;
        expectTidy(*outcome, folder, told.back());
        EXPECT_EQ(excelProcessesLeft(), 0) << told.back();
    }
}

/// A template as the user may have left one in the temporary folder: with two sheets.
void writeTemplateWithTwoSheets(const std::filesystem::path& path)
{
    engine::Book book = engine::xls::readWorkbook(customResource(payrollTemplateResource), "template");
    engine::Book smaller;
    smaller.styles = book.styles;
    smaller.addSheet("One");
    smaller.addSheet("Two");
    writeBytesToFile(engine::xls::writeWorkbook(smaller, engine::xls::FileKind::Template), path);
}

TEST_F(ExcelBuildTest, TellsTheUserWhatIsWrongWithExcel)
{
    struct {
        std::vector<std::string> told;
        std::vector<int> steps; ///< the first of those reported
        std::string text;
    } const cases[] = {
        {{"nothing=Open"}, {60, 100}, "It may have opened it in Protected View."},
        {{"", "nothing=Open"}, {500, 520}, "It may have opened it in Protected View."},
        {{"nothing=Selection"}, {330, 350}, "Nothing is selected in Excel."},
        {{"", "nothing=ActiveSheet"}, {10, 20}, "Excel gave no worksheet."},
        {{"nothing=Version"}, {430}, "Excel gave no text for \"Version\"."},
        {{"version=beta"}, {430}, "gives \"beta\" as its version, which is not a number."},
        {{"unknown=PasteSpecial"}, {350}, "Excel failed at \"PasteSpecial\": this version of Excel does not know it."},
        {{"region=0407"},
         {100, 101},
         "Excel failed at cell B4: Excel lacks the language pack of your regional format."},
        {{"refuse=SaveAs silent"}, {430}, "Excel failed at \"SaveAs\": Excel refuses it and gives no reason."},
        {{"refuse=Quit"}, {460}, "The test wants this call to fail."},
        {{"", "refuse=CopyPicture"}, {50, 70, 600}, "The test wants this call to fail."},
    };
    for (const auto& [told, steps, text] : cases) {
        startAnew(told);
        const auto outcome = build(dataOf("sample"));
        std::vector<int> reported = messages.failedSteps();
        reported.resize(std::min(reported.size(), steps.size()));
        EXPECT_EQ(reported, steps) << told.back();
        ASSERT_FALSE(messages.shown.empty()) << told.back();
        EXPECT_NE(messages.shown[0].text.find(text), std::string::npos) << messages.shown[0].text;
        expectTidy(*outcome, folder, told.back());
        EXPECT_EQ(excelProcessesLeft(), 0) << told.back();
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
    startAnew({"version=11.0"});
    const auto outcome = build(dataOf("sample"));
    EXPECT_EQ(messages.texts(), std::vector<std::string>());
    const std::vector<std::string> calls = logged("call");
    EXPECT_TRUE(std::ranges::any_of(calls, [](const std::string& call) {
        return call.starts_with("Workbook.SaveAs ") && call.ends_with(", FileFormat:=I4 -4143)");
    }));
    EXPECT_EQ(workbookDifferences(outcome->workbook, buildDirectly(dataOf("sample"))->workbook),
              std::vector<std::string>());
}

} // namespace
