#include "app/base/Files.h"
#include "preview/PreviewPicture.h"
#include "workbook/Excel1.h"
#include "workbook/excel/ExcelSession.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <future>
#include <initializer_list>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace wagemill {

namespace {

constexpr int width = 40;
constexpr int height = 20;
constexpr std::array<QRgb, 4> quarterColours = {qRgb(255, 0, 0), qRgb(0, 255, 0), qRgb(0, 0, 255), qRgb(255, 255, 255)};

/// Every test picture has a red, a green, a blue and a white quarter, row by row.
std::size_t quarterAt(int x, int y)
{
    return (x >= width / 2 ? 1U : 0U) + (y >= height / 2 ? 2U : 0U);
}

/// A pixel of 16 bits leaves the last three bits of a colour open.
bool isNear(QRgb left, QRgb right)
{
    return std::max({std::abs(qRed(left) - qRed(right)), std::abs(qGreen(left) - qGreen(right)),
                     std::abs(qBlue(left) - qBlue(right))}) < 8;
}

// Programs that watch the clipboard open it for a moment whenever it changes.
constexpr int attempts = 100;
constexpr DWORD pauseMilliseconds = 5;
const std::string heldByAnother = "the clipboard cannot be opened, because another program holds it";

/// The clipboard, opened and emptied for a window of this program, as a program does that copies.
class CopyingProgram {
public:
    CopyingProgram()
        : m_window(::CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr))
    {
        for (int attempt = 0; attempt < attempts && !::OpenClipboard(m_window); ++attempt)
            ::Sleep(pauseMilliseconds);
        if (m_window == nullptr || !::EmptyClipboard())
            throw std::runtime_error("the clipboard cannot be opened");
    }
    CopyingProgram(const CopyingProgram&) = delete;
    CopyingProgram& operator=(const CopyingProgram&) = delete;
    ~CopyingProgram() { close(); }

    void put(UINT format, HANDLE object) { ASSERT_NE(::SetClipboardData(format, object), nullptr); }
    void put(UINT format, const std::vector<std::byte>& bytes)
    {
        const HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, bytes.size());
        std::memcpy(::GlobalLock(memory), bytes.data(), bytes.size());
        ::GlobalUnlock(memory);
        put(format, memory);
    }

    void close()
    {
        if (m_window == nullptr)
            return;
        ::CloseClipboard();
        ::DestroyWindow(m_window);
        m_window = nullptr;
    }

private:
    HWND m_window;
};

template <class Value>
void append(std::vector<std::byte>& bytes, Value value)
{
    const auto* begin = reinterpret_cast<const std::byte*>(&value);
    bytes.insert(bytes.end(), begin, begin + sizeof value);
}

/// A header of which the pixels are told by `pixelOf`, from the row that comes first in memory.
struct BitmapKind {
    const char* name;
    std::uint32_t headerBytes;
    std::uint16_t bits;
    std::uint32_t compression;
    bool isTopDown;
    std::array<std::uint32_t, 3> masks;     // behind the header or in it; none is 0, 0, 0
    std::array<std::uint32_t, 4> quarters;  // the pixel of each quarter
    std::vector<std::uint32_t> colourTable; // 0xRRGGBB
};

std::vector<std::byte> packedBitmap(const BitmapKind& kind)
{
    std::vector<std::byte> bytes;
    append(bytes, kind.headerBytes);
    const bool isCore = kind.headerBytes == sizeof(BITMAPCOREHEADER);
    if (isCore) {
        append(bytes, static_cast<std::uint16_t>(width));
        append(bytes, static_cast<std::uint16_t>(height));
    } else {
        append(bytes, std::int32_t{width});
        append(bytes, std::int32_t{kind.isTopDown ? -height : height});
    }
    append(bytes, std::uint16_t{1});
    append(bytes, kind.bits);
    if (!isCore) {
        const auto colours = static_cast<std::uint32_t>(kind.colourTable.size());
        for (const std::uint32_t field : {kind.compression, 0U, 3780U, 3780U, colours == 256 ? 0U : colours, 0U})
            append(bytes, field);
    }
    if (kind.masks[0] != 0)
        for (const std::uint32_t mask : kind.masks)
            append(bytes, mask);
    bytes.resize(std::max<std::size_t>(bytes.size(), kind.headerBytes));
    for (const std::uint32_t colour : kind.colourTable) {
        for (const unsigned int shift : {0U, 8U, 16U})
            bytes.push_back(static_cast<std::byte>((colour >> shift) & 0xFFU));
        if (!isCore)
            bytes.push_back({});
    }
    for (int row = 0; row < height; ++row) {
        const std::size_t begin = bytes.size();
        for (int x = 0; x < width; ++x) {
            const std::uint32_t pixel = kind.quarters[quarterAt(x, kind.isTopDown ? row : height - 1 - row)];
            for (unsigned int shift = 0; shift < kind.bits; shift += 8)
                bytes.push_back(static_cast<std::byte>((pixel >> shift) & 0xFFU));
        }
        while ((bytes.size() - begin) % 4 != 0)
            bytes.push_back({});
    }
    return bytes;
}

const BitmapKind plainBitmap = {"24 bits", sizeof(BITMAPINFOHEADER),           24, BI_RGB, false,
                                {},        {0xFF0000, 0xFF00, 0xFF, 0xFFFFFF}, {}};

HBITMAP bitmapObject()
{
    const std::vector<std::byte> bytes = packedBitmap(plainBitmap);
    const auto* info = reinterpret_cast<const BITMAPINFO*>(bytes.data());
    const HDC screen = ::GetDC(nullptr);
    const HBITMAP bitmap = ::CreateDIBitmap(screen, &info->bmiHeader, CBM_INIT, bytes.data() + sizeof(BITMAPINFOHEADER),
                                            info, DIB_RGB_COLORS);
    ::ReleaseDC(nullptr, screen);
    return bitmap;
}

/// A metafile of 40 x 20 pixels at 96 dots an inch, in which nothing is drawn where the picture is white.
HENHMETAFILE metafileObject()
{
    constexpr int hundredthsOfMillimetre = 2540;
    constexpr int dotsInInch = 96;
    const RECT frame = {0, 0, width * hundredthsOfMillimetre / dotsInInch,
                        height * hundredthsOfMillimetre / dotsInInch};
    const HDC recorder = ::CreateEnhMetaFileW(nullptr, nullptr, &frame, nullptr);
    ::SetMapMode(recorder, MM_ANISOTROPIC);
    ::SetWindowExtEx(recorder, width, height, nullptr);
    const auto devicePixels = [&](int length, int resolution, int millimetres) {
        return ::MulDiv(length, ::GetDeviceCaps(recorder, resolution), ::GetDeviceCaps(recorder, millimetres) * 100);
    };
    ::SetViewportExtEx(recorder, devicePixels(frame.right, HORZRES, HORZSIZE),
                       devicePixels(frame.bottom, VERTRES, VERTSIZE), nullptr);
    for (const QPoint corner : {QPoint(0, 0), QPoint(width / 2, 0), QPoint(0, height / 2)}) {
        const QRgb colour = quarterColours[quarterAt(corner.x(), corner.y())];
        const HBRUSH brush = ::CreateSolidBrush(RGB(qRed(colour), qGreen(colour), qBlue(colour)));
        const RECT quarter = {corner.x(), corner.y(), corner.x() + width / 2, corner.y() + height / 2};
        ::FillRect(recorder, &quarter, brush);
        ::DeleteObject(brush);
    }
    return ::CloseEnhMetaFile(recorder);
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
        const std::vector<std::byte>& bytes = *fetched->fileBytes;
        ASSERT_GT(bytes.size(), beginning.size());
        EXPECT_EQ(std::memcmp(bytes.data(), beginning.data(), beginning.size()), 0) << "format " << format;
        std::filesystem::remove(file);
        writeBytesToFile(bytes, file);
        const SharedPicture picture = loadPicture(file);
        ASSERT_EQ(picture->naturalSize(), QSizeF(width, height));
        for (const double scale : {1.0, 1.5, 2.0})
            expectQuarters(painted(*picture, scale), scale);
    }

    /// The picture as the preview paints it: in two parts, each as if only it were exposed.
    static QImage painted(const PreviewPicture& picture, double scale)
    {
        QImage image(picture.naturalSize().toSize() * scale, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        painter.scale(scale, scale);
        for (const QRectF part : {QRectF(0, 0, width, 7), QRectF(0, 7, width, height - 7)}) {
            painter.setClipRect(part);
            picture.paint(painter, part);
        }
        return image;
    }

    static void expectQuarters(const QImage& image, double scale)
    {
        const auto pixelAt = [scale](int length) { return static_cast<int>((length + 0.5) * scale); };
        for (const int x : {1, width / 2 - 2, width / 2 + 1, width - 2})
            for (const int y : {1, height / 2 - 2, height / 2 + 1, height - 2})
                EXPECT_TRUE(isNear(image.pixel(pixelAt(x), pixelAt(y)), quarterColours[quarterAt(x, y)]))
                    << QColor(image.pixel(pixelAt(x), pixelAt(y))).name().toStdString() << " at " << x << ", " << y
                    << " of scale " << scale;
    }

    static std::string failureOf(int format)
    {
        std::string failure = heldByAnother;
        for (int attempt = 0; attempt < attempts && failure == heldByAnother; ++attempt) {
            ::Sleep(attempt == 0 ? 0 : pauseMilliseconds);
            failure = failureOfOneAttempt(format);
        }
        return failure;
    }

    static std::string failureOfOneAttempt(int format)
    {
        try {
            systemPictureClipboard().GetData(static_cast<std::int16_t>(format));
        } catch (const SpreadsheetError& error) {
            return error.what();
        }
        return "no failure";
    }

    const std::filesystem::path file = std::filesystem::temp_directory_path() / L"wagemill t\u00EBst.bmp";
};

const std::string bitmapBeginning = "BM";
const std::string metafileBeginning = {1, 0, 0, 0};

} // namespace

TEST_F(ClipboardPictureTest, EveryBitmapComesThroughInItsColours)
{
    const std::array<std::uint32_t, 4> trueColours = plainBitmap.quarters;
    const std::array<std::uint32_t, 4> indices = {3, 2, 1, 0};
    const std::vector<std::uint32_t> fourColours = {0xFFFFFF, 0xFF, 0xFF00, 0xFF0000};
    std::vector<std::uint32_t> fullTable = fourColours;
    fullTable.resize(256);
    const std::array<std::uint32_t, 3> masks565 = {0xF800, 0x7E0, 0x1F};
    const std::array<std::uint32_t, 3> masksReversed = {0xFF, 0xFF00, 0xFF0000};
    const std::array<std::uint32_t, 3> masksInOrder = {0xFF0000, 0xFF00, 0xFF};
    const BitmapKind kinds[] = {
        plainBitmap,
        {"24 bits, core header", sizeof(BITMAPCOREHEADER), 24, BI_RGB, false, {}, trueColours, {}},
        {"8 bits, core header", sizeof(BITMAPCOREHEADER), 8, BI_RGB, false, {}, indices, fullTable},
        {"24 bits from the top", sizeof(BITMAPINFOHEADER), 24, BI_RGB, true, {}, trueColours, {}},
        {"32 bits", sizeof(BITMAPINFOHEADER), 32, BI_RGB, false, {}, trueColours, {}},
        {"8 bits, 4 colours", sizeof(BITMAPINFOHEADER), 8, BI_RGB, false, {}, indices, fourColours},
        {"8 bits, all colours", sizeof(BITMAPINFOHEADER), 8, BI_RGB, false, {}, indices, fullTable},
        {"16 bits", sizeof(BITMAPINFOHEADER), 16, BI_BITFIELDS, false, masks565, {0xF800, 0x7E0, 0x1F, 0xFFFF}, {}},
        {"32 bits, reversed",
         sizeof(BITMAPINFOHEADER),
         32,
         BI_BITFIELDS,
         true,
         masksReversed,
         {0xFF, 0xFF00, 0xFF0000, 0xFFFFFF},
         {}},
        {"version 4", sizeof(BITMAPV4HEADER), 32, BI_BITFIELDS, false, masksInOrder, trueColours, {}},
        {"version 5", sizeof(BITMAPV5HEADER), 32, BI_BITFIELDS, true, masksInOrder, trueColours, {}},
    };
    for (const BitmapKind& kind : kinds) {
        SCOPED_TRACE(kind.name);
        CopyingProgram program;
        program.put(CF_DIB, packedBitmap(kind));
        program.close();
        expectPicture(0, bitmapBeginning);
        expectPicture(CF_DIB, bitmapBeginning);
    }
}

TEST_F(ClipboardPictureTest, ABitmapObjectComesAsABitmapFile)
{
    CopyingProgram program;
    program.put(CF_BITMAP, bitmapObject());
    program.close();
    for (const int format : {0, CF_BITMAP, CF_DIB})
        expectPicture(format, bitmapBeginning);
    EXPECT_EQ(failureOf(CF_ENHMETAFILE), "the clipboard holds no picture");
}

TEST_F(ClipboardPictureTest, AMetafileStaysOneAndIsDrawnOnWhiteAtItsNaturalSize)
{
    CopyingProgram program;
    program.put(CF_ENHMETAFILE, metafileObject());
    program.close();
    for (const int format : {0, CF_ENHMETAFILE, CF_METAFILEPICT})
        expectPicture(format, metafileBeginning);
    EXPECT_EQ(failureOf(CF_DIB), "the clipboard holds no picture");
}

TEST_F(ClipboardPictureTest, TheOwnersFirstPictureIsTaken)
{
    const std::function<void(CopyingProgram&)> putText = [](CopyingProgram& program) {
        program.put(CF_UNICODETEXT, std::vector<std::byte>(2));
    };
    const std::function<void(CopyingProgram&)> putBitmap = [](CopyingProgram& program) {
        program.put(CF_DIB, packedBitmap(plainBitmap));
    };
    const std::function<void(CopyingProgram&)> putMetafile = [](CopyingProgram& program) {
        program.put(CF_ENHMETAFILE, metafileObject());
    };
    struct {
        std::vector<std::function<void(CopyingProgram&)>> objects;
        const std::string& beginning;
    } const cases[] = {
        {{putText, putBitmap, putMetafile}, bitmapBeginning},
        {{putMetafile, putBitmap, putText}, metafileBeginning},
    };
    for (const auto& [objects, beginning] : cases) {
        CopyingProgram program;
        for (const auto& put : objects)
            put(program);
        program.close();
        expectPicture(0, beginning);
    }
}

TEST_F(ClipboardPictureTest, SaysWhyThereIsNoPicture)
{
    {
        CopyingProgram emptied;
    }
    EXPECT_EQ(failureOf(0), "the clipboard holds no picture");
    {
        CopyingProgram program;
        program.put(CF_UNICODETEXT, std::vector<std::byte>(2));
        program.put(CF_DIB, std::vector<std::byte>(30));
    }
    EXPECT_EQ(failureOf(CF_DIB), "the clipboard's bitmap has an unknown header");
    EXPECT_EQ(failureOf(CF_UNICODETEXT), "the clipboard holds no picture");
    EXPECT_EQ(failureOf(-1), "the clipboard holds no picture");
}

/// Another program, here another thread with a window of its own, holds the clipboard open.
TEST_F(ClipboardPictureTest, AHeldClipboardIsSaidAndTriedAgain)
{
    std::promise<void> held;
    std::promise<void> letGo;
    std::thread holder([&] {
        CopyingProgram program;
        program.put(CF_DIB, packedBitmap(plainBitmap));
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

/// A frame of 21 kilometres would take more memory than there is; a record without length would never end.
TEST_F(ClipboardPictureTest, AHostileMetafileIsRefusedWithItsName)
{
    CopyingProgram program;
    program.put(CF_ENHMETAFILE, metafileObject());
    program.close();
    const std::optional<Picture> picture = getClipboardPicture(systemPictureClipboard(), CF_ENHMETAFILE);
    ASSERT_TRUE(picture.has_value());
    constexpr std::uint32_t largestFrame = 0x7FFFFFFF;
    struct {
        std::size_t at;
        std::uint32_t number;
    } const faults[] = {{32, largestFrame}, {36, largestFrame}, {112, 0}, {48, largestFrame}};
    for (const auto& [at, number] : faults) {
        std::vector<std::byte> hostile = *picture->fileBytes;
        std::memcpy(hostile.data() + at, &number, sizeof number);
        std::filesystem::remove(file);
        writeBytesToFile(hostile, file);
        try {
            loadPicture(file);
            ADD_FAILURE() << "taken with " << number << " at byte " << at;
        } catch (const std::runtime_error& error) {
            EXPECT_NE(std::string(error.what()).find(file.filename().string()), std::string::npos) << error.what();
        }
    }
}

/// Drawing objects are few in a process.
TEST_F(ClipboardPictureTest, LeavesNoHandleBehind)
{
    CopyingProgram program;
    program.put(CF_ENHMETAFILE, metafileObject());
    program.close();
    expectPicture(0, metafileBeginning); // what is made but once
    const DWORD before = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS);
    for (int round = 0; round < 30; ++round)
        expectPicture(0, metafileBeginning);
    EXPECT_LT(::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS), before + 15);
}

} // namespace wagemill
