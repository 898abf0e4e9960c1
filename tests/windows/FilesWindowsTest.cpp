#include "app/base/Files.h"
#include "app/base/PlatformFiles.h"
#include "app/base/WindowsHandle.h"
#include "app/base/text/WideText.h"
#include "tests/support/FailureOf.h"

#include <gtest/gtest.h>

#include <aclapi.h>
#include <fstream>
#include <functional>
#include <future>

using namespace wagemill;
using wagemill::test::failureOf;
namespace fs = std::filesystem;

namespace {

std::vector<std::byte> bytesOf(std::string_view text)
{
    const auto bytes = std::as_bytes(std::span(text));
    return {bytes.begin(), bytes.end()};
}

/// A fresh folder with a name that no code page of one byte holds.
class FilesWindowsTest : public testing::Test {
protected:
    FilesWindowsTest() { fs::create_directories(folder); }
    ~FilesWindowsTest() override
    {
        for (const auto& entry : fs::directory_iterator(folder))
            ::SetFileAttributesW(entry.path().c_str(), FILE_ATTRIBUTE_NORMAL);
        fs::remove_all(folder);
    }

    fs::path folder =
        fs::temp_directory_path() / (L"wagemill-\u0416\u96E8-" + std::to_wstring(::GetCurrentProcessId()));
    fs::path file = folder / L"\u20AC \u0416.xls";
};

TEST_F(FilesWindowsTest, WriteReadAndReplace)
{
    writeBytesToFile(bytesOf("longer"), file);
    writeBytesToFile(bytesOf("abc"), file);
    EXPECT_EQ(readOwnFile(file), bytesOf("abcger"));
    for (const FileLife life : {FileLife::Temporary, FileLife::Kept}) {
        writeWholeFile(bytesOf("whole"), file, life);
        EXPECT_EQ(readBytesFromFile(file), bytesOf("whole"));
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1);
}

TEST_F(FilesWindowsTest, SayThatTheFileToReplaceIsOpenElsewhere)
{
    writeBytesToFile(bytesOf("old"), file);
    for (const DWORD share : {DWORD{0}, DWORD{FILE_SHARE_READ}}) {
        const WindowsHandle held(::CreateFileW(file.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_EQ(failureOf([&] { writeWholeFile(bytesOf("new"), file, FileLife::Kept); }),
                  "Cannot write the file \"" + file.string() +
                      "\": it is open in another program. Please close it there and try again.");
    }
    EXPECT_EQ(readBytesFromFile(file), bytesOf("old"));
}

TEST_F(FilesWindowsTest, GrantTheirPermissionsToTheUserAndTheSystemAlone)
{
    writeBytesToFile(bytesOf("wages"), file);
    PACL permissions = nullptr;
    PSECURITY_DESCRIPTOR raw = nullptr;
    ASSERT_EQ(::GetNamedSecurityInfoW(file.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                                      &permissions, nullptr, &raw),
              DWORD{ERROR_SUCCESS});
    ASSERT_NE(permissions, nullptr);
    for (DWORD index = 0; index < permissions->AceCount; ++index) {
        void* raw_entry = nullptr;
        ASSERT_TRUE(::GetAce(permissions, index, &raw_entry));
        auto* const entry = static_cast<ACCESS_ALLOWED_ACE*>(raw_entry);
        EXPECT_FALSE(::IsWellKnownSid(&entry->SidStart, WinWorldSid) && entry->Mask != 0) << "everyone may enter";
    }
    ::LocalFree(raw);
}

TEST_F(FilesWindowsTest, SayWhatFailedOnWhichFileAndWhy)
{
    const fs::path nowhere = folder / "no" / "a.xls";
    const fs::path linked = folder / "linked";
    writeBytesToFile(bytesOf("x"), file);
    const bool canLink = ::CreateHardLinkW(linked.c_str(), file.c_str(), nullptr) != 0;
    const std::pair<std::function<void()>, std::string> cases[] = {
        {[&] { readBytesFromFile(nowhere); }, "Cannot read the file \"" + nowhere.string() + "\": "},
        {[&] { writeBytesToFile({}, nowhere); }, "Cannot write the file \"" + nowhere.string() + "\": "},
        {[] { readBytesFromFile("NUL"); }, "Cannot read the file \"NUL\": it is not a plain file."},
        {[&] { readOwnFile(folder); }, "Cannot open \"" + folder.string() + "\": it is not a plain file."},
        {[&] { readOwnFile(linked); }, canLink ? "Cannot open \"" + linked.string() + "\": it is hard-linked." : ""},
    };
    for (const auto& [work, expected] : cases)
        EXPECT_EQ(failureOf(work).substr(0, expected.size()), expected);
}

TEST_F(FilesWindowsTest, GoAlsoWhenTheyMayOnlyBeRead)
{
    writeBytesToFile(bytesOf("x"), file);
    ASSERT_TRUE(::SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY));
    deleteFileQuietly(file);
    EXPECT_FALSE(fileExists(file));
    deleteFileQuietly(folder);
    EXPECT_TRUE(fileExists(folder));
}

TEST_F(FilesWindowsTest, LeaveAFolderToOneProgramAtATime)
{
    auto held = platform::tryToLockFolder(folder);
    ASSERT_TRUE(held && *held);
    const auto canAnotherLock = [this] { // a lock is a thread's own
        return std::async(std::launch::async, [this] { return bool(platform::tryToLockFolder(folder / ".")); }).get();
    };
    EXPECT_FALSE(canAnotherLock());
    held.reset();
    EXPECT_TRUE(canAnotherLock());
    EXPECT_EQ(platform::tryToLockFolder(folder / "no"), std::shared_ptr<void>());
}

TEST_F(FilesWindowsTest, MakeAPrivateFolderAndRemoveAbandonedOnes)
{
    platform::setEnvironmentPath("TMP", folder);
    fs::create_directory(folder / "wagemill-run-1");
    std::ofstream(folder / "wagemill-run-1" / "temp.bmp") << "wages";
    const fs::path made = makePrivateFolder();
    EXPECT_EQ(made.parent_path(), folder);
    EXPECT_FALSE(fileExists(folder / "wagemill-run-1"));
    EXPECT_TRUE(fileExists(made));
    platform::setEnvironmentPath("WAGEMILL_TEST", folder);
    EXPECT_EQ(platform::environmentPath("WAGEMILL_TEST"), folder);
    EXPECT_EQ(platform::environmentPath("WAGEMILL_TEST_NOT_SET"), fs::path());
}

} // namespace
