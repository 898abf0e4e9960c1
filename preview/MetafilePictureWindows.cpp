#include "preview/Metafile.h"
#include "preview/MetafilePicture.h"

#include <QSize>

#include <windows.h>

#include <cmath>
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

/// A white bitmap in memory that the system draws on.
class Canvas {
public:
    explicit Canvas(QSize size) : m_size(size), m_context(::CreateCompatibleDC(nullptr))
    {
        BITMAPINFO info = {};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = size.width();
        info.bmiHeader.biHeight = -size.height(); // the first row is the top one
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = bitsPerPixel;
        m_bitmap.reset(::CreateDIBSection(m_context.get(), &info, DIB_RGB_COLORS, &m_pixels, nullptr, 0));
        if (m_bitmap == nullptr || ::SelectObject(m_context.get(), m_bitmap.get()) == nullptr)
            throw std::runtime_error("there is not enough memory for its picture");
        ::PatBlt(m_context.get(), 0, 0, size.width(), size.height(), WHITENESS);
    }

    void play(HENHMETAFILE metafile)
    {
        const RECT whole = {0, 0, m_size.width(), m_size.height()};
        // Fails also when a single record cannot be drawn; the rest is drawn all the same, so that is what is shown.
        ::PlayEnhMetaFile(m_context.get(), metafile, &whole);
        ::GdiFlush();
    }

    QImage picture() const
    {
        constexpr int rowAlignment = 4;
        const int rowBytes = (m_size.width() * bitsPerPixel / 8 + rowAlignment - 1) / rowAlignment * rowAlignment;
        const QImage drawn(static_cast<const uchar*>(m_pixels), m_size.width(), m_size.height(), rowBytes,
                           QImage::Format_BGR888);
        return drawn.copy();
    }

private:
    QSize m_size;
    void* m_pixels = nullptr;
    // The context goes first: a bitmap cannot be deleted while it is selected.
    Owned<HBITMAP, DeleteBitmap> m_bitmap;
    Owned<HDC, DeleteContext> m_context;
};

int scaled(double length, double scale)
{
    return static_cast<int>(std::lround(length * scale));
}

} // namespace

QImage metafilePicture(std::span<const std::byte> file, double sharpness)
{
    const MetafileSize natural = checkedMetafileSize(file);
    const double scale = metafileScale(natural, sharpness);
    const Owned<HENHMETAFILE, DeleteMetafile> metafile(
        ::SetEnhMetaFileBits(static_cast<UINT>(file.size()), reinterpret_cast<const BYTE*>(file.data())));
    if (metafile == nullptr)
        throw std::runtime_error("the system does not take the metafile");
    Canvas canvas({scaled(natural.width, scale), scaled(natural.height, scale)});
    canvas.play(metafile.get());
    QImage picture = canvas.picture();
    picture.setDevicePixelRatio(scale);
    return picture;
}

} // namespace wagemill
