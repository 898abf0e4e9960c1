#include "workbook/engine/formula/AddInNames.h"

#include <algorithm>

namespace wagemill::engine {

NameToken addInName(Book& book, std::string_view name)
{
    constexpr std::int16_t wholeBook = -2;
    if (!book.sheets.empty())
        book.externSheetFor(0); // our own book comes first in the list
    auto& books = book.supportingBooks;
    auto addIn = std::ranges::find(books, SupportingBook::Kind::AddIn, &SupportingBook::kind);
    if (addIn == books.end())
        addIn = books.insert(addIn, SupportingBook{SupportingBook::Kind::AddIn, {}, {}, {}});
    const auto index = static_cast<std::uint16_t>(placeIn(addIn->externNames, name) + 1);
    const ExternSheet entry{static_cast<std::uint16_t>(addIn - books.begin()), wholeBook, wholeBook};
    return {OperandClass::Reference, placeIn(book.externSheets, entry), index};
}

} // namespace wagemill::engine
