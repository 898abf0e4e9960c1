#pragma once

#include "workbook/engine/picture/SheetPicture.h"

#include <QFont>
#include <QPainter>
#include <QRectF>
#include <QString>
#include <QTextLayout>

#include <memory>
#include <utility>
#include <vector>

namespace wagemill {

/// A text broken into lines.
struct TextBlock {
    std::unique_ptr<QTextLayout> layout; ///< in twips
    double width = 0;                    ///< of the widest line, in pixels at 96 dots per inch
    double height = 0;
};

/// The font as it is laid out: its pixel size is its height in twips, its widths do not depend on the scale.
QFont drawnFont(const engine::Font& font);

/// The text in lines of at most `width` pixels where `wrap` is set, else in one line for each line of the text.
TextBlock textBlock(const QString& text, const QFont& font, double width, bool wrap);

/// Draws the texts of a picture with a painter whose unit is the pixel at 96 dots per inch.
class TextPainter {
public:
    explicit TextPainter(QPainter& painter) : m_painter(painter) {}
    void draw(const engine::PictureText& text);

private:
    const QFont& fontOf(const engine::Font& font);

    QPainter& m_painter;
    std::vector<std::pair<engine::Font, QFont>> m_fonts; ///< those met: a new one would be looked for among all fonts
};

} // namespace wagemill
