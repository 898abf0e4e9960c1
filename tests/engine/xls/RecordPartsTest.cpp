#include "app/base/Bytes.h"
#include "app/base/text/Unicode.h"
#include "tests/engine/xls/TestBytes.h"
#include "workbook/engine/xls/SheetRecords.h"

#include <gtest/gtest.h>

#include <limits>

namespace wagemill::engine::xls {

TEST(RkNumber, HoldsExactlyWhatItGivesBack)
{
    struct {
        double number;
        std::optional<std::uint32_t> rk;
    } const cases[] = {
        {0, 2U},
        {1, 6U},
        {0.28, 0x73U}, // 28 hundredths
        {-5, 0xFFFFFFEEU},
        {38018, 0x2520AU},
        {1234.56, 0x78903U},
        {0.5, 0x3FE00000U},
        {1e12, std::nullopt},
        {1099511627776, 0x42700000U},
        {536870912, 0x41C00000U},
        {536870911, 0x7FFFFFFEU},
        {0.1, 0x2BU},
        {0.123, std::nullopt},
        {596.7149999999999, std::nullopt},
        {1e300, std::nullopt},
        {-0.0, std::nullopt},
        {std::numeric_limits<double>::infinity(), std::nullopt},
        {std::numeric_limits<double>::quiet_NaN(), std::nullopt},
    };
    for (const auto& [number, rk] : cases) {
        EXPECT_EQ(rkOfNumber(number), rk) << number;
        if (rk) {
            EXPECT_EQ(numberOfRk(*rk), number);
        }
    }
    EXPECT_EQ(numberOfRk(0xFFFFFFFEU), -1) << "negative integer";
    EXPECT_EQ(numberOfRk(0xFFFFFFFFU), -0.01) << "negative hundredths";
    for (int cents = -100000; cents < 100000; cents += 7)
        if (const auto rk = rkOfNumber(cents / 100.0)) {
            ASSERT_EQ(numberOfRk(*rk), cents / 100.0);
        }
}

TEST(Unicode, ConvertsBothWaysAndReplacesWhatIsNone)
{
    struct {
        std::string utf8;
        std::u16string utf16;
    } const both[] = {{"", u""},
                      {"plain", u"plain"},
                      {"\xC3\xA9\xE2\x82\xAC", u"\u00E9\u20AC"},
                      {"\xF0\x9F\x98\x80", u"\xD83D\xDE00"}};
    for (const auto& [utf8, utf16] : both) {
        EXPECT_EQ(toUtf16(utf8), utf16);
        EXPECT_EQ(toUtf8(utf16), utf8);
        EXPECT_EQ(utf16Length(utf8), utf16.size());
    }
    EXPECT_EQ(toUtf8(u"a\xD83Dz"), "a\xEF\xBF\xBDz");
    EXPECT_EQ(toUtf8(u"\xDE00\xD83D"), "\xEF\xBF\xBD\xEF\xBF\xBD");
    for (const char* bad :
         {"\xC3", "\xE2\x82", "\xF0\x9F\x98", "\x80", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF"})
        EXPECT_EQ(toUtf16(bad).find_first_not_of(u'\xFFFD'), std::u16string::npos);
    EXPECT_EQ(toUtf16("\xC3z"), u"\xFFFDz") << "what follows a broken character stays";
}

TEST(ByteReader, NeverReadsBeyondTheEnd)
{
    const Bytes bytes = fromHex("01 02 03");
    ByteReader reader(bytes);
    EXPECT_EQ(reader.u16(), 0x0201);
    EXPECT_THROW(reader.u16(), DamagedFile);
    EXPECT_EQ(reader.u8(), 3) << "a read that fails takes nothing";
    EXPECT_THROW(reader.u8(), DamagedFile);
    EXPECT_THROW(reader.seek(4), DamagedFile);
    EXPECT_THROW(reader.skip(std::numeric_limits<std::size_t>::max()), DamagedFile);
    ByteWriter writer;
    writer.u16(1);
    EXPECT_THROW(putU32(writer.view(), 0, 1), std::out_of_range);
}

TEST(MergedCells, LeaveOutWhatTheFileMustNotHave)
{
    const CellRect heading{0, 0, 0, 3};
    const CellRect below{1, 0, 2, 0};
    EXPECT_EQ(withoutOverlaps({below, heading}), (std::vector{heading, below}));
    EXPECT_EQ(withoutOverlaps({heading, {0, 3, 5, 3}}), (std::vector{heading})) << "overlap";
    EXPECT_EQ(withoutOverlaps({heading, heading}), (std::vector{heading}));
    EXPECT_TRUE(withoutOverlaps({{5, 5, 5, 5}, {0, 0, 65536, 1}, {0, 250, 0, 256}, {3, 0, 2, 0}}).empty());
}

} // namespace wagemill::engine::xls
