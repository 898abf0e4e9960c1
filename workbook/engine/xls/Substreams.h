#pragma once

#include "workbook/engine/Book.h"
#include "workbook/engine/xls/BiffRecords.h"
#include "workbook/engine/xls/RecordStrings.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

// A workbook stream is a substream of records for the globals, and one for each sheet.

namespace wagemill::engine::xls {

/// Why an older workbook is not read.
inline constexpr const char* olderVersion =
    "it was saved by a version before Excel 97; save it again as \"Excel 97-2003 workbook\"";

/// What BOUNDSHEET says of a sheet ([MS-XLS] 2.4.28).
struct BoundSheet {
    std::size_t offset = 0; ///< of its BOF
    bool hidden = false;
    bool veryHidden = false;
    std::string name; ///< as in the file
};

/// What a file may still make of itself in memory. A few bytes can name the last row, a long shared text or a long
/// shared formula again and again; these limits are far above any workbook that people make.
struct ReadLimits {
    std::size_t rows = std::size_t{32} * 65536; ///< that the sheets grow by
    std::size_t text = std::size_t{512} << 20U; ///< bytes put into cells
    std::size_t tokens = 4'000'000;             ///< of shared formulas made a cell's own

    /// Takes from one of them; false when there is not as much left.
    static bool take(std::size_t& left, std::size_t amount)
    {
        const bool isEnough = amount <= left;
        left -= isEnough ? amount : 0;
        return isEnough;
    }
};

/// What the sheets of a workbook are read with.
struct ReadContext {
    Book& book;
    std::vector<BoundSheet> boundSheets;
    std::vector<RichText> strings;
    std::vector<std::uint16_t> cellFormats; ///< by the file's numbers: the cell format in StyleTable::formats
    ReadLimits limits;

    /// The cell format for a number of the file, the default one where that is none of a cell.
    std::uint16_t cellFormat(std::uint16_t fileIndex) const
    {
        return fileIndex < cellFormats.size() ? cellFormats[fileIndex] : defaultCellFormat;
    }
    /// What the user should know; said once.
    void notice(const std::string& text);
};

// What says in SUPBOOK that a book is this one, or the functions of an add-in ([MS-XLS] 2.4.271).
inline constexpr std::uint16_t ownBookMark = 0x0401;
inline constexpr std::uint16_t addInMark = 0x3A01;

/// How LBL begins ([MS-XLS] 2.4.150).
struct NameHead {
    bool isBuiltIn = false; ///< a name of the application is one character, its number in builtInNames
    std::size_t length = 0; ///< of the name
    std::size_t formulaSize = 0;
    int sheet = 0; ///< the one that knows it, counting from 1; 0: the whole workbook
};
void nameFields(auto form, auto& head)
{
    form.bits16(Bits{5, 1, head.isBuiltIn});
    form.zeros(1);
    form.u8(head.length);
    form.u16(head.formulaSize);
    form.zeros(2);
    form.u16(head.sheet);
    form.zeros(4);
}

void externSheetFields(auto form, auto& entry)
{
    form.u16(entry.supportingBook, entry.first, entry.last);
}

/// The file numbers its fonts without 4 ([MS-XLS] 2.5.129 FontIndex): the fifth is 5. StyleTable::fonts has no such
/// gap. The missing font is the first one.
std::uint16_t fontOfFileIndex(std::uint16_t fileIndex);
std::uint16_t fileIndexOfFont(std::uint16_t font);

/// FONT ([MS-XLS] 2.4.122); values outside the format's limits become the nearest allowed ones.
Font readFont(ByteReader& source);
void writeFont(RecordWriter& target, const Font& font);

/// XF ([MS-XLS] 2.4.353); values that the format does not know become the plain ones.
CellFormat readCellFormat(ByteReader& source);
void writeCellFormat(RecordWriter& target, CellFormat format);

/// Whether the file may define a number format of that identifier ([MS-XLS] 2.4.126).
bool isWrittenNumberFormat(std::uint16_t identifier);

void readPalette(ByteReader& source, StyleTable& styles);
/// Writes nothing where the palette is the standard one.
void writePalette(RecordWriter& target, const StyleTable& styles);

/// Reads the globals at the beginning of a workbook stream into context.book. Throws DamagedFile, and EngineError when
/// the workbook is encrypted or of an older format.
void readGlobals(std::span<const std::byte> stream, ReadContext& context);

/// Reads the substream that begins at `offset` of the workbook stream. A chart sheet is kept as a whole: its first
/// kept record is its BOF. Throws DamagedFile.
void readSheet(std::span<const std::byte> stream, std::size_t offset, ReadContext& context, Sheet& sheet);

/// Reads a record of the print set-up into `setup`; one that is damaged changes nothing. False for any other record.
bool readPrintRecord(const Record& record, PrintSetup& setup);

/// Writes the record of that number, which is one of the print set-up; none for breaks where there are none.
void writePrintRecord(RecordWriter& target, std::uint16_t id, const PrintSetup& setup);

/// The indices of the texts of a sheet's cells, row by row, taken into the table of shared strings.
/// Throws EngineError that names the cell when a text is too long.
std::vector<std::uint32_t> collectStrings(const Sheet& sheet, SharedStringTable& strings);

/// Writes a sheet. strings  what collectStrings() gave
/// Throws EngineError that names the cell when a formula does not fit the format.
void writeSheet(const Book& book, const Sheet& sheet, bool isActive, const std::vector<std::uint32_t>& strings,
                RecordWriter& target);

/// The kind of substream that a sheet is written as: a worksheet, or what its kept BOF says.
SubstreamType substreamType(const Sheet& sheet);

/// Writes the globals of a workbook. Gives where the offset of each sheet is to be put in.
/// activeSheet  a visible one
std::vector<std::size_t> writeGlobals(const Book& book, FileKind kind, std::size_t activeSheet,
                                      const SharedStringTable& strings, RecordWriter& target);

} // namespace wagemill::engine::xls
