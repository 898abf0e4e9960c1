#include "workbook/engine/picture/PictureGrid.h"

#include "workbook/engine/text/NumberFormat.h"

#include <algorithm>
#include <utility>

namespace wagemill::engine {

namespace {

drawing::Align alignmentOf(HorizontalAlignment horizontal, const CellValue& value, const ShownText& shown)
{
    using enum HorizontalAlignment;
    const bool isGeneral = horizontal == General;
    if (horizontal == Right || (isGeneral && shown.isNumber))
        return drawing::Align::Right;
    const bool isCentered = std::holds_alternative<bool>(value) || std::holds_alternative<ErrorCode>(value);
    if (horizontal == Center || horizontal == CenterAcrossSelection || horizontal == Distributed ||
        (isGeneral && isCentered))
        return drawing::Align::Center;
    return drawing::Align::Left;
}

drawing::VerticalAlign alignmentOf(VerticalAlignment vertical)
{
    using enum VerticalAlignment;
    if (vertical == Top || vertical == Justify)
        return drawing::VerticalAlign::Top;
    return vertical == Center || vertical == Distributed ? drawing::VerticalAlign::Center
                                                         : drawing::VerticalAlign::Bottom;
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

class TextPlacer {
public:
    TextPlacer(const PictureGrid& grid, const RegionalFormats& formats) : m_grid(grid), m_formats(formats) {}

    PictureTexts place()
    {
        for (const int rowIndex : m_grid.rows()) {
            const Row* const row = m_grid.sheet().findRow(rowIndex);
            if (row == nullptr)
                continue;
            for (const Cell& cell : row->cells) {
                const CellAddress address = {rowIndex, cell.column};
                const bool isShown = m_grid.range().contains(address) && !m_grid.isCovered(address) &&
                                     m_grid.rectOf(m_grid.areaOf(address)).width > 0;
                if (isShown && !isEmpty(cell.value))
                    placeCell(address, cell);
            }
        }
        return std::move(m_placed);
    }

private:
    void placeCell(CellAddress address, const Cell& cell)
    {
        const StyleTable& styles = m_grid.book().styles;
        const CellFormat& format = styles.format(cell.format);
        ShownText shown =
            showValue(cell.value, styles.numberFormatCode(format.numberFormat), m_formats, m_grid.book().dates1904);
        if (shown.text.empty() && !shown.isNegativeDate)
            return;

        drawing::Text text;
        text.cell = m_grid.rectOf(m_grid.areaOf(address));
        text.font = format.font;
        text.color = shown.color.value_or(styles.rgb(styles.fontOf(format).color, Rgb{0, 0, 0}));
        text.align = alignmentOf(format.horizontal, cell.value, shown);
        text.vertical = alignmentOf(format.vertical);
        text.wrap = breaksLines(format) && !shown.isNumber;
        text.shrink = format.shrinkToFit && !text.wrap;
        text.indent = isIndented(format) ? format.indent : 0;
        text.hashesWhenTooWide = shown.isNumber && !text.shrink;
        text.alwaysHashes = shown.isNegativeDate;
        if (const double* const number = std::get_if<double>(&cell.value); number != nullptr && shown.isGeneral)
            text.shorterForms = shorterGeneralTexts(*number, m_formats);
        text.text = std::move(shown.text);
        if (!text.wrap)
            std::erase(text.text, '\n'); // a line break shows only where lines break
        giveRoom(text, address, format, std::holds_alternative<std::string>(cell.value));
        m_placed.texts.push_back(std::move(text));
    }

    void giveRoom(drawing::Text& text, CellAddress address, const CellFormat& format, bool isText)
    {
        constexpr auto across = HorizontalAlignment::CenterAcrossSelection;
        text.room = text.cell;
        if (m_grid.isMerged(address))
            return;
        if (format.horizontal == across) {
            const auto sharesAlignment = [&](CellAddress next) { return m_grid.formatAt(next).horizontal == across; };
            text.room = text.cell = widened(address, 0, emptyNeighbours(address, 1, sharesAlignment));
        } else if (isText && !text.wrap && !text.shrink && format.horizontal != HorizontalAlignment::Fill) {
            const auto any = [](CellAddress) { return true; };
            const int leftwards = text.align == drawing::Align::Left ? 0 : emptyNeighbours(address, -1, any);
            const int rightwards = text.align == drawing::Align::Right ? 0 : emptyNeighbours(address, 1, any);
            text.room = widened(address, leftwards, rightwards);
        }
    }

    /// How many empty columns beside the cell satisfy the condition, in one direction.
    template <class Condition>
    int emptyNeighbours(CellAddress address, int step, Condition condition) const
    {
        const auto isFilled = [this](CellAddress cell) {
            return !isEmpty(m_grid.sheet().value(cell)) || m_grid.isMerged(cell);
        };
        int count = 0;
        for (CellAddress next = {address.row, address.column + step};
             m_grid.range().contains(next) && !isFilled(next) && condition(next); next.column += step)
            ++count;
        return count;
    }

    drawing::Rect widened(CellAddress address, int leftwards, int rightwards)
    {
        for (int column = address.column - leftwards + 1; column <= address.column + rightwards; ++column)
            m_placed.runOver.insert({address.row, column});
        return m_grid.rectOf({address.row, address.column - leftwards, address.row, address.column + rightwards});
    }

    const PictureGrid& m_grid;
    const RegionalFormats& m_formats;
    PictureTexts m_placed;
};

} // namespace

PictureTexts pictureTexts(const PictureGrid& grid, const RegionalFormats& formats)
{
    return TextPlacer(grid, formats).place();
}

} // namespace wagemill::engine
