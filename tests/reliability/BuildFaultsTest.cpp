#include "tests/reliability/FailingFiles.h"

#include "app/base/Files.h"
#include "resources/CustomResource.h"
#include "tests/support/RecordedMessages.h"
#include "tests/support/RecordedWindows.h"
#include "tests/support/TemporaryFolder.h"
#include "workbook/PayrollBuild.h"
#include "workbook/engine/xls/BiffReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

using namespace wagemill;
using namespace wagemill::test;
namespace fs = std::filesystem;

namespace {

constexpr uid_t anotherUser = 65534; // nobody

/// A build with the embedded engine in a folder that others may write to. Where the test runs as root it builds as
/// another user, for whom root's files are somebody else's; a name once given to a file there stays with its owner.
class BuildFaultsTest : public testing::Test {
protected:
    BuildFaultsTest()
    {
        services.spreadsheet = spreadsheetPlatform(services.formats);
        services.templateResource = [] { return customResource(payrollTemplateResource); };
        services.randomNumber = [](std::int32_t, std::int32_t) { return 1; };
        ::chmod(folder.path().c_str(), 0755);
        putVictim({});
    }
    ~BuildFaultsTest() override { becomeRootAgain(); }

    static bool isRoot() { return ::getuid() == 0; }
    static void becomeAnotherUser()
    {
        if (isRoot() && ::seteuid(anotherUser) != 0)
            throw std::runtime_error("root cannot become another user");
    }
    static void becomeRootAgain()
    {
        if (isRoot() && ::seteuid(0) != 0)
            std::abort();
    }

    /// An empty shared folder, and a file outside of it that everybody may read and write.
    void putVictim(const std::vector<std::byte>& bytes) const
    {
        fs::remove_all(shared);
        fs::create_directory(shared);
        ::chmod(shared.c_str(), S_ISVTX | 0777);
        writeWholeFile(bytes, victim, FileLife::Temporary);
        ::chmod(victim.c_str(), 0666);
    }

    std::unique_ptr<RecordedWindows> build()
    {
        messages.shown.clear();
        auto windows = std::make_unique<RecordedWindows>();
        PayrollData data = {{"ACME", "3/31/2026"}, {EmployeeRow{}}};
        std::ranges::transform(rowFields, data.rows[0].texts.begin(), &RowField::sample);
        buildPayrollWorkbook(data, *windows, services);
        return windows;
    }

    TemporaryFolder folder;
    fs::path shared = folder / "shared";
    fs::path victim = folder / "victim";
    ScopedEnvironment temp{"TEMP", shared.string()};
    RecordedMessages messages;
    BuildServices services;
};

bool isWholeWorkbook(const fs::path& workbook)
{
    return !engine::xls::readWorkbook(readOwnFile(workbook), workbook.string()).sheets.empty();
}

TEST_F(BuildFaultsTest, AWorkbookIsWholeOrNotThereAtWhateverCallTheDiskFails)
{
    const std::size_t picture = build()->picture.size();
    ASSERT_GT(picture, 0U);
    for (const auto fault : {FailingFiles::Fault::Full, FailingFiles::Fault::ReadOnly})
        for (const auto until : {FailingFiles::Until::Once, FailingFiles::Until::ItIsOver})
            for (int call = 1;; ++call) {
                for (const auto& entry : fs::directory_iterator(shared))
                    fs::remove_all(entry);
                bool failed = false;
                std::unique_ptr<RecordedWindows> result;
                {
                    const FailingFiles failing(shared, fault, call, until);
                    result = build();
                    failed = failing.hasFailed();
                }
                EXPECT_TRUE(!fileExists(result->workbook) || isWholeWorkbook(result->workbook)) << "call " << call;
                EXPECT_TRUE(fileExists(result->workbook) || !messages.shown.empty()) << "call " << call;
                EXPECT_TRUE(result->picture.size() == picture || !messages.shown.empty()) << "call " << call;
                if (!failed)
                    break;
            }
}

/// What may have a name of ours before a build.
struct Plant {
    const char* what;
    /// victim  somebody else's file, with bytes that a build would take; false when this user cannot
    std::function<bool(const fs::path& path, const fs::path& victim)> put;
    bool rootOnly = false;
};

bool copied(const fs::path& from, const fs::path& to, mode_t mode)
{
    return fs::copy_file(from, to) && ::chmod(to.c_str(), mode) == 0;
}

const Plant plants[] = {
    {"readable file of another user",
     [](const fs::path& path, const fs::path& victim) { return copied(victim, path, 0644); }, true},
    {"writable file of another user",
     [](const fs::path& path, const fs::path& victim) { return copied(victim, path, 0666); }, true},
    {"link", [](const fs::path& path, const fs::path& victim) { return ::symlink(victim.c_str(), path.c_str()) == 0; }},
    {"dangling link",
     [](const fs::path& path, const fs::path& victim) {
         return ::symlink((victim.string() + "-new").c_str(), path.c_str()) == 0;
     }},
    {"hard link",
     [](const fs::path& path, const fs::path& victim) { return ::link(victim.c_str(), path.c_str()) == 0; }},
    {"pipe", [](const fs::path& path, const fs::path&) { return ::mkfifo(path.c_str(), 0666) == 0; }},
    {"folder", [](const fs::path& path, const fs::path&) { return ::mkdir(path.c_str(), 0777) == 0; }},
    {"device",
     [](const fs::path& path, const fs::path&) {
         return ::mknod(path.c_str(), S_IFCHR | 0666, ::makedev(1, 5)) == 0; // zeros without an end
     },
     true},
};

std::string ownNameOf(int digit)
{
    return "kvarno" + std::string(8, static_cast<char>('0' + digit)) + ".xls";
}

TEST_F(BuildFaultsTest, APlantedObjectIsNeitherReadNorWrittenNorWaitedFor)
{
    std::vector<std::byte> picture = build()->picture;
    picture.back() ^= std::byte{1}; // not quite the one that is to be shown
    const auto resource = customResource(payrollTemplateResource);
    const std::vector<std::byte> workbook(resource.begin(), resource.end());
    for (const Plant& plant : plants)
        for (const std::string& name : {std::string("template.xlt"), ownNameOf(1), std::string("temp.bmp")}) {
            const std::string where = std::string(plant.what) + " as " + name;
            becomeRootAgain();
            const auto& bytes = name == "temp.bmp" ? picture : workbook;
            putVictim(bytes);
            if ((plant.rootOnly && !isRoot()) || !plant.put(shared / name, victim)) {
                std::cout << "Skipped: this user cannot make a " << where << '\n';
                continue;
            }
            int drawn = 0;
            services.randomNumber = [&drawn](std::int32_t, std::int32_t) { return drawn++ < 8 ? 1 : 2; };
            const auto begin = std::chrono::steady_clock::now();
            becomeAnotherUser();
            const auto result = build();
            const bool isSaved =
                fileExists(result->workbook) && isWholeWorkbook(result->workbook); // and the user's own
            becomeRootAgain();
            EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5)) << where;
            EXPECT_EQ(readBytesFromFile(victim), bytes) << where;
            EXPECT_FALSE(fileExists(victim.string() + "-new")) << where;
            EXPECT_NE(result->picture, picture) << where;
            EXPECT_TRUE(isSaved || !messages.shown.empty()) << where;
            if (name == "template.xlt" || (name == "temp.bmp" && isRoot())) {
                ASSERT_FALSE(messages.shown.empty()) << where;
                EXPECT_NE(messages.shown[0].text.find((shared / name).string()), std::string::npos)
                    << where << ": " << messages.shown[0].text;
            }
        }
}

} // namespace
