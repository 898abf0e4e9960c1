#pragma once

#include "drawing/Drawing.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace wagemill {

// The file form of a drawing, version 1: the signature "WGMDRAW" and the version as a byte, the drawing's members in
// the order in which Drawing.h declares them, and 8 bytes of drawingChecksum of everything before. Numbers are
// little-endian, lengths IEEE 754 doubles between -1e8 and 1e8; what is set or not is a byte, 1 or 0; a list is its
// 32-bit count and its items, a text its 32-bit length in bytes and its UTF-8.

std::vector<std::byte> drawingFile(const drawing::Drawing& drawing);

bool isDrawingFile(std::span<const std::byte> file);
/// Throws std::runtime_error, with the reason, unless the file is whole and undamaged.
drawing::Drawing readDrawingFile(std::span<const std::byte> file);

/// The 64-bit FNV-1a hash, http://www.isthe.com/chongo/tech/comp/fnv: differs whenever a single byte does.
std::uint64_t drawingChecksum(std::span<const std::byte> bytes);

} // namespace wagemill
