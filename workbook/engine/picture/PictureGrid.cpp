#include "workbook/engine/picture/PictureGrid.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace wagemill::engine {

namespace {

constexpr std::int64_t maxCells = 4'000'000;
constexpr double digitOnPaper = 111 / 15.; ///< 0.556 of ten points, in whole twips

/// The share of a hatched background that takes the pattern colour, by pattern number ([MS-XLS] 2.5.159 FillPattern).
/// At the size of a pixel a hatch is seen as that mixture.
constexpr std::array<double, 19> patternShares = {0,   1,    0.5,  0.75, 0.25, 0.5,  0.5,   0.5,   0.5,   0.5,
                                                  0.5, 0.25, 0.25, 0.25, 0.25, 0.44, 0.375, 0.125, 0.0625};

Rgb mixed(Rgb pattern, Rgb background, double share)
{
    const auto channel = [share](std::uint8_t front, std::uint8_t back) {
        return static_cast<std::uint8_t>(std::lround(share * front + (1 - share) * back));
    };
    return {channel(pattern.red, background.red), channel(pattern.green, background.green),
            channel(pattern.blue, background.blue)};
}

/// Of a column's width in 1/256 of a digit of the default font (Arial 10, whose digits are 7 pixels wide on the
/// screen), margins included.
double columnPixels(int width256, Medium medium)
{
    constexpr int digitWidth = 7;
    constexpr int rounding = 128 / digitWidth; // so the application that defined the widths does it
    if (medium == Medium::Paper)
        return width256 * digitOnPaper / 256;
    return width256 == 0 ? 0 : (width256 + rounding) * digitWidth / 256;
}

} // namespace

PictureGrid::PictureGrid(const Book& book, const Sheet& sheet, const CellRect& range, Medium medium)
    : m_book(book), m_sheet(sheet), m_range(range), m_medium(medium)
{
    if (std::int64_t{range.rows()} * range.columns() > maxCells)
        throw EngineError("The range " + addressText(range.first()) + ":" +
                          addressText({range.lastRow, range.lastColumn}) + " of sheet \"" + sheet.name +
                          "\" is too large for a picture.");
    const auto measure = [](int first, int last, auto pixelsOf, std::vector<int>& shown, std::vector<double>& edges) {
        edges.assign(1, 0);
        for (int index = first; index <= last; ++index) {
            const double pixels = pixelsOf(index);
            if (pixels > 0)
                shown.push_back(index);
            edges.push_back(edges.back() + pixels);
        }
    };
    const auto columnSize = [&](int column) { return columnPixels(sheet.columnWidth(column), medium); };
    const auto rowSize = [&](int row) {
        constexpr int twipsPerPixel = 15;
        return (sheet.rowHeightTwips(row) + twipsPerPixel / 2) / twipsPerPixel;
    };
    measure(range.firstColumn, range.lastColumn, columnSize, m_columns, m_lefts);
    measure(range.firstRow, range.lastRow, rowSize, m_rows, m_tops);
    m_mergedByRow.resize(static_cast<std::size_t>(m_range.rows()));
    for (const CellRect& area : m_sheet.merged)
        for (int row = std::max(area.firstRow, m_range.firstRow); row <= std::min(area.lastRow, m_range.lastRow); ++row)
            // Areas of a sound sheet do not overlap, so a row has no more of them than columns.
            if (auto& inRow = m_mergedByRow[static_cast<std::size_t>(row - m_range.firstRow)];
                inRow.size() < static_cast<std::size_t>(maxColumns))
                inRow.push_back(&area);
}

drawing::Rect PictureGrid::rectOf(const CellRect& area) const
{
    const double x = left(std::max(area.firstColumn, m_range.firstColumn));
    const double y = top(std::max(area.firstRow, m_range.firstRow));
    return {x, y, left(std::min(area.lastColumn, m_range.lastColumn) + 1) - x,
            top(std::min(area.lastRow, m_range.lastRow) + 1) - y};
}

const CellFormat& PictureGrid::formatAt(CellAddress address) const
{
    return m_book.styles.format(m_sheet.formatAt(address));
}

std::optional<Rgb> PictureGrid::fillAt(CellAddress address) const
{
    const Fill& fill = formatAt(areaOf(address).first()).fill;
    if (fill.pattern == 0)
        return std::nullopt;
    return mixed(m_book.styles.rgb(fill.patternColor, Rgb{0, 0, 0}),
                 m_book.styles.rgb(fill.backgroundColor, Rgb{255, 255, 255}), patternShares[fill.pattern]);
}

const CellRect* PictureGrid::mergedAt(CellAddress address) const
{
    if (address.row < m_range.firstRow || address.row > m_range.lastRow)
        return nullptr;
    const auto& inRow = m_mergedByRow[static_cast<std::size_t>(address.row - m_range.firstRow)];
    const auto found = std::ranges::find_if(inRow, [&](const CellRect* area) { return area->contains(address); });
    return found == inRow.end() ? nullptr : *found;
}

CellRect PictureGrid::areaOf(CellAddress address) const
{
    const CellRect* const merged = mergedAt(address);
    return merged != nullptr ? *merged : CellRect{address.row, address.column, address.row, address.column};
}

bool PictureGrid::isCovered(CellAddress address) const
{
    return address != areaOf(address).first();
}

} // namespace wagemill::engine
