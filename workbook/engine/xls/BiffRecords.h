#pragma once

#include <cstddef>
#include <cstdint>

namespace wagemill::engine::xls {

/// Largest data of one record; more goes on in CONTINUE records ([MS-XLS] 2.1.4).
inline constexpr std::size_t maxRecordSize = 8224;

/// Most characters (UTF-16 units) of a cell's text.
inline constexpr std::size_t maxCellText = 32767;

inline constexpr std::uint16_t biff8Version = 0x0600;

/// Kinds of substreams, from the BOF record ([MS-XLS] 2.4.21) and the BOUNDSHEET record (2.4.28).
enum class SubstreamType : std::uint16_t { VisualBasic = 0x06, Worksheet = 0x10, Chart = 0x20, Macro = 0x40 };

/// Record numbers of BIFF8 ([MS-XLS] 2.3.2); only those that some rule of ours names.
namespace record {
inline constexpr std::uint16_t formula = 0x0006;
inline constexpr std::uint16_t eof = 0x000A;
inline constexpr std::uint16_t iterationTurns = 0x000C;
inline constexpr std::uint16_t iterationChange = 0x0010;
inline constexpr std::uint16_t iteration = 0x0011;
inline constexpr std::uint16_t header = 0x0014;
inline constexpr std::uint16_t footer = 0x0015;
inline constexpr std::uint16_t externSheet = 0x0017;
inline constexpr std::uint16_t definedName = 0x0018;
inline constexpr std::uint16_t columnBreaks = 0x001A;
inline constexpr std::uint16_t rowBreaks = 0x001B;
inline constexpr std::uint16_t selection = 0x001D;
inline constexpr std::uint16_t date1904 = 0x0022;
inline constexpr std::uint16_t externName = 0x0023;
inline constexpr std::uint16_t leftMargin = 0x0026;
inline constexpr std::uint16_t rightMargin = 0x0027;
inline constexpr std::uint16_t topMargin = 0x0028;
inline constexpr std::uint16_t bottomMargin = 0x0029;
inline constexpr std::uint16_t printHeadings = 0x002A;
inline constexpr std::uint16_t printGridLines = 0x002B;
inline constexpr std::uint16_t filePass = 0x002F;
inline constexpr std::uint16_t font = 0x0031;
inline constexpr std::uint16_t continuation = 0x003C;
inline constexpr std::uint16_t window1 = 0x003D;
inline constexpr std::uint16_t pane = 0x0041;
inline constexpr std::uint16_t codePage = 0x0042;
inline constexpr std::uint16_t defaultColumnWidth = 0x0055;
inline constexpr std::uint16_t externCount = 0x0059;
inline constexpr std::uint16_t externCache = 0x005A;
inline constexpr std::uint16_t uncalculated = 0x005E;
inline constexpr std::uint16_t writeAccess = 0x005C;
inline constexpr std::uint16_t fileTemplate = 0x0060;
inline constexpr std::uint16_t columnInfo = 0x007D;
inline constexpr std::uint16_t gutters = 0x0080;
inline constexpr std::uint16_t sheetSettings = 0x0081;
inline constexpr std::uint16_t centerHorizontally = 0x0083;
inline constexpr std::uint16_t centerVertically = 0x0084;
inline constexpr std::uint16_t boundSheet = 0x0085;
inline constexpr std::uint16_t palette = 0x0092;
inline constexpr std::uint16_t pageSetup = 0x00A1;
inline constexpr std::uint16_t multipleRk = 0x00BD;
inline constexpr std::uint16_t multipleBlank = 0x00BE;
inline constexpr std::uint16_t richString = 0x00D6;
inline constexpr std::uint16_t cellOffsets = 0x00D7;
inline constexpr std::uint16_t filterMode = 0x009B;
inline constexpr std::uint16_t extendedFormat = 0x00E0;
inline constexpr std::uint16_t mergedCells = 0x00E5;
inline constexpr std::uint16_t drawing = 0x00EC;
inline constexpr std::uint16_t sharedStrings = 0x00FC;
inline constexpr std::uint16_t sharedLabel = 0x00FD;
inline constexpr std::uint16_t extendedSharedStrings = 0x00FF;
inline constexpr std::uint16_t sheetIds = 0x013D;
inline constexpr std::uint16_t customViewBegin = 0x01AA;
inline constexpr std::uint16_t customViewEnd = 0x01AB;
inline constexpr std::uint16_t supportingBook = 0x01AE;
inline constexpr std::uint16_t recalculationId = 0x01C1;
inline constexpr std::uint16_t dimensions = 0x0200;
inline constexpr std::uint16_t blank = 0x0201;
inline constexpr std::uint16_t number = 0x0203;
inline constexpr std::uint16_t label = 0x0204;
inline constexpr std::uint16_t logicalOrError = 0x0205;
inline constexpr std::uint16_t formulaText = 0x0207;
inline constexpr std::uint16_t row = 0x0208;
inline constexpr std::uint16_t index = 0x020B;
inline constexpr std::uint16_t array = 0x0221;
inline constexpr std::uint16_t defaultRowHeight = 0x0225;
inline constexpr std::uint16_t dataTable = 0x0236;
inline constexpr std::uint16_t window2 = 0x023E;
inline constexpr std::uint16_t rk = 0x027E;
inline constexpr std::uint16_t style = 0x0293;
inline constexpr std::uint16_t olderFormula = 0x0406; ///< as some programs still number a formula of this format
inline constexpr std::uint16_t numberFormat = 0x041E;
inline constexpr std::uint16_t sharedFormula = 0x04BC;
inline constexpr std::uint16_t bof = 0x0809;
inline constexpr std::uint16_t formatChecksum = 0x087C;
inline constexpr std::uint16_t formatExtension = 0x087D;
} // namespace record

} // namespace wagemill::engine::xls
