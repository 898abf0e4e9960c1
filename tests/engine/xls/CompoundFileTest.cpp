#include "workbook/engine/xls/CompoundFile.h"
#include "app/base/Bytes.h"
#include "tests/engine/xls/TestBooks.h"

#include <gtest/gtest.h>

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

constexpr std::size_t sectorPlace(std::uint32_t sector)
{
    return (std::size_t{sector} + 1) * sectorSize;
}

/// A compound file of a large stream, a small one, and a storage with one of each, and the places of its fields.
class Container {
public:
    std::uint32_t header(std::size_t position) const { return ByteReader(bytes, position).u32(); }
    std::size_t link(std::size_t sector) const { return sectorPlace(header(76)) + sector * 4; }
    std::size_t miniLink(std::size_t sector) const { return sectorPlace(header(60)) + sector * 4; }
    /// Entries are in the order in which they were written, the root before them.
    std::size_t entry(std::uint32_t index, std::size_t field) const
    {
        return sectorPlace(header(48) + index / 4) + index % 4 * entrySize + field;
    }

    Bytes bytes = writeCompoundFile(std::to_array<KeptStream>({{{"Workbook"}, false, patterned(5000, 1)},
                                                               {{"small"}, false, patterned(100, 2)},
                                                               {{"macros"}, true, {}},
                                                               {{"macros", "one"}, false, patterned(4096, 3)},
                                                               {{"macros", "two"}, false, patterned(4095, 4)}}));
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
    constexpr std::size_t directory = largeSectorSize * 3;
    const auto entries = std::span(small.bytes).subspan(small.entry(0, 0), 2 * entrySize);
    std::ranges::copy(std::span(small.bytes).first(sectorSize), file.begin());
    std::ranges::copy(entries, file.begin() + directory);
    putU16(file, 26, 4);
    putU16(file, 30, 12);
    constexpr std::size_t links = largeSectorSize * 4;
    // of the header, of the root, which has a child and no mini stream, of the workbook, and the table
    const std::pair<std::size_t, std::uint32_t> fields[] = {{44, 1},
                                                            {48, 2},
                                                            {60, endOfChainMark},
                                                            {64, 0},
                                                            {76, 3},
                                                            {directory + 76, 1},
                                                            {directory + 116, endOfChainMark},
                                                            {directory + 120, 0},
                                                            {directory + 128 + 68, freeMark},
                                                            {directory + 128 + 72, freeMark},
                                                            {directory + 128 + 116, 0},
                                                            {links, 1},
                                                            {links + 4, endOfChainMark},
                                                            {links + 8, endOfChainMark},
                                                            {links + 12, 0xFFFFFFFD}};
    for (const auto& [place, value] : fields)
        putU32(file, place, value);
    file[4096] = std::byte{42};
    const auto read = readCompoundFile(file);
    ASSERT_EQ(read.size(), 1U);
    EXPECT_EQ(read.front().data.size(), 5000U);
    EXPECT_EQ(read.front().data.front(), std::byte{42});
}

TEST(CompoundFile, RefusesWhatIsNotConsistent)
{
    // Entries: 0 root, 1 Workbook, 2 small, 3 macros, 4 one, 5 two. Sectors: Workbook 0 to 9, one 10 to 17, after them
    // the mini stream.
    const Container whole;
    struct {
        const char* text;
        std::size_t place;
        std::uint32_t value;
        std::size_t bytes = 4;
    } const cases[] = {
        {"sectors of an absurd size", 30, 0xFFFF, 2},
        {"mini sectors of 1 byte", 32, 0, 2},
        {"another limit of small streams", 56, 0},
        {"directory outside the file", 48, 0x7FFFFFFF},
        {"no directory", 48, endOfChainMark},
        {"no table", 76, freeMark},
        {"table of 4 GB", 44, 0x02000000},
        {"mini table of 4 GB", 64, 0x02000000},
        {"mini table outside the file", 60, 99999},
        {"chain in a circle", whole.link(5), 0},
        {"chain into another one", whole.link(8), 12},
        {"chain outside the file", whole.link(5), 5000},
        {"chain too short for its stream", whole.link(5), endOfChainMark},
        {"directory in a circle", whole.link(whole.header(48)), whole.header(48)},
        {"mini chain in a circle", whole.miniLink(0), 0},
        {"mini chain outside the mini stream", whole.miniLink(0), 200},
        {"stream longer than its chain", whole.entry(1, 120), 5121},
        {"mini stream of 4 GB", whole.entry(0, 120), 0xFFFFFFFF},
        {"mini stream shorter than its streams", whole.entry(0, 120), 64},
        {"stream outside the file", whole.entry(1, 116), 100000},
        {"two streams in the same sectors", whole.entry(4, 116), 0},
        {"link to an entry that does not exist", whole.entry(0, 76), 1000},
        {"link to an unused entry", whole.entry(0, 76), 7},
        {"names in a circle", whole.entry(1, 68), 1},
        {"name of an odd length", whole.entry(1, 64), 7, 2},
        {"name without length", whole.entry(1, 64), 0, 2},
        {"first entry is not the root", whole.entry(0, 66), 2, 1},
    };
    ASSERT_NO_THROW(readCompoundFile(whole.bytes));
    for (const auto& each : cases) {
        Bytes file = whole.bytes;
        for (std::size_t index = 0; index < each.bytes; ++index)
            file[each.place + index] = static_cast<std::byte>(each.value >> 8 * index);
        EXPECT_THROW(readCompoundFile(file), DamagedFile) << each.text;
    }
    for (const std::size_t size : {8, 512})
        EXPECT_THROW(readCompoundFile(std::span(whole.bytes).first(size)), DamagedFile) << size;
    Bytes circle = whole.bytes; // the list of the table
    putU32(circle, 68, 3);
    std::ranges::fill(std::span(circle).subspan(sectorPlace(3), sectorSize), std::byte{0xFF});
    putU32(circle, sectorPlace(4) - 4, 3);
    EXPECT_THROW(readCompoundFile(circle), DamagedFile);
    Bytes nested = whole.bytes; // storages within each other
    putU32(nested, whole.entry(4, 66), 1);
    putU32(nested, whole.entry(4, 76), 3);
    EXPECT_THROW(readCompoundFile(nested), DamagedFile);
}

TEST(CompoundFile, ReadsWhatIsClearAllTheSame)
{
    const auto workbookOf = [](const Bytes& file) {
        const auto streams = readCompoundFile(file);
        return std::ranges::find(streams, std::vector<std::string>{"Workbook"}, &KeptStream::path)->data;
    };
    const Container whole;
    const Bytes workbook = patterned(5000, 1);
    Bytes runsOn = whole.bytes; // beyond the stream's end, into another chain
    putU32(runsOn, whole.link(9), 12);
    putU32(runsOn, whole.link(whole.header(60)), whole.header(60));
    EXPECT_EQ(workbookOf(runsOn), workbook);
    Bytes noSmallStreams = whole.bytes; // but a chain for them, in sectors of others
    putU32(noSmallStreams, whole.entry(2, 120), 0);
    putU32(noSmallStreams, whole.entry(5, 120), 0);
    putU32(noSmallStreams, whole.entry(0, 116), 3);
    EXPECT_EQ(workbookOf(noSmallStreams), workbook);
    Bytes cut = whole.bytes; // the stream's last sector is the file's, and ends with the stream
    const auto last = static_cast<std::uint32_t>(cut.size() / sectorSize - 1);
    cut.insert(cut.end(), workbook.begin() + 9 * sectorSize, workbook.end());
    putU32(cut, whole.link(8), last);
    putU32(cut, whole.link(last), endOfChainMark);
    EXPECT_EQ(workbookOf(cut), workbook);
}

TEST(CompoundFile, RefusesANameThatOccursTwice)
{
    const std::vector<KeptStream> twins = {{{"Name"}, false, {}}, {{"NAME"}, false, {}}};
    EXPECT_THROW(writeCompoundFile(twins), EngineError);
}

} // namespace wagemill::engine::xls
