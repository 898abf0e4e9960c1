#include "workbook/excel/CallWatch.h"

#include "app/base/WindowsHandle.h"

#include <array>
#include <string_view>
#include <thread>

#include <windows.h>

namespace wagemill::automation {

namespace {

constexpr UINT pause = 250; // milliseconds

constexpr const wchar_t* question =
    L"Excel has not answered for 20 seconds. It may be asking something in a window that "
    L"is behind others.\n\nBring Excel to the front?";

struct ExcelWindow {
    HWND window = nullptr;
    ULONGLONG started = 0; ///< when its process did
};

/// When the process started; 0 when it is not an Excel.
ULONGLONG excelStart(DWORD process)
{
    const WindowsHandle handle(::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process));
    std::array<wchar_t, 1024> path = {};
    auto length = static_cast<DWORD>(path.size());
    if (!handle || !::QueryFullProcessImageNameW(handle.get(), 0, path.data(), &length))
        return 0;
    const std::wstring_view name(path.data(), length);
    FILETIME start = {};
    FILETIME unused = {};
    if (::lstrcmpiW(name.substr(name.rfind(L'\\') + 1).data(), L"excel.exe") != 0 ||
        !::GetProcessTimes(handle.get(), &start, &unused, &unused, &unused))
        return 0;
    return (static_cast<ULONGLONG>(start.dwHighDateTime) << 32U) | start.dwLowDateTime;
}

/// Keeps the topmost window of the Excel that started last: ours, and not the one in which the user works.
BOOL CALLBACK consider(HWND window, LPARAM found)
{
    auto& best = *reinterpret_cast<ExcelWindow*>(found);
    DWORD process = 0;
    ::GetWindowThreadProcessId(window, &process);
    const ULONGLONG started = ::IsWindowVisible(window) ? excelStart(process) : 0;
    if (started > best.started)
        best = {window, started};
    return TRUE;
}

void bringExcelToTheFront()
{
    ExcelWindow excel;
    ::EnumWindows(consider, reinterpret_cast<LPARAM>(&excel));
    ::SetForegroundWindow(excel.window);
}

std::atomic<ULONGLONG> beginOfCall = 0; ///< that is under way, in milliseconds; 0: there is none
ULONGLONG beginOfAsked = 0;             ///< of the call that the user was last asked about

BOOL CALLBACK closeBox(HWND box, LPARAM /*unused*/)
{
    ::EndDialog(box, IDNO); // refused by a window of another kind
    return TRUE;
}

void ask()
{
    const UINT_PTR timer = ::SetTimer(nullptr, 0, pause, [](HWND, UINT, UINT_PTR, DWORD) {
        if (beginOfCall != beginOfAsked)
            ::EnumThreadWindows(::GetCurrentThreadId(), closeBox, 0);
    });
    // Without an owner: our windows wait for the call, and a box that belongs to one would wait with it.
    const int answer =
        ::MessageBoxW(nullptr, question, L"Wagemill", MB_YESNO | MB_ICONQUESTION | MB_SETFOREGROUND | MB_TOPMOST);
    ::KillTimer(nullptr, timer);
    if (answer == IDYES)
        bringExcelToTheFront();
}

void watch(const std::stop_token& stop)
{
    while (!stop.stop_requested()) {
        ::Sleep(pause);
        const ULONGLONG begin = beginOfCall;
        if (begin == 0 || begin == beginOfAsked || ::GetTickCount64() - begin < WatchedCall::patience)
            continue;
        beginOfAsked = begin;
        ask();
    }
}

} // namespace

WatchedCall::WatchedCall()
{
    static const std::jthread watcher(watch);
    beginOfCall = ::GetTickCount64();
}

WatchedCall::~WatchedCall()
{
    beginOfCall = 0;
}

} // namespace wagemill::automation
