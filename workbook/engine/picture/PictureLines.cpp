#include "workbook/engine/picture/PictureLines.h"

#include <array>
#include <cstddef>
#include <optional>

namespace wagemill::engine {

namespace {

constexpr Rgb black = {0, 0, 0};
constexpr Rgb gridLineColor = {212, 212, 212};

/// Which of two borders on one edge is drawn: the higher.
int strengthOf(BorderStyle style)
{
    static constexpr std::array<int, 14> strengths = {
        0,  // None
        6,  // Thin
        11, // Medium
        5,  // Dashed
        2,  // Dotted
        13, // Thick
        12, // Double
        1,  // Hair
        10, // MediumDashed
        4,  // DashDot
        9,  // MediumDashDot
        3,  // DashDotDot
        7,  // MediumDashDotDot
        8,  // SlantDashDot
    };
    const auto index = static_cast<std::size_t>(style);
    return index < strengths.size() ? strengths[index] : 0;
}

/// How a piece of an edge between two cells looks.
struct Edge {
    BorderStyle style = BorderStyle::None;
    Rgb color;

    bool operator==(const Edge&) const = default;
};

using CellOrNone = std::optional<CellAddress>;

class LineFinder {
public:
    LineFinder(const PictureGrid& grid, const std::set<CellAddress>& runOver) : m_grid(grid), m_runOver(runOver) {}

    void findHorizontalLines();
    void findVerticalLines();
    void findDiagonals();
    std::vector<drawing::Line> take() { return std::move(m_lines); }

private:
    Edge horizontalEdge(CellOrNone above, CellOrNone below) const;
    Edge verticalEdge(CellOrNone before, CellOrNone behind) const;
    Edge borderOrGridLine(CellOrNone first, CellOrNone second, const Border& ofFirst, const Border& ofSecond) const;
    void join(std::optional<drawing::Line>& line, const Edge& edge, const drawing::Line& piece);
    void close(std::optional<drawing::Line>& line);

    const PictureGrid& m_grid;
    const std::set<CellAddress>& m_runOver;
    std::vector<drawing::Line> m_lines;
};

Edge LineFinder::borderOrGridLine(CellOrNone first, CellOrNone second, const Border& ofFirst,
                                  const Border& ofSecond) const
{
    const Border& stronger = strengthOf(ofSecond.style) > strengthOf(ofFirst.style) ? ofSecond : ofFirst;
    if (strengthOf(stronger.style) > 0)
        return {stronger.style, m_grid.book().styles.rgb(stronger.color, black)};
    const auto isFilled = [this](CellOrNone cell) { return cell && m_grid.fillAt(*cell); };
    if (!m_grid.showsGridLines() || isFilled(first) || isFilled(second))
        return {};
    return {BorderStyle::Thin, gridLineColor};
}

Edge LineFinder::horizontalEdge(CellOrNone above, CellOrNone below) const
{
    if (above && below && m_grid.areaOf(*above) == m_grid.areaOf(*below))
        return {};
    return borderOrGridLine(above, below, above ? m_grid.formatAt(*above).bottom : Border{},
                            below ? m_grid.formatAt(*below).top : Border{});
}

Edge LineFinder::verticalEdge(CellOrNone before, CellOrNone behind) const
{
    if (before && behind && m_grid.areaOf(*before) == m_grid.areaOf(*behind))
        return {};
    const Border ofBefore = before ? m_grid.formatAt(*before).right : Border{};
    const Border ofBehind = behind ? m_grid.formatAt(*behind).left : Border{};
    const Edge edge = borderOrGridLine(before, behind, ofBefore, ofBehind);
    const bool isGridLine = ofBefore.style == BorderStyle::None && ofBehind.style == BorderStyle::None;
    return isGridLine && behind && m_runOver.contains(*behind) ? Edge{} : edge;
}

/// Makes the piece the line's continuation where it looks the same, else the beginning of the next line.
void LineFinder::join(std::optional<drawing::Line>& line, const Edge& edge, const drawing::Line& piece)
{
    if (line && edge == Edge{line->style, line->color}) {
        line->x2 = piece.x2;
        line->y2 = piece.y2;
        return;
    }
    close(line);
    if (edge.style != BorderStyle::None) {
        line = piece;
        line->style = edge.style;
        line->color = edge.color;
    }
}

void LineFinder::close(std::optional<drawing::Line>& line)
{
    if (line)
        m_lines.push_back(*line);
    line.reset();
}

void LineFinder::findHorizontalLines()
{
    const auto& rows = m_grid.rows();
    for (std::size_t below = 0; below <= rows.size(); ++below) {
        const double y = below < rows.size() ? m_grid.top(rows[below]) : m_grid.height();
        std::optional<drawing::Line> line;
        for (const int column : m_grid.columns()) {
            const CellOrNone first = below > 0 ? CellOrNone({rows[below - 1], column}) : std::nullopt;
            const CellOrNone second = below < rows.size() ? CellOrNone({rows[below], column}) : std::nullopt;
            join(line, horizontalEdge(first, second), {m_grid.left(column), y, m_grid.left(column + 1), y});
        }
        close(line);
    }
}

void LineFinder::findVerticalLines()
{
    const auto& columns = m_grid.columns();
    for (std::size_t behind = 0; behind <= columns.size(); ++behind) {
        const double x = behind < columns.size() ? m_grid.left(columns[behind]) : m_grid.width();
        std::optional<drawing::Line> line;
        for (const int row : m_grid.rows()) {
            const CellOrNone first = behind > 0 ? CellOrNone({row, columns[behind - 1]}) : std::nullopt;
            const CellOrNone second = behind < columns.size() ? CellOrNone({row, columns[behind]}) : std::nullopt;
            join(line, verticalEdge(first, second), {x, m_grid.top(row), x, m_grid.top(row + 1)});
        }
        close(line);
    }
}

void LineFinder::findDiagonals()
{
    constexpr unsigned downwards = 1U;
    constexpr unsigned upwards = 2U;
    for (const int row : m_grid.rows())
        for (const int column : m_grid.columns()) {
            const CellAddress address = {row, column};
            const CellFormat& format = m_grid.formatAt(address);
            if (format.diagonal.style == BorderStyle::None || m_grid.isCovered(address))
                continue;
            const drawing::Rect area = m_grid.rectOf(m_grid.areaOf(address));
            const double right = area.left + area.width;
            const double bottom = area.top + area.height;
            const Rgb color = m_grid.book().styles.rgb(format.diagonal.color, black);
            if ((format.diagonalDirections & downwards) != 0)
                m_lines.push_back({area.left, area.top, right, bottom, format.diagonal.style, color});
            if ((format.diagonalDirections & upwards) != 0)
                m_lines.push_back({area.left, bottom, right, area.top, format.diagonal.style, color});
        }
}

} // namespace

std::vector<drawing::Line> pictureLines(const PictureGrid& grid, const std::set<CellAddress>& runOver)
{
    LineFinder finder(grid, runOver);
    finder.findHorizontalLines();
    finder.findVerticalLines();
    finder.findDiagonals();
    return finder.take();
}

} // namespace wagemill::engine
