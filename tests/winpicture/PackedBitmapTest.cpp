#include "workbook/excel/PackedBitmap.h"

#include "app/base/Bytes.h"
#include "workbook/spreadsheet/Spreadsheet.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace wagemill {

namespace {

struct Header {
    std::uint32_t headerBytes;
    std::uint32_t bits;
    std::uint32_t compression;
    std::uint32_t colours;
};

/// The start of a bitmap of 4096 bytes.
std::vector<std::byte> packedBitmap(const Header& header)
{
    std::vector<std::byte> bytes(4096);
    putU32(bytes, 0, header.headerBytes);
    putU32(bytes, header.headerBytes == 12 ? 8 : 12, 1 | (header.bits << 16U));
    putU32(bytes, 16, header.compression); // in a header of 12 bytes a colour or a pixel
    putU32(bytes, 32, header.colours);
    return bytes;
}

} // namespace

TEST(PackedBitmap, GetsAFileHeaderThatPointsAtItsPixels)
{
    const std::pair<Header, std::uint32_t> cases[] = {
        {{12, 24, 0, 0}, 26},      {{12, 8, 0, 0}, 26 + 256 * 3}, {{12, 1, 0, 0}, 26 + 2 * 3},
        {{40, 24, 0, 0}, 54},      {{40, 8, 0, 0}, 54 + 1024},    {{40, 4, 2, 16}, 54 + 64}, // run lengths
        {{40, 8, 1, 5}, 54 + 20},  {{40, 24, 0, 2}, 54 + 8}, // colours for screens that have few
        {{40, 16, 3, 0}, 54 + 12}, {{40, 32, 6, 0}, 54 + 16},     {{108, 32, 3, 0}, 122},
        {{124, 32, 3, 0}, 138},    {{124, 8, 0, 3}, 138 + 12},
    };
    for (const auto& [header, pixelsAt] : cases) {
        const std::vector<std::byte> packed = packedBitmap(header);
        const std::vector<std::byte> file = fileOfPackedBitmap(packed);
        EXPECT_EQ(ByteReader(file).u16(), 0x4D42);
        EXPECT_EQ(ByteReader(file, 2).u32(), file.size());
        EXPECT_EQ(ByteReader(file, 10).u32(), pixelsAt)
            << "header of " << header.headerBytes << ", " << header.bits << " bits";
        EXPECT_TRUE(std::equal(packed.begin(), packed.end(), file.begin() + 14, file.end()));
    }
}

TEST(PackedBitmap, IsRefusedWhenItsPixelsLieBeyondIt)
{
    const Header hostile[] = {
        {40, 32, 0, 0xFFFFFFFF},     // a colour table of 16 gigabytes
        {0xFFFFFFFC, 32, 0, 0},      // a header of four
        {4096, 32, 0, 0},            // nothing but header
        {40, 8, 0, (4096 - 40) / 4}, // nothing but colours
        {39, 24, 0, 0},
        {13, 24, 0, 0},
    };
    for (const Header& header : hostile)
        EXPECT_THROW(fileOfPackedBitmap(packedBitmap(header)), SpreadsheetError) << header.headerBytes;
    const std::vector<std::byte> whole = packedBitmap({40, 24, 0, 0});
    for (std::ptrdiff_t length = 0; length <= 40; ++length)
        EXPECT_THROW(fileOfPackedBitmap({whole.data(), static_cast<std::size_t>(length)}), SpreadsheetError);
}

} // namespace wagemill
