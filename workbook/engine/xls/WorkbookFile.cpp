#include "workbook/engine/xls/WorkbookFile.h"

#include "app/base/Bytes.h"
#include "app/base/text/LetterCase.h"
#include "app/base/text/Unicode.h"
#include "workbook/engine/xls/CompoundFile.h"
#include "workbook/engine/xls/Substreams.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace wagemill::engine::xls {

namespace {

constexpr std::size_t maxSheets = 4096;
constexpr std::size_t looksLikeTextWithin = 512;

/// What people take for a workbook of our format, by its first bytes.
constexpr auto otherFiles = std::to_array<std::pair<std::string_view, const char*>>({
    {"PK\x03\x04", "a workbook of the newer kind (.xlsx, .ods) or another zip archive"},
    {"<?xml", "an XML file"},
    {"<html", "a web page"},
    {"<HTML", "a web page"},
    {"<!DOCTYPE", "a web page"},
    {"<!doctype", "a web page"},
    {"<table", "a web page"},
    {"{\\rtf", "a rich text document"},
    {"%PDF", "a PDF document"},
    {"\x09\x08", "a workbook saved by a version before Excel 97"},
    {"\x09\x04", "a workbook saved by a version before Excel 97"},
    {"\x09\x02", "a workbook saved by a version before Excel 97"},
});

std::string kindOfFile(std::span<const std::byte> bytes)
{
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (text.empty())
        return "empty";
    for (const auto& [signature, kind] : otherFiles)
        if (text.starts_with(signature))
            return kind;
    const bool isText = std::ranges::all_of(text.substr(0, looksLikeTextWithin), [](char byte) {
        return static_cast<unsigned char>(byte) >= 0x20 || byte == '\t' || byte == '\r' || byte == '\n';
    });
    return isText ? "plain text" : "of an unknown kind";
}

/// Takes a stream of the root storage out of the list; capitals or not is all one.
std::optional<std::vector<std::byte>> takeStream(std::vector<KeptStream>& streams, std::string_view name)
{
    const auto found = std::ranges::find_if(streams, [&](const KeptStream& stream) {
        return !stream.isStorage && stream.path.size() == 1 && sameIgnoringCase(stream.path.front(), name);
    });
    if (found == streams.end())
        return std::nullopt;
    std::vector<std::byte> data = std::move(found->data);
    streams.erase(found);
    return data;
}

/// The name made one that a sheet may have and that no sheet before has.
std::string allowedSheetName(const std::string& name, const Book& book)
{
    std::u16string units = toUtf16(name);
    units.resize(std::min(units.size(), maxSheetName));
    std::ranges::replace_if(
        units,
        [](char16_t unit) {
            return unit < 0x20 || std::u16string_view(u"\\/?*[]:").find(unit) != std::u16string_view::npos;
        },
        u'_');
    if (!units.empty() && units.front() == u'\'')
        units.front() = u'_';
    if (!units.empty() && units.back() == u'\'')
        units.back() = u'_';
    std::string allowed = toUtf8(units);
    for (std::size_t number = book.sheets.size() + 1; allowed.empty() || book.sheetIndex(allowed); ++number)
        allowed = "Sheet" + std::to_string(number);
    return allowed;
}

void readSheets(std::span<const std::byte> stream, ReadContext& context)
{
    Book& book = context.book;
    if (context.boundSheets.empty())
        throw DamagedFile("it has no sheets");
    if (context.boundSheets.size() > maxSheets)
        throw DamagedFile("it has more than 4096 sheets");
    std::set<std::size_t> offsets;
    for (const BoundSheet& bound : context.boundSheets) {
        if (!offsets.insert(bound.offset).second)
            throw DamagedFile("two of its sheets are the same");
        if (bound.offset >= stream.size())
            throw DamagedFile("the sheet \"" + bound.name + "\" lies outside the workbook; the file may be cut off");
        Sheet& sheet = book.addSheet(allowedSheetName(bound.name, book));
        sheet.hidden = bound.hidden;
        sheet.veryHidden = bound.veryHidden;
        readSheet(stream, bound.offset, context, sheet);
    }
}

Book readBook(std::span<const std::byte> bytes)
{
    Book book;
    book.keptStreams = readCompoundFile(bytes);
    const auto workbook = takeStream(book.keptStreams, "Workbook");
    const bool hasOlderWorkbook = takeStream(book.keptStreams, "Book").has_value();
    if (!workbook)
        throw EngineError(hasOlderWorkbook ? olderVersion
                                           : "it holds no workbook; it may be a document of another program");
    ReadContext context{book, {}, {}, {}, {}};
    readGlobals(*workbook, context);
    readSheets(*workbook, context);
    if (!book.visibleSheet())
        book.sheets.front()->hidden = false;
    book.activeSheet = book.visibleSheet().value_or(0);
    return book;
}

std::vector<std::byte> workbookStream(const Book& book, FileKind kind)
{
    const std::optional<std::size_t> activeSheet = book.visibleSheet();
    if (!activeSheet)
        throw EngineError("A workbook needs at least one sheet that is not hidden.");
    SharedStringTable strings;
    std::vector<std::vector<std::uint32_t>> sheetStrings;
    for (const auto& sheet : book.sheets)
        sheetStrings.push_back(collectStrings(*sheet, strings));

    RecordWriter target;
    const std::vector<std::size_t> offsets = writeGlobals(book, kind, *activeSheet, strings, target);
    for (std::size_t index = 0; index < book.sheets.size(); ++index) {
        target.putU32(offsets[index], target.offset());
        writeSheet(book, *book.sheets[index], index == activeSheet, sheetStrings[index], target);
    }
    std::vector<std::byte> stream = target.take();
    stream.resize(std::max(stream.size(), miniStreamCutoff)); // a workbook never lies in the mini stream
    return stream;
}

} // namespace

Book readWorkbook(std::span<const std::byte> bytes, std::string_view file)
{
    const std::string name = std::string(1, '"').append(file) + '"';
    if (bytes.size() < sizeof compoundFileSignature || ByteReader(bytes).u64() != compoundFileSignature)
        throw EngineError("The file " + name + " is not an Excel 97-2003 workbook (.xls): it is " + kindOfFile(bytes) +
                          ".");
    try {
        return readBook(bytes);
    } catch (const DamagedFile& damage) {
        throw EngineError("The workbook " + name + " is damaged: " + damage.what() + ".");
    } catch (const EngineError& refusal) {
        throw EngineError("The workbook " + name + " cannot be read: " + refusal.what() + ".");
    }
}

std::vector<std::byte> writeWorkbook(const Book& book, FileKind kind)
{
    std::vector<KeptStream> streams = {{{"Workbook"}, false, workbookStream(book, kind)}};
    streams.insert(streams.end(), book.keptStreams.begin(), book.keptStreams.end());
    putProperties(streams, book.properties);
    return writeCompoundFile(streams);
}

} // namespace wagemill::engine::xls
