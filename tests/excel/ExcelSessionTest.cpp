#include "tests/excel/ExcelTest.h"
#include "tests/support/FailureOf.h"

#include "workbook/excel/CallWatch.h"
#include "workbook/excel/ExcelSession.h"

#include <thread>

#include <windows.h>

#include <objbase.h>
#include <objidl.h>

using namespace wagemill;
using namespace wagemill::test;
using namespace std::chrono_literals;

namespace {

using ExcelSessionTest = ExcelTest;

TEST_F(ExcelSessionTest, IsAProcessOfItsOwnEachTime)
{
    const auto first = createSession();
    const auto second = createSession();
    EXPECT_EQ(excelProcesses(), 2);
    EXPECT_EQ(second->Workbooks()->count(), 0);
    second->Quit();
    EXPECT_EQ(first->Version(), "16.0");
}

TEST_F(ExcelSessionTest, EndsWithoutQuitWhenItIsReleased)
{
    checkExcelPresence([this] { return createSession(); });
    EXPECT_EQ(messages.texts(), std::vector<std::string>());
    EXPECT_EQ(logged("call"), std::vector<std::string>());
    EXPECT_EQ(excelProcessesLeft(), 0);
}

TEST_F(ExcelSessionTest, LeavesNoExcelToObjectsThatOutliveIt)
{
    for (const bool quits : {true, false}) {
        auto session = createSession();
        const auto workbooks = session->Workbooks();
        EXPECT_EQ(workbooks->count(), 0);
        if (quits)
            session->Quit();
        else
            session.reset();
        EXPECT_EQ(excelProcessesLeft(), 0);
        EXPECT_EQ(failureOf([&] { workbooks->count(); }), "The Excel session has ended.");
        if (session) {
            EXPECT_EQ(failureOf([&] { session->Version(); }), "The Excel session has ended.");
        }
    }
}

/// A window that counts the events it was given.
class CountingWindow {
public:
    CountingWindow()
    {
        ::SetWindowLongPtrW(m_window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&CountingWindow::receive));
        s_events = 0;
    }
    CountingWindow(const CountingWindow&) = delete;
    CountingWindow& operator=(const CountingWindow&) = delete;
    ~CountingWindow() { ::DestroyWindow(m_window); }

    void post() const { ::PostMessageW(m_window, WM_APP, 0, 0); }
    static int events() { return s_events; }

private:
    static LRESULT CALLBACK receive(HWND window, UINT message, WPARAM word, LPARAM longWord)
    {
        s_events += message == WM_APP || message == WM_TIMER ? 1 : 0;
        return ::DefWindowProcW(window, message, word, longWord);
    }

    static inline int s_events = 0;
    HWND m_window =
        ::CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPED, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
};

TEST_F(ExcelSessionTest, LetsNoWindowEventRunDuringACall)
{
    startAgain({"slow=200"});
    const CountingWindow window;
    window.post();
    const auto session = createSession();
    EXPECT_EQ(session->Version(), "16.0");
    window.post();
    session->PutVisible(false);
    session->Quit();
    EXPECT_EQ(CountingWindow::events(), 0);
    MSG message = {};
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        ::DispatchMessageW(&message);
    EXPECT_EQ(CountingWindow::events(), 2);
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

bool isGone(const wchar_t* title)
{
    return shownWindow(title) == nullptr;
}

/// Answers the box again and again: the first answer may come before it is ready.
bool isGoneWhenAnswered(const wchar_t* title, int button)
{
    ::PostMessageW(shownWindow(title), WM_COMMAND, static_cast<WPARAM>(button), 0);
    return isGone(title);
}

/// Excel asks something that is behind other windows: the user is led there.
TEST_F(ExcelSessionTest, OffersToBringAnExcelToTheFrontThatDoesNotAnswer)
{
    const wchar_t* const excelsQuestion = L"Test question";
    const wchar_t* const offer = L"Wagemill";
    startAgain({"ask=Version", "ask=Version"});
    for (const bool isBroughtToTheFront : {true, false}) {
        const auto session = createSession();
        automation::CallWatch::patience = 3'000;
        std::jthread user([&] {
            EXPECT_TRUE(isSoon([&] { return shownWindow(excelsQuestion) != nullptr; }, 30s));
            EXPECT_TRUE(isSoon([&] { return isInFront(offer); }, 30s));
            if (isBroughtToTheFront) {
                EXPECT_TRUE(isSoon([&] { return isGoneWhenAnswered(offer, IDYES); }, 30s));
                EXPECT_TRUE(isSoon([&] { return isInFront(excelsQuestion); }, 30s));
            }
            EXPECT_TRUE(isSoon([&] { return isGoneWhenAnswered(excelsQuestion, IDYES); }, 30s));
            EXPECT_TRUE(isSoon([&] { return isGone(offer); }, 30s));
        });
        EXPECT_EQ(session->Version(), "16.0");
        user.join();
        automation::CallWatch::patience = 20'000;
    }
}

TEST_F(ExcelSessionTest, FiltersTheCallsOfItsThreadForAsLongAsOneSessionLives)
{
    const auto isFiltered = [] {
        IMessageFilter* filter = nullptr;
        ::CoRegisterMessageFilter(nullptr, &filter);
        ::CoRegisterMessageFilter(filter, nullptr);
        return filter != nullptr;
    };
    auto first = createSession();
    auto second = createSession();
    first.reset();
    EXPECT_TRUE(isFiltered());
    second.reset();
    EXPECT_FALSE(isFiltered());
}

} // namespace
