#include "workbook/engine/xls/BiffWriter.h"

#include "workbook/engine/xls/CompoundFile.h"
#include "workbook/engine/xls/PropertySet.h"
#include "workbook/engine/xls/Substreams.h"

#include <algorithm>

namespace wagemill::engine::xls {

namespace {

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

std::vector<std::byte> writeWorkbook(const Book& book, FileKind kind)
{
    std::vector<KeptStream> streams;
    streams.push_back({{"Workbook"}, false, workbookStream(book, kind)});
    streams.insert(streams.end(), book.keptStreams.begin(), book.keptStreams.end());
    const auto named = [&](const char* name) {
        return std::ranges::find(streams, std::vector<std::string>{name}, &KeptStream::path);
    };
    if (const auto summary = named(summaryStreamName); summary != streams.end())
        stampSummary(summary->data, book.properties);
    else
        streams.push_back({{summaryStreamName}, false, writeSummary(book.properties)});
    if (named(documentSummaryStreamName) == streams.end())
        streams.push_back({{documentSummaryStreamName}, false, writeDocumentSummary()});
    return writeCompoundFile(streams);
}

} // namespace wagemill::engine::xls
