#include "preview/LoadPicture.h"

#include "app/base/Messages.h"
#include "drawing/DrawingFile.h"
#include "preview/Metafile.h"
#include "preview/MetafilePicture.h"

#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <span>
#include <stdexcept>
#include <utility>

namespace wagemill {

namespace {

constexpr int maxBitmapMegabytes = 2048;
constexpr qint64 maxFileBytes = qint64{256} << 20; // of a drawing or metafile
constexpr qint64 startBytes = 128;                 // that show what a file is
constexpr double inchesInMetre = 39.3701;
constexpr double dotsInchOfRatioOne = 96;

double devicePixelRatio(const QImage& picture)
{
    const double dotsInch = std::round(picture.dotsPerMeterX() / inchesInMetre);
    const double ratio = dotsInch / dotsInchOfRatioOne;
    return ratio >= 1 && ratio <= 4 ? ratio : 1;
}

/// Lets one reader read more than all others may.
class AllocationLimit {
public:
    explicit AllocationLimit(int megabytes) : m_before(QImageReader::allocationLimit())
    {
        QImageReader::setAllocationLimit(megabytes);
    }
    AllocationLimit(const AllocationLimit&) = delete;
    AllocationLimit& operator=(const AllocationLimit&) = delete;
    ~AllocationLimit() { QImageReader::setAllocationLimit(m_before); }

private:
    int m_before;
};

std::span<const std::byte> bytesOf(const QByteArray& bytes)
{
    return std::as_bytes(std::span(bytes));
}

bool isTransparencySet(const QImage& picture)
{
    for (int y = 0; y < picture.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
        if (std::any_of(row, row + picture.width(), [](QRgb pixel) { return qAlpha(pixel) != 0; }))
            return true;
    }
    return false;
}

/// The paper shows through a picture. Many bitmaps have room for transparency and leave it at zero: they are opaque.
QImage onPaper(const QImage& picture)
{
    const QImage transparent = picture.convertToFormat(QImage::Format_ARGB32);
    QImage opaque = transparent.convertToFormat(QImage::Format_RGB32);
    if (isTransparencySet(transparent)) {
        opaque.fill(Qt::white);
        QPainter(&opaque).drawImage(0, 0, transparent);
    }
    return opaque;
}

SharedPicture readBitmap(QFile& file)
{
    const AllocationLimit limit(maxBitmapMegabytes);
    QImageReader reader(&file);
    QImage picture = reader.read();
    if (picture.isNull())
        throw std::runtime_error(reader.errorString().toStdString());
    if (picture.hasAlphaChannel())
        picture = onPaper(picture);
    picture.setDevicePixelRatio(devicePixelRatio(picture));
    return bitmapPicture(picture);
}

SharedPicture readPicture(QFile& file)
{
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error(file.errorString().toStdString());
    const QByteArray start = file.peek(startBytes);
    const bool isDrawing = isDrawingFile(bytesOf(start));
    if (!isDrawing && !isMetafile(bytesOf(start)))
        return readBitmap(file);
    if (file.size() > maxFileBytes)
        throw std::runtime_error("it is larger than 256 MiB");
    const QByteArray whole = file.readAll();
    return isDrawing ? drawingPicture(readDrawingFile(bytesOf(whole))) : metafilePicture(bytesOf(whole));
}

} // namespace

SharedPicture loadPicture(const std::filesystem::path& file)
try {
    QFile bytes(file);
    return readPicture(bytes);
} catch (const std::runtime_error& error) {
    throw std::runtime_error("Cannot read the picture \"" + file.string() + "\": " + withoutFullStop(error.what()) +
                             ".");
}

} // namespace wagemill
