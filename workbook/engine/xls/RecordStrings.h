#pragma once

#include "workbook/engine/xls/RecordStream.h"

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace wagemill::engine::xls {

bool isAscii(std::string_view text);

/// A text's characters as the file holds them: Latin-1 where that is enough, else UTF-16.
struct Characters {
    std::size_t count = 0; ///< UTF-16 units
    bool wide = false;     ///< two bytes a unit
    std::u16string units;  ///< where wide
    std::string latin1;    ///< where not

    explicit Characters(std::string_view utf8);
    /// Appends the byte that says how wide they are, and all of them.
    void append(ByteWriter& target) const;
    /// Appends `length` units from unit `first` on.
    void append(ByteWriter& target, std::size_t first, std::size_t length) const;
};

using TextRuns = std::shared_ptr<const std::vector<TextRun>>;

/// A text of UTF-8 with its formatting runs (null: all letters look the same).
struct RichText {
    std::string text;
    TextRuns runs;
};

/// ShortXLUnicodeString ([MS-XLS] 2.5.240) and XLUnicodeString (2.5.294): the count of characters in one byte or in
/// two.
std::string readShortString(ByteReader& source);
std::string readString(ByteReader& source);

/// An XLUnicodeString at the end of a record, where some programs leave out the flags before one-byte characters.
std::string readLastString(ByteReader& source);

/// The characters after a count that is elsewhere ([MS-XLS] 2.5.296 XLUnicodeStringNoCch).
std::string readStringWithoutCount(ByteReader& source, std::size_t count);

/// `count` formatting runs ([MS-XLS] 2.5.129 FormatRun), null where that is 0.
TextRuns readRuns(ByteReader& source, std::size_t count);

/// Throws std::length_error beyond 255 and 65535 UTF-16 units.
void writeShortString(ByteWriter& target, std::string_view utf8);
void writeString(ByteWriter& target, std::string_view utf8);

/// The text of a STRING record, which may go on in CONTINUE records. Writing throws std::length_error beyond 32767
/// characters.
std::string readLongString(const Record& record);
void writeLongString(RecordWriter& target, std::uint16_t id, std::string_view text);

/// Reads the table of shared strings: the SST record and what continues it ([MS-XLS] 2.4.265). Throws DamagedFile when
/// a text is cut off.
std::vector<RichText> readSharedStrings(const Record& record);

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
