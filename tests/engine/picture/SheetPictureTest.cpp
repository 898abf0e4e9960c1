#include "workbook/engine/picture/SheetPicture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

namespace wagemill::engine {

namespace {

constexpr std::uint16_t width70 = 2560; // 10 digits: 70 pixels
constexpr ColorIndex red = 10;          // of the standard palette
constexpr Rgb redRgb = {255, 0, 0};
constexpr Rgb gridGrey = {212, 212, 212};

/// A sheet with columns of 70 and rows of 20 pixels and no grid lines.
class SheetPictureTest : public testing::Test {
protected:
    SheetPictureTest()
    {
        m_sheet.showGridLines = false;
        m_sheet.defaultRowHeightTwips = 300;
        m_sheet.columns.push_back({0, 9, width70});
    }

    void put(const std::string& cell, CellValue value, const std::string& numberFormat = "General")
    {
        m_sheet.at(parseAddress(cell)->first()).value = std::move(value);
        look(cell, [&](CellFormat& format) { format.numberFormat = m_book.styles.numberFormatFor(numberFormat); });
    }
    void look(const std::string& cells, const std::function<void(CellFormat&)>& change)
    {
        const CellRect area = parseAddress(cells).value();
        for (int row = area.firstRow; row <= area.lastRow; ++row)
            for (int column = area.firstColumn; column <= area.lastColumn; ++column) {
                Cell& cell = m_sheet.at({row, column});
                CellFormat format = m_book.styles.format(cell.format);
                change(format);
                cell.format = m_book.styles.formatFor(format);
            }
    }
    void fill(const std::string& cells, std::uint8_t pattern = 1)
    {
        look(cells, [=](CellFormat& format) { format.fill = {pattern, red, windowBackgroundColor}; });
    }
    drawing::Drawing picture(const std::string& range = "A1:E5") const
    {
        return sheetPicture(m_book, m_sheet, parseAddress(range).value(), RegionalFormats{});
    }
    /// The text of the picture that begins so.
    static drawing::Text textOf(const drawing::Drawing& picture, const std::string& beginning)
    {
        for (const drawing::Text& text : picture.texts)
            if (text.text.starts_with(beginning))
                return text;
        ADD_FAILURE() << "no text begins with " << beginning;
        return {};
    }

    Book m_book;
    Sheet& m_sheet = m_book.addSheet("Stubs");
};

TEST_F(SheetPictureTest, PixelsFollowFromStoredWidthsAndHeights)
{
    // Widths as the spreadsheet application stores them, and the pixels that it shows for them with Arial 10.
    const std::pair<std::uint16_t, int> widths[] = {{0, 0}, {36, 1}, {2304, 63}, {2340, 64}, {4681, 128}};
    for (const auto& [width256, pixels] : widths) {
        m_sheet.columns.front().width = width256;
        EXPECT_EQ(picture("A1:A1").width, pixels + 1) << width256;
    }
    EXPECT_EQ(picture("K1:K1").width, 61 + 1) << "of the default width, 8 digits and 5 pixels";
    const std::pair<std::uint16_t, int> heights[] = {{247, 16}, {248, 17}, {8190, 546}};
    for (const auto& [twips, pixels] : heights) {
        m_sheet.row(0).heightTwips = twips;
        EXPECT_EQ(picture("A1:A1").height, pixels + 1) << twips;
    }
}

TEST_F(SheetPictureTest, HasTheSizeOfTheRangeAndOnePixelForTheLastLines)
{
    EXPECT_EQ(picture("B2:D4").width, 3 * 70 + 1);
    EXPECT_EQ(picture("B2:D4").height, 3 * 20 + 1);

    m_sheet.row(2).hidden = true;
    m_sheet.columns = {{0, 1, width70}, {2, 2, width70, defaultCellFormat, true}, {3, 9, width70}};
    EXPECT_EQ(picture("B2:D4").width, 2 * 70 + 1) << "hidden columns take no room";
    EXPECT_EQ(picture("B2:D4").height, 2 * 20 + 1) << "hidden rows take no room";

    put("C2", "hidden by its column");
    put("B3", "hidden by its row");
    EXPECT_TRUE(picture("B2:D4").texts.empty());
    EXPECT_THROW(picture("A1:IV65536"), EngineError) << "no screen can show it";
}

TEST_F(SheetPictureTest, FillsJoinNeighboursOfOneColour)
{
    fill("B2:C2");
    fill("E2");
    fill("B3", 2);
    const std::vector<drawing::Fill> expected = {{{70, 20, 140, 20}, redRgb},
                                                 {{280, 20, 70, 20}, redRgb},
                                                 {{70, 40, 70, 20}, {255, 128, 128}}}; // a hatch is seen as its mixture
    EXPECT_EQ(picture().fills, expected);
    m_sheet.row(0).format = m_sheet.at({1, 1}).format;
    EXPECT_EQ(picture("A1:C1").fills, (std::vector<drawing::Fill>{{{0, 0, 210, 20}, redRgb}})) << "by its row";
}

TEST_F(SheetPictureTest, AMergedAreaIsOneCell)
{
    m_sheet.merged.push_back(parseAddress("B2:D3").value());
    put("B2", "ACME");
    put("C3", "covered");
    fill("B2");
    look("B2:D3", [](CellFormat& format) { format.left = {BorderStyle::Thin, red}; });
    const drawing::Drawing shown = picture();
    ASSERT_EQ(shown.texts.size(), 1U);
    EXPECT_EQ(shown.texts[0].cell, (drawing::Rect{70, 20, 210, 40}));
    EXPECT_EQ(shown.texts[0].room, shown.texts[0].cell);
    EXPECT_EQ(shown.fills.size(), 2U) << "the first cell's background lies under all of it, row by row";
    EXPECT_EQ(shown.lines, (std::vector<drawing::Line>{{70, 20, 70, 60, BorderStyle::Thin, redRgb}}));
}

TEST_F(SheetPictureTest, AlignsByTheKindOfValueUnlessAnAlignmentWasChosen)
{
    using Chosen = HorizontalAlignment;
    using drawing::Align;
    const std::tuple<CellValue, Chosen, Align> cases[] = {
        {12.5, Chosen::General, Align::Right},  {"Ned", Chosen::General, Align::Left},
        {true, Chosen::General, Align::Center}, {ErrorCode::NotAvailable, Chosen::General, Align::Center},
        {12.5, Chosen::Left, Align::Left},      {"Ned", Chosen::Right, Align::Right},
        {"Ned", Chosen::Center, Align::Center},
    };
    for (const auto& [value, chosen, expected] : cases) {
        put("B2", value);
        look("B2", [&](CellFormat& format) { format.horizontal = chosen; });
        const drawing::Text text = textOf(picture(), "");
        EXPECT_EQ(text.align, expected) << text.text << " as " << static_cast<int>(chosen);
    }
}

TEST_F(SheetPictureTest, TextRunsOverEmptyCellsUntilAFilledOne)
{
    using enum HorizontalAlignment;
    const std::tuple<const char*, HorizontalAlignment, const char*, double, double> cases[] = {
        {"B2", General, "C3", 70, 350}, // to the range's end, only in its own row
        {"B2", General, "D2", 70, 210}, {"B2", General, "C2", 70, 140}, {"D2", Right, "E2", 0, 280},
        {"D2", Right, "B2", 140, 280},  {"C2", Center, "A2", 70, 350}, // both ways, each up to its own
    };
    for (const auto& [cell, alignment, filled, left, right] : cases) {
        m_sheet.row(1).cells.clear();
        m_sheet.row(2).cells.clear();
        put(cell, "A long company name");
        look(cell, [&, chosen = alignment](CellFormat& format) { format.horizontal = chosen; });
        put(filled, 1.0);
        const drawing::Text text = textOf(picture(), "A long");
        EXPECT_EQ(text.room.left, left) << cell << " beside " << filled;
        EXPECT_EQ(text.room.left + text.room.width, right) << cell << " beside " << filled;
    }
}

TEST_F(SheetPictureTest, WhatDoesNotRunOver)
{
    put("B1", 123456789.0);
    put("B2", "wrapped\ntext");
    put("B3", ErrorCode::Value);
    put("B4", "shrunk\ntext");
    look("B2", [](CellFormat& format) { format.wrap = true; });
    look("B4", [](CellFormat& format) { format.shrinkToFit = true; });
    const drawing::Drawing shown = picture();
    ASSERT_EQ(shown.texts.size(), 4U);
    for (const drawing::Text& text : shown.texts)
        EXPECT_EQ(text.room, text.cell) << text.text;
    EXPECT_TRUE(textOf(shown, "wrapped\ntext").wrap);
    EXPECT_TRUE(textOf(shown, "shrunktext").shrink) << "a line break shows only where lines break";

    m_sheet.merged.push_back(parseAddress("D5:E5").value());
    put("C5", "stops at a merged area");
    EXPECT_EQ(textOf(picture(), "stops").room.width, 70);
}

TEST_F(SheetPictureTest, NumbersShowShorterFormsOrHashes)
{
    put("B1", 1234.56789);
    put("B2", 1234.5, "\"$\"#,##0.00");
    put("B3", -5.0, "m/d/yy");
    put("B4", 0.0, ";;");
    put("B5", -3.0, "0.00;[Red]0.00");
    const drawing::Drawing shown = picture();
    ASSERT_EQ(shown.texts.size(), 4U) << "what the format hides is not drawn";
    const drawing::Text general = textOf(shown, "1234.56789");
    EXPECT_TRUE(general.hashesWhenTooWide);
    ASSERT_FALSE(general.shorterForms.empty());
    EXPECT_EQ(general.shorterForms.front(), "1234.5679");
    EXPECT_TRUE(std::ranges::is_sorted(general.shorterForms, std::greater{}, &std::string::size));
    EXPECT_TRUE(textOf(shown, "$1,234.50").shorterForms.empty());
    EXPECT_TRUE(std::ranges::any_of(shown.texts, &drawing::Text::alwaysHashes)) << "a negative date";
    EXPECT_EQ(textOf(shown, "3.00").color, redRgb);
}

TEST_F(SheetPictureTest, TheStrongerBorderOfASharedEdgeIsDrawnOnce)
{
    // B2's right and C2's left border are the same edge.
    using enum BorderStyle;
    const std::tuple<BorderStyle, BorderStyle, BorderStyle> cases[] = {
        {Thin, None, Thin}, {None, Thin, Thin},       {Thin, Medium, Medium},  {Thick, Medium, Thick},
        {Hair, Thin, Thin}, {Double, Medium, Double}, {Dashed, Dotted, Dashed}};
    for (const auto& [ofLeftCell, ofRightCell, drawn] : cases) {
        look("B2", [&](CellFormat& format) { format.right = {ofLeftCell, red}; });
        look("C2", [&](CellFormat& format) { format.left = {ofRightCell, red}; });
        EXPECT_EQ(picture().lines, (std::vector<drawing::Line>{{140, 20, 140, 40, drawn, redRgb}}))
            << static_cast<int>(ofLeftCell) << " beside " << static_cast<int>(ofRightCell);
    }
}

TEST_F(SheetPictureTest, PiecesOfALineAreJoinedWhereTheyLookTheSame)
{
    look("A2:C2", [](CellFormat& format) { format.bottom = {BorderStyle::Thin, red}; });
    look("D2", [](CellFormat& format) { format.bottom = {BorderStyle::Thick, red}; });
    look("E4", [](CellFormat& format) {
        format.diagonal = {BorderStyle::Thin, red};
        format.diagonalDirections = 2;
    });
    const std::vector<drawing::Line> expected = {{0, 40, 210, 40, BorderStyle::Thin, redRgb},
                                                 {210, 40, 280, 40, BorderStyle::Thick, redRgb},
                                                 {280, 80, 350, 60, BorderStyle::Thin, redRgb}};
    EXPECT_EQ(picture().lines, expected);
}

TEST_F(SheetPictureTest, GridLinesOnlyOnPlainBackgroundWhereTheSheetShowsThem)
{
    EXPECT_TRUE(picture("A1:B1").lines.empty());

    m_sheet.showGridLines = true;
    const auto hasUpright = [&](double x) {
        return std::ranges::count(picture("A1:C1").lines, drawing::Line{x, 0, x, 20, BorderStyle::Thin, gridGrey}) == 1;
    };
    for (const double x : {0.0, 70.0, 140.0, 210.0})
        EXPECT_TRUE(hasUpright(x)) << x;
    put("A1", "runs over B1");
    EXPECT_FALSE(hasUpright(70)) << "a text runs over this edge";
    fill("C1");
    EXPECT_FALSE(hasUpright(210)) << "a filled cell has no grid lines";
    look("B1", [](CellFormat& format) { format.right = {BorderStyle::Thin, red}; });
    EXPECT_FALSE(hasUpright(140)) << "a border is drawn instead";
}

} // namespace
} // namespace wagemill::engine
