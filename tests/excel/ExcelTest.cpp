#include "tests/excel/ExcelTest.h"
#include "tests/support/LongForm.h"

#include "app/base/Files.h"
#include "app/base/PlatformFiles.h"
#include "app/base/RandomNumber.h"
#include "app/base/WindowsHandle.h"
#include "app/base/text/WideText.h"
#include "app/look/UserRegion.h"
#include "resources/PayrollTemplate.h"
#include "workbook/excel/ExcelSession.h"

#include <QLocale>

#include <windows.h>

#include <array>
#include <fstream>
#include <iostream>
#include <string_view>

#include <tlhelp32.h>

namespace wagemill::test {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

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

BOOL CALLBACK printTitle(HWND window, LPARAM /*unused*/)
{
    std::array<wchar_t, 200> title = {};
    if (::IsWindowVisible(window) && ::InternalGetWindowText(window, title.data(), static_cast<int>(title.size())) > 0)
        std::cerr << "A window is open: " << toUtf8(title.data()) << std::endl;
    return TRUE;
}

/// A call that nobody answers waits for ever.
void endWhatHangs(const std::stop_token& stop)
{
    const auto isOver = [&] { return stop.stop_requested(); };
    if (isSoon(isOver, std::chrono::minutes(shortOrLong(5, 60))))
        return;
    ADD_FAILURE() << "The test did not end in time; its Excels are ended.";
    ::EnumWindows(printTitle, 0);
    for (const DWORD process : excels())
        ::TerminateProcess(WindowsHandle(::OpenProcess(PROCESS_TERMINATE, FALSE, process)).get(), 1);
    if (!isSoon(isOver, 1min))
        ::TerminateProcess(::GetCurrentProcess(), 1);
}

void emptyClipboard()
{
    if (!::OpenClipboard(nullptr))
        throw std::runtime_error("the clipboard cannot be emptied");
    ::EmptyClipboard();
    ::CloseClipboard();
}

} // namespace

bool isSoon(const std::function<bool()>& condition, std::chrono::milliseconds time)
{
    const auto end = std::chrono::steady_clock::now() + time;
    bool is = condition();
    for (; !is && std::chrono::steady_clock::now() < end; is = condition())
        std::this_thread::sleep_for(20ms);
    return is;
}

int excelProcesses()
{
    return static_cast<int>(excels().size());
}

int excelProcessesLeft()
{
    isSoon([] { return excelProcesses() == 0; }, 10s);
    return excelProcesses();
}

ExcelTest::ExcelTest()
    : m_privateFolder(makePrivateFolder()), folder(m_privateFolder / L"L\u00F6hne \u674E"), m_watch(endWhatHangs)
{
    fs::create_directory(folder);
    platform::setEnvironmentPath("TEMP", folder);
    platform::setEnvironmentPath("WAGEMILL_TEST_SERVER_LOG", logFile());
}

ExcelTest::~ExcelTest()
{
    std::error_code ignored;
    fs::remove_all(m_privateFolder, ignored);
}

std::unique_ptr<Application> ExcelTest::createSession()
{
    platform::setEnvironmentPath("WAGEMILL_TEST_SERVER",
                                 m_sessions < instructions.size() ? instructions[m_sessions] : "");
    ++m_sessions;
    return createExcelSession(locale);
}

void ExcelTest::startAgain(std::vector<std::string> sessions)
{
    instructions = std::move(sessions);
    m_sessions = 0;
    messages.shown.clear();
    fs::remove(logFile());
    emptyClipboard();
}

std::unique_ptr<RecordedWindows> ExcelTest::buildWith(SpreadsheetPlatform spreadsheet, const PayrollData& data) const
{
    BuildServices services;
    services.spreadsheet = std::move(spreadsheet);
    services.templateResource = [] { return payrollTemplateFile(); };
    services.randomNumber = randomWholeNumber;
    auto windows = std::make_unique<RecordedWindows>();
    buildPayrollWorkbook(data, *windows, services);
    return windows;
}

std::unique_ptr<RecordedWindows> ExcelTest::build(const PayrollData& data)
{
    return buildWith({[this] { return createSession(); }, &systemPictureClipboard()}, data);
}

std::unique_ptr<RecordedWindows> ExcelTest::buildDirectly(const PayrollData& data)
{
    const auto createApplication = [this] {
        std::array<wchar_t, LOCALE_NAME_MAX_LENGTH> name = {};
        ::LCIDToLocaleName(locale, name.data(), LOCALE_NAME_MAX_LENGTH, 0);
        return std::make_unique<EmbeddedApplication>(regionalFormatsOf(QLocale(QString::fromWCharArray(name.data()))),
                                                     m_engineClipboard);
    };
    return buildWith({createApplication, &m_engineClipboard}, data);
}

std::vector<std::string> ExcelTest::logged(const std::string& kind) const
{
    std::vector<std::string> lines;
    std::ifstream file(logFile(), std::ios::binary);
    for (std::string line; std::getline(file, line);)
        if (line.starts_with(kind + " "))
            lines.push_back(line.substr(kind.size() + 1));
    return lines;
}

} // namespace wagemill::test
