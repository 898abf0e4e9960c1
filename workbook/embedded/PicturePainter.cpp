#include "workbook/embedded/PicturePainter.h"

#include "workbook/embedded/TextPainter.h"
#include "workbook/spreadsheet/Spreadsheet.h"

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <new>
#include <span>
#include <string>

namespace wagemill {

namespace {

using engine::BorderStyle;
using engine::PictureLine;
using engine::PictureRect;
using engine::Rgb;
using engine::SheetPicture;

constexpr int bytesPerBitmapPixel = 3;
constexpr int mostImagePixels = 32767; ///< what a painter can address in either direction
constexpr int stripPixels = 512;       ///< small enough to stay in the processor's cache
constexpr double screenDotsPerInch = 96;
constexpr double inchesPerMetre = 1 / 0.0254;

QColor colorOf(Rgb color)
{
    return {color.red, color.green, color.blue};
}

QRectF rectOf(const PictureRect& area)
{
    return {area.left, area.top, area.width, area.height};
}

/// How a border style is drawn: the width in pixels, and the lengths of dashes and gaps in turn; none is a solid line.
struct Stroke {
    double width = 1;
    std::initializer_list<double> dashes;
};

const Stroke& strokeOf(BorderStyle style)
{
    static const std::array<Stroke, 14> strokes = {{
        {0, {}},                 // None
        {1, {}},                 // Thin
        {2, {}},                 // Medium
        {1, {4, 2}},             // Dashed
        {1, {2, 2}},             // Dotted
        {3, {}},                 // Thick
        {1, {}},                 // Double: two of them
        {1, {1, 1}},             // Hair
        {2, {9, 3}},             // MediumDashed
        {1, {9, 3, 3, 3}},       // DashDot
        {2, {9, 3, 3, 3}},       // MediumDashDot
        {1, {9, 3, 3, 3, 3, 3}}, // DashDotDot
        {2, {9, 3, 3, 3, 3, 3}}, // MediumDashDotDot
        {2, {11, 1, 5, 1}},      // SlantDashDot
    }};
    return strokes[std::min(static_cast<std::size_t>(style), strokes.size() - 1)];
}

/// Fills the stretches of a level or upright line as rectangles: edges stay sharp at every scale.
void drawStraight(QPainter& painter, const PictureLine& line, double width, double offset)
{
    const Stroke& stroke = strokeOf(line.style);
    const bool isLevel = line.y1 == line.y2;
    const double across = (isLevel ? line.y1 : line.x1) + offset;
    const double begin = isLevel ? line.x1 : line.y1;
    const double end = (isLevel ? line.x2 : line.y2) + 1; // the corner pixel belongs to both lines that meet in it
    const auto fill = [&](double from, double to) {
        painter.fillRect(isLevel ? QRectF(from, across, to - from, width) : QRectF(across, from, width, to - from),
                         colorOf(line.color));
    };
    if (stroke.dashes.size() == 0)
        return fill(begin, end);
    for (double at = begin; at < end;)
        for (const double* length = stroke.dashes.begin(); length != stroke.dashes.end() && at < end; length += 2) {
            fill(at, std::min(at + length[0], end));
            at += length[0] + length[1];
        }
}

void drawLine(QPainter& painter, const PictureLine& line)
{
    const double width = strokeOf(line.style).width;
    const bool isStraight = line.x1 == line.x2 || line.y1 == line.y2;
    if (!isStraight) {
        painter.setPen(QPen(colorOf(line.color), width));
        painter.drawLine(QPointF(line.x1, line.y1), QPointF(line.x2, line.y2));
    } else if (line.style == BorderStyle::Double) {
        drawStraight(painter, line, width, -1);
        drawStraight(painter, line, width, 1);
    } else {
        drawStraight(painter, line, width, width > 1 ? -1 : 0);
    }
}

/// Draws what of the picture meets the area.
void drawArea(QPainter& painter, const SheetPicture& picture, const QRectF& area)
{
    const QRectF near = area.adjusted(-2, -2, 2, 2); // a thick line stands out from its edge
    for (const auto& fill : picture.fills)
        if (rectOf(fill.area).intersects(near))
            painter.fillRect(rectOf(fill.area), colorOf(fill.color));
    for (const auto& line : picture.lines)
        if (QRectF(QPointF(line.x1, line.y1), QPointF(line.x2, line.y2))
                .normalized()
                .adjusted(0, 0, 1, 1)
                .intersects(near))
            drawLine(painter, line);
    TextPainter texts(painter);
    for (const auto& text : picture.texts)
        if (rectOf(text.room).intersects(near))
            texts.draw(text);
}

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

double bitmapBytes(const SheetPicture& picture, double scale)
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
QImage paintedStrip(const SheetPicture& picture, double scale, int width, int top, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    if (image.isNull())
        throwTooLarge(width, height);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.translate(0, -top);
    painter.scale(scale, scale);
    drawArea(painter, picture, QRectF(0, top / scale, width / scale, height / scale));
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

QImage paintedPicture(const SheetPicture& picture, double scale)
{
    const int width = pixels(picture.width, scale);
    const int height = pixels(picture.height, scale);
    if (std::max(width, height) > mostImagePixels)
        throwTooLarge(width, height);
    return paintedStrip(picture, scale, width, 0, height);
}

double scaleThatFits(const SheetPicture& picture, double scale)
{
    constexpr double step = 0.25;
    double fitting = scale;
    while (fitting > step && bitmapBytes(picture, fitting) > static_cast<double>(mostBitmapBytes))
        fitting -= step;
    return fitting;
}

std::vector<std::byte> bitmapFileOf(const SheetPicture& picture, double scale)
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
