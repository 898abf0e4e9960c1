#include "preview/PictureBox.h"

#include <QImage>

#include <gtest/gtest.h>

#include <random>

using namespace wagemill;

namespace {

QImage noise(QSize size)
{
    std::mt19937 chance(7);
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, static_cast<QRgb>(chance()) | 0xFF000000U);
    return image;
}

/// The box as drawn, put together from what is seen through a window that moves over it.
QImage drawnInParts(PictureBox& box, QSize part)
{
    QImage drawn(box.size(), QImage::Format_RGB32);
    for (int y = 0; y < box.height(); y += part.height())
        for (int x = 0; x < box.width(); x += part.width())
            box.render(&drawn, QPoint(x, y), QRegion(QRect(QPoint(x, y), part)));
    return drawn;
}

TEST(PictureBox, DrawsASmallerPictureInPartsAsOneWhole)
{
    constexpr QSize natural(2480, 1240); // several tiles, and the last ones cut
    const QImage picture = noise(natural);
    for (const int divisor : {2, 4}) {
        const QSize smaller = natural / divisor;
        PictureBox box(nullptr);
        box.resize(smaller);
        box.paintPicture(QPixmap::fromImage(picture), natural, smaller);
        EXPECT_EQ(drawnInParts(box, {333, 217}),
                  picture.scaled(smaller, Qt::IgnoreAspectRatio, Qt::SmoothTransformation))
            << "divisor " << divisor;
    }
}

TEST(PictureBox, DrawsANewPictureAfterAnEarlierOne)
{
    constexpr QSize natural(600, 600);
    PictureBox box(nullptr);
    box.resize(natural / 2);
    for (const QColor color : {Qt::red, Qt::blue}) {
        QImage picture(natural, QImage::Format_RGB32);
        picture.fill(color);
        box.paintPicture(QPixmap::fromImage(picture), natural, natural / 2);
        EXPECT_EQ(box.grab().toImage().pixelColor(290, 290), color);
    }
}

} // namespace
