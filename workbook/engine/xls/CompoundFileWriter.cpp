#include "app/base/Bytes.h"
#include "app/base/text/LetterCase.h"
#include "app/base/text/Unicode.h"
#include "workbook/engine/xls/CompoundFile.h"
#include "workbook/engine/xls/CompoundSectors.h"

#include <algorithm>
#include <array>
#include <bit>
#include <map>

namespace wagemill::engine::xls {

namespace {

constexpr std::size_t sectorSize = 512;
constexpr std::size_t linksPerSector = sectorSize / 4;
constexpr std::size_t entriesPerSector = sectorSize / directoryEntrySize;
constexpr std::size_t largestFile = 0x7FFFFFFF;

/// The class of a workbook's root storage, by which shells tell a workbook from other compound files.
constexpr auto workbookClassId = std::to_array<std::uint8_t>(
    {0x20, 0x08, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46});

std::size_t quotientRoundedUp(std::size_t dividend, std::size_t divisor)
{
    return (dividend + divisor - 1) / divisor;
}

/// A file allocation table in the making: chains of neighbouring sectors.
struct AllocationTable {
    std::vector<std::uint32_t> links;

    std::uint32_t appendChain(std::size_t sectors)
    {
        if (sectors == 0)
            return endOfChain;
        const auto start = static_cast<std::uint32_t>(links.size());
        for (std::size_t index = 1; index < sectors; ++index)
            links.push_back(static_cast<std::uint32_t>(start + index));
        links.push_back(endOfChain);
        return start;
    }
    void appendMarks(std::size_t sectors, std::uint32_t mark) { links.insert(links.end(), sectors, mark); }
};

struct DirectoryNode {
    std::u16string name;
    EntryType type = EntryType::Root;
    std::span<const std::byte> data = {};
    bool black = true;
    std::uint32_t left = noEntry;
    std::uint32_t right = noEntry;
    std::uint32_t child = noEntry;
    std::uint32_t start = 0;
    std::size_t size = 0;
    std::vector<std::uint32_t> children = {};
};

/// Shorter names first, then by capital letters ([MS-CFB] 2.6.4).
std::pair<std::size_t, std::u16string> sortKey(const std::u16string& name)
{
    std::u16string capitals = name;
    std::ranges::transform(capitals, capitals.begin(),
                           [](char16_t unit) { return static_cast<char16_t>(upperCase(unit)); });
    return {name.size(), std::move(capitals)};
}

class DirectoryTree {
public:
    explicit DirectoryTree(std::span<const KeptStream> entries)
    {
        m_nodes.push_back({.name = u"Root Entry"});
        std::map<std::vector<std::string>, std::uint32_t> storages{{{}, 0}};
        for (const KeptStream& entry : entries)
            append(entry, storages);
        for (DirectoryNode& node : m_nodes)
            linkChildren(node);
    }

    std::vector<DirectoryNode>& nodes() { return m_nodes; }

private:
    void append(const KeptStream& entry, std::map<std::vector<std::string>, std::uint32_t>& storages)
    {
        const std::u16string name = toUtf16(entry.path.empty() ? std::string_view() : entry.path.back());
        if (name.empty() || name.size() > longestEntryName)
            throw EngineError("A part of the workbook has a name that a file cannot hold.");
        const auto parent = storages.find({entry.path.begin(), entry.path.end() - 1});
        if (parent == storages.end())
            throw EngineError("The part \"" + entry.path.back() +
                              "\" of the workbook lies in a storage that is missing.");
        const auto index = static_cast<std::uint32_t>(m_nodes.size());
        m_nodes[parent->second].children.push_back(index);
        m_nodes.push_back(
            {.name = name, .type = entry.isStorage ? EntryType::Storage : EntryType::Stream, .data = entry.data});
        if (entry.isStorage)
            storages.emplace(entry.path, index);
    }

    /// A balanced tree of the storage's entries. All are black but those of a last level that is not full: so every way
    /// down passes as many black ones.
    void linkChildren(DirectoryNode& storage)
    {
        std::vector<std::uint32_t>& children = storage.children;
        const auto key = [&](std::uint32_t index) { return sortKey(m_nodes[index].name); };
        std::ranges::sort(children, {}, key);
        const auto twin = std::ranges::adjacent_find(children, {}, key);
        if (twin != children.end())
            throw EngineError("Two parts of the workbook are named \"" + toUtf8(m_nodes[*twin].name) + "\".");
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

    std::vector<DirectoryNode> m_nodes;
};

void writeDirectoryEntry(ByteWriter& target, const DirectoryNode& node)
{
    for (const char16_t unit : node.name)
        target.u16(unit);
    target.zeros(64 - node.name.size() * 2);
    target.u16(static_cast<std::uint16_t>(node.name.size() * 2 + 2));
    target.u8(static_cast<std::uint8_t>(node.type));
    target.u8(node.black ? 1 : 0);
    target.u32(node.left);
    target.u32(node.right);
    target.u32(node.child);
    if (node.type == EntryType::Root)
        target.bytes(std::as_bytes(std::span(workbookClassId)));
    else if (node.type == EntryType::Storage && node.data.size() == classIdSize)
        target.bytes(node.data);
    else
        target.zeros(classIdSize);
    target.zeros(20);
    target.u32(node.start);
    target.u32(static_cast<std::uint32_t>(node.size));
    target.u32(0);
}

void writeUnusedDirectoryEntry(ByteWriter& target)
{
    target.zeros(68);
    for (int link = 0; link < 3; ++link)
        target.u32(noEntry);
    target.zeros(48);
}

void padToMultiple(ByteWriter& target, std::size_t unit)
{
    target.zeros(quotientRoundedUp(target.size(), unit) * unit - target.size());
}

class CompoundFileWriter {
public:
    explicit CompoundFileWriter(std::span<const KeptStream> entries) : m_tree(entries) {}

    std::vector<std::byte> bytes()
    {
        placeStreams();
        placeMiniStreams();
        m_directoryStart = m_fat.appendChain(quotientRoundedUp(m_tree.nodes().size(), entriesPerSector));
        placeTables();
        if ((m_fat.links.size() + 1) * sectorSize > largestFile)
            throw EngineError("The workbook would be larger than 2 GB.");
        m_file.reserve((m_fat.links.size() + 1) * sectorSize);
        writeHeader();
        writeStreams();
        writeDirectory();
        writeTables();
        return m_file.take();
    }

private:
    void placeStreams()
    {
        for (DirectoryNode& node : m_tree.nodes()) {
            if (node.type != EntryType::Stream)
                continue;
            node.size = node.data.size();
            if (node.size >= miniStreamCutoff)
                node.start = m_fat.appendChain(quotientRoundedUp(node.size, sectorSize));
            else
                node.start = m_miniFat.appendChain(quotientRoundedUp(node.size, miniSectorSize));
        }
    }

    void placeMiniStreams()
    {
        DirectoryNode& root = m_tree.nodes().front();
        root.size = m_miniFat.links.size() * miniSectorSize;
        root.start = m_fat.appendChain(quotientRoundedUp(root.size, sectorSize));
        m_miniFatSectors = quotientRoundedUp(m_miniFat.links.size(), linksPerSector);
        m_miniFatStart = m_fat.appendChain(m_miniFatSectors);
    }

    /// The FAT describes its own sectors and those that list them, so their numbers are found step by step.
    void placeTables()
    {
        const std::size_t others = m_fat.links.size();
        for (std::size_t before = 1; before != m_fatSectors + m_difatSectors;) {
            before = m_fatSectors + m_difatSectors;
            m_fatSectors = quotientRoundedUp(others + before, linksPerSector);
            m_difatSectors = m_fatSectors <= headerFatSectors
                                 ? 0
                                 : quotientRoundedUp(m_fatSectors - headerFatSectors, linksPerSector - 1);
        }
        m_fatStart = others;
        m_fat.appendMarks(m_fatSectors, fatSectorMark);
        m_fat.appendMarks(m_difatSectors, difatSectorMark);
    }

    void writeHeader()
    {
        m_file.u64(compoundFileSignature);
        m_file.zeros(16);
        for (const std::uint16_t value : std::to_array<std::uint16_t>({0x3E, 3, 0xFFFE, 9, 6}))
            m_file.u16(value);
        m_file.zeros(10);
        m_file.u32(static_cast<std::uint32_t>(m_fatSectors));
        m_file.u32(m_directoryStart);
        m_file.u32(0);
        m_file.u32(miniStreamCutoff);
        m_file.u32(m_miniFatStart);
        m_file.u32(static_cast<std::uint32_t>(m_miniFatSectors));
        m_file.u32(m_difatSectors == 0 ? endOfChain : static_cast<std::uint32_t>(m_fatStart + m_fatSectors));
        m_file.u32(static_cast<std::uint32_t>(m_difatSectors));
        for (std::size_t index = 0; index < headerFatSectors; ++index)
            m_file.u32(fatSector(index));
    }

    /// The number of the `index`-th sector of the FAT, free behind the last one.
    std::uint32_t fatSector(std::size_t index) const
    {
        return index < m_fatSectors ? static_cast<std::uint32_t>(m_fatStart + index) : freeSector;
    }

    void writeStreams()
    {
        for (const DirectoryNode& node : m_tree.nodes())
            if (node.type == EntryType::Stream && node.size >= miniStreamCutoff)
                appendPadded(node.data, sectorSize);
        for (const DirectoryNode& node : m_tree.nodes())
            if (node.type == EntryType::Stream && node.size < miniStreamCutoff)
                appendPadded(node.data, miniSectorSize);
        padToMultiple(m_file, sectorSize);
        writeLinks(m_miniFat.links);
    }

    void appendPadded(std::span<const std::byte> data, std::size_t unit)
    {
        m_file.bytes(data);
        padToMultiple(m_file, unit);
    }

    void writeLinks(const std::vector<std::uint32_t>& links)
    {
        for (const std::uint32_t link : links)
            m_file.u32(link);
        while (m_file.size() % sectorSize != 0)
            m_file.u32(freeSector);
    }

    void writeDirectory()
    {
        for (const DirectoryNode& node : m_tree.nodes())
            writeDirectoryEntry(m_file, node);
        while (m_file.size() % sectorSize != 0)
            writeUnusedDirectoryEntry(m_file);
    }

    void writeTables()
    {
        writeLinks(m_fat.links);
        for (std::size_t sector = 0; sector < m_difatSectors; ++sector) {
            const std::size_t first = headerFatSectors + sector * (linksPerSector - 1);
            for (std::size_t index = first; index < first + linksPerSector - 1; ++index)
                m_file.u32(fatSector(index));
            m_file.u32(sector + 1 < m_difatSectors ? static_cast<std::uint32_t>(m_fatStart + m_fatSectors + sector + 1)
                                                   : endOfChain);
        }
    }

    DirectoryTree m_tree;
    AllocationTable m_fat;
    AllocationTable m_miniFat;
    std::size_t m_miniFatSectors = 0;
    std::size_t m_fatStart = 0;
    std::size_t m_fatSectors = 0;
    std::size_t m_difatSectors = 0;
    std::uint32_t m_miniFatStart = endOfChain;
    std::uint32_t m_directoryStart = endOfChain;
    ByteWriter m_file;
};

} // namespace

std::vector<std::byte> writeCompoundFile(std::span<const KeptStream> entries)
{
    return CompoundFileWriter(entries).bytes();
}

} // namespace wagemill::engine::xls
