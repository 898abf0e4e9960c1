#include "settings/Settings.h"

#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <initializer_list>
#include <pwd.h>
#include <sqlite3.h>
#include <stdexcept>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace wagemill {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

/// EXTRA: the journal's end, too, is on the disk when a write returns, so the power may fail then.
constexpr const char* preparation = "PRAGMA journal_mode=DELETE;"
                                    "PRAGMA synchronous=EXTRA;"
                                    "CREATE TABLE IF NOT EXISTS settings ("
                                    " application TEXT NOT NULL, section TEXT NOT NULL, key TEXT NOT NULL,"
                                    " value TEXT NOT NULL, PRIMARY KEY (application, section, key)) WITHOUT ROWID;";

struct Close {
    void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

using Database = std::unique_ptr<sqlite3, Close>;
using Statement = std::unique_ptr<sqlite3_stmt, Close>;

/// Null when the statement cannot be prepared; the database then knows why.
Statement prepare(sqlite3* database, const char* sql, std::initializer_list<std::string_view> values)
{
    sqlite3_stmt* raw = nullptr;
    if (sqlite3_prepare_v2(database, sql, -1, &raw, nullptr) != SQLITE_OK)
        return nullptr;
    Statement statement(raw);
    int position = 0;
    for (const std::string_view value : values)
        if (sqlite3_bind_text64(statement.get(), ++position, value.empty() ? "" : value.data(), value.size(),
                                SQLITE_TRANSIENT, SQLITE_UTF8) != SQLITE_OK)
            return nullptr;
    return statement;
}

/// SQLite gives its journal the permissions of the database, so the database is made private before SQLite sees it.
void makePrivate(const fs::path& file)
{
    const fs::path folder = file.parent_path();
    if (!fs::is_directory(folder)) {
        fs::create_directories(folder);
        fs::permissions(folder, fs::perms::owner_all);
    }
    if (const int made = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR); made >= 0)
        ::close(made);
}

/// What tells a file from another that gets its name; zeros when there is none.
std::pair<dev_t, ino_t> identityOf(const fs::path& file)
{
    struct stat status = {};
    ::stat(file.c_str(), &status);
    return {status.st_dev, status.st_ino};
}

/// The store as a SQLite database of one table (application, section, key, value). Every write is a durable transaction
/// of its own, so neither a killed program nor a failing power loses anything, and no lock stays behind. Folder and
/// file are the user's alone; the first write makes them, and until then the store reads as empty.
class SqliteStore : public SettingsStore {
public:
    explicit SqliteStore(fs::path file) : m_file(std::move(file)) {}

    std::optional<std::string> read(std::string_view application, std::string_view section,
                                    std::string_view key) override
    {
        // A lock of another program is waited for: the window answers within a second. Once that was in vain, every
        // call tries only once until a write succeeds: a window of 25 employees reads 427 values.
        m_waitUntil = std::chrono::steady_clock::now() + (m_waitWasInVain ? 0ms : 800ms);
        std::error_code error;
        if (!fs::exists(m_file, error) && !error)
            return std::nullopt;
        sqlite3* const open = database();
        const Statement statement =
            prepare(open, "SELECT value FROM settings WHERE application=?1 AND section=?2 AND key=?3",
                    {application, section, key});
        const int outcome = statement ? sqlite3_step(statement.get()) : SQLITE_ERROR;
        if (outcome == SQLITE_DONE)
            return std::nullopt;
        if (outcome != SQLITE_ROW)
            giveUp("read");
        const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), 0));
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), 0));
        return text == nullptr ? std::string() : std::string(text, size);
    }

    void write(std::string_view application, std::string_view section, std::string_view key,
               std::string_view value) override
    {
        if (read(application, section, key) == value)
            return; // a start stores what it has just read: that costs no disk, nor a dialog for each key of a full one
        sqlite3* const open = database();
        const Statement statement = prepare(open, "INSERT OR REPLACE INTO settings VALUES (?1, ?2, ?3, ?4)",
                                            {application, section, key, value});
        if (!statement || sqlite3_step(statement.get()) != SQLITE_DONE)
            giveUp("written");
        m_waitWasInVain = false;
    }

private:
    /// Opens the database when it is not open; a file that was taken away or replaced meanwhile is opened again.
    sqlite3* database()
    {
        if (m_database && identityOf(m_file) != m_identity)
            m_database.reset();
        if (!m_database)
            open();
        return m_database.get();
    }

    void open()
    {
        try {
            makePrivate(m_file);
        } catch (const fs::filesystem_error& error) {
            throw std::runtime_error("The settings cannot be kept in \"" + m_file.string() +
                                     "\": " + error.code().message() + ".");
        }
        const bool writable = ::access(m_file.c_str(), W_OK) == 0;
        sqlite3* raw = nullptr;
        int outcome =
            sqlite3_open_v2(m_file.c_str(), &raw, writable ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY, nullptr);
        m_database.reset(raw);
        if (outcome == SQLITE_OK)
            outcome = sqlite3_busy_handler(raw, waitForOther, this);
        if (outcome == SQLITE_OK && writable)
            outcome = sqlite3_exec(raw, preparation, nullptr, nullptr, nullptr);
        if (outcome != SQLITE_OK)
            giveUp("opened");
        m_identity = identityOf(m_file);
    }

    /// Looks again after a millisecond. SQLite's own waiting grows to a tenth of a second at a time, and then never
    /// falls into the gaps between the writes of a busy program.
    static int waitForOther(void* store, int /*waits*/)
    {
        std::this_thread::sleep_for(1ms);
        return static_cast<int>(std::chrono::steady_clock::now() < static_cast<SqliteStore*>(store)->m_waitUntil);
    }

    /// Throws, and lets the next use open the database again: what stopped this one may have passed. A damaged file is
    /// set aside first, so that the next write begins a new one. what  "read", "written", "opened"
    [[noreturn]] void giveUp(std::string_view what)
    {
        const int outcome = sqlite3_errcode(m_database.get());
        const bool isLocked = outcome == SQLITE_BUSY;
        const std::string reason = isLocked ? "another program has locked them" : sqlite3_errmsg(m_database.get());
        m_waitWasInVain |= isLocked;
        m_database.reset();
        const std::string name = "\"" + m_file.string() + "\"";
        if (outcome != SQLITE_NOTADB && outcome != SQLITE_CORRUPT)
            throw std::runtime_error("The settings in " + name + " cannot be " + std::string(what) + ": " + reason +
                                     ".");
        // What is typed from now on must have a place; the damaged file is kept for whoever can repair it.
        const fs::path aside = m_file.string() + ".damaged";
        std::error_code error;
        fs::rename(m_file, aside, error);
        throw std::runtime_error("The settings in " + name + " are damaged (" + reason + "). " +
                                 (error
                                      ? "They cannot be set aside: " + error.message() + "."
                                      : "They were set aside as \"" + aside.string() + "\", and new settings begin."));
    }

    fs::path m_file;
    std::chrono::steady_clock::time_point m_waitUntil;
    bool m_waitWasInVain = false;
    Database m_database;
    std::pair<dev_t, ino_t> m_identity; ///< of the open file
};

/// XDG_CONFIG_HOME, else .config in HOME.
fs::path userConfigurationFolder()
{
    if (const char* folder = std::getenv("XDG_CONFIG_HOME"); folder != nullptr && *folder == '/')
        return folder;
    const char* home = std::getenv("HOME");
    if (home == nullptr || *home == '\0')
        if (const passwd* user = ::getpwuid(::getuid()); user != nullptr)
            home = user->pw_dir;
    return fs::path(home == nullptr ? "/" : home) / ".config";
}

} // namespace

std::unique_ptr<SettingsStore> openUserStore()
{
    return std::make_unique<SqliteStore>(userConfigurationFolder() / "wagemill" / "settings.sqlite");
}

} // namespace wagemill
