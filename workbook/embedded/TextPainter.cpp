#include "workbook/embedded/TextPainter.h"

#include <QTextLine>
#include <QTextOption>

#include <algorithm>
#include <cmath>

namespace wagemill {

namespace {

using engine::PictureText;
using engine::TextAlign;

constexpr double verticalPadding = 1;

/// Texts are laid out in twips: a font's size is a whole number there, as fonts have it, and 13.33 pixels is none.
constexpr double twipsPerPixel = 15;

double widthOf(const QString& text, const QFont& font)
{
    return textBlock(text, font, 0, false).width;
}

/// The text; a number in the first form that fits, else as many "#" as there is room for.
TextBlock fittingBlock(const PictureText& text, const QFont& font, double width)
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
    const double hash = widthOf(QStringLiteral("#"), font);
    return laidOut({std::max(1, static_cast<int>(width / hash)), QLatin1Char('#')});
}

/// The font made smaller until the text fits.
QFont shrunkFont(const QString& text, QFont font, double width)
{
    const double natural = widthOf(text, font);
    if (natural > width)
        font.setPixelSize(std::max(1, static_cast<int>(font.pixelSize() * width / natural)));
    return font;
}

double topOf(const PictureText& text, double height)
{
    const double spare = text.cell.height - height;
    if (spare <= 0 && text.wrap)
        return text.cell.top; // of a text that is too long its beginning is read
    switch (text.vertical) {
    case engine::VerticalAlignment::Top:
    case engine::VerticalAlignment::Justify:
        return text.cell.top + std::min(verticalPadding, std::max(spare, 0.0));
    case engine::VerticalAlignment::Center:
    case engine::VerticalAlignment::Distributed:
        return text.cell.top + std::round(spare / 2);
    case engine::VerticalAlignment::Bottom:
        break;
    }
    return text.cell.top + spare - std::min(verticalPadding, std::max(spare, 0.0));
}

double leftOf(const PictureText& text, const QRectF& inner, double width)
{
    switch (text.align) {
    case TextAlign::Left:
        return inner.left();
    case TextAlign::Center:
        return inner.center().x() - width / 2;
    case TextAlign::Right:
        return inner.right() - width;
    }
    return inner.left();
}

/// The cell without its padding and indent.
QRectF innerCell(const PictureText& text)
{
    const double indent = text.indent * engine::pictureIndent;
    const double left = engine::picturePadding + (text.align == TextAlign::Left ? indent : 0);
    const double right = engine::picturePadding + (text.align == TextAlign::Right ? indent : 0);
    return {text.cell.left + left, text.cell.top, std::max(1.0, text.cell.width - left - right), text.cell.height};
}

} // namespace

QFont drawnFont(const engine::Font& font)
{
    constexpr int bold = 600;
    QFont drawn(QString::fromStdString(font.name));
    drawn.setPixelSize(std::max(1, int{font.heightTwips}));
    drawn.setBold(font.weight >= bold);
    drawn.setItalic(font.italic);
    drawn.setStrikeOut(font.strikeout);
    drawn.setUnderline(font.underline != 0);
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

const QFont& TextPainter::fontOf(const engine::Font& font)
{
    const auto met = std::ranges::find(m_fonts, font, &std::pair<engine::Font, QFont>::first);
    return met != m_fonts.end() ? met->second : m_fonts.emplace_back(font, drawnFont(font)).second;
}

void TextPainter::draw(const PictureText& text)
{
    const QRectF inner = innerCell(text);
    const QFont& natural = fontOf(text.font);
    TextBlock block = fittingBlock(text, natural, inner.width());
    if (text.shrink) {
        const QString shown = block.layout->text();
        block = textBlock(shown, shrunkFont(shown, natural, inner.width()), inner.width(), text.wrap);
    }
    const double top = topOf(text, block.height);

    m_painter.save();
    m_painter.setClipRect(QRectF(text.room.left, text.room.top, text.room.width, text.room.height));
    m_painter.setPen(QColor(text.color.red, text.color.green, text.color.blue));
    m_painter.scale(1 / twipsPerPixel, 1 / twipsPerPixel);
    for (int index = 0; index < block.layout->lineCount(); ++index) {
        const QTextLine line = block.layout->lineAt(index);
        const double left = leftOf(text, inner, line.naturalTextWidth() / twipsPerPixel);
        line.draw(&m_painter, QPointF(left, top) * twipsPerPixel);
    }
    m_painter.restore();
}

} // namespace wagemill
