#include "workbook/engine/xls/PrintRecords.h"

#include "app/base/Bytes.h"
#include "workbook/engine/xls/BiffRecords.h"
#include "workbook/engine/xls/RecordStrings.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

namespace wagemill::engine::xls {

namespace {

struct MarkRecord {
    std::uint16_t id;
    bool PrintSetup::*mark;
};
constexpr auto markRecords = std::to_array<MarkRecord>({
    {record::printHeadings, &PrintSetup::headings},
    {record::printGridLines, &PrintSetup::gridLines},
    {record::centerHorizontally, &PrintSetup::centerHorizontally},
    {record::centerVertically, &PrintSetup::centerVertically},
});

struct MarginRecord {
    std::uint16_t id;
    double PrintSetup::*margin;
};
constexpr auto marginRecords = std::to_array<MarginRecord>({
    {record::leftMargin, &PrintSetup::left},
    {record::rightMargin, &PrintSetup::right},
    {record::topMargin, &PrintSetup::top},
    {record::bottomMargin, &PrintSetup::bottom},
});

/// Flags of SETUP, [MS-XLS] 2.4.257.
enum SetupFlag : std::uint16_t {
    OverThenDown = 0x0001,
    Portrait = 0x0002,
    NoPrinterSettings = 0x0004, ///< paper, scale, resolution, copies and orientation mean nothing
    NoOrientation = 0x0040,
    OwnFirstPage = 0x0080,
};
constexpr std::uint16_t knownSetupFlags = OverThenDown | Portrait | OwnFirstPage;

bool isMargin(double inches)
{
    return inches >= 0 && inches < 49; // also false for what is not a number
}

void readMargin(ByteReader& reader, double& margin)
{
    if (const double inches = reader.real(); isMargin(inches))
        margin = inches;
}

void readPageSetup(ByteReader& reader, PrintSetup& setup)
{
    constexpr std::uint16_t minScale = 10;
    constexpr std::uint16_t maxScale = 400;
    PrintSetup read = setup;
    read.paper = reader.u16();
    read.scalePercent = reader.u16();
    read.firstPage = reader.u16();
    read.pagesWide = reader.u16();
    read.pagesHigh = reader.u16();
    const std::uint16_t flags = reader.u16();
    read.horizontalResolution = reader.u16();
    read.verticalResolution = reader.u16();
    readMargin(reader, read.headerMargin);
    readMargin(reader, read.footerMargin);
    read.copies = reader.u16();
    read.overThenDown = (flags & OverThenDown) != 0;
    read.landscape = (flags & (Portrait | NoOrientation | NoPrinterSettings)) == 0;
    read.ownFirstPage = (flags & OwnFirstPage) != 0;
    read.otherFlags = flags & static_cast<std::uint16_t>(~knownSetupFlags);
    if ((flags & NoPrinterSettings) != 0 || read.scalePercent < minScale || read.scalePercent > maxScale)
        read.scalePercent = 100;
    if ((flags & NoPrinterSettings) != 0)
        read.paper = 0;
    setup = read;
}

void readPageBreaks(ByteReader& reader, std::vector<PageBreak>& breaks)
{
    std::vector<PageBreak> read;
    for (std::size_t count = reader.u16(); count > 0; --count) {
        const std::uint16_t at = reader.u16();
        const std::uint16_t first = reader.u16();
        read.push_back({at, first, reader.u16()});
    }
    breaks = std::move(read);
}

void writePageBreaks(RecordWriter& target, std::uint16_t id, const std::vector<PageBreak>& breaks)
{
    if (breaks.empty())
        return;
    ByteWriter& data = target.begin(id);
    data.u16(static_cast<std::uint16_t>(breaks.size()));
    for (const PageBreak& pageBreak : breaks)
        for (const std::uint16_t number : {pageBreak.at, pageBreak.first, pageBreak.last})
            data.u16(number);
    target.finish();
}

/// HEADER and FOOTER, [MS-XLS] 2.4.136: nothing, or a text.
void writePageText(RecordWriter& target, std::uint16_t id, std::string_view text)
{
    ByteWriter& data = target.begin(id);
    if (!text.empty())
        writeString(data, text);
    target.finish();
}

bool readKnownRecord(const Record& record, PrintSetup& setup)
{
    ByteReader reader = record.reader();
    const auto mark = std::ranges::find(markRecords, record.id, &MarkRecord::id);
    const auto margin = std::ranges::find(marginRecords, record.id, &MarginRecord::id);
    if (mark != markRecords.end())
        setup.*mark->mark = reader.u16() == 1;
    else if (margin != marginRecords.end())
        readMargin(reader, setup.*margin->margin);
    else if (record.id == record::header || record.id == record::footer)
        (record.id == record::header ? setup.header : setup.footer) = reader.atEnd() ? "" : readString(reader);
    else if (record.id == record::rowBreaks || record.id == record::columnBreaks)
        readPageBreaks(reader, record.id == record::rowBreaks ? setup.rowBreaks : setup.columnBreaks);
    else if (record.id == record::pageSetup)
        readPageSetup(reader, setup);
    else
        return false;
    return true;
}

} // namespace

bool readPrintRecord(const Record& record, PrintSetup& setup)
try {
    return readKnownRecord(record, setup);
} catch (const DamagedFile&) {
    return true;
}

void writePrintMarks(RecordWriter& target, const PrintSetup& setup)
{
    target.writeU16(record::printHeadings, setup.headings ? 1 : 0);
    target.writeU16(record::printGridLines, setup.gridLines ? 1 : 0);
}

void writePageBreaks(RecordWriter& target, const PrintSetup& setup)
{
    writePageBreaks(target, record::rowBreaks, setup.rowBreaks);
    writePageBreaks(target, record::columnBreaks, setup.columnBreaks);
}

void writePageMargins(RecordWriter& target, const PrintSetup& setup)
{
    writePageText(target, record::header, setup.header);
    writePageText(target, record::footer, setup.footer);
    target.writeU16(record::centerHorizontally, setup.centerHorizontally ? 1 : 0);
    target.writeU16(record::centerVertically, setup.centerVertically ? 1 : 0);
    for (const auto& [id, margin] : marginRecords) {
        target.begin(id).real(setup.*margin);
        target.finish();
    }
}

void writePageSetup(RecordWriter& target, const PrintSetup& setup)
{
    ByteWriter& data = target.begin(record::pageSetup);
    data.u16(setup.paper);
    data.u16(setup.scalePercent);
    data.u16(setup.firstPage);
    data.u16(setup.pagesWide);
    data.u16(setup.pagesHigh);
    data.u16(static_cast<std::uint16_t>(setup.otherFlags | (setup.overThenDown ? OverThenDown : 0) |
                                        (setup.landscape ? 0 : Portrait) | (setup.ownFirstPage ? OwnFirstPage : 0)));
    data.u16(setup.horizontalResolution);
    data.u16(setup.verticalResolution);
    data.real(setup.headerMargin);
    data.real(setup.footerMargin);
    data.u16(setup.copies);
    target.finish();
}

} // namespace wagemill::engine::xls
