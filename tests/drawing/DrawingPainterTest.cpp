#include "drawing/TextBlock.h"
#include "workbook/embedded/PictureClipboard.h"
#include "workbook/embedded/PicturePainter.h"

#include <QBuffer>
#include <QFontInfo>
#include <QImage>
#include <QImageReader>

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace wagemill {
namespace {

using drawing::Align;
using drawing::Color;
using drawing::Drawing;
using drawing::LineStyle;
using drawing::Rect;
using drawing::Text;

constexpr Color black = {0, 0, 0};
constexpr Color red = {255, 0, 0};

Text textIn(const Rect& cell, const std::string& words)
{
    Text text;
    text.cell = cell;
    text.room = cell;
    text.text = words;
    text.color = black;
    return text;
}

Drawing pictureOf(const Text& text, double width = 400, double height = 100)
{
    Drawing picture;
    picture.width = width;
    picture.height = height;
    picture.fonts = {{}};
    picture.texts.push_back(text);
    return picture;
}

/// The smallest rectangle that holds everything dark, in pixels at 96 dots per inch.
QRectF inkOf(const QImage& image, double scale)
{
    constexpr int dark = 160;
    QRect ink;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qGray(image.pixel(x, y)) < dark)
                ink |= QRect(x, y, 1, 1);
    return {ink.x() / scale, ink.y() / scale, ink.width() / scale, ink.height() / scale};
}

QRectF inkOf(const Text& text, double scale = 1)
{
    return inkOf(paintedPicture(pictureOf(text), scale), scale);
}

TEST(PicturePainter, DrawsFillsAndLinesSharpOnWhiteAtEveryScale)
{
    Drawing picture;
    picture.width = 101;
    picture.height = 51;
    picture.fills = {{{10, 10, 40, 20}, red}};
    picture.lines = {{0, 50, 100, 50, LineStyle::Thin, black}, {60, 0, 60, 50, LineStyle::Thick, black}};
    for (const double scale : {1.0, 1.5, 2.0}) {
        const QImage image = paintedPicture(picture, scale);
        EXPECT_EQ(image.width(), std::ceil(101 * scale));
        EXPECT_EQ(image.height(), std::ceil(51 * scale));
        const auto colorAt = [&](double x, double y) {
            return image.pixelColor(static_cast<int>(x * scale), static_cast<int>(y * scale));
        };
        EXPECT_EQ(colorAt(5, 5), QColor(Qt::white));
        EXPECT_EQ(colorAt(11, 11), QColor(Qt::red));
        EXPECT_EQ(colorAt(48, 28), QColor(Qt::red));
        EXPECT_EQ(colorAt(52, 28), QColor(Qt::white));
        EXPECT_EQ(colorAt(5, 50.4), QColor(Qt::black)) << "the last row of pixels holds the bottom line";
        EXPECT_EQ(colorAt(60.4, 25), QColor(Qt::black));
        EXPECT_EQ(colorAt(61.4, 25), QColor(Qt::black)) << "a thick line is three pixels wide";
        EXPECT_EQ(colorAt(64, 25), QColor(Qt::white));
    }
}

TEST(PicturePainter, ArialHasTheWidthsOfArial)
{
    // Advance widths of the font's own table, in 1/2048 em: the digits 1139, "M" 1706, "i" 455.
    const double pixelsPerUnit = 10.0 * 96 / 72 / 2048;
    const auto widthOf = [](const char* text) { return textBlock(text, drawnFont(drawing::Font{}), 0, false).width; };
    EXPECT_NEAR(widthOf("0123456789"), 11390 * pixelsPerUnit, 0.2);
    EXPECT_NEAR(widthOf("MMMMiiii"), (4 * 1706 + 4 * 455) * pixelsPerUnit, 0.2);
}

TEST(PicturePainter, TextStandsInsideItsCellByItsAlignment)
{
    const Rect cell = {100, 30, 200, 40};
    for (const Align align : {Align::Left, Align::Center, Align::Right})
        for (const auto vertical :
             {drawing::VerticalAlign::Top, drawing::VerticalAlign::Center, drawing::VerticalAlign::Bottom}) {
            Text text = textIn(cell, "Net Pay");
            text.align = align;
            text.vertical = vertical;
            const QRectF ink = inkOf(text);
            EXPECT_TRUE(QRectF(100, 30, 200, 40).contains(ink));
            const double across = (ink.center().x() - cell.left) / cell.width;
            const double down = (ink.center().y() - cell.top) / cell.height;
            EXPECT_EQ(std::lround(across * 2), static_cast<int>(align)) << across;
            EXPECT_NEAR(down, 0.25 + 0.25 * static_cast<int>(vertical), 0.1);
        }
}

TEST(PicturePainter, TextOfEveryScriptStandsInItsCell)
{
    // Hebrew, Arabic, Chinese and Greek names; those that run leftwards keep the cell's alignment.
    for (const char* const name : {"\u05D9\u05D5\u05E1\u05D9", "\u0645\u062D\u0645\u062F", "\u738B\u4F1F",
                                   "\u0391\u03BB\u03AD\u03BE\u03B7\u03C2"})
        for (const bool wrap : {false, true}) {
            Text text = textIn({100, 30, 200, 40}, name);
            text.wrap = wrap;
            EXPECT_LT(inkOf(text).left(), 120) << name;
            text.align = Align::Right;
            EXPECT_GT(inkOf(text).right(), 280) << name;
        }
}

TEST(PicturePainter, LayoutDoesNotDependOnTheScale)
{
    Text text = textIn({10, 10, 120, 80}, "Federal Income Tax (Percentage based on Federal Allowance)");
    text.wrap = true;
    const QRectF once = inkOf(text, 1);
    for (const double scale : {1.5, 2.0, 3.0}) {
        const QRectF ink = inkOf(text, scale);
        EXPECT_NEAR(ink.left(), once.left(), 1) << scale;
        EXPECT_NEAR(ink.right(), once.right(), 1) << scale;
        EXPECT_NEAR(ink.top(), once.top(), 1) << scale;
        EXPECT_NEAR(ink.bottom(), once.bottom(), 1) << scale;
    }
}

TEST(PicturePainter, CutsWrapsAndShrinks)
{
    const char* const name = "Maximiliana Featherstonehaugh-Cholmondeley the Third";
    Text text = textIn({10, 10, 100, 60}, name);
    EXPECT_LE(inkOf(text).right(), 110) << "cut at the cell's edge";

    text.room.width = 300;
    EXPECT_GT(inkOf(text).right(), 200) << "runs over the room beside it";

    text.room = text.cell;
    text.wrap = true;
    EXPECT_GT(inkOf(text).height(), 35) << "three lines, the long word broken";

    text.wrap = false;
    text.shrink = true;
    const QRectF shrunk = inkOf(text);
    EXPECT_LE(shrunk.right(), 108);
    EXPECT_GT(shrunk.width(), 85) << "as large as fits";
    EXPECT_LT(shrunk.height(), 8);
}

TEST(PicturePainter, ANumberThatDoesNotFitShowsAShorterFormOrHashes)
{
    const struct {
        const char* rule;
        double width;
        std::vector<std::string> shorterForms;
        bool alwaysHashes;
        const char* sameAs;
    } cases[] = {
        {"fits", 120, {}, false, "$123,456.00"},
        {"too wide", 40, {}, false, "####"},
        {"a shorter form fits", 40, {"123456", "1234"}, false, "1234"},
        {"no form fits", 18, {"123456", "1234"}, false, "#"},
        {"never shown", 40, {}, true, "####"},
    };
    for (const auto& each : cases) {
        Text number = textIn({0, 0, each.width, 20}, "$123,456.00");
        number.hashesWhenTooWide = true;
        number.shorterForms = each.shorterForms;
        number.alwaysHashes = each.alwaysHashes;
        const Text expected = textIn({0, 0, each.width, 20}, each.sameAs);
        EXPECT_EQ(paintedPicture(pictureOf(number), 1), paintedPicture(pictureOf(expected), 1)) << each.rule;
    }
}

TEST(BitmapFile, HoldsWhatIsPaintedAndItsResolution)
{
    Drawing picture = pictureOf(textIn({10, 10, 120, 20}, "Gross Pay"), 151, 41);
    picture.fills = {{{20, 5, 40, 20}, red}};
    for (const double scale : {1.0, 1.5, 2.0}) {
        const std::vector<std::byte> bytes = bitmapFileOf(picture, scale);
        const QImage loaded =
            QImage::fromData(reinterpret_cast<const uchar*>(bytes.data()), static_cast<int>(bytes.size()), "BMP");
        ASSERT_FALSE(loaded.isNull());
        EXPECT_EQ(loaded.convertToFormat(QImage::Format_RGB32), paintedPicture(picture, scale)) << scale;
        EXPECT_EQ(std::lround(loaded.dotsPerMeterX() * 0.0254), 96 * scale);
        EXPECT_EQ(loaded.dotsPerMeterX(), loaded.dotsPerMeterY());
    }
}

TEST(BitmapFile, IsDrawnInStripsWithoutSeams)
{
    // A sheet longer than a painter can address: its texts near and across the strips' borders are whole.
    Drawing picture;
    picture.width = 40;
    picture.height = 70000;
    picture.fonts = {{}};
    for (int top = 4090; top < 70000; top += 4096 + 2)
        picture.texts.push_back(textIn({0, static_cast<double>(top), 40, 20}, "Net"));
    const std::vector<std::byte> bytes = bitmapFileOf(picture, 1);
    const QImage loaded =
        QImage::fromData(reinterpret_cast<const uchar*>(bytes.data()), static_cast<int>(bytes.size()), "BMP")
            .convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(loaded.height(), 70000);
    const QImage first = loaded.copy(0, 4090, 40, 20);
    EXPECT_TRUE(QRectF(0, 0, 40, 20).contains(inkOf(first, 1)));
    EXPECT_GT(inkOf(first, 1).height(), 8);
    for (const Text& text : picture.texts)
        EXPECT_EQ(loaded.copy(0, static_cast<int>(text.cell.top), 40, 20), first) << text.cell.top;
    EXPECT_THROW(paintedPicture(picture, 1), SpreadsheetError) << "one image cannot hold it";
}

TEST(EmbeddedPictureClipboard, HoldsOneBitmapAndSaysWhenThereIsNone)
{
    EmbeddedPictureClipboard clipboard;
    EXPECT_THROW(clipboard.GetData(0), SpreadsheetError);

    clipboard.copy(pictureOf(textIn({0, 0, 50, 20}, "Net Pay")), 2);
    for (const std::int16_t bitmap : {std::int16_t{0}, std::int16_t{2}, std::int16_t{8}})
        EXPECT_EQ(*clipboard.GetData(bitmap).fileBytes, *clipboard.GetData(0).fileBytes);
    EXPECT_THROW(clipboard.GetData(14), SpreadsheetError) << "an enhanced metafile";

    Drawing endless;
    endless.width = 1000;
    endless.height = 1e6;
    try {
        clipboard.copy(endless, 1);
        FAIL() << "three gigabytes";
    } catch (const SpreadsheetError& error) {
        EXPECT_NE(std::string(error.what()).find("too large for a picture"), std::string::npos);
    }
    EXPECT_THROW(clipboard.GetData(0), SpreadsheetError) << "the picture before is gone";
}

TEST(ScaleThatFits, GivesUpSharpnessBeforeThePicture)
{
    Drawing stubs; // 400 pay stubs
    stubs.width = 850;
    stubs.height = 105000;
    EXPECT_EQ(scaleThatFits(stubs, 1), 1);
    EXPECT_LT(scaleThatFits(stubs, 2), 2);
    EXPECT_GE(scaleThatFits(stubs, 2), 1);
    stubs.height = 7000;
    EXPECT_EQ(scaleThatFits(stubs, 2), 2);
}

} // namespace
} // namespace wagemill
