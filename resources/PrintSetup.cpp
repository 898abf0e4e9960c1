#include "resources/PrintSetup.h"

#include "resources/RecordWriter.h"

#include <cstdint>
#include <utility>

namespace wagemill {

namespace {

using engine::CarriedRecord;

/// Record numbers, [MS-XLS] 2.3.2.
enum RecordId : std::uint16_t {
    Header = 0x0014,
    Footer = 0x0015,
    DefinedNameRecord = 0x0018,
    HorizontalPageBreaks = 0x001B,
    LeftMargin = 0x0026,
    RightMargin = 0x0027,
    TopMargin = 0x0028,
    BottomMargin = 0x0029,
    SheetSettings = 0x0081,
    CenterHorizontally = 0x0083,
    Setup = 0x00A1,
};

/// HEADER and FOOTER, [MS-XLS] 2.4.136: empty, or a text of plain characters.
CarriedRecord pageText(std::uint16_t id, const std::string& text)
{
    RecordWriter writer(id);
    if (!text.empty())
        writer.u16(static_cast<unsigned>(text.size())).u8(0).characters(text);
    return writer.take();
}

/// WSBOOL, [MS-XLS] 2.4.351: automatic outlines as in every new sheet, and whether the sheet is fitted to pages.
CarriedRecord sheetSettings(const PrintSetup& setup)
{
    constexpr unsigned newSheet = 0x04C1;
    constexpr unsigned fitToPages = 0x0100;
    return RecordWriter(SheetSettings).u16(newSheet | (setup.fitWidth ? fitToPages : 0U)).take();
}

/// HORIZONTALPAGEBREAKS, [MS-XLS] 2.4.142.
CarriedRecord pageBreaks(const std::vector<int>& rows)
{
    constexpr unsigned lastColumn = 255;
    RecordWriter writer(HorizontalPageBreaks);
    writer.u16(static_cast<unsigned>(rows.size()));
    for (const int row : rows)
        writer.u16(static_cast<unsigned>(row)).u16(0).u16(lastColumn);
    return writer.take();
}

/// SETUP, [MS-XLS] 2.4.257.
CarriedRecord pageSetup(const PrintSetup& setup)
{
    constexpr unsigned printersOwnPaper = 0;
    constexpr unsigned portrait = 0x0002;
    constexpr unsigned dotsPerInch = 600;
    constexpr double headerMargin = 0.3;
    const unsigned pagesHigh = setup.fitWidth ? 0 : 1; // 0: as many as needed
    return RecordWriter(Setup)
        .u16(printersOwnPaper)
        .u16(static_cast<unsigned>(setup.scalePercent))
        .u16(1) // number of the first page
        .u16(1) // pages wide
        .u16(pagesHigh)
        .u16(setup.landscape ? 0 : portrait)
        .u16(dotsPerInch)
        .u16(dotsPerInch)
        .real(headerMargin)
        .real(headerMargin)
        .u16(1) // copies
        .take();
}

} // namespace

std::vector<CarriedRecord> printRecords(const PrintSetup& setup)
{
    std::vector<CarriedRecord> records = {sheetSettings(setup)};
    if (!setup.pageBreaks.empty())
        records.push_back(pageBreaks(setup.pageBreaks));
    records.push_back(pageText(Header, setup.header));
    records.push_back(pageText(Footer, setup.footer));
    records.push_back(RecordWriter(CenterHorizontally).u16(setup.centerOnPage ? 1 : 0).take());
    for (const auto& [id, inches] : {std::pair{LeftMargin, setup.left}, std::pair{RightMargin, setup.right},
                                     std::pair{TopMargin, setup.top}, std::pair{BottomMargin, setup.bottom}})
        records.push_back(RecordWriter(id).real(inches).take());
    records.push_back(pageSetup(setup));
    return records;
}

/// LBL, [MS-XLS] 2.4.150: the built-in name of the rows that are repeated, with whole rows as its reference.
void repeatRows(engine::Book& book, std::size_t sheet, int first, int last)
{
    constexpr unsigned builtIn = 0x0020;
    constexpr unsigned printTitles = 0x07;
    constexpr unsigned areaOnSheet = 0x3B;
    constexpr unsigned tokenBytes = 11;
    constexpr unsigned lastColumn = 255;
    engine::DefinedName name;
    name.name = "Print_Titles";
    name.sheet = static_cast<std::uint16_t>(sheet);
    RecordWriter writer(DefinedNameRecord);
    writer.u16(builtIn).u8(0).u8(1).u16(tokenBytes).u16(0).u16(static_cast<unsigned>(sheet) + 1);
    writer.u8(0).u8(0).u8(0).u8(0); // no menu, description, help and status texts
    writer.u8(0).u8(printTitles);
    writer.u8(areaOnSheet).u16(book.externSheetFor(sheet)).u16(static_cast<unsigned>(first));
    writer.u16(static_cast<unsigned>(last)).u16(0).u16(lastColumn);
    name.record = writer.take();
    book.names.push_back(std::move(name));
}

} // namespace wagemill
