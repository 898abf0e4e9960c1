#include "workbook/engine/picture/SheetPages.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace wagemill::engine {
namespace {

constexpr drawing::PaperSize letter = {816, 1056};

/// Margins of an inch everywhere, rows of 100 and columns of 104 (111/15 pixels a digit) pixels, each cell its address.
class SheetPagesTest : public testing::Test {
protected:
    SheetPagesTest()
    {
        sheet.name = "Stubs";
        sheet.defaultRowHeightTwips = 1500;
        sheet.columns.push_back({.first = 0, .last = 99, .width = 3597});
        sheet.print.left = sheet.print.right = sheet.print.top = sheet.print.bottom = 1;
    }

    void fill(int rows, int columns)
    {
        for (int row = 0; row < rows; ++row)
            for (int column = 0; column < columns; ++column)
                sheet.at({row, column}).value = addressText({row, column});
    }
    void name(const char* builtIn, const char* address)
    {
        const CellRect area = parseAddress(address).value();
        const ReferenceToken token{
            {}, {}, {area.firstRow, area.firstColumn}, ReferencePart{area.lastRow, area.lastColumn}};
        book.names.push_back({builtIn, std::uint16_t{0}, {{token}}, {}});
    }
    std::vector<drawing::Page> pages(const drawing::PaperSize& paper = letter)
    {
        return sheetPages(book, 0, paper, {.date = "3/31/2026", .time = "", .file = "", .folder = ""}, {});
    }
    /// First and last text of each part of each page: "A1-B7 | A8-B14".
    std::string shown(const drawing::PaperSize& paper = letter)
    {
        std::string all;
        for (const drawing::Page& page : pages(paper)) {
            all += all.empty() ? "" : " | ";
            for (const drawing::PlacedDrawing& part : page.parts)
                if (!part.drawing.texts.empty())
                    all += (&part == &page.parts.front() ? "" : " ") + part.drawing.texts.front().text + "-" +
                           part.drawing.texts.back().text;
        }
        return all;
    }

    Book book;
    Sheet& sheet = book.addSheet("Stubs");
};

TEST_F(SheetPagesTest, BreaksWhereThePaperEndsOrTheSetUpSays)
{
    fill(20, 3); // 864 pixels high: 8 rows a page
    EXPECT_EQ(shown(), "A1-C8 | A9-C16 | A17-C20");
    EXPECT_EQ(shown({1056, 816}), "A1-C6 | A7-C12 | A13-C18 | A19-C20");
    sheet.print.rowBreaks = {{3}, {19}};
    EXPECT_EQ(shown(), "A1-C3 | A4-C11 | A12-C19 | A20-C20");
    sheet.row(1).hidden = true;
    sheet.print.rowBreaks.clear();
    EXPECT_EQ(shown(), "A1-C9 | A10-C17 | A18-C20");
    sheet.print.scalePercent = 50;
    EXPECT_EQ(shown(), "A1-C18 | A19-C20");
}

TEST_F(SheetPagesTest, IsMadeSmallerUntilItFits)
{
    fill(20, 12); // 1248 pixels wide, of 624
    EXPECT_EQ(shown(), "A1-L17 | A18-L20");
    EXPECT_DOUBLE_EQ(pages().front().parts.front().scale, 0.5) << "to the width of the paper";
    sheet.print.columnBreaks = {{6}};
    EXPECT_EQ(shown(), "A1-F8 | A9-F16 | A17-F20 | G1-L8 | G9-L16 | G17-L20");
    sheet.print.overThenDown = true;
    EXPECT_EQ(shown(), "A1-F8 | G1-L8 | A9-F16 | G9-L16 | A17-F20 | G17-L20");
    sheet.print.fitToPages = true; // on one page
    EXPECT_EQ(shown(), "A1-L20");
    EXPECT_DOUBLE_EQ(pages().front().parts.front().scale, 0.43);
    sheet.print.pagesWide = 2;
    sheet.print.pagesHigh = 0;
    EXPECT_EQ(shown(), "A1-F8 | G1-L8 | A9-F16 | G9-L16 | A17-F20 | G17-L20");
}

TEST_F(SheetPagesTest, RepeatsTitlesAndKeepsToThePrintArea)
{
    fill(20, 6);
    name("Print_Titles", "1:1");
    EXPECT_EQ(shown(), "A1-F8 | A1-F1 A9-F15 | A1-F1 A16-F20");
    EXPECT_EQ(pages()[1].parts[1].top, 96 + 100) << "below the title";
    name("Print_Area", "B3:C4");
    EXPECT_EQ(shown(), "B1-C1 B3-C4");
    book.names.back() = {};
    name("Print_Area", "A1:B65536");
    EXPECT_EQ(shown(), "A1-B8 | A1-B1 A9-B15 | A1-B1 A16-B20") << "whole columns end with the last row";
}

TEST_F(SheetPagesTest, PaperWithoutRoomIsNoEndlessPrint)
{
    sheet.at({9999, 1}).value = 1.0;
    sheet.print.fitToPages = true;
    sheet.print.pagesWide = sheet.print.pagesHigh = 0;
    sheet.print.left = sheet.print.top = 48;
    EXPECT_THROW(pages(), EngineError);
}

TEST_F(SheetPagesTest, AnEmptySheetHasNoPages)
{
    sheet.at({4, 4}).format = defaultCellFormat;
    name("Print_Area", "A1:I65536");
    EXPECT_TRUE(pages().empty());
    sheet.at({4, 4}).value = 1.0;
    sheet.columns.front().hidden = true;
    EXPECT_EQ(pages().size(), 1U) << "nothing of it is wide";
}

TEST_F(SheetPagesTest, CentersOnThePage)
{
    fill(1, 1);
    sheet.print.centerHorizontally = sheet.print.centerVertically = true;
    const drawing::PlacedDrawing sheetOnPage = pages().front().parts.front();
    EXPECT_NEAR(sheetOnPage.left, 96 + (624 - 104) / 2., 0.1);
    EXPECT_DOUBLE_EQ(sheetOnPage.top, 96 + (864 - 100) / 2.);
}

TEST_F(SheetPagesTest, HeaderAndFooterKeepTheirDistances)
{
    fill(9, 1);
    sheet.print.scalePercent = 50;
    sheet.print.rowBreaks = {{3}};
    sheet.print.left = 0.25;
    sheet.print.header = "&L&8Payroll";
    sheet.print.footer = "&RPage &P of &N";
    const drawing::PlacedDrawing marks = pages().back().parts.back();
    const drawing::Text& header = marks.drawing.texts.front();
    const drawing::Text& footer = marks.drawing.texts.back();
    EXPECT_EQ(marks.left + (header.cell.left + drawing::textPadding) * marks.scale, 24 + 48 * 0.5)
        << "three quarters of an inch at the scale of the sheet";
    EXPECT_EQ(header.cell.top * marks.scale, 48);
    EXPECT_EQ((footer.cell.top + footer.cell.height) * marks.scale, letter.height - 48);
    EXPECT_EQ(footer.text, "Page 2 of 2");
    sheet.print.ownFirstPage = true;
    sheet.print.firstPage = 7;
    EXPECT_EQ(pages().back().parts.back().drawing.texts.back().text, "Page 8 of 2");
}

TEST(PageTexts, CarryOutTheCodes)
{
    const PageFacts facts = {"3/31/2026", "9:30 AM", "pay.xls", "/tmp/", "Stubs", 2, 7};
    const drawing::Font standard;
    const std::array<const char*, 4> cases[] = {
        // codes, left, centre and right part
        {"", "", "", ""},
        {"Payroll", "", "Payroll", ""},
        {"&LLeft&CMiddle&RRight", "Left", "Middle", "Right"},
        {"&LPage &P of &N&R&D &T", "Page 2 of 7", "", "3/31/2026 9:30 AM"},
        {"&A, &Z&F", "", "Stubs, /tmp/pay.xls", ""},
        {"&P+3 &P-1", "", "5 1", ""},
        {"Ship && Sail &", "", "Ship & Sail ", ""},
        {"&\"Arial,Bold\"&12A&G&XB\nC", "", "AB\nC", ""},
        {"&\"open", "", "", ""},
    };
    for (const auto& [codes, left, center, right] : cases) {
        const auto texts = pageTexts(codes, standard, facts);
        EXPECT_EQ(texts[0].text, left) << codes;
        EXPECT_EQ(texts[1].text, center) << codes;
        EXPECT_EQ(texts[2].text, right) << codes;
    }
    const auto texts = pageTexts("&L&\"Courier New,Bold Italic\"&12&UA&R&8B", standard, facts);
    EXPECT_EQ(texts[0].font, (drawing::Font{"Courier New", 240, true, true, false, true}));
    EXPECT_EQ(texts[2].font, (drawing::Font{"Arial", 160})) << "each part begins with the standard font";
}

} // namespace
} // namespace wagemill::engine
