#include "resources/FrozenRows.h"

#include "resources/RecordWriter.h"

namespace wagemill {

namespace {

constexpr std::uint16_t window2 = 0x023E;   // [MS-XLS] 2.4.346
constexpr std::uint16_t pane = 0x0041;      // [MS-XLS] 2.4.189
constexpr std::uint16_t selection = 0x001D; // [MS-XLS] 2.4.248

/// Numbers of the panes, [MS-XLS] 2.5.195 PaneType.
constexpr unsigned upperPane = 3;
constexpr unsigned lowerPane = 2;

} // namespace

std::vector<engine::CarriedRecord> frozenRowRecords(int rows)
{
    // Zero values, row and column headings, outline symbols and automatic grid colour as in every new sheet; frozen,
    // and not left split when no longer frozen.
    constexpr unsigned windowFlags = 0x00B6 | 0x0008 | 0x0100;
    constexpr unsigned automaticGridColor = 0x40;
    const auto height = static_cast<unsigned>(rows);
    return {
        RecordWriter(window2)
            .u16(windowFlags)
            .u16(0) // first row in view
            .u16(0) // first column in view
            .u16(automaticGridColor)
            .u16(0)
            .u16(0) // zoom of the page break preview, and of the normal view: the standard ones
            .u16(0)
            .u16(0)
            .u16(0)
            .take(),
        RecordWriter(pane)
            .u16(0) // columns on the left
            .u16(height)
            .u16(height) // first row in view below
            .u16(0)
            .u8(lowerPane)
            .u8(0)
            .take(),
        RecordWriter(selection)
            .u8(upperPane)
            .u16(0)
            .u16(0)
            .u16(0)
            .u16(1) // areas: the one cell A1
            .u16(0)
            .u16(0)
            .u8(0)
            .u8(0)
            .take(),
    };
}

} // namespace wagemill
