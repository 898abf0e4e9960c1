#include "app/base/Files.h"

#include "app/base/PlatformFiles.h"

#include <random>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace wagemill {

namespace fs = std::filesystem;

namespace {

template <typename Value>
Value& programWide()
{
    static Value value;
    return value;
}

struct WindowEventPump {
    std::function<void()> run;
    bool isRunning = false;
};

struct ProgramEnd {
    std::function<void()> run;
};

struct ProgramFolder {
    fs::path path;
};

struct PrivateTemporaryFolder {
    fs::path path; ///< empty: TEMP was set by the user, and nothing of ours is to be removed
};

/// How long a build waits for another program's, which takes well under a second.
constexpr std::chrono::seconds lockPatience(10);

/// A fresh name beside `target`: in one folder, renaming replaces in one step.
fs::path neighbourOf(const fs::path& target)
{
    std::random_device chance;
    return target.parent_path() / (".wagemill-" + std::to_string(chance()) + std::to_string(chance()) + ".part");
}

/// Removes a file that was not renamed.
class UnfinishedFile {
public:
    explicit UnfinishedFile(fs::path path) : m_path(std::move(path)) {}
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;
    ~UnfinishedFile()
    {
        std::error_code ignored;
        fs::remove(m_path, ignored);
    }

    const fs::path& path() const { return m_path; }

private:
    fs::path m_path;
};

void removePrivateTemporaryFolder()
{
    std::error_code ignored;
    const fs::path& folder = programWide<PrivateTemporaryFolder>().path;
    if (!folder.empty())
        fs::remove_all(folder, ignored);
}

} // namespace

bool fileExists(const fs::path& path)
{
    std::error_code error;
    static_cast<void>(fs::last_write_time(path, error)); // only whether it can be asked counts
    return !error;
}

void deleteFileQuietly(const fs::path& path)
{
    processWindowEvents();
    std::error_code ignored;
    const fs::file_status status = fs::symlink_status(path, ignored);
    if (!fs::exists(status) || fs::is_directory(status))
        return;
    if (fs::remove(path, ignored))
        return;
    platform::deleteByForce(path);
}

void writeWholeFile(std::span<const std::byte> bytes, const fs::path& path, FileLife life)
{
    try {
        const UnfinishedFile unfinished(neighbourOf(path));
        platform::writeNewFile(bytes, unfinished.path(), life);
        platform::renameFile(unfinished.path(), path);
    } catch (const std::system_error& error) {
        throw std::runtime_error("Cannot write the file \"" + path.string() + "\": " + error.code().message() + ".");
    }
}

const fs::path& programFolder()
{
    return programWide<ProgramFolder>().path;
}

void setProgramFolder(const fs::path& folder)
{
    programWide<ProgramFolder>().path = folder;
}

fs::path besideProgram(std::string_view name)
{
    fs::path path = programFolder();
    path += fs::path(name).make_preferred();
    return path;
}

fs::path inTemporaryFolder(std::string_view name)
{
    fs::path path = platform::environmentPath("TEMP");
    path += fs::path(name).make_preferred();
    return path;
}

void ensureTemporaryFolder()
{
    if (!platform::environmentPath("TEMP").empty())
        return;
    const fs::path folder = platform::makePrivateFolder();
    programWide<PrivateTemporaryFolder>().path = folder;
    platform::setEnvironmentPath("TEMP", folder);
    platform::atEveryEnd(removePrivateTemporaryFolder);
}

std::shared_ptr<void> lockTemporaryFolder()
{
    const fs::path folder = inTemporaryFolder("");
    if (folder == programWide<PrivateTemporaryFolder>().path)
        return nullptr; // nobody else works in the run's own
    return platform::lockFolder(folder, lockPatience);
}

bool isDevelopmentRun()
{
#ifdef NDEBUG
    return false;
#else
    return true;
#endif
}

void setWindowEventPump(std::function<void()> pump)
{
    programWide<WindowEventPump>().run = std::move(pump);
}

void processWindowEvents()
{
    auto& pump = programWide<WindowEventPump>();
    if (!pump.run)
        return;
    const bool wasRunning = std::exchange(pump.isRunning, true);
    pump.run();
    pump.isRunning = wasRunning;
}

bool isProcessingWindowEvents()
{
    return programWide<WindowEventPump>().isRunning;
}

void endProgram()
{
    if (const auto end = programWide<ProgramEnd>().run) // a copy: it may set another end
        end();
    else
        platform::endProcess();
}

void setProgramEnd(std::function<void()> end)
{
    programWide<ProgramEnd>().run = std::move(end);
}

} // namespace wagemill
