#include "app/look/CursorFile.h"

#include "app/base/Files.h"

#include <QBuffer>
#include <QImageReader>
#include <QPixmap>
#include <QtEndian>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace wagemill {

namespace {

constexpr int wantedSide = 32;
constexpr int headerSize = 6;
constexpr int entrySize = 16;

struct CursorPicture {
    QImage image;
    QPoint hotSpot; ///< in pixels from the upper left corner
};

/// Where the directory of the file says that picture `index` points: the one thing that the image reader does not tell
/// ("ICO file format", https://learn.microsoft.com/previous-versions/ms997538(v=msdn.10)).
QPoint hotSpotOf(const QByteArray& file, int index)
{
    const char* const entry = file.constData() + headerSize + qsizetype{entrySize} * index;
    return {qFromLittleEndian<quint16>(entry + 4), qFromLittleEndian<quint16>(entry + 6)};
}

CursorPicture readCursor(QByteArray file)
{
    QBuffer buffer(&file);
    QImageReader reader(&buffer, "cur");
    const auto fitting = static_cast<int>(std::max<qsizetype>(file.size() - headerSize, 0) / entrySize);
    const int count = std::min(reader.imageCount(), fitting); // a damaged file may claim more than it holds
    CursorPicture best;
    for (int index = 0; index < count && reader.jumpToImage(index); ++index)
        if (const QImage image = reader.read();
            !image.isNull() &&
            (best.image.isNull() || std::abs(image.width() - wantedSide) < std::abs(best.image.width() - wantedSide)))
            best = {image, hotSpotOf(file, index)};
    if (best.image.isNull())
        throw std::runtime_error("it is not a cursor file, or is damaged");
    if (!best.image.rect().contains(best.hotSpot))
        throw std::runtime_error("its hot spot lies outside its picture");
    return best;
}

} // namespace

QCursor loadCursorFile(const std::filesystem::path& file)
{
    const std::vector<std::byte> bytes = readBytesFromFile(file); // a failure here names the file by itself
    try {
        const CursorPicture cursor =
            readCursor({reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())});
        return QCursor(QPixmap::fromImage(cursor.image), cursor.hotSpot.x(), cursor.hotSpot.y());
    } catch (const std::exception& error) {
        throw std::runtime_error("Cannot use the cursor file \"" + file.string() + "\": " + error.what() + ".");
    }
}

} // namespace wagemill
