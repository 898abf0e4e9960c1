#include "workbook/engine/Book.h"

#include "app/base/text/LetterCase.h"
#include "app/base/text/Unicode.h"

#include <algorithm>

namespace wagemill::engine {

Sheet& Book::addSheet(std::string_view name)
{
    const std::size_t length = utf16Length(name);
    if (length < 1 || length > maxSheetName || name.find_first_of("\\/?*[]:") != std::string_view::npos ||
        name.front() == '\'' || name.back() == '\'')
        throw EngineError("\"" + std::string(name) + "\" cannot be the name of a sheet.");
    if (sheetIndex(name))
        throw EngineError("There is already a sheet named \"" + std::string(name) + "\".");
    sheets.push_back(std::make_unique<Sheet>());
    sheets.back()->name = name;
    return *sheets.back();
}

std::optional<std::size_t> Book::sheetIndex(std::string_view name) const
{
    const auto found =
        std::ranges::find_if(sheets, [&](const auto& sheet) { return sameIgnoringCase(sheet->name, name); });
    if (found == sheets.end())
        return std::nullopt;
    return static_cast<std::size_t>(found - sheets.begin());
}

std::optional<std::size_t> Book::visibleSheet() const
{
    if (activeSheet < sheets.size() && !sheets[activeSheet]->hidden)
        return activeSheet;
    const auto visible = std::ranges::find(sheets, false, &Sheet::hidden);
    return visible == sheets.end() ? std::nullopt : std::optional(static_cast<std::size_t>(visible - sheets.begin()));
}

const SupportingBook* Book::supportingBook(std::uint16_t externSheet) const
{
    const std::size_t book =
        externSheet < externSheets.size() ? externSheets[externSheet].supportingBook : supportingBooks.size();
    return book < supportingBooks.size() ? &supportingBooks[book] : nullptr;
}

std::uint16_t Book::externSheetFor(std::size_t first, std::size_t last)
{
    auto own = std::ranges::find(supportingBooks, SupportingBook::Kind::Own, &SupportingBook::kind);
    if (own == supportingBooks.end())
        own = supportingBooks.insert(own, SupportingBook{});
    return placeIn(externSheets, ExternSheet{static_cast<std::uint16_t>(own - supportingBooks.begin()),
                                             static_cast<std::int16_t>(first), static_cast<std::int16_t>(last)});
}

} // namespace wagemill::engine
