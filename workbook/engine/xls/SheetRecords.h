#pragma once

#include "workbook/engine/CellAddress.h"
#include "workbook/engine/CellValue.h"
#include "workbook/engine/xls/RecordFields.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace wagemill::engine::xls {

/// A number in four bytes ([MS-XLS] 2.5.217 RkNumber): 30 bits of an integer or the upper 30 bits of a double, either
/// of them a hundredth where bit 0 is set.
double numberOfRk(std::uint32_t rk);

/// The four bytes, where they give back exactly this number, which is finite.
std::optional<std::uint32_t> rkOfNumber(double number);

/// The error of a code in the file; a code that means none is #N/A.
ErrorCode errorOfCode(std::uint8_t code);

/// The areas in ascending order without those that lie outside the sheet, hold a single cell, or overlap an earlier
/// one: the file must have none of these.
std::vector<CellRect> withoutOverlaps(std::vector<CellRect> areas);

inline constexpr std::uint16_t maxColumnWidth = 255 * 256;
inline constexpr std::uint8_t wholeWindowPane = 3;
inline constexpr std::size_t window2Size = 18;
inline constexpr std::uint16_t gridLinesFlag = 0x0002;  ///< of WINDOW2
inline constexpr std::uint16_t fitToPagesFlag = 0x0100; ///< of WSBOOL

// Descriptions of records, see RecordFields.h.

/// With columns in 16 bits, as of merged cells.
void areaFields(auto form, auto& area)
{
    form.u16(area.firstRow, area.lastRow, area.firstColumn, area.lastColumn);
}

/// With columns in 8 bits, as of shared formulas.
void shortAreaFields(auto form, auto& area)
{
    form.u16(area.firstRow, area.lastRow);
    form.u8(area.firstColumn, area.lastColumn);
}

/// The beginning of the record of one cell.
struct CellHead {
    int row = 0;
    int column = 0;
    std::uint16_t format = 0; ///< as the file numbers it
};
void cellHeadFields(auto form, auto& head)
{
    form.u16(head.row, head.column, head.format);
}

/// What ROW says ([MS-XLS] 2.4.221) beside the flags of a Row.
struct RowHead {
    int row = 0;
    int firstColumn = 0;
    int endColumn = 0; ///< after the last one
    std::uint16_t heightTwips = 0;
    std::uint16_t format = 0; ///< as the file numbers it
    bool hasFormat = false;
    bool always = true; ///< a bit that is always set
};
void rowFields(auto form, auto& head, auto& row)
{
    form.u16(head.row, head.firstColumn, head.endColumn, head.heightTwips);
    form.zeros(4);
    form.bits16(Bits{0, 3, row.outlineLevel}, Bits{4, 1, row.collapsed}, Bits{5, 1, row.hidden},
                Bits{6, 1, row.heightSetByHand}, Bits{7, 1, head.hasFormat}, Bits{8, 1, head.always});
    form.u16(head.format);
}

/// COLINFO ([MS-XLS] 2.4.53).
void columnFields(auto form, auto& run)
{
    form.u16(run.first, run.last, run.width, run.format);
    form.bits16(Bits{0, 1, run.hidden}, Bits{1, 1, run.ownWidth}, Bits{8, 3, run.outlineLevel},
                Bits{12, 1, run.collapsed});
}

/// PANE ([MS-XLS] 2.4.189).
void paneFields(auto form, auto& panes)
{
    form.u16(panes.columns, panes.rows, panes.firstRow, panes.firstColumn);
    form.u8(panes.active);
}

} // namespace wagemill::engine::xls
