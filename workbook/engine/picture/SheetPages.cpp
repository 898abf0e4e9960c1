#include "workbook/engine/picture/SheetPages.h"

#include "workbook/engine/picture/PictureGrid.h"
#include "workbook/engine/picture/SheetPicture.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <utility>

namespace wagemill::engine {

namespace {

constexpr double pixelsPerInch = 96;
constexpr int minScale = 10; ///< percent
constexpr std::size_t maxPages = 10'000;

/// Rows or columns side by side.
struct Span {
    int first = 0;
    int last = 0;
};

/// What the references of a sheet's built-in name say: areas of cells, whole rows, whole columns.
std::vector<CellRect> namedAreas(const Book& book, std::size_t sheet, std::string_view name)
{
    std::vector<CellRect> areas;
    for (const DefinedName& defined : book.names) {
        if (defined.name != name || defined.sheet != sheet)
            continue;
        for (const Token& token : defined.formula.tokens)
            if (const auto* reference = std::get_if<ReferenceToken>(&token); reference != nullptr && !reference->bad)
                areas.push_back(reference->cells());
    }
    return areas;
}

bool isVisible(const Book& book, const Cell& cell)
{
    const CellFormat& format = book.styles.format(cell.format);
    const auto borders = {format.left.style, format.right.style, format.top.style, format.bottom.style};
    return !isEmpty(cell.value) || format.fill.pattern != 0 ||
           std::ranges::any_of(borders, [](BorderStyle style) { return style != BorderStyle::None; });
}

/// From A1 to the last row and column with something to see.
std::optional<CellRect> visibleArea(const Book& book, const Sheet& sheet)
{
    std::optional<CellRect> area;
    for (int row = 0; row < static_cast<int>(sheet.rows().size()); ++row)
        for (const Cell& cell : sheet.rows()[static_cast<std::size_t>(row)].cells)
            if (isVisible(book, cell))
                area = CellRect{0, 0, row, std::max<int>(area ? area->lastColumn : 0, cell.column)};
    for (const CellRect& merged : sheet.merged)
        if (area && area->contains(merged.first())) {
            area->lastRow = std::max(area->lastRow, merged.lastRow);
            area->lastColumn = std::max(area->lastColumn, merged.lastColumn);
        }
    return area;
}

/// How one direction of an area is divided among pages. `edge` is where a row or column begins.
struct Division {
    Span area;
    std::function<double(int)> edge;
    std::vector<PageBreak> breaks;
    std::optional<Span> titles; ///< repeated on pages that begin after them

    double size(Span span) const { return edge(span.last + 1) - edge(span.first); }

    double titleSize(int first) const { return titles && titles->last < first ? size(*titles) : 0; }

    bool isBreak(int index) const { return std::ranges::find(breaks, index, &PageBreak::at) != breaks.end(); }

    /// The pages, each as long as fits into `room`, with at least one row or column.
    std::vector<Span> pages(double room) const
    {
        std::vector<Span> found = {{area.first, area.first}};
        for (int index = area.first + 1; index <= area.last; ++index) {
            const int first = found.back().first;
            if (isBreak(index) || size({first, index}) + titleSize(first) > room)
                found.push_back({index, index});
            else
                found.back().last = index;
        }
        return found;
    }

    /// The longest stretch between two breaks.
    double longest() const
    {
        double length = 0;
        for (int index = area.first, first = area.first; index <= area.last; ++index) {
            if (isBreak(index))
                first = index;
            length = std::max(length, size({first, index}) + titleSize(first));
        }
        return length;
    }
};

class Paginator {
public:
    Paginator(const Book& book, std::size_t sheet, const drawing::PaperSize& paper, const RegionalFormats& formats)
        : m_book(book),
          m_index(sheet),
          m_sheet(*book.sheets.at(sheet)),
          m_print(m_sheet.print),
          m_paper(paper),
          m_formats(formats)
    {
        for (const CellRect& area : namedAreas(book, sheet, "Print_Titles"))
            if (area.columns() == maxColumns)
                m_titleRows = Span{area.firstRow, area.lastRow};
            else if (area.rows() == maxRows)
                m_titleColumns = Span{area.firstColumn, area.lastColumn};
    }

    std::vector<drawing::Page> pages()
    {
        const std::optional<CellRect> visible = visibleArea(m_book, m_sheet);
        if (!visible)
            return {};
        std::vector<CellRect> areas = namedAreas(m_book, m_index, "Print_Area");
        if (areas.empty())
            areas.push_back(*visible);
        for (CellRect& area : areas) {
            if (area.rows() == maxRows) // whole columns
                area.lastRow = visible->lastRow;
            if (area.columns() == maxColumns)
                area.lastColumn = visible->lastColumn;
            addPages(area);
        }
        return std::move(m_pages);
    }

private:
    double roomWide() const { return std::max(1.0, m_paper.width - (m_print.left + m_print.right) * pixelsPerInch); }
    double roomHigh() const { return std::max(1.0, m_paper.height - (m_print.top + m_print.bottom) * pixelsPerInch); }

    void addPages(const CellRect& area)
    {
        CellRect measured = area; // the titles may be outside
        if (m_titleRows)
            measured.firstRow = std::min(measured.firstRow, m_titleRows->first);
        if (m_titleColumns)
            measured.firstColumn = std::min(measured.firstColumn, m_titleColumns->first);
        const PictureGrid grid(m_book, m_sheet, measured, Medium::Paper);
        const auto top = [&](int row) { return grid.top(row); };
        const auto left = [&](int column) { return grid.left(column); };
        Division down = {{area.firstRow, area.lastRow}, top, m_print.rowBreaks, m_titleRows};
        Division across = {{area.firstColumn, area.lastColumn}, left, m_print.columnBreaks, m_titleColumns};
        if (m_print.fitToPages && m_print.pagesHigh > 0)
            down.breaks.clear(); // where pages are counted, breaks by hand are not obeyed
        if (m_print.fitToPages && m_print.pagesWide > 0)
            across.breaks.clear();

        const double scale = scaleFor(down, across) / 100.0;
        const std::vector<Span> rows = down.pages(roomHigh() / scale);
        const std::vector<Span> columns = across.pages(roomWide() / scale);
        const std::size_t count = rows.size() * columns.size();
        if (m_pages.size() + count > maxPages)
            throw EngineError("The sheet \"" + m_sheet.name + "\" would take more than " + std::to_string(maxPages) +
                              " pages on this paper. Please choose a larger one.");
        for (std::size_t page = 0; page < count; ++page) {
            const std::size_t row = m_print.overThenDown ? page / columns.size() : page % rows.size();
            const std::size_t column = m_print.overThenDown ? page % columns.size() : page / rows.size();
            addPage({down, rows[row]}, {across, columns[column]}, scale);
        }
    }

    /// Percent.
    int scaleFor(const Division& down, const Division& across) const
    {
        if (!m_print.fitToPages) {
            const int fitting = static_cast<int>(100 * roomWide() / std::max(1.0, across.longest()));
            return std::max(minScale, std::min<int>(m_print.scalePercent, fitting));
        }
        const auto fits = [](const Division& division, double room, std::uint16_t pages) {
            return pages == 0 || (division.pages(room).size() <= pages && division.longest() <= room * pages);
        };
        int scale = 100;
        while (scale > minScale && (!fits(across, roomWide() * 100 / scale, m_print.pagesWide) ||
                                    !fits(down, roomHigh() * 100 / scale, m_print.pagesHigh)))
            --scale;
        return scale;
    }

    /// One page's share of a direction, with the titles before it.
    struct Share {
        const Division& division;
        Span body;

        double titleSize() const { return division.titleSize(body.first); }
        double size() const { return titleSize() + division.size(body); }
        /// The stretches to draw, each with its distance from the page's beginning.
        std::vector<std::pair<Span, double>> stretches() const
        {
            if (titleSize() > 0)
                return {{*division.titles, 0}, {body, titleSize()}};
            return {{body, 0}};
        }
    };

    void addPage(const Share& down, const Share& across, double scale)
    {
        const auto centered = [scale](bool isCentered, double room, double size) {
            return isCentered ? std::max(0.0, (room - size * scale) / 2) : 0;
        };
        const double left =
            m_print.left * pixelsPerInch + centered(m_print.centerHorizontally, roomWide(), across.size());
        const double top = m_print.top * pixelsPerInch + centered(m_print.centerVertically, roomHigh(), down.size());
        drawing::Page& page = m_pages.emplace_back();
        for (const auto& [rows, below] : down.stretches())
            for (const auto& [columns, beside] : across.stretches())
                page.parts.push_back(
                    {sheetPicture(m_book, m_sheet, {rows.first, columns.first, rows.last, columns.last}, m_formats,
                                  Medium::Paper),
                     left + beside * scale, top + below * scale, scale});
    }

    const Book& m_book;
    std::size_t m_index;
    const Sheet& m_sheet;
    const PrintSetup& m_print;
    const drawing::PaperSize& m_paper;
    const RegionalFormats& m_formats;
    std::optional<Span> m_titleRows;
    std::optional<Span> m_titleColumns;
    std::vector<drawing::Page> m_pages;
};

/// Header or footer between the left and right margin.
void addTexts(drawing::Drawing& marks, const std::array<PageText, 3>& texts, const drawing::Rect& area,
              drawing::VerticalAlign vertical)
{
    constexpr drawing::Align aligns[] = {drawing::Align::Left, drawing::Align::Center, drawing::Align::Right};
    for (std::size_t part = 0; part < texts.size(); ++part) {
        if (texts[part].text.empty())
            continue;
        const drawing::Rect cell = {area.left - drawing::textPadding, area.top, area.width + 2 * drawing::textPadding,
                                    area.height};
        marks.texts.push_back({.cell = cell,
                               .room = cell,
                               .text = texts[part].text,
                               .font = static_cast<std::uint16_t>(marks.fonts.size()),
                               .align = aligns[part],
                               .vertical = vertical});
        marks.fonts.push_back(texts[part].font);
    }
}

/// They are as large as the sheet beside them, and keep three quarters of an inch from the edges of the paper unless
/// the sheet's margins are wider: so spreadsheet programs do it.
drawing::PlacedDrawing headerAndFooter(const PrintSetup& print, const drawing::PaperSize& paper,
                                       const Font& standardFont, const PageFacts& facts, double scale)
{
    constexpr double minMargin = 0.75;
    const double left = std::max(0.0, minMargin - print.left) * pixelsPerInch;
    const double right = std::max(0.0, minMargin - print.right) * pixelsPerInch;
    const double room = (paper.width - (print.left + print.right) * pixelsPerInch) / scale;
    const double header = print.headerMargin * pixelsPerInch / scale;
    const double footer = print.footerMargin * pixelsPerInch / scale;
    drawing::PlacedDrawing placed = {{}, print.left * pixelsPerInch, 0, scale};
    placed.drawing.width = std::max(1.0, room);
    placed.drawing.height = paper.height / scale;
    const drawing::Font font = drawingFont(standardFont);
    const drawing::Rect area = {left, header, std::max(1.0, room - left - right),
                                std::max(1.0, placed.drawing.height - header - footer)};
    addTexts(placed.drawing, pageTexts(print.header, font, facts), area, drawing::VerticalAlign::Top);
    addTexts(placed.drawing, pageTexts(print.footer, font, facts), area, drawing::VerticalAlign::Bottom);
    return placed;
}

} // namespace

std::vector<drawing::Page> sheetPages(const Book& book, std::size_t sheet, const drawing::PaperSize& paper,
                                      const PageFacts& facts, const RegionalFormats& formats)
{
    const PrintSetup& print = book.sheets.at(sheet)->print;
    std::vector<drawing::Page> pages = Paginator(book, sheet, paper, formats).pages();
    PageFacts onPage = facts;
    onPage.sheet = book.sheets[sheet]->name;
    onPage.page = print.ownFirstPage ? print.firstPage : 1;
    onPage.pages = static_cast<int>(pages.size());
    for (drawing::Page& page : pages) {
        const double scale = page.parts.front().scale;
        page.parts.push_back(headerAndFooter(print, paper, book.styles.fonts.front(), onPage, scale));
        ++onPage.page;
    }
    return pages;
}

} // namespace wagemill::engine
