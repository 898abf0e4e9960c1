#pragma once

#include "tests/support/RecordedMessages.h"
#include "tests/support/RecordedWindows.h"
#include "workbook/PayrollBuild.h"
#include "workbook/embedded/EmbeddedApplication.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace wagemill::test {

/// Whether the condition comes true within the time; it is asked again and again.
bool isSoon(const std::function<bool()>& condition, std::chrono::milliseconds time);
/// How many processes of the test's Excel there are.
int excelProcesses();
/// Waits until they are all gone, at most ten seconds. Gives how many are left.
int excelProcessesLeft();

/// A test with an Excel that has instructions what to do wrong, and a temporary folder of its own. None may be left at
/// its end. One that does not end by itself fails after some minutes instead: its Excels are ended, and should that not
/// help, the tests.
class ExcelTest : public testing::Test {
protected:
    ExcelTest();
    ~ExcelTest() override;
    void TearDown() override { EXPECT_EQ(excelProcessesLeft(), 0); }

    /// What a build through Excel left.
    std::unique_ptr<RecordedWindows> build(const PayrollData& data);
    /// The same through the engine in this process.
    std::unique_ptr<RecordedWindows> buildDirectly(const PayrollData& data);
    /// A session with an Excel that has the instructions of its number.
    std::unique_ptr<Application> createSession();
    /// The next session is the first one again; the log and the clipboard are emptied.
    void startAgain(std::vector<std::string> sessions = {});
    /// What reached the Excels, in the form of CallLog.h; of the lines that begin with `kind` what follows it.
    std::vector<std::string> logged(const std::string& kind) const;

    /// The regional format of the user who types, and of the engine.
    std::uint32_t locale = 0x0409;
    std::vector<std::string> instructions; ///< of the first session, the second and so on; see Instructions.h
    RecordedMessages messages;

private:
    const std::filesystem::path m_privateFolder;

protected:
    const std::filesystem::path folder; ///< the temporary folder, with letters beyond ASCII in its name

private:
    std::filesystem::path logFile() const { return folder / "calls.log"; }
    std::unique_ptr<RecordedWindows> buildWith(SpreadsheetPlatform spreadsheet, const PayrollData& data) const;

    std::size_t m_sessions = 0;
    EmbeddedPictureClipboard m_engineClipboard;
    std::jthread m_watch;
};

} // namespace wagemill::test
