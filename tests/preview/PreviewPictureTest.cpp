#include "preview/PreviewPicture.h"

#include "app/base/Files.h"
#include "drawing/DrawingFile.h"
#include "tests/support/FailureOf.h"
#include "tests/support/TemporaryFolder.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <tuple>

using namespace wagemill;
using namespace wagemill::test;

TEST(LoadPicture, TakesMoreDotsAnInchAsSharpness)
{
    const TemporaryFolder folder;
    const std::pair<int, double> cases[] = {
        {3780, 1}, {5669, 1.5}, {7559, 2}, {11339, 3}, {15118, 4}, // 96, 144, 192, 288 and 384 dots an inch
        {2835, 1}, {40000, 1},                                     // 72 is no reason to enlarge, 1016 is no screen
    };
    for (const auto& [dotsPerMetre, ratio] : cases) {
        QImage image(200, 100, QImage::Format_RGB32);
        image.setDotsPerMeterX(dotsPerMetre);
        image.save(QString::fromStdString((folder / "temp.bmp").string()));
        EXPECT_EQ(loadPicture(folder / "temp.bmp")->naturalSize(), QSizeF(200, 100) / ratio)
            << dotsPerMetre << " dots a metre";
    }
}

TEST(LoadPicture, LiesOnWhitePaperAndIsOpaqueWhereTransparencyWasNeverSet)
{
    const TemporaryFolder folder;
    const std::tuple<QRgb, QRgb, QRgb, QRgb> cases[] = {
        {qRgba(10, 20, 30, 255), qRgba(0, 0, 0, 0), qRgb(10, 20, 30), qRgb(255, 255, 255)},
        {qRgba(0, 0, 0, 128), qRgba(0, 0, 0, 255), qRgb(127, 127, 127), qRgb(0, 0, 0)},
        {qRgba(10, 20, 30, 0), qRgba(40, 50, 60, 0), qRgb(10, 20, 30), qRgb(40, 50, 60)},
    };
    for (const auto& [pixels, corner, expectedPixels, expectedCorner] : cases) {
        QImage image(4, 4, QImage::Format_ARGB32);
        image.fill(pixels);
        image.setPixel(0, 0, corner);
        image.save(QString::fromStdString((folder / "temp.bmp").string()), "png"); // a name says nothing
        const SharedPicture picture = loadPicture(folder / "temp.bmp");
        QPainter painter(&image);
        picture->paint(painter, image.rect());
        EXPECT_EQ(image.pixel(3, 3), expectedPixels);
        EXPECT_EQ(image.pixel(0, 0), expectedCorner);
    }
}

TEST(LoadPicture, NamesTheFileThatItCannotRead)
{
    const TemporaryFolder folder;
    std::ofstream(folder / "garbage.bmp") << "BM and no bitmap";
    std::string metafileStart(88, '\0');
    metafileStart[0] = 1;
    metafileStart.replace(40, 4, " EMF");
    std::ofstream(folder / "metafile.bmp") << metafileStart;
    std::vector<std::byte> drawing = drawingFile({});
    drawing[20] ^= std::byte{1};
    writeBytesToFile(drawing, folder / "drawing.bmp");
    const std::pair<const char*, const char*> cases[] = {
        {"missing.bmp", "No such file or directory"},
        {"garbage.bmp", "Unable to read image data"},
        {"metafile.bmp", "it is an enhanced metafile, which only Windows shows"},
        {"drawing.bmp", "the drawing is damaged or cut off"}};
    for (const auto& [name, reason] : cases)
        EXPECT_EQ(failureOf([&, file = name] { loadPicture(folder / file); }),
                  "Cannot read the picture \"" + (folder / name).string() + "\": " + reason + ".");
}
