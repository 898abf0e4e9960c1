#include "app/base/Files.h"

#include "app/base/PlatformFiles.h"

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
    if (programWide<WindowEventPump>().run)
        programWide<WindowEventPump>().run();
}

void endProgram()
{
    if (programWide<ProgramEnd>().run)
        programWide<ProgramEnd>().run();
    else
        platform::endProcess();
}

void setProgramEnd(std::function<void()> end)
{
    programWide<ProgramEnd>().run = std::move(end);
}

} // namespace wagemill
