#pragma once

#include "workbook/engine/Book.h"

#include <cstddef>
#include <span>
#include <vector>

namespace wagemill::engine::xls {

/// The first eight bytes of a compound file ([MS-CFB] 2.2).
inline constexpr std::uint64_t compoundFileSignature = 0xE11AB1A1E011CFD0;

/// Smaller streams lie together in small sectors.
inline constexpr std::size_t miniStreamCutoff = 4096;

/// The streams and storages of a compound file ([MS-CFB]), each storage before what it holds. A storage's `data` is its
/// class identifier of 16 bytes where it has one. Takes time and memory in proportion to the bytes, whatever they
/// claim. Throws DamagedFile when a sector chain, a size or the directory is not consistent.
std::vector<KeptStream> readCompoundFile(std::span<const std::byte> bytes);

/// The bytes of a compound file of version 3 with these streams and storages, a storage before what it holds. A name
/// has 1 to 31 UTF-16 units. Throws EngineError when one occurs twice.
std::vector<std::byte> writeCompoundFile(std::span<const KeptStream> entries);

/// Puts the times of `properties` that are set in the place of those that the SummaryInformation stream holds
/// ([MS-OLEPS] 2.21, [MS-OSHARED] 2.3.3.2.1), and fills its section as the format wants it; a damaged one stays as it
/// is. A workbook without one is given one with these properties, and a DocumentSummaryInformation stream, which
/// programs expect.
void putProperties(std::vector<KeptStream>& streams, const DocumentProperties& properties);

} // namespace wagemill::engine::xls
