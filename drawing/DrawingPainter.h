#pragma once

#include "drawing/Drawing.h"

#include <QFont>
#include <QRectF>

#include <vector>

class QPainter;

namespace wagemill {

/// Paints a drawing. On the screen lines are whole pixels wide at every scale; on paper they are lines and texts are
/// texts.
class DrawingPainter {
public:
    /// drawing  must outlive the painter
    explicit DrawingPainter(const drawing::Drawing& drawing);

    /// Paints what touches `part`, which is in the drawing's own unit, as the painter's coordinates are: the caller
    /// scales, moves and clips. The background is left as it is.
    void paint(QPainter& painter, const QRectF& part) const;

private:
    void paintText(QPainter& painter, const drawing::Text& text) const;

    const drawing::Drawing& m_drawing;
    std::vector<QFont> m_fonts;  ///< of the drawing, made once: looking for a font takes longer than drawing with it
    std::vector<QRectF> m_rooms; ///< of the texts, close together in memory: most of a large drawing is out of view
};

} // namespace wagemill
