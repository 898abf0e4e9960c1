#include "tests/engine/xls/TestBooks.h"
#include "tests/support/FailureOf.h"

#include <gtest/gtest.h>

#include <tuple>

namespace wagemill::engine::xls {

namespace {

/// The array formula {=A1} in the given area.
void putArray(Sheet& sheet, const CellRect& area)
{
    const auto array = std::make_shared<const ArrayArea>(ArrayArea{area});
    const auto formula = formulaOf({cellToken(0, 0, OperandClass::Array)});
    for (int row = area.firstRow; row <= area.lastRow; ++row) {
        Cell& cell = sheet.at({row, area.firstColumn});
        cell.formula = formula;
        cell.array = array;
        cell.value = 7.0;
    }
}

} // namespace

TEST(WorkbookRoundTrip, KeepsEveryKindOfValue)
{
    constexpr int columns[] = {0, 1, 3, 254, 255}; // neighbours, one alone, the last two
    std::vector<CellValue> values = {Empty{}, true, false, std::string(32767, 'x')};
    for (const double number : {0.28, 596.7149999999999, 1e-300})
        values.emplace_back(number);
    for (const char* const text : {"", "two\nlines ", "\xE6\x97\xA5\xF0\x9F\x98\x80"})
        values.emplace_back(text);
    for (const auto& [error, name] : errorNames)
        values.emplace_back(error);
    Book book;
    Sheet& sheet = book.addSheet("Values");
    for (int row = 0; const CellValue& value : values) {
        for (const int column : columns)
            sheet.at({row, column}).value = value;
        sheet.at({row, 2}).formula = sumOfTwoCells();
        sheet.at({row++, 2}).value = value;
    }
    const Book read = writtenAndRead(book);
    for (int row = 0; const CellValue& value : values) {
        for (const int column : columns)
            EXPECT_EQ(read.sheets[0]->value({row, column}), value) << "row " << row;
        const Cell* const cell = read.sheets[0]->find({row, 2});
        ASSERT_TRUE(cell && cell->formula);
        EXPECT_EQ(*cell->formula, *sumOfTwoCells());
        EXPECT_EQ(cell->value, isEmpty(value) ? CellValue(0.0) : value) << "result in row " << row;
        ++row;
    }
    EXPECT_EQ(read.sheets[0]->usedRange(), sheet.usedRange());
}

TEST(WorkbookRoundTrip, KeepsSheetsRowsColumnsAndPlaces)
{
    Book book = smallBook();
    book.iteration = {true, 7, 0.5};
    book.sheets[0]->hidden = book.sheets[0]->veryHidden = true;
    Sheet& sheet = *book.sheets[1];
    for (int row = 100; row < 2600; ++row) { // in several records
        sheet.merged.push_back({row, 0, row, 3});
        sheet.at({row, 5}).value = row * 1.0;
    }
    sheet.showGridLines = false;
    sheet.defaultColumnWidth = 12;
    sheet.defaultRowHeightTwips = 300;
    sheet.row(8).hidden = true;
    sheet.row(9).outlineLevel = 2;
    sheet.row(10).collapsed = true;
    sheet.row(11).format = book.styles.formatFor({.wrap = true});
    sheet.columns.push_back({4, 4, 0, defaultCellFormat, true, true, 1, true});
    sheet.columns.push_back({200, 255, 65280, *sheet.row(11).format, false, false, 0, false});
    const Book read = writtenAndRead(book);

    ASSERT_EQ(read.sheets.size(), 2U);
    const Sheet& readSheet = *read.sheets[1];
    EXPECT_TRUE(read.sheets[0]->hidden && read.sheets[0]->veryHidden);
    EXPECT_EQ(read.activeSheet, 1U);
    const auto sheetParts = [](const Sheet& each) {
        return std::tie(each.name, each.merged, each.columns, each.selection, each.showGridLines,
                        each.defaultColumnWidth, each.defaultRowHeightTwips);
    };
    const auto rowParts = [](const Row& each) {
        return std::tie(each.heightTwips, each.heightSetByHand, each.hidden, each.outlineLevel, each.collapsed,
                        each.format);
    };
    EXPECT_TRUE(sheetParts(readSheet) == sheetParts(sheet));
    for (int row = 6; row < 12; ++row)
        EXPECT_TRUE(rowParts(*readSheet.findRow(row)) == rowParts(*sheet.findRow(row))) << "row " << row;
    EXPECT_EQ(readSheet.value({2599, 5}), CellValue(2599.0));
    EXPECT_EQ(read.externSheets, book.externSheets);
    EXPECT_EQ(read.iteration, book.iteration);
    EXPECT_EQ(*readSheet.find({1, 2})->formula, *sheet.find({1, 2})->formula);
}

TEST(WorkbookRoundTrip, KeepsFontsFormatsAndColors)
{
    Book book;
    StyleTable& styles = book.styles;
    Sheet& sheet = book.addSheet("Formats");
    std::vector<CellFormat> formats;
    for (std::uint16_t index = 0; index < 6; ++index) { // past the number that the file leaves out
        const std::uint16_t font = styles.fontFor({.name = "Font " + std::to_string(index)});
        formats.push_back({.font = font, .numberFormat = styles.numberFormatFor(index % 2 == 0 ? "0.000" : ";;")});
        sheet.at({0, index * 2}).format = styles.formatFor(formats.back());
    }
    styles.palette[5] = {1, 2, 3};
    const auto runs = std::make_shared<const std::vector<TextRun>>(std::vector<TextRun>{{0, 3}, {2, 4}, {3, 5}});
    sheet.at({1, 0}).value = std::string("rich");
    sheet.at({1, 0}).runs = runs;

    const Book read = writtenAndRead(book);
    EXPECT_EQ(read.styles.fonts, styles.fonts);
    EXPECT_EQ(read.styles.formats, styles.formats);
    EXPECT_EQ(read.styles.numberFormats, styles.numberFormats);
    EXPECT_EQ(read.styles.palette, styles.palette);
    for (int index = 0; const CellFormat& format : formats)
        EXPECT_EQ(read.styles.format(read.sheets[0]->find({0, 2 * index++})->format), format);
    ASSERT_TRUE(read.sheets[0]->find({1, 0})->runs);
    EXPECT_EQ(*read.sheets[0]->find({1, 0})->runs, *runs);
}

TEST(WorkbookRoundTrip, KeepsPrintSetupAndWhatItDoesNotUnderstand)
{
    Book book = smallBook();
    Sheet& sheet = *book.sheets[0];
    sheet.kept = {
        {0x004D, fromHex("0100"), {}},                             // PLS, between margins and SETUP
        {0x00EC, fromHex("0102"), {fromHex("03"), {}}},            // MSODRAWING, continued
        {0x005D, fromHex("04"), {}},                               // OBJ
        {0x0809, fromHex("00062000A91FCD07C900010006040000"), {}}, // an embedded chart
        {0x1002, fromHex("05"), {}},
        {0x000A, {}, {}},
        {0x00EC, fromHex("06"), {}},
        {0x01B8, fromHex("07"), {}}, // HLINK
    };
    sheet.panes = SheetPanes{.columns = 2, .rows = 3, .firstRow = 30, .firstColumn = 5, .active = 1};
    sheet.print = {.paper = 9,
                   .scalePercent = 79,
                   .pagesWide = 2,
                   .pagesHigh = 3,
                   .left = 0,
                   .right = 0.5,
                   .top = 1.25,
                   .bottom = 1.5,
                   .headerMargin = 0.125,
                   .footerMargin = 0.375,
                   .header = "&L&A",
                   .footer = "&CPage &P \xE2\x82\xAC",
                   .rowBreaks = {{12}, {24, 1, 7}},
                   .columnBreaks = {{3, 0, 65535}},
                   .firstPage = 5,
                   .copies = 2,
                   .horizontalResolution = 300,
                   .verticalResolution = 1200,
                   .otherFlags = 0x0618};
    for (bool PrintSetup::*isSet : {&PrintSetup::landscape, &PrintSetup::fitToPages, &PrintSetup::centerHorizontally,
                                    &PrintSetup::centerVertically, &PrintSetup::gridLines, &PrintSetup::headings,
                                    &PrintSetup::overThenDown, &PrintSetup::ownFirstPage})
        sheet.print.*isSet = true;
    book.keptStreams = {{{"macros"}, true, {}},
                        {{"macros", "code"}, false, fromHex("0102")},
                        {{"\x05SummaryInformation"}, false, fromHex("03")},
                        {{std::string("\x05") + "DocumentSummaryInformation"}, false, fromHex("04")}};
    book.names.push_back({"rate", std::nullopt, {{NumberToken{5}}}, {}});
    book.supportingBooks.push_back({SupportingBook::Kind::AddIn, {}, {}, {}});
    book.kept = {
        {0x003D, fromHex("0100020003000400 3800 0700 0800 0900 5802"), {}}}; // WINDOW1: active, first, selected
    const Book read = writtenAndRead(book, FileKind::Template);

    EXPECT_EQ(std::ranges::find(read.kept, 0x003D, &KeptRecord::id)->data,
              fromHex("0100020003000400 3800 0100 0000 0100 5802"));
    std::vector<KeptRecord> kept = read.sheets[0]->kept;
    std::erase_if(kept, [&](const KeptRecord& each) { return std::ranges::count(sheet.kept, each) == 0; });
    EXPECT_EQ(kept, sheet.kept) << "and in their order";
    EXPECT_EQ(read.sheets[0]->panes, sheet.panes);
    EXPECT_EQ(read.sheets[0]->print, sheet.print);
    ASSERT_EQ(read.keptStreams.size(), book.keptStreams.size());
    for (const KeptStream& stream : book.keptStreams)
        EXPECT_EQ(std::ranges::find(read.keptStreams, stream.path, &KeptStream::path)->data, stream.data);
    ASSERT_EQ(read.names.size(), 1U);
    EXPECT_EQ(read.names[0].name, "rate");
    EXPECT_EQ(read.names[0].formula, book.names[0].formula);
    ASSERT_EQ(read.supportingBooks.size(), 2U);
    EXPECT_EQ(read.supportingBooks[1].kind, SupportingBook::Kind::AddIn);
    EXPECT_TRUE(read.isTemplate);
    EXPECT_FALSE(writtenAndRead(read).isTemplate);
    EXPECT_EQ(writeWorkbook(writtenAndRead(read), FileKind::Workbook), writeWorkbook(read, FileKind::Workbook))
        << "a file that was read and written stays as it is";
}

TEST(WorkbookRoundTrip, KeepsArrayFormulasThatAreWhole)
{
    Book book;
    Sheet& sheet = book.addSheet("Arrays");
    putArray(sheet, {2, 1, 4, 1});
    sheet.copyRows(2, 4, 20); // all of it
    sheet.copyRows(3, 4, 30); // a part
    putArray(sheet, {40, 1, 41, 1});
    sheet.at({40, 1}).formula.reset(); // which takes the first cell, and with it the formula, away
    const Book read = writtenAndRead(book);
    const Sheet& readSheet = *read.sheets[0];
    for (const int first : {2, 20})
        for (const int row : {first, first + 1, first + 2}) {
            const Cell& cell = *readSheet.find({row, 1});
            ASSERT_TRUE(cell.array && cell.formula) << "row " << row;
            EXPECT_EQ(cell.array->cells, (CellRect{first, 1, first + 2, 1}));
            EXPECT_EQ(cell.formula->tokens.front(), Token(cellToken(first - 2, 0, OperandClass::Array)));
        }
    for (const int row : {30, 31, 41}) {
        EXPECT_FALSE(readSheet.find({row, 1})->formula) << "row " << row << " keeps the value alone";
        EXPECT_EQ(readSheet.value({row, 1}), CellValue(7.0));
    }
}

TEST(WorkbookRoundTrip, ActiveSheetIsOneThatCanBeSeen)
{
    Book book = smallBook();
    book.sheets[1]->hidden = true; // the active one
    EXPECT_EQ(writtenAndRead(book).activeSheet, 0U);
    book.activeSheet = 99;
    EXPECT_EQ(writtenAndRead(book).activeSheet, 0U);
    book.sheets[0]->hidden = true;
    EXPECT_THROW(writeWorkbook(book, FileKind::Workbook), EngineError);
    EXPECT_THROW(writeWorkbook(Book(), FileKind::Workbook), EngineError);
}

TEST(WorkbookRoundTrip, WhatDoesNotFitNamesItsCell)
{
    const std::string longText(32768, 'x');
    for (const auto& [value, formula] : {std::pair(CellValue(longText), formulaOf({NumberToken{1}})),
                                         {longText, nullptr},
                                         {Empty(), formulaOf({TextToken{std::string(256, 'x')}})}}) {
        Book book;
        Cell& cell = book.addSheet("Big").at({4, 3});
        cell.value = value;
        cell.formula = formula;
        EXPECT_NE(test::failureOf([&] { writeWorkbook(book, FileKind::Workbook); }).find("D5 of the sheet \"Big\""),
                  std::string::npos);
    }
}

} // namespace wagemill::engine::xls
