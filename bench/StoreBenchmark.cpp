#include "bench/FolderOnDisk.h"
#include "bench/Repeated.h"
#include "settings/SqliteStore.h"

#include <array>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <unistd.h>

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

void storeSyncedWrite(benchmark::State& state)
{
    const FolderOnDisk folder;
    PlainFile file(folder() / "page");
    int turn = 0;
    for (auto _ : state)
        file.writeSynced(++turn);
}
BENCHMARK(storeSyncedWrite)->Apply([](auto* benchmark) { repeated(benchmark); });

void storeSetting(benchmark::State& state)
{
    const FolderOnDisk folder;
    SqliteStore store(folder() / "settings.sqlite");
    int turn = 0;
    for (auto _ : state)
        store.write("Quellory", "Wagemill", "txtName0", std::to_string(++turn));
}
BENCHMARK(storeSetting)->Apply([](auto* benchmark) { repeated(benchmark); });

} // namespace
