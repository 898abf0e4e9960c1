#include "preview/PictureBox.h"

#include <QAccessibleWidget>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>

#include <cmath>

namespace wagemill {

namespace {

constexpr int margin = 1;
constexpr int tilePixels = 256;

QSize naturalSize(const QPixmap& picture)
{
    return picture.deviceIndependentSize().toSize();
}

/// Where an edge of a tile lies in the source; that of its neighbour lies there, too.
int scaledEdge(int edge, int targetExtent, int sourceExtent)
{
    return static_cast<int>(std::lround(double(edge) * sourceExtent / targetExtent));
}

/// A part of a picture without a copy of its pixels, which are to outlive it.
QImage viewOf(const QImage& picture, const QRect& part)
{
    const int bytesPerPixel = picture.depth() / 8;
    const uchar* const corner = picture.constScanLine(part.top()) + qsizetype(part.left()) * bytesPerPixel;
    return {corner, part.width(), part.height(), picture.bytesPerLine(), picture.format()};
}

/// Makes a screen reader speak of a picture rather than of an empty area.
QAccessibleInterface* accessiblePicture(const QString& className, QObject* object)
{
    if (className != QLatin1String(PictureBox::staticMetaObject.className()))
        return nullptr;
    return new QAccessibleWidget(static_cast<QWidget*>(object), QAccessible::Graphic);
}

} // namespace

PictureBox::PictureBox(QWidget* parent) : QWidget(parent)
{
    QAccessible::installFactory(accessiblePicture); // once, however often it is asked
    QPalette paper = palette();                     // a sheet is white on a dark desktop too
    paper.setColor(QPalette::Window, Qt::white);
    setPalette(paper);
    setAutoFillBackground(true);
}

void PictureBox::setPicture(const QPixmap& picture)
{
    m_picture = picture;
    paintPicture(picture, naturalSize(picture), naturalSize(picture));
    m_target.translate(margin, margin);
}

void PictureBox::sizeToPicture()
{
    resize(naturalSize(m_picture) + QSize(2 * margin, 2 * margin));
}

void PictureBox::paintPicture(const QPixmap& source, QSize sourceSize, QSize targetSize)
{
    const QSizeF pixels = QSizeF(sourceSize) * source.devicePixelRatio();
    m_source = source;
    m_sourcePixels = QRect(QPoint(0, 0), pixels.toSize()) & source.rect();
    m_target = QRect(QPoint(0, 0), targetSize);
    m_smallerTiles.clear();
    update();
}

void PictureBox::clearPicture()
{
    paintPicture(QPixmap(), QSize(0, 0), QSize(0, 0));
}

void PictureBox::paintEvent(QPaintEvent* event)
{
    if (m_target.isEmpty() || m_sourcePixels.isEmpty())
        return;
    QPainter painter(this);
    if (targetPixels().width() < m_sourcePixels.width()) {
        paintSmaller(painter, event->rect());
    } else {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawPixmap(m_target, m_source, m_sourcePixels);
    }
}

QSize PictureBox::targetPixels() const
{
    return (QSizeF(m_target.size()) * devicePixelRatioF()).toSize();
}

/// Tile by tile, for of a large picture only a small part is in view.
void PictureBox::paintSmaller(QPainter& painter, const QRect& exposed)
{
    const double ratio = devicePixelRatioF();
    const QRect area = (exposed & m_target).translated(-m_target.topLeft());
    const auto tileOf = [ratio](int position) { return static_cast<int>(position * ratio) / tilePixels; };
    for (int row = tileOf(area.top()); row <= tileOf(area.bottom() + 1); ++row)
        for (int column = tileOf(area.left()); column <= tileOf(area.right() + 1); ++column)
            painter.drawPixmap(m_target.topLeft() + QPointF(column, row) * tilePixels / ratio,
                               smallerTile(column, row));
}

/// Averages the pixels: stretching while painting would skip some, and thin digits with them.
const QPixmap& PictureBox::smallerTile(int column, int row)
{
    QPixmap& tile = m_smallerTiles[{column, row}];
    const QRect part = QRect(column * tilePixels, row * tilePixels, tilePixels, tilePixels) & QRect({}, targetPixels());
    if (!tile.isNull() || part.isEmpty())
        return tile;
    const QSize target = targetPixels();
    const QRect source(QPoint(scaledEdge(part.left(), target.width(), m_sourcePixels.width()),
                              scaledEdge(part.top(), target.height(), m_sourcePixels.height())),
                       QPoint(scaledEdge(part.right() + 1, target.width(), m_sourcePixels.width()) - 1,
                              scaledEdge(part.bottom() + 1, target.height(), m_sourcePixels.height()) - 1));
    tile = QPixmap::fromImage(
        viewOf(m_source.toImage(), source).scaled(part.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    tile.setDevicePixelRatio(devicePixelRatioF());
    return tile;
}

void PictureBox::mousePressEvent(QMouseEvent* event)
{
    emit MouseDown(event->button(), static_cast<float>(event->position().x()),
                   static_cast<float>(event->position().y()));
}

void PictureBox::mouseMoveEvent(QMouseEvent* event)
{
    emit MouseMove(event->buttons(), static_cast<float>(event->position().x()),
                   static_cast<float>(event->position().y()));
}

void PictureBox::mouseReleaseEvent(QMouseEvent* event)
{
    emit MouseUp(event->button(), static_cast<float>(event->position().x()), static_cast<float>(event->position().y()));
}

} // namespace wagemill
