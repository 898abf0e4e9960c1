#include "preview/Metafile.h"
#include "preview/MetafilePicture.h"

#include <QImage>
#include <QPainter>
#include <QTransform>

#include <windows.h>

#include <memory>
#include <stdexcept>
#include <type_traits>

namespace wagemill {

namespace {

constexpr WORD bitsPerPixel = 24;

struct DeleteMetafile {
    void operator()(HENHMETAFILE metafile) const { ::DeleteEnhMetaFile(metafile); }
};
struct DeleteBitmap {
    void operator()(HBITMAP bitmap) const { ::DeleteObject(bitmap); }
};
struct DeleteContext {
    void operator()(HDC context) const { ::DeleteDC(context); }
};
template <class Handle, class Delete>
using Owned = std::unique_ptr<std::remove_pointer_t<Handle>, Delete>;

/// A white bitmap in memory that the system draws on: `part` of the device that the picture is painted on.
class Canvas {
public:
    explicit Canvas(const QRect& part) : m_part(part), m_context(::CreateCompatibleDC(nullptr))
    {
        BITMAPINFO info = {};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = part.width();
        info.bmiHeader.biHeight = -part.height(); // the first row is the top one
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = bitsPerPixel;
        m_bitmap.reset(::CreateDIBSection(m_context.get(), &info, DIB_RGB_COLORS, &m_pixels, nullptr, 0));
        if (m_bitmap == nullptr || ::SelectObject(m_context.get(), m_bitmap.get()) == nullptr)
            throw std::runtime_error("there is not enough memory for its picture");
        ::PatBlt(m_context.get(), 0, 0, part.width(), part.height(), WHITENESS);
    }

    /// whole  where all of the picture is on the device
    void play(HENHMETAFILE metafile, const QRect& whole)
    {
        const QRect onCanvas = whole.translated(-m_part.topLeft());
        const RECT bounds = {onCanvas.left(), onCanvas.top(), onCanvas.right() + 1, onCanvas.bottom() + 1};
        // Fails also when a single record cannot be drawn; the rest is drawn all the same, so that is what is shown.
        ::PlayEnhMetaFile(m_context.get(), metafile, &bounds);
        ::GdiFlush();
    }

    /// The drawn pixels, for as long as the canvas lives.
    QImage picture() const
    {
        constexpr int rowAlignment = 4;
        const int rowBytes = (m_part.width() * bitsPerPixel / 8 + rowAlignment - 1) / rowAlignment * rowAlignment;
        return {static_cast<const uchar*>(m_pixels), m_part.width(), m_part.height(), rowBytes, QImage::Format_BGR888};
    }

private:
    QRect m_part;
    void* m_pixels = nullptr;
    // The context goes first: a bitmap cannot be deleted while it is selected.
    Owned<HBITMAP, DeleteBitmap> m_bitmap;
    Owned<HDC, DeleteContext> m_context;
};

class MetafilePicture : public PreviewPicture {
public:
    explicit MetafilePicture(std::span<const std::byte> file)
        : m_size(checkedMetafileSize(file)),
          m_metafile(::SetEnhMetaFileBits(static_cast<UINT>(file.size()), reinterpret_cast<const BYTE*>(file.data())))
    {
        if (m_metafile == nullptr)
            throw std::runtime_error("the system does not take the metafile");
    }

    QSizeF naturalSize() const override { return {m_size.width, m_size.height}; }

    void paint(QPainter& painter, const QRectF& part) const override
    {
        const QTransform toDevice = painter.deviceTransform();
        const QRect whole = toDevice.mapRect(QRectF(QPointF(), naturalSize())).toRect();
        const QRect painted = toDevice.mapRect(part).toAlignedRect() & whole;
        if (painted.isEmpty())
            return;
        Canvas canvas(painted);
        canvas.play(m_metafile.get(), whole);
        painter.drawImage(toDevice.inverted().mapRect(QRectF(painted)), canvas.picture());
    }

private:
    MetafileSize m_size;
    Owned<HENHMETAFILE, DeleteMetafile> m_metafile;
};

} // namespace

SharedPicture metafilePicture(std::span<const std::byte> file)
{
    return std::make_shared<MetafilePicture>(file);
}

} // namespace wagemill
