#pragma once

#include "drawing/Drawing.h"

#include <QFont>
#include <QRectF>
#include <QString>
#include <QTextLayout>

#include <memory>

namespace wagemill {

/// Texts are laid out in twips: a font's size is a whole number there, as fonts have it, and 13.33 pixels is not.
inline constexpr double twipsPerPixel = 15;

/// A text broken into lines.
struct TextBlock {
    std::unique_ptr<QTextLayout> layout; ///< in twips
    double width = 0;                    ///< of the widest line, in pixels at 96 dots per inch
    double height = 0;
};

/// The font as it is laid out: its pixel size is its height in twips, its widths do not depend on the scale.
QFont drawnFont(const drawing::Font& font);

/// The text in lines of at most `width` pixels where `wrap` is set, else in one line for each line of the text.
TextBlock textBlock(const QString& text, const QFont& font, double width, bool wrap);

/// The text's cell without padding and indent.
QRectF innerCell(const drawing::Text& text);

/// What of the text is shown in its cell: all of it, a shorter form or "###", in the font or a smaller one.
TextBlock shownBlock(const drawing::Text& text, const QFont& font);

} // namespace wagemill
