#include "tests/support/RecordedWindows.h"
#include "tests/support/RecordedMessages.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/workbook/FakeSpreadsheet.h"

#include "app/base/Files.h"
#include "workbook/PayrollBuild.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

using namespace wagemill;
using namespace wagemill::test;

namespace {

/// How the spreadsheet application fails at its call number `call`, from 1.
struct Fault {
    enum class Kind { Once, FromThenOn, ApplicationDead } kind;
    int call;
};

/// What a user is told, worked out from what each step needs and gives rather than from the program: a dialog names a
/// procedure and a step.
class ExpectedDialogs {
public:
    ExpectedDialogs(Fault fault, int rows) : m_fault(fault) { build(rows); }

    const std::vector<std::string>& dialogs() const { return m_dialogs; }
    int sessions() const { return m_sessions; }
    int calls() const { return m_calls; }

private:
    /// Makes a call to the session that is open; whether it succeeds.
    bool call()
    {
        ++m_calls;
        switch (m_fault.kind) {
        case Fault::Kind::Once:
            return m_calls != m_fault.call;
        case Fault::Kind::FromThenOn:
            return m_calls < m_fault.call;
        case Fault::Kind::ApplicationDead:
            if (m_calls == m_fault.call)
                m_deadSession = m_session;
            return m_calls != m_fault.call && m_deadSession != m_session;
        }
        return false;
    }

    bool makeSession()
    {
        m_session = m_sessions + 1; // one that cannot be made is never dead: the next may be
        const bool isMade = call();
        m_sessions += isMade ? 1 : 0;
        return isMade;
    }

    bool calls(int count)
    {
        for (int number = 0; number < count; ++number)
            if (!call())
                return false;
        return true;
    }

    /// One step: it needs what earlier steps gave, makes so many calls, and gives something itself when all succeed.
    void step(int number, const std::string& needs, int count, const std::string& gives = "")
    {
        finish(number, (needs.empty() || m_have.contains(needs)) && calls(count), gives);
    }

    void finish(int number, bool succeeded, const std::string& gives = "")
    {
        if (succeeded && !gives.empty())
            m_have.insert(gives);
        if (!succeeded)
            m_dialogs.push_back(m_procedure + " at line " + std::to_string(number));
    }

    void build(int rows)
    {
        finish(30, makeSession(), "session");
        const int filling = m_session;
        step(60, "session", 2, "workbook");
        for (int row = 0; row < rows; ++row)
            fill();
        step(400, "session", 2);
        step(410, "session", 1);
        save(filling);
        step(440, "session", 1);
        step(450, "workbook", 1);
        step(460, "session", 1);
        preview();
    }

    void fill()
    {
        for (std::size_t field = 0; field < rowFields.size(); ++field)
            if (rowFields[field].columns.sheet1 != 0)
                step(100 + static_cast<int>(field), "workbook", 2);
        for (std::size_t field = 0; field < rowFields.size(); ++field)
            if (rowFields[field].columns.sheet2 != 0)
                step(200 + static_cast<int>(field), "workbook", 2);
        step(220, "workbook", 2);
        step(310, "workbook", 2);
        step(320, "workbook", 3);
        step(330, "session", 2);
        step(340, "workbook", 3);
        step(350, "session", 2);
        step(360, "workbook", 2);
        step(370, "workbook", 2);
        step(380, "workbook", 3);
    }

    /// Without a session one is made to ask for the version, and quit again.
    void save(int filling)
    {
        bool knowsVersion = false;
        if (m_have.contains("session")) {
            knowsVersion = call();
        } else if (makeSession()) {
            knowsVersion = call();
            const bool hasQuit = call();
            knowsVersion = knowsVersion && hasQuit;
        }
        m_session = filling;
        finish(430, knowsVersion && m_have.contains("workbook") && call());
    }

    void preview()
    {
        bool isOpen = makeSession();
        if (isOpen && !calls(2)) {
            call(); // nobody else could tell this session to quit
            isOpen = false;
        }
        finish(500, isOpen, "preview session");
        step(520, "preview session", 3, "preview workbook");
        m_procedure = "Excel1.saveCellsActivesheet";
        snapshot();
        m_procedure = "Form1.PushButton22_Click";
        step(540, "preview session", 1);
        step(550, "preview workbook", 1);
        step(560, "preview session", 1);
        step(600, "picture file", 0);
    }

    void snapshot()
    {
        step(10, "preview workbook", 1, "sheet");
        step(20, "sheet", 6, "last row");
        step(30, "sheet", 6);
        if (!m_have.contains("last row"))
            return;
        step(40, "sheet", 1);
        step(50, "sheet", 2);
        m_have.insert("picture file"); // the stand-in's clipboard always holds a picture
    }

    Fault m_fault;
    std::set<std::string> m_have;
    std::vector<std::string> m_dialogs;
    std::string m_procedure = "Form1.PushButton22_Click";
    int m_calls = 0;
    int m_sessions = 0;
    int m_session = 0;
    int m_deadSession = -1;
};

struct CountingWindows : RecordedWindows {
    int frozen = 0;
    bool isBusy = false;
    bool isShown = false;
    void freezeDrawing() override { ++frozen; }
    void unfreezeDrawing() override { --frozen; }
    void showHourglass() override { isBusy = true; }
    void showArrow() override { isBusy = false; }
    void showPicture(const std::filesystem::path& picture) override
    {
        if (!fileExists(picture))
            throw std::runtime_error("no picture");
    }
    void showPreview() override { isShown = true; }
};

class FailingSessionTest : public testing::Test {
protected:
    FailingSessionTest()
    {
        services.templateResource = [this]() -> std::span<const std::byte> { return templateBytes; };
        services.randomNumber = [](std::int32_t, std::int32_t) { return 7; };
    }

    /// "Form1.PushButton22_Click at line 60" of each error dialog.
    std::vector<std::string> dialogs() const
    {
        std::vector<std::string> found;
        for (const std::string& text : messages.texts()) {
            const std::string tag = "in Wagemill2021/08/31.";
            const std::size_t start = text.find(tag) + tag.size();
            found.push_back(text.substr(start, text.find("\r\r", start) - start));
        }
        return found;
    }

    /// Builds once while the application fails; `false` when the build makes fewer calls than that.
    bool check(Fault fault, int rows)
    {
        FakeSpreadsheet spreadsheet;
        services.spreadsheet = spreadsheet.platform();
        int dead = -1;
        spreadsheet.fails = [&](int call) {
            const std::string& made = spreadsheet.calls.back();
            const int session = made == "new" ? spreadsheet.sessions + 1 : std::stoi(made);
            if (call == fault.call)
                dead = session;
            return call == fault.call || (fault.kind == Fault::Kind::FromThenOn && call > fault.call) ||
                   (fault.kind == Fault::Kind::ApplicationDead && session == dead);
        };
        messages.shown.clear();
        CountingWindows windows;
        buildPayrollWorkbook({{"ACME", "3/31/2026"}, std::vector<EmployeeRow>(static_cast<std::size_t>(rows))}, windows,
                             services);
        const ExpectedDialogs expected(fault, rows);
        const std::string when = "fault " + std::to_string(static_cast<int>(fault.kind)) + " at call " +
                                 std::to_string(fault.call) + ", " + std::to_string(rows) + " rows";
        EXPECT_EQ(dialogs(), expected.dialogs()) << when;
        EXPECT_EQ(static_cast<int>(spreadsheet.calls.size()), expected.calls()) << when;
        EXPECT_EQ(spreadsheet.sessions, expected.sessions()) << when;
        for (int session = 1; session <= spreadsheet.sessions; ++session)
            EXPECT_EQ(std::ranges::count(spreadsheet.calls, std::to_string(session) + ".Quit"), 1) << when;
        EXPECT_EQ(windows.frozen, 0) << when;
        EXPECT_FALSE(windows.isBusy) << when;
        EXPECT_TRUE(windows.isShown) << when;
        return fault.call <= static_cast<int>(spreadsheet.calls.size());
    }

    TemporaryFolder folder;
    ScopedEnvironment temp{"TEMP", folder.path().string()};
    RecordedMessages messages;
    BuildServices services;
    std::vector<std::byte> templateBytes = std::vector<std::byte>(3);
};

TEST_F(FailingSessionTest, ShowsExactlyTheDialogsOfTheFailingStepsAndQuitsEverySession)
{
    for (const int rows : {1, 3})
        for (const auto kind : {Fault::Kind::Once, Fault::Kind::FromThenOn, Fault::Kind::ApplicationDead}) {
            int call = 1;
            while (check({kind, call}, rows) && !HasFailure())
                ++call;
            RecordProperty("calls_of_" + std::to_string(rows) + "_rows", call - 1);
            EXPECT_GT(call, 90); // a build makes more calls than that
        }
}

} // namespace
