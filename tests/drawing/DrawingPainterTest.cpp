#include "drawing/DrawingPainter.h"
#include "drawing/TextBlock.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <tuple>

namespace wagemill {
namespace {

using namespace drawing;

constexpr Color red = {255, 0, 0};

Text textIn(const Rect& cell, const std::string& words)
{
    return {.cell = cell, .room = cell, .text = words};
}

Drawing pictureOf(const Text& text, double width = 400, double height = 100)
{
    return {.width = width, .height = height, .fonts = {{}}, .texts = {text}};
}

/// strip  the height of the parts that it is painted in, from top to bottom
QImage paintedPicture(const Drawing& picture, double scale, double strip = 1e6)
{
    QImage image(static_cast<int>(std::ceil(picture.width * scale)),
                 static_cast<int>(std::ceil(picture.height * scale)), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.scale(scale, scale);
    const DrawingPainter drawn(picture);
    for (QRectF part(0, 0, picture.width, strip); part.top() < picture.height; part.translate(0, strip)) {
        painter.setClipRect(part);
        drawn.paint(painter, part);
    }
    return image;
}

/// The smallest rectangle that holds everything dark, in pixels at 96 dots per inch.
QRectF inkOf(const Text& text, double scale = 1)
{
    constexpr int dark = 160;
    const QImage image = paintedPicture(pictureOf(text), scale);
    QRect ink;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qGray(image.pixel(x, y)) < dark)
                ink |= QRect(x, y, 1, 1);
    return {ink.x() / scale, ink.y() / scale, ink.width() / scale, ink.height() / scale};
}

TEST(DrawingPainter, DrawsFillsAndLinesSharpOnWhiteAtEveryScale)
{
    const Drawing picture = {
        .width = 101,
        .height = 51,
        .fills = {{{10, 10, 40, 20}, red}},
        .lines = {{0, 50, 100, 50}, {60, 10, 60, 30, LineStyle::Thick}, {80, 10, 80, 40, LineStyle::Dashed}}};
    const std::tuple<double, double, Qt::GlobalColor> points[] = {
        {5, 5, Qt::white},     {11, 11, Qt::red},     {48, 28, Qt::red},
        {52, 28, Qt::white},   {5, 50.4, Qt::black}, // the last row of pixels holds the bottom line
        {60.4, 25, Qt::black}, {61.4, 25, Qt::black}, {64, 25, Qt::white}, // a thick line is three pixels wide
        {60.4, 5, Qt::white},  {60.4, 35, Qt::white}, {80.4, 11, Qt::black},
        {80.4, 15, Qt::white}, {80.4, 17, Qt::black},
    };
    for (const double scale : {1.0, 1.5, 2.0}) {
        const QImage image = paintedPicture(picture, scale);
        for (const auto& [x, y, color] : points)
            EXPECT_EQ(image.pixelColor(static_cast<int>(x * scale), static_cast<int>(y * scale)), color)
                << x << ", " << y << " at scale " << scale;
    }
}

TEST(DrawingPainter, APartLooksAsItDoesInTheWhole)
{
    Drawing picture = pictureOf(textIn({10, 300, 120, 60}, "Net Pay"), 200, 1000);
    picture.fills = {{{0, 100, 200, 500}, red}, {{90, 110, 40, 300}, {}}};
    picture.lines = {{50, 0, 50, 999, LineStyle::Thick, red}, {0, 640, 199, 640, LineStyle::Double}};
    for (const double strip : {1, 7, 50, 400})
        EXPECT_EQ(paintedPicture(picture, 1, strip), paintedPicture(picture, 1)) << "strips " << strip << " high";
}

TEST(DrawingPainter, ArialHasTheWidthsOfArial)
{
    // Advance widths of the font's own table, in 1/2048 em: the digits 1139, "M" 1706, "i" 455.
    const double pixelsPerUnit = 10.0 * 96 / 72 / 2048;
    const auto widthOf = [](const char* text) { return textBlock(text, drawnFont(drawing::Font{}), 0, false).width; };
    EXPECT_NEAR(widthOf("0123456789"), 11390 * pixelsPerUnit, 0.2);
    EXPECT_NEAR(widthOf("MMMMiiii"), (4 * 1706 + 4 * 455) * pixelsPerUnit, 0.2);
}

TEST(DrawingPainter, TextIsInsideItsCellByItsAlignment)
{
    for (const int align : {0, 1, 2})
        for (const int vertical : {0, 1, 2}) {
            Text text = textIn({100, 30, 200, 40}, "Net Pay");
            text.align = static_cast<Align>(align);
            text.vertical = static_cast<VerticalAlign>(vertical);
            const QRectF ink = inkOf(text);
            EXPECT_TRUE(QRectF(100, 30, 200, 40).contains(ink));
            EXPECT_EQ(std::lround((ink.center().x() - 100) / 100), align) << ink.center().x();
            EXPECT_NEAR((ink.center().y() - 30) / 40, 0.25 + 0.25 * vertical, 0.1);
        }
}

TEST(DrawingPainter, TextOfEveryScriptIsInItsCell)
{
    // Hebrew, Arabic and Chinese names; those that run leftwards keep the cell's alignment.
    for (const char* const name : {"\u05D9\u05D5\u05E1\u05D9", "\u0645\u062D\u0645\u062F", "\u738B\u4F1F"})
        for (const bool wrap : {false, true}) {
            Text text = textIn({100, 30, 200, 40}, name);
            text.wrap = wrap;
            EXPECT_LT(inkOf(text).left(), 120) << name;
            text.align = Align::Right;
            EXPECT_GT(inkOf(text).right(), 280) << name;
        }
}

TEST(DrawingPainter, LayoutDoesNotDependOnTheScale)
{
    Text text = textIn({10, 10, 120, 80}, "Federal Income Tax (Percentage based on Federal Allowance)");
    text.wrap = true;
    const QRectF natural = inkOf(text, 1);
    for (const double scale : {1.5, 2.0, 3.0})
        for (const auto side : {&QRectF::left, &QRectF::right, &QRectF::top, &QRectF::bottom})
            EXPECT_NEAR((inkOf(text, scale).*side)(), (natural.*side)(), 1) << scale;
}

TEST(DrawingPainter, CutsWrapsAndShrinks)
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

TEST(DrawingPainter, ANumberThatDoesNotFitShowsAShorterFormOrHashes)
{
    const std::vector<std::string> forms = {"123456", "1234"};
    const std::tuple<double, std::vector<std::string>, bool, const char*> cases[] = {
        {120, {}, false, "$123,456.00"}, {40, {}, false, "####"}, {40, forms, false, "1234"},
        {18, forms, false, "#"},         {40, {}, true, "####"},
    };
    for (const auto& [width, shorterForms, alwaysHashes, sameAs] : cases) {
        Text number = textIn({0, 0, width, 20}, "$123,456.00");
        number.hashesWhenTooWide = true;
        number.shorterForms = shorterForms;
        number.alwaysHashes = alwaysHashes;
        EXPECT_EQ(paintedPicture(pictureOf(number), 1), paintedPicture(pictureOf(textIn(number.cell, sameAs)), 1))
            << sameAs;
    }
}

} // namespace
} // namespace wagemill
