#pragma once

#include "preview/PreviewPicture.h"

#include <QWidget>

namespace wagemill {

/// A picture on white paper with a hairline around it, drawn again whenever the platform asks for it. Sizes and
/// positions are in layout units.
class PictureBox : public QWidget {
    Q_OBJECT

public:
    explicit PictureBox(QWidget* parent);

    /// The picture that the box was given last; scaling leaves it alone. Null: none.
    const SharedPicture& picture() const { return m_picture; }
    void setPicture(SharedPicture picture);
    /// The box takes the size of the picture with its hairline, in whole units, and a frame of one unit on every side.
    void sizeToPicture();

    /// Shows the upper left part of `source` that is `sourceSize` large, stretched over `targetSize` from the box's own
    /// upper left corner.
    void paintPicture(const SharedPicture& source, QSize sourceSize, QSize targetSize);

signals:
    /// x and y in the box's own coordinates. While a button is held the box keeps receiving moves from everywhere.
    void MouseDown(float x, float y);
    void MouseMove(Qt::MouseButtons buttons, float x, float y);
    void MouseUp();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* /*event*/) override { emit MouseUp(); }

private:
    SharedPicture m_picture;
    SharedPicture m_source; ///< what is drawn, ...
    QRect m_target;         ///< ... the sheet of paper that it is drawn on, in pixels, ...
    QSizeF m_scale;         ///< ... and pixels a natural one, across and down
};

} // namespace wagemill
