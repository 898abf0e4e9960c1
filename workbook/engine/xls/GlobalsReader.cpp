#include "workbook/engine/xls/GlobalsReader.h"

#include "workbook/engine/xls/FormulaTokensXls.h"
#include "workbook/engine/xls/RecordStream.h"
#include "workbook/engine/xls/RecordStrings.h"
#include "workbook/engine/xls/StyleRecords.h"

#include <algorithm>
#include <array>
#include <utility>

namespace wagemill::engine::xls {

namespace {

constexpr std::size_t mostRenumberedFormats = 200;
constexpr std::size_t mostNotices = 50;
constexpr std::uint16_t firstUnknownBuiltInFormat = 82;
constexpr std::uint16_t ownBookMark = 0x0401;
constexpr std::uint16_t addInMark = 0x3A01;

class GlobalsReader {
public:
    GlobalsReader(std::span<const std::byte> stream, ReadContext& context)
        : m_records(stream), m_context(context), m_book(context.book)
    {
        m_book.styles.fonts.clear();
        m_book.styles.formats.clear();
        m_book.styles.numberFormats.clear();
    }

    void read()
    {
        Record record;
        readBeginning(record);
        while (true) {
            if (!m_records.next(record))
                throw DamagedFile("its list of sheets has no end; the file may be cut off");
            if (record.id == record::eof)
                break;
            readRecord(record);
        }
        finishFonts();
        finishNumberFormats();
        finishCellFormats();
        finishNames();
    }

private:
    using Handler = void (GlobalsReader::*)(const Record&);
    static const std::vector<std::pair<std::uint16_t, Handler>>& handlers()
    {
        static const auto table = [] {
            std::vector<std::pair<std::uint16_t, Handler>> handlersById = {
                {record::externSheet, &GlobalsReader::readExternSheets},
                {record::definedName, &GlobalsReader::readName},
                {record::date1904, &GlobalsReader::readDateSystem},
                {record::externName, &GlobalsReader::readExternName},
                {record::filePass, &GlobalsReader::refuseEncrypted},
                {record::font, &GlobalsReader::readFontRecord},
                {record::window1, &GlobalsReader::readWindow},
                {record::codePage, &GlobalsReader::skip}, // always 1200 in this format
                {record::externCount, &GlobalsReader::readExternCache},
                {record::externCache, &GlobalsReader::readExternCache},
                {record::fileTemplate, &GlobalsReader::readTemplateMark},
                {record::boundSheet, &GlobalsReader::readBoundSheet},
                {record::palette, &GlobalsReader::readPaletteRecord},
                {record::extendedFormat, &GlobalsReader::readFormat},
                {record::sharedStrings, &GlobalsReader::readStrings},
                {record::extendedSharedStrings, &GlobalsReader::skip},
                {record::sheetIds, &GlobalsReader::skip},
                {record::supportingBook, &GlobalsReader::readSupportingBook},
                {record::recalculationId, &GlobalsReader::skip},
                {record::numberFormat, &GlobalsReader::readNumberFormat},
                {record::formatChecksum, &GlobalsReader::skip},  // of formats that we may add to
                {record::formatExtension, &GlobalsReader::skip}, // void without its checksum
            };
            std::ranges::sort(handlersById, {}, &std::pair<std::uint16_t, Handler>::first);
            return handlersById;
        }();
        return table;
    }

    void readBeginning(Record& record)
    {
        if (!m_records.next(record) || record.id != record::bof)
            throw DamagedFile("it does not begin like a workbook");
        ByteReader reader = record.reader();
        if (reader.u16() != biff8Version)
            throw EngineError("it was saved by a version before Excel 97; save it anew as \"Excel 97-2003 workbook\"");
    }

    void readRecord(const Record& record)
    {
        const auto found =
            std::ranges::lower_bound(handlers(), record.id, {}, &std::pair<std::uint16_t, Handler>::first);
        if (found != handlers().end() && found->first == record.id)
            (this->*found->second)(record);
        else
            m_book.kept.push_back(record.kept());
    }

    void skip(const Record& /*record*/) {}

    void refuseEncrypted(const Record& /*record*/) { throw EngineError("it is encrypted; remove its password first"); }

    void readTemplateMark(const Record& /*record*/) { m_book.isTemplate = true; }

    void readDateSystem(const Record& record) { m_book.dates1904 = record.reader().u16() == 1; }

    void readWindow(const Record& record)
    {
        if (m_hasWindow)
            return; // further windows on the same workbook
        m_hasWindow = true;
        ByteReader reader = record.reader();
        reader.skip(10);
        m_book.activeSheet = reader.u16();
        m_book.kept.push_back(record.kept());
    }

    void readFontRecord(const Record& record)
    {
        ByteReader reader = record.reader();
        if (m_book.styles.fonts.size() < mostFonts)
            m_book.styles.fonts.push_back(readFont(reader));
    }

    void readNumberFormat(const Record& record)
    {
        ByteReader reader = record.reader();
        const std::uint16_t identifier = reader.u16();
        m_numberFormats.emplace_back(identifier, readLastString(reader));
    }

    void readFormat(const Record& record)
    {
        ByteReader reader = record.reader();
        if (m_fileFormats.size() < mostFormats)
            m_fileFormats.push_back(readCellFormat(reader));
    }

    void readPaletteRecord(const Record& record)
    {
        ByteReader reader = record.reader();
        readPalette(reader, m_book.styles);
    }

    void readBoundSheet(const Record& record)
    {
        ByteReader reader = record.reader();
        BoundSheet sheet;
        sheet.offset = reader.u32();
        const unsigned visibility = reader.u8() & 3U;
        sheet.hidden = visibility != 0;
        sheet.veryHidden = visibility == 2;
        reader.skip(1);
        sheet.name = readShortString(reader);
        m_context.boundSheets.push_back(std::move(sheet));
    }

    void readStrings(const Record& record) { m_context.strings = readSharedStrings(record); }

    void readSupportingBook(const Record& record)
    {
        ByteReader reader = record.reader();
        reader.skip(2);
        const std::uint16_t mark = reader.u16();
        SupportingBook book;
        book.kind = mark == ownBookMark ? SupportingBook::Kind::Own
                    : mark == addInMark ? SupportingBook::Kind::AddIn
                                        : SupportingBook::Kind::Foreign;
        book.record = record.kept();
        m_book.supportingBooks.push_back(std::move(book));
    }

    void readExternCache(const Record& record)
    {
        if (!m_book.supportingBooks.empty())
            m_book.supportingBooks.back().kept.push_back(record.kept());
    }

    void readExternName(const Record& record)
    {
        if (m_book.supportingBooks.empty())
            return;
        ByteReader reader = record.reader();
        reader.skip(6);
        m_book.supportingBooks.back().externNames.push_back(readShortString(reader));
        readExternCache(record);
    }

    void readExternSheets(const Record& record)
    {
        const std::vector<std::byte> data = record.joined();
        ByteReader reader(data);
        for (std::size_t count = reader.u16(); count > 0 && !reader.atEnd(); --count) {
            const std::uint16_t book = reader.u16();
            const auto first = static_cast<std::int16_t>(reader.u16());
            m_book.externSheets.push_back({book, first, static_cast<std::int16_t>(reader.u16())});
        }
    }

    void readName(const Record& record)
    {
        const std::vector<std::byte> data = record.joined();
        ByteReader reader(data);
        DefinedName name;
        const std::uint16_t flags = reader.u16();
        reader.skip(1);
        const std::size_t length = reader.u8();
        reader.skip(4);
        const std::uint16_t sheet = reader.u16();
        reader.skip(4);
        name.name = readStringWithoutCount(reader, length);
        if ((flags & builtInNameFlag) != 0 && name.name.size() == 1 &&
            static_cast<unsigned char>(name.name.front()) < builtInNames.size())
            name.name = builtInNames[static_cast<unsigned char>(name.name.front())];
        if (sheet != 0)
            name.sheet = static_cast<std::uint16_t>(sheet - 1);
        name.record = record.kept();
        m_nameFormulas.push_back(reader.position());
        m_book.names.push_back(std::move(name));
    }

    /// Names may refer to later ones, so their formulas are read when all are known.
    void finishNames()
    {
        const FormulaContext formulas{{}, m_book.names.size(), m_book.externSheets.size()};
        for (std::size_t index = 0; index < m_book.names.size(); ++index) {
            DefinedName& name = m_book.names[index];
            const Record record{
                0, name.record.id, name.record.data, {name.record.continued.begin(), name.record.continued.end()}};
            const std::vector<std::byte> data = record.joined();
            ByteReader reader(data);
            reader.skip(4);
            const std::size_t size = reader.u16();
            reader.seek(m_nameFormulas[index]);
            if (size == 0)
                continue;
            try {
                const auto tokens = reader.bytes(size);
                name.formula = readFormula(tokens, reader.rest(), formulas);
            } catch (const DamagedFile&) {
                m_context.notice("The formula of the name \"" + name.name + "\" could not be read.");
            }
        }
    }

    void finishFonts()
    {
        std::vector<Font>& fonts = m_book.styles.fonts;
        if (fonts.size() < StyleTable().fonts.size())
            fonts.resize(StyleTable().fonts.size(), fonts.empty() ? Font{} : fonts.front());
    }

    /// Formats under numbers that the file may not define are given numbers of our own.
    void finishNumberFormats()
    {
        StyleTable& styles = m_book.styles;
        for (const auto& [identifier, code] : m_numberFormats)
            if (isWrittenNumberFormat(identifier) && !code.empty())
                styles.numberFormats.insert_or_assign(identifier, code);
        for (const auto& [identifier, code] : StyleTable().numberFormats)
            styles.numberFormats.emplace(identifier, code);
        for (const auto& [identifier, code] : m_numberFormats)
            if (!isWrittenNumberFormat(identifier) && !code.empty() && code != builtInNumberFormat(identifier) &&
                m_renumbered.size() < mostRenumberedFormats)
                m_renumbered.emplace_back(identifier, styles.numberFormatFor(code));
    }

    std::uint16_t numberFormatOf(std::uint16_t fileIdentifier) const
    {
        const auto found =
            std::ranges::find(m_renumbered, fileIdentifier, &std::pair<std::uint16_t, std::uint16_t>::first);
        if (found != m_renumbered.end())
            return found->second;
        const bool known =
            fileIdentifier < firstUnknownBuiltInFormat || m_book.styles.numberFormats.contains(fileIdentifier);
        return known ? fileIdentifier : std::uint16_t{0};
    }

    /// Whether the formats begin as the file format wants it: 15 of styles, then the default one of cells.
    bool beginsRegularly() const
    {
        return m_fileFormats.size() > defaultCellFormat && !m_fileFormats[defaultCellFormat].isStyle &&
               std::ranges::all_of(m_fileFormats.begin(), m_fileFormats.begin() + defaultCellFormat,
                                   &CellFormat::isStyle);
    }

    void finishCellFormats()
    {
        std::vector<CellFormat>& formats = m_book.styles.formats;
        const bool regular = beginsRegularly();
        if (!regular)
            formats = StyleTable().formats;
        const std::size_t offset = formats.size();
        for (CellFormat format : m_fileFormats) {
            const bool hasStyle = format.parent < m_fileFormats.size() && m_fileFormats[format.parent].isStyle &&
                                  format.parent + offset < mostFormats;
            format.parent = format.isStyle ? noParent
                            : hasStyle     ? static_cast<std::uint16_t>(format.parent + offset)
                                           : std::uint16_t{0};
            format.numberFormat = numberFormatOf(format.numberFormat);
            if (format.font >= m_book.styles.fonts.size())
                format.font = 0;
            m_context.cellFormats.push_back(format.isStyle || formats.size() >= mostFormats
                                                ? defaultCellFormat
                                                : static_cast<std::uint16_t>(formats.size()));
            if (formats.size() < mostFormats)
                formats.push_back(format);
        }
        std::erase_if(m_book.kept, [&](const KeptRecord& kept) {
            return kept.id == record::style && (!regular || !namesStyleFormat(kept));
        });
    }

    bool namesStyleFormat(const KeptRecord& style) const
    {
        ByteReader reader(style.data);
        const std::size_t index = reader.remaining() < 4 ? m_fileFormats.size() : reader.u16() & 0xFFFU;
        return index < m_fileFormats.size() && m_fileFormats[index].isStyle;
    }

    RecordReader m_records;
    ReadContext& m_context;
    Book& m_book;
    bool m_hasWindow = false;
    std::vector<std::pair<std::uint16_t, std::string>> m_numberFormats;
    std::vector<std::pair<std::uint16_t, std::uint16_t>> m_renumbered; ///< number of the file, own number
    std::vector<CellFormat> m_fileFormats;
    std::vector<std::size_t> m_nameFormulas; ///< where they begin in the record's data
};

} // namespace

void ReadContext::notice(const std::string& text)
{
    if (book.notices.size() < mostNotices && std::ranges::find(book.notices, text) == book.notices.end())
        book.notices.push_back(text);
}

void readGlobals(std::span<const std::byte> stream, ReadContext& context)
{
    GlobalsReader(stream, context).read();
}

} // namespace wagemill::engine::xls
