#include "preview/PictureBox.h"

#include "app/look/Controls.h"
#include "preview/ViewGeometry.h"

#include <QMouseEvent>
#include <QPainter>
#include <qdrawutil.h>

#include <cmath>
#include <utility>

namespace wagemill {

namespace {

constexpr int frame = 1;    ///< in units
constexpr int hairline = 1; ///< in pixels

/// The size of the sheet of paper in whole units.
QSize sheetSize(const SharedPicture& picture)
{
    if (picture == nullptr)
        return {0, 0};
    const QSizeF sheet = picture->naturalSize() + QSizeF(2 * hairline, 2 * hairline);
    return {static_cast<int>(std::ceil(toUnits(sheet.width()))), static_cast<int>(std::ceil(toUnits(sheet.height())))};
}

} // namespace

PictureBox::PictureBox(QWidget* parent) : QWidget(parent)
{
    setAccessibleRole<PictureBox, QAccessible::Graphic>(); // rather than an empty area
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void PictureBox::setPicture(SharedPicture picture)
{
    m_picture = std::move(picture);
    paintPicture(m_picture, sheetSize(m_picture), sheetSize(m_picture));
    m_target.translate(toPixels(frame), toPixels(frame));
}

void PictureBox::sizeToPicture()
{
    resize((sheetSize(m_picture) + QSize(2 * frame, 2 * frame)) * toPixels(1));
}

void PictureBox::paintPicture(const SharedPicture& source, QSize sourceSize, QSize targetSize)
{
    m_source = source;
    m_target = QRect(QPoint(0, 0), targetSize * toPixels(1));
    m_scale = {static_cast<double>(targetSize.width()) / sourceSize.width(),
               static_cast<double>(targetSize.height()) / sourceSize.height()};
    update();
}

void PictureBox::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    painter.fillRect(event->rect(), Qt::white); // a sheet is white on a dark desktop too
    if (m_source == nullptr)
        return;
    painter.save();
    painter.translate(m_target.topLeft());
    painter.scale(m_scale.width(), m_scale.height());
    painter.translate(hairline, hairline);
    for (const QRect& exposed : event->region()) { // a drag uncovers two strips
        const QRectF part = painter.worldTransform().inverted().mapRect(QRectF(exposed));
        painter.setClipRect(part);
        m_source->paint(painter, part);
    }
    painter.restore();
    qDrawPlainRect(&painter, m_target, palette().color(QPalette::Mid), hairline);
}

void PictureBox::mousePressEvent(QMouseEvent* event)
{
    emit MouseDown(toUnits(event->position().x()), toUnits(event->position().y()));
}

void PictureBox::mouseMoveEvent(QMouseEvent* event)
{
    emit MouseMove(event->buttons(), toUnits(event->position().x()), toUnits(event->position().y()));
}

} // namespace wagemill
