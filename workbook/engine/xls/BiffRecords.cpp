#include "workbook/engine/xls/BiffRecords.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>
#include <vector>

namespace wagemill::engine::xls {

namespace {

enum Placement { next, mixed }; ///< behind the record before it in the list, or anyhow mixed with it

struct PlacedRecord {
    std::uint16_t id;
    Placement placement;
};

// [MS-XLS] 2.1.7.20.3
// clang-format off
constexpr auto globalsOrder = std::to_array<PlacedRecord>({
    {0x0809, next}, // BOF
    {0x0060, next}, // TEMPLATE
    {0x0086, next}, // WRITEPROTECT
    {0x00E1, next}, // INTERFACEHDR
    {0x00C1, next}, // MMS
    {0x00E2, next}, // INTERFACEEND
    {0x005C, next}, // WRITEACCESS
    {0x005B, next}, // FILESHARING
    {0x0042, next}, // CODEPAGE
    {0x01B9, next}, // LEL
    {0x0161, next}, // DSF
    {0x01C0, next}, // EXCEL9FILE
    {0x013D, next}, // RRTABID
    {0x00D3, next}, // OBPROJ
    {0x01BD, next}, // OBNOMACROS
    {0x01BA, next}, // CODENAME
    {0x009C, next}, // BUILTINFNGROUPCOUNT
    {0x009A, next}, {0x0898, mixed}, // FNGROUPNAME FNGRP12
    {0x00DE, next}, // OLEOBJECTSIZE
    {0x0019, next}, // WINPROTECT
    {0x0012, next}, // PROTECT
    {0x0063, next}, // OBJPROTECT
    {0x0013, next}, // PASSWORD
    {0x01AF, next}, // PROT4REV
    {0x01BC, next}, // PROT4REVPASS
    {0x003D, next}, // WINDOW1
    {0x0040, next}, // BACKUP
    {0x008D, next}, // HIDEOBJ
    {0x0022, next}, // DATE1904
    {0x000E, next}, // CALCPRECISION
    {0x01B7, next}, // REFRESHALL
    {0x00DA, next}, // BOOKBOOL
    {0x0031, next}, // FONT
    {0x041E, next}, // FORMAT
    {0x00E0, next}, // XF
    {0x088D, next}, // DXF
    {0x0293, next}, {0x0892, mixed}, // STYLE STYLEEXT
    {0x088E, next}, {0x088F, mixed}, {0x0890, mixed}, // TABLESTYLES TABLESTYLE TABLESTYLEELEMENT
    {0x0092, next}, // PALETTE
    {0x105C, next}, // CLRTCLIENT
    {0x00D5, next}, // SXSTREAMID
    {0x00B8, next}, {0x00B9, mixed}, // DOCROUTE RECIPNAME
    {0x01A9, next}, // USERBVIEW
    {0x0160, next}, // USESELFS
    {0x0085, next}, // BOUNDSHEET
    {0x0884, next}, {0x0885, mixed}, {0x0886, mixed}, {0x0887, mixed}, {0x0888, mixed}, {0x0889, mixed}, {0x088A, mixed}, // MDTINFO MDXSTR MDXTUPLE MDXSET MDXPROP MDXKPI MDB
    {0x089A, next}, // MTRSETTINGS
    {0x08A3, next}, // FORCEFULLCALCULATION
    {0x008C, next}, // COUNTRY
    {0x01AE, next}, {0x0023, mixed}, {0x0059, mixed}, {0x005A, mixed}, {0x0017, mixed}, // SUPBOOK EXTERNNAME XCT CRN EXTERNSHEET
    {0x0018, next}, {0x0894, mixed}, {0x0899, mixed}, {0x0893, mixed}, // LBL NAMECMT NAMEFNGRP12 NAMEPUBLISH
    {0x0813, next}, // REALTIMEDATA
    {0x01C1, next}, // RECALCID
    {0x0866, next}, // HFPICTURE
    {0x00EB, next}, // MSODRAWINGGROUP
    {0x00FC, next}, // SST
    {0x00FF, next}, // EXTSST
    {0x0801, next}, // WEBPUB
    {0x080B, next}, // WOPT
    {0x0865, next}, // CRERR
    {0x0863, next}, // BOOKEXT
    {0x0867, next}, // FEATHDR
    {0x0876, next}, // DCONN
    {0x0896, next}, // THEME
    {0x089B, next}, // COMPRESSPICTURES
    {0x088C, next}, // COMPAT12
    {0x0897, next}, // GUIDTYPELIB
    {0x000A, next}, // EOF
});

// [MS-XLS] 2.1.7.20.5
constexpr auto worksheetOrder = std::to_array<PlacedRecord>({
    {0x0809, next}, // BOF
    {0x005E, next}, // UNCALCED
    {0x020B, next}, // INDEX
    {0x000D, next}, // CALCMODE
    {0x000C, next}, // CALCCOUNT
    {0x000F, next}, // CALCREFMODE
    {0x0011, next}, // CALCITER
    {0x0010, next}, // CALCDELTA
    {0x005F, next}, // CALCSAVERECALC
    {0x002A, next}, // PRINTROWCOL
    {0x002B, next}, // PRINTGRID
    {0x0082, next}, // GRIDSET
    {0x0080, next}, // GUTS
    {0x0225, next}, // DEFAULTROWHEIGHT
    {0x0081, next}, // WSBOOL
    {0x0097, next}, // SYNC
    {0x0098, next}, // LPR
    {0x001B, next}, // HORIZONTALPAGEBREAKS
    {0x001A, next}, // VERTICALPAGEBREAKS
    {0x0014, next}, // HEADER
    {0x0015, next}, // FOOTER
    {0x0083, next}, // HCENTER
    {0x0084, next}, // VCENTER
    {0x0026, next}, // LEFTMARGIN
    {0x0027, next}, // RIGHTMARGIN
    {0x0028, next}, // TOPMARGIN
    {0x0029, next}, // BOTTOMMARGIN
    {0x004D, next}, // PLS
    {0x00A1, next}, // SETUP
    {0x089C, next}, // HEADERFOOTER
    {0x00E9, next}, // BKHIM
    {0x0418, next}, {0x043C, mixed}, // BIGNAME CONTINUEBIGNAME
    {0x0019, next}, // WINPROTECT
    {0x0012, next}, // PROTECT
    {0x00DD, next}, // SCENARIOPROTECT
    {0x0063, next}, // OBJPROTECT
    {0x0013, next}, // PASSWORD
    {0x0055, next}, // DEFCOLWIDTH
    {0x007D, next}, // COLINFO
    {0x00AE, next}, {0x00AF, mixed}, // SCENMAN SCENARIO
    {0x0090, next}, // SORT
    {0x0895, next}, // SORTDATA
    {0x009B, next}, // FILTERMODE
    {0x0874, next}, // DROPDOWNOBJIDS
    {0x009D, next}, // AUTOFILTERINFO
    {0x009E, next}, {0x087E, mixed}, // AUTOFILTER AUTOFILTER12
    {0x0200, next}, // DIMENSIONS
    {0x0208, next}, // ROW
    {0x00D7, next}, // DBCELL
    {0x01C2, next}, // ENTEXU2
    {0x00EC, next}, {0x005D, mixed}, {0x01B6, mixed}, {0x00ED, mixed}, // MSODRAWING OBJ TXO MSODRAWINGSELECTION
    {0x0866, next}, // HFPICTURE
    {0x001C, next}, // NOTE
    {0x00B0, next}, // SXVIEW
    {0x0050, next}, {0x0051, mixed}, {0x0052, mixed}, {0x01B5, mixed}, // DCON DCONREF DCONNAME DCONBIN
    {0x023E, next}, // WINDOW2
    {0x088B, next}, // PLV
    {0x00A0, next}, // SCL
    {0x0041, next}, // PANE
    {0x001D, next}, // SELECTION
    {0x01AA, next}, // USERSVIEWBEGIN
    {0x0099, next}, // DXGCOL
    {0x00E5, next}, // MERGECELLS
    {0x015F, next}, // LRNG
    {0x01AD, next}, {0x00DC, mixed}, {0x0802, mixed}, // QSI DBORPARAMQRY QSISXTAG
    {0x00EF, next}, // PHONETICINFO
    {0x01B0, next}, {0x01B1, mixed}, {0x0879, mixed}, {0x087A, mixed}, {0x087B, mixed}, // CONDFMT CF CONDFMT12 CF12 CFEX
    {0x01B8, next}, {0x0800, mixed}, // HLINK HLINKTOOLTIP
    {0x01B2, next}, {0x01BE, mixed}, // DVAL DV
    {0x01BA, next}, // CODENAME
    {0x0801, next}, // WEBPUB
    {0x086C, next}, // CELLWATCH
    {0x0862, next}, // SHEETEXT
    {0x0867, next}, {0x0868, mixed}, {0x0871, mixed}, {0x0872, mixed}, {0x0878, mixed}, {0x0877, mixed}, // FEATHDR FEAT FEATHDR11 FEAT11 FEAT12 LIST12
    {0x000A, next}, // EOF
});

// [MS-XLS] 2.4; of records that are kept, so that one of a wrong size is noticed.
constexpr auto fixedSizes = std::to_array<std::pair<std::uint16_t, std::size_t>>({
    {0x000C, 2}, // CALCCOUNT
    {0x000D, 2}, // CALCMODE
    {0x000E, 2}, // CALCPRECISION
    {0x000F, 2}, // CALCREFMODE
    {0x0010, 8}, // CALCDELTA
    {0x0011, 2}, // CALCITER
    {0x0012, 2}, // PROTECT
    {0x0013, 2}, // PASSWORD
    {0x0019, 2}, // WINPROTECT
    {0x002B, 2}, // PRINTGRID
    {0x0033, 2}, // PRINTSIZE
    {0x003D, 18}, // WINDOW1
    {0x0040, 2}, // BACKUP
    {0x005C, 112}, // WRITEACCESS
    {0x005E, 2}, // UNCALCED
    {0x005F, 2}, // CALCSAVERECALC
    {0x0061, 2}, // INTL
    {0x0063, 2}, // OBJPROTECT
    {0x0080, 8}, // GUTS
    {0x0081, 2}, // WSBOOL
    {0x0082, 2}, // GRIDSET
    {0x0086, 0}, // WRITEPROTECT
    {0x008C, 4}, // COUNTRY
    {0x008D, 2}, // HIDEOBJ
    {0x0097, 4}, // SYNC
    {0x0099, 2}, // DXGCOL
    {0x009B, 0}, // FILTERMODE
    {0x009C, 2}, // BUILTINFNGROUPCOUNT
    {0x009D, 2}, // AUTOFILTERINFO
    {0x00A0, 4}, // SCL
    {0x00C1, 2}, // MMS
    {0x00D3, 0}, // OBPROJ
    {0x00D5, 2}, // SXSTREAMID
    {0x00DA, 2}, // BOOKBOOL
    {0x00DD, 2}, // SCENARIOPROTECT
    {0x00E1, 2}, // INTERFACEHDR
    {0x00E2, 0}, // INTERFACEEND
    {0x00E3, 2}, // SXVS
    {0x0160, 2}, // USESELFS
    {0x0161, 2}, // DSF
    {0x01AB, 2}, // USERSVIEWEND
    {0x01AF, 2}, // PROT4REV
    {0x01B2, 18}, // DVAL
    {0x01B7, 2}, // REFRESHALL
    {0x01BC, 2}, // PROT4REVPASS
    {0x01BD, 0}, // OBNOMACROS
    {0x01C0, 0}, // EXCEL9FILE
    {0x0225, 4}, // DEFAULTROWHEIGHT
    {0x0236, 16}, // TABLE
});
// clang-format on

using RankTable = std::vector<std::pair<std::uint16_t, int>>;

RankTable rankTable(std::span<const PlacedRecord> order)
{
    RankTable table;
    int rank = -1;
    for (const auto& [id, placement] : order) {
        rank += placement == next ? 1 : 0;
        table.emplace_back(id, rank);
    }
    std::ranges::sort(table);
    return table;
}

template <typename Value>
std::optional<Value> valueOf(std::span<const std::pair<std::uint16_t, Value>> sorted, std::uint16_t id)
{
    const auto found = std::ranges::lower_bound(sorted, id, {}, &std::pair<std::uint16_t, Value>::first);
    if (found == sorted.end() || found->first != id)
        return std::nullopt;
    return found->second;
}

} // namespace

std::optional<int> globalsRank(std::uint16_t id)
{
    static const RankTable table = rankTable(globalsOrder);
    return valueOf<int>(table, id);
}

std::optional<int> worksheetRank(std::uint16_t id)
{
    static const RankTable table = rankTable(worksheetOrder);
    return valueOf<int>(table, id);
}

std::optional<std::size_t> fixedSize(std::uint16_t id)
{
    return valueOf<std::size_t>(fixedSizes, id);
}

} // namespace wagemill::engine::xls
