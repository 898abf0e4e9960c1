#include "workbook/excel/PackedBitmap.h"

#include "app/base/Bytes.h"
#include "workbook/spreadsheet/Spreadsheet.h"

#include <cstdint>

namespace wagemill {

namespace {

constexpr std::size_t fileHeaderBytes = 14;
constexpr std::size_t coreHeaderBytes = 12; // BITMAPCOREHEADER
constexpr std::size_t infoHeaderBytes = 40; // BITMAPINFOHEADER, with which all longer headers begin
constexpr std::uint32_t compressionBitfields = 3;
constexpr std::uint32_t compressionAlphaBitfields = 6;
constexpr std::uint64_t maskBytes = 4;
constexpr std::uint64_t coreColourBytes = 3;
constexpr std::uint64_t infoColourBytes = 4;

/// Without a number of its own a colour table has an entry for every value of a pixel of up to 8 bits.
std::uint64_t fullColourTable(std::uint32_t bitsPerPixel)
{
    return bitsPerPixel <= 8 ? std::uint64_t{1} << bitsPerPixel : 0;
}

/// The masks follow the oldest of the info headers alone; the later ones hold them.
std::uint64_t masksAfterHeader(std::uint32_t headerBytes, std::uint32_t compression)
{
    if (headerBytes != infoHeaderBytes)
        return 0;
    return compression == compressionBitfields ? 3 : compression == compressionAlphaBitfields ? 4 : 0;
}

/// Where the pixels begin.
std::uint64_t pixelOffset(std::span<const std::byte> bitmap)
{
    const std::uint32_t headerBytes = ByteReader(bitmap, 0).u32();
    if (headerBytes == coreHeaderBytes)
        return headerBytes + coreColourBytes * fullColourTable(ByteReader(bitmap, 10).u16());
    if (headerBytes < infoHeaderBytes)
        throw SpreadsheetError("the clipboard's bitmap has an unknown header");
    const std::uint64_t colours = ByteReader(bitmap, 32).u32();
    return headerBytes + maskBytes * masksAfterHeader(headerBytes, ByteReader(bitmap, 16).u32()) +
           infoColourBytes * (colours != 0 ? colours : fullColourTable(ByteReader(bitmap, 14).u16()));
}

} // namespace

std::vector<std::byte> fileOfPackedBitmap(std::span<const std::byte> packedBitmap)
try {
    const std::uint64_t offset = pixelOffset(packedBitmap);
    if (offset >= packedBitmap.size())
        throw DamagedFile("it ends before its pixels");
    ByteWriter file;
    file.reserve(fileHeaderBytes + packedBitmap.size());
    file.u8('B');
    file.u8('M');
    file.u32(static_cast<std::uint32_t>(fileHeaderBytes + packedBitmap.size()));
    file.u32(0);
    file.u32(static_cast<std::uint32_t>(fileHeaderBytes + offset));
    file.bytes(packedBitmap);
    return file.take();
} catch (const DamagedFile&) {
    throw SpreadsheetError("the clipboard's bitmap is cut off");
}

} // namespace wagemill
