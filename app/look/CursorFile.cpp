#include "app/look/CursorFile.h"

#include "app/base/Files.h"

#include <QBuffer>
#include <QImageReader>
#include <QPixmap>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

namespace wagemill {

namespace {

using Bytes = std::span<const std::byte>;

constexpr std::size_t directoryHeaderSize = 6;
constexpr std::size_t directoryEntrySize = 16;
constexpr std::size_t bitmapHeaderSize = 40;
constexpr std::size_t colorTableEntrySize = 4;
constexpr std::uint32_t cursorType = 2;
constexpr std::array<std::uint32_t, 5> knownDepths = {1, 4, 8, 24, 32}; // bits a pixel
constexpr int largestSide = 256;
constexpr int wantedSide = 32;

[[noreturn]] void refuse(const char* reason)
{
    throw std::runtime_error(reason);
}

Bytes part(Bytes bytes, std::size_t offset, std::size_t size)
{
    if (offset > bytes.size() || size > bytes.size() - offset)
        refuse("it ends too early");
    return bytes.subspan(offset, size);
}

/// A little-endian number of `size` bytes, 1 to 4.
std::uint32_t numberAt(Bytes bytes, std::size_t offset, std::size_t size)
{
    std::uint32_t number = 0;
    for (std::size_t index = 0; const std::byte byte : part(bytes, offset, size))
        number |= std::to_integer<std::uint32_t>(byte) << (8 * index++);
    return number;
}

struct DirectoryEntry {
    int width;
    QPoint hotSpot;
    Bytes payload;
};

DirectoryEntry entryAt(Bytes file, std::size_t index)
{
    const Bytes entry = part(file, directoryHeaderSize + index * directoryEntrySize, directoryEntrySize);
    const int width = static_cast<int>(numberAt(entry, 0, 1));
    return {.width = width == 0 ? largestSide : width, // one byte cannot hold 256
            .hotSpot = QPoint(static_cast<int>(numberAt(entry, 4, 2)), static_cast<int>(numberAt(entry, 6, 2))),
            .payload = part(file, numberAt(entry, 12, 4), numberAt(entry, 8, 4))};
}

DirectoryEntry bestEntry(Bytes file)
{
    if (numberAt(file, 0, 2) != 0 || numberAt(file, 2, 2) != cursorType)
        refuse("it is no cursor file");
    const std::uint32_t count = numberAt(file, 4, 2);
    if (count == 0)
        refuse("it holds no picture");
    DirectoryEntry best = entryAt(file, 0);
    for (std::size_t index = 1; index < count; ++index)
        if (const DirectoryEntry entry = entryAt(file, index);
            std::abs(entry.width - wantedSide) < std::abs(best.width - wantedSide))
            best = entry;
    return best;
}

bool isPng(Bytes payload)
{
    static constexpr std::array<std::uint8_t, 8> signature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    return payload.size() >= signature.size() &&
           std::equal(signature.begin(), signature.end(), payload.begin(),
                      [](std::uint8_t expected, std::byte found) { return std::byte{expected} == found; });
}

QImage readPng(Bytes payload)
{
    QByteArray bytes(reinterpret_cast<const char*>(payload.data()), static_cast<qsizetype>(payload.size()));
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer, "png");
    const QSize size = reader.size(); // before the pixels are: a small file can announce a huge picture
    if (size.isEmpty() || size.width() > largestSide || size.height() > largestSide)
        refuse("its picture has an impossible size");
    const QImage image = reader.read();
    if (image.isNull())
        refuse("its picture cannot be read");
    return image.convertToFormat(QImage::Format_ARGB32);
}

/// The payload as a bitmap: header, colour table, colours, transparency mask; rows run from the bottom up and fill
/// whole groups of 32 bits.
class MaskedBitmap {
public:
    explicit MaskedBitmap(Bytes payload)
    {
        m_width = checkedSide(numberAt(payload, 4, 4));
        m_height = checkedSide(numberAt(payload, 8, 4) / 2); // the file counts the mask's rows too
        m_bits = numberAt(payload, 14, 2);
        const bool isUncompressed = numberAt(payload, 16, 4) == 0;
        if (numberAt(payload, 0, 4) != bitmapHeaderSize || !isUncompressed || !std::ranges::count(knownDepths, m_bits))
            refuse("its picture is of an unknown kind");
        const std::size_t colors = colorCount(numberAt(payload, 32, 4));
        m_colors = part(payload, bitmapHeaderSize, colors * colorTableEntrySize);
        const std::size_t pixelsAt = bitmapHeaderSize + m_colors.size();
        m_pixels = part(payload, pixelsAt, rowSize(m_bits) * rows());
        m_mask = part(payload, pixelsAt + m_pixels.size(), rowSize(1) * rows());
    }

    QImage image() const
    {
        QImage result(m_width, m_height, QImage::Format_ARGB32);
        const bool hasAlpha = m_bits == 32 && hasAnyAlpha();
        for (int y = 0; y < m_height; ++y)
            for (int x = 0; x < m_width; ++x)
                result.setPixel(x, y, hasAlpha ? rawColor(x, y) : maskedColor(x, y));
        return result;
    }

private:
    static int checkedSide(std::uint32_t side)
    {
        if (side == 0 || side > largestSide)
            refuse("its picture has an impossible size");
        return static_cast<int>(side);
    }

    std::size_t rows() const { return static_cast<std::size_t>(m_height); }
    std::size_t rowSize(std::uint32_t bits) const { return (static_cast<std::size_t>(m_width) * bits + 31) / 32 * 4; }

    std::size_t colorCount(std::uint32_t named) const
    {
        if (m_bits > 8)
            return 0;
        const std::uint32_t most = 1U << m_bits;
        return named == 0 ? most : std::min(named, most);
    }

    /// `bits` bits of one pixel, leftmost pixel in the highest bits of a byte.
    std::uint32_t sample(Bytes rowsOfBits, std::uint32_t bits, int x, int y) const
    {
        const std::size_t row = (rows() - 1 - static_cast<std::size_t>(y)) * rowSize(bits);
        const std::size_t bit = static_cast<std::size_t>(x) * bits;
        if (bits >= 8)
            return numberAt(rowsOfBits, row + bit / 8, bits / 8);
        return (numberAt(rowsOfBits, row + bit / 8, 1) >> (8 - bits - bit % 8)) & ((1U << bits) - 1);
    }

    QRgb rawColor(int x, int y) const
    {
        const std::uint32_t value = sample(m_pixels, m_bits, x, y);
        return m_bits > 8 ? value : numberAt(m_colors, value * colorTableEntrySize, colorTableEntrySize);
    }

    QRgb maskedColor(int x, int y) const
    {
        constexpr QRgb opaqueBlack = 0xFF000000U;
        constexpr QRgb transparent = 0;
        const QRgb color = rawColor(x, y) | opaqueBlack;
        if (sample(m_mask, 1, x, y) == 0)
            return color;
        return color == opaqueBlack ? transparent : opaqueBlack;
    }

    bool hasAnyAlpha() const
    {
        for (int y = 0; y < m_height; ++y)
            for (int x = 0; x < m_width; ++x)
                if (qAlpha(rawColor(x, y)) != 0)
                    return true;
        return false;
    }

    int m_width = 0;
    int m_height = 0;
    std::uint32_t m_bits = 0;
    Bytes m_colors;
    Bytes m_pixels;
    Bytes m_mask;
};

} // namespace

CursorPicture readCursor(Bytes file)
{
    const DirectoryEntry entry = bestEntry(file);
    const QImage image = isPng(entry.payload) ? readPng(entry.payload) : MaskedBitmap(entry.payload).image();
    if (!image.rect().contains(entry.hotSpot))
        refuse("its hot spot lies outside its picture");
    return {image, entry.hotSpot};
}

QCursor loadCursorFile(const std::filesystem::path& file)
{
    const std::vector<std::byte> bytes = readBytesFromFile(file); // a failure here names the file by itself
    try {
        const CursorPicture cursor = readCursor(bytes);
        return QCursor(QPixmap::fromImage(cursor.image), cursor.hotSpot.x(), cursor.hotSpot.y());
    } catch (const std::exception& error) {
        throw std::runtime_error("Cannot use the cursor file \"" + file.string() + "\": " + error.what() + ".");
    }
}

} // namespace wagemill
