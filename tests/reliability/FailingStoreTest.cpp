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

#include <sys/stat.h>

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
        company->setText("ACME");
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
        company = form->findChild<QLineEdit*>("txtCompanyName");
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
    fs::path file = home / "config" / "wagemill" / "settings.sqlite";
    RecordedMessages messages;
    FakeSpreadsheet spreadsheet;
    std::unique_ptr<Form1> form;
    QLineEdit* name = nullptr;
    QLineEdit* company = nullptr;
};

/// reopened  whether the store is opened again by the key that meets the fault
void expectAllOrNothing(FailingFiles::Fault fault, FailingFiles::Until until, bool reopened,
                        const std::function<std::size_t()>& reportsOfAKey, QLineEdit& name)
{
    for (int call = 1;; ++call) {
        const std::string before = stored("txtName0");
        if (reopened)
            setUserStore(nullptr);
        bool failed = false;
        std::size_t reports = 0;
        {
            FailingFiles failing(fs::path(std::getenv("XDG_CONFIG_HOME")), fault, call, until);
            reports = reportsOfAKey();
            failed = failing.hasFailed();
        }
        const std::string typed = name.text().toStdString();
        const std::string when = "call " + std::to_string(call);
        EXPECT_LE(reports, 1U) << when;
        const std::string kept = stored("txtName0");
        // What is reported may have reached the disk all the same, when only the last sync failed.
        EXPECT_TRUE(kept == typed || (reports == 1 && kept == before)) << when << ": " << kept;
        setUserStore(nullptr); // a new program finds the same
        EXPECT_EQ(stored("txtName0"), kept) << when;
        EXPECT_EQ(stored("txtCompanyName"), "ACME") << when;
        EXPECT_EQ(reportsOfAKey(), 0U) << when << ": typing does not go on";
        EXPECT_EQ(stored("txtName0"), name.text().toStdString()) << when;
        if (!failed)
            return;
    }
}

TEST_F(FailingStoreTest, KeepsOldValuesWholeAndReportsOnceAtWhateverCallTheDiskFails)
{
    for (const auto fault : {FailingFiles::Fault::Full, FailingFiles::Fault::ReadOnly})
        for (const auto until : {FailingFiles::Until::Once, FailingFiles::Until::ItIsOver})
            for (const bool reopened : {false, true})
                expectAllOrNothing(
                    fault, until, reopened, [this] { return reportsOfAKey(); }, *name);
}

TEST_F(FailingStoreTest, ReportsEveryChangeOfAFullDiskAndIsWellWhenItHasRoomAgain)
{
    {
        FailingFiles failing(home.path(), FailingFiles::Fault::Full, 1, FailingFiles::Until::ItIsOver);
        for (int key = 0; key < 5; ++key)
            EXPECT_EQ(reportsOfAKey(), 1U);
        EXPECT_EQ(stored("txtName0"), "");
    }
    EXPECT_EQ(name->text(), "xxxxx");
    EXPECT_EQ(reportsOfAKey(), 0U);
    EXPECT_EQ(stored("txtName0"), "xxxxxx");
}

TEST_F(FailingStoreTest, IsMadeAgainWhenItsFolderVanishesWhileTyping)
{
    EXPECT_EQ(reportsOfAKey(), 0U);
    fs::remove_all(file.parent_path());
    EXPECT_EQ(reportsOfAKey(), 0U);
    EXPECT_EQ(stored("txtName0"), "xx");
}

TEST_F(FailingStoreTest, OpensWithItsValuesAndWithoutADialogWhenItIsReadOnly)
{
    EXPECT_EQ(reportsOfAKey(), 0U);
    form.reset();
    setUserStore(nullptr);
    FailingFiles failing(home.path(), FailingFiles::Fault::ReadOnly, 1, FailingFiles::Until::ItIsOver);
    open();
    EXPECT_EQ(messages.texts(), std::vector<std::string>());
    EXPECT_EQ(name->text(), "x");
}

} // namespace
