#include "bench/FolderOnDisk.h"
#include "bench/Repeated.h"
#include "settings/SqliteStore.h"

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

class PlainFile {
public:
    explicit PlainFile(const std::filesystem::path& path)
        : m_descriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR))
    {
        writeSynced(0);
    }
    PlainFile(const PlainFile&) = delete;
    PlainFile& operator=(const PlainFile&) = delete;
    ~PlainFile() { ::close(m_descriptor); }

    /// One page, over the last one, durable when this returns.
    void writeSynced(int turn)
    {
        constexpr std::size_t page = 4096;
        std::array<char, page> bytes = {};
        bytes.fill(static_cast<char>(turn));
        if (::pwrite(m_descriptor, bytes.data(), bytes.size(), 0) != ssize_t{page} || ::fdatasync(m_descriptor) != 0)
            throw std::runtime_error("Cannot write to the folder of this benchmark.");
    }

private:
    int m_descriptor;
};

template <typename Work>
double millisecondsOf(Work&& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> figures)
{
    std::ranges::sort(figures);
    return figures.at(figures.size() / 2);
}

/// One setting stored, and beside it one synced write of the same disk. They take turns, for a disk has its moods.
void storeSetting(benchmark::State& state)
{
    const FolderOnDisk folder;
    PlainFile file(folder() / "page");
    SqliteStore store(folder() / "settings.sqlite");
    store.write("Quellory", "Wagemill", "txtName0", "");
    std::vector<double> settings;
    std::vector<double> syncedWrites;
    for (auto _ : state) {
        const int turn = static_cast<int>(settings.size()) + 1;
        syncedWrites.push_back(millisecondsOf([&] { file.writeSynced(turn); }));
        settings.push_back(
            millisecondsOf([&] { store.write("Quellory", "Wagemill", "txtName0", std::to_string(turn)); }));
    }
    state.counters["setting_ms"] = median(settings);
    state.counters["synced_write_ms"] = median(syncedWrites);
    state.counters["ratio"] = median(settings) / median(syncedWrites);
}
BENCHMARK(storeSetting)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(20 * measurements);

} // namespace
