#include "workbook/embedded/PicturePainter.h"

#include "drawing/DrawingPainter.h"
#include "workbook/spreadsheet/Spreadsheet.h"

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <new>
#include <span>
#include <string>

namespace wagemill {

namespace {

constexpr int bytesPerBitmapPixel = 3;
constexpr int mostImagePixels = 32767; ///< what a painter can address in either direction
constexpr int stripPixels = 512;       ///< small enough to stay in the processor's cache
constexpr double screenDotsPerInch = 96;
constexpr double inchesPerMetre = 1 / 0.0254;

int pixels(double length, double scale)
{
    return std::max(1, static_cast<int>(std::min(std::ceil(length * scale), 2e9)));
}

std::size_t bitmapRowBytes(int width)
{
    constexpr std::size_t alignment = 4;
    return (static_cast<std::size_t>(width) * bytesPerBitmapPixel + alignment - 1) / alignment * alignment;
}

constexpr std::size_t bitmapHeaderBytes = 54;

double bitmapBytes(const drawing::Drawing& picture, double scale)
{
    return static_cast<double>(bitmapHeaderBytes) +
           static_cast<double>(bitmapRowBytes(pixels(picture.width, scale))) * pixels(picture.height, scale);
}

[[noreturn]] void throwTooLarge(int width, int height)
{
    throw SpreadsheetError("The sheet is too large for a picture: it would have " + std::to_string(width) + " by " +
                           std::to_string(height) + " pixels.");
}

/// The strip of the picture that begins at image row `top`.
QImage paintedStrip(const drawing::Drawing& picture, double scale, int width, int top, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    if (image.isNull())
        throwTooLarge(width, height);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.translate(0, -top);
    painter.scale(scale, scale);
    DrawingPainter(picture).paint(painter, QRectF(0, top / scale, width / scale, height / scale));
    return image;
}

/// Appends numbers in the byte order of the file.
class BitmapWriter {
public:
    explicit BitmapWriter(std::vector<std::byte>& bytes) : m_bytes(bytes) {}

    template <class... Numbers>
    void append(Numbers... numbers)
    {
        (appendOne(numbers), ...);
    }

private:
    template <class Number>
    void appendOne(Number number)
    {
        for (std::size_t byte = 0; byte < sizeof(Number); ++byte)
            m_bytes.push_back(static_cast<std::byte>((static_cast<std::uint64_t>(number) >> (8 * byte)) & 0xFFU));
    }

    std::vector<std::byte>& m_bytes;
};

/// BITMAPFILEHEADER and BITMAPINFOHEADER, https://learn.microsoft.com/windows/win32/gdi/bitmap-storage
void appendBitmapHeader(std::vector<std::byte>& bytes, int width, int height, double scale)
{
    constexpr std::uint16_t signature = 0x4D42; // "BM"
    constexpr std::uint32_t infoBytes = 40;
    constexpr std::uint16_t planes = 1;
    constexpr std::uint16_t bitsPerPixel = 24;
    const auto pixelsPerMetre = static_cast<std::int32_t>(std::lround(screenDotsPerInch * scale * inchesPerMetre));
    const auto dataBytes = static_cast<std::uint32_t>(bitmapRowBytes(width) * static_cast<std::size_t>(height));
    constexpr auto headerBytes = static_cast<std::uint32_t>(bitmapHeaderBytes);
    BitmapWriter(bytes).append(signature, headerBytes + dataBytes, std::uint32_t{0}, headerBytes, infoBytes,
                               std::int32_t{width}, std::int32_t{height}, planes, bitsPerPixel, std::uint32_t{0},
                               dataBytes, pixelsPerMetre, pixelsPerMetre, std::uint32_t{0}, std::uint32_t{0});
}

/// Appends a strip's rows to the bitmap, which holds them from the bottom up, blue first. Qt's conversion would
/// share the work among threads, which takes longer than the work.
void appendStrip(const QImage& strip, std::vector<std::byte>& bytes)
{
    // A colour's bytes are blue, green, red and one for nothing.
    static_assert(std::endian::native == std::endian::little);
    std::size_t rowStart = bytes.size();
    bytes.resize(rowStart + bitmapRowBytes(strip.width()) * static_cast<std::size_t>(strip.height()));
    for (int row = strip.height() - 1; row >= 0; --row, rowStart += bitmapRowBytes(strip.width())) {
        const auto* const colors = reinterpret_cast<const QRgb*>(strip.constScanLine(row));
        std::byte* pixel = bytes.data() + rowStart;
        for (const QRgb& color : std::span(colors, static_cast<std::size_t>(strip.width()))) {
            std::memcpy(pixel, &color, bytesPerBitmapPixel);
            pixel += bytesPerBitmapPixel;
        }
    }
}

} // namespace

QImage paintedPicture(const drawing::Drawing& picture, double scale)
{
    const int width = pixels(picture.width, scale);
    const int height = pixels(picture.height, scale);
    if (std::max(width, height) > mostImagePixels)
        throwTooLarge(width, height);
    return paintedStrip(picture, scale, width, 0, height);
}

double scaleThatFits(const drawing::Drawing& picture, double scale)
{
    constexpr double step = 0.25;
    double fitting = scale;
    while (fitting > step && bitmapBytes(picture, fitting) > static_cast<double>(mostBitmapBytes))
        fitting -= step;
    return fitting;
}

std::vector<std::byte> bitmapFileOf(const drawing::Drawing& picture, double scale)
{
    const int width = pixels(picture.width, scale);
    const int height = pixels(picture.height, scale);
    if (width > mostImagePixels || bitmapBytes(picture, scale) > static_cast<double>(mostBitmapBytes))
        throwTooLarge(width, height);
    try {
        std::vector<std::byte> bytes;
        bytes.reserve(bitmapHeaderBytes + bitmapRowBytes(width) * static_cast<std::size_t>(height));
        appendBitmapHeader(bytes, width, height, scale);
        for (int bottom = height; bottom > 0; bottom -= stripPixels) {
            const int top = std::max(0, bottom - stripPixels);
            appendStrip(paintedStrip(picture, scale, width, top, bottom - top), bytes);
        }
        return bytes;
    } catch (const std::bad_alloc&) {
        throwTooLarge(width, height);
    }
}

} // namespace wagemill
