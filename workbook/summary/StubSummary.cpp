#include "workbook/summary/StubSummary.h"

#include "app/base/Files.h"
#include "workbook/engine/text/NumberFormat.h"
#include "workbook/engine/xls/BiffReader.h"

#include <array>
#include <exception>

namespace wagemill {

namespace {

using namespace engine;

/// What stands in a stub left of the figure that we tell; the last of them ends the stub.
struct ToldFigure {
    std::string_view caption;
    std::string_view before; ///< words
};

constexpr auto toldFigures = std::to_array<ToldFigure>({
    {"Employee Name", "Pay stub of "},
    {"Gross Pay", ": gross pay "},
    {"Net Pay", ", net pay "},
});

class StubTeller {
public:
    StubTeller(const Book& book, const RegionalFormats& formats) : m_book(book), m_formats(formats) {}

    std::string tell(const Sheet& sheet) const
    {
        std::string told;
        for (int row = 0; row < static_cast<int>(sheet.rows().size()); ++row)
            for (const Cell& cell : sheet.rows()[static_cast<std::size_t>(row)].cells)
                if (const auto* caption = std::get_if<std::string>(&cell.value))
                    told += tellFigure(sheet, *caption, {row, cell.column + 1});
        return told;
    }

private:
    std::string tellFigure(const Sheet& sheet, std::string_view caption, CellAddress figure) const
    {
        for (const ToldFigure& candidate : toldFigures)
            if (caption == candidate.caption)
                return std::string(candidate.before) + shown(sheet.find(figure)) +
                       (&candidate == &toldFigures.back() ? ".\n" : "");
        return {};
    }

    std::string shown(const Cell* cell) const
    {
        if (cell == nullptr)
            return {};
        const CellFormat& format = m_book.styles.formats.at(cell->format);
        return showValue(cell->value, m_book.styles.numberFormatCode(format.numberFormat), m_formats, m_book.dates1904)
            .text;
    }

    const Book& m_book;
    const RegionalFormats& m_formats;
};

} // namespace

std::string describeStubs(const std::filesystem::path& workbook, const RegionalFormats& formats)
try {
    const Book book = xls::readWorkbook(readBytesFromFile(workbook), workbook.string());
    std::string told = StubTeller(book, formats).tell(*book.sheets.at(book.activeSheet));
    if (!told.empty())
        told.pop_back(); // the last line's end
    return told;
} catch (const std::exception&) {
    return {}; // the picture is shown all the same; there is nobody to tell a failure to who could mend it
}

} // namespace wagemill
