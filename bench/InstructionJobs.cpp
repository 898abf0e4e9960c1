// instruction_jobs NAME: does one job once to warm up and once in measuredJob(), the function that callgrind counts.
// instruction_jobs --built-with: what the counts depend on besides our own code.

#include "app/base/Files.h"
#include "bench/PayrollJob.h"
#include "drawing/DrawingFile.h"
#include "settings/Settings.h"
#include "tests/support/EmbeddedBuilds.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdio>
#include <functional>
#include <string_view>

using namespace wagemill;
using namespace wagemill::bench;

/// Not in a namespace, so that callgrind can name it.
[[gnu::noinline]] void measuredJob(const std::function<void()>& job)
{
    job();
}

namespace {

struct Job {
    const char* name;
    std::function<void(const std::filesystem::path& folder)> work;
};

void build(const std::filesystem::path& folder, int employees)
{
    const test::ScopedEnvironment temp("TEMP", folder.string());
    test::EmbeddedBuilds().build(payroll(employees));
}

void picture(const std::filesystem::path& folder)
{
    static const engine::Book book = filledBook(25);
    writeBytesToFile(drawingFile(stubPicture(book)), folder / "picture");
}

void settings(const std::filesystem::path& folder)
{
    static const test::ScopedEnvironment configuration("XDG_CONFIG_HOME", folder.string());
    static const auto store = openUserStore();
    for (int turn = 0; turn < 50; ++turn)
        store->write("Quellory", "Wagemill", "txtName0", std::to_string(turn));
}

const Job jobs[] = {
    {"build-1", [](const auto& folder) { build(folder, 1); }},
    {"build-25", [](const auto& folder) { build(folder, 25); }},
    {"build-400", [](const auto& folder) { build(folder, 400); }},
    {"picture-25", picture},
    {"settings-50", settings},
};

int run(const Job& job)
{
    const test::TemporaryFolder folder;
    job.work(folder.path());
    measuredJob([&] { job.work(folder.path()); });
    return 0;
}

} // namespace

int main(int argc, char* argv[])
{
    const std::string_view wanted = argc == 2 ? argv[1] : "";
    if (wanted == "--built-with")
        return std::printf("compiler %s\n", __VERSION__) < 0;
    if (wanted == "--jobs") {
        for (const Job& job : jobs)
            std::puts(job.name);
        return 0;
    }
    for (const Job& job : jobs)
        if (job.name == wanted)
            return run(job);
    std::fputs("Usage: instruction_jobs JOB | --jobs | --built-with\n", stderr);
    return 2;
}
