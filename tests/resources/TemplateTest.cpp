#include "app/base/Files.h"
#include "drawing/TextBlock.h"
#include "resources/PayrollTemplate.h"
#include "tests/support/EmbeddedBuilds.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/workbook/BuildCases.h"
#include "workbook/engine/picture/SheetPicture.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

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

TEST(Template, ComputesTheSampleEmployeeInACopyOfTheBlock)
{
    const test::TemporaryFolder folder;
    const test::ScopedEnvironment temp("TEMP", folder.path().string());
    PayrollData data = test::buildCases().front().data;
    data.rows.insert(data.rows.begin(), EmployeeRow{}); // the block itself shows nobody
    const auto workbook = test::EmbeddedBuilds().build(data).workbook;
    const Book book = engine::xls::readWorkbook(readBytesFromFile(workbook), "built.xls");
    const engine::Sheet& stubs = *book.sheets[2];
    const std::pair<const char*, double> expected[] = {
        {"D15", 46112}, {"H17", 39},   {"H18", 15},     {"H19", 7},     {"H20", 8},      {"D18", 15},
        {"F18", 10.25}, {"D19", 9.97}, {"F19", 149.55}, {"D20", 39.88}, {"F20", 99.70},  {"D21", 2},
        {"F21", 5},     {"H21", 997},  {"D22", 306.10}, {"F22", 2},     {"H22", 308.10}, {"H23", 688.90}};
    for (const auto& [place, amount] : expected)
        EXPECT_NEAR(std::get<double>(stubs.value(address(place))), amount, 1e-9) << place;
    EXPECT_EQ(stubs.value(address("F15")), engine::CellValue("Ned Hollister"));
}

drawing::Drawing pictureOf(const Book& book, std::size_t sheet)
{
    return sheetPicture(book, *book.sheets[sheet], book.sheets[sheet]->usedRange().value(), RegionalFormats{});
}

/// No word is broken and no line cut.
/// lineHeight  in sizes of the font; that of other programs is up to a quarter more
void expectFits(const drawing::Drawing& picture, double lineHeight = 1.25)
{
    for (const drawing::Text& text : picture.texts) {
        const drawing::Font& font = picture.fonts.at(text.font);
        const double width = text.room.width - 2 * drawing::textPadding - text.indent * drawing::indentWidth;
        const QString words = QString::fromStdString(text.text);
        const TextBlock block = textBlock(words, drawnFont(font), width, text.wrap);
        for (const QString& word : words.split(QRegularExpression("[\\s-]"), Qt::SkipEmptyParts))
            EXPECT_TRUE(text.shrink || textBlock(word, drawnFont(font), 0, false).width <= width) << text.text;
        EXPECT_TRUE(text.shrink || block.width <= width) << text.text;
        EXPECT_LE(block.layout->lineCount() * lineHeight * font.heightTwips / twipsPerPixel, text.cell.height)
            << text.text;
    }
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

} // namespace
} // namespace wagemill
