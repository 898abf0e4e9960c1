#include "resources/SheetDescription.h"

#include "workbook/engine/formula/CellEntry.h"
#include "workbook/engine/formula/FormulaParser.h"

#include <algorithm>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace wagemill {

namespace {

using engine::Border;
using engine::CellAddress;
using engine::CellFormat;
using engine::CellRect;

constexpr int mostPageBreaks = 1026; ///< [MS-XLS] 2.4.142
constexpr auto anyNumber = std::numeric_limits<std::size_t>::max();

template <class Action>
void forEachCell(const CellRect& area, Action action)
{
    for (int row = area.firstRow; row <= area.lastRow; ++row)
        for (int column = area.firstColumn; column <= area.lastColumn; ++column)
            action(CellAddress{row, column});
}

/// Reads the statements of one sheet; looks are gathered until all are read.
class SheetReader {
public:
    SheetReader(engine::Book& book, std::size_t sheet, Looks& looks)
        : m_book(book), m_index(sheet), m_sheet(*book.sheets.at(sheet)), m_print(m_sheet.print), m_looks(looks)
    {
        m_print.headerMargin = m_print.footerMargin = 0.3;
    }

    void read(const DescriptionLine& line);
    void finish();

private:
    using Statement = void (SheetReader::*)(const DescriptionLine&);
    static const std::map<std::string, Statement>& statements();

    void width(const DescriptionLine& line);
    void height(const DescriptionLine& line);
    void merge(const DescriptionLine& line);
    void put(const DescriptionLine& line);
    void count(const DescriptionLine& line);
    void look(const DescriptionLine& line);
    void frame(const DescriptionLine& line);
    void gridLines(const DescriptionLine& line);
    void frozenRows(const DescriptionLine& line);
    void select(const DescriptionLine& line);
    void orientation(const DescriptionLine& line);
    void fitWidth(const DescriptionLine& line);
    void scale(const DescriptionLine& line);
    void margins(const DescriptionLine& line);
    void centerOnPage(const DescriptionLine& line);
    void headerOrFooter(const DescriptionLine& line);
    void repeatedRows(const DescriptionLine& line);
    void printedColumns(const DescriptionLine& line);
    void nameArea(const char* name, const CellRect& named);
    CellRect columns(const DescriptionLine& line) const;
    void pageBreaks(const DescriptionLine& line);

    CellRect area(const DescriptionLine& line) const;
    void putFormula(const DescriptionLine& line, const CellRect& target);
    void putTyped(const DescriptionLine& line, CellAddress address, const std::string& text);

    engine::Book& m_book;
    std::size_t m_index;
    engine::Sheet& m_sheet;
    engine::PrintSetup& m_print;
    Looks& m_looks;
    std::map<CellAddress, CellLook> m_cellLooks;
};

const std::map<std::string, SheetReader::Statement>& SheetReader::statements()
{
    static const std::map<std::string, Statement> table = {
        {"width", &SheetReader::width},
        {"height", &SheetReader::height},
        {"merge", &SheetReader::merge},
        {"put", &SheetReader::put},
        {"count", &SheetReader::count},
        {"look", &SheetReader::look},
        {"frame", &SheetReader::frame},
        {"grid-lines", &SheetReader::gridLines},
        {"freeze-rows", &SheetReader::frozenRows},
        {"select", &SheetReader::select},
        {"portrait", &SheetReader::orientation},
        {"landscape", &SheetReader::orientation},
        {"fit-width", &SheetReader::fitWidth},
        {"scale", &SheetReader::scale},
        {"margins", &SheetReader::margins},
        {"center-on-page", &SheetReader::centerOnPage},
        {"header", &SheetReader::headerOrFooter},
        {"footer", &SheetReader::headerOrFooter},
        {"repeat-rows", &SheetReader::repeatedRows},
        {"print-columns", &SheetReader::printedColumns},
        {"page-breaks", &SheetReader::pageBreaks},
    };
    return table;
}

void SheetReader::read(const DescriptionLine& line)
{
    const auto statement = statements().find(line.keyword);
    if (statement == statements().end())
        line.fail("\"" + line.keyword + "\" is no statement");
    (this->*statement->second)(line);
}

void SheetReader::finish()
{
    for (const auto& [address, cellLook] : m_cellLooks)
        m_sheet.at(address).format = m_looks.formatFor(cellLook);
}

/// The area that the statement's first word names: "B3", "B3:N3".
CellRect SheetReader::area(const DescriptionLine& line) const
{
    line.needWords(1, anyNumber);
    const auto found = engine::parseAddress(line.words[0]);
    if (!found)
        line.fail("\"" + line.words[0] + "\" is no cell or area");
    return *found;
}

/// The columns that the statement's first word names: "B", "D:E".
CellRect SheetReader::columns(const DescriptionLine& line) const
{
    const std::size_t colon = line.words[0].find(':');
    const std::string first = line.words[0].substr(0, colon);
    const std::string last = colon == std::string::npos ? first : line.words[0].substr(colon + 1);
    const auto named = engine::parseAddress(first + "1:" + last + "1");
    if (!named || named->lastRow != 0) // more than letters before the row number
        line.fail("\"" + line.words[0] + "\" names no columns");
    return *named;
}

/// "width B 84", "width D:E 84": pixels.
void SheetReader::width(const DescriptionLine& line)
{
    constexpr int digitPixels = 7;
    constexpr int mostPixels = 255 * digitPixels;
    line.needWords(2, 2);
    const CellRect described = columns(line);
    const int pixels = line.wholeNumber(1);
    if (pixels < 1 || pixels > mostPixels)
        line.fail("a column is 1 to " + std::to_string(mostPixels) + " pixels wide");
    if (!m_sheet.columns.empty() && described.firstColumn <= m_sheet.columns.back().last)
        line.fail("columns must be described from left to right, each once");
    engine::ColumnRun run;
    run.first = described.firstColumn;
    run.last = described.lastColumn;
    run.width = static_cast<std::uint16_t>(pixels * 256 / digitPixels);
    m_sheet.columns.push_back(run);
}

/// "height 3 40", "height 4:28 20": pixels.
void SheetReader::height(const DescriptionLine& line)
{
    constexpr int twipsPerPixel = 15;
    constexpr int mostPixels = 8190 / twipsPerPixel;
    line.needWords(2, 2);
    const bool isOneRow = line.words[0].find(':') == std::string::npos;
    const auto rows = engine::parseAddress(isOneRow ? line.words[0] + ":" + line.words[0] : line.words[0]);
    if (!rows || rows->columns() != engine::maxColumns)
        line.fail("\"" + line.words[0] + "\" names no rows");
    const int pixels = line.wholeNumber(1);
    if (pixels < 1 || pixels > mostPixels)
        line.fail("a row is 1 to " + std::to_string(mostPixels) + " pixels high");
    for (int row = rows->firstRow; row <= rows->lastRow; ++row) {
        m_sheet.row(row).heightTwips = static_cast<std::uint16_t>(pixels * twipsPerPixel);
        m_sheet.row(row).heightSetByHand = true;
    }
}

void SheetReader::merge(const DescriptionLine& line)
{
    line.needWords(1, 1);
    m_sheet.merged.push_back(area(line));
}

/// "put B2 "text"", "put K4 20", "put K4:K28 =SUM(G4:J4)": a formula is filled down and across like a copied one.
void SheetReader::put(const DescriptionLine& line)
{
    line.needWords(2, anyNumber);
    const CellRect target = area(line);
    if (line.quoted[1]) {
        line.needWords(2, 2);
        forEachCell(target, [&](CellAddress address) { m_sheet.at(address).value = line.words[1]; });
    } else if (line.rest[1].front() == '=') {
        putFormula(line, target);
    } else {
        forEachCell(target, [&](CellAddress address) { putTyped(line, address, line.rest[1]); });
    }
}

void SheetReader::putFormula(const DescriptionLine& line, const CellRect& target)
try {
    const engine::Formula formula = engine::parseFormula(line.rest[1], m_book, m_index, RegionalFormats{});
    forEachCell(target, [&](CellAddress address) {
        m_sheet.at(address).formula = std::make_shared<const engine::Formula>(
            engine::shiftedFormula(formula, address.row - target.firstRow, address.column - target.firstColumn));
    });
} catch (const engine::EngineError& error) {
    line.fail(error.what());
}

void SheetReader::putTyped(const DescriptionLine& line, CellAddress address, const std::string& text)
try {
    constexpr engine::Today anyDay = {2000, 1, 1}; // no date without a year is ever put
    engine::enterText(m_book, m_index, address, text, RegionalFormats{}, anyDay);
} catch (const engine::EngineError& error) {
    line.fail(error.what());
}

/// "count B4:B28": 1, 2, 3 and so on.
void SheetReader::count(const DescriptionLine& line)
{
    line.needWords(1, 1);
    double number = 0;
    forEachCell(area(line), [&](CellAddress address) { m_sheet.at(address).value = ++number; });
}

/// "look B3:N3 heading bold": the cells are there from now on, even when they hold nothing.
void SheetReader::look(const DescriptionLine& line)
{
    const std::vector<LookChange> changes = m_looks.changes(line, 1);
    forEachCell(area(line), [&](CellAddress address) {
        for (const LookChange& change : changes)
            change(m_cellLooks[address]);
        m_cellLooks.try_emplace(address);
    });
}

/// "frame B2:I11 thin rule": a line around the area.
void SheetReader::frame(const DescriptionLine& line)
{
    line.needWords(3, 3);
    const CellRect framed = area(line);
    const Border border = m_looks.border(line, 1);
    forEachCell(framed, [&](CellAddress address) {
        CellFormat& format = m_cellLooks[address].format;
        if (address.row == framed.firstRow)
            format.top = border;
        if (address.row == framed.lastRow)
            format.bottom = border;
        if (address.column == framed.firstColumn)
            format.left = border;
        if (address.column == framed.lastColumn)
            format.right = border;
    });
}

void SheetReader::gridLines(const DescriptionLine& line)
{
    line.needWords(1, 1);
    if (line.words[0] != "on" && line.words[0] != "off")
        line.fail(R"(grid lines are "on" or "off")");
    m_sheet.showGridLines = line.words[0] == "on";
}

/// "freeze-rows 3": so many rows at the top stay in view.
void SheetReader::frozenRows(const DescriptionLine& line)
{
    line.needWords(1, 1);
    const int rows = line.wholeNumber(0);
    if (rows < 1 || rows >= engine::maxRows)
        line.fail("these are no rows of a sheet");
    const auto height = static_cast<std::uint16_t>(rows);
    m_sheet.panes = engine::SheetPanes{.rows = height, .firstRow = height};
}

void SheetReader::select(const DescriptionLine& line)
{
    line.needWords(1, 1);
    m_sheet.selection.area = area(line);
    m_sheet.selection.active = {m_sheet.selection.area.firstRow, m_sheet.selection.area.firstColumn};
}

void SheetReader::orientation(const DescriptionLine& line)
{
    line.needWords(0, 0);
    m_print.landscape = line.keyword == "landscape";
}

void SheetReader::fitWidth(const DescriptionLine& line)
{
    line.needWords(0, 0);
    m_print.fitToPages = true;
    m_print.pagesHigh = 0;
}

void SheetReader::scale(const DescriptionLine& line)
{
    constexpr int least = 10;
    constexpr int most = 400;
    line.needWords(1, 1);
    const int percent = line.wholeNumber(0);
    if (percent < least || percent > most)
        line.fail("a sheet is printed at 10 to 400 percent");
    m_print.scalePercent = static_cast<std::uint16_t>(percent);
}

/// "margins LEFT RIGHT TOP BOTTOM"
void SheetReader::margins(const DescriptionLine& line)
{
    line.needWords(4, 4);
    std::size_t word = 0;
    for (double* margin : {&m_print.left, &m_print.right, &m_print.top, &m_print.bottom})
        *margin = line.decimal(word++);
}

void SheetReader::centerOnPage(const DescriptionLine& line)
{
    line.needWords(0, 0);
    m_print.centerHorizontally = true;
}

void SheetReader::headerOrFooter(const DescriptionLine& line)
{
    constexpr std::size_t longest = 255;
    line.needWords(1, 1);
    if (line.words[0].size() > longest)
        line.fail("a header or footer has at most 255 characters");
    (line.keyword == "header" ? m_print.header : m_print.footer) = line.words[0];
}

/// "repeat-rows FIRST LAST": on every printed page.
void SheetReader::repeatedRows(const DescriptionLine& line)
{
    line.needWords(2, 2);
    const int first = line.wholeNumber(0);
    const int last = line.wholeNumber(1);
    if (first < 1 || last < first || last > engine::maxRows)
        line.fail("these are no rows of a sheet");
    nameArea("Print_Titles", {first - 1, 0, last - 1, engine::maxColumns - 1});
}

/// "print-columns A:I": down to the last row that holds something.
void SheetReader::printedColumns(const DescriptionLine& line)
{
    line.needWords(1, 1);
    const CellRect printed = columns(line);
    nameArea("Print_Area", {0, printed.firstColumn, engine::maxRows - 1, printed.lastColumn});
}

/// Gives a name that the file format knows to an area of the sheet.
void SheetReader::nameArea(const char* name, const CellRect& named)
{
    engine::ReferenceToken area;
    area.operandClass = engine::OperandClass::Reference;
    area.externSheet = m_book.externSheetFor(m_index);
    area.first = {named.firstRow, named.firstColumn, false, false};
    area.last = engine::ReferencePart{named.lastRow, named.lastColumn, false, false};
    m_book.names.push_back({name, static_cast<std::uint16_t>(m_index), {{area}}, {}});
}

/// "page-breaks FIRST STEP COUNT": row FIRST begins a page, and every STEP rows another.
void SheetReader::pageBreaks(const DescriptionLine& line)
{
    line.needWords(3, 3);
    const int first = line.wholeNumber(0);
    const int step = line.wholeNumber(1);
    const int breaks = line.wholeNumber(2);
    if (first < 2 || step < 1 || step > engine::maxRows || breaks < 1 || breaks > mostPageBreaks ||
        first + step * (breaks - 1) > engine::maxRows)
        line.fail("these page breaks do not lie within a sheet");
    for (int page = 0; page < breaks; ++page)
        m_print.rowBreaks.push_back({static_cast<std::uint16_t>(first - 1 + step * page)});
}

} // namespace

void describeSheet(engine::Book& book, std::size_t sheet, Looks& looks, const std::vector<DescriptionLine>& lines)
{
    SheetReader reader(book, sheet, looks);
    for (const DescriptionLine& line : lines)
        reader.read(line);
    reader.finish();
}

} // namespace wagemill
