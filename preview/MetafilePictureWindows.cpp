#include "preview/Metafile.h"

#include <QImage>
#include <QPainter>
#include <QTransform>

#include <windows.h>

#include <memory>
#include <stdexcept>
#include <type_traits>

namespace wagemill {

namespace {

template <class Handle, class Delete>
using Owned = std::unique_ptr<std::remove_pointer_t<Handle>, Delete>;
using OwnedMetafile = Owned<HENHMETAFILE, decltype([](HENHMETAFILE metafile) { ::DeleteEnhMetaFile(metafile); })>;
using OwnedBitmap = Owned<HBITMAP, decltype([](HBITMAP bitmap) { ::DeleteObject(bitmap); })>;
using OwnedContext = Owned<HDC, decltype([](HDC context) { ::DeleteDC(context); })>;

/// What `part` of a device shows of the metafile, on white.
/// whole  where all of the picture is on the device
QImage played(HENHMETAFILE metafile, const QRect& whole, const QRect& part)
{
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = part.width();
    info.bmiHeader.biHeight = -part.height(); // the first row is the top one
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* pixels = nullptr;
    const OwnedBitmap bitmap(::CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &pixels, nullptr, 0));
    // The context goes first: a bitmap cannot be deleted while it is selected.
    const OwnedContext context(::CreateCompatibleDC(nullptr));
    if (bitmap == nullptr || ::SelectObject(context.get(), bitmap.get()) == nullptr)
        throw std::runtime_error("there is not enough memory for its picture");
    ::PatBlt(context.get(), 0, 0, part.width(), part.height(), WHITENESS);
    const QRect place = whole.translated(-part.topLeft());
    const RECT bounds = {place.left(), place.top(), place.right() + 1, place.bottom() + 1};
    // Fails also when a single record cannot be drawn; the rest is drawn all the same, so that is what is shown.
    ::PlayEnhMetaFile(context.get(), metafile, &bounds);
    ::GdiFlush();
    return QImage(static_cast<const uchar*>(pixels), part.width(), part.height(), QImage::Format_RGB32).copy();
}

class MetafilePicture : public PreviewPicture {
public:
    explicit MetafilePicture(std::span<const std::byte> file)
        : m_size(checkedMetafileSize(file)),
          m_metafile(::SetEnhMetaFileBits(static_cast<UINT>(file.size()), reinterpret_cast<const BYTE*>(file.data())))
    {
        if (m_metafile == nullptr)
            throw std::runtime_error("the system cannot read the metafile");
    }

    QSizeF naturalSize() const override { return m_size; }

    void paint(QPainter& painter, const QRectF& part) const override
    {
        const QTransform toDevice = painter.deviceTransform();
        const QRect whole = toDevice.mapRect(QRectF(QPointF(), naturalSize())).toRect();
        const QRect painted = toDevice.mapRect(part).toAlignedRect() & whole;
        if (painted.isEmpty())
            return;
        painter.drawImage(toDevice.inverted().mapRect(QRectF(painted)), played(m_metafile.get(), whole, painted));
    }

private:
    QSizeF m_size;
    OwnedMetafile m_metafile;
};

} // namespace

SharedPicture metafilePicture(std::span<const std::byte> file)
{
    return std::make_shared<MetafilePicture>(file);
}

} // namespace wagemill
