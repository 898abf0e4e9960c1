#pragma once

#include "drawing/Drawing.h"

#include <QFont>
#include <QRectF>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

class QPainter;

namespace wagemill {

/// Where the items of a list are, by stripes across the drawing: most of a large drawing is out of view.
class Stripes {
public:
    explicit Stripes(double height) : m_height(std::max(1.0, height / stripes)) {}

    /// bounds  of the next item
    void add(const QRectF& bounds)
    {
        const QRectF area = bounds.normalized();
        for (std::size_t stripe = stripeAt(area.top()); stripe <= stripeAt(area.bottom()); ++stripe)
            m_items[stripe].push_back(m_count);
        ++m_count;
    }

    /// The numbers of the items that may touch `part`, in the order in which they were added.
    std::vector<std::uint32_t> itemsNear(const QRectF& part) const
    {
        std::vector<std::uint32_t> found;
        for (std::size_t stripe = stripeAt(part.top()); stripe <= stripeAt(part.bottom()); ++stripe)
            found.insert(found.end(), m_items[stripe].begin(), m_items[stripe].end());
        std::ranges::sort(found);
        found.erase(std::unique(found.begin(), found.end()), found.end()); // an item may be in several stripes
        return found;
    }

private:
    static constexpr std::size_t stripes = 64;

    std::size_t stripeAt(double y) const
    {
        return static_cast<std::size_t>(std::clamp(y / m_height, 0.0, stripes - 1.0));
    }

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
