#include "drawing/TextBlock.h"

#include <QTextLine>
#include <QTextOption>

#include <algorithm>

namespace wagemill {

namespace {

double widthOf(const QString& text, const QFont& font)
{
    return textBlock(text, font, 0, false).width;
}

/// As many as there is room for.
QString hashes(const QFont& font, double width)
{
    constexpr double narrowest = 0.1;
    constexpr double maxCount = 1000;
    const double fitting = width / std::max(narrowest, widthOf(QStringLiteral("#"), font));
    return {static_cast<int>(std::clamp(fitting, 1.0, maxCount)), QLatin1Char('#')};
}

/// The text; a number in the first form that fits, else "###".
TextBlock fittingBlock(const drawing::Text& text, const QFont& font, double width)
{
    const auto laidOut = [&](const QString& shown) {
        return textBlock(shown, font, width, text.wrap && !text.hashesWhenTooWide);
    };
    if (!text.alwaysHashes) {
        TextBlock full = laidOut(QString::fromStdString(text.text));
        if (!text.hashesWhenTooWide || full.width <= width)
            return full;
        for (const std::string& shorter : text.shorterForms)
            if (TextBlock form = laidOut(QString::fromStdString(shorter)); form.width <= width)
                return form;
    }
    return laidOut(hashes(font, width));
}

} // namespace

QFont drawnFont(const drawing::Font& font)
{
    QFont drawn(QString::fromStdString(font.name));
    drawn.setPixelSize(std::max(1, int{font.heightTwips}));
    drawn.setBold(font.bold);
    drawn.setItalic(font.italic);
    drawn.setStrikeOut(font.strikeout);
    drawn.setUnderline(font.underline);
    drawn.setHintingPreference(QFont::PreferNoHinting); // hinted widths change with the scale
    drawn.setStyleStrategy(static_cast<QFont::StyleStrategy>(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
    return drawn;
}

TextBlock textBlock(const QString& text, const QFont& font, double width, bool wrap)
{
    constexpr double unlimited = 1e6;
    QString lines = text;
    lines.replace(QLatin1Char('\n'), QChar::LineSeparator);
    TextBlock block{std::make_unique<QTextLayout>(lines, font), 0, 0};
    QTextOption option;
    option.setWrapMode(wrap ? QTextOption::WrapAtWordBoundaryOrAnywhere : QTextOption::ManualWrap);
    option.setAlignment(Qt::AlignLeft | Qt::AlignAbsolute); // we place lines ourselves, those that run leftwards too
    block.layout->setTextOption(option);
    block.layout->setCacheEnabled(true); // else drawing shapes the text once more
    block.layout->beginLayout();
    double heightTwips = 0;
    for (QTextLine line = block.layout->createLine(); line.isValid(); line = block.layout->createLine()) {
        line.setLineWidth(wrap ? width * twipsPerPixel : unlimited);
        line.setPosition(QPointF(0, heightTwips));
        heightTwips += line.height();
        block.width = std::max(block.width, line.naturalTextWidth() / twipsPerPixel);
    }
    block.layout->endLayout();
    block.height = heightTwips / twipsPerPixel;
    return block;
}

QRectF innerCell(const drawing::Text& text)
{
    const double indent = text.indent * drawing::indentWidth;
    const double left = drawing::textPadding + (text.align == drawing::Align::Left ? indent : 0);
    const double right = drawing::textPadding + (text.align == drawing::Align::Right ? indent : 0);
    return {text.cell.left + left, text.cell.top, std::max(1.0, text.cell.width - left - right), text.cell.height};
}

TextBlock shownBlock(const drawing::Text& text, const QFont& font)
{
    const double width = innerCell(text).width();
    TextBlock block = fittingBlock(text, font, width);
    if (!text.shrink)
        return block;
    const QString shown = block.layout->text();
    QFont fitting = font;
    if (const double natural = widthOf(shown, font); natural > width)
        fitting.setPixelSize(std::max(1, static_cast<int>(font.pixelSize() * width / natural)));
    return textBlock(shown, fitting, width, text.wrap);
}

} // namespace wagemill
