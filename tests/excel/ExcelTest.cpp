#include "tests/support/EmbeddedBuilds.h"
#include "tests/support/FailureOf.h"
#include "tests/support/LongForm.h"
#include "tests/support/RecordedMessages.h"
#include "tests/workbook/BuildCases.h"

#include "app/base/Dispatch.h"
#include "app/base/Files.h"
#include "app/base/PlatformFiles.h"
#include "app/base/WindowsHandle.h"
#include "app/base/text/WideText.h"
#include "app/look/UserRegion.h"
#include "drawing/DrawingFile.h"
#include "preview/Metafile.h"
#include "resources/PayrollTemplate.h"
#include "workbook/engine/Book.h"
#include "workbook/engine/xls/WorkbookFile.h"
#include "workbook/excel/CallWatch.h"
#include "workbook/excel/ExcelSession.h"

#include <QLocale>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <thread>

#include <windows.h>

#include <objbase.h>
#include <objidl.h>
#include <tlhelp32.h>

using namespace wagemill;
using namespace wagemill::test;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

/// The processes of the test's Excel.
std::vector<DWORD> excels()
{
    const WindowsHandle snapshot(::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    std::vector<DWORD> processes;
    PROCESSENTRY32W process = {};
    process.dwSize = sizeof process;
    for (BOOL more = ::Process32FirstW(snapshot.get(), &process); more;
         more = ::Process32NextW(snapshot.get(), &process))
        if (std::wstring_view(process.szExeFile) == L"excel.exe")
            processes.push_back(process.th32ProcessID);
    return processes;
}

/// Whether the condition comes true within the time; it is asked again and again.
template <typename Condition>
bool isSoon(Condition&& condition, std::chrono::milliseconds time)
{
    const auto end = std::chrono::steady_clock::now() + time;
    bool is = condition();
    for (; !is && std::chrono::steady_clock::now() < end; is = condition())
        std::this_thread::sleep_for(20ms);
    return is;
}

bool areAllExcelsGone()
{
    return isSoon([] { return excels().empty(); }, 10s);
}

BOOL CALLBACK printTitle(HWND window, LPARAM /*unused*/)
{
    std::array<wchar_t, 200> title = {};
    if (::IsWindowVisible(window) && ::InternalGetWindowText(window, title.data(), static_cast<int>(title.size())) > 0)
        std::cerr << "A window is open: " << toUtf8(title.data()) << std::endl;
    return TRUE;
}

void endExcels()
{
    for (const DWORD process : excels())
        ::TerminateProcess(WindowsHandle(::OpenProcess(PROCESS_TERMINATE, FALSE, process)).get(), 1);
}

/// A call that nobody answers waits for ever.
void endWhatHangs(const std::stop_token& stop)
{
    const auto isOver = [&] { return stop.stop_requested(); };
    if (isSoon(isOver, std::chrono::minutes(shortOrLong(5, 60))))
        return;
    ADD_FAILURE() << "The test did not end in time; its Excels are ended.";
    ::EnumWindows(printTitle, 0);
    endExcels();
    if (!isSoon(isOver, 1min))
        ::TerminateProcess(::GetCurrentProcess(), 1);
}

const PayrollData& dataOf(const std::string& name)
{
    static const std::vector<BuildCase> cases = buildCases();
    return std::ranges::find(cases, name, &BuildCase::name)->data;
}

/// The workbook's file written again, without what says when it was made.
std::vector<std::byte> contentOf(const fs::path& workbook)
{
    engine::Book book = engine::xls::readWorkbook(readBytesFromFile(workbook), workbook.string());
    book.keptStreams.clear();
    return engine::xls::writeWorkbook(book, engine::xls::FileKind::Workbook);
}

/// How each Excel is to behave, one after the other, in the words of Instructions.h; those that follow behave well.
using Behaviours = std::vector<std::string>;

/// A test with an Excel in a process of its own for each session, and a temporary folder of its own. None may be left
/// at its end. A test that does not end by itself fails after some minutes instead: its Excels are ended, and should
/// that not help, the tests.
class ExcelTest : public testing::Test {
protected:
    ExcelTest()
    {
        fs::create_directory(folder);
        platform::setEnvironmentPath("TEMP", folder);
    }
    ~ExcelTest() override
    {
        std::error_code ignored;
        fs::remove_all(m_privateFolder, ignored);
    }
    void TearDown() override
    {
        EXPECT_TRUE(areAllExcelsGone());
        endExcels(); // those that are left would fail the next test too
    }

    std::unique_ptr<Application> excelSession(const std::string& behaviour = "") const
    {
        platform::setEnvironmentPath("WAGEMILL_TEST_SERVER", "region=" + region + " " + behaviour);
        return createExcelSession(::LocaleNameToLCID(toWide(region).c_str(), 0));
    }

    std::unique_ptr<Application> engineSession()
    {
        const QLocale locale(QString::fromStdString(region));
        return std::make_unique<EmbeddedApplication>(regionalFormatsOf(locale), m_engineClipboard);
    }

    EmbeddedBuilds::Built build(const PayrollData& data, SpreadsheetPlatform spreadsheet)
    {
        messages.shown.clear();
        EmbeddedBuilds builds;
        builds.services.spreadsheet = std::move(spreadsheet);
        const auto built = builds.build(data);
        EXPECT_FALSE(fileExists(folder / "template.xlt") || fileExists(folder / "temp.bmp"));
        EXPECT_TRUE(areAllExcelsGone());
        return built;
    }

    EmbeddedBuilds::Built buildThroughExcel(const PayrollData& data, const Behaviours& behaviours)
    {
        const auto createSession = [&, next = behaviours.begin()]() mutable {
            return excelSession(next == behaviours.end() ? "" : *next++);
        };
        return build(data, {createSession, &systemPictureClipboard()});
    }

    /// A build whose workbook and picture are those of the engine, without a dialog.
    void expectSameAsTheEngines(const PayrollData& data, const Behaviours& behaviours = {})
    {
        const auto through = buildThroughExcel(data, behaviours);
        EXPECT_EQ(messages.texts(), std::vector<std::string>());
        const auto direct = build(data, {[this] { return engineSession(); }, &m_engineClipboard});
        ASSERT_FALSE(through.workbook.empty() || through.picture.empty());
        EXPECT_TRUE(contentOf(through.workbook) == contentOf(direct.workbook));
        const drawing::Drawing expected = readDrawingFile(direct.picture);
        const QSizeF size = checkedMetafileSize(through.picture);
        EXPECT_NEAR(size.width(), expected.width, 1);
        EXPECT_NEAR(size.height(), expected.height, 1);
    }

    std::string region = "en-US"; ///< of the user who types, and of the engine
    RecordedMessages messages;

private:
    const automation::Apartment m_apartment; ///< as the window system has one
    const fs::path m_privateFolder = makePrivateFolder();

protected:
    const fs::path folder = m_privateFolder / L"L\u00F6hne \u674E"; ///< the temporary folder

private:
    EmbeddedPictureClipboard m_engineClipboard;
    std::jthread m_watch{endWhatHangs};
};

TEST_F(ExcelTest, IsAProcessOfItsOwnForEachSession)
{
    const auto first = excelSession();
    const auto second = excelSession();
    EXPECT_EQ(excels().size(), 2U);
    EXPECT_EQ(second->Workbooks()->count(), 0);
    second->Quit();
    EXPECT_EQ(first->Version(), "16.0");
    const auto dying = excelSession("die=1"); // at its first call
    EXPECT_TRUE(failureOf([&] { dying->Quit(); }).starts_with("Excel failed at \"Quit\": Excel has ended"));
}

TEST_F(ExcelTest, IsNotLeftToObjectsThatOutliveTheirSession)
{
    for (const bool quits : {true, false}) {
        auto session = excelSession();
        const auto workbooks = session->Workbooks();
        EXPECT_EQ(workbooks->count(), 0);
        if (quits)
            session->Quit();
        else
            session.reset();
        EXPECT_TRUE(areAllExcelsGone());
        EXPECT_EQ(failureOf([&] { workbooks->count(); }), "The Excel session has ended.");
        if (session) {
            EXPECT_EQ(failureOf([&] { session->Version(); }), "The Excel session has ended.");
        }
    }
}

/// What a session answers that no workbook shows.
std::vector<std::string> answersOf(Application& session, const fs::path& path)
{
    const auto book = session.Workbooks()->OpenReadOnly(path.string());
    const auto sheet = session.Workbooks(session.Workbooks()->count())->ActiveSheet();
    const auto used = sheet->UsedRange();
    sheet->PutCells(2, 3, "changed");
    std::vector<std::string> answers = {sheet->Name(), failureOf([&] { session.PutVisible(true); }),
                                        failureOf([&] { book->Sheets(4); }), failureOf([&] { book->Close(); })};
    for (const std::int32_t number : {used->Rows()->count(), used->Columns()->count(), used->Rows(2)->Row(),
                                      used->Rows(2)->Column(), used->Columns(2)->Row(), used->Columns(2)->Column()})
        answers.push_back(std::to_string(number));
    session.PutDisplayAlerts(false);
    answers.push_back(failureOf([&] { book->Close(); }));
    session.Quit();
    return answers;
}

TEST_F(ExcelTest, AnswersWhatTheEngineAnswers)
{
    const fs::path path = folder / "template.xlt";
    writeBytesToFile(payrollTemplateFile(), path);
    EXPECT_EQ(answersOf(*excelSession(), path), answersOf(*engineSession(), path));
}

TEST_F(ExcelTest, LetsNoWindowEventRunWhileItIsBusy)
{
    static int events;
    events = 0;
    const TIMERPROC count = [](HWND, UINT, UINT_PTR, DWORD) { ++events; };
    ::PostMessageW(nullptr, WM_TIMER, 0, reinterpret_cast<LPARAM>(count)); // calls it when it is dispatched
    const auto session = excelSession("busy=each busyfor=200");
    EXPECT_EQ(session->Version(), "16.0");
    EXPECT_EQ(events, 0);
    MSG message = {};
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        ::DispatchMessageW(&message);
    EXPECT_EQ(events, 1);
}

HWND shownWindow(const wchar_t* title)
{
    const HWND window = ::FindWindowW(nullptr, title);
    return ::IsWindowVisible(window) ? window : nullptr;
}

bool isInFront(const wchar_t* title)
{
    const HWND window = shownWindow(title);
    return window != nullptr && ::GetForegroundWindow() == window;
}

/// Answers the box again and again: the first answer may come before it is ready.
bool isGoneWhenAnswered(const wchar_t* title, int button)
{
    ::PostMessageW(shownWindow(title), WM_COMMAND, static_cast<WPARAM>(button), 0);
    return shownWindow(title) == nullptr;
}

/// Excel asks something that is behind other windows: the user is led there.
TEST_F(ExcelTest, IsBroughtToTheFrontWhereTheUserWantsItWhenItDoesNotAnswer)
{
    const wchar_t* const excelsQuestion = L"Test question";
    const wchar_t* const offer = L"Wagemill";
    for (const bool isWanted : {true, false}) {
        const auto session = excelSession("ask=Version");
        automation::WatchedCall::patience = 3'000;
        std::jthread user([&] {
            EXPECT_TRUE(isSoon([&] { return shownWindow(excelsQuestion) != nullptr; }, 30s));
            EXPECT_TRUE(isSoon([&] { return isInFront(offer); }, 30s));
            if (isWanted) {
                EXPECT_TRUE(isSoon([&] { return isGoneWhenAnswered(offer, IDYES); }, 30s));
                EXPECT_TRUE(isSoon([&] { return isInFront(excelsQuestion); }, 30s));
            }
            EXPECT_TRUE(isSoon([&] { return isGoneWhenAnswered(excelsQuestion, IDYES); }, 30s));
            EXPECT_TRUE(isSoon([&] { return shownWindow(offer) == nullptr; }, 30s));
        });
        EXPECT_EQ(session->Version(), "16.0");
        user.join();
        automation::WatchedCall::patience = 20'000;
    }
}

TEST_F(ExcelTest, FiltersTheCallsOfItsThreadForAsLongAsOneSessionLives)
{
    const auto isFiltered = [] {
        IMessageFilter* filter = nullptr;
        ::CoRegisterMessageFilter(nullptr, &filter);
        ::CoRegisterMessageFilter(filter, nullptr);
        return filter != nullptr;
    };
    auto first = excelSession();
    auto second = excelSession();
    first.reset();
    EXPECT_TRUE(isFiltered());
    second.reset();
    EXPECT_FALSE(isFiltered());
}

TEST_F(ExcelTest, BuildsTheWorkbookAndThePictureThatTheEngineBuilds)
{
    const std::string busyAtEachCall = "busy=each busyfor=" + std::to_string(shortOrLong(30, 3000)); // milliseconds
    const std::pair<const char*, Behaviours> cases[] = {
        {"sample", {}},
        {"blank", {}},
        {"long-texts", {}},
        {"unknown-names", {}},
        {"typed-0", {}},
        {"sample", {"version=11.0"}},
        {"sample", {busyAtEachCall, busyAtEachCall}},                // while its user edits a cell
        {"sample", {"busy=1 busyfor=3000", "busy=30 busyfor=3000"}}, // while an add-in starts
    };
    for (const auto& [name, behaviours] : cases) {
        SCOPED_TRACE(name + (behaviours.empty() ? "" : ", " + behaviours[0]));
        expectSameAsTheEngines(dataOf(name), behaviours);
    }
}

/// Excel reads what is typed by the regional format that the call names: 05/04/2026 is a day of May or of April.
TEST_F(ExcelTest, TypesInTheRegionalFormatOfTheUser)
{
    const struct {
        const char* region;
        const char* wage;
        const char* rate;
        const char* periodEnding;
    } cases[] = {
        {"de-DE", "1.234,50 \u20AC", "7,65", "05.04.2026"},
        {"en-GB", "\u00A31,234.50", "7.65", "05/04/2026"},
        {"fr-CH", "15,00 CHF", "7,65", "05.04.2026"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.region);
        region = each.region;
        PayrollData data = dataOf("sample");
        data.header.periodEnding = each.periodEnding;
        data.rows[0].texts[rowFieldIndex("txtHourlyWage")] = each.wage;
        data.rows[0].texts[rowFieldIndex("txtSocialSecurityTax")] = each.rate;
        expectSameAsTheEngines(data);
    }
}

TEST_F(ExcelTest, TellsTheUserWhatIsWrongWithIt)
{
    const struct {
        Behaviours behaviours;
        std::vector<int> steps; ///< the first of those reported
        std::string text;
    } cases[] = {
        {{"nothing=Open"}, {60, 100}, "It may have opened it in Protected View."},
        {{"nothing=Selection"}, {330, 350}, "Nothing is selected in Excel."},
        {{"", "nothing=ActiveSheet"}, {10, 20}, "Excel gave no worksheet."},
        {{"busy=8 busyfor=15000"}, {100}, "Excel failed at cell B4: Excel is busy. Please finish"},
        {{"die=40"}, {220, 310}, ": Excel has ended, or its process no longer answers."},
        {{"", "die=3"}, {520, 10}, ": Excel has ended, or its process no longer answers."},
    };
    for (const auto& [behaviours, steps, text] : cases) {
        SCOPED_TRACE(behaviours.back());
        buildThroughExcel(dataOf("sample"), behaviours);
        std::vector<int> reported = messages.failedSteps();
        ASSERT_FALSE(reported.empty());
        reported.resize(std::min(reported.size(), steps.size()));
        EXPECT_EQ(reported, steps);
        EXPECT_NE(messages.shown[0].text.find(text), std::string::npos) << messages.shown[0].text;
    }
}

} // namespace
