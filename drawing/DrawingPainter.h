#pragma once

#include "drawing/Drawing.h"

#include <QFont>
#include <QRectF>

#include <array>
#include <cstdint>
#include <vector>

class QPainter;

namespace wagemill {

/// Where the items of a list are, by stripes across the drawing: most of a large drawing is out of view.
class Stripes {
public:
    explicit Stripes(double height);

    void add(const QRectF& bounds); ///< of the next item
    /// The numbers of the items that may touch `part`, in the order in which they were added.
    std::vector<std::uint32_t> itemsNear(const QRectF& part) const;

private:
    static constexpr std::size_t stripes = 64;

    std::size_t stripeAt(double y) const;

    double m_height; ///< of a stripe
    std::uint32_t m_count = 0;
    std::array<std::vector<std::uint32_t>, stripes> m_items;
};

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
    std::vector<QFont> m_fonts; ///< of the drawing, made once: looking for a font takes longer than drawing with it
    Stripes m_fills;
    Stripes m_lines;
    Stripes m_texts;
};

} // namespace wagemill
