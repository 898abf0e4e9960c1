#include "workbook/engine/xls/CompoundFile.h"
#include "app/base/Bytes.h"
#include "tests/engine/xls/TestBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <tuple>

namespace wagemill::engine::xls {

namespace {

constexpr std::size_t sectorSize = 512;
constexpr std::size_t largeSectorSize = 4096;
constexpr std::size_t entrySize = 128;
constexpr std::uint32_t endOfChainMark = 0xFFFFFFFE;
constexpr std::uint32_t freeMark = 0xFFFFFFFF;

Bytes patterned(std::size_t size, std::size_t seed)
{
    Bytes bytes(size);
    for (std::size_t index = 0; index < size; ++index)
        bytes[index] = static_cast<std::byte>(index * 7 + index / 256 + seed);
    return bytes;
}

/// A compound file of a large stream, a small one, and a storage with one of each.
class Container {
public:
    Container()
        : bytes(writeCompoundFile(std::to_array<KeptStream>({{{"Workbook"}, false, patterned(5000, 1)},
                                                             {{"small"}, false, patterned(100, 2)},
                                                             {{"macros"}, true, {}},
                                                             {{"macros", "one"}, false, patterned(4096, 3)},
                                                             {{"macros", "two"}, false, patterned(4095, 4)}})))
    {
    }

    std::uint32_t header(std::size_t position) const { return ByteReader(bytes, position).u32(); }
    void link(std::size_t sector, std::uint32_t next) { putU32(bytes, sectorPlace(header(76)) + sector * 4, next); }
    void miniLink(std::size_t sector, std::uint32_t next) { putU32(bytes, sectorPlace(header(60)) + sector * 4, next); }
    /// Place of a field in the directory; entries are in the order in which they were written, the root before them.
    std::size_t entryPlace(std::size_t entry, std::size_t field) const
    {
        return sectorPlace(header(48) + static_cast<std::uint32_t>(entry / 4)) + entry % 4 * entrySize + field;
    }
    void entry(std::size_t index, std::size_t field, std::uint32_t value)
    {
        putU32(bytes, entryPlace(index, field), value);
    }
    static std::size_t sectorPlace(std::uint32_t sector) { return (std::size_t{sector} + 1) * sectorSize; }

    Bytes bytes;
};

} // namespace

TEST(CompoundFile, GivesBackStreamsOfEverySizeAndStorages)
{
    for (const std::size_t size : {0U, 1U, 64U, 65U, 4095U, 4096U, 70000U}) {
        std::vector<KeptStream> streams = {
            {{"Workbook"}, false, patterned(size, 1)},
            {{"\x05SummaryInformation"}, false, patterned(100, 2)},
            {{"\xD0\x9B\xD0\xB8\xD1\x81\xD1\x82"}, false, patterned(10, 3)},
            {{"macros"}, true, patterned(16, 4)},
            {{"macros", "inner"}, true, {}},
            {{"macros", "inner", "deep"}, false, patterned(5000, 5)},
        };
        for (int index = 0; index < 20; ++index)
            streams.push_back({{"macros", "module" + std::to_string(index)}, false, patterned(70, 6)});
        auto read = readCompoundFile(writeCompoundFile(streams));
        std::ranges::sort(read, {}, &KeptStream::path);
        std::ranges::sort(streams, {}, &KeptStream::path);
        const auto parts = [](const KeptStream& each) { return std::tie(each.path, each.isStorage, each.data); };
        EXPECT_TRUE(std::ranges::equal(read, streams, {}, parts, parts)) << size;
    }
}

TEST(CompoundFile, ListsTheTableItselfWhenTheHeaderIsFull)
{
    // 109 sectors of the table reach for 109 * 128 sectors; around there the list begins, and later its second sector
    for (const std::size_t sectors : {13841U, 13842U, 13843U, 30220U}) {
        const KeptStream large{{"Workbook"}, false, patterned(sectors * 512, 1)};
        const Bytes file = writeCompoundFile(std::span(&large, 1));
        EXPECT_EQ(file.size() % 512, 0U);
        const auto read = readCompoundFile(file);
        ASSERT_EQ(read.size(), 1U) << sectors;
        EXPECT_TRUE(read.front().data == large.data) << sectors;
    }
}

TEST(CompoundFile, ReadsSectorsOf4096Bytes)
{
    // header, workbook (2 sectors), directory, FAT
    Bytes file(largeSectorSize * 5);
    const Container small;
    std::copy_n(small.bytes.begin(), 512, file.begin());
    putU16(file, 26, 4);
    putU16(file, 30, 12);
    putU32(file, 44, 1);
    putU32(file, 48, 2);
    putU32(file, 60, endOfChainMark);
    putU32(file, 64, 0);
    putU32(file, 76, 3);
    const std::size_t directory = largeSectorSize * 3;
    std::copy_n(small.bytes.begin() + static_cast<std::ptrdiff_t>(small.entryPlace(0, 0)), 256,
                file.begin() + directory);
    putU32(file, directory + 76, 1);               // the root's child: the first entry
    putU32(file, directory + 116, endOfChainMark); // no mini stream
    putU32(file, directory + 120, 0);
    putU32(file, directory + 128 + 68, freeMark);
    putU32(file, directory + 128 + 72, freeMark);
    putU32(file, directory + 128 + 116, 0);
    const std::uint32_t links[] = {1, endOfChainMark, endOfChainMark, 0xFFFFFFFD};
    for (std::size_t index = 0; index < 4; ++index)
        putU32(file, largeSectorSize * 4 + index * 4, links[index]);
    file[4096] = std::byte{42};
    const auto read = readCompoundFile(file);
    ASSERT_EQ(read.size(), 1U);
    EXPECT_EQ(read.front().path, std::vector<std::string>{"Workbook"});
    EXPECT_EQ(read.front().data.size(), 5000U);
    EXPECT_EQ(read.front().data.front(), std::byte{42});
}

TEST(CompoundFile, RefusesWhatIsNotConsistent)
{
    // Entries: 0 root, 1 Workbook, 2 small, 3 macros, 4 one, 5 two. Sectors: Workbook 0 to 9, one 10 to 17, after them
    // the mini stream.
    using Damage = std::function<void(Container&)>;
    struct {
        const char* text;
        Damage damage;
    } const cases[] = {
        {"only a signature", [](Container& file) { file.bytes.resize(8); }},
        {"only a header", [](Container& file) { file.bytes.resize(512); }},
        {"cut off after the first sectors", [](Container& file) { file.bytes.resize(2048); }},
        {"sectors of an absurd size", [](Container& file) { putU16(file.bytes, 30, 0xFFFF); }},
        {"mini sectors of 1 byte", [](Container& file) { putU16(file.bytes, 32, 0); }},
        {"another limit of small streams", [](Container& file) { putU32(file.bytes, 56, 0); }},
        {"directory outside the file", [](Container& file) { putU32(file.bytes, 48, 0x7FFFFFFF); }},
        {"no directory", [](Container& file) { putU32(file.bytes, 48, endOfChainMark); }},
        {"no table", [](Container& file) { putU32(file.bytes, 76, freeMark); }},
        {"list of the table in a circle",
         [](Container& file) {
             putU32(file.bytes, 68, 3);
             for (std::size_t index = 0; index < 128; ++index)
                 putU32(file.bytes, Container::sectorPlace(3) + index * 4, index == 127 ? 3 : freeMark);
         }},
        {"table of 4 GB", [](Container& file) { putU32(file.bytes, 44, 0x02000000); }},
        {"mini table of 4 GB", [](Container& file) { putU32(file.bytes, 64, 0x02000000); }},
        {"storages within each other",
         [](Container& file) {
             file.entry(4, 66, 1);
             file.entry(4, 76, 3);
         }},
        {"mini table outside the file", [](Container& file) { putU32(file.bytes, 60, 99999); }},
        {"chain in a circle", [](Container& file) { file.link(5, 0); }},
        {"chain into another one", [](Container& file) { file.link(8, 12); }},
        {"chain outside the file", [](Container& file) { file.link(5, 5000); }},
        {"chain too short for its stream", [](Container& file) { file.link(5, endOfChainMark); }},
        {"directory in a circle", [](Container& file) { file.link(file.header(48), file.header(48)); }},
        {"mini chain in a circle", [](Container& file) { file.miniLink(0, 0); }},
        {"mini chain outside the mini stream", [](Container& file) { file.miniLink(0, 200); }},
        {"stream longer than its chain", [](Container& file) { file.entry(1, 120, 5121); }},
        {"mini stream of 4 GB", [](Container& file) { file.entry(0, 120, 0xFFFFFFFF); }},
        {"mini stream shorter than its streams", [](Container& file) { file.entry(0, 120, 64); }},
        {"stream outside the file", [](Container& file) { file.entry(1, 116, 100000); }},
        {"two streams in the same sectors", [](Container& file) { file.entry(4, 116, 0); }},
        {"link to an entry that does not exist", [](Container& file) { file.entry(0, 76, 1000); }},
        {"link to an unused entry", [](Container& file) { file.entry(0, 76, 7); }},
        {"names in a circle", [](Container& file) { file.entry(1, 68, 1); }},
        {"name of an odd length", [](Container& file) { putU16(file.bytes, file.entryPlace(1, 64), 7); }},
        {"name without length", [](Container& file) { putU16(file.bytes, file.entryPlace(1, 64), 0); }},
        {"first entry is not the root", [](Container& file) { file.bytes[file.entryPlace(0, 66)] = std::byte{2}; }},
    };
    ASSERT_NO_THROW(readCompoundFile(Container().bytes));
    for (const auto& [text, damage] : cases) {
        Container file;
        damage(file);
        EXPECT_THROW(readCompoundFile(file.bytes), DamagedFile) << text;
    }
}

TEST(CompoundFile, ReadsWhatIsClearAllTheSame)
{
    const auto workbookOf = [](const Container& file) {
        const auto streams = readCompoundFile(file.bytes);
        return std::ranges::find(streams, std::vector<std::string>{"Workbook"}, &KeptStream::path)->data;
    };
    Container runsOn; // beyond the stream's end, into another chain
    runsOn.link(9, 12);
    runsOn.link(runsOn.header(60), runsOn.header(60));
    EXPECT_EQ(workbookOf(runsOn), patterned(5000, 1));
    Container noSmallStreams; // but a chain for them, in sectors of others
    for (const std::size_t entry : {2U, 5U})
        noSmallStreams.entry(entry, 120, 0);
    noSmallStreams.entry(0, 116, 3);
    EXPECT_EQ(workbookOf(noSmallStreams), patterned(5000, 1));
    Container cut; // the stream's last sector is the file's, and ends with the stream
    const auto last = static_cast<std::uint32_t>(cut.bytes.size() / sectorSize - 1);
    const Bytes end = patterned(5000, 1);
    cut.bytes.insert(cut.bytes.end(), end.begin() + 9 * sectorSize, end.end());
    cut.link(8, last);
    cut.link(last, endOfChainMark);
    EXPECT_EQ(workbookOf(cut), end);
}

TEST(CompoundFile, RefusesNamesThatItCannotHold)
{
    for (const std::string& name : {std::string(), std::string(32, 'x')}) {
        const KeptStream stream{{name}, false, {}};
        EXPECT_THROW(writeCompoundFile(std::span(&stream, 1)), EngineError);
    }
    const KeptStream lost{{"missing", "stream"}, false, {}};
    EXPECT_THROW(writeCompoundFile(std::span(&lost, 1)), EngineError);
    const std::vector<KeptStream> twins = {{{"Name"}, false, {}}, {{"NAME"}, false, {}}};
    EXPECT_THROW(writeCompoundFile(twins), EngineError);
}

} // namespace wagemill::engine::xls
