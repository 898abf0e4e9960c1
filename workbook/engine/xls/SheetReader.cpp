#include "workbook/engine/xls/FormulaTokens.h"
#include "workbook/engine/xls/SheetRecords.h"
#include "workbook/engine/xls/Substreams.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

namespace wagemill::engine::xls {

namespace {

constexpr std::size_t usualRowLength = 4;

/// A formula that several cells share ([MS-XLS] 2.4.260 ShrFmla).
struct SharedFormula {
    CellRect area;
    std::span<const std::byte> tokens;
    std::span<const std::byte> trailing;
};

/// The 8 bytes of a formula's result ([MS-XLS] 2.5.133 FormulaValue); nothing for a text, which follows in a record of
/// its own.
std::optional<CellValue> readFormulaResult(std::span<const std::byte> bytes)
{
    ByteReader reader(bytes);
    const std::uint8_t kind = reader.u8();
    reader.skip(1);
    const std::uint8_t code = reader.u8();
    reader.skip(3);
    if (reader.u16() != 0xFFFF)
        return numberValue(ByteReader(bytes).real());
    switch (kind) {
    case 0:
        return std::nullopt;
    case 1:
        return code != 0;
    case 2:
        return errorOfCode(code);
    default:
        return std::string();
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
        switch (readBeginning()) {
        case SubstreamType::Worksheet:
            return readWorksheet();
        case SubstreamType::Macro:
            return m_context.notice("The macro sheet \"" + m_sheet.name +
                                    "\" was emptied: macros of its kind are not supported.");
        default:
            keepAll();
        }
    }

private:
    SubstreamType readBeginning()
    {
        if (!m_records.next(m_record) || m_record.id != record::bof)
            throw DamagedFile("the sheet \"" + m_sheet.name + "\" is not where the file says");
        ByteReader reader = m_record.reader();
        if (reader.u16() != biff8Version)
            throw DamagedFile("the sheet \"" + m_sheet.name + "\" is of another format than the workbook");
        return static_cast<SubstreamType>(reader.u16());
    }

    /// Goes to the next record; false at the end mark of the substream that the caller is in.
    bool next()
    {
        if (!m_records.next(m_record))
            throw DamagedFile("the sheet \"" + m_sheet.name + "\" has no end; the file may be cut off");
        const std::uint16_t id = m_record.id;
        if (id == record::bof || id == record::customViewBegin)
            ++m_depth;
        if (id != record::eof && id != record::customViewEnd)
            return true;
        if (m_depth == 0)
            return id != record::eof;
        --m_depth;
        m_leaving = true;
        return true;
    }

    void keep() { m_sheet.kept.push_back(m_record.kept()); }

    void keepAll()
    {
        m_sheet.isKeptWhole = true;
        do
            keep();
        while (next());
        keep();
    }

    void readWorksheet()
    {
        using Self = SheetReader;
        using Handler = void (Self::*)(ByteReader);
        static constexpr auto handlers = sortedById(std::to_array<ById<Handler>>({
            {record::formula, &Self::readFormulaCell},
            {record::olderFormula, &Self::readFormulaCell},
            {record::number, &Self::readNumber},
            {record::rk, &Self::readRk},
            {record::multipleRk, &Self::readMultipleRk},
            {record::sharedLabel, &Self::readSharedLabel},
            {record::label, &Self::readLabel},
            {record::richString, &Self::readRichString},
            {record::logicalOrError, &Self::readLogicalOrError},
            {record::blank, &Self::readBlank},
            {record::multipleBlank, &Self::readMultipleBlank},
            {record::formulaText, &Self::readFormulaText},
            {record::sharedFormula, &Self::readSharedFormula},
            {record::array, &Self::readArray},
            {record::dataTable, &Self::readDataTable},
            {record::row, &Self::readRow},
            {record::columnInfo, &Self::readColumns},
            {record::mergedCells, &Self::readMergedCells},
            {record::window2, &Self::readWindow},
            {record::pane, &Self::readPane},
            {record::sheetSettings, &Self::readSheetSettings},
            {record::selection, &Self::readSelection},
            {record::defaultColumnWidth, &Self::readDefaultColumnWidth},
            {record::defaultRowHeight, &Self::readDefaultRowHeight},
            {record::dimensions, &Self::skip}, // these follow from the cells
            {record::index, &Self::skip},
            {record::cellOffsets, &Self::skip},
            {record::gutters, &Self::skip},
            {record::uncalculated, &Self::skip},
            {record::iteration, &Self::readIteration},
            {record::iterationTurns, &Self::readIterationTurns},
            {record::iterationChange, &Self::readIterationChange},
            {record::filterMode, &Self::readFilterMark},
        }));
        while (next()) {
            const bool nested = m_depth > 0 || std::exchange(m_leaving, false);
            const Handler* const handler = nested ? nullptr : findById(handlers, m_record.id);
            if (handler != nullptr)
                (this->**handler)(m_record.reader());
            else if (nested || !readPrintRecord(m_record, m_sheet.print))
                keep();
        }
        resolveParts();
        orderColumns();
        m_sheet.merged = withoutOverlaps(std::move(m_sheet.merged));
    }

    void skip(ByteReader /*reader*/) {}

    Row& row(int index)
    {
        const std::size_t rows = m_sheet.rows().size();
        const auto needed = static_cast<std::size_t>(index) + 1;
        if (needed > rows && !ReadLimits::take(m_context.limits.rows, needed - rows))
            throw DamagedFile("its sheets have too many rows");
        return m_sheet.row(index);
    }

    static CellHead readHead(ByteReader& reader)
    {
        CellHead head;
        cellHeadFields(FieldReader(reader), head);
        return head;
    }

    /// Puts a cell in; a second one at the same place replaces the first.
    Cell& put(const CellHead& head, CellValue value)
    {
        if (head.column >= maxColumns)
            throw DamagedFile("a cell of the sheet \"" + m_sheet.name + "\" lies outside the sheet");
        std::vector<Cell>& cells = row(head.row).cells;
        if (cells.empty())
            cells.reserve(usualRowLength);
        auto place = cells.end();
        if (!cells.empty() && cells.back().column >= head.column)
            place = std::ranges::lower_bound(cells, head.column, {}, &Cell::column);
        if (place == cells.end() || place->column != head.column)
            place = cells.emplace(place);
        *place = Cell{};
        place->column = static_cast<std::int16_t>(head.column); // checked above
        place->format = m_context.cellFormat(head.format);
        place->value = std::move(value);
        return *place;
    }

    void readNumber(ByteReader reader)
    {
        const CellHead head = readHead(reader);
        put(head, numberValue(reader.real()));
    }

    void readRk(ByteReader reader)
    {
        const CellHead head = readHead(reader);
        put(head, numberValue(numberOfRk(reader.u32())));
    }

    void readMultipleRk(ByteReader reader)
    {
        const int row = reader.u16();
        for (int column = reader.u16(); reader.remaining() >= 8; ++column) {
            const std::uint16_t format = reader.u16();
            put({row, column, format}, numberValue(numberOfRk(reader.u32())));
        }
    }

    void readSharedLabel(ByteReader reader)
    {
        const CellHead head = readHead(reader);
        const std::uint32_t index = reader.u32();
        if (index >= m_context.strings.size())
            throw DamagedFile("a cell of the sheet \"" + m_sheet.name + "\" names a text that does not exist");
        const RichText& string = m_context.strings[index];
        if (!ReadLimits::take(m_context.limits.text, string.text.size()))
            throw DamagedFile("its cells hold too much text");
        put(head, string.text).runs = string.runs;
    }

    void readLabel(ByteReader reader)
    {
        const CellHead head = readHead(reader);
        put(head, readLastString(reader));
    }

    void readRichString(ByteReader reader)
    {
        const CellHead head = readHead(reader);
        std::string text = readString(reader);
        const std::size_t runs = reader.u16();
        TextRuns read = readRuns(reader, runs);
        put(head, std::move(text)).runs = std::move(read);
    }

    void readLogicalOrError(ByteReader reader)
    {
        const CellHead head = readHead(reader);
        const std::uint8_t code = reader.u8();
        if (reader.u8() == 0)
            put(head, code != 0);
        else
            put(head, errorOfCode(code));
    }

    void readBlank(ByteReader reader) { put(readHead(reader), Empty{}); }

    void readMultipleBlank(ByteReader reader)
    {
        const int row = reader.u16();
        for (int column = reader.u16(); reader.remaining() >= 4; ++column)
            put({row, column, reader.u16()}, Empty{});
    }

    void readFormulaCell(ByteReader reader)
    {
        std::vector<std::byte> joined;
        if (!m_record.continued.empty()) {
            joined = xls::joined(m_record);
            reader = ByteReader(joined);
        }
        const CellHead head = readHead(reader);
        const std::optional<CellValue> result = readFormulaResult(reader.bytes(8));
        reader.skip(6);
        const std::size_t size = reader.u16();
        Cell& cell = put(head, result.value_or(std::string()));
        m_formulaCell = {head.row, head.column};
        m_textFollows = !result;
        const auto tokens = reader.bytes(size);
        if (const auto base = sharedBase(tokens)) {
            m_parts.emplace_back(m_formulaCell, *base);
            cell.formula = m_unresolved;
        } else {
            setFormula(cell, {{}, tokens, reader.rest()}, m_formulaCell);
        }
    }

    FormulaContext contextOf(CellAddress origin) const
    {
        return {origin, m_context.book.names.size(), m_context.book.externSheets.size()};
    }

    /// A formula that cannot be read leaves its last value.
    void setFormula(Cell& cell, const SharedFormula& stored, CellAddress origin)
    {
        try {
            cell.formula =
                std::make_shared<const Formula>(readFormula(stored.tokens, stored.trailing, contextOf(origin)));
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

    void readFormulaText(ByteReader /*reader*/)
    {
        Cell* const cell = m_textFollows ? m_sheet.find(m_formulaCell) : nullptr;
        if (cell == nullptr)
            return;
        m_textFollows = false;
        cell->value = readLongString(m_record);
    }

    static CellRect readArea(ByteReader& reader)
    {
        CellRect area;
        shortAreaFields(FieldReader(reader), area);
        return area;
    }

    void readSharedFormula(ByteReader reader)
    {
        const CellRect area = readArea(reader);
        reader.skip(2);
        const auto tokens = reader.bytes(reader.u16());
        m_sharedFormulas[m_formulaCell] = {area, tokens, reader.rest()};
    }

    void readArray(ByteReader /*reader*/)
    {
        const std::vector<std::byte> joined = xls::joined(m_record);
        ByteReader reader(joined);
        ArrayArea array;
        array.cells = readArea(reader);
        array.flags = reader.u16();
        reader.skip(4);
        const auto tokens = reader.bytes(reader.u16());
        try {
            Formula formula = readFormula(tokens, reader.rest(), contextOf(m_formulaCell));
            putArray(std::move(array), asArrayFormula(std::move(formula.tokens)));
        } catch (const DamagedFile&) {
            return; // its cells drop a formula that is missing
        }
    }

    void readDataTable(ByteReader reader)
    {
        ArrayArea array;
        array.cells = readArea(reader);
        array.table = m_record.kept();
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
        for (const auto& [address, base] : m_parts) {
            Cell* const cell = m_sheet.find(address);
            if (cell == nullptr || cell->formula != m_unresolved)
                continue; // another cell took its place
            const auto shared = m_sharedFormulas.find(base);
            if (shared != m_sharedFormulas.end() && shared->second.area.contains(address))
                expand(*cell, shared->second, address);
            else if (const auto array = m_arrays.find(base);
                     array != m_arrays.end() && array->second.area->cells.contains(address))
                std::tie(cell->array, cell->formula) = std::tie(array->second.area, array->second.formula);
            else
                dropFormula(*cell, address);
        }
    }

    void expand(Cell& cell, const SharedFormula& shared, CellAddress address)
    {
        setFormula(cell, shared, address);
        if (cell.formula &&
            (sharedBase(shared.tokens) || !ReadLimits::take(m_context.limits.tokens, cell.formula->tokens.size())))
            dropFormula(cell, address);
    }

    void readRow(ByteReader reader)
    {
        Row& read = row(ByteReader(reader).u16());
        RowHead head;
        rowFields(FieldReader(reader), head, read);
        const std::uint16_t twips = head.heightTwips & 0x7FFF; // the rest says that it is automatic
        if ((twips != 0 && twips != m_sheet.defaultRowHeightTwips) || read.heightSetByHand)
            read.heightTwips = std::clamp<std::uint16_t>(twips, 2, 8192);
        if (head.hasFormat)
            read.format = m_context.cellFormat(head.format & 0xFFF);
    }

    void readColumns(ByteReader reader)
    {
        ColumnRun run;
        columnFields(FieldReader(reader), run);
        run.last = std::min(run.last, maxColumns - 1);
        run.width = std::min(run.width, maxColumnWidth);
        run.format = m_context.cellFormat(run.format);
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

    void readMergedCells(ByteReader reader)
    {
        for (std::size_t count = reader.u16(); count > 0 && reader.remaining() >= 8; --count)
            areaFields(FieldReader(reader), m_sheet.merged.emplace_back());
    }

    void readWindow(ByteReader reader)
    {
        if (std::exchange(m_hasWindow, true) || reader.remaining() < window2Size)
            return;
        m_sheet.showGridLines = (reader.u16() & gridLinesFlag) != 0;
        keep();
    }

    void readPane(ByteReader reader) { paneFields(FieldReader(reader), m_sheet.panes.emplace()); }

    void readSheetSettings(ByteReader reader)
    {
        m_sheet.print.fitToPages = reader.remaining() == 2 && (reader.u16() & fitToPagesFlag) != 0;
        keep();
    }

    void readSelection(ByteReader reader)
    {
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
            keep();
    }

    void readFilterMark(ByteReader /*reader*/)
    {
        m_sheet.isFiltered = true;
        keep();
    }

    void readIteration(ByteReader reader) { m_context.book.iteration.isOn = reader.u16() != 0; }

    void readIterationTurns(ByteReader reader) { m_context.book.iteration.maxTurns = reader.u16(); }

    void readIterationChange(ByteReader reader)
    {
        if (const double change = reader.real(); change >= 0 && std::isfinite(change))
            m_context.book.iteration.maxChange = change;
    }

    void readDefaultColumnWidth(ByteReader reader)
    {
        m_sheet.defaultColumnWidth = std::min<std::uint16_t>(reader.u16(), 255);
    }

    void readDefaultRowHeight(ByteReader reader)
    {
        reader.skip(2);
        m_sheet.defaultRowHeightTwips = std::clamp<std::uint16_t>(reader.u16(), 2, 8179);
        keep();
    }

    struct ArrayFormula {
        std::shared_ptr<const ArrayArea> area;
        std::shared_ptr<const Formula> formula;
    };

    RecordReader m_records;
    Record m_record; ///< the present one
    ReadContext& m_context;
    Sheet& m_sheet;
    int m_depth = 0;        ///< of charts and custom views nested in the sheet
    bool m_leaving = false; ///< the record is the end mark of a nested one
    CellAddress m_formulaCell;
    bool m_textFollows = false;
    std::map<CellAddress, SharedFormula> m_sharedFormulas;
    std::map<CellAddress, ArrayFormula> m_arrays;
    /// Cells that only point at the formula of another, the second one; they have m_unresolved for the time being.
    std::vector<std::pair<CellAddress, CellAddress>> m_parts;
    std::shared_ptr<const Formula> m_unresolved = std::make_shared<const Formula>();
    bool m_hasWindow = false;
};

} // namespace

void readSheet(std::span<const std::byte> stream, std::size_t offset, ReadContext& context, Sheet& sheet)
{
    SheetReader(stream, offset, context, sheet).read();
}

} // namespace wagemill::engine::xls
