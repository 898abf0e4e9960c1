#include "settings/Settings.h"
#include "tests/support/FailureOf.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <optional>
#include <sqlite3.h>
#include <tuple>
#include <utility>

using namespace wagemill;
using namespace wagemill::test;
namespace fs = std::filesystem;

namespace {

class SettingsTest : public testing::Test {
protected:
    std::string get(const char* key, const char* fallback = "none")
    {
        return GetSetting("Quellory", "Wagemill", key, fallback);
    }
    void save(const char* key, const std::string& value) { SaveSetting("Quellory", "Wagemill", key, value); }
    static void reopen() { setUserStore(nullptr); }

    TemporaryFolder home;
    ScopedEnvironment configuration{"XDG_CONFIG_HOME", (home / "config").string()};
    fs::path file = home / "config" / "wagemill" / "settings.sqlite";
    struct Forget {
        Forget() { reopen(); }
        ~Forget() { reopen(); }
    } forget;
};

TEST_F(SettingsTest, AnswerTheFallbackUntilAValueIsStoredForTheirUserAlone)
{
    EXPECT_EQ(get("txtOT0", "0"), "0");
    EXPECT_FALSE(fs::exists(file)); // looking makes nothing
    save("txtOT0", "");
    EXPECT_EQ(get("txtOT0", "0"), ""); // an empty text is a value
    EXPECT_EQ(fs::status(file).permissions() & fs::perms::all, fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(fs::status(file.parent_path()).permissions() & fs::perms::all, fs::perms::owner_all);
}

TEST_F(SettingsTest, KeepEveryTextApartByItsThreeNames)
{
    const std::string odd = "a,b=\"c\"\n; 'x' \xC3\xBC \xE2\x82\xAC " + std::string(100'000, 'y');
    save("txtName0", odd);
    save("txtname0", "other case");
    SaveSetting("Quellory", "Other", "txtName0", "other section");
    SaveSetting("Other", "Wagemill", "txtName0", "other application");
    reopen();
    EXPECT_EQ(get("txtName0"), odd);
    EXPECT_EQ(get("txtname0"), "other case");
    EXPECT_EQ(GetSetting("Quellory", "Other", "txtName0", ""), "other section");
    EXPECT_EQ(GetSetting("Other", "Wagemill", "txtName0", ""), "other application");
}

TEST_F(SettingsTest, AreInTheConfigurationFolderElseInTheHomeFolder)
{
    const fs::path before = fs::current_path();
    fs::current_path(home.path());
    const std::optional<std::string> chosen = (home / ".config").string();
    const std::tuple<std::optional<std::string>, std::string, const char*> cases[] = {
        {chosen, "", "none"},
        {chosen, "", "1"},
        {std::nullopt, home.path().string(), "1"},
        {".config", (home / "other").string(), "none"}, // only a full path counts
        {std::nullopt, "", "none"},                     // the user's own, not one below the present folder
    };
    for (const auto& [folder, homeFolder, expected] : cases) {
        const ScopedEnvironment configurationOfCase("XDG_CONFIG_HOME", folder);
        const ScopedEnvironment homeOfCase("HOME", homeFolder);
        reopen();
        EXPECT_EQ(get("where"), expected) << folder.value_or("") << ", " << homeFolder;
        if (folder == chosen)
            save("where", "1");
    }
    fs::current_path(before);
}

/// Another program in the middle of a transaction.
class Lock {
public:
    Lock(const fs::path& file, const char* kind)
    {
        EXPECT_EQ(sqlite3_open(file.c_str(), &m_database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(m_database, kind, nullptr, nullptr, nullptr), SQLITE_OK);
    }
    ~Lock() { sqlite3_close(m_database); }

private:
    sqlite3* m_database = nullptr;
};

TEST_F(SettingsTest, AnswerWithinASecondWhileLockedAndStoreWhatWaitedWithTheNextChance)
{
    const struct {
        const char* lock;
        std::function<void()> nextChance;
    } cases[] = {
        {"BEGIN IMMEDIATE", [&] { save("next", "1"); }}, // others may read
        {"BEGIN EXCLUSIVE", [&] { save("next", "2"); }},
        {"BEGIN EXCLUSIVE", [] { EXPECT_EQ(retrySettings(), ""); }},
    };
    for (const auto& [kind, nextChance] : cases) {
        save("company", "before");
        {
            const Lock lock(file, kind);
            bool isFirst = true; // only the first is waited for
            for (const char* key : {"company", "name", "company", "wage"}) {
                const auto begin = std::chrono::steady_clock::now();
                const std::string failure = failureOf([&] { save(key, std::string(key) + " typed"); });
                const auto waited = std::chrono::steady_clock::now() - begin;
                EXPECT_TRUE(failure.ends_with(": another program has locked them. What you typed stays in the window "
                                              "and is stored as soon as possible."))
                    << failure;
                EXPECT_LT(waited, std::chrono::seconds(1));
                EXPECT_EQ(waited > std::chrono::milliseconds(500), std::exchange(isFirst, false)) << key;
            }
            EXPECT_NE(retrySettings(), "");
        }
        nextChance();
        for (const char* key : {"company", "name", "wage"})
            EXPECT_EQ(get(key), std::string(key) + " typed") << kind;
    }
}

TEST_F(SettingsTest, GoOnAfterTheirFileWasTakenAway)
{
    save("a", "1");
    fs::remove_all(file.parent_path());
    EXPECT_EQ(get("a"), "none");
    save("a", "2");
    reopen();
    EXPECT_EQ(get("a"), "2");
}

TEST_F(SettingsTest, SetADamagedStoreAsideAndBeginAgain)
{
    fs::create_directories(file.parent_path());
    std::ofstream(file) << std::string(5000, 'x');
    EXPECT_EQ(failureOf([&] { get("a"); }), "The settings in \"" + file.string() +
                                                "\" are damaged (file is not a database). They were set aside as \"" +
                                                file.string() + ".damaged\", and new settings begin.");
    save("a", "1");
    EXPECT_EQ(get("a"), "1");
    EXPECT_EQ(fs::file_size(file.string() + ".damaged"), 5000U);
}

TEST_F(SettingsTest, SayWhereTheyCannotBeKept)
{
    std::ofstream(home / "config") << "a file where the folder should be";
    EXPECT_TRUE(
        failureOf([&] { save("a", "1"); }).starts_with("The settings cannot be kept in \"" + file.string() + "\": "));
}

} // namespace
