#include "workbook/engine/xls/FormulaTokens.h"
#include "workbook/engine/xls/Substreams.h"

#include <algorithm>
#include <array>
#include <utility>

namespace wagemill::engine::xls {

namespace {

constexpr std::size_t maxRenumberedFormats = 200;
constexpr std::size_t maxNotices = 50;
constexpr std::uint16_t firstUnknownBuiltInFormat = 82;

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
        if (!m_records.next(m_record) || m_record.id != record::bof)
            throw DamagedFile("it does not begin like a workbook");
        if (m_record.reader().u16() != biff8Version)
            throw EngineError(olderVersion);
        while (m_records.next(m_record) && m_record.id != record::eof)
            readRecord();
        if (m_record.id != record::eof)
            throw DamagedFile("its list of sheets has no end; the file may be cut off");
        finishFonts();
        finishNumberFormats();
        finishCellFormats();
        finishNames();
    }

private:
    void readRecord()
    {
        using Self = GlobalsReader;
        using Handler = void (Self::*)(ByteReader);
        static constexpr auto handlers = sortedById(std::to_array<ById<Handler>>({
            {record::externSheet, &Self::readExternSheets},
            {record::definedName, &Self::readName},
            {record::date1904, &Self::readDateSystem},
            {record::externName, &Self::readExternName},
            {record::filePass, &Self::refuseEncrypted},
            {record::font, &Self::readFontRecord},
            {record::window1, &Self::readWindow},
            {record::codePage, &Self::skip}, // always 1200 in this format
            {record::externCount, &Self::readExternCache},
            {record::externCache, &Self::readExternCache},
            {record::fileTemplate, &Self::readTemplateMark},
            {record::boundSheet, &Self::readBoundSheet},
            {record::palette, &Self::readPaletteRecord},
            {record::extendedFormat, &Self::readFormat},
            {record::sharedStrings, &Self::readStrings},
            {record::extendedSharedStrings, &Self::skip},
            {record::sheetIds, &Self::skip},
            {record::supportingBook, &Self::readSupportingBook},
            {record::recalculationId, &Self::skip},
            {record::numberFormat, &Self::readNumberFormat},
            {record::formatChecksum, &Self::skip},  // of formats that we may add to
            {record::formatExtension, &Self::skip}, // void without its checksum
        }));
        if (const Handler* const handler = findById(handlers, m_record.id))
            (this->**handler)(m_record.reader());
        else
            m_book.kept.push_back(m_record.kept());
    }

    void skip(ByteReader /*reader*/) {}

    void refuseEncrypted(ByteReader /*reader*/) { throw EngineError("it is encrypted; remove its password first"); }

    void readTemplateMark(ByteReader /*reader*/) { m_book.isTemplate = true; }

    void readDateSystem(ByteReader reader) { m_book.dates1904 = reader.u16() == 1; }

    void readWindow(ByteReader reader)
    {
        if (std::exchange(m_hasWindow, true))
            return; // further windows on the same workbook
        reader.skip(10);
        m_book.activeSheet = reader.u16();
        m_book.kept.push_back(m_record.kept());
    }

    void readFontRecord(ByteReader reader)
    {
        if (m_book.styles.fonts.size() < maxFonts)
            m_book.styles.fonts.push_back(readFont(reader));
    }

    void readNumberFormat(ByteReader reader)
    {
        const std::uint16_t identifier = reader.u16();
        m_numberFormats.emplace_back(identifier, readLastString(reader));
    }

    void readFormat(ByteReader reader) { m_fileFormats.push_back(readCellFormat(reader)); }

    void readPaletteRecord(ByteReader reader) { readPalette(reader, m_book.styles); }

    void readBoundSheet(ByteReader reader)
    {
        BoundSheet sheet;
        sheet.offset = reader.u32();
        const unsigned visibility = reader.u8() & 3U;
        sheet.hidden = visibility != 0;
        sheet.veryHidden = visibility == 2;
        reader.skip(1);
        sheet.name = readShortString(reader);
        m_context.boundSheets.push_back(std::move(sheet));
    }

    void readStrings(ByteReader /*reader*/) { m_context.strings = readSharedStrings(m_record); }

    void readSupportingBook(ByteReader reader)
    {
        using enum SupportingBook::Kind;
        reader.skip(2);
        const std::uint16_t mark = reader.u16();
        SupportingBook& book = m_book.supportingBooks.emplace_back();
        book.kind = mark == ownBookMark ? Own : mark == addInMark ? AddIn : Foreign;
        book.record = m_record.kept();
    }

    void readExternCache(ByteReader /*reader*/)
    {
        if (!m_book.supportingBooks.empty())
            m_book.supportingBooks.back().kept.push_back(m_record.kept());
    }

    void readExternName(ByteReader reader)
    {
        if (m_book.supportingBooks.empty())
            return;
        reader.skip(6);
        m_book.supportingBooks.back().externNames.push_back(readShortString(reader));
        readExternCache(reader);
    }

    void readExternSheets(ByteReader /*reader*/)
    {
        const std::vector<std::byte> data = joined(m_record);
        ByteReader reader(data);
        for (std::size_t count = reader.u16(); count > 0 && !reader.atEnd(); --count)
            externSheetFields(FieldReader(reader), m_book.externSheets.emplace_back());
    }

    void readName(ByteReader /*reader*/)
    {
        const std::vector<std::byte> data = joined(m_record);
        ByteReader reader(data);
        NameHead head;
        nameFields(FieldReader(reader), head);
        DefinedName name;
        name.name = readStringWithoutCount(reader, head.length);
        if (head.isBuiltIn && name.name.size() == 1 &&
            static_cast<unsigned char>(name.name.front()) < builtInNames.size())
            name.name = builtInNames[static_cast<unsigned char>(name.name.front())];
        if (head.sheet != 0)
            name.sheet = static_cast<std::uint16_t>(head.sheet - 1);
        name.record = m_record.kept();
        m_nameFormulas.emplace_back(reader.position(), head.formulaSize);
        m_book.names.push_back(std::move(name));
    }

    /// Names may refer to later ones, so their formulas are read when all are known.
    void finishNames()
    {
        const FormulaContext formulas{{}, m_book.names.size(), m_book.externSheets.size()};
        for (std::size_t index = 0; index < m_book.names.size(); ++index) {
            DefinedName& name = m_book.names[index];
            const auto [position, size] = m_nameFormulas[index];
            if (size == 0)
                continue;
            const std::vector<std::byte> data = joined(name.record);
            ByteReader reader(data, position);
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
                m_renumbered.size() < maxRenumberedFormats)
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
                                  format.parent + offset < maxFormats;
            format.parent = format.isStyle ? noParent
                            : hasStyle     ? static_cast<std::uint16_t>(format.parent + offset)
                                           : std::uint16_t{0};
            format.numberFormat = numberFormatOf(format.numberFormat);
            if (format.font >= m_book.styles.fonts.size())
                format.font = 0;
            m_context.cellFormats.push_back(format.isStyle || formats.size() >= maxFormats
                                                ? defaultCellFormat
                                                : static_cast<std::uint16_t>(formats.size()));
            if (formats.size() < maxFormats)
                formats.push_back(format);
        }
        std::erase_if(m_book.kept, [&](const KeptRecord& kept) {
            return kept.id == record::style && (!regular || !namesStyleFormat(kept));
        });
    }

    bool namesStyleFormat(const KeptRecord& style) const
    {
        ByteReader reader(style.data);
        const auto& formats = m_book.styles.formats;
        const std::size_t index = reader.remaining() < 4 ? formats.size() : reader.u16() & 0xFFFU;
        return index < formats.size() && formats[index].isStyle;
    }

    RecordReader m_records;
    Record m_record; ///< the present one
    ReadContext& m_context;
    Book& m_book;
    bool m_hasWindow = false;
    std::vector<std::pair<std::uint16_t, std::string>> m_numberFormats;
    std::vector<std::pair<std::uint16_t, std::uint16_t>> m_renumbered; ///< number of the file, own number
    std::vector<CellFormat> m_fileFormats;
    std::vector<std::pair<std::size_t, std::size_t>> m_nameFormulas; ///< position in the record's data, size
};

} // namespace

void ReadContext::notice(const std::string& text)
{
    if (book.notices.size() < maxNotices && std::ranges::find(book.notices, text) == book.notices.end())
        book.notices.push_back(text);
}

void readGlobals(std::span<const std::byte> stream, ReadContext& context)
{
    GlobalsReader(stream, context).read();
}

} // namespace wagemill::engine::xls
