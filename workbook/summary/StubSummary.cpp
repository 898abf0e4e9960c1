#include "workbook/summary/StubSummary.h"

#include "app/base/Files.h"
#include "workbook/engine/text/NumberFormat.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <algorithm>
#include <array>
#include <exception>
#include <string_view>
#include <utility>

namespace wagemill {

namespace {

using namespace engine;

/// What is said of a stub, by the captions to the left of it; the last of them ends the stub.
constexpr auto captions = std::to_array<std::string_view>({"Employee Name", "Gross Pay", "Net Pay"});

std::string shownText(const Book& book, const Cell& cell, const RegionalFormats& formats)
{
    const CellFormat& format = book.styles.format(cell.format);
    return showValue(cell.value, book.styles.numberFormatCode(format.numberFormat), formats, book.dates1904).text;
}

std::string describe(const Book& book, const Sheet& sheet, const RegionalFormats& formats)
{
    std::string text;
    std::array<std::string, captions.size()> stub;
    bool isMissing = false; // a row that was left blank has no amounts: its ID is not found
    int missing = 0;
    for (int row = 0; row < static_cast<int>(sheet.rows().size()); ++row)
        for (const Cell& cell : sheet.rows()[static_cast<std::size_t>(row)].cells) {
            const auto* const words = std::get_if<std::string>(&cell.value);
            const auto caption = words ? std::ranges::find(captions, *words) : captions.end();
            if (caption == captions.end())
                continue;
            const Cell* const value = sheet.find({row, cell.column + 1});
            isMissing |= value == nullptr || std::holds_alternative<ErrorCode>(value->value);
            stub[static_cast<std::size_t>(caption - captions.begin())] =
                value == nullptr ? "" : shownText(book, *value, formats);
            if (caption + 1 != captions.end())
                continue;
            missing += isMissing ? 1 : 0;
            if (!std::exchange(isMissing, false))
                text += "Pay stub of " + stub[0] + ": gross pay " + stub[1] + ", net pay " + stub[2] + ".\n";
        }
    if (missing != 0)
        text += std::to_string(missing) + (missing == 1 ? " pay stub" : " pay stubs") + " without amounts.\n";
    return text;
}

} // namespace

std::string describeStubs(const std::filesystem::path& workbook, const RegionalFormats& formats)
try {
    const Book book = xls::readWorkbook(readBytesFromFile(workbook), workbook.string());
    std::string text = describe(book, *book.sheets.at(book.activeSheet), formats);
    if (!text.empty())
        text.pop_back(); // the last line's end
    return text;
} catch (const std::exception&) {
    return {}; // the picture is shown all the same, and the user could do nothing about the failure
}

} // namespace wagemill
