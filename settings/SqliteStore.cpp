#include "settings/SqliteStore.h"

#include "settings/UserStore.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
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

namespace {

/// How long a read or write waits for another program's transaction: the window answers within a second.
constexpr auto longestWait = std::chrono::milliseconds(800);

/// EXTRA: the journal's end, too, is on the disk when a write returns, so the power may fail then.
constexpr const char* preparation = "PRAGMA journal_mode=DELETE;"
                                    "PRAGMA synchronous=EXTRA;"
                                    "CREATE TABLE IF NOT EXISTS settings ("
                                    " application TEXT NOT NULL, section TEXT NOT NULL, key TEXT NOT NULL,"
                                    " value TEXT NOT NULL, PRIMARY KEY (application, section, key)) WITHOUT ROWID;";

struct FinalizeStatement {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

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

void makePrivateFolder(const fs::path& folder)
{
    if (fs::is_directory(folder))
        return;
    fs::create_directories(folder.parent_path());
    if (::mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST)
        throw fs::filesystem_error("Cannot make the folder", folder, std::error_code(errno, std::generic_category()));
}

/// SQLite gives its journal the permissions of the database, so the database is made private before SQLite sees it.
void makePrivateFile(const fs::path& file)
{
    const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor >= 0)
        ::close(descriptor);
}

} // namespace

void SqliteStore::CloseDatabase::operator()(sqlite3* database) const
{
    sqlite3_close_v2(database);
}

SqliteStore::SqliteStore(fs::path file) : m_file(std::move(file))
{
}

SqliteStore::~SqliteStore() = default;

void SqliteStore::beginWaiting()
{
    m_waitUntil = std::chrono::steady_clock::now() + (m_waitWasInVain ? std::chrono::milliseconds(0) : longestWait);
}

/// Looks again after a millisecond. SQLite's own waiting grows to a tenth of a second at a time, and then never falls
/// into the gaps between the writes of a busy program.
int SqliteStore::waitForOther(void* store, int /*waits*/)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return std::chrono::steady_clock::now() < static_cast<SqliteStore*>(store)->m_waitUntil ? 1 : 0;
}

std::optional<std::string> SqliteStore::read(std::string_view application, std::string_view section,
                                             std::string_view key)
{
    beginWaiting();
    std::error_code error;
    if (!fs::exists(m_file, error) && !error)
        return std::nullopt;
    sqlite3* const open = database();
    const Statement statement = prepare(
        open, "SELECT value FROM settings WHERE application=?1 AND section=?2 AND key=?3", {application, section, key});
    if (!statement)
        giveUp("read");
    const int outcome = sqlite3_step(statement.get());
    if (outcome == SQLITE_DONE)
        return std::nullopt;
    if (outcome != SQLITE_ROW)
        giveUp("read");
    const unsigned char* const text = sqlite3_column_text(statement.get(), 0);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), 0));
    return text == nullptr ? std::string() : std::string(reinterpret_cast<const char*>(text), size);
}

void SqliteStore::write(std::string_view application, std::string_view section, std::string_view key,
                        std::string_view value)
{
    if (read(application, section, key) == value)
        return; // a start stores what it has just read: that costs no disk, nor a dialog for each key of a full one
    sqlite3* const open = database();
    const Statement statement =
        prepare(open, "INSERT OR REPLACE INTO settings VALUES (?1, ?2, ?3, ?4)", {application, section, key, value});
    if (!statement || sqlite3_step(statement.get()) != SQLITE_DONE)
        giveUp("written");
    m_waitWasInVain = false;
}

sqlite3* SqliteStore::database()
{
    if (m_database && !fileIsStillTheOpenOne())
        m_database.reset();
    if (!m_database)
        open();
    return m_database.get();
}

void SqliteStore::open()
{
    try {
        makePrivateFolder(m_file.parent_path());
    } catch (const fs::filesystem_error& error) {
        throw std::runtime_error("The settings cannot be kept in \"" + m_file.string() +
                                 "\": " + error.code().message() + ".");
    }
    makePrivateFile(m_file);
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
    rememberOpenFile();
}

void SqliteStore::giveUp(std::string_view what)
{
    const int outcome = sqlite3_errcode(m_database.get());
    const bool isLocked = outcome == SQLITE_BUSY;
    const std::string reason = isLocked ? "another program has locked them" : sqlite3_errmsg(m_database.get());
    if (isLocked)
        m_waitWasInVain = true;
    m_database.reset();
    const std::string name = "\"" + m_file.string() + "\"";
    if (outcome != SQLITE_NOTADB && outcome != SQLITE_CORRUPT)
        throw std::runtime_error("The settings in " + name + " cannot be " + std::string(what) + ": " + reason + ".");
    // What is typed from now on must have a place; the damaged file is kept for whoever can mend it.
    const fs::path aside = m_file.string() + ".damaged";
    std::error_code error;
    fs::rename(m_file, aside, error);
    throw std::runtime_error("The settings in " + name + " are damaged (" + reason + "). " +
                             (error ? "They cannot be set aside: " + error.message() + "."
                                    : "They were set aside as \"" + aside.string() + "\", and new settings begin."));
}

void SqliteStore::rememberOpenFile()
{
    struct stat status = {};
    if (::stat(m_file.c_str(), &status) == 0) {
        m_device = status.st_dev;
        m_inode = status.st_ino;
    }
}

bool SqliteStore::fileIsStillTheOpenOne() const
{
    struct stat status = {};
    return ::stat(m_file.c_str(), &status) == 0 && status.st_dev == m_device && status.st_ino == m_inode;
}

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

std::unique_ptr<SettingsStore> openUserStore()
{
    return std::make_unique<SqliteStore>(userConfigurationFolder() / "wagemill" / "settings.sqlite");
}

} // namespace wagemill
