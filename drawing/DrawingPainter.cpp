#include "drawing/DrawingPainter.h"

#include "drawing/TextBlock.h"

#include <QPainter>
#include <QTextLine>
#include <QTransform>

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <numeric>

namespace wagemill {

namespace {

using drawing::Align;
using drawing::Line;
using drawing::LineStyle;
using drawing::VerticalAlign;

QColor colorOf(drawing::Color color)
{
    return {color.red, color.green, color.blue};
}

QRectF rectOf(const drawing::Rect& area)
{
    return {area.left, area.top, area.width, area.height};
}

/// How a line style is drawn: the width in pixels, and the lengths of dashes and gaps in turn; none is a solid line.
struct Stroke {
    double width = 1;
    std::initializer_list<double> dashes;
};

const Stroke& strokeOf(LineStyle style)
{
    static const std::array<Stroke, 14> strokes = {{
        {0, {}},                 // None
        {1, {}},                 // Thin
        {2, {}},                 // Medium
        {1, {4, 2}},             // Dashed
        {1, {2, 2}},             // Dotted
        {3, {}},                 // Thick
        {1, {}},                 // Double: two of them
        {1, {1, 1}},             // Hair
        {2, {9, 3}},             // MediumDashed
        {1, {9, 3, 3, 3}},       // DashDot
        {2, {9, 3, 3, 3}},       // MediumDashDot
        {1, {9, 3, 3, 3, 3, 3}}, // DashDotDot
        {2, {9, 3, 3, 3, 3, 3}}, // MediumDashDotDot
        {2, {11, 1, 5, 1}},      // SlantDashDot
    }};
    return strokes[std::min(static_cast<std::size_t>(style), strokes.size() - 1)];
}

/// Draws level and upright lines on whole pixels of the screen or paper: one style has one thickness everywhere, and no
/// line vanishes where the drawing is shown small.
class LinePainter {
public:
    LinePainter(QPainter& painter, const QRectF& part)
        : m_painter(painter), m_part(part), m_toDevice(painter.deviceTransform()), m_fromDevice(m_toDevice.inverted())
    {
    }

    void draw(const Line& line)
    {
        const double width = strokeOf(line.style).width;
        if (line.x1 != line.x2 && line.y1 != line.y2) {
            m_painter.setRenderHint(QPainter::Antialiasing);
            m_painter.setPen(QPen(colorOf(line.color), width));
            m_painter.drawLine(QPointF(line.x1, line.y1), QPointF(line.x2, line.y2));
            m_painter.setRenderHint(QPainter::Antialiasing, false);
        } else if (line.style == LineStyle::Double) {
            drawStraight(line, width, -1);
            drawStraight(line, width, 1);
        } else {
            drawStraight(line, width, width > 1 ? -1 : 0);
        }
    }

private:
    void drawStraight(const Line& line, double width, double offset)
    {
        const std::initializer_list<double>& dashes = strokeOf(line.style).dashes;
        const bool isLevel = line.y1 == line.y2;
        const double begin = isLevel ? line.x1 : line.y1;
        const double end = (isLevel ? line.x2 : line.y2) + 1; // the corner pixel belongs to both lines that meet in it
        const auto piece = [&](double from, double to) {
            fill(isLevel ? QRectF(from, line.y1, to - from, 1) : QRectF(line.x1, from, 1, to - from), isLevel, width,
                 offset, colorOf(line.color));
        };
        if (dashes.size() == 0)
            return piece(begin, end);
        const double first = isLevel ? m_part.left() : m_part.top();
        const double last = std::min(end, isLevel ? m_part.right() : m_part.bottom());
        const double period = std::accumulate(dashes.begin(), dashes.end(), 0.0);
        for (double at = begin + std::max(0.0, std::floor((first - begin) / period) * period); at < last;)
            for (const double* length = dashes.begin(); length != dashes.end() && at < end; length += 2) {
                piece(at, std::min(at + length[0], end));
                at += length[0] + length[1];
            }
    }

    /// edge  a piece of the line as if it were one pixel wide
    void fill(const QRectF& edge, bool isLevel, double width, double offset, const QColor& color)
    {
        const QRectF exact = m_toDevice.mapRect(edge);
        const double pixel = isLevel ? exact.height() : exact.width();
        const double thickness = std::max(1.0, std::round(pixel * width));
        const double shift = std::round(pixel * offset);
        const double left = std::round(exact.left());
        const double top = std::round(exact.top());
        const double right = std::max(left + 1, std::round(exact.right()));
        const double bottom = std::max(top + 1, std::round(exact.bottom()));
        const QRectF whole = isLevel ? QRectF(left, top + shift, right - left, thickness)
                                     : QRectF(left + shift, top, thickness, bottom - top);
        m_painter.fillRect(m_fromDevice.mapRect(whole), color);
    }

    QPainter& m_painter;
    QRectF m_part;
    QTransform m_toDevice;
    QTransform m_fromDevice;
};

QRectF boundsOf(const Line& line)
{
    return QRectF(QPointF(line.x1, line.y1), QPointF(line.x2, line.y2)).normalized().adjusted(0, 0, 1, 1);
}

double leftOf(Align align, const QRectF& inner, double width)
{
    return inner.left() + (inner.width() - width) * static_cast<int>(align) / 2; // left, centre, right
}

double topOf(const drawing::Text& text, double height)
{
    const double spare = text.cell.height - height;
    const double padding = std::clamp(spare, 0.0, 1.0);
    if (text.vertical == VerticalAlign::Top ||
        (spare <= 0 && text.wrap)) // of a text that is too long, show its beginning
        return text.cell.top + padding;
    return text.cell.top + (text.vertical == VerticalAlign::Center ? std::round(spare / 2) : spare - padding);
}

} // namespace

DrawingPainter::DrawingPainter(const drawing::Drawing& drawing)
    : m_drawing(drawing), m_fills(drawing.height), m_lines(drawing.height), m_texts(drawing.height)
{
    for (const drawing::Font& font : drawing.fonts)
        m_fonts.push_back(drawnFont(font));
    for (const drawing::Fill& fill : drawing.fills)
        m_fills.add(rectOf(fill.area));
    for (const Line& line : drawing.lines)
        m_lines.add(boundsOf(line));
    for (const drawing::Text& text : drawing.texts)
        m_texts.add(rectOf(text.room));
}

void DrawingPainter::paint(QPainter& painter, const QRectF& part) const
{
    const QRectF near = part.adjusted(-2, -2, 2, 2); // a thick line extends beyond its edge
    painter.save();
    for (const std::uint32_t item : m_fills.itemsNear(near))
        if (const drawing::Fill& fill = m_drawing.fills[item]; rectOf(fill.area).intersects(near))
            painter.fillRect(rectOf(fill.area), colorOf(fill.color));
    LinePainter lines(painter, near);
    for (const std::uint32_t item : m_lines.itemsNear(near))
        if (const Line& line = m_drawing.lines[item]; boundsOf(line).intersects(near))
            lines.draw(line);
    painter.scale(1 / twipsPerPixel, 1 / twipsPerPixel);
    for (const std::uint32_t item : m_texts.itemsNear(near))
        if (const drawing::Text& text = m_drawing.texts[item]; rectOf(text.room).intersects(near))
            paintText(painter, text);
    painter.restore();
}

/// The painter's unit is the twip.
void DrawingPainter::paintText(QPainter& painter, const drawing::Text& text) const
{
    const QRectF inner = innerCell(text);
    const TextBlock block = shownBlock(text, m_fonts[text.font]);
    const double top = topOf(text, block.height);
    const QRectF room = rectOf(text.room);
    // Most texts fit, and a clip takes longer than a text.
    const bool isCut = !room.contains({leftOf(text.align, inner, block.width), top, block.width, block.height});
    if (isCut) {
        painter.save();
        painter.setClipRect(QRectF(room.topLeft() * twipsPerPixel, room.size() * twipsPerPixel), Qt::IntersectClip);
    }
    painter.setPen(colorOf(text.color));
    for (int index = 0; index < block.layout->lineCount(); ++index) {
        const QTextLine line = block.layout->lineAt(index);
        const double left = leftOf(text.align, inner, line.naturalTextWidth() / twipsPerPixel);
        line.draw(&painter, QPointF(left, top) * twipsPerPixel);
    }
    if (isCut)
        painter.restore();
}

} // namespace wagemill
