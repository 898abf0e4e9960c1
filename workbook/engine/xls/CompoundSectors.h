#pragma once

#include <cstddef>
#include <cstdint>

namespace wagemill::engine::xls {

// Fixed numbers of compound files, [MS-CFB] 2.1 to 2.6.
inline constexpr std::uint32_t freeSector = 0xFFFFFFFF;
inline constexpr std::uint32_t endOfChain = 0xFFFFFFFE;
inline constexpr std::uint32_t fatSectorMark = 0xFFFFFFFD;
inline constexpr std::uint32_t difatSectorMark = 0xFFFFFFFC;
inline constexpr std::uint32_t noEntry = 0xFFFFFFFF;
inline constexpr std::size_t headerFatSectors = 109;
inline constexpr std::size_t miniSectorSize = 64;
inline constexpr std::size_t miniStreamCutoff = 4096;
inline constexpr std::size_t directoryEntrySize = 128;
inline constexpr std::size_t longestEntryName = 31; ///< UTF-16 units
inline constexpr std::size_t classIdSize = 16;

enum class EntryType : std::uint8_t { Unused = 0, Storage = 1, Stream = 2, Root = 5 };

} // namespace wagemill::engine::xls
