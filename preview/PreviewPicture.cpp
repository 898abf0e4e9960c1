#include "preview/PreviewPicture.h"

#include "app/base/Messages.h"
#include "drawing/DrawingFile.h"
#include "drawing/DrawingPainter.h"
#include "preview/Metafile.h"

#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QPainter>
#include <QScopeGuard>

#include <algorithm>
#include <cmath>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

namespace wagemill {

namespace {

class DrawingPicture : public PreviewPicture {
public:
    explicit DrawingPicture(drawing::Drawing drawing) : m_drawing(std::move(drawing)) {}

    QSizeF naturalSize() const override { return {m_drawing.width, m_drawing.height}; }
    void paint(QPainter& painter, const QRectF& part) const override { m_painter.paint(painter, part); }

private:
    drawing::Drawing m_drawing;
    DrawingPainter m_painter{m_drawing};
};

class BitmapPicture : public PreviewPicture {
public:
    explicit BitmapPicture(const QImage& bitmap) : m_sizes{bitmap} {}

    QSizeF naturalSize() const override { return m_sizes.front().deviceIndependentSize(); }
    void paint(QPainter& painter, const QRectF& /*part*/) const override
    {
        painter.save();
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(QRectF(QPointF(), naturalSize()), fitting(painter.deviceTransform().m11()));
        painter.restore();
    }

private:
    /// The bitmap halved until it is near the scale: painting it much smaller would skip pixels, and thin digits with
    /// them.
    const QImage& fitting(double scale) const
    {
        constexpr double nearEnough = 0.7;
        std::size_t index = 0;
        scale /= m_sizes.front().devicePixelRatio();
        while (scale < nearEnough) {
            if (index + 1 == m_sizes.size())
                m_sizes.push_back(
                    m_sizes[index].scaled(m_sizes[index].size() / 2, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
            scale *= 2;
            ++index;
        }
        return m_sizes[index];
    }

    mutable std::vector<QImage> m_sizes; ///< the bitmap, and each half as large as the one before, as far as needed
};

constexpr int maxBitmapMegabytes = 2048;
constexpr qint64 maxFileBytes = qint64{256} << 20; // of a drawing or metafile
constexpr qint64 startBytes = 128;                 // that show what a file is
constexpr double inchesInMetre = 39.3701;
constexpr double dotsInchOfRatioOne = 96;

double devicePixelRatio(const QImage& picture)
{
    const double dotsInch = std::round(picture.dotsPerMeterX() / inchesInMetre);
    const double ratio = dotsInch / dotsInchOfRatioOne;
    return ratio > 4 ? 1 : std::max(1.0, ratio);
}

std::span<const std::byte> bytesOf(const QByteArray& bytes)
{
    return std::as_bytes(std::span(bytes));
}

/// The paper shows through a picture. Many bitmaps have room for transparency and leave it at zero: they are opaque.
QImage onPaper(const QImage& picture)
{
    QImage opaque = picture.convertToFormat(QImage::Format_ARGB32).convertToFormat(QImage::Format_RGB32);
    QImage zero(picture.size(), QImage::Format_Alpha8);
    zero.fill(0);
    if (picture.convertToFormat(QImage::Format_Alpha8) != zero) {
        opaque.fill(Qt::white);
        QPainter(&opaque).drawImage(0, 0, picture);
    }
    return opaque;
}

SharedPicture readBitmap(QFile& file)
{
    const auto restored = qScopeGuard([limit = QImageReader::allocationLimit()] {
        QImageReader::setAllocationLimit(limit); // all others may read less
    });
    QImageReader::setAllocationLimit(maxBitmapMegabytes);
    QImageReader reader(&file);
    QImage picture = reader.read();
    if (picture.isNull())
        throw std::runtime_error(reader.errorString().toStdString());
    if (picture.hasAlphaChannel())
        picture = onPaper(picture);
    picture.setDevicePixelRatio(devicePixelRatio(picture));
    return bitmapPicture(picture);
}

} // namespace

SharedPicture drawingPicture(drawing::Drawing drawing)
{
    return std::make_shared<DrawingPicture>(std::move(drawing));
}

SharedPicture bitmapPicture(const QImage& bitmap)
{
    return std::make_shared<BitmapPicture>(bitmap);
}

SharedPicture loadPicture(const std::filesystem::path& file)
try {
    QFile bytes(file);
    if (!bytes.open(QIODevice::ReadOnly))
        throw std::runtime_error(bytes.errorString().toStdString());
    const QByteArray start = bytes.peek(startBytes);
    const bool isDrawing = isDrawingFile(bytesOf(start));
    if (!isDrawing && !isMetafile(bytesOf(start)))
        return readBitmap(bytes);
    if (bytes.size() > maxFileBytes)
        throw std::runtime_error("it is larger than 256 MiB");
    const QByteArray whole = bytes.readAll();
    return isDrawing ? drawingPicture(readDrawingFile(bytesOf(whole))) : metafilePicture(bytesOf(whole));
} catch (const std::runtime_error& error) {
    throw std::runtime_error("Cannot read the picture \"" + file.string() + "\": " + withoutFullStop(error.what()) +
                             ".");
}

} // namespace wagemill
