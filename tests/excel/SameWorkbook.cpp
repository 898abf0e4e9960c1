#include "tests/excel/SameWorkbook.h"

#include "app/base/Files.h"
#include "workbook/engine/Book.h"
#include "workbook/engine/xls/BiffReader.h"

#include <algorithm>
#include <set>

namespace wagemill::test {

namespace {

using namespace engine;

/// A cell of a book with all that its indices stand for.
struct Place {
    const Book& book;
    const Cell* cell;

    CellValue value() const { return cell == nullptr ? CellValue{} : cell->value; }
    Formula formula() const { return cell == nullptr || !cell->formula ? Formula{} : *cell->formula; }
    CellFormat look() const
    {
        CellFormat format = book.styles.format(cell == nullptr ? defaultCellFormat : cell->format);
        format.font = format.numberFormat = format.parent = 0; // indices, which may differ between equal books
        return format;
    }
    Font font() const { return book.styles.fontOf(book.styles.format(index())); }
    std::string numberFormat() const
    {
        return std::string(book.styles.numberFormatCode(book.styles.format(index()).numberFormat));
    }

private:
    std::uint16_t index() const { return cell == nullptr ? defaultCellFormat : cell->format; }
};

bool isSame(const Place& one, const Place& other)
{
    return one.value() == other.value() && one.formula() == other.formula() && one.look() == other.look() &&
           one.font() == other.font() && one.numberFormat() == other.numberFormat();
}

std::set<std::pair<int, int>> addresses(const Sheet& one, const Sheet& other)
{
    std::set<std::pair<int, int>> all;
    for (const Sheet* sheet : {&one, &other})
        for (std::size_t row = 0; row < sheet->rows().size(); ++row)
            for (const Cell& cell : sheet->rows()[row].cells)
                all.emplace(static_cast<int>(row), cell.column);
    return all;
}

void compareSheets(const Book& one, const Book& other, std::size_t index, std::vector<std::string>& differences)
{
    const Sheet& left = *one.sheets[index];
    const Sheet& right = *other.sheets[index];
    const std::string name = "sheet " + std::to_string(index + 1);
    if (left.name != right.name || left.columns != right.columns || left.merged != right.merged)
        differences.push_back(name + ": name, widths or merged areas");
    for (const auto& [row, column] : addresses(left, right)) {
        const CellAddress address = {row, column};
        if (!isSame({one, left.find(address)}, {other, right.find(address)}))
            differences.push_back(name + ": " + addressText(address));
        if (left.rowHeightTwips(row) != right.rowHeightTwips(row))
            differences.push_back(name + ": height of row " + std::to_string(row + 1));
    }
}

} // namespace

std::vector<std::string> workbookDifferences(const std::filesystem::path& one, const std::filesystem::path& other)
{
    const Book left = xls::readWorkbook(readBytesFromFile(one), one.string());
    const Book right = xls::readWorkbook(readBytesFromFile(other), other.string());
    if (left.sheets.size() != right.sheets.size())
        return {"the number of sheets"};
    std::vector<std::string> differences;
    for (std::size_t index = 0; index < left.sheets.size(); ++index)
        compareSheets(left, right, index, differences);
    return differences;
}

} // namespace wagemill::test
