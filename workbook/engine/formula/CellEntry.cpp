#include "workbook/engine/formula/CellEntry.h"

#include "app/base/text/Unicode.h"
#include "workbook/engine/formula/FormulaParser.h"
#include "workbook/engine/formula/Operators.h"
#include "workbook/engine/text/TypedText.h"

namespace wagemill::engine {

namespace {

constexpr std::string_view generalFormat = "General";

/// Nothing stays of what the cell held before.
void fill(Cell& cell, CellValue value, std::shared_ptr<const Formula> formula)
{
    cell.value = std::move(value);
    cell.formula = std::move(formula);
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
    fill(cell, std::move(typed.value), nullptr);
}

} // namespace

void enterText(Book& book, std::size_t sheet, CellAddress address, std::string_view text,
               const RegionalFormats& formats, CalendarDate today)
{
    const auto refused = [&](const std::string& why) {
        if (isInsideSheet(address))
            enterValue(book, sheet, address, {});
        return EngineError("Cell " + addressText(address) + " of the sheet \"" + book.sheets[sheet]->name + "\" " +
                           why);
    };
    if (!isInsideSheet(address))
        throw refused("does not exist.");
    if (utf16Length(text) > maxTextLength)
        throw refused("is left empty, because it cannot hold more than 32767 characters.");
    if (!text.starts_with('='))
        return enterValue(book, sheet, address, readTypedText(text, formats, today, book.dates1904));
    try {
        auto formula = std::make_shared<const Formula>(parseFormula(text, book, sheet, formats));
        fill(book.sheets[sheet]->at(address), Empty{}, std::move(formula));
    } catch (const FormulaError& error) {
        throw refused(std::string("is left empty, because ") + error.what());
    }
}

} // namespace wagemill::engine
