#pragma once

#include "workbook/engine/CellAddress.h"
#include "workbook/engine/CellStyle.h"
#include "workbook/engine/CellValue.h"
#include "workbook/engine/Formula.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace wagemill::engine {

/// A record of the file that we keep without understanding it, with the CONTINUE records after it.
struct KeptRecord {
    std::uint16_t id = 0;
    std::vector<std::byte> data;
    std::vector<std::vector<std::byte>> continued;

    bool operator==(const KeptRecord&) const = default;
};

/// Formatting runs of a text whose letters do not all look the same: from character `first` (UTF-16 units) on, `font`.
struct TextRun {
    std::uint16_t first = 0;
    std::uint16_t font = 0; ///< index into StyleTable::fonts

    bool operator==(const TextRun&) const = default;
};

/// The cells that one array formula or data table fills. Each of them holds this, and the formula as a whole.
struct ArrayArea {
    CellRect cells;
    std::uint16_t flags = 0; ///< of the file
    KeptRecord table = {};   ///< of a data table, which is not computed: as in the file

    bool isTable() const { return table.id != 0; }
};

struct Cell {
    std::int16_t column = 0;
    std::uint16_t format = defaultCellFormat; ///< index into StyleTable::formats
    std::uint32_t waiting = 0;                ///< only while the workbook is computed: the formula that gives the value
    CellValue value;                          ///< the content, or the last result of the formula
    std::shared_ptr<const Formula> formula;   ///< none: a constant; shared between equal cells, never changed in place
    std::shared_ptr<const std::vector<TextRun>> runs; ///< only of a text constant
    std::shared_ptr<const ArrayArea> array;           ///< where the formula is that of an array; see there
};

struct Row {
    std::vector<Cell> cells; ///< ascending columns, each at most once
    std::optional<std::uint16_t> heightTwips;
    bool heightSetByHand = false;
    bool hidden = false;
    std::uint8_t outlineLevel = 0;
    bool collapsed = false;
    std::optional<std::uint16_t> format; ///< of the cells of the row that have none of their own

    bool isPlain() const; ///< nothing but cells: no height, format or outline of its own
};

struct ColumnRun {
    int first = 0;
    int last = 0;
    std::uint16_t width = 8 * 256; ///< in 1/256 of the width of the digit 0 in the default font
    std::uint16_t format = defaultCellFormat;
    bool hidden = false;
    bool ownWidth = true;
    std::uint8_t outlineLevel = 0;
    bool collapsed = false;

    bool operator==(const ColumnRun&) const = default;
};

/// Where the user is in a sheet: the active cell is in the area, and both are inside the sheet.
struct SheetSelection {
    CellAddress active;
    CellRect area;

    bool operator==(const SheetSelection&) const = default;
};

/// The window of a sheet in panes, frozen ones above all: columns at the left and rows at the top that stay in view.
struct SheetPanes {
    std::uint16_t columns = 0; ///< where the panes are split and not frozen, twips
    std::uint16_t rows = 0;
    std::uint16_t firstRow = 0; ///< in view below
    std::uint16_t firstColumn = 0;
    std::uint8_t active = 2; ///< as in the file ([MS-XLS] 2.5.195 PaneType): 2 is the lower one

    bool operator==(const SheetPanes&) const = default;
};

/// A new page begins with that row or column, counting from 0.
struct PageBreak {
    std::uint16_t at = 0;
    std::uint16_t first = 0;  ///< the columns or rows that it cuts, as in the file
    std::uint16_t last = 255; ///< all columns; a break before a column cuts rows 0 to 65535

    bool operator==(const PageBreak&) const = default;
};

/// How a sheet is printed. Margins are inches.
struct PrintSetup {
    std::uint16_t paper = 0; ///< its number in the file ([MS-XLS] 2.4.257); 0 is the printer's own
    bool landscape = false;
    std::uint16_t scalePercent = 100; ///< where it is not fitted to pages
    bool fitToPages = false;          ///< made smaller until it needs at most these pages; 0: as many as needed
    std::uint16_t pagesWide = 1;
    std::uint16_t pagesHigh = 1;
    double left = 0.75;
    double right = 0.75;
    double top = 1;
    double bottom = 1;
    double headerMargin = 0.5; ///< between the edge of the paper and the header
    double footerMargin = 0.5;
    bool centerHorizontally = false;
    bool centerVertically = false;
    std::string header; ///< with the codes of the file: &L &C &R, &P page, &N pages, &A sheet, &D date and others
    std::string footer;
    std::vector<PageBreak> rowBreaks; ///< ascending
    std::vector<PageBreak> columnBreaks;
    bool gridLines = false;
    bool headings = false;     ///< column letters and row numbers
    bool overThenDown = false; ///< the order of the pages
    bool ownFirstPage = false; ///< the first page has the number firstPage, else 1
    std::uint16_t firstPage = 1;
    std::uint16_t copies = 1;
    std::uint16_t horizontalResolution = 600; ///< dots per inch
    std::uint16_t verticalResolution = 600;
    std::uint16_t otherFlags = 0; ///< of the SETUP record: draft, comments and the like, kept as they came

    bool operator==(const PrintSetup&) const = default;
};

inline constexpr std::size_t maxSheetName = 31; ///< UTF-16 units

/// One worksheet: cells by row, widths, heights, merged areas, selection, and what the file held besides.
class Sheet {
public:
    std::string name;
    bool hidden = false;
    bool veryHidden = false;        ///< a hidden one that the application does not offer to show
    bool isFiltered = false;        ///< a filter hides rows
    std::vector<ColumnRun> columns; ///< ascending, never overlapping
    std::vector<CellRect> merged;
    SheetSelection selection;
    std::optional<SheetPanes> panes;
    PrintSetup print;
    std::uint16_t defaultRowHeightTwips = 255;
    std::uint16_t defaultColumnWidth = 8; ///< whole characters, without the five pixels of margin
    bool showGridLines = true;
    std::vector<KeptRecord> kept; ///< in the order of the file
    bool isKeptWhole = false;     ///< a sheet of another kind, a chart: its beginning and end are kept, too

    /// The cell, or null when nothing was ever put there.
    const Cell* find(CellAddress address) const;
    Cell* find(CellAddress address);
    /// The cell, made with the format of its row or column when it is not there yet.
    /// Throws std::out_of_range when the address lies outside the sheet.
    Cell& at(CellAddress address);
    /// The cell's own format, or that of its row or column.
    std::uint16_t formatAt(CellAddress address) const;
    /// The value of the cell, Empty where there is none.
    const CellValue& value(CellAddress address) const;

    const std::vector<Row>& rows() const { return m_rows; }
    /// The row, made when it is not there yet. index  inside the sheet
    Row& row(int index);
    const Row* findRow(int index) const;

    /// The block that holds every cell that is there, also those that only carry a format; nothing in an empty sheet.
    std::optional<CellRect> usedRange() const;

    /// Width in 1/256 characters, 0 when hidden. Height in twips, 0 when hidden.
    int columnWidth(int column) const;
    int rowHeightTwips(int row) const;

    /// Pastes the whole rows `first` to `last`, with heights, formats and merged areas, so that they begin at row
    /// `target`: relative references move along. Throws std::out_of_range when they would leave the sheet.
    void copyRows(int first, int last, int target);

private:
    std::vector<Row> m_rows; ///< by row index, as long as the last row that is there
};

} // namespace wagemill::engine
