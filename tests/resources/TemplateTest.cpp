#include "drawing/TextBlock.h"
#include "resources/PayrollTemplate.h"
#include "workbook/engine/formula/CellEntry.h"
#include "workbook/engine/formula/Recalculation.h"
#include "workbook/engine/picture/SheetPicture.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace wagemill {
namespace {

using engine::Book;
using engine::CellAddress;

Book payrollTemplate()
{
    return engine::xls::readWorkbook(payrollTemplateFile(), "template.xlt");
}

CellAddress address(std::string_view text)
{
    const auto area = engine::parseAddress(text).value();
    return {area.firstRow, area.firstColumn};
}

TEST(Template, IsATemplateThatSaysWhereItComesFrom)
{
    EXPECT_TRUE(payrollTemplate().isTemplate);
    const auto bytes = payrollTemplateFile();
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    for (const char* part : {"Payroll workbook", "Wagemill"})
        EXPECT_NE(text.find(part), std::string_view::npos) << part;
}

TEST(Template, InputCellsAreNotLockedAndFormulasAre)
{
    const Book book = payrollTemplate();
    for (const auto& sheet : book.sheets)
        for (const engine::Row& row : sheet->rows())
            for (const engine::Cell& cell : row.cells)
                if (cell.formula) {
                    EXPECT_TRUE(book.styles.format(cell.format).locked) << sheet->name << cell.column;
                }
    const std::pair<std::size_t, const char*> inputs[] = {{0, "B4"}, {0, "J28"}, {0, "L4"}, {0, "M28"},
                                                          {1, "B4"}, {1, "D28"}, {1, "H4"}, {1, "K28"},
                                                          {1, "L2"}, {2, "C2"},  {2, "H3"}};
    for (const auto& [sheet, place] : inputs)
        EXPECT_FALSE(book.styles.format(book.sheets[sheet]->find(address(place))->format).locked) << place;
}

TEST(Template, ComputesTheSampleEmployeeAndACopyOfTheBlock)
{
    Book book = payrollTemplate();
    // In the second slot, so that the copy of the block and not the block itself shows them.
    const struct {
        std::size_t sheet;
        const char* place;
        const char* text;
    } inputs[] = {{0, "B5", "E118"},      {0, "C5", "Ned Hollister"},
                  {0, "D5", "$15.00"},    {0, "E5", "Single"},
                  {0, "F5", "2"},         {0, "G5", "10%"},
                  {0, "H5", "15%"},       {0, "I5", "1%"},
                  {0, "J5", "4%"},        {0, "L5", "$2.00"},
                  {0, "M5", "$5.00"},     {1, "B5", "E118"},
                  {1, "D5", "39"},        {1, "E5", "7"},
                  {1, "F5", "15"},        {1, "G5", "8"},
                  {1, "H5", "$10.25"},    {1, "K5", "$2.00"},
                  {1, "L2", "3/31/2026"}, {2, "H15", "E118"}};
    book.sheets[2]->copyRows(1, 11, 13);
    for (const auto& [sheet, place, text] : inputs)
        enterText(book, sheet, address(place), text, RegionalFormats{}, {2026, 3, 31});
    engine::recalculate(book, {});

    const std::pair<const char*, double> expected[] = {{"D15", 46112}, {"H17", 39},     {"D18", 15},    {"F18", 10.25},
                                                       {"D19", 9.97},  {"F19", 149.55}, {"D20", 39.88}, {"F20", 99.70},
                                                       {"D21", 2},     {"F21", 5},      {"H21", 997},   {"D22", 306.10},
                                                       {"F22", 2},     {"H22", 308.10}, {"H23", 688.90}};
    for (const auto& [place, amount] : expected)
        EXPECT_NEAR(std::get<double>(book.sheets[2]->value(address(place))), amount, 1e-9) << place;
    EXPECT_EQ(book.sheets[2]->value(address("F15")), engine::CellValue("Ned Hollister"));
    // A rate takes its own percentage format only where the cell has none.
    const auto& rate = book.styles.format(book.sheets[0]->find(address("G5"))->format);
    EXPECT_EQ(book.styles.numberFormatCode(rate.numberFormat), "0%");
}

TEST(Template, PrintsListsOnePageWideAndWholeStubs)
{
    const Book book = payrollTemplate();
    for (const std::size_t list : {0U, 1U}) {
        const engine::PrintSetup& print = book.sheets[list]->print;
        EXPECT_TRUE(print.fitToPages && print.landscape && print.pagesWide == 1 && print.pagesHigh == 0);
    }
    const engine::PrintSetup& stubs = book.sheets[2]->print;
    EXPECT_FALSE(stubs.landscape || stubs.fitToPages) << "fitting ignores the page breaks";
    ASSERT_GE(stubs.rowBreaks.size(), 6U) << "25 stubs fill seven pages";
    for (const engine::PageBreak& pageBreak : stubs.rowBreaks)
        EXPECT_EQ(pageBreak.at % 12, 0) << "a page begins with the row between two stubs";
    std::string names;
    for (const engine::DefinedName& name : book.names)
        names += name.name + " of " + std::to_string(name.sheet.value()) + "; ";
    EXPECT_EQ(names, "Print_Titles of 0; Print_Titles of 1; Print_Area of 2; ");
}

drawing::Drawing pictureOf(const Book& book, std::size_t sheet)
{
    return sheetPicture(book, *book.sheets[sheet], book.sheets[sheet]->usedRange().value(), RegionalFormats{});
}

/// No word is broken and no line cut.
/// lineHeight  in sizes of the font; that of other programs is up to a quarter more
void expectFits(const drawing::Text& text, const drawing::Font& font, double lineHeight)
{
    const double width = text.room.width - 2 * drawing::textPadding - text.indent * drawing::indentWidth;
    const QString words = QString::fromStdString(text.text);
    const TextBlock block = textBlock(words, drawnFont(font), width, text.wrap);
    for (const QString& word : words.split(QRegularExpression("[\\s-]"), Qt::SkipEmptyParts))
        EXPECT_TRUE(text.shrink || textBlock(word, drawnFont(font), 0, false).width <= width) << text.text;
    EXPECT_TRUE(text.shrink || block.width <= width) << text.text;
    EXPECT_LE(block.layout->lineCount() * lineHeight * font.heightTwips / twipsPerPixel, text.cell.height) << text.text;
}

void expectFits(const drawing::Drawing& picture, double lineHeight = 1.25)
{
    for (const drawing::Text& text : picture.texts)
        expectFits(text, picture.fonts.at(text.font), lineHeight);
}

/// Amounts up to a million, also below zero, in all the cells that show one.
int putLargeAmounts(Book& book, engine::Sheet& sheet)
{
    int amounts = 0;
    const engine::CellRect used = sheet.usedRange().value();
    for (int row = used.firstRow; row <= used.lastRow; ++row)
        for (int column = used.firstColumn; column <= used.lastColumn; ++column)
            if (engine::Cell* const cell = sheet.find({row, column}))
                if (const std::uint16_t format = book.styles.format(cell->format).numberFormat;
                    book.styles.numberFormatCode(format) == "\"$\"#,##0.00" && !isEmpty(cell->value)) {
                    cell->value = -999999.99;
                    ++amounts;
                }
    return amounts;
}

TEST(TemplateLayout, NothingThatIsShownIsCut)
{
    for (const std::size_t sheet : {0U, 1U, 2U}) {
        Book book = payrollTemplate();
        expectFits(pictureOf(book, sheet));
        const auto amounts = putLargeAmounts(book, *book.sheets[sheet]);
        EXPECT_GT(amounts, 10);
        const drawing::Drawing picture = pictureOf(book, sheet);
        expectFits(picture);
        EXPECT_EQ(std::ranges::count(picture.texts, "-$999,999.99", &drawing::Text::text), amounts);
    }
}

TEST(TemplateLayout, LongNamesAndTaxStatusesBreakIntoTheirRows)
{
    Book book = payrollTemplate();
    engine::Sheet& stubs = *book.sheets[2];
    stubs.at(address("F3")).value = "Maximiliana Bartholomea Featherstonehaugh-Cholmondeley van den Oudenhoven Junior";
    stubs.at(address("D5")).value = "Married filing jointly";
    stubs.at(address("C2")).value = std::string(255, 'W');
    expectFits(pictureOf(book, 2), 1);
}

TEST(TemplateLayout, HasAMarginOnEverySideOfTheStubsPicture)
{
    constexpr double margin = 5;
    const drawing::Drawing picture = pictureOf(payrollTemplate(), 2);
    const auto inside = [&](double x, double y) {
        return x >= margin && y >= margin && x <= picture.width - margin && y <= picture.height - margin;
    };
    for (const auto& [area, color] : picture.fills)
        EXPECT_TRUE(inside(area.left, area.top) && inside(area.left + area.width, area.top + area.height));
    for (const auto& line : picture.lines)
        EXPECT_TRUE(inside(line.x1, line.y1) && inside(line.x2, line.y2));
}

} // namespace
} // namespace wagemill
