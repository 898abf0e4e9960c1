#include "workbook/engine/picture/PictureGrid.h"

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
    return strengths.at(static_cast<std::size_t>(style));
}

/// How a piece of an edge between two cells looks.
struct Edge {
    BorderStyle style = BorderStyle::None;
    Rgb color;

    bool operator==(const Edge&) const = default;
};

using CellOrNone = std::optional<CellAddress>;

enum class Direction { Across, Down };

class LineFinder {
public:
    LineFinder(const PictureGrid& grid, const std::set<CellAddress>& runOver) : m_grid(grid), m_runOver(runOver) {}

    std::vector<drawing::Line> find()
    {
        findEdges(Direction::Across);
        findEdges(Direction::Down);
        findDiagonals();
        return std::move(m_lines);
    }

private:
    /// The edges before each row, or column where they go down, and after the last one.
    void findEdges(Direction direction)
    {
        const bool isDown = direction == Direction::Down;
        const std::vector<int>& separated = isDown ? m_grid.columns() : m_grid.rows();
        const std::vector<int>& along = isDown ? m_grid.rows() : m_grid.columns();
        for (std::size_t next = 0; next <= separated.size(); ++next) {
            const bool isLast = next == separated.size();
            const double edge = isDown ? (isLast ? m_grid.width() : m_grid.left(separated[next]))
                                       : (isLast ? m_grid.height() : m_grid.top(separated[next]));
            std::optional<drawing::Line> line;
            for (const int place : along) {
                const auto cell = [&](std::size_t index) {
                    return isDown ? CellAddress{place, separated[index]} : CellAddress{separated[index], place};
                };
                const CellOrNone before = next > 0 ? CellOrNone(cell(next - 1)) : std::nullopt;
                const CellOrNone after = isLast ? std::nullopt : CellOrNone(cell(next));
                join(line, edgeBetween(before, after, direction),
                     isDown ? drawing::Line{edge, m_grid.top(place), edge, m_grid.top(place + 1)}
                            : drawing::Line{m_grid.left(place), edge, m_grid.left(place + 1), edge});
            }
            close(line);
        }
    }

    void findDiagonals()
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

    Edge edgeBetween(CellOrNone before, CellOrNone after, Direction direction) const
    {
        if (before && after && m_grid.areaOf(*before) == m_grid.areaOf(*after))
            return {};
        const bool isDown = direction == Direction::Down;
        static const CellFormat none;
        const CellFormat& first = before ? m_grid.formatAt(*before) : none;
        const CellFormat& second = after ? m_grid.formatAt(*after) : none;
        const Border& ofFirst = isDown ? first.right : first.bottom;
        const Border& ofSecond = isDown ? second.left : second.top;
        const Border& stronger = strengthOf(ofSecond.style) > strengthOf(ofFirst.style) ? ofSecond : ofFirst;
        if (strengthOf(stronger.style) > 0)
            return {stronger.style, m_grid.book().styles.rgb(stronger.color, black)};
        const auto isFilled = [this](CellOrNone cell) { return cell && m_grid.fillAt(*cell); };
        if (!m_grid.showsGridLines() || isFilled(before) || isFilled(after) ||
            (isDown && after && m_runOver.contains(*after)))
            return {};
        return {BorderStyle::Thin, gridLineColor};
    }

    /// Makes the piece the line's continuation where it looks the same, else the beginning of the next line.
    void join(std::optional<drawing::Line>& line, const Edge& edge, const drawing::Line& piece)
    {
        if (line && edge == Edge{line->style, line->color}) {
            line->x2 = piece.x2;
            line->y2 = piece.y2;
            return;
        }
        close(line);
        if (edge.style != BorderStyle::None)
            line = {piece.x1, piece.y1, piece.x2, piece.y2, edge.style, edge.color};
    }

    void close(std::optional<drawing::Line>& line)
    {
        if (line)
            m_lines.push_back(*line);
        line.reset();
    }

    const PictureGrid& m_grid;
    const std::set<CellAddress>& m_runOver;
    std::vector<drawing::Line> m_lines;
};

} // namespace

std::vector<drawing::Line> pictureLines(const PictureGrid& grid, const std::set<CellAddress>& runOver)
{
    return LineFinder(grid, runOver).find();
}

} // namespace wagemill::engine
