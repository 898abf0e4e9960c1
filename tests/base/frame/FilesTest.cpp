#include "app/base/Files.h"
#include "app/base/ErrorTrap.h"
#include "app/base/PlatformFiles.h"
#include "app/base/RandomNumber.h"
#include "tests/support/FailureOf.h"
#include "tests/support/RecordedMessages.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <set>
#include <sys/stat.h>

using namespace wagemill;
using namespace wagemill::test;
namespace fs = std::filesystem;

namespace {

constexpr std::array fourBytes = {std::byte{1}, std::byte{2}, std::byte{3}, std::byte{4}};

struct Files : testing::Test {
    TemporaryFolder folder;
};

int permissionsOf(const fs::path& path)
{
    return static_cast<int>(fs::status(path).permissions());
}

TEST_F(Files, ExistIncludesFoldersButNotDanglingLinks)
{
    fs::create_symlink(folder / "nothing", folder / "dangling");
    EXPECT_TRUE(fileExists(folder.path()));
    EXPECT_FALSE(fileExists(folder / "nothing"));
    EXPECT_FALSE(fileExists(folder / "dangling"));
    EXPECT_FALSE(fileExists(""));
}

TEST_F(Files, AreDeletedQuietlyEvenWhenReadOnlyAndALinkLosesOnlyItself)
{
    int pumped = 0;
    setWindowEventPump([&] { ++pumped; });
    writeBytesToFile(fourBytes, folder / "target");
    writeBytesToFile(fourBytes, folder / "read-only");
    fs::permissions(folder / "read-only", fs::perms::owner_read);
    fs::create_symlink(folder / "target", folder / "link");
    fs::create_directory(folder / "folder");
    for (const char* name : {"read-only", "link", "missing", "folder"})
        deleteFileQuietly(folder / name);
    setWindowEventPump(nullptr);
    EXPECT_EQ(pumped, 4);
    std::set<fs::path> left;
    for (const auto& entry : fs::directory_iterator(folder.path()))
        left.insert(entry.path().filename());
    EXPECT_EQ(left, (std::set<fs::path>{"folder", "target"}));
}

TEST_F(Files, AreWrittenFromTheFirstByteOnAndForTheirOwnerAlone)
{
    writeBytesToFile(std::vector<std::byte>(6, std::byte{9}), folder / "file");
    writeBytesToFile(fourBytes, folder / "file");
    const auto bytes = readBytesFromFile(folder / "file");
    ASSERT_EQ(bytes.size(), 6U); // the tail of the longer file stays
    EXPECT_TRUE(std::equal(fourBytes.begin(), fourBytes.end(), bytes.begin()));
    EXPECT_EQ(permissionsOf(folder / "file"), 0600);
}

TEST_F(Files, TouchNothingButAPlainFileOfTheUsersOwn)
{
    fs::create_symlink(folder / "elsewhere", folder / "link");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    writeBytesToFile(fourBytes, folder / "file");
    fs::create_hard_link(folder / "file", folder / "hard link");
    const std::pair<const char*, const char*> cases[] = {
        {"link", "it is a link"}, {"pipe", "it is not a plain file"}, {"hard link", "it is hard-linked"}};
    for (const auto& [name, reason] : cases) {
        const std::string expected = "Cannot open \"" + (folder / name).string() + "\": " + reason +
                                     ". Please remove it, or let TEMP name another folder.";
        EXPECT_EQ(failureOf([&] { writeBytesToFile(fourBytes, folder / name); }), expected);
        EXPECT_EQ(failureOf([&] { readOwnFile(folder / name); }), expected);
    }
    EXPECT_FALSE(fileExists(folder / "elsewhere"));
    for (const fs::path& path : {folder / "pipe", folder.path()})
        EXPECT_EQ(failureOf([&] { readBytesFromFile(path); }),
                  "Cannot read the file \"" + path.string() + "\": it is not a plain file.");
}

TEST_F(Files, SayWhatFailedOnWhichFileAndWhy)
{
    const fs::path file = folder / "no folder" / "file";
    const std::string reason = " the file \"" + file.string() + "\": No such file or directory.";
    EXPECT_EQ(failureOf([&] { writeBytesToFile(fourBytes, file); }), "Cannot write" + reason);
    EXPECT_EQ(failureOf([&] { writeWholeFile(fourBytes, file, FileLife::Kept); }), "Cannot write" + reason);
    EXPECT_EQ(failureOf([&] { readBytesFromFile(file); }), "Cannot read" + reason);
    EXPECT_EQ(failureOf([&] { readOwnFile(file); }), "Cannot read" + reason);
}

TEST_F(Files, WrittenWholeReplaceLinksAndHaveThePermissionsOfTheirLife)
{
    fs::create_symlink(folder / "elsewhere", folder / "link");
    const mode_t mask = ::umask(027);
    writeWholeFile(fourBytes, folder / "link", FileLife::Temporary);
    writeWholeFile(fourBytes, folder / "kept", FileLife::Kept);
    ::umask(mask);
    EXPECT_FALSE(fileExists(folder / "elsewhere"));
    EXPECT_EQ(fs::symlink_status(folder / "link").type(), fs::file_type::regular);
    EXPECT_EQ(permissionsOf(folder / "link"), 0600);
    EXPECT_EQ(permissionsOf(folder / "kept"), 0640);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 2);
}

TEST_F(Files, OfARunWithoutTempGoToAPrivateFolderAndThoseOfKilledRunsAreRemoved)
{
    const ScopedEnvironment runtime("XDG_RUNTIME_DIR", folder.path().string());
    const ScopedEnvironment temp("TEMP", std::nullopt);
    const struct {
        const char* name;
        fs::perms permissions;
        bool isRemoved;
    } cases[] = {
        {"wagemill-run-living", fs::perms::owner_all, false},
        {"wagemill-run-killed", fs::perms::owner_all, true},
        {"wagemill-run-shared", fs::perms::owner_all | fs::perms::group_all, false}, // not as we make them
        {"wagemill-backup", fs::perms::owner_all, false},
    };
    for (const auto& each : cases) {
        fs::create_directory(folder / each.name);
        fs::permissions(folder / each.name, each.permissions);
        writeBytesToFile(fourBytes, folder / each.name / "kvarno12345678.xls");
    }
    const auto living = platform::tryToLockFolder(folder / cases[0].name);
    ensureTemporaryFolder();
    const fs::path made = inTemporaryFolder("");
    EXPECT_EQ(made.parent_path(), folder.path());
    EXPECT_EQ(permissionsOf(made), 0700);
    for (const auto& each : cases)
        EXPECT_EQ(!fileExists(folder / each.name / "kvarno12345678.xls"), each.isRemoved) << each.name;
}

TEST(RandomWholeNumber, DrawsEveryNumberOfItsSpanAndNoOther)
{
    std::set<int> drawn;
    for (int draw = 0; draw < 2000; ++draw)
        drawn.insert(randomWholeNumber(1, 9));
    EXPECT_EQ(drawn, (std::set<int>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST(ErrorTrap, ReportsAStepAndGoesOnWithTheNext)
{
    RecordedMessages messages;
    std::string done;
    ErrorTrap trap("Form2.PushButton6_Click");
    trap.step(10, [&] { done += "a"; });
    trap.step(47, [] { throw std::runtime_error("The file is gone."); });
    trap.step(50, [&] { done += "b"; });
    const std::unique_ptr<int> nothing;
    trap.step(60, [&] { static_cast<void>(present(nothing, "workbook")); });
    EXPECT_EQ(done, "ab");
    EXPECT_EQ(messages.failedSteps(), (std::vector<int>{47, 60}));
    EXPECT_EQ(messages.shown[0].text,
              "The file is gone.\r\nin Wagemill2021/08/31.Form2.PushButton6_Click at line 47\r\r"
              "Please email screenshot of this message to support@quellory.example");
    EXPECT_EQ(messages.shown[0].title, "Application Error");
    EXPECT_TRUE(messages.shown[1].text.starts_with("There is no workbook, because an earlier step failed.\r\n"));
}

} // namespace
