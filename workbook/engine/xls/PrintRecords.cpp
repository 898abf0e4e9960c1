#include "workbook/engine/xls/Substreams.h"

#include <utility>
#include <variant>

namespace wagemill::engine::xls {

namespace {

/// What a record of the print set-up but SETUP holds.
using Member = std::variant<bool PrintSetup::*, double PrintSetup::*, std::string PrintSetup::*,
                            std::vector<PageBreak> PrintSetup::*>;
constexpr auto members = sortedById(std::to_array<ById<Member>>({
    {record::printHeadings, &PrintSetup::headings},
    {record::printGridLines, &PrintSetup::gridLines},
    {record::rowBreaks, &PrintSetup::rowBreaks},
    {record::columnBreaks, &PrintSetup::columnBreaks},
    {record::header, &PrintSetup::header},
    {record::footer, &PrintSetup::footer},
    {record::centerHorizontally, &PrintSetup::centerHorizontally},
    {record::centerVertically, &PrintSetup::centerVertically},
    {record::leftMargin, &PrintSetup::left},
    {record::rightMargin, &PrintSetup::right},
    {record::topMargin, &PrintSetup::top},
    {record::bottomMargin, &PrintSetup::bottom},
}));

// Flags of SETUP, [MS-XLS] 2.4.257.
constexpr std::uint16_t overThenDownFlag = 0x0001;
constexpr std::uint16_t portraitFlag = 0x0002;
constexpr std::uint16_t noPrinterSettingsFlag = 0x0004; ///< paper, scale, resolution, copies, orientation mean nothing
constexpr std::uint16_t noOrientationFlag = 0x0040;
constexpr std::uint16_t ownFirstPageFlag = 0x0080;

void setupFields(auto form, auto& setup, auto& flags)
{
    form.u16(setup.paper, setup.scalePercent, setup.firstPage, setup.pagesWide, setup.pagesHigh, flags,
             setup.horizontalResolution, setup.verticalResolution);
    form.real(setup.headerMargin);
    form.real(setup.footerMargin);
    form.u16(setup.copies);
}

void pageBreakFields(auto form, auto& pageBreak)
{
    form.u16(pageBreak.at, pageBreak.first, pageBreak.last);
}

bool isMargin(double inches)
{
    return inches >= 0 && inches < 49; // also false for what is not a number
}

void readMember(ByteReader& reader, bool& mark)
{
    mark = reader.u16() == 1;
}

void readMember(ByteReader& reader, double& margin)
{
    if (const double inches = reader.real(); isMargin(inches))
        margin = inches;
}

void readMember(ByteReader& reader, std::string& text)
{
    text = reader.atEnd() ? "" : readString(reader);
}

void readMember(ByteReader& reader, std::vector<PageBreak>& breaks)
{
    std::vector<PageBreak> read;
    for (std::size_t count = reader.u16(); count > 0; --count)
        pageBreakFields(FieldReader(reader), read.emplace_back());
    breaks = std::move(read);
}

void writeMember(RecordWriter& target, std::uint16_t id, bool mark)
{
    target.writeU16(id, mark);
}

void writeMember(RecordWriter& target, std::uint16_t id, double margin)
{
    target.begin(id).real(margin);
}

/// HEADER and FOOTER, [MS-XLS] 2.4.136: nothing, or a text.
void writeMember(RecordWriter& target, std::uint16_t id, const std::string& text)
{
    ByteWriter& data = target.begin(id);
    if (!text.empty())
        writeString(data, text);
}

void writeMember(RecordWriter& target, std::uint16_t id, const std::vector<PageBreak>& breaks)
{
    if (breaks.empty())
        return;
    ByteWriter& data = target.begin(id);
    data.u16(static_cast<std::uint16_t>(breaks.size()));
    for (const PageBreak& pageBreak : breaks)
        pageBreakFields(FieldWriter(data), pageBreak);
}

void readPageSetup(ByteReader reader, PrintSetup& setup)
{
    constexpr std::uint16_t minScale = 10;
    constexpr std::uint16_t maxScale = 400;
    PrintSetup read = setup;
    std::uint16_t flags = 0;
    setupFields(FieldReader(reader), read, flags);
    if (!isMargin(read.headerMargin))
        read.headerMargin = setup.headerMargin;
    if (!isMargin(read.footerMargin))
        read.footerMargin = setup.footerMargin;
    read.overThenDown = (flags & overThenDownFlag) != 0;
    read.landscape = (flags & (portraitFlag | noOrientationFlag | noPrinterSettingsFlag)) == 0;
    read.ownFirstPage = (flags & ownFirstPageFlag) != 0;
    read.otherFlags = flags & static_cast<std::uint16_t>(~(overThenDownFlag | portraitFlag | ownFirstPageFlag));
    if ((flags & noPrinterSettingsFlag) != 0 || read.scalePercent < minScale || read.scalePercent > maxScale)
        read.scalePercent = 100;
    if ((flags & noPrinterSettingsFlag) != 0)
        read.paper = 0;
    setup = std::move(read);
}

void writePageSetup(RecordWriter& target, const PrintSetup& setup)
{
    const auto flags =
        static_cast<std::uint16_t>(setup.otherFlags | (setup.overThenDown ? overThenDownFlag : 0) |
                                   (setup.landscape ? 0 : portraitFlag) | (setup.ownFirstPage ? ownFirstPageFlag : 0));
    setupFields(FieldWriter(target.begin(record::pageSetup)), setup, flags);
}

} // namespace

bool readPrintRecord(const Record& record, PrintSetup& setup)
try {
    ByteReader reader = record.reader();
    const Member* const member = findById(members, record.id);
    if (record.id == record::pageSetup)
        readPageSetup(reader, setup);
    else if (member != nullptr)
        std::visit([&](auto held) { readMember(reader, setup.*held); }, *member);
    return record.id == record::pageSetup || member != nullptr;
} catch (const DamagedFile&) {
    return true;
}

void writePrintRecord(RecordWriter& target, std::uint16_t id, const PrintSetup& setup)
{
    if (const Member* const member = findById(members, id))
        std::visit([&](auto held) { writeMember(target, id, setup.*held); }, *member);
    else
        writePageSetup(target, setup);
}

} // namespace wagemill::engine::xls
