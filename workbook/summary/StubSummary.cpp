#include "workbook/summary/StubSummary.h"

#include "app/base/Files.h"
#include "workbook/engine/text/NumberFormat.h"
#include "workbook/engine/xls/BiffReader.h"

#include <array>
#include <exception>
#include <iterator>
#include <string_view>

namespace wagemill {

namespace {

using namespace engine;

/// The figures of a stub that are told, by the captions to their left; the last of them ends the stub.
constexpr std::string_view toldCaptions[] = {"Employee Name", "Gross Pay", "Net Pay"};
constexpr std::size_t toldFigures = std::size(toldCaptions);

class StubTeller {
public:
    StubTeller(const Book& book, const RegionalFormats& formats) : m_book(book), m_formats(formats) {}

    std::string tell(const Sheet& sheet)
    {
        for (int row = 0; row < static_cast<int>(sheet.rows().size()); ++row)
            for (const Cell& cell : sheet.rows()[static_cast<std::size_t>(row)].cells)
                if (const auto* caption = std::get_if<std::string>(&cell.value))
                    takeFigure(*caption, sheet.find({row, cell.column + 1}));
        if (m_without != 0)
            m_told += std::to_string(m_without) + (m_without == 1 ? " pay stub" : " pay stubs") + " without figures.\n";
        return m_told;
    }

private:
    void takeFigure(std::string_view caption, const Cell* figure)
    {
        for (std::size_t index = 0; index < toldFigures; ++index)
            if (caption == toldCaptions[index]) {
                m_isMissing |= figure == nullptr || std::holds_alternative<ErrorCode>(figure->value);
                m_figures[index] = shown(figure);
                if (index + 1 == toldFigures)
                    endStub();
            }
    }

    /// A row that was left blank has no figures: its ID is not found.
    void endStub()
    {
        if (m_isMissing)
            ++m_without;
        else
            m_told +=
                "Pay stub of " + m_figures[0] + ": gross pay " + m_figures[1] + ", net pay " + m_figures[2] + ".\n";
        m_isMissing = false;
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
    std::array<std::string, toldFigures> m_figures; ///< of the stub that is being read
    bool m_isMissing = false;                       ///< one of them is
    int m_without = 0;                              ///< stubs without figures
    std::string m_told;
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
