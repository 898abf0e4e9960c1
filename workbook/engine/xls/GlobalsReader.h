#pragma once

#include "workbook/engine/Book.h"
#include "workbook/engine/xls/BiffRecords.h"
#include "workbook/engine/xls/ReadLimits.h"
#include "workbook/engine/xls/SharedStrings.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace wagemill::engine::xls {

/// What BOUNDSHEET says of a sheet ([MS-XLS] 2.4.28).
struct BoundSheet {
    std::size_t offset = 0; ///< of its BOF
    bool hidden = false;
    bool veryHidden = false;
    std::string name; ///< as in the file
};

/// What the sheets of a workbook are read with.
struct ReadContext {
    Book& book;
    std::vector<BoundSheet> boundSheets;
    std::vector<SharedString> strings;
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

/// Reads the globals at the beginning of a workbook stream into context.book. Throws DamagedFile, and EngineError when
/// the workbook is encrypted or of an older format.
void readGlobals(std::span<const std::byte> stream, ReadContext& context);

} // namespace wagemill::engine::xls
