#pragma once

#include "app/base/Bytes.h"

#include <string>
#include <string_view>

namespace wagemill::engine::xls {

/// A text's characters as the file holds them: Latin-1 where that is enough, else UTF-16.
struct Characters {
    std::size_t count = 0; ///< UTF-16 units
    bool wide = false;     ///< two bytes a unit
    std::u16string units;  ///< where wide
    std::string latin1;    ///< where not

    explicit Characters(std::string_view utf8);
    std::size_t byteSize() const { return wide ? count * 2 : count; }
    /// Appends `length` units from unit `first` on.
    void append(ByteWriter& target, std::size_t first, std::size_t length) const;
};

/// `count` units, one byte each or two: as UTF-8.
std::string readCharacters(ByteReader& source, std::size_t count, bool wide);

/// ShortXLUnicodeString ([MS-XLS] 2.5.240) and XLUnicodeString (2.5.294): the count of characters in one byte or in
/// two.
std::string readShortString(ByteReader& source);
std::string readString(ByteReader& source);

/// The same at the end of a record, where some programs leave out the flags before one-byte characters.
std::string readLastString(ByteReader& source);

/// The characters behind a count that stands elsewhere ([MS-XLS] 2.5.296 XLUnicodeStringNoCch).
std::string readStringWithoutCount(ByteReader& source, std::size_t count);

/// Throws std::length_error beyond 255 and 65535 UTF-16 units.
void writeShortString(ByteWriter& target, std::string_view utf8);
void writeString(ByteWriter& target, std::string_view utf8);

} // namespace wagemill::engine::xls
