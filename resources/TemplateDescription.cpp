#include "resources/TemplateDescription.h"

#include "workbook/engine/formula/FormulaParser.h"
#include "workbook/engine/formula/Recalculation.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <functional>
#include <iomanip>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace wagemill {

namespace {

using engine::Border;
using engine::BorderStyle;
using engine::CellAddress;
using engine::CellFormat;
using engine::CellRect;
using engine::ColorIndex;

/// The next word of the line, or its next number.
template <class Value>
Value nextWord(std::istream& line)
{
    Value value{};
    if (!(line >> value))
        throw std::runtime_error("a word is missing or is not a number");
    return value;
}

/// What is left of the line.
std::string restOf(std::istream& line)
{
    std::string rest;
    if (!std::getline(line >> std::ws, rest))
        throw std::runtime_error("a word is missing");
    return rest;
}

/// What the table calls the line's next word.
template <class Value>
const Value& named(const std::map<std::string, Value>& table, std::istream& line)
{
    const auto word = nextWord<std::string>(line);
    const auto found = table.find(word);
    if (found == table.end())
        throw std::runtime_error("\"" + word + "\" is not known here");
    return found->second;
}

/// A cell's look while the description is read, before fonts and formats are shared.
struct CellLook {
    engine::Font font;
    engine::CellFormat format;
};

constexpr ColorIndex firstPaletteColor = 8;

const std::map<std::string, BorderStyle> borderStyles = {{"thin", BorderStyle::Thin}, {"thick", BorderStyle::Thick}};

const std::map<std::string, Border CellFormat::*> borderSides = {{"top", &CellFormat::top},
                                                                 {"bottom", &CellFormat::bottom},
                                                                 {"left", &CellFormat::left},
                                                                 {"right", &CellFormat::right}};

/// Which groups of attributes differ from those of the Normal style, as the file flags them ([MS-XLS] 2.5.20 CellXF).
std::uint8_t usedAttributes(const CellFormat& format)
{
    const CellFormat plain;
    unsigned used = 0;
    const auto flag = [&](unsigned bit, auto... members) {
        used |= (!(format.*members == plain.*members) || ...) ? bit : 0U;
    };
    flag(0x04, &CellFormat::numberFormat);
    flag(0x08, &CellFormat::font);
    flag(0x10, &CellFormat::horizontal, &CellFormat::vertical, &CellFormat::wrap, &CellFormat::shrinkToFit,
         &CellFormat::indent);
    flag(0x20, &CellFormat::left, &CellFormat::right, &CellFormat::top, &CellFormat::bottom);
    flag(0x40, &CellFormat::fill);
    flag(0x80, &CellFormat::locked);
    return static_cast<std::uint8_t>(used);
}

/// An attribute of one word.
auto set(auto CellFormat::*member, auto value)
{
    return [member, value](std::istream& /*line*/, CellLook& look) { look.format.*member = value; };
}

/// The names that a description gives to colours, number formats and styles, and what they mean in one workbook.
class Looks {
public:
    explicit Looks(engine::StyleTable& styles) : m_styles(styles)
    {
        m_attributes = {
            {"left", set(&CellFormat::horizontal, engine::HorizontalAlignment::Left)},
            {"right", set(&CellFormat::horizontal, engine::HorizontalAlignment::Right)},
            {"middle", set(&CellFormat::vertical, engine::VerticalAlignment::Center)},
            {"wrap", set(&CellFormat::wrap, true)},
            {"shrink", set(&CellFormat::shrinkToFit, true)},
            {"unlocked", set(&CellFormat::locked, false)},
            {"bold", [](std::istream&, CellLook& look) { look.font.weight = 700; }},
            {"size",
             [](std::istream& line, CellLook& look) {
                 constexpr int twipsPerPoint = 20;
                 look.font.heightTwips = static_cast<std::uint16_t>(nextWord<int>(line) * twipsPerPoint);
             }},
            {"indent", [](std::istream& line,
                          CellLook& look) { look.format.indent = static_cast<std::uint8_t>(nextWord<int>(line)); }},
            {"ink", [this](std::istream& line, CellLook& look) { look.font.color = named(m_colors, line); }},
            {"fill",
             [this](std::istream& line, CellLook& look) {
                 constexpr std::uint8_t solid = 1;
                 look.format.fill = {solid, named(m_colors, line), engine::windowTextColor};
             }},
            {"format",
             [this](std::istream& line, CellLook& look) { look.format.numberFormat = named(m_numberFormats, line); }},
            {"line",
             [this](std::istream& line, CellLook& look) {
                 Border& side = look.format.*named(borderSides, line);
                 side.style = named(borderStyles, line);
                 side.color = named(m_colors, line);
             }},
        };
    }

    /// "NAME RRGGBB"
    void defineColor(std::istream& line)
    {
        const auto name = nextWord<std::string>(line);
        const auto value = nextWord<std::uint32_t>(line >> std::hex);
        const auto channel = [value](unsigned shift) { return static_cast<std::uint8_t>((value >> shift) & 0xFFU); };
        const engine::Rgb wanted = {channel(16), channel(8), channel(0)};
        auto& palette = m_styles.palette;
        auto entry = std::ranges::find(palette, wanted);
        if (entry == palette.end()) {
            entry = palette.begin() + (m_nextColor++ - firstPaletteColor);
            *entry = wanted;
        }
        m_colors[name] = static_cast<ColorIndex>(entry - palette.begin() + firstPaletteColor);
    }

    /// "NAME CODE"
    void defineNumberFormat(std::istream& line)
    {
        const auto name = nextWord<std::string>(line);
        m_numberFormats[name] = m_styles.numberFormatFor(restOf(line));
    }

    /// "NAME ATTRIBUTE..."
    void defineStyle(std::istream& line)
    {
        const auto name = nextWord<std::string>(line);
        m_attributes[name] = [this, attributes = restOf(line)](std::istream&, CellLook& look) {
            apply(attributes, look);
        };
    }

    /// Applies attributes in their order: size 9, bold, ink COLOR, fill COLOR, left, right, middle, wrap, shrink,
    /// indent 1, unlocked, format NAME, line SIDE STYLE COLOR, or a style's name.
    void apply(const std::string& attributes, CellLook& look) const
    {
        std::istringstream words(attributes);
        while (!(words >> std::ws).eof())
            named(m_attributes, words)(words, look);
    }

    /// The index of the cell format with that look.
    std::uint16_t formatFor(const CellLook& look)
    {
        CellFormat format = look.format;
        format.font = m_styles.fontFor(look.font);
        format.usedAttributes = usedAttributes(format);
        return m_styles.formatFor(format);
    }

private:
    engine::StyleTable& m_styles;
    engine::ColorIndex m_nextColor = 24; ///< the palette's chart colours: those that a user picks from stay
    std::map<std::string, engine::ColorIndex> m_colors;
    std::map<std::string, std::uint16_t> m_numberFormats;
    std::map<std::string, std::function<void(std::istream&, CellLook&)>> m_attributes; ///< styles too
};

template <class Action>
void forEachCell(const CellRect& area, Action action)
{
    for (int row = area.firstRow; row <= area.lastRow; ++row)
        for (int column = area.firstColumn; column <= area.lastColumn; ++column)
            action(CellAddress{row, column});
}

/// A text in quotes; a "|" in it is a line break.
std::string textIn(std::istream& line)
{
    std::string text;
    if (!(line >> std::quoted(text)))
        throw std::runtime_error("a text or its closing quote is missing");
    std::ranges::replace(text, '|', '\n');
    return text;
}

/// A cell or cells "B3", "B3:N3", columns "B", "I:J" or rows "3", "4:28". Columns answer their cells in row 1.
CellRect areaIn(std::istream& line)
{
    const auto word = nextWord<std::string>(line);
    const std::string first = word.substr(0, word.find(':'));
    const std::string last = word.substr(word.find(':') + 1); // the same without a colon
    const std::string forms[] = {word, first + ":" + last, first + "1:" + last + "1"};
    for (const std::string& form : forms)
        if (const auto area = engine::parseAddress(form))
            return *area;
    throw std::runtime_error("\"" + word + "\" is not a cell or an area");
}

/// A day "2026-01-31" in the units of the document properties.
std::uint64_t fileTimeIn(std::istream& line)
{
    using namespace std::chrono;
    const auto yearNumber = nextWord<int>(line);
    const auto monthNumber = -nextWord<int>(line); // "-01"
    const year_month_day day = year(yearNumber) / monthNumber / -nextWord<int>(line);
    constexpr std::uint64_t ticksPerDay = 864'000'000'000;
    return static_cast<std::uint64_t>((sys_days(day) - sys_days(year(1601) / January / 1)).count()) * ticksPerDay;
}

using Statements = std::map<std::string, std::function<void(std::istream& line)>>;

/// Carries out the statements of a file: one a line; empty lines and lines that begin with "#" are remarks.
void readFile(const std::filesystem::path& path, const Statements& statements)
{
    std::ifstream file(path);
    if (!file)
        throw std::runtime_error("cannot read the file \"" + path.string() + "\"");
    std::string text;
    for (int number = 1; std::getline(file, text); ++number) {
        std::istringstream line(text);
        if ((line >> std::ws).eof() || line.peek() == '#')
            continue;
        try {
            named(statements, line)(line);
            if (!(line >> std::ws).eof())
                throw std::runtime_error("\"" + restOf(line) + "\" is too much");
        } catch (const std::exception& error) {
            throw std::runtime_error(path.filename().string() + ", line " + std::to_string(number) + ": " +
                                     error.what());
        }
    }
}

/// Reads the statements of one sheet; looks are gathered until all are read.
class SheetReader {
public:
    SheetReader(engine::Book& book, std::size_t index, Looks& looks)
        : m_book(book), m_index(index), m_sheet(*book.sheets.at(index)), m_print(m_sheet.print), m_looks(looks)
    {
    }

    void read(const std::filesystem::path& file)
    {
        m_print.headerMargin = m_print.footerMargin = 0.3;
        const Statements statements = {
            {"width", [&](std::istream& line) { width(line); }},
            {"height", [&](std::istream& line) { height(line); }},
            {"merge", [&](std::istream& line) { m_sheet.merged.push_back(areaIn(line)); }},
            {"put", [&](std::istream& line) { put(line); }},
            {"count", [&](std::istream& line) { count(line); }},
            {"look", [&](std::istream& line) { look(line); }},
            {"no-grid-lines", [&](std::istream&) { m_sheet.showGridLines = false; }},
            {"freeze-rows",
             [&](std::istream& line) {
                 const auto rows = nextWord<std::uint16_t>(line);
                 m_sheet.panes = engine::SheetPanes{.rows = rows, .firstRow = rows};
             }},
            {"select",
             [&](std::istream& line) {
                 const CellRect area = areaIn(line);
                 m_sheet.selection = {area.first(), area};
             }},
            {"landscape", [&](std::istream&) { m_print.landscape = true; }},
            {"fit-width",
             [&](std::istream&) {
                 m_print.fitToPages = true;
                 m_print.pagesHigh = 0;
             }},
            {"scale", [&](std::istream& line) { m_print.scalePercent = nextWord<std::uint16_t>(line); }},
            {"margins",
             [&](std::istream& line) {
                 for (double* margin : {&m_print.left, &m_print.right, &m_print.top, &m_print.bottom})
                     *margin = nextWord<double>(line);
             }},
            {"center-on-page", [&](std::istream&) { m_print.centerHorizontally = true; }},
            {"header", [&](std::istream& line) { m_print.header = textIn(line); }},
            {"footer", [&](std::istream& line) { m_print.footer = textIn(line); }},
            {"name", [&](std::istream& line) { name(line); }},
            {"page-breaks", [&](std::istream& line) { pageBreaks(line); }},
        };
        readFile(file, statements);
        for (const auto& [address, cellLook] : m_cellLooks)
            m_sheet.at(address).format = m_looks.formatFor(cellLook);
    }

private:
    /// "width B 84", "width D:E 84": pixels, from left to right.
    void width(std::istream& line)
    {
        constexpr int digitPixels = 7;
        const CellRect area = areaIn(line);
        engine::ColumnRun run;
        run.first = area.firstColumn;
        run.last = area.lastColumn;
        run.width = static_cast<std::uint16_t>(nextWord<int>(line) * 256 / digitPixels);
        m_sheet.columns.push_back(run);
    }

    /// "height 3 40", "height 4:28 20": pixels.
    void height(std::istream& line)
    {
        constexpr int twipsPerPixel = 15;
        const CellRect area = areaIn(line);
        const auto pixels = nextWord<int>(line);
        for (int row = area.firstRow; row <= area.lastRow; ++row) {
            m_sheet.row(row).heightTwips = static_cast<std::uint16_t>(pixels * twipsPerPixel);
            m_sheet.row(row).heightSetByHand = true;
        }
    }

    /// "put B2 "text"", "put K4 20", "put K4:K28 =SUM(G4:J4)": a formula is filled down and across like a copied one.
    void put(std::istream& line)
    {
        const CellRect target = areaIn(line);
        line >> std::ws;
        if (line.peek() == '=') {
            putFormula(target, restOf(line));
            return;
        }
        const engine::CellValue value =
            line.peek() == '"' ? engine::CellValue(textIn(line)) : engine::CellValue(nextWord<double>(line));
        forEachCell(target, [&](CellAddress address) { m_sheet.at(address).value = value; });
    }

    void putFormula(const CellRect& target, const std::string& text)
    {
        const engine::Formula formula = engine::parseFormula(text, m_book, m_index, RegionalFormats{});
        forEachCell(target, [&](CellAddress address) {
            m_sheet.at(address).formula = std::make_shared<const engine::Formula>(
                engine::shiftedFormula(formula, address.row - target.firstRow, address.column - target.firstColumn));
        });
    }

    /// "count B4:B28": 1, 2, 3 and so on.
    void count(std::istream& line)
    {
        double number = 0;
        forEachCell(areaIn(line), [&](CellAddress address) { m_sheet.at(address).value = ++number; });
    }

    /// "look B3:N3 heading bold": the cells are there from now on, even when they hold nothing.
    void look(std::istream& line)
    {
        const CellRect area = areaIn(line);
        const std::string attributes = restOf(line);
        forEachCell(area, [&](CellAddress address) { m_looks.apply(attributes, m_cellLooks[address]); });
    }

    /// "page-breaks FIRST STEP COUNT": row FIRST begins a page, and every STEP rows another.
    void pageBreaks(std::istream& line)
    {
        const auto first = nextWord<int>(line);
        const auto step = nextWord<int>(line);
        const auto breaks = nextWord<int>(line);
        for (int page = 0; page < breaks; ++page)
            m_print.rowBreaks.push_back({static_cast<std::uint16_t>(first - 1 + step * page)});
    }

    /// "name Print_Titles 3": a name that the file format knows, for an area of the sheet.
    void name(std::istream& line)
    {
        const auto name = nextWord<std::string>(line);
        const CellRect named = areaIn(line);
        engine::ReferenceToken area;
        area.operandClass = engine::OperandClass::Reference;
        area.externSheet = m_book.externSheetFor(m_index);
        area.first = {named.firstRow, named.firstColumn, false, false};
        area.last = engine::ReferencePart{named.lastRow, named.lastColumn, false, false};
        m_book.names.push_back({name, static_cast<std::uint16_t>(m_index), {{area}}, {}});
    }

    engine::Book& m_book;
    std::size_t m_index;
    engine::Sheet& m_sheet;
    engine::PrintSetup& m_print;
    Looks& m_looks;
    std::map<CellAddress, CellLook> m_cellLooks;
};

} // namespace

engine::Book describedWorkbook(const std::filesystem::path& folder)
{
    engine::Book book;
    engine::DocumentProperties& properties = book.properties;
    Looks looks(book.styles);
    std::vector<std::string> files; // of the sheets
    const Statements statements = {
        {"title", [&](std::istream& line) { properties.title = textIn(line); }},
        {"author", [&](std::istream& line) { properties.author = properties.lastAuthor = textIn(line); }},
        {"application", [&](std::istream& line) { properties.application = textIn(line); }},
        {"dated", [&](std::istream& line) { properties.created = properties.saved = fileTimeIn(line); }},
        {"color", [&](std::istream& line) { looks.defineColor(line); }},
        {"number-format", [&](std::istream& line) { looks.defineNumberFormat(line); }},
        {"style", [&](std::istream& line) { looks.defineStyle(line); }},
        {"sheet",
         [&](std::istream& line) {
             book.addSheet(textIn(line));
             files.push_back(nextWord<std::string>(line));
         }},
    };
    readFile(folder / "workbook.txt", statements);
    // When all sheets are there, so that their formulas may refer to each other.
    for (std::size_t sheet = 0; sheet < files.size(); ++sheet)
        SheetReader(book, sheet, looks).read(folder / files[sheet]);
    book.isTemplate = true;
    engine::recalculate(book, engine::CalculationSettings{});
    return book;
}

} // namespace wagemill
