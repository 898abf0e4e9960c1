#include "tests/reliability/FailingFiles.h"

#include "app/base/Files.h"
#include "resources/CustomResource.h"
#include "tests/support/RecordedMessages.h"
#include "tests/support/RecordedWindows.h"
#include "tests/support/TemporaryFolder.h"
#include "workbook/PayrollBuild.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <sys/stat.h>
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
    ~BuildFaultsTest() override { become(0); }

    static void become(uid_t user)
    {
        if (::getuid() == 0 && ::seteuid(user) != 0)
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

    void build()
    {
        messages.shown.clear();
        windows.emplace();
        PayrollData data = {{"ACME", "3/31/2026"}, {EmployeeRow{}}};
        std::ranges::transform(rowFields, data.rows[0].texts.begin(), &RowField::sample);
        buildPayrollWorkbook(data, *windows, services);
    }

    TemporaryFolder folder;
    fs::path shared = folder / "shared";
    fs::path victim = folder / "victim";
    ScopedEnvironment temp{"TEMP", shared.string()};
    RecordedMessages messages;
    std::optional<RecordedWindows> windows; ///< of the last build
    BuildServices services;
};

bool isWholeWorkbook(const fs::path& workbook)
{
    return !engine::xls::readWorkbook(readOwnFile(workbook), workbook.string()).sheets.empty();
}

TEST_F(BuildFaultsTest, AWorkbookIsWholeOrNotThereAtWhateverCallTheDiskFails)
{
    build();
    const std::size_t picture = windows->picture.size();
    ASSERT_GT(picture, 0U);
    failAtEveryCall(
        shared, [&] { putVictim({}); }, [&] { build(); },
        [&](Fault) {
            EXPECT_TRUE(!fileExists(windows->workbook) || isWholeWorkbook(windows->workbook));
            EXPECT_TRUE(!messages.shown.empty() ||
                        (fileExists(windows->workbook) && windows->picture.size() == picture));
        });
}

/// Puts what is not ours under a name of ours; false when this user cannot.
/// victim  somebody else's file, with bytes that a build would take
bool plant(const std::string& kind, const fs::path& path, const fs::path& victim)
{
    if (kind == "link")
        return ::symlink(victim.c_str(), path.c_str()) == 0;
    if (kind == "hard link")
        return ::link(victim.c_str(), path.c_str()) == 0;
    if (kind == "pipe")
        return ::mkfifo(path.c_str(), 0666) == 0;
    if (kind == "folder")
        return ::mkdir(path.c_str(), 0777) == 0;
    return ::getuid() == 0 && fs::copy_file(victim, path) && ::chmod(path.c_str(), 0666) == 0;
}

TEST_F(BuildFaultsTest, APlantedObjectIsNeitherReadNorWrittenNorWaitedFor)
{
    build();
    std::vector<std::byte> picture = windows->picture;
    picture.back() ^= std::byte{1}; // not quite the one that is to be shown
    const auto resource = customResource(payrollTemplateResource);
    const std::vector<std::byte> workbook(resource.begin(), resource.end());
    for (const std::string kind : {"link", "hard link", "pipe", "folder", "file of another user"})
        for (const std::string name : {"template.xlt", "kvarno11111111.xls", "temp.bmp"}) {
            SCOPED_TRACE(kind + " as " + name);
            const auto& bytes = name == "temp.bmp" ? picture : workbook;
            putVictim(bytes);
            if (!plant(kind, shared / name, victim)) {
                std::cout << "Skipped: this user cannot make a " << kind << '\n';
                continue;
            }
            services.randomNumber = [drawn = 0](std::int32_t, std::int32_t) mutable { return drawn++ < 8 ? 1 : 2; };
            const auto begin = std::chrono::steady_clock::now();
            become(anotherUser);
            build();
            const bool isSaved =
                fileExists(windows->workbook) && isWholeWorkbook(windows->workbook); // and the user's own
            become(0);
            EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
            EXPECT_EQ(readBytesFromFile(victim), bytes);
            EXPECT_NE(windows->picture, picture);
            EXPECT_TRUE(isSaved || !messages.shown.empty());
            if (name == "template.xlt" || (name == "temp.bmp" && ::getuid() == 0)) {
                ASSERT_FALSE(messages.shown.empty());
                EXPECT_NE(messages.shown[0].text.find((shared / name).string()), std::string::npos)
                    << messages.shown[0].text;
            }
        }
}

} // namespace
