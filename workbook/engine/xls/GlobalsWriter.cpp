#include "app/base/text/Unicode.h"
#include "workbook/engine/xls/FormulaTokens.h"
#include "workbook/engine/xls/Substreams.h"

#include <algorithm>
#include <array>

namespace wagemill::engine::xls {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t maxUserName = 54;
constexpr std::size_t userNameSize = 112;
constexpr std::int16_t missingSheet = -1;
constexpr std::int16_t wholeBook = -2;

/// The built-in styles of the first formats: format with 0x8000, number of the style, outline level FF
/// ([MS-XLS] 2.4.269).
constexpr auto builtInStyles =
    std::to_array<std::string_view>({"\x10\x80\x03\xFF"sv, "\x11\x80\x06\xFF"sv, "\x12\x80\x04\xFF"sv,
                                     "\x13\x80\x07\xFF"sv, "\x00\x80\x00\xFF"sv, "\x14\x80\x05\xFF"sv});

/// Window of the size that fits a screen, tabs three fifths of its width.
constexpr auto standardWindow = "\xE0\x01\x5A\x00\xCF\x3F\x4E\x2A\x38\x00\x00\x00\x00\x00\x01\x00\x58\x02"sv;

/// The public members write the records of one place each, see globalsPlaces.
class GlobalsWriter {
public:
    GlobalsWriter(const Book& book, FileKind kind, std::size_t activeSheet, const SharedStringTable& strings,
                  KeptRecords& kept, RecordWriter& target)
        : m_book(book), m_kind(kind), m_activeSheet(activeSheet), m_strings(strings), m_kept(kept), m_target(target)
    {
        kept.leaveOut(record::window1);
        kept.leaveOut(record::style);
    }

    /// Where the offset of each sheet is to be put in.
    const std::vector<std::size_t>& sheetOffsets() const { return m_sheetOffsets; }

    void writeBeginning()
    {
        m_target.write(record::bof, "\x00\x06\x05\x00\xA9\x1F\xCD\x07\xC9\x00\x01\x00\x06\x04\x00\x00"sv);
    }

    void writeTemplateMark()
    {
        if (m_kind == FileKind::Template)
            m_target.write(record::fileTemplate, ""sv);
    }

    void writeUserName()
    {
        if (m_kept.writeAt(record::writeAccess, m_target))
            return;
        ByteWriter& data = m_target.begin(record::writeAccess);
        const std::size_t start = data.size();
        writeString(data, toUtf8(toUtf16(m_book.properties.lastAuthor).substr(0, maxUserName)));
        while (data.size() < start + userNameSize)
            data.u8(' ');
    }

    void writeSheetIds()
    {
        ByteWriter& data = m_target.begin(record::sheetIds);
        for (std::size_t index = 1; index <= m_book.sheets.size(); ++index)
            data.u16(static_cast<std::uint16_t>(index));
    }

    void writeWindow()
    {
        ByteWriter& data = m_target.begin(record::window1);
        const std::size_t start = data.size();
        data.bytes(m_kept.data(record::window1, standardWindow));
        putU16(data.view(), start + 10, static_cast<std::uint16_t>(m_activeSheet));
        putU16(data.view(), start + 12, 0); // the first tab shown
        putU16(data.view(), start + 14, 1); // one sheet is selected
    }

    void writeDateSystem() { m_target.writeU16(record::date1904, m_book.dates1904); }

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
        }
    }

    void writeCellFormats()
    {
        for (const CellFormat& format : m_book.styles.formats)
            writeCellFormat(m_target, format);
    }

    void writeStyles()
    {
        const auto isStyle = [](const KeptRecord& kept) { return kept.id == record::style; };
        const bool hasStyles = std::ranges::any_of(m_book.kept, isStyle);
        for (const std::string_view style : builtInStyles)
            if (!hasStyles && m_book.styles.format(static_cast<unsigned char>(style.front())).isStyle)
                m_target.write(record::style, style);
        for (const KeptRecord& kept : m_book.kept)
            if (isStyle(kept))
                m_target.write(kept);
    }

    void writeOwnPalette() { writePalette(m_target, m_book.styles); }

    void writeBoundSheets()
    {
        for (const auto& sheet : m_book.sheets) {
            ByteWriter& data = m_target.begin(record::boundSheet);
            m_sheetOffsets.push_back(data.size());
            data.u32(0);
            data.u8(!sheet->hidden ? 0 : sheet->veryHidden ? 2 : 1);
            const SubstreamType type = substreamType(*sheet);
            data.u8(type == SubstreamType::Chart ? 2 : type == SubstreamType::VisualBasic ? 6 : 0);
            writeShortString(data, sheet->name);
        }
    }

    void writeSupportingBooks()
    {
        for (const SupportingBook& book : m_book.supportingBooks) {
            writeSupportingBook(book);
            for (const KeptRecord& kept : book.kept)
                m_target.write(kept);
            const auto written = std::ranges::count(book.kept, record::externName, &KeptRecord::id);
            for (const std::string& name : std::span(book.externNames).subspan(static_cast<std::size_t>(written)))
                writeAddInFunction(name);
        }
        const std::size_t books = m_book.supportingBooks.size();
        if (std::ranges::any_of(m_book.externSheets, [&](const auto& entry) { return entry.supportingBook >= books; }))
            writeSupportingBook({});
        if (!m_book.externSheets.empty())
            writeExternSheets();
    }

    /// EXTERNNAME ([MS-XLS] 2.4.105): no flags, the name, and #REF! for a formula.
    void writeAddInFunction(std::string_view name)
    {
        ByteWriter& data = m_target.begin(record::externName);
        data.zeros(6);
        writeShortString(data, name);
        data.u16(2);
        data.bytes(std::as_bytes(std::span("\x1C\x17"sv)));
    }

    void writeSupportingBook(const SupportingBook& book)
    {
        if (book.kind == SupportingBook::Kind::Foreign) {
            m_target.write(book.record);
            return;
        }
        const bool own = book.kind == SupportingBook::Kind::Own;
        m_target.writeU16(record::supportingBook, own ? m_book.sheets.size() : 1, own ? ownBookMark : addInMark);
    }

    void writeExternSheets()
    {
        ByteWriter data;
        data.u16(static_cast<std::uint16_t>(m_book.externSheets.size()));
        for (const ExternSheet& entry : m_book.externSheets) {
            const ExternSheet written = writtenExternSheet(entry);
            externSheetFields(FieldWriter(data), written);
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
        ByteWriter tokens;
        ByteWriter trailing;
        writeFormula(name.formula, tokens, trailing);
        const NameHead head{.isBuiltIn = isBuiltIn,
                            .length = characters.count,
                            .formulaSize = tokens.size(),
                            .sheet = name.sheet ? *name.sheet + 1 : 0};
        ByteWriter data;
        nameFields(FieldWriter(data), head);
        characters.append(data);
        data.bytes(tokens.view());
        data.bytes(trailing.view());
        m_target.write(record::definedName, data.view());
    }

    void writeStrings() { m_strings.write(m_target); }

    const Book& m_book;
    FileKind m_kind;
    std::size_t m_activeSheet;
    const SharedStringTable& m_strings;
    KeptRecords& m_kept;
    RecordWriter& m_target;
    std::vector<std::size_t> m_sheetOffsets;
};

// [MS-XLS] 2.1.7.20.3; RECALCID 0: whoever opens the workbook computes it again
// clang-format off
constexpr auto globalsPlaces = std::to_array<Place<GlobalsWriter>>({
    {record::bof, &GlobalsWriter::writeBeginning},
    {record::fileTemplate, &GlobalsWriter::writeTemplateMark},
    {0x0086}, // WRITEPROTECT
    {0x00E1, "\xB0\x04"sv}, {0x00C1, "\0\0"sv}, {0x00E2, ""sv}, // INTERFACEHDR MMS INTERFACEEND
    {record::writeAccess, &GlobalsWriter::writeUserName},
    {0x005B}, // FILESHARING
    {record::codePage, "\xB0\x04"sv},
    {0x01B9}, // LEL
    {0x0161, "\0\0"sv}, // DSF
    {0x01C0}, // EXCEL9FILE
    {record::sheetIds, &GlobalsWriter::writeSheetIds},
    {0x00D3}, {0x01BD}, {0x01BA}, // OBPROJ OBNOMACROS CODENAME
    {0x009C, "\x0E\0"sv}, // BUILTINFNGROUPCOUNT
    {0x009A}, {0x0898, Order::Mixed}, {0x00DE}, // FNGROUPNAME FNGRP12 OLEOBJECTSIZE
    {0x0019, "\0\0"sv}, {0x0012, "\0\0"sv}, // WINPROTECT PROTECT
    {0x0063}, // OBJPROTECT
    {0x0013, "\0\0"sv}, {0x01AF, "\0\0"sv}, {0x01BC, "\0\0"sv}, // PASSWORD PROT4REV PROT4REVPASS
    {record::window1, &GlobalsWriter::writeWindow},
    {0x0040, "\0\0"sv}, {0x008D, "\0\0"sv}, // BACKUP HIDEOBJ
    {record::date1904, &GlobalsWriter::writeDateSystem},
    {0x000E, "\1\0"sv}, {0x01B7, "\0\0"sv}, {0x00DA, "\0\0"sv}, // CALCPRECISION REFRESHALL BOOKBOOL
    {record::font, &GlobalsWriter::writeFonts},
    {record::numberFormat, &GlobalsWriter::writeNumberFormats},
    {record::extendedFormat, &GlobalsWriter::writeCellFormats},
    {0x088D}, // DXF
    {record::style, &GlobalsWriter::writeStyles},
    {0x0892, Order::Mixed}, {0x088E}, {0x088F, Order::Mixed}, // STYLEEXT TABLESTYLES TABLESTYLE
    {0x0890, Order::Mixed}, // TABLESTYLEELEMENT
    {record::palette, &GlobalsWriter::writeOwnPalette},
    {0x105C}, {0x00D5}, {0x00B8}, {0x00B9, Order::Mixed}, // CLRTCLIENT SXSTREAMID DOCROUTE RECIPNAME
    {0x01A9}, // USERBVIEW
    {0x0160, "\0\0"sv}, // USESELFS
    {record::boundSheet, &GlobalsWriter::writeBoundSheets},
    {0x0884}, {0x0885, Order::Mixed}, {0x0886, Order::Mixed}, {0x0887, Order::Mixed}, // MDTINFO MDXSTR MDXTUPLE MDXSET
    {0x0888, Order::Mixed}, {0x0889, Order::Mixed}, {0x088A, Order::Mixed}, {0x089A}, // MDXPROP MDXKPI MDB MTRSETTINGS
    {0x08A3}, // FORCEFULLCALCULATION
    {0x008C, "\1\0\1\0"sv}, // COUNTRY
    {record::supportingBook, &GlobalsWriter::writeSupportingBooks},
    {0x0023, Order::Mixed}, {0x0059, Order::Mixed}, {0x005A, Order::Mixed}, {0x0017, Order::Mixed}, // EXTERNNAME XCT CRN EXTERNSHEET
    {record::definedName, &GlobalsWriter::writeNames},
    {0x0894, Order::Mixed}, {0x0899, Order::Mixed}, {0x0893, Order::Mixed}, // NAMECMT NAMEFNGRP12 NAMEPUBLISH
    {0x0813}, // REALTIMEDATA
    {record::recalculationId, "\xC1\x01\0\0\0\0\0\0"sv},
    {0x0866}, {0x00EB}, // HFPICTURE MSODRAWINGGROUP
    {record::sharedStrings, &GlobalsWriter::writeStrings},
    {0x00FF}, {0x0801}, {0x080B}, {0x0865}, {0x0863}, {0x0867}, // EXTSST WEBPUB WOPT CRERR BOOKEXT FEATHDR
    {0x0876}, {0x0896}, {0x089B}, // DCONN THEME COMPRESSPICTURES
    {0x088C, "\x8C\x08\0\0\0\0\0\0\0\0\0\0\1\0\0\0"sv}, // COMPAT12: Excel saves without checking
    {0x0897}, // GUIDTYPELIB
    {record::eof, ""sv},
});
// clang-format on
constexpr auto globalsRanks = ranksOf(globalsPlaces);

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
    KeptRecords kept(book.kept, globalsRanks);
    GlobalsWriter writer(book, kind, activeSheet, strings, kept, target);
    writePlaces<GlobalsWriter>(writer, globalsPlaces, kept, target);
    return writer.sheetOffsets();
}

} // namespace wagemill::engine::xls
