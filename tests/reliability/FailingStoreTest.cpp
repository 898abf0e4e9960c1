#include "tests/reliability/FailingFiles.h"

#include "app/base/Files.h"
#include "entry/Form1.h"
#include "settings/Settings.h"
#include "tests/support/RecordedMessages.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/workbook/FakeSpreadsheet.h"

#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

#include <climits>

using namespace wagemill;
using namespace wagemill::test;
namespace fs = std::filesystem;

namespace {

std::string stored(const std::string& key)
{
    return GetSetting("Quellory", "Wagemill", key, "");
}

/// The entry window over a store of its own, typed into while the disk fails.
class FailingStoreTest : public testing::Test {
protected:
    FailingStoreTest()
    {
        setUserStore(nullptr);
        open();
        form->findChild<QLineEdit*>("txtCompanyName")->setText("ACME");
        EXPECT_EQ(messages.texts(), std::vector<std::string>());
    }
    ~FailingStoreTest() override
    {
        form.reset();
        setUserStore(nullptr);
    }

    void open()
    {
        BuildServices services;
        services.spreadsheet = spreadsheet.platform();
        form = std::make_unique<Form1>(Form1Setup{services, [] { return CalendarDate{2026, 4, 10}; }, 1});
        form->show();
        form->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(form.get()));
        name = form->findChild<QLineEdit*>("txtName(0)");
    }

    /// Types one letter into the name; how many reports there were.
    std::size_t reportsOfAKey()
    {
        messages.shown.clear();
        name->setFocus();
        name->end(false);
        QTest::keyClick(name, 'x');
        return messages.shown.size();
    }

    TemporaryFolder home;
    ScopedEnvironment configuration{"XDG_CONFIG_HOME", (home / "config").string()};
    RecordedMessages messages;
    FakeSpreadsheet spreadsheet;
    std::unique_ptr<Form1> form;
    QLineEdit* name = nullptr;
};

TEST_F(FailingStoreTest, KeepsOldValuesWholeAndReportsOnceAtWhateverCallTheDiskFails)
{
    for (const bool reopened : {false, true}) {
        std::string before;
        std::size_t reports = 0;
        failAtEveryCall(
            home / "config",
            [&] {
                before = stored("txtName0");
                if (reopened)
                    setUserStore(nullptr); // opened again by the key that meets the fault
            },
            [&] { reports = reportsOfAKey(); },
            [&](Fault) {
                const std::string typed = name->text().toStdString();
                EXPECT_LE(reports, 1U);
                const std::string kept = stored("txtName0");
                // What is reported may have reached the disk all the same, when only the last sync failed.
                EXPECT_TRUE(kept == typed || (reports == 1 && kept == before)) << kept;
                setUserStore(nullptr); // a new program finds the same
                EXPECT_EQ(stored("txtName0"), kept);
                EXPECT_EQ(stored("txtCompanyName"), "ACME");
                EXPECT_EQ(reportsOfAKey(), 0U) << "typing does not go on";
                EXPECT_EQ(stored("txtName0"), name->text().toStdString());
            });
    }
}

TEST_F(FailingStoreTest, IsMadeAgainWhenItsFolderVanishesWhileTyping)
{
    EXPECT_EQ(reportsOfAKey(), 0U);
    fs::remove_all(home / "config" / "wagemill");
    EXPECT_EQ(reportsOfAKey(), 0U);
    EXPECT_EQ(stored("txtName0"), "xx");
}

TEST_F(FailingStoreTest, OpensWithItsValuesAndWithoutADialogWhenItIsReadOnly)
{
    EXPECT_EQ(reportsOfAKey(), 0U);
    form.reset();
    setUserStore(nullptr);
    failCalls(home.path(), Fault::ReadOnly, 1, INT_MAX, [this] { open(); });
    EXPECT_EQ(messages.texts(), std::vector<std::string>());
    EXPECT_EQ(name->text(), "x");
}

} // namespace
