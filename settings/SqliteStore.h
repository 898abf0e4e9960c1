#pragma once

#include "settings/Settings.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>

struct sqlite3;

namespace wagemill {

/// The store as a SQLite database of one table (application, section, key, value). Every write is a durable transaction
/// of its own, so neither a killed program nor a failing power loses anything, and no lock stays behind. Folder and
/// file are the user's alone.
class SqliteStore : public SettingsStore {
public:
    /// file  made, with its folder, at the first write. Until then a store that is not there reads as empty.
    explicit SqliteStore(std::filesystem::path file);
    ~SqliteStore() override;

    std::optional<std::string> read(std::string_view application, std::string_view section,
                                    std::string_view key) override;
    void write(std::string_view application, std::string_view section, std::string_view key,
               std::string_view value) override;

private:
    struct CloseDatabase {
        void operator()(sqlite3* database) const;
    };

    /// A lock of another program is waited for from now on. Once that was in vain, every call tries only once until a
    /// write succeeds: a window of 25 employees reads 427 values.
    void beginWaiting();
    static int waitForOther(void* store, int waits);
    /// Opens the database when it is not open; a file that was taken away or replaced meanwhile is opened anew.
    sqlite3* database();
    void open();
    /// Throws, and lets the next use open the database anew: what stopped this one may have passed. A damaged file is
    /// set aside first, so that the next write begins a new one. what  "read", "written", "opened"
    [[noreturn]] void giveUp(std::string_view what);
    void rememberOpenFile();
    bool fileIsStillTheOpenOne() const;

    std::filesystem::path m_file;
    std::chrono::steady_clock::time_point m_waitUntil;
    bool m_waitWasInVain = false;
    std::unique_ptr<sqlite3, CloseDatabase> m_database;
    std::uintmax_t m_device = 0; ///< of the open file, to see whether the path still names it
    std::uintmax_t m_inode = 0;
};

/// The user's configuration folder: XDG_CONFIG_HOME, else .config in HOME.
std::filesystem::path userConfigurationFolder();

} // namespace wagemill
