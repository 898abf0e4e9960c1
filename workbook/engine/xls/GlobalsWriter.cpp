#include "workbook/engine/xls/GlobalsWriter.h"

#include "app/base/text/Unicode.h"
#include "workbook/engine/xls/FormulaTokensXls.h"
#include "workbook/engine/xls/RecordStrings.h"
#include "workbook/engine/xls/StyleRecords.h"
#include "workbook/engine/xls/WriteSteps.h"

#include <algorithm>
#include <array>

namespace wagemill::engine::xls {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t longestSheetName = 31;
constexpr std::size_t longestUserName = 54;
constexpr std::size_t userNameSize = 112;
constexpr std::size_t window1Size = 18;
constexpr std::uint16_t ownBookMark = 0x0401;
constexpr std::uint16_t addInMark = 0x3A01;
constexpr std::int16_t missingSheet = -1;
constexpr std::int16_t wholeBook = -2;
constexpr std::uint32_t recalculationEngine = 0; // none: whoever opens the workbook computes it anew

/// The built-in styles of the first formats: format with 0x8000, number of the style, outline level FF
/// ([MS-XLS] 2.4.269).
constexpr auto builtInStyles =
    std::to_array<std::string_view>({"\x10\x80\x03\xFF"sv, "\x11\x80\x06\xFF"sv, "\x12\x80\x04\xFF"sv,
                                     "\x13\x80\x07\xFF"sv, "\x00\x80\x00\xFF"sv, "\x14\x80\x05\xFF"sv});

/// Window of the size that fits a screen, tabs three fifths of its width.
constexpr auto standardWindow = "\xE0\x01\x5A\x00\xCF\x3F\x4E\x2A\x38\x00\x00\x00\x00\x00\x01\x00\x58\x02"sv;

std::string shortened(std::string_view utf8, std::size_t units)
{
    return toUtf8(toUtf16(utf8).substr(0, units));
}

std::uint8_t boundSheetType(SubstreamType type)
{
    switch (type) {
    case SubstreamType::Chart:
        return 2;
    case SubstreamType::VisualBasic:
        return 6;
    default:
        return 0;
    }
}

class GlobalsWriter {
public:
    GlobalsWriter(const Book& book, FileKind kind, std::size_t activeSheet, const SharedStringTable& strings,
                  RecordWriter& target)
        : m_book(book),
          m_kind(kind),
          m_activeSheet(activeSheet),
          m_strings(strings),
          m_target(target),
          m_kept(book.kept, globalsRank)
    {
        m_kept.leaveOutWrongSizes();
        m_kept.leaveOut(record::window1);
        m_kept.leaveOut(record::style);
    }

    std::vector<std::size_t> write()
    {
        using Writer = GlobalsWriter;
        static constexpr auto steps = std::to_array<WriteStep<Writer>>({
            {record::bof, &Writer::writeBeginning},
            {record::fileTemplate, &Writer::writeTemplateMark},
            {0x00E1, nullptr, "\xB0\x04"sv}, // INTERFACEHDR
            {0x00C1, nullptr, "\0\0"sv},     // MMS
            {0x00E2, nullptr, ""sv},         // INTERFACEEND
            {record::writeAccess, &Writer::writeUserName},
            {record::codePage, &Writer::writeCodePage},
            {0x0161, nullptr, "\0\0"sv}, // DSF
            {record::sheetIds, &Writer::writeSheetIds},
            {0x009C, nullptr, "\x0E\0"sv}, // BUILTINFNGROUPCOUNT
            {0x0019, nullptr, "\0\0"sv},   // WINPROTECT
            {0x0012, nullptr, "\0\0"sv},   // PROTECT
            {0x0013, nullptr, "\0\0"sv},   // PASSWORD
            {0x01AF, nullptr, "\0\0"sv},   // PROT4REV
            {0x01BC, nullptr, "\0\0"sv},   // PROT4REVPASS
            {record::window1, &Writer::writeWindow},
            {0x0040, nullptr, "\0\0"sv}, // BACKUP
            {0x008D, nullptr, "\0\0"sv}, // HIDEOBJ
            {record::date1904, &Writer::writeDateSystem},
            {0x000E, nullptr, "\1\0"sv}, // CALCPRECISION
            {0x01B7, nullptr, "\0\0"sv}, // REFRESHALL
            {0x00DA, nullptr, "\0\0"sv}, // BOOKBOOL
            {record::font, &Writer::writeFonts},
            {record::numberFormat, &Writer::writeNumberFormats},
            {record::extendedFormat, &Writer::writeCellFormats},
            {record::style, &Writer::writeStyles},
            {record::palette, &Writer::writeOwnPalette},
            {0x0160, nullptr, "\0\0"sv}, // USESELFS
            {record::boundSheet, &Writer::writeBoundSheets},
            {0x008C, nullptr, "\1\0\1\0"sv}, // COUNTRY
            {record::supportingBook, &Writer::writeSupportingBooks},
            {record::definedName, &Writer::writeNames},
            {record::recalculationId, &Writer::writeRecalculationId},
            {record::sharedStrings, &Writer::writeStrings},
            {0x088C, nullptr, "\x8C\x08\0\0\0\0\0\0\0\0\0\0\1\0\0\0"sv}, // COMPAT12: Excel saves without checking
            {record::eof, &Writer::writeEnd},
        });
        writeSteps<Writer>(*this, steps, m_kept, m_target);
        return std::move(m_sheetOffsets);
    }

private:
    void writeBeginning()
    {
        m_target.write(record::bof,
                       std::as_bytes(std::span("\x00\x06\x05\x00\xA9\x1F\xCD\x07\xC9\x00\x01\x00\x06\x04\x00\x00"sv)));
    }

    void writeTemplateMark()
    {
        if (m_kind == FileKind::Template)
            m_target.write(record::fileTemplate, {});
    }

    void writeUserName()
    {
        if (m_kept.writeAt(record::writeAccess, m_target))
            return;
        ByteWriter& data = m_target.begin(record::writeAccess);
        const std::size_t start = data.size();
        writeString(data, shortened(m_book.properties.lastAuthor, longestUserName));
        while (data.size() < start + userNameSize)
            data.u8(' ');
        m_target.finish();
    }

    void writeCodePage() { m_target.writeU16(record::codePage, 1200); }

    void writeSheetIds()
    {
        ByteWriter& data = m_target.begin(record::sheetIds);
        for (std::size_t index = 1; index <= m_book.sheets.size(); ++index)
            data.u16(static_cast<std::uint16_t>(index));
        m_target.finish();
    }

    void writeWindow()
    {
        const KeptRecord* const kept = m_kept.find(record::window1);
        const bool usable = kept != nullptr && kept->data.size() == window1Size;
        ByteWriter& data = m_target.begin(record::window1);
        const std::size_t start = data.size();
        data.bytes(usable ? std::span<const std::byte>(kept->data) : std::as_bytes(std::span(standardWindow)));
        putU16(data.view(), start + 10, static_cast<std::uint16_t>(m_activeSheet));
        putU16(data.view(), start + 12, 0); // the first tab shown
        putU16(data.view(), start + 14, 1); // one sheet is selected
        m_target.finish();
    }

    void writeDateSystem() { m_target.writeU16(record::date1904, m_book.dates1904 ? 1 : 0); }

    void writeFonts()
    {
        for (const Font& font : m_book.styles.fonts)
            writeFont(m_target, font);
    }

    void writeNumberFormats()
    {
        for (const auto& [identifier, code] : m_book.styles.numberFormats) {
            if (identifier < firstOwnNumberFormat && !isWrittenNumberFormat(identifier))
                continue;
            ByteWriter& data = m_target.begin(record::numberFormat);
            data.u16(identifier);
            writeString(data, code);
            m_target.finish();
        }
    }

    void writeCellFormats()
    {
        for (const CellFormat& format : m_book.styles.formats)
            writeCellFormat(m_target, format);
    }

    bool isStyleFormat(std::size_t format) const
    {
        return format < m_book.styles.formats.size() && m_book.styles.formats[format].isStyle;
    }

    void writeStyles()
    {
        const auto isStyle = [](const KeptRecord& kept) { return kept.id == record::style; };
        const bool hasStyles = std::ranges::any_of(m_book.kept, isStyle);
        for (const std::string_view style : builtInStyles)
            if (!hasStyles && isStyleFormat(static_cast<unsigned char>(style.front())))
                m_target.write(record::style, std::as_bytes(std::span(style)));
        for (const KeptRecord& kept : m_book.kept)
            if (isStyle(kept))
                m_target.write(kept);
    }

    void writeOwnPalette()
    {
        if (m_book.styles.ownPalette)
            writePalette(m_target, m_book.styles);
    }

    void writeBoundSheets()
    {
        for (const auto& sheet : m_book.sheets) {
            if (toUtf16(sheet->name).size() > longestSheetName)
                throw EngineError("The name of the sheet \"" + sheet->name + "\" is longer than 31 characters.");
            ByteWriter& data = m_target.begin(record::boundSheet);
            m_sheetOffsets.push_back(data.size());
            data.u32(0);
            data.u8(!sheet->hidden ? 0 : sheet->veryHidden ? 2 : 1);
            data.u8(boundSheetType(substreamType(*sheet)));
            writeShortString(data, sheet->name);
            m_target.finish();
        }
    }

    bool needsOwnBook() const
    {
        return std::ranges::any_of(m_book.externSheets, [&](const ExternSheet& entry) {
            return entry.supportingBook >= m_book.supportingBooks.size();
        });
    }

    void writeSupportingBooks()
    {
        for (const SupportingBook& book : m_book.supportingBooks) {
            writeSupportingBook(book);
            for (const KeptRecord& kept : book.kept)
                m_target.write(kept);
        }
        if (needsOwnBook())
            writeSupportingBook({});
        if (!m_book.externSheets.empty())
            writeExternSheets();
    }

    void writeSupportingBook(const SupportingBook& book)
    {
        if (book.kind == SupportingBook::Kind::Foreign) {
            m_target.write(book.record);
            return;
        }
        const bool own = book.kind == SupportingBook::Kind::Own;
        ByteWriter& data = m_target.begin(record::supportingBook);
        data.u16(own ? static_cast<std::uint16_t>(m_book.sheets.size()) : std::uint16_t{1});
        data.u16(own ? ownBookMark : addInMark);
        m_target.finish();
    }

    void writeExternSheets()
    {
        ByteWriter data;
        data.u16(static_cast<std::uint16_t>(m_book.externSheets.size()));
        for (const ExternSheet& entry : m_book.externSheets) {
            const ExternSheet written = writtenExternSheet(entry);
            data.u16(written.supportingBook);
            data.u16(static_cast<std::uint16_t>(written.first));
            data.u16(static_cast<std::uint16_t>(written.last));
        }
        m_target.write(record::externSheet, data.view());
    }

    /// An entry that names no sheets of ours, or not in their order, is one of sheets that are gone.
    ExternSheet writtenExternSheet(const ExternSheet& entry) const
    {
        if (entry.supportingBook >= m_book.supportingBooks.size())
            return {static_cast<std::uint16_t>(m_book.supportingBooks.size()), missingSheet, missingSheet};
        if (m_book.supportingBooks[entry.supportingBook].kind != SupportingBook::Kind::Own)
            return entry;
        const auto sheets = static_cast<int>(m_book.sheets.size());
        const bool wholeOwnBook = entry.first == wholeBook && entry.last == wholeBook;
        if (wholeOwnBook || (entry.first >= 0 && entry.first <= entry.last && entry.last < sheets))
            return entry;
        return {entry.supportingBook, missingSheet, missingSheet};
    }

    void writeNames()
    {
        for (const DefinedName& name : m_book.names)
            if (name.record.data.empty())
                writeOwnName(name);
            else
                m_target.write(name.record);
    }

    void writeOwnName(const DefinedName& name)
    {
        const auto builtIn = std::ranges::find(builtInNames, name.name);
        const bool isBuiltIn = builtIn != builtInNames.end();
        const auto code = static_cast<char>(builtIn - builtInNames.begin());
        const Characters characters(isBuiltIn ? std::string_view(&code, 1) : std::string_view(name.name));
        if (characters.count < 1 || characters.count > 255)
            throw EngineError("The name \"" + name.name + "\" is empty or longer than 255 characters.");
        ByteWriter tokens;
        ByteWriter behind;
        writeFormula(name.formula, tokens, behind);
        ByteWriter data;
        data.u16(isBuiltIn ? builtInNameFlag : std::uint16_t{0});
        data.u8(0);
        data.u8(static_cast<std::uint8_t>(characters.count));
        data.u16(static_cast<std::uint16_t>(tokens.size()));
        data.u16(0);
        data.u16(static_cast<std::uint16_t>(name.sheet ? *name.sheet + 1 : 0));
        data.u32(0);
        data.u8(characters.wide ? 1 : 0);
        characters.append(data, 0, characters.count);
        data.bytes(tokens.view());
        data.bytes(behind.view());
        m_target.write(record::definedName, data.view());
    }

    void writeRecalculationId()
    {
        ByteWriter& data = m_target.begin(record::recalculationId);
        data.u16(record::recalculationId);
        data.u16(0);
        data.u32(recalculationEngine);
        m_target.finish();
    }

    void writeStrings() { m_strings.write(m_target); }

    void writeEnd() { m_target.write(record::eof, {}); }

    const Book& m_book;
    FileKind m_kind;
    std::size_t m_activeSheet;
    const SharedStringTable& m_strings;
    RecordWriter& m_target;
    KeptRecords m_kept;
    std::vector<std::size_t> m_sheetOffsets;
};

} // namespace

SubstreamType substreamType(const Sheet& sheet)
{
    if (!sheet.isKeptWhole)
        return SubstreamType::Worksheet;
    ByteReader reader(sheet.kept.front().data);
    reader.skip(2);
    return static_cast<SubstreamType>(reader.u16());
}

std::vector<std::size_t> writeGlobals(const Book& book, FileKind kind, std::size_t activeSheet,
                                      const SharedStringTable& strings, RecordWriter& target)
{
    return GlobalsWriter(book, kind, activeSheet, strings, target).write();
}

} // namespace wagemill::engine::xls
