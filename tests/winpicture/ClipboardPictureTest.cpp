#include "app/base/Files.h"
#include "drawing/Drawing.h"
#include "preview/PreviewPicture.h"
#include "tests/support/DrawnMetafile.h"
#include "tests/support/FailureOf.h"
#include "workbook/Excel1.h"
#include "workbook/excel/ExcelSession.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <windows.h>

#include <cstring>
#include <filesystem>
#include <future>
#include <initializer_list>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace wagemill {

namespace {

/// A red, a green and a blue quarter; the last one is white, for nothing is drawn there.
const drawing::Drawing quarters = {
    40, 20, {{{0, 0, 20, 10}, {255, 0, 0}}, {{20, 0, 20, 10}, {0, 255, 0}}, {{0, 10, 20, 10}, {0, 0, 255}}}};
const QSize size(40, 20);

/// Every test picture.
QImage testPicture()
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    for (const auto& [place, color] : quarters.fills)
        painter.fillRect(QRectF(place.left, place.top, place.width, place.height),
                         QColor(color.red, color.green, color.blue));
    return image;
}

// Programs that watch the clipboard open it for a moment whenever it changes.
constexpr int attempts = 100;
constexpr DWORD pauseMilliseconds = 5;
const std::string heldByAnother = "the clipboard cannot be opened, because another program holds it";
const std::string noPicture = "the clipboard holds no picture";

/// A program that copies these objects, and holds the clipboard open for as long as this lives.
class CopyingProgram {
public:
    CopyingProgram(std::initializer_list<std::pair<UINT, HANDLE>> objects)
        : m_window(::CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr))
    {
        for (int attempt = 0; attempt < attempts && !::OpenClipboard(m_window); ++attempt)
            ::Sleep(pauseMilliseconds);
        if (m_window == nullptr || !::EmptyClipboard())
            throw std::runtime_error("the clipboard cannot be opened");
        for (const auto& [format, object] : objects)
            EXPECT_NE(::SetClipboardData(format, object), nullptr);
    }
    CopyingProgram(const CopyingProgram&) = delete;
    CopyingProgram& operator=(const CopyingProgram&) = delete;
    ~CopyingProgram()
    {
        ::CloseClipboard();
        ::DestroyWindow(m_window);
    }

private:
    HWND m_window;
};

void copy(std::initializer_list<std::pair<UINT, HANDLE>> objects)
{
    const CopyingProgram program(objects);
}

HANDLE memoryOf(const QByteArray& bytes)
{
    const HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, static_cast<SIZE_T>(bytes.size()));
    std::memcpy(::GlobalLock(memory), bytes.data(), static_cast<std::size_t>(bytes.size()));
    ::GlobalUnlock(memory);
    return memory;
}

/// The picture as CF_DIB has it: a file without its first header.
QByteArray packedBitmap(QImage::Format format = QImage::Format_RGB32)
{
    QBuffer file;
    file.open(QIODevice::WriteOnly);
    EXPECT_TRUE(testPicture().convertToFormat(format).save(&file, "BMP"));
    return file.data().mid(sizeof(BITMAPFILEHEADER));
}

class ClipboardPictureTest : public testing::Test {
protected:
    ~ClipboardPictureTest() override { std::filesystem::remove(file); }

    /// The picture as the preview gets it: fetched, saved, loaded.
    void expectPicture(int format, const std::string& beginning)
    {
        const std::optional<Picture> fetched =
            getClipboardPicture(systemPictureClipboard(), static_cast<std::int16_t>(format));
        ASSERT_TRUE(fetched.has_value()) << "format " << format << ": " << failureOf(format);
        writeWholeFile(*fetched->fileBytes, file, FileLife::Temporary);
        EXPECT_EQ(std::memcmp(fetched->fileBytes->data(), beginning.data(), beginning.size()), 0) << format;
        const SharedPicture picture = loadPicture(file);
        ASSERT_EQ(picture->naturalSize(), QSizeF(size));
        for (const double scale : {1.0, 1.5, 2.0})
            expectQuarters(*picture, scale);
    }

    /// The picture as the preview paints it: in two parts, each as if only it were exposed.
    static void expectQuarters(const PreviewPicture& picture, double scale)
    {
        QImage image(size * scale, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        painter.scale(scale, scale);
        for (const QRectF part : {QRectF(0, 0, 40, 7), QRectF(0, 7, 40, 13)}) {
            painter.setClipRect(part);
            picture.paint(painter, part);
        }
        const QImage seen = image.scaled(size);
        for (const int x : {1, 18, 21, 38})
            for (const int y : {1, 8, 11, 18})
                EXPECT_EQ(seen.pixelColor(x, y), testPicture().pixelColor(x, y)) << x << ", " << y << " at " << scale;
    }

    static std::string failureOf(int format)
    {
        std::string failure = heldByAnother;
        for (int attempt = 0; attempt < attempts && failure == heldByAnother; ++attempt) {
            ::Sleep(attempt == 0 ? 0 : pauseMilliseconds);
            failure = test::failureOf([&] { systemPictureClipboard().GetData(static_cast<std::int16_t>(format)); });
        }
        return failure;
    }

    const std::filesystem::path file = std::filesystem::temp_directory_path() / L"wagemill t\u00EBst.bmp";
};

const std::string bitmapBeginning = "BM";
const std::string metafileBeginning = {1, 0, 0, 0};

} // namespace

TEST_F(ClipboardPictureTest, ABitmapComesAsABitmapFileInItsColours)
{
    for (const QImage::Format format : {QImage::Format_RGB32, QImage::Format_Indexed8}) {
        copy({{CF_DIB, memoryOf(packedBitmap(format))}});
        expectPicture(0, bitmapBeginning);
        expectPicture(CF_DIB, bitmapBeginning);
    }
    copy({{CF_BITMAP, testPicture().toHBITMAP()}});
    for (const int format : {0, CF_BITMAP, CF_DIB})
        expectPicture(format, bitmapBeginning);
    EXPECT_EQ(failureOf(CF_ENHMETAFILE), noPicture);
}

TEST_F(ClipboardPictureTest, AMetafileStaysOneIsDrawnOnWhiteAndLeavesNoHandleBehind)
{
    copy({{CF_ENHMETAFILE, test::metafileOf(quarters)}});
    const DWORD before = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS);
    for (int round = 0; round < 10; ++round) // drawing objects are few in a process
        for (const int format : {0, CF_ENHMETAFILE, CF_METAFILEPICT})
            expectPicture(format, metafileBeginning);
    EXPECT_LT(::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS), before + 15);
    EXPECT_EQ(failureOf(CF_DIB), noPicture);
}

TEST_F(ClipboardPictureTest, TheOwnersFirstPictureIsTaken)
{
    copy({{CF_DIB, memoryOf(packedBitmap())}, {CF_ENHMETAFILE, test::metafileOf(quarters)}});
    expectPicture(0, bitmapBeginning);
    copy({{CF_ENHMETAFILE, test::metafileOf(quarters)}, {CF_DIB, memoryOf(packedBitmap())}});
    expectPicture(0, metafileBeginning);
}

TEST_F(ClipboardPictureTest, SaysWhyThereIsNoPicture)
{
    copy({});
    EXPECT_EQ(failureOf(0), noPicture);
    copy({{CF_UNICODETEXT, memoryOf(QByteArray(2, '\0'))}, {CF_DIB, memoryOf(QByteArray(30, '\0'))}});
    EXPECT_EQ(failureOf(CF_DIB), "the clipboard's bitmap has an unknown header");
    EXPECT_EQ(failureOf(CF_UNICODETEXT), noPicture);
    EXPECT_EQ(failureOf(-1), noPicture);
}

/// Another program, here another thread with a window of its own, holds the clipboard open.
TEST_F(ClipboardPictureTest, AHeldClipboardIsSaidAndTriedAgain)
{
    std::promise<void> held;
    std::promise<void> letGo;
    std::thread holder([&] {
        const CopyingProgram program({{CF_DIB, memoryOf(packedBitmap())}});
        held.set_value();
        letGo.get_future().wait();
    });
    held.get_future().wait();
    EXPECT_EQ(failureOf(0), heldByAnother);
    EXPECT_FALSE(getClipboardPicture(systemPictureClipboard(), 0).has_value());
    letGo.set_value();
    holder.join();
    EXPECT_TRUE(getClipboardPicture(systemPictureClipboard(), 0).has_value());
}

} // namespace wagemill
