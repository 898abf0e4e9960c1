#include "workbook/engine/xls/SheetWriter.h"

#include "workbook/engine/xls/BiffRecords.h"
#include "workbook/engine/xls/FormulaTokenNumbers.h"
#include "workbook/engine/xls/FormulaTokensXls.h"
#include "workbook/engine/xls/GlobalsWriter.h"
#include "workbook/engine/xls/MergedCells.h"
#include "workbook/engine/xls/PrintRecords.h"
#include "workbook/engine/xls/RkNumber.h"
#include "workbook/engine/xls/WriteSteps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

namespace wagemill::engine::xls {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t rowsPerBlock = 32;
constexpr std::size_t rowRecordSize = 20;
constexpr std::size_t mostMergedInRecord = 1026;
constexpr std::uint8_t wholeWindowPane = 3;
constexpr std::size_t window2Size = 18;
constexpr std::size_t pageBreakZoomOffset = 10;
constexpr std::size_t zoomOffset = 12;
constexpr std::uint16_t gridLinesFlag = 0x0002;
constexpr std::uint16_t frozenFlags = 0x0108;
constexpr std::uint16_t fitToPagesFlag = 0x0100;
constexpr std::uint16_t newSheetSettings = 0x04C1; ///< automatic outlines
constexpr std::uint16_t activeFlags = 0x0600;
constexpr std::uint16_t widestColumn = 255 * 256;
constexpr auto standardWindow = "\xB6\x00\x00\x00\x00\x00\x40\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00"sv;

/// The cell that holds the array formula or data table of the area for all its cells.
CellAddress baseOf(const ArrayArea& array)
{
    return {array.cells.firstRow, array.cells.firstColumn};
}

/// Whether the cell's array formula is still in its first cell; else somebody put something else there.
bool hasBase(const Sheet& sheet, const ArrayArea& array)
{
    const Cell* const base = sheet.find(baseOf(array));
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

class SheetWriter {
public:
    SheetWriter(const Book& book, const Sheet& sheet, bool isActive, const std::vector<std::uint32_t>& strings,
                RecordWriter& target)
        : m_book(book),
          m_sheet(sheet),
          m_isActive(isActive),
          m_strings(strings),
          m_target(target),
          m_kept(sheet.kept, worksheetRank)
    {
        m_kept.leaveOutWrongSizes();
        for (const std::uint16_t id : {record::defaultRowHeight, record::sheetSettings, record::window2})
            m_kept.leaveOut(id);
        int row = 0;
        for (const Row& candidate : sheet.rows()) {
            if (!candidate.cells.empty() || !candidate.isPlain())
                m_rows.push_back(row);
            ++row;
        }
    }

    void write()
    {
        using Writer = SheetWriter;
        static constexpr auto steps = std::to_array<WriteStep<Writer>>({
            {record::bof, &Writer::writeBeginning},
            {record::index, &Writer::writeIndex},
            {0x000D, nullptr, "\1\0"sv}, // CALCMODE: automatic
            {record::iterationTurns, &Writer::writeIterationTurns},
            {0x000F, nullptr, "\1\0"sv}, // CALCREFMODE: A1
            {record::iteration, &Writer::writeIteration},
            {record::iterationChange, &Writer::writeIterationChange},
            {0x005F, nullptr, "\1\0"sv}, // CALCSAVERECALC
            {record::printHeadings, &Writer::writeMarksOfPrint},
            {0x0082, nullptr, "\1\0"sv}, // GRIDSET
            {record::gutters, &Writer::writeGutters},
            {record::defaultRowHeight, &Writer::writeDefaultRowHeight},
            {record::sheetSettings, &Writer::writeSheetSettings},
            {record::rowBreaks, &Writer::writeBreaks},
            {record::header, &Writer::writeMargins},
            {record::pageSetup, &Writer::writeSetup},
            {record::defaultColumnWidth, &Writer::writeDefaultColumnWidth},
            {record::columnInfo, &Writer::writeColumns},
            {record::dimensions, &Writer::writeDimensions},
            {record::row, &Writer::writeRowBlocks},
            {record::window2, &Writer::writeWindow},
            {record::pane, &Writer::writePanes},
            {record::selection, &Writer::writeSelection},
            {record::mergedCells, &Writer::writeMergedCells},
            {record::eof, &Writer::writeEnd},
        });
        writeSteps<Writer>(*this, steps, m_kept, m_target);
    }

private:
    std::uint16_t cellFormat(std::uint16_t format) const
    {
        const auto& formats = m_book.styles.formats;
        return format < formats.size() && !formats[format].isStyle ? format : defaultCellFormat;
    }

    void writeBeginning()
    {
        m_target.write(record::bof,
                       std::as_bytes(std::span("\x00\x06\x10\x00\xA9\x1F\xCD\x07\xC9\x00\x01\x00\x06\x04\x00\x00"sv)));
    }

    /// Offsets are put in when the records they lead to are written.
    void writeIndex()
    {
        ByteWriter& data = m_target.begin(record::index);
        data.u32(0);
        data.u32(m_rows.empty() ? 0 : static_cast<std::uint32_t>(m_rows.front()));
        data.u32(m_rows.empty() ? 0 : static_cast<std::uint32_t>(m_rows.back() + 1));
        m_indexOffset = data.size();
        data.u32(0);
        data.zeros((m_rows.size() + rowsPerBlock - 1) / rowsPerBlock * 4);
        m_target.finish();
    }

    void writeGutters()
    {
        int rowLevels = 0;
        int columnLevels = 0;
        for (const int row : m_rows)
            rowLevels = std::max<int>(rowLevels, m_sheet.findRow(row)->outlineLevel);
        for (const ColumnRun& run : m_sheet.columns)
            columnLevels = std::max<int>(columnLevels, run.outlineLevel);
        const auto levels = [](int deepest) { return static_cast<std::uint16_t>(deepest == 0 ? 0 : deepest + 1); };
        const auto pixels = [](int deepest) {
            return static_cast<std::uint16_t>(deepest == 0 ? 0 : deepest * 12 + 17);
        };
        ByteWriter& data = m_target.begin(record::gutters);
        data.u16(pixels(rowLevels));
        data.u16(pixels(columnLevels));
        data.u16(levels(rowLevels));
        data.u16(levels(columnLevels));
        m_target.finish();
    }

    void writeDefaultRowHeight()
    {
        const KeptRecord* const kept = m_kept.find(record::defaultRowHeight);
        ByteWriter& data = m_target.begin(record::defaultRowHeight);
        data.u16(kept != nullptr && kept->data.size() == 4 ? ByteReader(kept->data).u16() : std::uint16_t{0});
        data.u16(m_sheet.defaultRowHeightTwips);
        m_target.finish();
    }

    void writeSheetSettings()
    {
        const KeptRecord* const kept = m_kept.find(record::sheetSettings);
        const bool usable = kept != nullptr && kept->data.size() == 2;
        const unsigned flags = usable ? ByteReader(kept->data).u16() : newSheetSettings;
        m_target.writeU16(record::sheetSettings,
                          static_cast<std::uint16_t>((flags & ~static_cast<unsigned>(fitToPagesFlag)) |
                                                     (m_sheet.print.fitToPages ? fitToPagesFlag : 0U)));
    }

    void writeMarksOfPrint() { writePrintMarks(m_target, m_sheet.print); }
    void writeBreaks() { writePageBreaks(m_target, m_sheet.print); }
    void writeMargins() { writePageMargins(m_target, m_sheet.print); }
    void writeSetup() { writePageSetup(m_target, m_sheet.print); }

    void writeIterationTurns() { m_target.writeU16(record::iterationTurns, m_book.iteration.maxTurns); }
    void writeIteration() { m_target.writeU16(record::iteration, m_book.iteration.isOn ? 1 : 0); }
    void writeIterationChange()
    {
        m_target.begin(record::iterationChange).real(m_book.iteration.maxChange);
        m_target.finish();
    }

    void writeDefaultColumnWidth()
    {
        m_target.putU32(m_indexOffset, static_cast<std::uint32_t>(m_target.offset()));
        m_target.writeU16(record::defaultColumnWidth, m_sheet.defaultColumnWidth);
    }

    void writeColumns()
    {
        for (const ColumnRun& run : m_sheet.columns) {
            ByteWriter& data = m_target.begin(record::columnInfo);
            data.u16(static_cast<std::uint16_t>(run.first));
            data.u16(static_cast<std::uint16_t>(run.last));
            data.u16(std::min(run.width, widestColumn));
            data.u16(cellFormat(run.format));
            data.u16(static_cast<std::uint16_t>((run.hidden ? 1U : 0U) | (run.ownWidth ? 2U : 0U) |
                                                (run.outlineLevel & 7U) << 8U | (run.collapsed ? 0x1000U : 0U)));
            data.u16(0);
            m_target.finish();
        }
    }

    void writeDimensions()
    {
        const auto used = m_sheet.usedRange();
        ByteWriter& data = m_target.begin(record::dimensions);
        data.u32(used ? static_cast<std::uint32_t>(used->firstRow) : 0);
        data.u32(used ? static_cast<std::uint32_t>(used->lastRow + 1) : 0);
        data.u16(used ? static_cast<std::uint16_t>(used->firstColumn) : std::uint16_t{0});
        data.u16(used ? static_cast<std::uint16_t>(used->lastColumn + 1) : std::uint16_t{0});
        data.u16(0);
        m_target.finish();
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
        m_target.putU32(indexEntry, static_cast<std::uint32_t>(m_target.offset()));
        const std::size_t distance = m_target.offset() - firstRow;
        ByteWriter& data = m_target.begin(record::cellOffsets);
        data.u32(static_cast<std::uint32_t>(distance));
        for (const std::uint16_t offset : offsets)
            data.u16(offset);
        m_target.finish();
    }

    void writeRow(int index)
    {
        const Row& row = *m_sheet.findRow(index);
        ByteWriter& data = m_target.begin(record::row);
        data.u16(static_cast<std::uint16_t>(index));
        data.u16(row.cells.empty() ? std::uint16_t{0} : static_cast<std::uint16_t>(row.cells.front().column));
        data.u16(row.cells.empty() ? std::uint16_t{0} : static_cast<std::uint16_t>(row.cells.back().column + 1));
        data.u16(std::clamp<std::uint16_t>(row.heightTwips.value_or(m_sheet.defaultRowHeightTwips), 2, 8192));
        data.u32(0);
        data.u16(static_cast<std::uint16_t>(0x0100U | (row.outlineLevel & 7U) | (row.collapsed ? 0x10U : 0U) |
                                            (row.hidden ? 0x20U : 0U) | (row.heightSetByHand ? 0x40U : 0U) |
                                            (row.format ? 0x80U : 0U)));
        data.u16(cellFormat(row.format.value_or(defaultCellFormat)));
        m_target.finish();
    }

    void writeCells(int row)
    {
        const std::vector<Cell>& cells = m_sheet.findRow(row)->cells;
        for (std::size_t index = 0; index < cells.size();) {
            const auto rest = std::span(cells).subspan(index);
            if (const std::size_t blanks = runLength(rest, isBlank); blanks > 1) {
                writeMultipleBlank(row, rest.first(blanks));
                index += blanks;
            } else if (const std::size_t numbers = runLength(rest, isRk); numbers > 1) {
                writeMultipleRk(row, rest.first(numbers));
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

    void writeMultipleBlank(int row, std::span<const Cell> cells)
    {
        ByteWriter& data = m_target.begin(record::multipleBlank);
        data.u16(static_cast<std::uint16_t>(row));
        data.u16(static_cast<std::uint16_t>(cells.front().column));
        for (const Cell& cell : cells)
            data.u16(cellFormat(cell.format));
        data.u16(static_cast<std::uint16_t>(cells.back().column));
        m_target.finish();
    }

    void writeMultipleRk(int row, std::span<const Cell> cells)
    {
        ByteWriter& data = m_target.begin(record::multipleRk);
        data.u16(static_cast<std::uint16_t>(row));
        data.u16(static_cast<std::uint16_t>(cells.front().column));
        for (const Cell& cell : cells) {
            data.u16(cellFormat(cell.format));
            data.u32(*rkOfNumber(std::get<double>(cell.value)));
        }
        data.u16(static_cast<std::uint16_t>(cells.back().column));
        m_target.finish();
    }

    ByteWriter& beginCell(std::uint16_t id, int row, const Cell& cell)
    {
        ByteWriter& data = m_target.begin(id);
        writeHead(data, row, cell);
        return data;
    }

    void writeHead(ByteWriter& data, int row, const Cell& cell) const
    {
        data.u16(static_cast<std::uint16_t>(row));
        data.u16(static_cast<std::uint16_t>(cell.column));
        data.u16(cellFormat(cell.format));
    }

    void writeCell(int row, const Cell& cell)
    {
        if (const Formula* formula = writtenFormula(m_sheet, cell))
            writeFormulaCell(row, cell, *formula);
        else
            std::visit([&](const auto& value) { writeConstant(row, cell, value); }, cell.value);
    }

    void writeConstant(int row, const Cell& cell, Empty /*value*/)
    {
        beginCell(record::blank, row, cell);
        m_target.finish();
    }

    void writeConstant(int row, const Cell& cell, double number)
    {
        if (!std::isfinite(number)) {
            writeConstant(row, cell, ErrorCode::Number);
        } else if (const auto rk = rkOfNumber(number)) {
            beginCell(record::rk, row, cell).u32(*rk);
            m_target.finish();
        } else {
            beginCell(record::number, row, cell).real(number);
            m_target.finish();
        }
    }

    void writeConstant(int row, const Cell& cell, const std::string& /*text*/)
    {
        beginCell(record::sharedLabel, row, cell).u32(m_strings.at(m_nextString++));
        m_target.finish();
    }

    void writeConstant(int row, const Cell& cell, bool logical) { writeCode(row, cell, logical ? 1 : 0, 0); }
    void writeConstant(int row, const Cell& cell, ErrorCode error)
    {
        writeCode(row, cell, static_cast<std::uint8_t>(error), 1);
    }
    void writeCode(int row, const Cell& cell, std::uint8_t code, std::uint8_t isError)
    {
        ByteWriter& data = beginCell(record::logicalOrError, row, cell);
        data.u8(code);
        data.u8(isError);
        m_target.finish();
    }

    void writeFormulaCell(int row, const Cell& cell, const Formula& formula)
    {
        try {
            m_tokens.clear();
            m_behind.clear();
            if (cell.array)
                writeArrayPointer(*cell.array);
            else
                writeFormula(formula, m_tokens, m_behind);
            m_data.clear();
            writeHead(m_data, row, cell);
            std::visit([&](const auto& value) { writeResult(value); }, cell.value);
            m_data.u16(isEmpty(cell.value) ? 1 : 0); // no result yet: to be computed when the workbook is opened
            m_data.u32(0);
            m_data.u16(static_cast<std::uint16_t>(m_tokens.size()));
            m_data.bytes(m_tokens.view());
            m_data.bytes(m_behind.view());
            m_target.write(record::formula, m_data.view());
            if (cell.array && baseOf(*cell.array) == CellAddress{row, cell.column})
                writeArray(*cell.array, formula);
            const std::string* const text = std::get_if<std::string>(&cell.value);
            if (text != nullptr && !text->empty())
                writeLongString(m_target, record::formulaText, *text);
        } catch (const std::length_error& error) {
            throwUnsavable(m_sheet, {row, cell.column}, error);
        }
    }

    /// PtgExp or PtgTbl ([MS-XLS] 2.5.198.58, .92): the formula stands in the record behind the first cell.
    void writeArrayPointer(const ArrayArea& array)
    {
        m_tokens.u8(array.isTable() ? ptg::partOfTable : ptg::partOfShared);
        m_tokens.u16(static_cast<std::uint16_t>(array.cells.firstRow));
        m_tokens.u16(static_cast<std::uint16_t>(array.cells.firstColumn));
    }

    void writeArray(const ArrayArea& array, const Formula& formula)
    {
        if (array.isTable())
            return m_target.write(array.table);
        m_tokens.clear();
        writeFormula(formula, m_tokens, m_behind);
        m_data.clear();
        m_data.u16(static_cast<std::uint16_t>(array.cells.firstRow));
        m_data.u16(static_cast<std::uint16_t>(array.cells.lastRow));
        m_data.u8(static_cast<std::uint8_t>(array.cells.firstColumn));
        m_data.u8(static_cast<std::uint8_t>(array.cells.lastColumn));
        m_data.u16(array.flags);
        m_data.u32(0);
        m_data.u16(static_cast<std::uint16_t>(m_tokens.size()));
        m_data.bytes(m_tokens.view());
        m_data.bytes(m_behind.view());
        m_target.write(record::array, m_data.view());
    }

    /// [MS-XLS] 2.5.133 FormulaValue
    void writeResult(Empty /*value*/) { m_data.real(0); }
    void writeResult(double number)
    {
        if (std::isfinite(number))
            m_data.real(number);
        else
            writeResult(ErrorCode::Number);
    }
    void writeResult(const std::string& text) { writeResultCode(text.empty() ? 3 : 0, 0); }
    void writeResult(bool logical) { writeResultCode(1, logical ? 1 : 0); }
    void writeResult(ErrorCode error) { writeResultCode(2, static_cast<std::uint8_t>(error)); }
    void writeResultCode(std::uint8_t kind, std::uint8_t code)
    {
        m_data.u16(kind);
        m_data.u16(code);
        m_data.u16(0);
        m_data.u16(0xFFFF);
    }

    void writeWindow()
    {
        const KeptRecord* const kept = m_kept.find(record::window2);
        const bool usable = kept != nullptr && kept->data.size() == window2Size;
        const auto bytes = usable ? std::span<const std::byte>(kept->data) : std::as_bytes(std::span(standardWindow));
        unsigned flags = ByteReader(bytes).u16() & ~(activeFlags | gridLinesFlag);
        if (!m_sheet.panes)
            flags &= ~static_cast<unsigned>(frozenFlags);
        else if (!usable)
            flags |= frozenFlags;
        flags |= (m_isActive ? activeFlags : 0U) | (m_sheet.showGridLines ? gridLinesFlag : 0U);
        ByteWriter& data = m_target.begin(record::window2);
        const std::size_t start = data.size();
        data.u16(static_cast<std::uint16_t>(flags));
        data.bytes(bytes.subspan(2));
        for (const std::size_t zoom : {start + pageBreakZoomOffset, start + zoomOffset})
            if (!isZoom(ByteReader(data.view().subspan(zoom)).u16()))
                putU16(data.view(), zoom, 0);
        m_target.finish();
    }

    /// Percent; 0 is the usual size.
    static bool isZoom(std::uint16_t percent) { return percent >= 10 && percent <= 400; }

    void writePanes()
    {
        if (!m_sheet.panes)
            return;
        const SheetPanes& panes = *m_sheet.panes;
        ByteWriter& data = m_target.begin(record::pane);
        for (const std::uint16_t number : {panes.columns, panes.rows, panes.firstRow, panes.firstColumn})
            data.u16(number);
        data.u8(panes.active);
        data.u8(0);
        m_target.finish();
    }

    void writeSelection()
    {
        const auto clampRow = [](int row) { return static_cast<std::uint16_t>(std::clamp(row, 0, maxRows - 1)); };
        const auto clampColumn = [](int column) {
            return static_cast<std::uint8_t>(std::clamp(column, 0, maxColumns - 1));
        };
        const SheetSelection& selection = m_sheet.selection;
        const CellRect active{selection.active.row, selection.active.column, selection.active.row,
                              selection.active.column};
        const CellRect area = selection.area.contains(selection.active) ? selection.area : active;
        ByteWriter& data = m_target.begin(record::selection);
        data.u8(m_sheet.panes ? m_sheet.panes->active : wholeWindowPane);
        data.u16(clampRow(selection.active.row));
        data.u16(clampColumn(selection.active.column));
        data.u16(0);
        data.u16(1);
        data.u16(clampRow(area.firstRow));
        data.u16(clampRow(area.lastRow));
        data.u8(clampColumn(area.firstColumn));
        data.u8(clampColumn(area.lastColumn));
        m_target.finish();
    }

    void writeMergedCells()
    {
        const std::vector<CellRect> areas = withoutOverlaps(m_sheet.merged);
        for (std::size_t first = 0; first < areas.size(); first += mostMergedInRecord) {
            const auto part = std::span(areas).subspan(first, std::min(mostMergedInRecord, areas.size() - first));
            ByteWriter& data = m_target.begin(record::mergedCells);
            data.u16(static_cast<std::uint16_t>(part.size()));
            for (const CellRect& area : part)
                for (const int edge : {area.firstRow, area.lastRow, area.firstColumn, area.lastColumn})
                    data.u16(static_cast<std::uint16_t>(edge));
            m_target.finish();
        }
    }

    void writeEnd() { m_target.write(record::eof, {}); }

    const Book& m_book;
    const Sheet& m_sheet;
    bool m_isActive;
    const std::vector<std::uint32_t>& m_strings;
    RecordWriter& m_target;
    KeptRecords m_kept;
    std::vector<int> m_rows;       ///< that have a ROW record
    std::size_t m_indexOffset = 0; ///< of the place for the offset of DEFCOLWIDTH, those of the blocks behind it
    std::size_t m_nextString = 0;
    ByteWriter m_tokens;
    ByteWriter m_behind;
    ByteWriter m_data;
};

/// A sheet that is no worksheet goes out as it came, selected or not as this workbook says.
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
        target.finish();
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
    if (substreamType(sheet) == SubstreamType::Worksheet)
        SheetWriter(book, sheet, isActive, strings, target).write();
    else
        writeKeptSheet(sheet, isActive, target);
}

} // namespace wagemill::engine::xls
