#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// A picture as a list to draw: sharp at every size, on the screen and on paper. All lengths are in pixels at 96 dots
/// per inch, from the upper left corner.
namespace wagemill::drawing {

inline constexpr double textPadding = 3; ///< between a cell's edge and its text, left and right
inline constexpr double indentWidth = 9; ///< one step of indent

struct Color {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    bool operator==(const Color&) const = default;
};

struct Rect {
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;

    bool operator==(const Rect&) const = default;
};

struct Fill {
    Rect area;
    Color color;

    bool operator==(const Fill&) const = default;
};

/// The borders that a spreadsheet has, numbered as in its files ([MS-XLS] 2.5.11 BorderStyle).
enum class LineStyle : std::uint8_t {
    None,
    Thin,
    Medium,
    Dashed,
    Dotted,
    Thick,
    Double,
    Hair,
    MediumDashed,
    DashDot,
    MediumDashDot,
    DashDotDot,
    MediumDashDotDot,
    SlantDashDot,
};

/// A line along the edge between two cells, or across a cell. A line one pixel wide at x covers x to x + 1.
struct Line {
    double x1 = 0;
    double y1 = 0;
    double x2 = 0;
    double y2 = 0;
    LineStyle style = LineStyle::Thin;
    Color color = {};

    bool operator==(const Line&) const = default;
};

struct Font {
    std::string name = "Arial";
    std::uint16_t heightTwips = 200; ///< a twentieth of a point
    bool bold = false;
    bool italic = false;
    bool strikeout = false;
    bool underline = false;

    bool operator==(const Font&) const = default;
};

enum class Align : std::uint8_t { Left, Center, Right };
enum class VerticalAlign : std::uint8_t { Top, Center, Bottom };

/// A text in its cell. The painter, who knows the font's metrics, breaks, cuts and replaces it by these rules, with the
/// same outcome at every scale.
struct Text {
    Rect cell;        ///< the cell or merged area
    Rect room;        ///< where the text may be drawn: the cell, and the empty cells beside it that it may run over
    std::string text; ///< UTF-8, line feeds are line breaks
    std::uint16_t font = 0; ///< index into Drawing::fonts
    Color color = {};
    Align align = Align::Left;
    VerticalAlign vertical = VerticalAlign::Bottom;
    bool wrap = false;
    bool shrink = false; ///< drawn in a smaller font until it fits the cell
    std::uint8_t indent = 0;
    bool hashesWhenTooWide = false; ///< a number: "###" where it does not fit the cell
    bool alwaysHashes = false;      ///< "###" whatever the width: a negative date
    /// Shorter forms of a number, longest first, to be tried before "###".
    std::vector<std::string> shorterForms = {};

    bool operator==(const Text&) const = default;
};

/// Drawn in this order: first the fills, then the lines, then the texts. The size holds the pixel of the lines along
/// the right and the bottom edge.
struct Drawing {
    double width = 0;
    double height = 0;
    std::vector<Fill> fills = {};
    std::vector<Line> lines = {};
    std::vector<Font> fonts = {}; ///< of the texts
    std::vector<Text> texts = {};

    bool operator==(const Drawing&) const = default;
};

} // namespace wagemill::drawing
