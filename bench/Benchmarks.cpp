#include "app/base/Files.h"
#include "bench/PayrollJob.h"
#include "drawing/DrawingFile.h"
#include "settings/Settings.h"
#include "tests/support/EmbeddedBuilds.h"
#include "tests/support/TemporaryFolder.h"

#include <QApplication>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using namespace wagemill;
using namespace wagemill::bench;

/// Median and spread of the measurements, in milliseconds of elapsed time.
void repeated(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Unit(benchmark::kMillisecond)
        ->UseRealTime()
        ->MinTime(0.05)
        ->Repetitions(measurements)
        ->ReportAggregatesOnly();
}

/// A build without its windows. The number of employees; 2730 is the most that 16-bit row numbers allow.
void wholeBuild(benchmark::State& state)
{
    const test::TemporaryFolder folder;
    const test::ScopedEnvironment temp("TEMP", folder.path().string());
    const test::EmbeddedBuilds builds;
    const PayrollData data = payroll(static_cast<int>(state.range(0)));
    for (auto _ : state)
        std::filesystem::remove(builds.build(data).workbook);
}
BENCHMARK(wholeBuild)->Arg(1)->Arg(25)->Arg(400)->Arg(2730)->Apply(repeated);

/// The picture of the used range, from the cells to the stored drawing.
void picture(benchmark::State& state)
{
    const test::TemporaryFolder folder;
    const engine::Book book = filledBook(static_cast<int>(state.range(0)));
    const drawing::Drawing drawn = stubPicture(book);
    state.counters["width"] = drawn.width;
    state.counters["height"] = drawn.height;
    for (auto _ : state) {
        std::filesystem::remove(folder / "picture.bmp");
        writeBytesToFile(drawingFile(stubPicture(book)), folder / "picture.bmp");
    }
}
BENCHMARK(picture)->Arg(1)->Arg(25)->Arg(400)->Arg(2730)->Apply(repeated);

template <typename Work>
double millisecondsOf(Work&& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> times)
{
    std::ranges::sort(times);
    return times.at(times.size() / 2);
}

/// One setting stored, and beside it one page of a file written so that it is on the same disk. They take turns, for
/// a disk has its moods.
void storeSetting(benchmark::State& state)
{
    // In the folder that the program was started in: a system's temporary folder may be no disk at all.
    const test::ScopedEnvironment onDisk("TMPDIR", std::filesystem::current_path().string());
    const test::TemporaryFolder folder;
    const test::ScopedEnvironment configuration("XDG_CONFIG_HOME", folder.path().string());
    const auto store = openUserStore();
    const int file = ::open((folder / "page").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    const auto writePage = [file](char content) {
        std::array<char, 4096> page = {};
        page.fill(content);
        if (::pwrite(file, page.data(), page.size(), 0) != ssize_t{page.size()} || ::fdatasync(file) != 0)
            throw std::runtime_error("Cannot write to the folder of this benchmark.");
    };
    const auto storeText = [&store](const std::string& text) {
        store->write("Quellory", "Wagemill", "txtName0", text);
    };
    writePage(0);
    storeText("");
    std::vector<double> settings;
    std::vector<double> pages;
    for (auto _ : state) {
        const std::size_t turn = settings.size() + 1;
        pages.push_back(millisecondsOf([&] { writePage(static_cast<char>(turn)); }));
        settings.push_back(millisecondsOf([&] { storeText(std::to_string(turn)); }));
    }
    ::close(file);
    state.counters["setting_ms"] = median(settings);
    state.counters["synced_write_ms"] = median(pages);
    state.counters["ratio"] = median(settings) / median(pages);
}
BENCHMARK(storeSetting)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(20L * measurements);

} // namespace

int main(int argc, char* argv[])
{
    benchmark::Initialize(&argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
