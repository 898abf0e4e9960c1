#include "workbook/engine/formula/AddInNames.h"

#include <algorithm>

namespace wagemill::engine {

namespace {

constexpr std::uint16_t externNameRecord = 0x0023;
constexpr std::int16_t wholeBook = -2;

/// The record of an add-in's function ([MS-XLS] 2.4.105 ExternName): no flags, the name, and #REF! for a formula.
KeptRecord recordOf(std::string_view name)
{
    KeptRecord record;
    record.id = externNameRecord;
    const auto put = [&record](int byte) { record.data.push_back(static_cast<std::byte>(byte)); };
    for (int i = 0; i < 6; ++i)
        put(0);
    put(static_cast<int>(name.size()));
    put(0); // one byte to a character
    for (const char letter : name)
        put(letter);
    for (const int byte : {2, 0, 0x1C, 0x17})
        put(byte);
    return record;
}

std::size_t addInBook(Book& book)
{
    if (!book.sheets.empty())
        book.externSheetFor(0); // our own book comes first in the list
    auto& books = book.supportingBooks;
    const auto found = std::ranges::find(books, SupportingBook::Kind::AddIn, &SupportingBook::kind);
    const auto place = static_cast<std::size_t>(found - books.begin());
    if (found == books.end())
        books.push_back(SupportingBook{SupportingBook::Kind::AddIn, {}, {}, {}});
    return place;
}

/// The place of `wanted` in the list, added at the end when it is not there.
template <class Element, class Wanted>
std::uint16_t placeOf(std::vector<Element>& list, const Wanted& wanted)
{
    const auto found = std::ranges::find(list, wanted);
    const auto place = static_cast<std::uint16_t>(found - list.begin());
    if (found == list.end())
        list.emplace_back(wanted);
    return place;
}

} // namespace

NameToken addInName(Book& book, std::string_view name)
{
    const std::size_t addIn = addInBook(book);
    SupportingBook& functions = book.supportingBooks[addIn];
    const std::size_t known = functions.externNames.size();
    const std::uint16_t index = placeOf(functions.externNames, name);
    if (functions.externNames.size() > known)
        functions.kept.push_back(recordOf(name));
    const ExternSheet entry{static_cast<std::uint16_t>(addIn), wholeBook, wholeBook};
    return {OperandClass::Reference, placeOf(book.externSheets, entry), static_cast<std::uint16_t>(index + 1)};
}

} // namespace wagemill::engine
