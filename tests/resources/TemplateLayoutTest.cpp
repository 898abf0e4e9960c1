#include "drawing/TextBlock.h"
#include "resources/CustomResource.h"
#include "workbook/engine/picture/SheetPicture.h"
#include "workbook/engine/xls/BiffReader.h"

#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace wagemill {
namespace {

using engine::Book;

Book payrollTemplate()
{
    return engine::xls::readWorkbook(customResource(payrollTemplateResource), "template.xlt");
}

drawing::Drawing pictureOf(const Book& book, std::size_t sheet)
{
    return sheetPicture(book, *book.sheets[sheet], book.sheets[sheet]->usedRange().value(), RegionalFormats{});
}

double innerWidth(const drawing::Text& text)
{
    return text.room.width - 2 * drawing::textPadding - text.indent * drawing::indentWidth;
}

double widthOf(const QString& words, const drawing::Font& font)
{
    return textBlock(words, drawnFont(font), 0, false).width;
}

/// No word is broken, no line cut, and the lines have room in other programs too, whose lines are up to a quarter
/// higher than the font's size.
void expectFits(const drawing::Text& text, const drawing::Font& font)
{
    constexpr double highestLine = 1.25;
    const QString words = QString::fromStdString(text.text);
    const TextBlock block = textBlock(words, drawnFont(font), innerWidth(text), text.wrap);
    for (const QString& word : words.split(QRegularExpression("\\s"), Qt::SkipEmptyParts))
        EXPECT_LE(widthOf(word, font), innerWidth(text)) << text.text << ": " << word.toStdString();
    EXPECT_LE(block.width, innerWidth(text)) << text.text;
    EXPECT_LE(block.layout->lineCount() * highestLine * font.heightTwips / twipsPerPixel, text.cell.height)
        << text.text;
}

class TemplateLayout : public testing::TestWithParam<std::size_t> {};

TEST_P(TemplateLayout, NothingThatIsShownIsCut)
{
    const drawing::Drawing picture = pictureOf(payrollTemplate(), GetParam());
    for (const drawing::Text& text : picture.texts)
        expectFits(text, picture.fonts.at(text.font));
}

TEST_P(TemplateLayout, AmountsUpToAMillionFitAlsoBelowZero)
{
    Book book = payrollTemplate();
    engine::Sheet& sheet = *book.sheets[GetParam()];
    const engine::CellRect used = sheet.usedRange().value();
    int amounts = 0;
    for (int row = used.firstRow; row <= used.lastRow; ++row)
        for (int column = used.firstColumn; column <= used.lastColumn; ++column)
            if (engine::Cell* const cell = sheet.find({row, column}))
                if (const std::uint16_t format = book.styles.format(cell->format).numberFormat;
                    book.styles.numberFormatCode(format) == "\"$\"#,##0.00" && !isEmpty(cell->value)) {
                    cell->value = -999999.99;
                    ++amounts;
                }
    EXPECT_GT(amounts, 10);
    const drawing::Drawing picture = pictureOf(book, GetParam());
    for (const drawing::Text& text : picture.texts)
        if (text.text == "-$999,999.99") {
            EXPECT_LE(widthOf(QString::fromStdString(text.text), picture.fonts.at(text.font)), innerWidth(text));
            --amounts;
        }
    EXPECT_EQ(amounts, 0) << "every amount is shown";
}

INSTANTIATE_TEST_SUITE_P(Sheets, TemplateLayout, testing::Values(0, 1, 2));

TEST(StubLayout, HasAMarginOnEverySideOfItsPicture)
{
    constexpr double margin = 5;
    const drawing::Drawing picture = pictureOf(payrollTemplate(), 2);
    const auto inside = [&](double x, double y) {
        return x >= margin && y >= margin && x <= picture.width - margin && y <= picture.height - margin;
    };
    for (const auto& fill : picture.fills)
        EXPECT_TRUE(inside(fill.area.left, fill.area.top) &&
                    inside(fill.area.left + fill.area.width, fill.area.top + fill.area.height));
    for (const auto& line : picture.lines)
        EXPECT_TRUE(inside(line.x1, line.y1) && inside(line.x2, line.y2));
}

TEST(StubLayout, LongNamesAndTaxStatusesBreakIntoTheirRows)
{
    Book book = payrollTemplate();
    engine::Sheet& stubs = *book.sheets[2];
    stubs.at({2, 5}).value = "Maximiliana Bartholomea Featherstonehaugh-Cholmondeley van den Oudenhoven Junior";
    stubs.at({4, 3}).value = "Married filing jointly";
    stubs.at({1, 2}).value = std::string(255, 'W');
    const drawing::Drawing picture = pictureOf(book, 2);
    for (const drawing::Text& text : picture.texts) {
        const QString words = QString::fromStdString(text.text);
        const TextBlock block = textBlock(words, drawnFont(picture.fonts.at(text.font)), innerWidth(text), text.wrap);
        EXPECT_LE(block.height, text.cell.height) << text.text;
        if (!text.shrink) {
            EXPECT_LE(block.width, innerWidth(text)) << text.text;
        }
    }
}

} // namespace
} // namespace wagemill
