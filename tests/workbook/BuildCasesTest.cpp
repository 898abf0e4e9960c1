#include "tests/workbook/BuildCases.h"
#include "tests/support/RecordedMessages.h"
#include "tests/support/RecordedWindows.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/workbook/FakeSpreadsheet.h"

#include "workbook/PayrollBuild.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace wagemill;
using namespace wagemill::test;

namespace {

class BuildCasesTest : public testing::Test {
protected:
    /// What the spreadsheet is asked when its call of that number, from 1, fails; 0 for none.
    std::vector<std::string> callsOf(const PayrollData& data, int failingCall)
    {
        FakeSpreadsheet fake;
        fake.fails = [failingCall](int call) { return call == failingCall; };
        BuildServices services;
        services.spreadsheet = fake.platform();
        services.templateResource = [] { return std::span<const std::byte>(); };
        services.randomNumber = [](std::int32_t, std::int32_t) { return 7; };
        RecordedWindows windows;
        buildPayrollWorkbook(data, windows, services);
        return fake.calls;
    }

    TemporaryFolder folder;
    ScopedEnvironment temp{"TEMP", folder.path().string()};
    RecordedMessages messages;
};

bool isPart(const std::vector<std::string>& part, const std::vector<std::string>& whole)
{
    auto next = part.begin();
    for (const std::string& call : whole)
        if (next != part.end() && *next == call)
            ++next;
    return next == part.end();
}

long cellsPut(const std::vector<std::string>& calls)
{
    return std::ranges::count_if(calls, [](const std::string& call) { return call.find(".Cells(") != call.npos; });
}

/// Everything is put into the workbook of the first session.
bool givesTheWorkbook(const std::string& call)
{
    return call.starts_with("1.Workbooks");
}

TEST_F(BuildCasesTest, LoseNothingToOneFailingCallButWhatHangsOnIt)
{
    constexpr std::size_t triedCalls = 40; // of every case, spread over the build
    for (const BuildCase& each : buildCases()) {
        const std::vector<std::string> all = callsOf(each.data, 0);
        EXPECT_EQ(cellsPut(all), 21 * static_cast<long>(each.data.rows.size())) << each.name;
        EXPECT_EQ(messages.texts(), std::vector<std::string>()) << each.name;
        for (std::size_t call = 0; call < all.size(); call += 1 + all.size() / triedCalls) {
            if (all[call] == "new")
                continue; // the sessions behind it would have other numbers
            const std::vector<std::string> made = callsOf(each.data, static_cast<int>(call) + 1);
            EXPECT_FALSE(messages.shown.empty()) << each.name << ", failing " << all[call];
            messages.shown.clear();
            EXPECT_TRUE(isPart(made, all)) << each.name << ", failing " << all[call];
            if (!givesTheWorkbook(all[call])) {
                EXPECT_GE(cellsPut(made), cellsPut(all) - 1) << each.name << ", failing " << all[call];
            }
        }
    }
}

} // namespace
