#include "preview/PreviewPicture.h"

#include "drawing/DrawingPainter.h"

#include <QImage>
#include <QPainter>

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

} // namespace

SharedPicture drawingPicture(drawing::Drawing drawing)
{
    return std::make_shared<DrawingPicture>(std::move(drawing));
}

SharedPicture bitmapPicture(const QImage& bitmap)
{
    return std::make_shared<BitmapPicture>(bitmap);
}

} // namespace wagemill
