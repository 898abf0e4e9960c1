#include "preview/Metafile.h"

#include "app/base/Bytes.h"
#include "tests/support/FailureOf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace wagemill {

namespace {

/// A header of 108 bytes, a record of 12 and the last of 20. The frame is 100 by 50 pixels.
std::vector<std::byte> wholeMetafile()
{
    std::vector<std::byte> file(140);
    const std::pair<std::size_t, std::uint32_t> numbers[] = {
        {0, 1},    {4, 108},  {32, 2646}, {36, 1323}, {40, 0x464D4520}, {44, 0x10000},
        {48, 140}, {108, 17}, {112, 12},  {120, 14},  {124, 20},
    };
    for (const auto& [at, number] : numbers)
        putU32(file, at, number);
    return file;
}

} // namespace

TEST(Metafile, IsItsFrameLargeAtNinetySixDotsAnInch)
{
    EXPECT_EQ(checkedMetafileSize(wholeMetafile()), QSizeF(100, 50));
    EXPECT_FALSE(isMetafile(std::vector<std::byte>(140)));
    EXPECT_FALSE(isMetafile({}));
}

TEST(Metafile, IsRefusedUnlessItsRecordsLeadToItsEnd)
{
    struct {
        const char* what;
        std::size_t at;
        std::uint32_t number;
        const char* failure;
    } const cases[] = {
        {"a record that leads back to itself", 112, 0, "the metafile is damaged at byte 108"},
        {"a record shorter than its own start", 112, 4, "the metafile is damaged at byte 108"},
        {"a record beyond the file", 112, 40, "the metafile is damaged at byte 108"},
        {"a record of nearly four gigabytes", 112, 0xFFFFFFFC, "the metafile is damaged at byte 108"},
        {"a record that ends between two others", 112, 13, "the metafile is damaged at byte 108"},
        {"a header that ends early", 4, 80, "the metafile is damaged at byte 0"},
        {"no last record", 120, 17, "the metafile is cut off"},
        {"a length beyond the file", 48, 1 << 30, "the metafile has another length than its header says"},
        {"a frame of no width", 32, 0, "the metafile is empty"},
        {"a frame that ends before it begins", 36, 0x80000000, "the metafile is empty"},
        {"a frame of kilometres", 36, 0x7FFFFFFF, "the metafile is too large to be shown"},
        {"another signature", 40, 0, "it is not an enhanced metafile"},
    };
    for (const auto& [what, at, number, failure] : cases) {
        std::vector<std::byte> file = wholeMetafile();
        putU32(file, at, number);
        EXPECT_EQ(test::failureOf([&] { checkedMetafileSize(file); }), failure) << what;
    }
}

TEST(Metafile, CutAtAnyByteIsRefused)
{
    const std::vector<std::byte> whole = wholeMetafile();
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_THROW(checkedMetafileSize({whole.data(), length}), std::runtime_error) << length;
}

} // namespace wagemill
