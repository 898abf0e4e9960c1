#pragma once

#include "workbook/engine/Book.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace wagemill::engine {

/// The sheet, or the first and last of several, that stands before a reference: "Sheet1!", "'Pay ''05'!", "Q1:Q4!".
struct WrittenSheets {
    std::string first;
    std::optional<std::string> last;
    std::size_t length = 0; ///< bytes read, the exclamation mark included
};

/// A cell or area as it is written, "$B$4:N28", "A:C", "2:12". Whole rows and columns are areas that reach across the
/// sheet; the direction in which they do is absolute.
struct WrittenReference {
    ReferencePart first;
    std::optional<ReferencePart> last;
    std::size_t length = 0; ///< bytes read
};

/// Letters, digits and signs that a name or a reference may hold.
bool isNameByte(char byte);

/// Whether a workbook may have a name or a function of that name: a letter first, not a cell in any notation, and
/// nothing that the application gives a meaning of its own.
/// text  of name bytes
bool canBeName(std::string_view text);

/// The text between quotation marks, each one inside it doubled.
std::string quoted(std::string_view text, char quote);
/// What stands before a reference to the sheet, or to several, "Q1:Q4!"; in quotation marks where the name needs them.
std::string sheetPrefix(std::string_view sheets);

/// The place in Book::names of the name as the sheet knows it, which hides one of the whole workbook.
std::optional<std::size_t> findName(const Book& book, std::string_view name, std::size_t sheet);

/// Both read from the beginning of `text`; nothing when it does not begin with one inside the sheet's bounds.
std::optional<WrittenSheets> readSheets(std::string_view text);
std::optional<WrittenReference> readReference(std::string_view text);

} // namespace wagemill::engine
