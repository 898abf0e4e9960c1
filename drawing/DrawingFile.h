#pragma once

#include "drawing/Drawing.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace wagemill {

// The file form of a drawing, version 1. Numbers are little-endian, lengths IEEE 754 doubles between -1e8 and 1e8; a
// list is its 32-bit count and its items, a text its 32-bit length in bytes and its UTF-8.
//
//     8 bytes   signature "WGMDRAW" and the version as a byte
//     drawing   width, height, lists of fills, lines, fonts and texts
//     fill      left, top, width, height, red, green, blue (a byte each)
//     line      x1, y1, x2, y2, style (a byte), colour
//     font      name, height in twips (16 bits), bold, italic, struck out, underlined (a byte each, 0 or 1)
//     text      cell, room, text, font (16 bits), colour, across, down (a byte each), wrap, shrink, indent (a byte),
//               hashes when too wide, always hashes, list of shorter forms
//     8 bytes   drawingChecksum of everything before

std::vector<std::byte> drawingFile(const drawing::Drawing& drawing);

bool isDrawingFile(std::span<const std::byte> file);
/// Throws std::runtime_error, with the reason, unless the file is whole and undamaged.
drawing::Drawing readDrawingFile(std::span<const std::byte> file);

/// The 64-bit FNV-1a hash, http://www.isthe.com/chongo/tech/comp/fnv: differs whenever a single byte does.
std::uint64_t drawingChecksum(std::span<const std::byte> bytes);

} // namespace wagemill
