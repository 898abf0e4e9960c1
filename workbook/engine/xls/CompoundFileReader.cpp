#include "app/base/Bytes.h"
#include "app/base/text/Unicode.h"
#include "workbook/engine/xls/CompoundFile.h"
#include "workbook/engine/xls/CompoundSectors.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace wagemill::engine::xls {

namespace {

constexpr std::size_t smallestFile = 512;
constexpr std::size_t mostEntries = 10000;
constexpr std::size_t deepestStorage = 32;
constexpr std::size_t linkSize = 4;

struct Header {
    std::uint16_t majorVersion = 3;
    std::size_t sectorSize = 512;
    std::uint32_t fatSectors = 0;
    std::uint32_t firstDirectorySector = 0;
    std::uint32_t firstMiniFatSector = 0;
    std::uint32_t firstDifatSector = 0;
    std::vector<std::uint32_t> listedFatSectors;
};

struct DirectoryEntry {
    std::string name;
    EntryType type = EntryType::Unused;
    std::uint32_t left = noEntry;
    std::uint32_t right = noEntry;
    std::uint32_t child = noEntry;
    std::vector<std::byte> classId; ///< empty when zero
    std::uint32_t start = 0;
    std::uint64_t size = 0;
};

Header readHeader(std::span<const std::byte> bytes)
{
    if (bytes.size() < smallestFile)
        throw DamagedFile("it ends within its first 512 bytes");
    ByteReader reader(bytes);
    reader.seek(26);
    Header header;
    header.majorVersion = reader.u16();
    reader.skip(2);
    const std::uint16_t sectorShift = reader.u16();
    const std::uint16_t miniSectorShift = reader.u16();
    if ((sectorShift != 9 && sectorShift != 12) || miniSectorShift != 6)
        throw DamagedFile("its sectors have an impossible size");
    header.sectorSize = std::size_t{1} << sectorShift;
    reader.seek(44);
    header.fatSectors = reader.u32();
    header.firstDirectorySector = reader.u32();
    reader.skip(4);
    if (reader.u32() != miniStreamCutoff)
        throw DamagedFile("its limit for small streams is not 4096 bytes");
    header.firstMiniFatSector = reader.u32();
    const std::uint32_t miniFatSectors = reader.u32();
    header.firstDifatSector = reader.u32();
    const std::uint32_t difatSectors = reader.u32();
    if (std::max({header.fatSectors, miniFatSectors, difatSectors}) > bytes.size() / header.sectorSize)
        throw DamagedFile("its tables of sectors claim more bytes than the file has");
    for (std::size_t index = 0; index < headerFatSectors; ++index)
        header.listedFatSectors.push_back(reader.u32());
    return header;
}

/// Sectors of one kind: FAT and marks tell the chains. Each sector is given out once, so no chain can run in a circle
/// or into another one.
class SectorChains {
public:
    SectorChains(std::span<const std::byte> bytes, std::size_t sectorSize)
        : m_bytes(bytes), m_sectorSize(sectorSize), m_taken((bytes.size() + sectorSize - 1) / sectorSize)
    {
    }

    std::size_t sectors() const { return m_taken.size(); }
    /// The sector's bytes; fewer where the file is cut off within it.
    std::span<const std::byte> take(std::uint32_t sector)
    {
        if (sector >= m_taken.size())
            throw DamagedFile("a chain of sectors leads outside the file");
        if (m_taken[sector])
            throw DamagedFile("a sector belongs to two chains");
        m_taken[sector] = true;
        return m_bytes.subspan(sector * m_sectorSize, std::min(m_sectorSize, m_bytes.size() - sector * m_sectorSize));
    }
    void appendLinks(std::span<const std::byte> sector)
    {
        ByteReader reader(sector);
        while (reader.remaining() >= 4)
            m_links.push_back(reader.u32());
    }
    /// The bytes of the chain, whole sectors, until there are `size`: what the chain holds beyond is not used, and
    /// other chains may. The end that a cut last sector lacks is zero.
    std::vector<std::byte> chain(std::uint32_t start, std::uint64_t size = std::numeric_limits<std::uint64_t>::max())
    {
        std::vector<std::byte> joined;
        for (std::uint32_t sector = start; sector != endOfChain && joined.size() < size; sector = m_links[sector]) {
            const auto bytes = take(sector);
            joined.insert(joined.end(), bytes.begin(), bytes.end());
            joined.resize(joined.size() + m_sectorSize - bytes.size());
            if (sector >= m_links.size())
                throw DamagedFile("a chain of sectors leads outside its table");
        }
        return joined;
    }
    std::vector<std::byte> stream(std::uint32_t start, std::uint64_t size)
    {
        if (size == 0)
            return {};
        if (size > sectors() * m_sectorSize)
            throw DamagedFile("a stream claims more bytes than the file has");
        std::vector<std::byte> bytes = chain(start, size);
        if (bytes.size() < size)
            throw DamagedFile("a stream is longer than its chain of sectors; the file may be cut off");
        bytes.resize(static_cast<std::size_t>(size));
        return bytes;
    }

private:
    std::span<const std::byte> m_bytes;
    std::size_t m_sectorSize;
    std::vector<bool> m_taken;
    std::vector<std::uint32_t> m_links;
};

void readFat(const Header& header, SectorChains& sectors)
{
    std::size_t listed = 0;
    const auto appendFatSector = [&](std::uint32_t sector) {
        if (sector == freeSector || listed >= header.fatSectors)
            return;
        sectors.appendLinks(sectors.take(sector));
        ++listed;
    };
    std::ranges::for_each(header.listedFatSectors, appendFatSector);
    for (std::uint32_t difat = header.firstDifatSector; difat != endOfChain && difat != freeSector;) {
        ByteReader reader(sectors.take(difat));
        while (reader.remaining() >= 8)
            appendFatSector(reader.u32());
        difat = reader.u32();
    }
}

DirectoryEntry readDirectoryEntry(ByteReader& reader, std::uint16_t majorVersion)
{
    DirectoryEntry entry;
    const auto nameBytes = reader.bytes(64);
    const std::uint16_t nameSize = reader.u16();
    entry.type = static_cast<EntryType>(reader.u8());
    reader.skip(1);
    entry.left = reader.u32();
    entry.right = reader.u32();
    entry.child = reader.u32();
    const auto classId = reader.bytes(classIdSize);
    if (std::ranges::any_of(classId, [](std::byte byte) { return byte != std::byte{0}; }))
        entry.classId.assign(classId.begin(), classId.end());
    reader.skip(20);
    entry.start = reader.u32();
    entry.size = reader.u64();
    if (majorVersion == 3)
        entry.size &= 0xFFFFFFFFU; // the upper half means nothing in this version
    if (entry.type == EntryType::Unused)
        return entry;
    if (nameSize < 2 || nameSize > 64 || nameSize % 2 != 0)
        throw DamagedFile("a name in its directory has an impossible length");
    std::u16string name;
    ByteReader units(nameBytes);
    while (units.position() + 2 < nameSize)
        name.push_back(units.u16());
    entry.name = toUtf8(name);
    return entry;
}

std::vector<DirectoryEntry> readDirectory(const std::vector<std::byte>& bytes, std::uint16_t majorVersion)
{
    std::vector<DirectoryEntry> entries;
    ByteReader reader(bytes);
    while (reader.remaining() >= directoryEntrySize) {
        if (entries.size() >= mostEntries)
            throw DamagedFile("its directory has more than 10000 entries");
        entries.push_back(readDirectoryEntry(reader, majorVersion));
    }
    if (entries.empty() || entries.front().type != EntryType::Root)
        throw DamagedFile("its directory has no root");
    return entries;
}

bool isSmallStream(const DirectoryEntry& entry)
{
    return entry.type == EntryType::Stream && entry.size > 0 && entry.size < miniStreamCutoff;
}

/// Walks the tree of names below the root, each entry once.
class DirectoryWalk {
public:
    DirectoryWalk(const std::vector<DirectoryEntry>& entries, SectorChains& sectors, SectorChains& miniSectors)
        : m_entries(entries), m_sectors(sectors), m_miniSectors(miniSectors), m_visited(entries.size())
    {
        m_visited[0] = true;
    }

    std::vector<KeptStream> streams()
    {
        m_pending.push_back({m_entries.front().child, {}});
        while (!m_pending.empty()) {
            auto [index, path] = std::move(m_pending.back());
            m_pending.pop_back();
            if (index != noEntry)
                visit(index, std::move(path));
        }
        return std::move(m_streams);
    }

private:
    struct Pending {
        std::uint32_t index;
        std::vector<std::string> path; ///< of the storage it lies in
    };

    void visit(std::uint32_t index, std::vector<std::string> path)
    {
        if (index >= m_entries.size() || m_entries[index].type == EntryType::Unused)
            throw DamagedFile("its directory names an entry that does not exist");
        if (m_visited[index])
            throw DamagedFile("its directory runs in a circle");
        m_visited[index] = true;
        const DirectoryEntry& entry = m_entries[index];
        m_pending.push_back({entry.right, path});
        m_pending.push_back({entry.left, path});
        if (entry.name.empty() || entry.name.find_first_of("/\\:!") != std::string::npos)
            return; // not a name that a file may have: nothing of ours
        path.push_back(entry.name);
        if (path.size() > deepestStorage)
            throw DamagedFile("its storages are nested too deeply");
        if (entry.type == EntryType::Stream) {
            m_streams.push_back({std::move(path), false, contents(entry)});
        } else if (entry.type == EntryType::Storage) {
            m_pending.push_back({entry.child, path});
            m_streams.push_back({std::move(path), true, entry.classId});
        }
    }

    std::vector<std::byte> contents(const DirectoryEntry& entry)
    {
        return (entry.size < miniStreamCutoff ? m_miniSectors : m_sectors).stream(entry.start, entry.size);
    }

    const std::vector<DirectoryEntry>& m_entries;
    SectorChains& m_sectors;
    SectorChains& m_miniSectors;
    std::vector<bool> m_visited;
    std::vector<Pending> m_pending;
    std::vector<KeptStream> m_streams;
};

} // namespace

std::vector<KeptStream> readCompoundFile(std::span<const std::byte> bytes)
{
    const Header header = readHeader(bytes);
    if (bytes.size() <= header.sectorSize)
        throw DamagedFile("it ends behind its header");
    SectorChains sectors(bytes.subspan(header.sectorSize), header.sectorSize);
    readFat(header, sectors);
    const auto entries = readDirectory(sectors.chain(header.firstDirectorySector), header.majorVersion);

    std::vector<std::byte> miniStream;
    if (std::ranges::any_of(entries, isSmallStream))
        miniStream = sectors.stream(entries.front().start, entries.front().size);
    SectorChains miniSectors(miniStream, miniSectorSize);
    if (!miniStream.empty())
        miniSectors.appendLinks(sectors.chain(header.firstMiniFatSector, miniSectors.sectors() * linkSize));
    return DirectoryWalk(entries, sectors, miniSectors).streams();
}

} // namespace wagemill::engine::xls
