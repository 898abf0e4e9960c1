#include "preview/PictureBox.h"

#include <QImage>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>

using namespace wagemill;

namespace {

constexpr QSize naturalUnits(310, 155); ///< with the hairline 1240 by 620 pixels

QImage noise()
{
    std::mt19937 random(7);
    QImage image(1238, 618, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, static_cast<QRgb>(random()) | 0xFF000000U);
    return image;
}

/// The picture as drawn, put together from what is seen through a window that moves over it.
QImage shown(const QImage& bitmap, QSize units, QSize part)
{
    PictureBox box(nullptr);
    box.resize(units * 4);
    box.paintPicture(bitmapPicture(bitmap), naturalUnits, units);
    QImage drawn(box.size(), QImage::Format_RGB32);
    for (int y = 0; y < box.height(); y += part.height())
        for (int x = 0; x < box.width(); x += part.width())
            box.render(&drawn, QPoint(x, y), QRegion(QRect(QPoint(x, y), part)));
    return drawn;
}

TEST(PictureBox, ShowsEveryPixelOfABitmapAtItsNaturalSizeInAHairline)
{
    const QImage bitmap = noise();
    const QImage drawn = shown(bitmap, naturalUnits, {2000, 2000});
    EXPECT_EQ(drawn.copy(1, 1, bitmap.width(), bitmap.height()), bitmap);
    EXPECT_EQ(drawn.pixelColor(0, 300), drawn.pixelColor(1239, 300));
    EXPECT_NE(drawn.pixelColor(0, 300), QColor(Qt::white));
}

TEST(PictureBox, DrawsAPictureInPartsAsOneWhole)
{
    for (const int quarters : {1, 2, 3, 5}) {
        const QSize units(naturalUnits.width() * quarters / 4, naturalUnits.height() * quarters / 4);
        const QImage parts = shown(noise(), units, {333, 217});
        const QImage whole = shown(noise(), units, {5000, 5000});
        int maxDifference = 0;
        for (int y = 0; y < whole.height(); ++y)
            for (int x = 0; x < whole.width(); ++x)
                maxDifference = std::max(maxDifference, std::abs(qGray(parts.pixel(x, y)) - qGray(whole.pixel(x, y))));
        EXPECT_LE(maxDifference, 4) << quarters;
    }
}

TEST(PictureBox, AveragesThePixelsOfASmallerBitmap)
{
    QImage stripes(1238, 618, QImage::Format_RGB32);
    for (int x = 0; x < stripes.width(); ++x)
        for (int y = 0; y < stripes.height(); ++y)
            stripes.setPixelColor(x, y, x % 4 == 0 ? Qt::black : Qt::white);
    const QImage drawn = shown(stripes, naturalUnits / 4, {2000, 2000});
    for (int x = 4; x < 300; ++x)
        EXPECT_NEAR(drawn.pixelColor(x, 80).red(), 191, 40) << x;
}

} // namespace
