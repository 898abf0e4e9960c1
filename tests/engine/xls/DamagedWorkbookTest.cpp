#include "tests/engine/xls/TestBooks.h"
#include "tests/support/FailureOf.h"
#include "workbook/engine/xls/CompoundFile.h"
#include "workbook/engine/xls/RecordStream.h"

#include <gtest/gtest.h>

namespace wagemill::engine::xls {

namespace {

struct RawRecord {
    std::uint16_t id;
    const char* hex;
};

constexpr RawRecord globalsBof = {0x0809, "00060500A91FCD07C900010006040000"};
constexpr RawRecord sheetBof = {0x0809, "00061000A91FCD07C900010006040000"};
constexpr RawRecord endMark = {0x000A, ""};

Bytes workbookFile(Bytes stream, const char* name = "Workbook")
{
    stream.resize(std::max<std::size_t>(stream.size(), 4096));
    const KeptStream kept{{name}, false, std::move(stream)};
    return writeCompoundFile(std::span(&kept, 1));
}

Bytes workbookOfRecords(const std::vector<RawRecord>& records)
{
    RecordWriter writer;
    for (const auto& [id, hex] : records)
        writer.write(id, fromHex(hex));
    return workbookFile(writer.take());
}

/// A workbook of sheets "S" with these records, and these in its globals.
Bytes workbookOf(const std::vector<RawRecord>& sheetRecords, const std::vector<RawRecord>& globalRecords = {},
                 int sheets = 1, const char* boundSheet = "00000000 00 00 01 00 53")
{
    RecordWriter writer;
    const auto write = [&writer](const RawRecord& record) { writer.write(record.id, fromHex(record.hex)); };
    write(globalsBof);
    std::ranges::for_each(globalRecords, write);
    std::vector<std::size_t> places;
    for (int sheet = 0; sheet < sheets; ++sheet) {
        places.push_back(writer.offset() + 4);
        write({0x0085, boundSheet});
    }
    write(endMark);
    for (const std::size_t place : places) {
        writer.putU32(place, writer.offset());
        write(sheetBof);
        std::ranges::for_each(sheetRecords, write);
        write(endMark);
    }
    return workbookFile(writer.take());
}

Book read(const Bytes& file)
{
    return readWorkbook(file, "my file.xls");
}

std::string refusalOf(const Bytes& file)
{
    return test::failureOf([&] { read(file); });
}

} // namespace

TEST(DamagedWorkbook, SaysWhatTheFileIsInstead)
{
    const std::pair<Bytes, const char*> cases[] = {
        {{}, "it is empty"},
        {fromHex("504B0304 72657374"), ".xlsx"},
        {fromHex("3C68746D6C3E"), "web page"},              // <html>
        {fromHex("6E616D652C77616765 0D0A"), "plain text"}, // name,wage
        {fromHex("0908 0800 0005 1000"), "before Excel 97"},
        {fromHex("DEADBEEF 00 01"), "unknown kind"},
        {workbookFile({}, "Book"), "before Excel 97"},
        {workbookFile({}, "WordDocument"), "no workbook"},
        {workbookOfRecords({{0x0809, "00050500A91FCD07C900010006040000"}}), "before Excel 97"},
        {workbookOfRecords({globalsBof, {0x002F, "0100"}, endMark}), "encrypted"},
        {workbookOfRecords({globalsBof, endMark}), "no sheets"},
        {workbookOfRecords({endMark}), "does not begin"},
        {workbookOfRecords({globalsBof, {0x0085, "00000100 00 00 01 00 53"}, endMark}), "outside the workbook"},
        {workbookOfRecords({globalsBof, {0x0085, "04000000 00 00 01 00 53"}, endMark}), "not where"},
    };
    for (const auto& [file, part] : cases) {
        const std::string refusal = refusalOf(file);
        EXPECT_NE(refusal.find("\"my file.xls\""), std::string::npos) << refusal;
        EXPECT_NE(refusal.find(part), std::string::npos) << refusal << " should say " << part;
    }
}

TEST(DamagedWorkbook, ReadsOnWithoutItsRefinements)
{
    const RawRecord five = {0x0203, "0000 0000 0F00 0000000000001440"};
    struct {
        const char* text;
        std::vector<RawRecord> records;
        CellValue expected = 5.0;
    } const cases[] = {
        {"a format that does not exist", {{0x0203, "0000 0000 FF0F 0000000000001440"}}},
        {"not a number", {{0x0203, "0000 0000 0F00 000000000000F87F"}}, ErrorCode::Number},
        {"an unknown error code", {{0x0205, "0000 0000 0F00 63 01"}}, ErrorCode::NotAvailable},
        {"a text in the record itself", {{0x0204, "0000 0000 0F00 0200 00 6869"}}, "hi"},
        {"a text without its flags", {{0x0204, "0000 0000 0F00 0200 6869"}}, "hi"},
        {"a text with runs of its own", {{0x00D6, "0000 0000 0F00 0200 00 6869 0100 0000 0600"}}, "hi"},
        {"a formula under an older number", {{0x0406, "0000 0000 0F00 0000000000001440 0000 00000000 0300 1E 0500"}}},
        {"a formula that is not one", {{0x0006, "0000 0000 0F00 0000000000001440 0000 00000000 0100 03"}}},
        {"a part of a missing formula", {{0x0006, "0000 0000 0F00 0000000000001440 0800 00000000 0500 01 0900 0900"}}},
        {"a shared formula that points at itself",
         {{0x0006, "0000 0000 0F00 0000000000001440 0800 00000000 0500 01 0000 0000"},
          {0x04BC, "0000 0000 00 00 00 01 0500 01 0000 0000"}}},
        {"no text result", {{0x0006, "0000 0000 0F00 000000000000FFFF 0000 00000000 0300 1E 0100"}}, ""},
        {"a text without its formula", {{0x0207, "0200 00 6869"}, five}},
        {"two cells in one place", {{0x0203, "0000 0000 0F00 0000000000001040"}, five}},
        {"cells in reverse order", {{0x0203, "0000 0100 0F00 0000000000001040"}, five}},
        {"a print set-up cut off, without room, and with more breaks than there are",
         {{0x00A1, "0900 6400"},
          {0x0081, "01"},
          {0x0026, "000000000000F87F"},
          {0x0014, "0500 00 26"},
          {0x001B, "0200 0100 0000 FF00"},
          five}},
    };
    for (const auto& [text, records, expected] : cases) {
        SCOPED_TRACE(text);
        const Book book = read(workbookOf(records));
        EXPECT_EQ(book.sheets[0]->print, PrintSetup());
        EXPECT_EQ(writtenAndRead(book).sheets[0]->value({0, 0}), expected);
    }
}

TEST(DamagedWorkbook, RefusesCellsThatCannotBe)
{
    for (const RawRecord& record : {
             RawRecord{0x0203, "0000 0000 0F00 00"},               // half a number
             RawRecord{0x0203, "0000 0001 0F00 0000000000001440"}, // column 256
             RawRecord{0x00FD, "0000 0000 0F00 07000000"},         // a text that does not exist
             RawRecord{0x00BD, "0000 FF00 0F00 00000000 0F00 00000000 0001"},
             RawRecord{0x0006, "0000 0000 0F00 0000000000001440 0000 00000000 FFFF 1E"},
         })
        EXPECT_THROW(read(workbookOf({record})), EngineError) << record.hex;
}

TEST(DamagedWorkbook, ExpandsSharedFormulas)
{
    // =A1+1 in B1, shared down to B3
    const Book book = read(workbookOf({{0x0006, "0000 0100 0F00 0000000000001440 0800 00000000 0500 01 0000 0100"},
                                       {0x04BC, "0000 0200 01 01 00 03 0900 4C 0000 FFC0 1E 0100 03"},
                                       {0x0006, "0100 0100 0F00 0000000000001440 0800 00000000 0500 01 0000 0100"},
                                       {0x0006, "0200 0100 0F00 0000000000001440 0800 00000000 0500 01 0000 0100"}}));
    for (const int row : {0, 1, 2}) {
        ASSERT_TRUE(book.sheets[0]->find({row, 1})->formula);
        EXPECT_EQ(*book.sheets[0]->find({row, 1})->formula,
                  (Formula{{cellToken(row, 0), NumberToken{1}, OperatorToken{Operator::Add}}}));
    }
}

TEST(DamagedWorkbook, MakesFormatsRegularThatAreNot)
{
    // three formats of cells and none of styles, the second bold; a number format without flags and an undefined one
    const std::vector<RawRecord> globals = {
        {0x0031, "C8000000FF7F9001000000000000 05 00 417269616C"},
        {0x0031, "C8000100FF7FBC02000000000000 05 00 417269616C"},
        {0x041E, "A400 0400 302E3030"},
        {0x00E0, "0000 A400 0100 20 00 00 00 00000000 00000000 C020"},
        {0x00E0, "0100 0A00 0100 20 00 00 00 00000000 00000000 C020"},
        {0x00E0, "0400 2C01 0100 20 00 00 00 00000000 00000000 C020"},
    };
    const std::vector<RawRecord> blanks = {
        {0x0201, "0000 0000 0100"}, {0x0201, "0000 0100 0200"}, {0x0201, "0000 0200 0900"}, {0x0201, "0000 0300 0000"}};
    const Book book = writtenAndRead(read(workbookOf(blanks, globals)));
    const auto format = [&](int column) { return book.styles.format(book.sheets[0]->find({0, column})->format); };
    EXPECT_EQ(book.styles.fontOf(format(0)).weight, 700);
    EXPECT_EQ(format(0).numberFormat, 10);
    EXPECT_EQ(format(1).numberFormat, 0);
    EXPECT_EQ(format(1).font, 0);
    EXPECT_EQ(book.sheets[0]->find({0, 2})->format, defaultCellFormat);
    EXPECT_EQ(book.styles.numberFormatCode(format(3).numberFormat), "0.00");
    EXPECT_TRUE(book.styles.formats[0].isStyle);
}

TEST(DamagedWorkbook, KeepsFiltersAndSizesWithinTheirLimits)
{
    const Book book = writtenAndRead(read(workbookOf({{0x009B, ""},
                                                      {0x0225, "0000 FFFF"},
                                                      {0x0055, "FFFF"},
                                                      {0x00A1, "0900 9101 0100 0100 0100 0200 5802 5802"
                                                               "0000000000000000 0000000000000000 0100"},
                                                      {0x007D, "0000 FFFF FFFF 0F00 0000 0000"},
                                                      {0x0208, "0000 0000 0100 FE81 0000 0000 0001 0F00"},
                                                      {0x0208, "0100 0000 0100 FF7F 0000 0000 4001 0F00"}})));
    const Sheet& sheet = *book.sheets[0];
    EXPECT_TRUE(sheet.isFiltered);
    EXPECT_EQ(sheet.rows()[0].heightTwips, 510) << "automatic";
    EXPECT_FALSE(sheet.rows()[0].heightSetByHand);
    EXPECT_EQ(sheet.rows()[1].heightTwips, 8192);
    EXPECT_EQ(sheet.rowHeightTwips(2), 8179);
    EXPECT_EQ(sheet.defaultColumnWidth, 255);
    EXPECT_EQ(sheet.print.scalePercent, 100) << "401";
    EXPECT_EQ(sheet.columns, (std::vector<ColumnRun>{{0, 255, 65280, defaultCellFormat, false, false}}));
}

TEST(DamagedWorkbook, ShowsASheetWhereAllAreHidden)
{
    const Book book = read(workbookOf({}, {}, 2, "00000000 02 00 01 00 53"));
    EXPECT_FALSE(book.sheets[0]->hidden);
    EXPECT_TRUE(book.sheets[1]->hidden && book.sheets[1]->veryHidden);
}

TEST(DamagedWorkbook, KeepsWhatLiesInsideAChartOrCustomView)
{
    // records that a sheet has too, a view's pane and a mark of the wrong size among them
    const std::vector<RawRecord> chart = {{0x005D, ""},
                                          {0x0809, "00062000A91FCD07C900010006040000"},
                                          {0x023E, "B600000000004000000000000000000000000000"},
                                          {0x0225, "0000FF00"},
                                          {0x01AA, "00"},
                                          {0x0041, "0100"},
                                          {0x01AB, ""},
                                          endMark,
                                          {0x0203, "0000 0000 0F00 0000000000001440"}};
    const Book once = read(workbookOf(chart));
    const Book twice = writtenAndRead(once);
    EXPECT_EQ(once.sheets[0]->kept.size(), chart.size() - 1);
    EXPECT_FALSE(std::ranges::search(twice.sheets[0]->kept, once.sheets[0]->kept).empty());
    EXPECT_EQ(twice.sheets[0]->value({0, 0}), CellValue(5.0));
}

TEST(DamagedWorkbook, RowsNamedByAFewBytesAgainAndAgainTakeNoMemory)
{
    EXPECT_NE(refusalOf(workbookOf({{0x0201, "FFFF 0000 0F00"}}, {}, 200)).find("too many rows"), std::string::npos);
}

} // namespace wagemill::engine::xls
