// The disk is full or read-only at the k-th call that would change something, under the store, a saved copy and a
// build; and other users put something under our names.

#include "app/base/Files.h"
#include "preview/Form2.h"
#include "resources/PayrollTemplate.h"
#include "settings/Settings.h"
#include "tests/reliability/FailingFiles.h"
#include "tests/support/EmbeddedBuilds.h"
#include "tests/support/FailureOf.h"
#include "tests/support/RecordedMessages.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/workbook/BuildCases.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <QAbstractButton>

#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <sys/stat.h>
#include <unistd.h>

using namespace wagemill;
using namespace wagemill::test;
namespace fs = std::filesystem;

namespace {

class StoreFaults : public testing::Test {
protected:
    StoreFaults()
    {
        setUserStore(nullptr);
        EXPECT_EQ(save("company", "ACME"), "no failure");
    }
    ~StoreFaults() override { setUserStore(nullptr); }

    static std::string save(const char* key, const std::string& value)
    {
        return failureOf([&] { SaveSetting("Quellory", "Wagemill", key, value); });
    }
    static std::string stored(const char* key) { return GetSetting("Quellory", "Wagemill", key, ""); }

    TemporaryFolder folder;
    ScopedEnvironment configuration{"XDG_CONFIG_HOME", folder.path().string()};
};

TEST_F(StoreFaults, LeaveOldValuesWholeAndTheNextOnesCanBeStored)
{
    for (const bool isReopened : {false, true}) {
        std::string before;
        std::string typed;
        std::string failure;
        failAtEveryCall(
            folder.path(),
            [&] {
                before = stored("name");
                typed = before + "x";
                if (isReopened)
                    setUserStore(nullptr); // opened again by the key that meets the fault
            },
            [&] { failure = save("name", typed); },
            [&](Fault) {
                const std::string kept = stored("name");
                // What is reported may have reached the disk all the same, when only the last sync failed.
                EXPECT_TRUE(kept == typed || (kept == before && failure != "no failure")) << kept;
                setUserStore(nullptr); // a new program finds the same
                EXPECT_EQ(stored("name"), kept);
                EXPECT_EQ(stored("company"), "ACME");
                EXPECT_EQ(save("name", typed + "y"), "no failure");
                EXPECT_EQ(stored("name"), typed + "y");
            });
    }
}

TEST_F(StoreFaults, OfAReadOnlyDiskDoNotStopAStart)
{
    setUserStore(nullptr);
    failCalls(folder.path(), Fault::ReadOnly, 1, INT_MAX, [] {
        EXPECT_EQ(stored("company"), "ACME");
        EXPECT_EQ(save("company", "ACME"), "no failure"); // a start stores what it has read
    });
}

class SavingFaults : public testing::Test {
protected:
    SavingFaults() { writeBytesToFile(saved, workbook); }

    /// Presses "Save Results To Excel File" and names `target`: the texts of the message boxes.
    std::vector<std::string> save(const fs::path& target)
    {
        messages.shown.clear();
        Form2 preview([] {}, {}, [&](auto&&...) { return target; });
        preview.setExcelFile(workbook);
        preview.findChild<QAbstractButton*>("PushButton6")->click();
        return messages.texts();
    }

    TemporaryFolder folder;
    RecordedMessages messages;
    fs::path workbook = folder / "kvarno12345678.xls";
    fs::path documents = folder / "documents";
    std::vector<std::byte> saved = std::vector<std::byte>(200'000, std::byte{7});
};

TEST_F(SavingFaults, AreReportedBeforeDone)
{
    fs::create_directories(documents / "folder.xls");
    const std::pair<fs::path, const char*> cases[] = {
        {documents / "vanished" / "payroll.xls", "No such file or directory"},
        {documents / "folder.xls", "directory"},
        {documents / "folder.xls" / ".." / ".." / workbook.filename(), "the temporary workbook itself"},
        {documents / (std::string(300, 'x') + ".xls"), "name too long"},
    };
    for (const auto& [target, reason] : cases) {
        const auto texts = save(target);
        ASSERT_GE(texts.size(), 2U) << target;
        EXPECT_EQ(texts.back(), "Done.");
        const std::string& failure = texts[texts.size() - 2];
        EXPECT_NE(failure.find(reason), std::string::npos) << failure;
        EXPECT_NE(failure.find("Form2.PushButton6_Click at line 47"), std::string::npos) << failure;
        EXPECT_TRUE(fs::is_empty(documents / "folder.xls"));
        EXPECT_EQ(readOwnFile(workbook), saved) << target;
    }
}

TEST_F(SavingFaults, ALinkToTheTemporaryWorkbookBecomesACopyOfItsOwn)
{
    fs::create_symlink(workbook, folder / "symbolic.xls");
    EXPECT_EQ(save(folder / "symbolic.xls").size(), 2U); // the question whether to overwrite it, and "Done."
    fs::create_hard_link(workbook, folder / "hard.xls");
    EXPECT_EQ(save(folder / "hard.xls").size(), 2U);
    fs::remove(workbook);
    for (const char* name : {"symbolic.xls", "hard.xls"})
        EXPECT_EQ(readOwnFile(folder / name), saved);
}

TEST_F(SavingFaults, LeaveTheChosenNameWholeOrUnused)
{
    std::vector<std::string> texts;
    failAtEveryCall(
        documents,
        [&] {
            fs::remove_all(documents);
            fs::create_directory(documents);
        },
        [&] { texts = save(documents / "payroll.xls"); },
        [&](Fault fault) {
            const bool isReported = texts.size() == 2;
            EXPECT_EQ(texts.back(), "Done.");
            EXPECT_EQ(fileExists(documents / "payroll.xls"), !isReported);
            EXPECT_TRUE(isReported || readOwnFile(documents / "payroll.xls") == saved);
            EXPECT_TRUE(!isReported || fault == Fault::ReadOnly || fs::is_empty(documents));
        });
}

/// A build in a folder that others may write to. Where the test runs as root it builds as another user, for whom root's
/// files are somebody else's; a name once given to a file there stays with its owner.
class BuildFaults : public testing::Test {
protected:
    BuildFaults()
    {
        ::chmod(folder.path().c_str(), 0755);
        empty({});
    }
    ~BuildFaults() override { become(0); }

    static void become(uid_t user)
    {
        if (::getuid() == 0 && ::seteuid(user) != 0)
            std::abort();
    }

    /// Empties the shared folder. victimBytes  of a file outside of it that everybody may read and write
    void empty(const std::vector<std::byte>& victimBytes) const
    {
        fs::remove_all(shared);
        fs::create_directory(shared);
        ::chmod(shared.c_str(), S_ISVTX | 0777);
        writeWholeFile(victimBytes, victim, FileLife::Temporary);
        ::chmod(victim.c_str(), 0666);
    }

    /// Whether there is a workbook, which must be whole.
    bool build()
    {
        messages.shown.clear();
        builds.services.randomNumber = [drawn = 0](auto...) mutable { return drawn++ < 8 ? 1 : 2; };
        built = builds.build(buildCases().front().data);
        return fileExists(built.workbook) &&
               !engine::xls::readWorkbook(readOwnFile(built.workbook), "built.xls").sheets.empty();
    }

    TemporaryFolder folder;
    fs::path shared = folder / "shared";
    fs::path victim = folder / "victim";
    ScopedEnvironment temp{"TEMP", shared.string()};
    RecordedMessages messages;
    EmbeddedBuilds builds;
    EmbeddedBuilds::Built built; ///< by the last build
};

TEST_F(BuildFaults, LeaveAWholeWorkbookOrNoneAndAMessage)
{
    ASSERT_TRUE(build());
    const std::size_t size = built.picture.size();
    bool isSaved = false;
    failAtEveryCall(
        shared, [&] { empty({}); }, [&] { isSaved = build(); },
        [&](Fault) { EXPECT_TRUE(!messages.shown.empty() || (isSaved && built.picture.size() == size)); });
}

TEST_F(BuildFaults, OfAPlantedObjectMakeNobodyReadOrWriteOrWaitForIt)
{
    constexpr uid_t anotherUser = 65534; // nobody
    ASSERT_TRUE(build());
    std::vector<std::byte> plantedPicture = built.picture;
    plantedPicture.back() ^= std::byte{1}; // not quite the one that is to be shown
    const auto resource = payrollTemplateFile();
    const std::vector<std::byte> workbook(resource.begin(), resource.end());
    // What is not ours, under a name of ours; false when this user cannot make it.
    const std::pair<const char*, std::function<bool(const char*)>> kinds[] = {
        {"link", [&](const char* path) { return ::symlink(victim.c_str(), path) == 0; }},
        {"hard link", [&](const char* path) { return ::link(victim.c_str(), path) == 0; }},
        {"pipe", [](const char* path) { return ::mkfifo(path, 0666) == 0; }},
        {"folder", [](const char* path) { return ::mkdir(path, 0777) == 0; }},
        {"file of another user",
         [&](const char* path) { return ::getuid() == 0 && fs::copy_file(victim, path) && ::chmod(path, 0666) == 0; }},
    };
    for (const auto& [kind, plant] : kinds)
        for (const std::string name : {"template.xlt", "kvarno11111111.xls", "temp.bmp"}) {
            SCOPED_TRACE(kind + (" as " + name));
            const auto& bytes = name == "temp.bmp" ? plantedPicture : workbook;
            empty(bytes);
            if (!plant((shared / name).c_str())) {
                std::cout << "Skipped: this user cannot make a " << kind << '\n';
                continue;
            }
            const auto begin = std::chrono::steady_clock::now();
            become(anotherUser);
            const bool isSaved = build();
            become(0);
            EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
            EXPECT_EQ(readBytesFromFile(victim), bytes);
            EXPECT_NE(built.picture, plantedPicture);
            EXPECT_TRUE(isSaved || !messages.shown.empty());
            if (name == "template.xlt" || (name == "temp.bmp" && ::getuid() == 0)) {
                EXPECT_NE(messages.texts().at(0).find((shared / name).string()), std::string::npos);
            }
        }
}

} // namespace
