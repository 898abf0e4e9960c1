#include "workbook/engine/picture/PictureTexts.h"

#include "workbook/engine/text/NumberFormat.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace wagemill::engine {

namespace {

constexpr int mostGeneralDigits = 11;

drawing::Align alignmentByKind(const CellValue& value, const ShownText& shown)
{
    if (shown.isNumber)
        return drawing::Align::Right;
    const bool isCentred = std::holds_alternative<bool>(value) || std::holds_alternative<ErrorCode>(value);
    return isCentred ? drawing::Align::Center : drawing::Align::Left;
}

drawing::Align alignmentOf(const CellFormat& format, const CellValue& value, const ShownText& shown)
{
    switch (format.horizontal) {
    case HorizontalAlignment::General:
        return alignmentByKind(value, shown);
    case HorizontalAlignment::Center:
    case HorizontalAlignment::CenterAcrossSelection:
    case HorizontalAlignment::Distributed:
        return drawing::Align::Center;
    case HorizontalAlignment::Right:
        return drawing::Align::Right;
    case HorizontalAlignment::Left:
    case HorizontalAlignment::Fill:
    case HorizontalAlignment::Justify:
        return drawing::Align::Left;
    }
    return drawing::Align::Left;
}

drawing::VerticalAlign alignmentOf(VerticalAlignment vertical)
{
    switch (vertical) {
    case VerticalAlignment::Top:
    case VerticalAlignment::Justify:
        return drawing::VerticalAlign::Top;
    case VerticalAlignment::Center:
    case VerticalAlignment::Distributed:
        return drawing::VerticalAlign::Center;
    case VerticalAlignment::Bottom:
        break;
    }
    return drawing::VerticalAlign::Bottom;
}

/// An indent counts only where the alignment was chosen.
bool isIndented(const CellFormat& format)
{
    return format.horizontal == HorizontalAlignment::Left || format.horizontal == HorizontalAlignment::Right ||
           format.horizontal == HorizontalAlignment::Distributed;
}

bool breaksLines(const CellFormat& format)
{
    return format.wrap || format.horizontal == HorizontalAlignment::Justify ||
           format.horizontal == HorizontalAlignment::Distributed || format.vertical == VerticalAlignment::Justify ||
           format.vertical == VerticalAlignment::Distributed;
}

/// What General makes of the number in ever fewer digits, longest first, without what `text` shows already.
std::vector<std::string> shorterFormsOf(double number, const std::string& text, const RegionalFormats& formats)
{
    std::vector<std::string> forms;
    for (int digits = mostGeneralDigits - 1; digits > 0; --digits) {
        std::string form = generalText(number, formats, digits);
        const std::string& longer = forms.empty() ? text : forms.back();
        if (form.size() < longer.size())
            forms.push_back(std::move(form));
    }
    return forms;
}

/// Places the texts of one range.
class TextPlacer {
public:
    TextPlacer(const PictureGrid& grid, const RegionalFormats& formats) : m_grid(grid), m_formats(formats) {}

    void place(CellAddress address, const Cell& cell);
    PictureTexts take() { return std::move(m_placed); }

private:
    bool isFilled(CellAddress address) const;
    int emptyNeighbours(CellAddress address, int step) const;
    int centredAcross(CellAddress address) const;
    drawing::Rect widened(CellAddress address, int leftwards, int rightwards);

    const PictureGrid& m_grid;
    const RegionalFormats& m_formats;
    PictureTexts m_placed;
};

bool TextPlacer::isFilled(CellAddress address) const
{
    return !isEmpty(m_grid.sheet().value(address)) || m_grid.isMerged(address);
}

/// How many columns beside the cell a text may run over, in one direction.
int TextPlacer::emptyNeighbours(CellAddress address, int step) const
{
    int count = 0;
    for (CellAddress next = {address.row, address.column + step}; m_grid.range().contains(next) && !isFilled(next);
         next.column += step)
        ++count;
    return count;
}

/// How many cells behind this one share its alignment across the selection.
int TextPlacer::centredAcross(CellAddress address) const
{
    int count = 0;
    for (CellAddress next = {address.row, address.column + 1};
         m_grid.range().contains(next) && !isFilled(next) &&
         m_grid.formatAt(next).horizontal == HorizontalAlignment::CenterAcrossSelection;
         ++next.column)
        ++count;
    return count;
}

drawing::Rect TextPlacer::widened(CellAddress address, int leftwards, int rightwards)
{
    for (int column = address.column - leftwards + 1; column <= address.column + rightwards; ++column)
        m_placed.runOver.insert({address.row, column});
    return m_grid.rectOf({address.row, address.column - leftwards, address.row, address.column + rightwards});
}

void TextPlacer::place(CellAddress address, const Cell& cell)
{
    const StyleTable& styles = m_grid.book().styles;
    const CellFormat& format = styles.format(cell.format);
    ShownText shown =
        showValue(cell.value, styles.numberFormatCode(format.numberFormat), m_formats, m_grid.book().dates1904);
    if (shown.text.empty() && !shown.isNegativeDate)
        return;

    drawing::Text text;
    text.cell = m_grid.rectOf(m_grid.areaOf(address));
    text.font = format.font < styles.fonts.size() ? format.font : std::uint16_t{0};
    text.color = shown.color.value_or(styles.rgb(styles.fontOf(format).color, Rgb{0, 0, 0}));
    text.align = alignmentOf(format, cell.value, shown);
    text.vertical = alignmentOf(format.vertical);
    text.wrap = breaksLines(format) && !shown.isNumber;
    text.shrink = format.shrinkToFit && !text.wrap;
    text.indent = isIndented(format) ? format.indent : 0;
    text.hashesWhenTooWide = shown.isNumber && !text.shrink;
    text.alwaysHashes = shown.isNegativeDate;
    if (const double* const number = std::get_if<double>(&cell.value); number != nullptr && shown.isGeneral)
        text.shorterForms = shorterFormsOf(*number, shown.text, m_formats);
    text.text = std::move(shown.text);
    if (!text.wrap)
        std::erase(text.text, '\n'); // a line break shows only where lines break

    text.room = text.cell;
    if (format.horizontal == HorizontalAlignment::CenterAcrossSelection && !m_grid.isMerged(address)) {
        text.cell = widened(address, 0, centredAcross(address));
        text.room = text.cell;
    } else if (std::holds_alternative<std::string>(cell.value) && !text.wrap && !text.shrink &&
               !m_grid.isMerged(address) && format.horizontal != HorizontalAlignment::Fill) {
        const int leftwards = text.align == drawing::Align::Left ? 0 : emptyNeighbours(address, -1);
        const int rightwards = text.align == drawing::Align::Right ? 0 : emptyNeighbours(address, 1);
        text.room = widened(address, leftwards, rightwards);
    }
    m_placed.texts.push_back(std::move(text));
}

} // namespace

PictureTexts pictureTexts(const PictureGrid& grid, const RegionalFormats& formats)
{
    TextPlacer placer(grid, formats);
    for (const int rowIndex : grid.rows()) {
        const Row* const row = grid.sheet().findRow(rowIndex);
        if (row == nullptr)
            continue;
        for (const Cell& cell : row->cells) {
            const CellAddress address = {rowIndex, cell.column};
            const bool isShown = grid.range().contains(address) && !grid.isCovered(address) &&
                                 grid.rectOf(grid.areaOf(address)).width > 0;
            if (isShown && !isEmpty(cell.value))
                placer.place(address, cell);
        }
    }
    return placer.take();
}

} // namespace wagemill::engine
