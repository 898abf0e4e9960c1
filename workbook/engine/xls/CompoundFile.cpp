#include "workbook/engine/xls/CompoundFile.h"

#include "app/base/text/LetterCase.h"
#include "app/base/text/Unicode.h"
#include "workbook/engine/xls/RecordFields.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <map>
#include <utility>

namespace wagemill::engine::xls {

namespace {

// Fixed numbers, [MS-CFB] 2.1 to 2.6.
constexpr std::uint32_t freeSector = 0xFFFFFFFF;
constexpr std::uint32_t endOfChain = 0xFFFFFFFE;
constexpr std::uint32_t fatSectorMark = 0xFFFFFFFD;
constexpr std::uint32_t difatSectorMark = 0xFFFFFFFC;
constexpr std::uint32_t noEntry = 0xFFFFFFFF;
constexpr std::size_t writtenSectorSize = 512;
constexpr std::size_t miniSectorSize = 64;
constexpr std::size_t linkSize = 4;
constexpr std::size_t linksPerSector = writtenSectorSize / linkSize;
constexpr std::size_t directoryEntrySize = 128;
constexpr std::size_t headerFatSectors = 109;
constexpr std::size_t maxNameBytes = 64; // with the zero at its end
constexpr std::size_t maxEntries = 10000;
constexpr std::size_t maxStorageDepth = 32;

using ClassId = std::array<std::uint8_t, 16>;
/// The class of a workbook's root storage, by which shells tell a workbook from other compound files.
constexpr ClassId workbookClassId = {0x20, 0x08, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00,
                                     0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46};

enum class EntryType : std::uint8_t { Unused = 0, Storage = 1, Stream = 2, Root = 5 };

struct Header {
    std::uint64_t signature = compoundFileSignature;
    std::uint16_t minorVersion = 0x3E;
    std::uint16_t majorVersion = 3;
    std::uint16_t byteOrder = 0xFFFE;
    std::uint16_t sectorShift = 9;
    std::uint16_t miniSectorShift = 6;
    std::uint32_t fatSectors = 0;
    std::uint32_t firstDirectorySector = 0;
    std::uint32_t miniStreamCutoff = xls::miniStreamCutoff;
    std::uint32_t firstMiniFatSector = 0;
    std::uint32_t miniFatSectors = 0;
    std::uint32_t firstDifatSector = 0;
    std::uint32_t difatSectors = 0;
    std::array<std::uint32_t, headerFatSectors> listedFatSectors = {};
};

void headerFields(auto form, auto& header)
{
    form.u64(header.signature);
    form.zeros(16);
    form.u16(header.minorVersion, header.majorVersion, header.byteOrder, header.sectorShift, header.miniSectorShift);
    form.zeros(10);
    form.u32(header.fatSectors, header.firstDirectorySector);
    form.zeros(4);
    form.u32(header.miniStreamCutoff, header.firstMiniFatSector, header.miniFatSectors, header.firstDifatSector,
             header.difatSectors);
    for (auto& sector : header.listedFatSectors)
        form.u32(sector);
}

struct DirectoryEntry {
    std::array<char16_t, maxNameBytes / 2> units = {}; ///< of the name
    std::uint16_t nameBytes = 0;                       ///< with the zero at its end
    EntryType type = EntryType::Unused;
    bool black = false;
    std::uint32_t left = noEntry;
    std::uint32_t right = noEntry;
    std::uint32_t child = noEntry;
    ClassId classId = {};
    std::uint32_t start = 0;
    std::uint64_t size = 0;
};

void directoryFields(auto form, auto& entry)
{
    for (auto& unit : entry.units)
        form.u16(unit);
    form.u16(entry.nameBytes);
    form.u8(entry.type, entry.black);
    form.u32(entry.left, entry.right, entry.child);
    for (auto& byte : entry.classId)
        form.u8(byte);
    form.zeros(20);
    form.u32(entry.start);
    form.u64(entry.size);
}

Header readHeader(std::span<const std::byte> bytes)
{
    if (bytes.size() < 512)
        throw DamagedFile("it ends within its first 512 bytes");
    ByteReader reader(bytes);
    Header header;
    headerFields(FieldReader(reader), header);
    if ((header.sectorShift != 9 && header.sectorShift != 12) || header.miniSectorShift != 6)
        throw DamagedFile("its sectors have an impossible size");
    if (header.miniStreamCutoff != miniStreamCutoff)
        throw DamagedFile("its limit for small streams is not 4096 bytes");
    if (std::max({header.fatSectors, header.miniFatSectors, header.difatSectors}) > bytes.size() >> header.sectorShift)
        throw DamagedFile("its tables of sectors claim more bytes than the file has");
    return header;
}

std::size_t quotientRoundedUp(std::size_t dividend, std::size_t divisor)
{
    return (dividend + divisor - 1) / divisor;
}

/// Sectors of one kind: FAT and marks give the chains. Each sector is given out once, so no chain can run in a circle
/// or into another one.
class SectorChains {
public:
    SectorChains(std::span<const std::byte> bytes, std::size_t sectorSize)
        : m_bytes(bytes), m_sectorSize(sectorSize), m_taken(quotientRoundedUp(bytes.size(), sectorSize))
    {
    }

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
        if (size > m_taken.size() * m_sectorSize)
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

std::u16string_view nameOf(const DirectoryEntry& entry)
{
    return {entry.units.data(), entry.nameBytes / 2U - 1};
}

std::vector<DirectoryEntry> readDirectory(const std::vector<std::byte>& bytes, std::uint16_t majorVersion)
{
    std::vector<DirectoryEntry> entries;
    ByteReader reader(bytes);
    while (reader.remaining() >= directoryEntrySize) {
        if (entries.size() >= maxEntries)
            throw DamagedFile("its directory has more than 10000 entries");
        DirectoryEntry& entry = entries.emplace_back();
        directoryFields(FieldReader(reader), entry);
        if (majorVersion == 3)
            entry.size &= 0xFFFFFFFFU; // the upper half means nothing in this version
        const bool isNamed = entry.nameBytes >= 2 && entry.nameBytes <= maxNameBytes && entry.nameBytes % 2 == 0;
        if (entry.type != EntryType::Unused && !isNamed)
            throw DamagedFile("a name in its directory has an impossible length");
    }
    if (entries.empty() || entries.front().type != EntryType::Root)
        throw DamagedFile("its directory has no root");
    return entries;
}

/// Walks the tree of names below the root, each entry once.
std::vector<KeptStream> readStreams(const std::vector<DirectoryEntry>& entries, SectorChains& sectors,
                                    SectorChains& miniSectors)
{
    struct Pending {
        std::uint32_t index;
        std::vector<std::string> path; ///< of the storage it lies in
    };
    std::vector<KeptStream> streams;
    std::vector<bool> visited(entries.size());
    visited[0] = true;
    std::vector<Pending> pending = {{entries.front().child, {}}};
    while (!pending.empty()) {
        auto [index, path] = std::move(pending.back());
        pending.pop_back();
        if (index == noEntry)
            continue;
        if (index >= entries.size() || entries[index].type == EntryType::Unused)
            throw DamagedFile("its directory names an entry that does not exist");
        if (visited[index])
            throw DamagedFile("its directory runs in a circle");
        visited[index] = true;
        const DirectoryEntry& entry = entries[index];
        pending.push_back({entry.right, path});
        pending.push_back({entry.left, path});
        if (nameOf(entry).empty() || nameOf(entry).find_first_of(u"/\\:!") != std::u16string_view::npos)
            continue; // not a name that a file may have: nothing of ours
        path.push_back(toUtf8(nameOf(entry)));
        if (path.size() > maxStorageDepth)
            throw DamagedFile("its storages are nested too deeply");
        if (entry.type == EntryType::Stream) {
            SectorChains& chains = entry.size < miniStreamCutoff ? miniSectors : sectors;
            streams.push_back({std::move(path), false, chains.stream(entry.start, entry.size)});
        } else if (entry.type == EntryType::Storage) {
            pending.push_back({entry.child, path});
            const auto classId = std::as_bytes(std::span(entry.classId));
            streams.push_back({std::move(path), true, {}});
            if (entry.classId != ClassId{})
                streams.back().data.assign(classId.begin(), classId.end());
        }
    }
    return streams;
}

/// Appends a chain of neighbouring sectors to a file allocation table.
std::uint32_t appendChain(std::vector<std::uint32_t>& table, std::size_t sectors)
{
    if (sectors == 0)
        return endOfChain;
    const auto start = static_cast<std::uint32_t>(table.size());
    for (std::size_t index = 1; index < sectors; ++index)
        table.push_back(static_cast<std::uint32_t>(start + index));
    table.push_back(endOfChain);
    return start;
}

struct DirectoryNode : DirectoryEntry {
    DirectoryNode(std::u16string_view name, EntryType entryType, std::span<const std::byte> content) : data(content)
    {
        std::ranges::copy(name, units.begin());
        nameBytes = static_cast<std::uint16_t>(name.size() * 2 + 2);
        type = entryType;
        black = true;
        if (type == EntryType::Root)
            classId = workbookClassId;
        else if (type == EntryType::Storage && data.size() == classId.size())
            std::ranges::transform(data, classId.begin(),
                                   [](std::byte byte) { return std::to_integer<std::uint8_t>(byte); });
    }

    std::span<const std::byte> data;
    std::vector<std::uint32_t> children;
};

/// Shorter names first, then by capital letters ([MS-CFB] 2.6.4).
std::pair<std::size_t, std::u16string> sortKey(std::u16string_view name)
{
    std::u16string capitals(name);
    std::ranges::transform(capitals, capitals.begin(),
                           [](char16_t unit) { return static_cast<char16_t>(upperCase(unit)); });
    return {name.size(), std::move(capitals)};
}

class CompoundFileWriter {
public:
    explicit CompoundFileWriter(std::span<const KeptStream> entries)
    {
        m_nodes.emplace_back(u"Root Entry", EntryType::Root, std::span<const std::byte>());
        std::map<std::vector<std::string>, std::uint32_t> storages{{{}, 0}};
        for (const KeptStream& entry : entries)
            append(entry, storages);
        for (DirectoryNode& node : m_nodes)
            linkChildren(node);
    }

    std::vector<std::byte> bytes()
    {
        placeStreams();
        placeMiniStreams();
        m_header.firstDirectorySector =
            appendChain(m_fat, quotientRoundedUp(m_nodes.size() * directoryEntrySize, writtenSectorSize));
        placeTables();
        m_file.reserve((m_fat.size() + 1) * writtenSectorSize);
        headerFields(FieldWriter(m_file), m_header);
        writeStreams();
        writeDirectory();
        writeTables();
        return m_file.take();
    }

private:
    void append(const KeptStream& entry, std::map<std::vector<std::string>, std::uint32_t>& storages)
    {
        const auto index = static_cast<std::uint32_t>(m_nodes.size());
        m_nodes[storages.at({entry.path.begin(), entry.path.end() - 1})].children.push_back(index);
        m_nodes.emplace_back(toUtf16(entry.path.back()), entry.isStorage ? EntryType::Storage : EntryType::Stream,
                             entry.data);
        if (entry.isStorage)
            storages.emplace(entry.path, index);
    }

    /// A balanced tree of the storage's entries. All are black but those of a last level that is not full: so every way
    /// down passes as many black ones.
    void linkChildren(DirectoryNode& storage)
    {
        std::vector<std::uint32_t>& children = storage.children;
        const auto key = [&](std::uint32_t index) { return sortKey(nameOf(m_nodes[index])); };
        std::ranges::sort(children, {}, key);
        const auto twin = std::ranges::adjacent_find(children, {}, key);
        if (twin != children.end())
            throw EngineError("Two parts of the workbook are named \"" + toUtf8(nameOf(m_nodes[*twin])) + "\".");
        const bool lastLevelFull = std::has_single_bit(children.size() + 1);
        const auto levels = static_cast<std::size_t>(std::bit_width(children.size()));
        storage.child = subtree(children, lastLevelFull ? levels + 1 : levels);
    }

    /// redLevel  the level, counted from 1 at the top, whose entries are red
    std::uint32_t subtree(std::span<const std::uint32_t> sorted, std::size_t redLevel)
    {
        if (sorted.empty())
            return noEntry;
        const std::size_t middle = sorted.size() / 2;
        DirectoryNode& node = m_nodes[sorted[middle]];
        node.black = redLevel != 1;
        node.left = subtree(sorted.first(middle), redLevel - 1);
        node.right = subtree(sorted.subspan(middle + 1), redLevel - 1);
        return sorted[middle];
    }

    void placeStreams()
    {
        for (DirectoryNode& node : m_nodes) {
            if (node.type != EntryType::Stream)
                continue;
            node.size = node.data.size();
            node.start = node.size < miniStreamCutoff
                             ? appendChain(m_miniFat, quotientRoundedUp(node.size, miniSectorSize))
                             : appendChain(m_fat, quotientRoundedUp(node.size, writtenSectorSize));
        }
    }

    void placeMiniStreams()
    {
        DirectoryNode& root = m_nodes.front();
        root.size = m_miniFat.size() * miniSectorSize;
        root.start = appendChain(m_fat, quotientRoundedUp(root.size, writtenSectorSize));
        const std::size_t sectors = quotientRoundedUp(m_miniFat.size(), linksPerSector);
        m_header.miniFatSectors = static_cast<std::uint32_t>(sectors);
        m_header.firstMiniFatSector = appendChain(m_fat, sectors);
    }

    /// The FAT describes its own sectors and those that list them, so their numbers are found step by step.
    void placeTables()
    {
        m_fatStart = m_fat.size();
        for (std::size_t before = 1; before != m_fatSectors + m_difatSectors;) {
            before = m_fatSectors + m_difatSectors;
            m_fatSectors = quotientRoundedUp(m_fatStart + before, linksPerSector);
            m_difatSectors = m_fatSectors <= headerFatSectors
                                 ? 0
                                 : quotientRoundedUp(m_fatSectors - headerFatSectors, linksPerSector - 1);
        }
        m_fat.insert(m_fat.end(), m_fatSectors, fatSectorMark);
        m_fat.insert(m_fat.end(), m_difatSectors, difatSectorMark);
        m_header.fatSectors = static_cast<std::uint32_t>(m_fatSectors);
        m_header.difatSectors = static_cast<std::uint32_t>(m_difatSectors);
        m_header.firstDifatSector = difatSector(0);
        for (std::size_t index = 0; index < headerFatSectors; ++index)
            m_header.listedFatSectors[index] = fatSector(index);
    }

    /// The number of the `index`-th sector of the FAT, free after the last one.
    std::uint32_t fatSector(std::size_t index) const
    {
        return index < m_fatSectors ? static_cast<std::uint32_t>(m_fatStart + index) : freeSector;
    }

    /// The number of the `index`-th sector that lists those of the FAT, the end of the chain after the last one.
    std::uint32_t difatSector(std::size_t index) const
    {
        return index < m_difatSectors ? static_cast<std::uint32_t>(m_fatStart + m_fatSectors + index) : endOfChain;
    }

    void writeStreams()
    {
        for (const bool isSmall : {false, true})
            for (const DirectoryNode& node : m_nodes)
                if (node.type == EntryType::Stream && (node.size < miniStreamCutoff) == isSmall) {
                    m_file.bytes(node.data);
                    padTo(isSmall ? miniSectorSize : writtenSectorSize);
                }
        padTo(writtenSectorSize);
        writeLinks(m_miniFat);
    }

    /// The next multiple of a size.
    void padTo(std::size_t unit) { m_file.zeros(quotientRoundedUp(m_file.size(), unit) * unit - m_file.size()); }

    void writeLinks(const std::vector<std::uint32_t>& links)
    {
        for (const std::uint32_t link : links)
            m_file.u32(link);
        while (m_file.size() % writtenSectorSize != 0)
            m_file.u32(freeSector);
    }

    void writeDirectory()
    {
        for (const DirectoryNode& node : m_nodes)
            directoryFields(FieldWriter(m_file), node);
        const DirectoryEntry unused;
        while (m_file.size() % writtenSectorSize != 0)
            directoryFields(FieldWriter(m_file), unused);
    }

    void writeTables()
    {
        writeLinks(m_fat);
        for (std::size_t sector = 0; sector < m_difatSectors; ++sector) {
            const std::size_t first = headerFatSectors + sector * (linksPerSector - 1);
            for (std::size_t index = first; index < first + linksPerSector - 1; ++index)
                m_file.u32(fatSector(index));
            m_file.u32(difatSector(sector + 1));
        }
    }

    std::vector<DirectoryNode> m_nodes;
    std::vector<std::uint32_t> m_fat;
    std::vector<std::uint32_t> m_miniFat;
    Header m_header;
    std::size_t m_fatStart = 0;
    std::size_t m_fatSectors = 0;
    std::size_t m_difatSectors = 0;
    ByteWriter m_file;
};

} // namespace

std::vector<KeptStream> readCompoundFile(std::span<const std::byte> bytes)
{
    const Header header = readHeader(bytes);
    const std::size_t sectorSize = std::size_t{1} << header.sectorShift;
    if (bytes.size() <= sectorSize)
        throw DamagedFile("it ends after its header");
    SectorChains sectors(bytes.subspan(sectorSize), sectorSize);
    readFat(header, sectors);
    const auto entries = readDirectory(sectors.chain(header.firstDirectorySector), header.majorVersion);

    const auto isSmallStream = [](const DirectoryEntry& entry) {
        return entry.type == EntryType::Stream && entry.size > 0 && entry.size < miniStreamCutoff;
    };
    std::vector<std::byte> miniStream;
    if (std::ranges::any_of(entries, isSmallStream))
        miniStream = sectors.stream(entries.front().start, entries.front().size);
    SectorChains miniSectors(miniStream, miniSectorSize);
    if (!miniStream.empty())
        miniSectors.appendLinks(
            sectors.chain(header.firstMiniFatSector, quotientRoundedUp(miniStream.size(), miniSectorSize) * linkSize));
    return readStreams(entries, sectors, miniSectors);
}

std::vector<std::byte> writeCompoundFile(std::span<const KeptStream> entries)
{
    return CompoundFileWriter(entries).bytes();
}

} // namespace wagemill::engine::xls
