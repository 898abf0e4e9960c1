#include "app/look/CursorFile.h"

#include "app/base/Files.h"

#include <QBuffer>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace wagemill {

namespace {

/// Bytes of a file, put together field by field.
class FileBytes {
public:
    FileBytes& number(std::uint32_t value, int size)
    {
        for (int byte = 0; byte < size; ++byte)
            m_bytes.push_back(static_cast<std::byte>(value >> (8 * byte)));
        return *this;
    }
    FileBytes& append(const std::vector<std::byte>& bytes)
    {
        m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
        return *this;
    }
    const std::vector<std::byte>& bytes() const { return m_bytes; }

private:
    std::vector<std::byte> m_bytes;
};

std::vector<std::byte> cursorFile(const std::vector<std::byte>& payload, std::uint32_t hotX = 1, std::uint32_t hotY = 0)
{
    return FileBytes()
        .number(0, 2)
        .number(2, 2)
        .number(1, 2)
        .number(0x0202, 4)
        .number(hotX, 2)
        .number(hotY, 2)
        .number(static_cast<std::uint32_t>(payload.size()), 4)
        .number(22, 4)
        .append(payload)
        .bytes();
}

/// A bitmap of 2 x 2 pixels: palette, two rows of colours from the bottom up, two rows of the mask. Every row is 4 or 8
/// bytes, given as numbers of 4.
std::vector<std::byte> bitmap(std::uint32_t bits, const std::vector<std::uint32_t>& colors,
                              const std::vector<std::uint32_t>& rows)
{
    FileBytes file;
    file.number(40, 4).number(2, 4).number(4, 4).number(1, 2).number(bits, 2);
    for (const std::uint32_t value : {0U, 0U, 0U, 0U, static_cast<std::uint32_t>(colors.size()), 0U})
        file.number(value, 4);
    for (const std::uint32_t value : colors)
        file.number(value, 4);
    for (const std::uint32_t value : rows)
        file.number(value, 4);
    return file.bytes();
}

constexpr std::uint32_t leftMasked = 0x80;
constexpr std::uint32_t noneMasked = 0;

std::vector<QRgb> pixels(const QImage& image)
{
    return {image.pixel(0, 0), image.pixel(1, 0), image.pixel(0, 1), image.pixel(1, 1)};
}

} // namespace

TEST(CursorFile, ReadsEveryDepthWithItsMask)
{
    // Above red and blue, below a transparent pixel and green.
    const std::vector<QRgb> expected = {0xFFFF0000, 0xFF0000FF, 0, 0xFF00FF00};
    const std::vector<std::uint32_t> palette = {0, 0xFF0000, 0xFF, 0xFF00}; // black, red, blue, green
    struct {
        std::uint32_t bits;
        std::vector<std::uint32_t> colors;
        std::vector<std::uint32_t> rows;
    } const cases[] = {
        {4, palette, {0x03, 0x12, leftMasked, noneMasked}},
        {8, palette, {0x0300, 0x0201, leftMasked, noneMasked}},
        {24, {}, {0, 0x000000FF, 0xFFFF0000, 0, leftMasked, noneMasked}},
        {32, {}, {0, 0xFF00FF00, 0xFFFF0000, 0xFF0000FF, noneMasked, noneMasked}},
        {32, {}, {0, 0x0000FF00, 0x00FF0000, 0x000000FF, leftMasked, noneMasked}}, // without alpha the mask decides
    };
    for (const auto& [bits, colors, rows] : cases) {
        const CursorPicture cursor = readCursor(cursorFile(bitmap(bits, colors, rows)));
        EXPECT_EQ(pixels(cursor.image), expected) << bits << " bits";
        EXPECT_EQ(cursor.hotSpot, QPoint(1, 0));
    }
}

TEST(CursorFile, DrawsInvertingPixelsBlack)
{
    // One bit, black and white; masked black is transparent, masked white inverts what lies below.
    const CursorPicture cursor = readCursor(cursorFile(bitmap(1, {0, 0xFFFFFF}, {0x40, 0x80, 0xC0, noneMasked})));
    EXPECT_EQ(pixels(cursor.image), (std::vector<QRgb>{0xFFFFFFFF, 0xFF000000, 0, 0xFF000000}));
}

TEST(CursorFile, ReadsAPngPicture)
{
    QImage image(3, 2, QImage::Format_ARGB32);
    image.fill(QColor(10, 20, 30, 40));
    QByteArray png;
    QBuffer buffer(&png);
    ASSERT_TRUE(buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "png"));
    const auto* first = reinterpret_cast<const std::byte*>(png.constData());
    const CursorPicture cursor = readCursor(cursorFile({first, first + png.size()}, 2, 1));
    EXPECT_EQ(cursor.image, image);
    EXPECT_EQ(cursor.hotSpot, QPoint(2, 1));
}

TEST(CursorFile, OurHandPointsWithItsFingertip)
{
    const CursorPicture hand = readCursor(readBytesFromFile(WAGEMILL_SOURCE_DIR "/resources/HAND-M.CUR"));
    EXPECT_EQ(hand.image.size(), QSize(32, 32));
    EXPECT_GT(qAlpha(hand.image.pixel(hand.hotSpot)), 128);
    for (int y = 0; y < hand.hotSpot.y(); ++y)
        for (int x = 0; x < 32; ++x)
            EXPECT_LT(qAlpha(hand.image.pixel(x, y)), 128) << "only its soft edge lies above the fingertip";
}

TEST(CursorFile, EndsWithAnErrorWhereverTheFileIsCutOrChanged)
{
    const auto good = cursorFile(bitmap(4, {0, 0xFF0000, 0xFF, 0xFF00}, {0x03, 0x12, leftMasked, noneMasked}));
    for (std::size_t size = 0; size < good.size(); ++size)
        EXPECT_THROW(readCursor(std::span(good).first(size)), std::runtime_error) << size << " bytes";
    for (std::size_t at = 0; at < good.size(); ++at)
        for (const int value : {0x00, 0x01, 0x7F, 0x80, 0xFF}) {
            auto changed = good;
            changed[at] = static_cast<std::byte>(value);
            try {
                const QImage image = readCursor(changed).image; // still a cursor, or refused: never anything else
                EXPECT_TRUE(image.width() <= 256 && image.height() <= 256);
            } catch (const std::runtime_error& error) {
                EXPECT_STRNE(error.what(), "");
            }
        }
}

TEST(CursorFile, RefusesWithAReason)
{
    const auto payload = bitmap(32, {}, {0, 0, 0, 0, 0, 0});
    auto compressed = payload;
    compressed[16] = std::byte{1};
    auto icon = cursorFile(payload);
    icon[2] = std::byte{1};
    struct {
        std::vector<std::byte> file;
        const char* reason;
    } const cases[] = {
        {icon, "it is no cursor file"},
        {FileBytes().number(0x20000, 4).number(0, 2).bytes(), "it holds no picture"},
        {cursorFile(payload, 2, 0), "its hot spot lies outside its picture"},
        {cursorFile(bitmap(16, {}, {0, 0, 0, 0})), "its picture is of an unknown kind"},
        {cursorFile(compressed), "its picture is of an unknown kind"},
    };
    for (const auto& [file, reason] : cases)
        try {
            readCursor(file);
            ADD_FAILURE() << reason << ": was read";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), reason);
        }
}

} // namespace wagemill
