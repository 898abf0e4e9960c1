#include "app/base/Bytes.h"
#include "tests/engine/xls/TestBytes.h"
#include "workbook/engine/xls/BiffRecords.h"
#include "workbook/engine/xls/RecordStrings.h"

#include <gtest/gtest.h>

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
    EXPECT_LE(record.data.size(), maxRecordSize);
    std::vector<RichText> strings = readSharedStrings(record);
    EXPECT_TRUE(reader.next(record));
    EXPECT_EQ(record.id, record::extendedSharedStrings);
    return strings;
}

Record sharedStringRecord(const Bytes& data, const std::vector<Bytes>& continued)
{
    Record record{0, record::sharedStrings, data, {}};
    for (const Bytes& piece : continued)
        record.continued.emplace_back(piece);
    return record;
}

} // namespace

TEST(SharedStrings, KeepEveryTextOnce)
{
    SharedStringTable table;
    const std::string texts[] = {"", "a", "A", "a ", "line\nbreak", "\xC3\xA9", "\xE6\x97\xA5", "a"};
    std::vector<std::uint32_t> indices;
    for (const std::string& text : texts)
        indices.push_back(table.indexFor(text, nullptr));
    EXPECT_EQ(indices, (std::vector<std::uint32_t>{0, 1, 2, 3, 4, 5, 6, 1}));
    const auto read = writtenAndRead(table);
    ASSERT_EQ(read.size(), 7U);
    for (std::size_t index = 0; index < read.size(); ++index)
        EXPECT_EQ(read[index].text, texts[index]);
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
        const auto runs = std::make_shared<const std::vector<TextRun>>(std::vector<TextRun>(3000, TextRun{1, 5}));
        for (const std::string& text : {std::cref(filler), std::cref(narrow), std::cref(wide)})
            table.indexFor(text, nullptr);
        table.indexFor(narrow, runs);
        const auto read = writtenAndRead(table);
        ASSERT_EQ(read.size(), 4U) << lead;
        EXPECT_EQ(read[0].text, filler) << lead;
        EXPECT_EQ(read[1].text, narrow) << lead;
        EXPECT_EQ(read[2].text, wide) << lead;
        ASSERT_TRUE(read[3].runs) << lead;
        EXPECT_EQ(*read[3].runs, *runs) << lead;
    }
}

TEST(SharedStrings, ReadRichAndPhoneticTextsAndWidthsThatChange)
{
    const Bytes head = fromHex("02000000 02000000"
                               "0200 0D 0100 04000000 4100 4200 0100 0600 AABB"); // rich and phonetic, wide
    const std::vector<Bytes> continued = {fromHex("CCDD 0400 00 61 62"), fromHex("01 6300 6400")};
    const auto strings = readSharedStrings(sharedStringRecord(head, continued));
    ASSERT_EQ(strings.size(), 2U);
    EXPECT_EQ(strings[0].text, "AB");
    EXPECT_EQ(*strings[0].runs, (std::vector<TextRun>{{1, 5}})) << "font 6 of the file is the sixth";
    EXPECT_EQ(strings[1].text, "abcd");
}

TEST(SharedStrings, RefuseTextsThatAreCutOff)
{
    for (const char* data : {
             "01000000 01000000 0500 00 6162",             // characters
             "01000000 01000000 0500",                     // head
             "01000000 01000000 0100 08 0500 61 0000",     // runs
             "01000000 01000000 0100 04 FFFFFFFF 61 0000", // a phonetic part of 4 GB
             "01000000 01000000 0200 01 61",               // half a character
             "01000000",
         })
        EXPECT_THROW(readSharedStrings(sharedStringRecord(fromHex(data), {})), DamagedFile) << data;
    EXPECT_TRUE(readSharedStrings(sharedStringRecord(fromHex("FFFFFFFF FFFFFFFF"), {})).empty())
        << "a count of 4 billion takes no memory";
}

TEST(SharedStrings, RefuseMoreThanACellMayHold)
{
    SharedStringTable table;
    const std::string longest(32767, 'x');
    const std::string tooLong(32768, 'x');
    EXPECT_EQ(table.indexFor(longest, nullptr), 0U);
    EXPECT_THROW(table.indexFor(tooLong, nullptr), std::length_error);
}

} // namespace wagemill::engine::xls
