#pragma once

#include <QPixmap>
#include <QWidget>

#include <map>
#include <utility>

class QPainter;

namespace wagemill {

/// A picture on a white ground, drawn again from its own copy whenever the platform asks for it. Its resolution counts:
/// a picture of device pixel ratio 2 has half its pixels as its natural size, and is as sharp as the screen allows.
class PictureBox : public QWidget {
    Q_OBJECT

public:
    explicit PictureBox(QWidget* parent);

    /// The picture that the box was given last; scaling leaves it alone.
    const QPixmap& picture() const { return m_picture; }
    void setPicture(const QPixmap& picture);
    /// The box takes the picture's natural size and a white margin of one unit on every side.
    void sizeToPicture();

    /// Shows the upper left part of `source` that is `sourceSize` units large, stretched over `targetSize` units from
    /// the box's own upper left corner.
    void paintPicture(const QPixmap& source, QSize sourceSize, QSize targetSize);
    void clearPicture();

signals:
    /// x and y in the box's own coordinates. While a button is held the box keeps receiving moves from everywhere.
    void MouseDown(Qt::MouseButtons buttons, float x, float y);
    void MouseMove(Qt::MouseButtons buttons, float x, float y);
    void MouseUp(Qt::MouseButtons buttons, float x, float y);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    QSize targetPixels() const;
    void paintSmaller(QPainter& painter, const QRect& exposed);
    const QPixmap& smallerTile(int column, int row);

    QPixmap m_picture;
    QPixmap m_source; ///< what is drawn, ...
    QRect m_sourcePixels;
    QRect m_target;
    std::map<std::pair<int, int>, QPixmap> m_smallerTiles; ///< ... and where it is drawn smaller than it is, those
                                                           ///< parts of it, by column and row, that came into view
};

} // namespace wagemill
