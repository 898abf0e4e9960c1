#include "workbook/engine/xls/SheetReader.h"

#include "workbook/engine/OperandClasses.h"
#include "workbook/engine/xls/FormulaTokensXls.h"
#include "workbook/engine/xls/MergedCells.h"
#include "workbook/engine/xls/PrintRecords.h"
#include "workbook/engine/xls/RecordStrings.h"
#include "workbook/engine/xls/RkNumber.h"
#include "workbook/engine/xls/StyleRecords.h"
#include "workbook/engine/xls/XlsErrors.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>
#include <utility>

namespace wagemill::engine::xls {

namespace {

constexpr std::uint8_t wholeWindowPane = 3;
constexpr std::uint16_t gridLinesFlag = 0x0002;
constexpr std::uint16_t hiddenRowFlag = 0x20;
constexpr std::uint16_t fitToPagesFlag = 0x0100;
constexpr std::uint16_t widestColumn = 255 * 256;
constexpr std::size_t windowSize = 18;
constexpr std::size_t usualRowLength = 4;

/// A formula that several cells share ([MS-XLS] 2.4.260 ShrFmla).
struct SharedFormula {
    CellRect area;
    std::span<const std::byte> tokens;
    std::span<const std::byte> behind;
};

/// The 8 bytes of a formula's result ([MS-XLS] 2.5.133 FormulaValue). A text follows in a record of its own.
struct FormulaResult {
    CellValue value;
    bool textFollows = false;
};

FormulaResult readFormulaResult(std::span<const std::byte> bytes)
{
    ByteReader reader(bytes);
    const std::uint8_t kind = reader.u8();
    reader.skip(1);
    const std::uint8_t code = reader.u8();
    reader.skip(3);
    if (reader.u16() != 0xFFFF)
        return {numberValue(ByteReader(bytes).real())};
    switch (kind) {
    case 0:
        return {std::string(), true};
    case 1:
        return {code != 0};
    case 2:
        return {errorOfCode(code)};
    default:
        return {std::string()};
    }
}

class SheetReader {
public:
    SheetReader(std::span<const std::byte> stream, std::size_t offset, ReadContext& context, Sheet& sheet)
        : m_records(stream, offset), m_context(context), m_sheet(sheet)
    {
    }

    void read()
    {
        Record record;
        switch (readBeginning(record)) {
        case SubstreamType::Worksheet:
            readWorksheet(record);
            break;
        case SubstreamType::Macro:
            m_context.notice("The macro sheet \"" + m_sheet.name +
                             "\" was emptied: macros of its kind are not supported.");
            break;
        default:
            keepAll(record);
        }
    }

private:
    using Handler = void (SheetReader::*)(const Record&);
    static const std::vector<std::pair<std::uint16_t, Handler>>& handlers()
    {
        static const auto table = [] {
            std::vector<std::pair<std::uint16_t, Handler>> handlersById = {
                {record::formula, &SheetReader::readFormulaCell},
                {record::olderFormula, &SheetReader::readFormulaCell},
                {record::number, &SheetReader::readNumber},
                {record::rk, &SheetReader::readRk},
                {record::multipleRk, &SheetReader::readMultipleRk},
                {record::sharedLabel, &SheetReader::readSharedLabel},
                {record::label, &SheetReader::readLabel},
                {record::richString, &SheetReader::readRichString},
                {record::logicalOrError, &SheetReader::readLogicalOrError},
                {record::blank, &SheetReader::readBlank},
                {record::multipleBlank, &SheetReader::readMultipleBlank},
                {record::formulaText, &SheetReader::readFormulaText},
                {record::sharedFormula, &SheetReader::readSharedFormula},
                {record::array, &SheetReader::readArray},
                {record::dataTable, &SheetReader::readDataTable},
                {record::row, &SheetReader::readRow},
                {record::columnInfo, &SheetReader::readColumns},
                {record::mergedCells, &SheetReader::readMergedCells},
                {record::window2, &SheetReader::readWindow},
                {record::pane, &SheetReader::readPane},
                {record::sheetSettings, &SheetReader::readSheetSettings},
                {record::selection, &SheetReader::readSelection},
                {record::defaultColumnWidth, &SheetReader::readDefaultColumnWidth},
                {record::defaultRowHeight, &SheetReader::readDefaultRowHeight},
                {record::dimensions, &SheetReader::skip}, // these follow from the cells
                {record::index, &SheetReader::skip},
                {record::cellOffsets, &SheetReader::skip},
                {record::gutters, &SheetReader::skip},
                {record::uncalculated, &SheetReader::skip},
                {record::iteration, &SheetReader::readIteration},
                {record::iterationTurns, &SheetReader::readIterationTurns},
                {record::iterationChange, &SheetReader::readIterationChange},
                {record::filterMode, &SheetReader::readFilterMark},
            };
            std::ranges::sort(handlersById, {}, &std::pair<std::uint16_t, Handler>::first);
            return handlersById;
        }();
        return table;
    }

    SubstreamType readBeginning(Record& record)
    {
        if (!m_records.next(record) || record.id != record::bof)
            throw DamagedFile("the sheet \"" + m_sheet.name + "\" is not where the file says");
        ByteReader reader = record.reader();
        if (reader.u16() != biff8Version)
            throw DamagedFile("the sheet \"" + m_sheet.name + "\" is of another format than the workbook");
        return static_cast<SubstreamType>(reader.u16());
    }

    /// The next record; false at the end mark of the substream that the caller is in.
    bool nextInSheet(Record& record)
    {
        if (!m_records.next(record))
            throw DamagedFile("the sheet \"" + m_sheet.name + "\" has no end; the file may be cut off");
        if (record.id == record::bof || record.id == record::customViewBegin)
            ++m_depth;
        if (record.id != record::eof && record.id != record::customViewEnd)
            return true;
        if (m_depth == 0)
            return record.id != record::eof;
        --m_depth;
        m_leaving = true;
        return true;
    }

    void keepAll(Record& record)
    {
        m_sheet.isKeptWhole = true;
        do
            m_sheet.kept.push_back(record.kept());
        while (nextInSheet(record));
        m_sheet.kept.push_back(record.kept());
    }

    void readWorksheet(Record& record)
    {
        while (nextInSheet(record)) {
            const bool nested = m_depth > 0 || std::exchange(m_leaving, false);
            const auto found =
                std::ranges::lower_bound(handlers(), record.id, {}, &std::pair<std::uint16_t, Handler>::first);
            if (!nested && found != handlers().end() && found->first == record.id)
                (this->*found->second)(record);
            else if (nested || !readPrintRecord(record, m_sheet.print))
                m_sheet.kept.push_back(record.kept());
        }
        resolveParts();
        orderColumns();
        m_sheet.merged = withoutOverlaps(std::move(m_sheet.merged));
    }

    void skip(const Record& /*record*/) {}

    Row& row(int index)
    {
        const std::size_t rows = m_sheet.rows().size();
        if (static_cast<std::size_t>(index) >= rows)
            m_context.limits.addRows(static_cast<std::size_t>(index) + 1 - rows);
        return m_sheet.row(index);
    }

    /// Puts a cell in; a second one at the same place replaces the first.
    Cell& put(int rowIndex, int column, std::uint16_t fileFormat, CellValue value)
    {
        if (column >= maxColumns)
            throw DamagedFile("a cell of the sheet \"" + m_sheet.name + "\" lies outside the sheet");
        std::vector<Cell>& cells = row(rowIndex).cells;
        if (cells.empty())
            cells.reserve(usualRowLength);
        auto place = cells.end();
        if (!cells.empty() && cells.back().column >= column)
            place = std::ranges::lower_bound(cells, column, {}, &Cell::column);
        if (place == cells.end() || place->column != column)
            place = cells.emplace(place);
        *place = Cell{};
        place->column = static_cast<std::int16_t>(column); // checked above
        place->format = m_context.cellFormat(fileFormat);
        place->value = std::move(value);
        return *place;
    }

    /// Where a cell record begins: its row, column and format.
    struct CellHead {
        int row;
        int column;
        std::uint16_t format;
    };
    static CellHead readHead(ByteReader& reader)
    {
        const int row = reader.u16();
        const int column = reader.u16();
        return {row, column, reader.u16()};
    }

    Cell& put(const CellHead& head, CellValue value)
    {
        return put(head.row, head.column, head.format, std::move(value));
    }

    void readNumber(const Record& record)
    {
        ByteReader reader = record.reader();
        const CellHead head = readHead(reader);
        put(head, numberValue(reader.real()));
    }

    void readRk(const Record& record)
    {
        ByteReader reader = record.reader();
        const CellHead head = readHead(reader);
        put(head, numberValue(numberOfRk(reader.u32())));
    }

    void readMultipleRk(const Record& record)
    {
        ByteReader reader = record.reader();
        const int rowIndex = reader.u16();
        for (int column = reader.u16(); reader.remaining() >= 8; ++column) {
            const std::uint16_t format = reader.u16();
            put(rowIndex, column, format, numberValue(numberOfRk(reader.u32())));
        }
    }

    void readSharedLabel(const Record& record)
    {
        ByteReader reader = record.reader();
        const CellHead head = readHead(reader);
        const std::uint32_t index = reader.u32();
        if (index >= m_context.strings.size())
            throw DamagedFile("a cell of the sheet \"" + m_sheet.name + "\" names a text that does not exist");
        const SharedString& string = m_context.strings[index];
        m_context.limits.addText(string.text.size());
        put(head, string.text).runs = string.runs;
    }

    void readLabel(const Record& record)
    {
        ByteReader reader = record.reader();
        const CellHead head = readHead(reader);
        put(head, readLastString(reader));
    }

    void readRichString(const Record& record)
    {
        ByteReader reader = record.reader();
        const CellHead head = readHead(reader);
        std::string text = readString(reader);
        std::vector<TextRun> runs;
        for (std::size_t count = reader.u16(); count > 0; --count) {
            const std::uint16_t first = reader.u16();
            runs.push_back({first, fontOfFileIndex(reader.u16())});
        }
        Cell& cell = put(head, std::move(text));
        if (!runs.empty())
            cell.runs = std::make_shared<const std::vector<TextRun>>(std::move(runs));
    }

    void readLogicalOrError(const Record& record)
    {
        ByteReader reader = record.reader();
        const CellHead head = readHead(reader);
        const std::uint8_t code = reader.u8();
        if (reader.u8() == 0)
            put(head, code != 0);
        else
            put(head, errorOfCode(code));
    }

    void readBlank(const Record& record)
    {
        ByteReader reader = record.reader();
        put(readHead(reader), Empty{});
    }

    void readMultipleBlank(const Record& record)
    {
        ByteReader reader = record.reader();
        const int rowIndex = reader.u16();
        for (int column = reader.u16(); reader.remaining() >= 4; ++column)
            put(rowIndex, column, reader.u16(), Empty{});
    }

    void readFormulaCell(const Record& record)
    {
        const std::vector<std::byte> joined = record.continued.empty() ? std::vector<std::byte>() : record.joined();
        ByteReader reader = joined.empty() ? record.reader() : ByteReader(joined);
        const CellHead head = readHead(reader);
        FormulaResult result = readFormulaResult(reader.bytes(8));
        reader.skip(6);
        const std::size_t size = reader.u16();
        const CellAddress address{head.row, head.column};
        Cell& cell = put(head, std::move(result.value));
        m_formulaCell = address;
        m_textFollows = result.textFollows;
        const auto tokens = reader.bytes(size);
        if (const auto base = sharedBase(tokens)) {
            m_parts.push_back({address, *base});
            cell.formula = m_unresolved;
        } else {
            setFormula(cell, tokens, reader.rest(), address);
        }
    }

    /// A formula that cannot be read leaves its last value behind.
    void setFormula(Cell& cell, std::span<const std::byte> tokens, std::span<const std::byte> behind,
                    CellAddress origin)
    {
        const Book& book = m_context.book;
        try {
            cell.formula = std::make_shared<const Formula>(
                readFormula(tokens, behind, {origin, book.names.size(), book.externSheets.size()}));
        } catch (const DamagedFile&) {
            dropFormula(cell, origin);
        }
    }

    void dropFormula(Cell& cell, CellAddress address)
    {
        cell.formula.reset();
        m_context.notice("The formula in " + addressText(address) + " of the sheet \"" + m_sheet.name +
                         "\" could not be read; its last value was kept.");
    }

    void readFormulaText(const Record& record)
    {
        Cell* const cell = m_textFollows ? m_sheet.find(m_formulaCell) : nullptr;
        if (cell == nullptr)
            return;
        m_textFollows = false;
        std::string text = readLongString(record);
        cell->value = std::move(text);
    }

    void readSharedFormula(const Record& record)
    {
        ByteReader reader = record.reader();
        SharedFormula formula;
        formula.area = readArea(reader);
        reader.skip(2);
        const std::size_t size = reader.u16();
        formula.tokens = reader.bytes(size);
        formula.behind = reader.rest();
        m_sharedFormulas[m_formulaCell] = formula;
    }

    static CellRect readArea(ByteReader& reader)
    {
        CellRect area;
        area.firstRow = reader.u16();
        area.lastRow = reader.u16();
        area.firstColumn = reader.u8();
        area.lastColumn = reader.u8();
        return area;
    }

    void readArray(const Record& record)
    {
        const std::vector<std::byte> joined = record.joined();
        ByteReader reader(joined);
        ArrayArea array;
        array.cells = readArea(reader);
        array.flags = reader.u16();
        reader.skip(4);
        const auto tokens = reader.bytes(reader.u16());
        const Book& book = m_context.book;
        try {
            Formula formula =
                readFormula(tokens, reader.rest(), {m_formulaCell, book.names.size(), book.externSheets.size()});
            putArray(std::move(array), asArrayFormula(std::move(formula.tokens)));
        } catch (const DamagedFile&) {
            return; // its cells drop a formula that is missing
        }
    }

    void readDataTable(const Record& record)
    {
        ByteReader reader = record.reader();
        ArrayArea array;
        array.cells = readArea(reader);
        array.table = record.kept();
        putArray(std::move(array), {OpaqueToken{}}); // is not computed
    }

    void putArray(ArrayArea area, std::vector<Token> tokens)
    {
        m_arrays[m_formulaCell] = {std::make_shared<const ArrayArea>(std::move(area)),
                                   std::make_shared<const Formula>(Formula{std::move(tokens)})};
    }

    /// Gives every cell of a shared formula one of its own, and those of array formulas and data tables theirs.
    void resolveParts()
    {
        for (const Part& part : m_parts) {
            Cell* const cell = m_sheet.find(part.cell);
            if (cell == nullptr || cell->formula != m_unresolved)
                continue; // another cell took its place
            const auto shared = m_sharedFormulas.find(part.base);
            if (shared != m_sharedFormulas.end() && shared->second.area.contains(part.cell))
                expand(*cell, shared->second, part.cell);
            else if (const auto array = m_arrays.find(part.base);
                     array != m_arrays.end() && array->second.area->cells.contains(part.cell))
                std::tie(cell->array, cell->formula) = std::tie(array->second.area, array->second.formula);
            else
                dropFormula(*cell, part.cell);
        }
    }

    void expand(Cell& cell, const SharedFormula& shared, CellAddress address)
    {
        setFormula(cell, shared.tokens, shared.behind, address);
        if (cell.formula && (sharedBase(shared.tokens) || !m_context.limits.addTokens(cell.formula->tokens.size())))
            dropFormula(cell, address);
    }

    void readRow(const Record& record)
    {
        ByteReader reader = record.reader();
        const int index = reader.u16();
        reader.skip(4);
        const std::uint16_t height = reader.u16();
        reader.skip(4);
        const std::uint16_t flags = reader.u16();
        const std::uint16_t format = reader.u16();
        Row& read = row(index);
        read.outlineLevel = flags & 7;
        read.collapsed = (flags & 0x10) != 0;
        read.hidden = (flags & hiddenRowFlag) != 0;
        read.heightSetByHand = (flags & 0x40) != 0;
        const std::uint16_t twips = height & 0x7FFF; // the rest says that it is automatic
        if ((twips != 0 && twips != m_sheet.defaultRowHeightTwips) || read.heightSetByHand)
            read.heightTwips = std::clamp<std::uint16_t>(twips, 2, 8192);
        if ((flags & 0x80) != 0)
            read.format = m_context.cellFormat(format & 0xFFF);
    }

    void readColumns(const Record& record)
    {
        ByteReader reader = record.reader();
        ColumnRun run;
        run.first = reader.u16();
        run.last = std::min<int>(reader.u16(), maxColumns - 1);
        run.width = std::min(reader.u16(), widestColumn);
        run.format = m_context.cellFormat(reader.u16());
        const std::uint16_t flags = reader.u16();
        run.hidden = (flags & 1) != 0;
        run.ownWidth = (flags & 2) != 0;
        run.outlineLevel = flags >> 8U & 7U;
        run.collapsed = (flags & 0x1000) != 0;
        if (run.first <= run.last)
            m_sheet.columns.push_back(run);
    }

    void orderColumns()
    {
        std::ranges::stable_sort(m_sheet.columns, {}, &ColumnRun::first);
        int next = 0;
        for (ColumnRun& run : m_sheet.columns) {
            run.first = std::max(run.first, next);
            next = std::max(next, run.last + 1);
        }
        std::erase_if(m_sheet.columns, [](const ColumnRun& run) { return run.first > run.last; });
    }

    void readMergedCells(const Record& record)
    {
        ByteReader reader = record.reader();
        for (std::size_t count = reader.u16(); count > 0 && reader.remaining() >= 8; --count) {
            CellRect area;
            area.firstRow = reader.u16();
            area.lastRow = reader.u16();
            area.firstColumn = reader.u16();
            area.lastColumn = reader.u16();
            m_sheet.merged.push_back(area);
        }
    }

    void readWindow(const Record& record)
    {
        if (std::exchange(m_hasWindow, true) || record.data.size() < windowSize)
            return;
        m_sheet.showGridLines = (record.reader().u16() & gridLinesFlag) != 0;
        m_sheet.kept.push_back(record.kept());
    }

    void readPane(const Record& record)
    {
        ByteReader reader = record.reader();
        SheetPanes& panes = m_sheet.panes.emplace();
        for (std::uint16_t* number : {&panes.columns, &panes.rows, &panes.firstRow, &panes.firstColumn})
            *number = reader.u16();
        panes.active = reader.u8();
    }

    void readSheetSettings(const Record& record)
    {
        m_sheet.print.fitToPages = record.data.size() == 2 && (record.reader().u16() & fitToPagesFlag) != 0;
        m_sheet.kept.push_back(record.kept());
    }

    void readSelection(const Record& record)
    {
        ByteReader reader = record.reader();
        const std::uint8_t pane = reader.u8();
        SheetSelection selection;
        selection.active.row = reader.u16();
        selection.active.column = std::min<int>(reader.u16(), maxColumns - 1);
        const std::size_t activeArea = reader.u16();
        const std::size_t areas = reader.u16();
        const CellAddress active = selection.active;
        selection.area = {active.row, active.column, active.row, active.column};
        if (activeArea < areas) {
            reader.skip(activeArea * 6);
            const CellRect area = readArea(reader);
            if (area.contains(active))
                selection.area = area;
        }
        if (pane == (m_sheet.panes ? m_sheet.panes->active : wholeWindowPane))
            m_sheet.selection = selection;
        else if (m_sheet.panes)
            m_sheet.kept.push_back(record.kept());
    }

    void readFilterMark(const Record& record)
    {
        m_sheet.isFiltered = true;
        m_sheet.kept.push_back(record.kept());
    }

    void readIteration(const Record& record) { m_context.book.iteration.isOn = record.reader().u16() != 0; }

    void readIterationTurns(const Record& record) { m_context.book.iteration.maxTurns = record.reader().u16(); }

    void readIterationChange(const Record& record)
    {
        if (const double change = record.reader().real(); change >= 0 && std::isfinite(change))
            m_context.book.iteration.maxChange = change;
    }

    void readDefaultColumnWidth(const Record& record)
    {
        m_sheet.defaultColumnWidth = std::min<std::uint16_t>(record.reader().u16(), 255);
    }

    void readDefaultRowHeight(const Record& record)
    {
        ByteReader reader = record.reader();
        reader.skip(2);
        m_sheet.defaultRowHeightTwips = std::clamp<std::uint16_t>(reader.u16(), 2, 8179);
        m_sheet.kept.push_back(record.kept());
    }

    struct ArrayFormula {
        std::shared_ptr<const ArrayArea> area;
        std::shared_ptr<const Formula> formula;
    };

    struct Part {
        CellAddress cell;
        CellAddress base;
    };

    RecordReader m_records;
    ReadContext& m_context;
    Sheet& m_sheet;
    int m_depth = 0;        ///< of charts and custom views nested in the sheet
    bool m_leaving = false; ///< the record is the end mark of a nested one
    CellAddress m_formulaCell;
    bool m_textFollows = false;
    std::map<CellAddress, SharedFormula> m_sharedFormulas;
    std::map<CellAddress, ArrayFormula> m_arrays;
    std::vector<Part> m_parts; ///< cells that only point at another's formula, with m_unresolved for the time being
    std::shared_ptr<const Formula> m_unresolved = std::make_shared<const Formula>();
    bool m_hasWindow = false;
};

} // namespace

void readSheet(std::span<const std::byte> stream, std::size_t offset, ReadContext& context, Sheet& sheet)
{
    SheetReader(stream, offset, context, sheet).read();
}

} // namespace wagemill::engine::xls
