#include "workbook/engine/xls/FormulaTokens.h"
#include "workbook/engine/xls/SheetRecords.h"
#include "workbook/engine/xls/Substreams.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace wagemill::engine::xls {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t rowsPerBlock = 32;
constexpr std::size_t rowRecordSize = 20;
constexpr std::size_t maxMergedInRecord = 1026;
constexpr std::size_t pageBreakZoomOffset = 10;
constexpr std::size_t zoomOffset = 12;
constexpr std::uint16_t frozenFlags = 0x0108;
constexpr auto newSheetSettings = "\xC1\x04"sv; ///< automatic outlines
constexpr std::uint16_t activeFlags = 0x0600;
constexpr auto standardWindow = "\xBE\x01\x00\x00\x00\x00\x40\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00"sv;

/// Whether the array formula is still in its first cell, which holds it for all; else somebody put something else
/// there.
bool hasBase(const Sheet& sheet, const ArrayArea& array)
{
    const Cell* const base = sheet.find(array.cells.first());
    return base != nullptr && base->formula && base->array && base->array->cells == array.cells;
}

/// The formula that is written; none where the cell was a part of an array that is not there.
const Formula* writtenFormula(const Sheet& sheet, const Cell& cell)
{
    if (!cell.formula || cell.formula->tokens.empty() || (cell.array && !hasBase(sheet, *cell.array)))
        return nullptr;
    return cell.formula.get();
}

[[noreturn]] void throwUnsavable(const Sheet& sheet, CellAddress address, const std::exception& reason)
{
    throw EngineError("The cell " + addressText(address) + " of the sheet \"" + sheet.name +
                      "\" cannot be saved: " + reason.what());
}

/// The public members write the records of one place each, see sheetPlaces.
class SheetWriter {
public:
    SheetWriter(const Book& book, const Sheet& sheet, bool isActive, const std::vector<std::uint32_t>& strings,
                KeptRecords& kept, RecordWriter& target)
        : m_book(book), m_sheet(sheet), m_isActive(isActive), m_strings(strings), m_kept(kept), m_target(target)
    {
        for (const std::uint16_t id : {record::defaultRowHeight, record::sheetSettings, record::window2})
            kept.leaveOut(id);
        for (int row = 0; const Row& candidate : sheet.rows()) {
            if (!candidate.cells.empty() || !candidate.isPlain())
                m_rows.push_back(row);
            ++row;
        }
    }

    void writeBeginning()
    {
        m_target.write(record::bof, "\x00\x06\x10\x00\xA9\x1F\xCD\x07\xC9\x00\x01\x00\x06\x04\x00\x00"sv);
    }

    /// Offsets are put in when the records they lead to are written.
    void writeIndex()
    {
        ByteWriter& data = m_target.begin(record::index);
        FieldWriter(data).u32(0, m_rows.empty() ? 0 : m_rows.front(), m_rows.empty() ? 0 : m_rows.back() + 1);
        m_indexOffset = data.size();
        data.u32(0);
        data.zeros((m_rows.size() + rowsPerBlock - 1) / rowsPerBlock * 4);
    }

    void writeGutters()
    {
        int rowLevels = 0;
        int columnLevels = 0;
        for (const int row : m_rows)
            rowLevels = std::max<int>(rowLevels, m_sheet.findRow(row)->outlineLevel);
        for (const ColumnRun& run : m_sheet.columns)
            columnLevels = std::max<int>(columnLevels, run.outlineLevel);
        const auto levels = [](int depth) { return depth == 0 ? 0 : depth + 1; };
        const auto pixels = [](int depth) { return depth == 0 ? 0 : depth * 12 + 17; };
        m_target.writeU16(record::gutters, pixels(rowLevels), pixels(columnLevels), levels(rowLevels),
                          levels(columnLevels));
    }

    void writeDefaultRowHeight()
    {
        const std::uint16_t flags = ByteReader(m_kept.data(record::defaultRowHeight, "\0\0\0\0"sv)).u16();
        m_target.writeU16(record::defaultRowHeight, flags, m_sheet.defaultRowHeightTwips);
    }

    void writeSheetSettings()
    {
        const unsigned flags = ByteReader(m_kept.data(record::sheetSettings, newSheetSettings)).u16();
        m_target.writeU16(record::sheetSettings,
                          m_sheet.print.fitToPages ? flags | fitToPagesFlag : flags & ~unsigned{fitToPagesFlag});
    }

    template <std::uint16_t id>
    void writePrint()
    {
        writePrintRecord(m_target, id, m_sheet.print);
    }

    void writeIterationTurns() { m_target.writeU16(record::iterationTurns, m_book.iteration.maxTurns); }
    void writeIteration() { m_target.writeU16(record::iteration, m_book.iteration.isOn); }
    void writeIterationChange() { m_target.begin(record::iterationChange).real(m_book.iteration.maxChange); }

    void writeDefaultColumnWidth()
    {
        m_target.putU32(m_indexOffset, m_target.offset());
        m_target.writeU16(record::defaultColumnWidth, m_sheet.defaultColumnWidth);
    }

    void writeColumns()
    {
        for (const ColumnRun& run : m_sheet.columns) {
            ByteWriter& data = m_target.begin(record::columnInfo);
            columnFields(FieldWriter(data), run);
            data.u16(0);
        }
    }

    void writeDimensions()
    {
        const CellRect used = m_sheet.usedRange().value_or(CellRect{0, 0, -1, -1});
        FieldWriter fields(m_target.begin(record::dimensions));
        fields.u32(used.firstRow, used.lastRow + 1);
        fields.u16(used.firstColumn, used.lastColumn + 1, 0);
    }

    void writeRowBlocks()
    {
        std::size_t indexEntry = m_indexOffset + 4;
        for (std::size_t first = 0; first < m_rows.size(); first += rowsPerBlock) {
            const auto rows = std::span(m_rows).subspan(first, std::min(rowsPerBlock, m_rows.size() - first));
            writeRowBlock(rows, indexEntry);
            indexEntry += 4;
        }
    }

    void writeRowBlock(std::span<const int> rows, std::size_t indexEntry)
    {
        const std::size_t firstRow = m_target.offset();
        for (const int row : rows)
            writeRow(row);
        std::vector<std::uint16_t> offsets;
        std::size_t before = firstRow + rowRecordSize;
        for (const int row : rows) {
            const std::size_t firstCell = m_target.offset();
            writeCells(row);
            if (m_target.offset() == firstCell)
                continue;
            offsets.push_back(static_cast<std::uint16_t>(std::min<std::size_t>(firstCell - before, 0xFFFF)));
            before = firstCell;
        }
        m_target.putU32(indexEntry, m_target.offset());
        const std::size_t distance = m_target.offset() - firstRow;
        ByteWriter& data = m_target.begin(record::cellOffsets);
        data.u32(static_cast<std::uint32_t>(distance));
        for (const std::uint16_t offset : offsets)
            data.u16(offset);
    }

    void writeRow(int index)
    {
        const Row& row = *m_sheet.findRow(index);
        RowHead head{.row = index,
                     .heightTwips = row.heightTwips.value_or(m_sheet.defaultRowHeightTwips),
                     .format = row.format.value_or(defaultCellFormat),
                     .hasFormat = row.format.has_value()};
        if (!row.cells.empty()) {
            head.firstColumn = row.cells.front().column;
            head.endColumn = row.cells.back().column + 1;
        }
        rowFields(FieldWriter(m_target.begin(record::row)), head, row);
    }

    void writeCells(int row)
    {
        const std::vector<Cell>& cells = m_sheet.findRow(row)->cells;
        for (std::size_t index = 0; index < cells.size();) {
            const auto rest = std::span(cells).subspan(index);
            if (const std::size_t blanks = runLength(rest, isBlank); blanks > 1) {
                writeMultiple(record::multipleBlank, row, rest.first(blanks));
                index += blanks;
            } else if (const std::size_t numbers = runLength(rest, isRk); numbers > 1) {
                writeMultiple(record::multipleRk, row, rest.first(numbers));
                index += numbers;
            } else {
                writeCell(row, cells[index++]);
            }
        }
    }

    static bool isBlank(const Cell& cell) { return !cell.formula && isEmpty(cell.value); }
    static bool isRk(const Cell& cell)
    {
        const double* const number = cell.formula ? nullptr : std::get_if<double>(&cell.value);
        return number != nullptr && rkOfNumber(*number);
    }

    /// How many cells, side by side from the first on, are of that kind.
    static std::size_t runLength(std::span<const Cell> cells, bool (*isOfKind)(const Cell&))
    {
        std::size_t length = 0;
        while (length < cells.size() && cells[length].column == cells[0].column + static_cast<int>(length) &&
               isOfKind(cells[length]))
            ++length;
        return length;
    }

    void writeMultiple(std::uint16_t id, int row, std::span<const Cell> cells)
    {
        FieldWriter fields(m_target.begin(id));
        fields.u16(row, cells.front().column);
        for (const Cell& cell : cells) {
            fields.u16(cell.format);
            if (id == record::multipleRk)
                fields.u32(*rkOfNumber(std::get<double>(cell.value)));
        }
        fields.u16(cells.back().column);
    }

    ByteWriter& beginCell(std::uint16_t id, int row, const Cell& cell)
    {
        ByteWriter& data = m_target.begin(id);
        writeHead(data, row, cell);
        return data;
    }

    static void writeHead(ByteWriter& data, int row, const Cell& cell)
    {
        const CellHead head{row, cell.column, cell.format};
        cellHeadFields(FieldWriter(data), head);
    }

    void writeCell(int row, const Cell& cell)
    {
        if (const Formula* formula = writtenFormula(m_sheet, cell))
            writeFormulaCell(row, cell, *formula);
        else
            std::visit([&](const auto& value) { writeConstant(row, cell, value); }, cell.value);
    }

    void writeConstant(int row, const Cell& cell, const Empty& /*value*/) { beginCell(record::blank, row, cell); }

    void writeConstant(int row, const Cell& cell, double number)
    {
        if (const auto rk = rkOfNumber(number))
            beginCell(record::rk, row, cell).u32(*rk);
        else
            beginCell(record::number, row, cell).real(number);
    }

    void writeConstant(int row, const Cell& cell, const std::string& /*text*/)
    {
        beginCell(record::sharedLabel, row, cell).u32(m_strings.at(m_nextString++));
    }

    void writeConstant(int row, const Cell& cell, bool logical) { writeCode(row, cell, logical ? 1 : 0, 0); }
    void writeConstant(int row, const Cell& cell, ErrorCode error)
    {
        writeCode(row, cell, static_cast<std::uint8_t>(error), 1);
    }
    void writeCode(int row, const Cell& cell, std::uint8_t code, std::uint8_t isError)
    {
        FieldWriter(beginCell(record::logicalOrError, row, cell)).u8(code, isError);
    }

    void writeFormulaCell(int row, const Cell& cell, const Formula& formula)
    {
        try {
            m_tokens.clear();
            m_trailing.clear();
            if (cell.array)
                writeSharedBase(*cell.array, m_tokens);
            else
                writeFormula(formula, m_tokens, m_trailing);
            m_data.clear();
            writeHead(m_data, row, cell);
            std::visit([&](const auto& value) { writeResult(value); }, cell.value);
            m_data.u16(isEmpty(cell.value) ? 1 : 0); // no result yet: to be computed when the workbook is opened
            m_data.u32(0);
            writeWithTokens(record::formula);
            if (cell.array && cell.array->cells.first() == CellAddress{row, cell.column})
                writeArray(*cell.array, formula);
            const std::string* const text = std::get_if<std::string>(&cell.value);
            if (text != nullptr && !text->empty())
                writeLongString(m_target, record::formulaText, *text);
        } catch (const std::length_error& error) {
            throwUnsavable(m_sheet, {row, cell.column}, error);
        }
    }

    void writeArray(const ArrayArea& array, const Formula& formula)
    {
        if (array.isTable())
            return m_target.write(array.table);
        m_tokens.clear();
        writeFormula(formula, m_tokens, m_trailing);
        m_data.clear();
        shortAreaFields(FieldWriter(m_data), array.cells);
        m_data.u16(array.flags);
        m_data.u32(0);
        writeWithTokens(record::array);
    }

    /// What m_data begins.
    void writeWithTokens(std::uint16_t id)
    {
        m_data.u16(static_cast<std::uint16_t>(m_tokens.size()));
        m_data.bytes(m_tokens.view());
        m_data.bytes(m_trailing.view());
        m_target.write(id, m_data.view());
    }

    /// [MS-XLS] 2.5.133 FormulaValue
    void writeResult(const Empty& /*value*/) { m_data.real(0); }
    void writeResult(double number) { m_data.real(number); }
    void writeResult(const std::string& text) { writeResultCode(text.empty() ? 3 : 0, 0); }
    void writeResult(bool logical) { writeResultCode(1, logical ? 1 : 0); }
    void writeResult(ErrorCode error) { writeResultCode(2, static_cast<std::uint8_t>(error)); }
    void writeResultCode(std::uint8_t kind, std::uint8_t code) { FieldWriter(m_data).u16(kind, code, 0, 0xFFFF); }

    void writeWindow()
    {
        const auto bytes = m_kept.data(record::window2, standardWindow);
        unsigned flags = ByteReader(bytes).u16() & ~(activeFlags | gridLinesFlag);
        if (!m_sheet.panes)
            flags &= ~unsigned{frozenFlags};
        flags |= (m_isActive ? activeFlags : 0U) | (m_sheet.showGridLines ? gridLinesFlag : 0U);
        ByteWriter& data = m_target.begin(record::window2);
        const std::size_t start = data.size();
        data.bytes(bytes);
        putU16(data.view(), start, static_cast<std::uint16_t>(flags));
        for (const std::size_t zoom : {start + pageBreakZoomOffset, start + zoomOffset})
            if (const unsigned percent = ByteReader(data.view(), zoom).u16(); percent < 10 || percent > 400)
                putU16(data.view(), zoom, 0); // the usual size
    }

    void writePanes()
    {
        if (!m_sheet.panes)
            return;
        ByteWriter& data = m_target.begin(record::pane);
        paneFields(FieldWriter(data), *m_sheet.panes);
        data.u8(0);
    }

    void writeSelection()
    {
        const auto& [active, area] = m_sheet.selection;
        FieldWriter fields(m_target.begin(record::selection));
        fields.u8(m_sheet.panes ? m_sheet.panes->active : wholeWindowPane);
        fields.u16(active.row, active.column, 0, 1);
        shortAreaFields(fields, area);
    }

    void writeMergedCells()
    {
        const std::vector<CellRect> areas = withoutOverlaps(m_sheet.merged);
        for (std::size_t first = 0; first < areas.size(); first += maxMergedInRecord) {
            const auto part = std::span(areas).subspan(first, std::min(maxMergedInRecord, areas.size() - first));
            ByteWriter& data = m_target.begin(record::mergedCells);
            data.u16(static_cast<std::uint16_t>(part.size()));
            for (const CellRect& area : part)
                areaFields(FieldWriter(data), area);
        }
    }

    const Book& m_book;
    const Sheet& m_sheet;
    bool m_isActive;
    const std::vector<std::uint32_t>& m_strings;
    KeptRecords& m_kept;
    RecordWriter& m_target;
    std::vector<int> m_rows;       ///< that have a ROW record
    std::size_t m_indexOffset = 0; ///< of the place for the offset of DEFCOLWIDTH, those of the blocks follow it
    std::size_t m_nextString = 0;
    ByteWriter m_tokens;
    ByteWriter m_trailing;
    ByteWriter m_data;
};

// [MS-XLS] 2.1.7.20.5
// clang-format off
constexpr auto sheetPlaces = std::to_array<Place<SheetWriter>>({
    {record::bof, &SheetWriter::writeBeginning},
    {0x005E}, // UNCALCED
    {record::index, &SheetWriter::writeIndex},
    {0x000D, "\1\0"sv}, // CALCMODE
    {record::iterationTurns, &SheetWriter::writeIterationTurns},
    {0x000F, "\1\0"sv}, // CALCREFMODE
    {record::iteration, &SheetWriter::writeIteration},
    {record::iterationChange, &SheetWriter::writeIterationChange},
    {0x005F, "\1\0"sv}, // CALCSAVERECALC
    {record::printHeadings, &SheetWriter::writePrint<record::printHeadings>},
    {record::printGridLines, &SheetWriter::writePrint<record::printGridLines>},
    {0x0082, "\1\0"sv}, // GRIDSET
    {record::gutters, &SheetWriter::writeGutters},
    {record::defaultRowHeight, &SheetWriter::writeDefaultRowHeight},
    {record::sheetSettings, &SheetWriter::writeSheetSettings},
    {0x0097}, {0x0098}, // SYNC LPR
    {record::rowBreaks, &SheetWriter::writePrint<record::rowBreaks>},
    {record::columnBreaks, &SheetWriter::writePrint<record::columnBreaks>},
    {record::header, &SheetWriter::writePrint<record::header>},
    {record::footer, &SheetWriter::writePrint<record::footer>},
    {record::centerHorizontally, &SheetWriter::writePrint<record::centerHorizontally>},
    {record::centerVertically, &SheetWriter::writePrint<record::centerVertically>},
    {record::leftMargin, &SheetWriter::writePrint<record::leftMargin>},
    {record::rightMargin, &SheetWriter::writePrint<record::rightMargin>},
    {record::topMargin, &SheetWriter::writePrint<record::topMargin>},
    {record::bottomMargin, &SheetWriter::writePrint<record::bottomMargin>},
    {0x004D}, // PLS
    {record::pageSetup, &SheetWriter::writePrint<record::pageSetup>},
    {0x089C}, {0x00E9}, {0x0418}, {0x043C, Order::Mixed}, // HEADERFOOTER BKHIM BIGNAME CONTINUEBIGNAME
    {0x0019}, {0x0012}, {0x00DD}, {0x0063}, // WINPROTECT PROTECT SCENARIOPROTECT OBJPROTECT
    {0x0013}, // PASSWORD
    {record::defaultColumnWidth, &SheetWriter::writeDefaultColumnWidth},
    {record::columnInfo, &SheetWriter::writeColumns},
    {0x00AE}, {0x00AF, Order::Mixed}, {0x0090}, {0x0895}, {0x009B}, // SCENMAN SCENARIO SORT SORTDATA FILTERMODE
    {0x0874}, {0x009D}, {0x009E}, {0x087E, Order::Mixed}, // DROPDOWNOBJIDS AUTOFILTERINFO AUTOFILTER AUTOFILTER12
    {record::dimensions, &SheetWriter::writeDimensions},
    {record::row, &SheetWriter::writeRowBlocks},
    {0x00D7}, {0x01C2}, {0x00EC}, {0x005D, Order::Mixed}, {0x01B6, Order::Mixed}, // DBCELL ENTEXU2 MSODRAWING OBJ TXO
    {0x00ED, Order::Mixed}, {0x0866}, {0x001C}, {0x00B0}, {0x0050}, // MSODRAWINGSELECTION HFPICTURE NOTE SXVIEW DCON
    {0x0051, Order::Mixed}, {0x0052, Order::Mixed}, {0x01B5, Order::Mixed}, // DCONREF DCONNAME DCONBIN
    {record::window2, &SheetWriter::writeWindow},
    {0x088B}, {0x00A0}, // PLV SCL
    {record::pane, &SheetWriter::writePanes},
    {record::selection, &SheetWriter::writeSelection},
    {0x01AA}, {0x0099}, // USERSVIEWBEGIN DXGCOL
    {record::mergedCells, &SheetWriter::writeMergedCells},
    {0x015F}, {0x01AD}, {0x00DC, Order::Mixed}, {0x0802, Order::Mixed}, // LRNG QSI DBORPARAMQRY QSISXTAG
    {0x00EF}, {0x01B0}, {0x01B1, Order::Mixed}, {0x0879, Order::Mixed}, // PHONETICINFO CONDFMT CF CONDFMT12
    {0x087A, Order::Mixed}, {0x087B, Order::Mixed}, {0x01B8}, {0x0800, Order::Mixed}, // CF12 CFEX HLINK HLINKTOOLTIP
    {0x01B2}, {0x01BE, Order::Mixed}, {0x01BA}, {0x0801}, {0x086C}, // DVAL DV CODENAME WEBPUB CELLWATCH
    {0x0862}, {0x0867}, {0x0868, Order::Mixed}, {0x0871, Order::Mixed}, // SHEETEXT FEATHDR FEAT FEATHDR11
    {0x0872, Order::Mixed}, {0x0878, Order::Mixed}, {0x0877, Order::Mixed}, // FEAT11 FEAT12 LIST12
    {record::eof, ""sv},
});
// clang-format on
constexpr auto sheetRanks = ranksOf(sheetPlaces);

/// A sheet that is not a worksheet goes out as it came, selected or not as this workbook says.
void writeKeptSheet(const Sheet& sheet, bool isActive, RecordWriter& target)
{
    for (const KeptRecord& kept : sheet.kept) {
        if (kept.id != record::window2 || kept.data.size() < 2) {
            target.write(kept);
            continue;
        }
        const unsigned flags = ByteReader(kept.data).u16() & ~static_cast<unsigned>(activeFlags);
        ByteWriter& data = target.begin(kept.id);
        data.u16(static_cast<std::uint16_t>(flags | (isActive ? activeFlags : 0U)));
        data.bytes(std::span(kept.data).subspan(2));
    }
}

} // namespace

std::vector<std::uint32_t> collectStrings(const Sheet& sheet, SharedStringTable& strings)
{
    std::vector<std::uint32_t> indices;
    int row = 0;
    for (const Row& cells : sheet.rows()) {
        for (const Cell& cell : cells.cells) {
            const CellAddress address{row, cell.column};
            const std::string* const text = std::get_if<std::string>(&cell.value);
            if (text == nullptr || writtenFormula(sheet, cell) != nullptr)
                continue;
            try {
                indices.push_back(strings.indexFor(*text, cell.runs));
            } catch (const std::length_error& error) {
                throwUnsavable(sheet, address, error);
            }
        }
        ++row;
    }
    return indices;
}

void writeSheet(const Book& book, const Sheet& sheet, bool isActive, const std::vector<std::uint32_t>& strings,
                RecordWriter& target)
{
    if (substreamType(sheet) != SubstreamType::Worksheet)
        return writeKeptSheet(sheet, isActive, target);
    KeptRecords kept(sheet.kept, sheetRanks);
    SheetWriter writer(book, sheet, isActive, strings, kept, target);
    writePlaces<SheetWriter>(writer, sheetPlaces, kept, target);
}

} // namespace wagemill::engine::xls
