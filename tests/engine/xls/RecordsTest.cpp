#include "tests/engine/xls/TestBooks.h"
#include "workbook/engine/xls/BiffRecords.h"
#include "workbook/engine/xls/CompoundFile.h"
#include "workbook/engine/xls/RecordStrings.h"
#include "workbook/engine/xls/SheetRecords.h"
#include "workbook/engine/xls/Substreams.h"

#include <gtest/gtest.h>

#include <limits>

namespace wagemill::engine::xls {

namespace {

std::vector<RichText> writtenAndRead(const SharedStringTable& table)
{
    RecordWriter writer;
    table.write(writer);
    const Bytes stream = writer.take();
    RecordReader reader(stream);
    Record record;
    EXPECT_TRUE(reader.next(record));
    std::vector<RichText> strings = readSharedStrings(record);
    EXPECT_TRUE(reader.next(record));
    EXPECT_EQ(record.id, record::extendedSharedStrings);
    return strings;
}

std::vector<RichText> stringsOf(const std::string& hex)
{
    const Bytes data = fromHex(hex);
    return readSharedStrings({0, record::sharedStrings, data, {}});
}

/// What the stream becomes; of an empty one, as where there was none, the one that is made.
Bytes stamped(const Bytes& stream, const DocumentProperties& properties)
{
    std::vector<KeptStream> streams;
    if (!stream.empty())
        streams.push_back({{"\x05SummaryInformation"}, false, stream});
    putProperties(streams, properties);
    return streams.front().data;
}

} // namespace

TEST(RkNumber, HoldsExactlyWhatItGivesBack)
{
    const std::pair<double, std::optional<std::uint32_t>> cases[] = {
        {0, 2U},    {0.28, 0x73U}, {-5, 0xFFFFFFEEU}, {536870912, 0x41C00000U}, {536870911, 0x7FFFFFFEU},
        {1e12, {}}, {0.123, {}}};
    for (const auto& [number, rk] : cases) {
        EXPECT_EQ(rkOfNumber(number), rk) << number;
        if (rk) {
            EXPECT_EQ(numberOfRk(*rk), number);
        }
    }
    EXPECT_EQ(numberOfRk(0xFFFFFFFFU), -0.01) << "negative hundredths";
}

TEST(ByteReader, NeverReadsBeyondTheEnd)
{
    Bytes bytes = fromHex("01 02 03");
    ByteReader reader(bytes);
    EXPECT_EQ(reader.u16(), 0x0201);
    EXPECT_THROW(reader.u16(), DamagedFile);
    EXPECT_EQ(reader.u8(), 3) << "a read that fails takes nothing";
    EXPECT_THROW(reader.seek(4), DamagedFile);
    EXPECT_THROW(reader.skip(std::numeric_limits<std::size_t>::max()), DamagedFile);
    EXPECT_THROW(putU32(bytes, 0, 1), std::out_of_range);
}

TEST(StyleRecords, PutEveryFieldInItsPlace)
{
    CellFormat format = {.font = 5, .numberFormat = 164, .locked = false, .hidden = true, .quotePrefix = true};
    format.parent = 3;
    format.horizontal = HorizontalAlignment::Right;
    format.vertical = VerticalAlignment::Center;
    format.wrap = format.shrinkToFit = true;
    format.rotation = 45;
    format.indent = 2;
    format.readingOrder = 1;
    format.usedAttributes = 0x14;
    format.left = {BorderStyle::Thin, 8};
    format.right = {BorderStyle::Medium, 9};
    format.top = {BorderStyle::Dashed, 10};
    format.bottom = {BorderStyle::Dotted, 11};
    format.diagonal = {BorderStyle::Thick, 12};
    format.diagonalDirections = 2;
    format.fill = {17, 13, 14};
    const Font font = {"A", 300, 700, true, true, 1, 2, 3, 4, 0, 10};
    RecordWriter writer;
    writeCellFormat(writer, format);
    writeFont(writer, font);
    const Bytes written = writer.take();
    EXPECT_EQ(written, fromHex("E000 1400 0600 A400 3A00 1B 2D 52 14 2143 8884 8A05A344 0D07"
                               "3100 1100 2C01 0A00 0A00 BC02 0200 01 03 04 00 01 00 41"));
    ByteReader reader(written, 4);
    EXPECT_EQ(readCellFormat(reader), format);
    reader.skip(4);
    EXPECT_EQ(readFont(reader), font);
}

TEST(MergedCells, LeaveOutWhatTheFileMustNotHave)
{
    const CellRect heading{0, 0, 0, 3};
    const CellRect below{1, 0, 2, 0};
    EXPECT_EQ(withoutOverlaps({below, heading}), (std::vector{heading, below}));
    EXPECT_EQ(withoutOverlaps({heading, {0, 3, 5, 3}, heading}), (std::vector{heading})) << "overlap";
    EXPECT_TRUE(withoutOverlaps({{5, 5, 5, 5}, {0, 0, 65536, 1}, {0, 250, 0, 256}, {3, 0, 2, 0}}).empty());
}

TEST(SharedStrings, GoOnInFurtherRecordsWhereverTheFirstIsFull)
{
    for (std::size_t lead = 8195; lead < 8215; ++lead) { // the end of the record at every place of the next text
        SharedStringTable table;
        const std::string filler(lead, 'f');
        const std::string narrow = std::string(9000, 'n') + "\xC3\xA9";
        std::string wide;
        for (int index = 0; index < 9000; ++index)
            wide += "\xE6\x97\xA5";
        const auto runs = std::make_shared<const std::vector<TextRun>>(3000, TextRun{1, 5});
        table.indexFor(filler, nullptr);
        table.indexFor(narrow, nullptr);
        table.indexFor(wide, runs);
        const auto read = writtenAndRead(table);
        ASSERT_EQ(read.size(), 3U) << lead;
        EXPECT_EQ(read[0].text, filler) << lead;
        EXPECT_EQ(read[1].text, narrow) << lead;
        EXPECT_EQ(read[2].text, wide) << lead;
        ASSERT_TRUE(read[2].runs) << lead;
        EXPECT_EQ(*read[2].runs, *runs) << lead;
    }
}

TEST(SharedStrings, ReadRichAndPhoneticTextsAndWidthsThatChange)
{
    const Bytes head = fromHex("02000000 02000000"
                               "0200 0D 0100 04000000 4100 4200 0100 0600 AABB"); // rich and phonetic, wide
    const Bytes second = fromHex("CCDD 0400 00 61 62");
    const Bytes third = fromHex("01 6300 6400");
    const auto strings = readSharedStrings({0, record::sharedStrings, head, {second, third}});
    ASSERT_EQ(strings.size(), 2U);
    EXPECT_EQ(strings[0].text, "AB");
    EXPECT_EQ(*strings[0].runs, (std::vector<TextRun>{{1, 5}})) << "font 6 of the file is the sixth";
    EXPECT_EQ(strings[1].text, "abcd");
}

TEST(SharedStrings, RefuseTextsThatAreCutOff)
{
    for (const char* const text : {"0500 00 6162",             // characters
                                   "0500",                     // head
                                   "0100 08 0500 61 0000",     // runs
                                   "0100 04 FFFFFFFF 61 0000", // a phonetic part of 4 GB
                                   "0200 01 61"})              // half a character
        EXPECT_THROW(stringsOf(std::string("0100000001000000") + text), DamagedFile) << text;
    EXPECT_THROW(stringsOf("01000000"), DamagedFile);
    EXPECT_TRUE(stringsOf("FFFFFFFF FFFFFFFF").empty()) << "a count of 4 billion takes no memory";
}

TEST(SharedStrings, KeepEveryTextOnceAndNoneThatACellMayNotHold)
{
    SharedStringTable table;
    const std::string tooLong(32768, 'x');
    EXPECT_EQ(table.indexFor(std::string_view(tooLong).substr(1), nullptr), 0U);
    for (const auto& [text, place] : {std::pair("a", 1U), {"A", 2U}, {"a ", 3U}, {"a", 1U}})
        EXPECT_EQ(table.indexFor(text, nullptr), place) << text;
    EXPECT_THROW(table.indexFor(tooLong, nullptr), std::length_error);
}

TEST(PropertySet, TakesNewTimesAndKeepsTheRest)
{
    const DocumentProperties payroll{"Payroll", "Ann", "Bob", "Wagemill", 0x01C3E8A000000000, 0x01DC000012345678};
    DocumentProperties later = payroll;
    later.saved += 7;
    const Bytes whole = stamped({}, payroll);
    EXPECT_EQ(stamped(whole, {"", "", "", "", 0, later.saved}), stamped({}, later));
    DocumentProperties odd;
    odd.title = "pay";
    const Bytes stream = stamped({}, odd); // ends in the zero that ends the title
    EXPECT_EQ(ByteReader(stream, 48 + 8).u32(), 1U) << "first the code page";
    EXPECT_EQ(ByteReader(stream, 48 + 8 + 2 * 8 + 8 + 4).u32(), 4U) << "the zero counts";
    Bytes unfilled = stream;
    unfilled.pop_back();
    putU32(unfilled, 48, static_cast<std::uint32_t>(unfilled.size() - 48));
    EXPECT_EQ(stamped(unfilled, {}), stream);
    odd.title = "L\xC3\xB6hne";
    EXPECT_EQ(ByteReader(stamped({}, odd), 48 + 8 + 2 * 8 + 4).u16(), 65001) << "code page of what is not ASCII";
    for (std::size_t size = 1; size < whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_LE(stamped(cut, later).size(), size + 3);
        Bytes changed = whole;
        changed[size] ^= std::byte{0xFF};
        EXPECT_EQ(stamped(changed, later).size(), whole.size());
    }
}

} // namespace wagemill::engine::xls
