#include "resources/CustomResource.h"
#include "workbook/engine/formula/CellEntry.h"
#include "workbook/engine/formula/Recalculation.h"
#include "workbook/engine/xls/BiffReader.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace wagemill {
namespace {

using engine::Book;
using engine::Cell;
using engine::CellAddress;
using engine::CellValue;
using engine::Sheet;

Book payrollTemplate()
{
    return engine::xls::readWorkbook(customResource(payrollTemplateResource), "template.xlt");
}

CellAddress address(const std::string& text)
{
    const auto area = engine::parseAddress(text).value();
    return {area.firstRow, area.firstColumn};
}

TEST(Template, IsATemplateThatSaysWhereItComesFrom)
{
    const Book book = payrollTemplate();
    EXPECT_TRUE(book.isTemplate);
    EXPECT_TRUE(book.notices.empty());
    EXPECT_EQ(book.activeSheet, 0U);
    const auto summary = std::ranges::find(book.carriedStreams, std::vector<std::string>{"\x05SummaryInformation"},
                                           &engine::CarriedStream::path);
    ASSERT_NE(summary, book.carriedStreams.end());
    const std::string_view said(reinterpret_cast<const char*>(summary->data.data()), summary->data.size());
    for (const char* part : {"Payroll workbook", "Wagemill"})
        EXPECT_NE(said.find(part), std::string_view::npos) << part;
}

TEST(Template, InputCellsAreNotLockedAndFormulasAre)
{
    const Book book = payrollTemplate();
    for (const auto& sheet : book.sheets)
        for (const engine::Row& row : sheet->rows())
            for (const Cell& cell : row.cells)
                if (cell.formula) {
                    EXPECT_TRUE(book.styles.format(cell.format).locked) << sheet->name << cell.column;
                }
    const std::pair<std::size_t, const char*> inputs[] = {{0, "B4"}, {0, "J28"}, {0, "L4"}, {0, "M28"},
                                                          {1, "B4"}, {1, "D28"}, {1, "H4"}, {1, "K28"},
                                                          {1, "L2"}, {2, "C2"},  {2, "H3"}};
    for (const auto& [sheet, place] : inputs)
        EXPECT_FALSE(book.styles.format(book.sheets[sheet]->find(address(place))->format).locked) << place;
}

TEST(Template, ComputesTheSampleEmployeeAndACopyOfTheBlock)
{
    Book book = payrollTemplate();
    const auto put = [&](std::size_t sheet, const std::string& place, std::string_view text) {
        enterText(book, sheet, address(place), text, RegionalFormats{}, {2026, 3, 31});
    };
    const std::map<std::string, std::string> information = {
        {"B", "E118"}, {"C", "Ned Hollister"}, {"D", "$15.00"}, {"E", "Single"},
        {"F", "2"},    {"G", "10%"},           {"H", "15%"},    {"I", "1%"},
        {"J", "4%"},   {"L", "$2.00"},         {"M", "$5.00"},
    };
    const std::map<std::string, std::string> hours = {{"B", "E118"}, {"D", "39"},     {"E", "7"},    {"F", "15"},
                                                      {"G", "8"},    {"H", "$10.25"}, {"K", "$2.00"}};
    // In the second slot, so that the copy of the block and not the block itself shows them.
    for (const auto& [column, text] : information)
        put(0, column + "5", text);
    for (const auto& [column, text] : hours)
        put(1, column + "5", text);
    put(1, "L2", "3/31/2026");
    book.sheets[2]->copyRows(1, 11, 13);
    put(2, "H15", "E118");
    engine::recalculate(book, {});

    const std::map<std::string, double> expected = {{"D15", 46112}, {"H17", 39},     {"D18", 15},    {"F18", 10.25},
                                                    {"D19", 9.97},  {"F19", 149.55}, {"D20", 39.88}, {"F20", 99.70},
                                                    {"D21", 2},     {"F21", 5},      {"H21", 997},   {"D22", 306.10},
                                                    {"F22", 2},     {"H22", 308.10}, {"H23", 688.90}};
    for (const auto& [place, figure] : expected)
        EXPECT_NEAR(std::get<double>(book.sheets[2]->value(address(place))), figure, 1e-9) << place;
    EXPECT_EQ(book.sheets[2]->value(address("F15")), CellValue("Ned Hollister"));
    // A rate takes its own percentage format only where the cell has none.
    EXPECT_EQ(
        book.styles.numberFormatCode(book.styles.format(book.sheets[0]->find(address("G5"))->format).numberFormat),
        "0%");
}

TEST(Template, PrintsListsOnePageWideAndWholeStubs)
{
    const Book book = payrollTemplate();
    for (const std::size_t list : {0U, 1U}) {
        const engine::PrintSetup& print = book.sheets[list]->print;
        EXPECT_TRUE(print.fitToPages && print.landscape);
        EXPECT_EQ(print.pagesWide, 1);
        EXPECT_EQ(print.pagesHigh, 0) << "as many pages as needed";
    }
    const engine::PrintSetup& stubs = book.sheets[2]->print;
    EXPECT_FALSE(stubs.landscape);
    EXPECT_FALSE(stubs.fitToPages) << "fitting ignores the page breaks";
    ASSERT_GE(stubs.rowBreaks.size(), 6U) << "25 stubs fill seven pages";
    for (const engine::PageBreak& pageBreak : stubs.rowBreaks)
        EXPECT_EQ(pageBreak.at % 12, 0) << "a page begins with the row between two stubs";
    std::string names;
    for (const engine::DefinedName& name : book.names)
        names += name.name + " of " + std::to_string(name.sheet.value()) + "; ";
    EXPECT_EQ(names, "Print_Titles of 0; Print_Titles of 1; Print_Area of 2; ");
}

TEST(CustomResource, OnlyTheTemplateIsThere)
{
    EXPECT_THROW(customResource(100), std::runtime_error);
    EXPECT_THROW(customResource(0), std::runtime_error);
}

} // namespace
} // namespace wagemill
