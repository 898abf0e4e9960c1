#pragma once

#include "workbook/engine/Book.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace wagemill::engine {

/// The sheet, or the first and last of several, that comes before a reference: "Sheet1!", "'Pay ''05'!", "Q1:Q4!".
struct WrittenSheets {
    std::string first;
    std::optional<std::string> last;
    std::size_t length = 0; ///< bytes read, the exclamation mark included
};

/// Whether a workbook may have a name or a function of that name: a letter first, not a cell in any notation, and
/// nothing that the application gives a meaning of its own.
/// text  of name bytes
bool canBeName(std::string_view text);

/// The place in Book::names of the name as the sheet knows it, which hides one of the whole workbook.
std::optional<std::size_t> findName(const Book& book, std::string_view name, std::size_t sheet);

/// A text in quotation marks, of which those inside it are doubled.
struct QuotedText {
    std::string content;
    std::size_t length = 0; ///< bytes read, the quotation marks included
};

/// text  begins with a quotation mark of either kind; nothing when it is never closed
std::optional<QuotedText> readQuoted(std::string_view text);

/// Reads from the beginning of `text`; nothing when it does not begin with sheets.
std::optional<WrittenSheets> readSheets(std::string_view text);

} // namespace wagemill::engine
