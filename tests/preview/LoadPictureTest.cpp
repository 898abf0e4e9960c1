#include "preview/LoadPicture.h"

#include "tests/support/TemporaryFolder.h"

#include <QImage>

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace wagemill {

namespace {

std::filesystem::path bitmapFile(const test::TemporaryFolder& folder, int dotsPerMetre)
{
    QImage image(200, 100, QImage::Format_RGB32);
    image.fill(Qt::red);
    image.setDotsPerMeterX(dotsPerMetre);
    image.setDotsPerMeterY(dotsPerMetre);
    const std::filesystem::path file = folder / "temp.bmp";
    image.save(QString::fromStdString(file.string()), "bmp");
    return file;
}

} // namespace

TEST(LoadPicture, TakesMoreDotsAnInchAsSharpness)
{
    const test::TemporaryFolder folder;
    struct {
        int dotsPerMetre;
        double ratio;
    } const cases[] = {
        {3780, 1}, {7559, 2},  {5669, 1.5}, {11339, 3}, // 96, 192, 144 and 288 dots an inch
        {2835, 1}, {40000, 1},                          // 72 is no reason to enlarge, 1016 is no screen
    };
    for (const auto& [dotsPerMetre, ratio] : cases) {
        const QPixmap picture = loadPicture(bitmapFile(folder, dotsPerMetre));
        EXPECT_EQ(picture.devicePixelRatio(), ratio) << dotsPerMetre << " dots a metre";
        EXPECT_EQ(picture.size(), QSize(200, 100));
    }
}

TEST(LoadPicture, NamesTheFileThatItCannotRead)
{
    const test::TemporaryFolder folder;
    std::ofstream(folder / "garbage.bmp") << "BM and no bitmap";
    for (const char* name : {"missing.bmp", "garbage.bmp"})
        try {
            loadPicture(folder / name);
            ADD_FAILURE() << name << " was read";
        } catch (const std::runtime_error& error) {
            EXPECT_NE(std::string(error.what()).find((folder / name).string()), std::string::npos) << error.what();
        }
}

} // namespace wagemill
