#include "workbook/engine/formula/AddInNames.h"

#include <algorithm>

namespace wagemill::engine {

namespace {

constexpr std::uint16_t externNameRecord = 0x0023;
constexpr std::int16_t wholeBook = -2;

/// The record of an add-in's function ([MS-XLS] 2.4.105 ExternName): no flags, the name, and #REF! for a formula.
KeptRecord recordOf(std::string_view name)
{
    using namespace std::string_literals;
    const std::string content =
        "\0\0\0\0\0\0"s + static_cast<char>(name.size()) + "\0"s + std::string(name) + "\2\0\x1C\x17"s;
    KeptRecord record{externNameRecord, {}, {}};
    std::ranges::transform(content, std::back_inserter(record.data),
                           [](char each) { return static_cast<std::byte>(each); });
    return record;
}

} // namespace

NameToken addInName(Book& book, std::string_view name)
{
    if (!book.sheets.empty())
        book.externSheetFor(0); // our own book comes first in the list
    auto& books = book.supportingBooks;
    auto addIn = std::ranges::find(books, SupportingBook::Kind::AddIn, &SupportingBook::kind);
    if (addIn == books.end())
        addIn = books.insert(addIn, SupportingBook{SupportingBook::Kind::AddIn, {}, {}, {}});
    const std::size_t known = addIn->externNames.size();
    const auto index = static_cast<std::uint16_t>(placeIn(addIn->externNames, name) + 1);
    if (addIn->externNames.size() > known)
        addIn->kept.push_back(recordOf(name));
    const ExternSheet entry{static_cast<std::uint16_t>(addIn - books.begin()), wholeBook, wholeBook};
    return {OperandClass::Reference, placeIn(book.externSheets, entry), index};
}

} // namespace wagemill::engine
