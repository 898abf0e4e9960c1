#pragma once

#include "workbook/engine/Sheet.h"
#include "workbook/engine/xls/RecordStream.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace wagemill::engine::xls {

using TextRuns = std::shared_ptr<const std::vector<TextRun>>;

/// A text of the workbook's table of shared strings, with its formatting runs (none: all letters look the same). The
/// runs' fonts are numbers of the file, see StyleRecords.h.
struct SharedString {
    std::string text;
    TextRuns runs;
};

/// Reads the SST record and what continues it ([MS-XLS] 2.4.265). Throws DamagedFile when a text is cut off.
std::vector<SharedString> readSharedStrings(const Record& record);

/// Reads the text of a STRING record, which may go on in CONTINUE records.
std::string readLongString(const Record& record);

/// Writes a STRING record. Throws std::length_error beyond 32767 characters.
void writeLongString(RecordWriter& target, std::uint16_t id, std::string_view text);

/// The texts of all sheets, each once. The table keeps views of the texts: they must outlive it.
class SharedStringTable {
public:
    /// The index of a text for a cell, one more use of it. Throws std::length_error beyond 32767 characters.
    std::uint32_t indexFor(std::string_view text, const TextRuns& runs);
    /// Writes the SST and the EXTSST record ([MS-XLS] 2.4.107).
    void write(RecordWriter& target) const;

private:
    struct Entry {
        std::string_view text;
        TextRuns runs;
    };
    std::vector<Entry> m_entries;
    std::unordered_map<std::string_view, std::uint32_t> m_plain;
    std::unordered_map<const void*, std::uint32_t> m_rich; ///< by their runs, which equal cells share
    std::uint32_t m_uses = 0;
};

} // namespace wagemill::engine::xls
