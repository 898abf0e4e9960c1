#include "workbook/excel/PackedBitmap.h"

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

/// A little-endian number of the bitmap.
std::uint32_t numberAt(std::span<const std::byte> bytes, std::size_t at, std::size_t size)
{
    if (at + size > bytes.size())
        throw SpreadsheetError("the clipboard's bitmap is cut off");
    std::uint32_t number = 0;
    for (std::size_t byte = size; byte-- > 0;)
        number = (number << 8U) | std::to_integer<std::uint32_t>(bytes[at + byte]);
    return number;
}

/// Without a number of its own a colour table has an entry for every value of a pixel of up to 8 bits.
std::uint64_t fullColourTable(std::uint32_t bitsPerPixel)
{
    return bitsPerPixel <= 8 ? std::uint64_t{1} << bitsPerPixel : 0;
}

/// The masks stand behind the oldest of the info headers alone; the later ones hold them.
std::uint64_t masksBehindHeader(std::uint32_t headerBytes, std::uint32_t compression)
{
    if (headerBytes != infoHeaderBytes)
        return 0;
    return compression == compressionBitfields ? 3 : compression == compressionAlphaBitfields ? 4 : 0;
}

/// Where the pixels begin.
std::uint64_t pixelOffset(std::span<const std::byte> bitmap)
{
    const std::uint32_t headerBytes = numberAt(bitmap, 0, 4);
    if (headerBytes == coreHeaderBytes)
        return headerBytes + coreColourBytes * fullColourTable(numberAt(bitmap, 10, 2));
    if (headerBytes < infoHeaderBytes)
        throw SpreadsheetError("the clipboard's bitmap has an unknown header");
    const std::uint64_t colours = numberAt(bitmap, 32, 4);
    return headerBytes + maskBytes * masksBehindHeader(headerBytes, numberAt(bitmap, 16, 4)) +
           infoColourBytes * (colours != 0 ? colours : fullColourTable(numberAt(bitmap, 14, 2)));
}

void appendNumber(std::vector<std::byte>& bytes, std::uint64_t number)
{
    for (unsigned int byte = 0; byte < 4; ++byte)
        bytes.push_back(static_cast<std::byte>((number >> (8U * byte)) & 0xFFU));
}

} // namespace

std::vector<std::byte> fileOfPackedBitmap(std::span<const std::byte> packedBitmap)
{
    const std::uint64_t offset = pixelOffset(packedBitmap);
    if (offset >= packedBitmap.size())
        throw SpreadsheetError("the clipboard's bitmap is cut off");
    std::vector<std::byte> file = {std::byte{'B'}, std::byte{'M'}};
    file.reserve(fileHeaderBytes + packedBitmap.size());
    appendNumber(file, fileHeaderBytes + packedBitmap.size());
    appendNumber(file, 0);
    appendNumber(file, fileHeaderBytes + offset);
    file.insert(file.end(), packedBitmap.begin(), packedBitmap.end());
    return file;
}

} // namespace wagemill
