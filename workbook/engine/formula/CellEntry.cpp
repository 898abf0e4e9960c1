#include "workbook/engine/formula/CellEntry.h"

#include "app/base/text/Unicode.h"
#include "workbook/engine/formula/FormulaParser.h"

#include <algorithm>
#include <stdexcept>

namespace wagemill::engine {

namespace {

constexpr std::size_t maxCharacters = 32767;
constexpr std::string_view generalFormat = "General";

void enterFormula(Book& book, std::size_t sheet, CellAddress address, std::string_view text,
                  const RegionalFormats& formats)
{
    auto formula = std::make_shared<const Formula>(parseFormula(text, book, sheet, formats));
    Cell& cell = book.sheets[sheet]->at(address);
    cell.formula = std::move(formula);
    cell.value = Empty{};
    cell.runs.reset();
    cell.array.reset();
}

void enterValue(Book& book, std::size_t sheet, CellAddress address, TypedValue typed)
{
    Sheet& target = *book.sheets[sheet];
    if (isEmpty(typed.value) && target.find(address) == nullptr)
        return;
    Cell& cell = target.at(address);
    CellFormat format = book.styles.format(cell.format);
    // By its code: other programs write General under identifiers of their own.
    if (book.styles.numberFormatCode(format.numberFormat) == generalFormat && !typed.numberFormat.empty())
        format.numberFormat = book.styles.numberFormatFor(typed.numberFormat);
    format.quotePrefix = typed.quotePrefix;
    if (format != book.styles.format(cell.format))
        cell.format = book.styles.formatFor(format);
    cell.value = std::move(typed.value);
    cell.formula.reset();
    cell.runs.reset();
    cell.array.reset();
}

} // namespace

void enterText(Book& book, std::size_t sheet, CellAddress address, std::string_view text,
               const RegionalFormats& formats, CalendarDate today)
{
    const std::string place = "Cell " + addressText(address) + " of the sheet \"" +
                              (sheet < book.sheets.size() ? book.sheets[sheet]->name : std::string()) + "\"";
    if (sheet >= book.sheets.size() || !isInsideSheet(address))
        throw EngineError(place + " does not exist.");
    if (utf16Length(text) > maxCharacters) {
        enterValue(book, sheet, address, {});
        throw EngineError(place + " is left empty, because it cannot hold more than 32767 characters.");
    }
    try {
        if (text.starts_with('='))
            enterFormula(book, sheet, address, text, formats);
        else
            enterValue(book, sheet, address, readTypedText(text, formats, today, book.dates1904));
    } catch (const FormulaError& error) {
        enterValue(book, sheet, address, {});
        throw EngineError(place + " is left empty, because " + error.what());
    }
}

} // namespace wagemill::engine
