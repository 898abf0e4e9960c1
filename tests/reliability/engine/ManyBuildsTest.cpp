#include "tests/support/EmbeddedBuilds.h"
#include "tests/support/LongForm.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/workbook/BuildCases.h"

#include <unistd.h>

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace wagemill::test {

namespace {

/// Memory of this process that is in use now.
long residentMegabytes()
{
    std::ifstream statistics("/proc/self/statm");
    long pages = 0;
    statistics >> pages >> pages; // the second number
    return pages * sysconf(_SC_PAGESIZE) / (1024 * 1024);
}

long openFiles()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

} // namespace

TEST(ManyBuilds, GrowByNothing)
{
    const TemporaryFolder folder;
    const ScopedEnvironment temporary("TEMP", folder.path().string());
    const PayrollData sample = buildCases().front().data;
    const int builds = shortOrLong(WAGEMILL_SANITIZED ? 150 : 1000, 1000);
    constexpr int untilAllIsLoaded = 50;
    EmbeddedBuilds embedded;
    const auto build = [&] { ASSERT_TRUE(std::filesystem::remove(embedded.build(sample).workbook)); };
    for (int number = 0; number < untilAllIsLoaded; ++number)
        build();
    const long before = residentMegabytes();
    const long filesBefore = openFiles();
    for (int number = untilAllIsLoaded; number < builds; ++number)
        build();
    EXPECT_EQ(openFiles(), filesBefore);
    if (WAGEMILL_SANITIZED)
        GTEST_SKIP() << "growth of memory: a sanitizer keeps what was given back";
    EXPECT_LE(residentMegabytes() - before, 5);
}

} // namespace wagemill::test
