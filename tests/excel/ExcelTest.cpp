#include "tests/excel/ExcelTest.h"

#include "app/base/Files.h"
#include "app/base/PlatformFiles.h"
#include "app/base/RandomNumber.h"
#include "app/look/UserRegion.h"
#include "resources/CustomResource.h"
#include "workbook/embedded/EmbeddedApplication.h"
#include "workbook/excel/ExcelApplication.h"
#include "workbook/excel/ExcelSession.h"

#include <QLocale>

#include <windows.h>

#include <array>
#include <chrono>
#include <fstream>
#include <string_view>
#include <thread>

#include <tlhelp32.h>

namespace wagemill::test {

namespace fs = std::filesystem;

namespace {

void emptyClipboard()
{
    if (!::OpenClipboard(nullptr))
        throw std::runtime_error("the clipboard cannot be emptied");
    ::EmptyClipboard();
    ::CloseClipboard();
}

} // namespace

void RecordedWindows::showPicture(const fs::path& path)
{
    outcome.picture = readBytesFromFile(path);
}

int excelProcesses()
{
    const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    int count = 0;
    PROCESSENTRY32W process = {};
    process.dwSize = sizeof process;
    for (BOOL more = ::Process32FirstW(snapshot, &process); more; more = ::Process32NextW(snapshot, &process))
        count += std::wstring_view(process.szExeFile) == L"excel.exe" ? 1 : 0;
    ::CloseHandle(snapshot);
    return count;
}

int excelProcessesLeft()
{
    using namespace std::chrono_literals;
    const auto patience = std::chrono::steady_clock::now() + 10s;
    int left = excelProcesses();
    while (left > 0 && std::chrono::steady_clock::now() < patience) {
        std::this_thread::sleep_for(20ms);
        left = excelProcesses();
    }
    return left;
}

ExcelTest::ExcelTest() : m_privateFolder(platform::makePrivateFolder()), folder(m_privateFolder / L"L\u00F6hne \u674E")
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

void ExcelTest::startAnew(std::vector<std::string> told)
{
    instructions = std::move(told);
    m_sessions = 0;
    messages.shown.clear();
    fs::remove(logFile());
    emptyClipboard();
}

BuildServices ExcelTest::services(SpreadsheetPlatform spreadsheet) const
{
    BuildServices services;
    services.spreadsheet = std::move(spreadsheet);
    services.templateResource = [] { return customResource(payrollTemplateResource); };
    services.randomNumber = randomWholeNumber;
    return services;
}

BuildOutcome ExcelTest::build(const PayrollData& data)
{
    RecordedWindows windows;
    buildPayrollWorkbook(data, windows, services({[this] { return createSession(); }, &systemPictureClipboard()}));
    return std::move(windows.outcome);
}

BuildOutcome ExcelTest::buildDirectly(const PayrollData& data)
{
    RecordedWindows windows;
    const auto createApplication = [this] {
        std::array<wchar_t, LOCALE_NAME_MAX_LENGTH> name = {};
        ::LCIDToLocaleName(locale, name.data(), LOCALE_NAME_MAX_LENGTH, 0);
        return std::make_unique<EmbeddedApplication>(regionalFormatsOf(QLocale(QString::fromWCharArray(name.data()))),
                                                     m_engineClipboard);
    };
    buildPayrollWorkbook(data, windows, services({createApplication, &m_engineClipboard}));
    return std::move(windows.outcome);
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
