#include "preview/PictureBox.h"

#include <QAccessibleWidget>
#include <QMouseEvent>
#include <QPainter>

namespace wagemill {

namespace {

constexpr int margin = 1;

QSize naturalSize(const QPixmap& picture)
{
    return picture.deviceIndependentSize().toSize();
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
    m_smaller = QPixmap();
    update();
}

void PictureBox::clearPicture()
{
    paintPicture(QPixmap(), QSize(0, 0), QSize(0, 0));
}

void PictureBox::paintEvent(QPaintEvent* /*event*/)
{
    if (m_target.isEmpty() || m_sourcePixels.isEmpty())
        return;
    QPainter painter(this);
    const QSize targetPixels = (QSizeF(m_target.size()) * devicePixelRatioF()).toSize();
    if (targetPixels.width() < m_sourcePixels.width()) {
        prepareSmallerCopy(targetPixels);
        painter.drawPixmap(m_target, m_smaller);
    } else {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawPixmap(m_target, m_source, m_sourcePixels);
    }
}

/// Averages the pixels: stretching while painting would skip some, and thin digits with them.
void PictureBox::prepareSmallerCopy(QSize targetPixels)
{
    if (m_smaller.size() == targetPixels)
        return;
    const QImage part = m_source.copy(m_sourcePixels).toImage();
    m_smaller = QPixmap::fromImage(part.scaled(targetPixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
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
