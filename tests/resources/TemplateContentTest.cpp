#include "resources/CustomResource.h"
#include "workbook/engine/formula/CellEntry.h"
#include "workbook/engine/formula/FormulaParser.h"
#include "workbook/engine/formula/Recalculation.h"
#include "workbook/engine/xls/BiffReader.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace wagemill {
namespace {

using engine::Book;
using engine::Cell;
using engine::CellAddress;
using engine::CellValue;
using engine::Sheet;

constexpr int firstSlot = 4;
constexpr int lastSlot = 28;
constexpr const char* money = "\"$\"#,##0.00";
constexpr const char* percent = "0.00%";

/// What a cell holds: a text, a number, or a formula with its stored result.
struct Expected {
    std::string address;
    CellValue value;
    std::string formula;
};

using Contents = std::map<std::string, Expected>;
using Formats = std::map<std::string, std::string>; ///< those other than General

Book payrollTemplate()
{
    return engine::xls::readWorkbook(customResource(payrollTemplateResource), "template.xlt");
}

CellAddress address(const std::string& text)
{
    const auto area = engine::parseAddress(text).value();
    return {area.firstRow, area.firstColumn};
}

std::string withRow(std::string text, int row)
{
    for (std::size_t at = text.find('#'); at != std::string::npos; at = text.find('#'))
        text.replace(at, 1, std::to_string(row));
    return text;
}

void add(Contents& contents, const Expected& expected)
{
    contents[expected.address] = expected;
}

Contents employeeInformation()
{
    Contents contents;
    for (const auto& [cell, text] : std::map<std::string, std::string>{
             {"B2", "Employee information"},
             {"B3", "Employee ID"},
             {"C3", "Name"},
             {"D3", "Hourly Wage"},
             {"E3", "Tax Status"},
             {"F3", "Federal Allowance (From W-4)"},
             {"G3", "State Tax (Percentage)"},
             {"H3", "Federal Income Tax (Percentage based on Federal Allowance)"},
             {"I3", "Social Security Tax (Percentage)"},
             {"J3", "Medicare Tax (Percentage)"},
             {"K3", "Total Taxes Withheld (Percentage)"},
             {"L3", "Insurance\nDeduction\n(Dollars)"},
             {"M3", "Other Regular\nDeduction\n(Dollars)"},
             {"N3", "Total Regular Deductions (Excluding taxes, in dollars)"},
             {"C4", "Alex Sample"},
         })
        add(contents, {cell, text, ""});
    for (const auto& [cell, rate] :
         std::map<std::string, double>{{"G4", 0.023}, {"H4", 0.28}, {"I4", 0.063}, {"J4", 0.0145}})
        add(contents, {cell, rate, ""});
    for (int row = firstSlot; row <= lastSlot; ++row) {
        add(contents, {withRow("B#", row), double(row - firstSlot + 1), ""});
        add(contents,
            {withRow("K#", row), row == firstSlot ? 0.023 + 0.28 + 0.063 + 0.0145 : 0.0, withRow("=SUM(G#:J#)", row)});
        add(contents, {withRow("N#", row), 0.0, withRow("=L#+M#", row)});
    }
    return contents;
}

Formats employeeInformationFormats()
{
    Formats formats = {{"G3", percent}, {"G4", percent}, {"H4", percent}, {"I4", percent}, {"J4", percent}};
    for (int row = firstSlot; row <= lastSlot; ++row) {
        formats[withRow("K#", row)] = percent;
        formats[withRow("N#", row)] = money;
    }
    return formats;
}

Contents payrollCalculator()
{
    Contents contents;
    for (const auto& [cell, text] : std::map<std::string, std::string>{
             {"B2", "Payroll calculator"},
             {"K2", "Period Ending:"},
             {"B3", "Employee ID"},
             {"C3", "Employee Name"},
             {"D3", "Regular Hours Worked"},
             {"E3", "Vacation Hours"},
             {"F3", "Sick Hours"},
             {"G3", "Overtime Hours"},
             {"H3", "Overtime Rate"},
             {"I3", "Gross Pay"},
             {"J3", "Taxes and Deductions "},
             {"K3", "Other\nDeduction"},
             {"L3", "Net Pay"},
         })
        add(contents, {cell, text, ""});
    add(contents, {"L2", 38018.0, ""});
    add(contents, {"K4", 20.0, ""});
    for (int row = firstSlot; row <= lastSlot; ++row) {
        const bool isExample = row == firstSlot;
        add(contents, {withRow("B#", row), double(row - firstSlot + 1), ""});
        add(contents, {withRow("C#", row), isExample ? CellValue("Alex Sample") : CellValue(0.0),
                       withRow("=VLOOKUP(B#,'Employee information'!$B$4:$N$28,2,FALSE)", row)});
        add(contents, {withRow("I#", row), 0.0,
                       withRow("=(VLOOKUP(B#,'Employee information'!$B$4:$N$28,3,FALSE)*(D#+E#+F#)+G#*H#)", row)});
        add(contents,
            {withRow("J#", row), 0.0,
             withRow("=VLOOKUP(B#,'Employee information'!$B$4:$N$28,10,FALSE)*I#+'Employee information'!N", row) +
                 std::to_string(row == lastSlot ? lastSlot - 1 : row)}); // the last slot's known quirk
        add(contents, {withRow("L#", row), isExample ? -20.0 : 0.0, withRow("=I#-J#-K#", row)});
    }
    return contents;
}

Formats payrollCalculatorFormats()
{
    Formats formats = {{"L2", "m/d/yy"}};
    for (int row = firstSlot; row <= lastSlot; ++row) {
        formats[withRow("C#", row)] = ";;";
        for (const char* const cell : {"I#", "J#", "K#", "L#"})
            formats[withRow(cell, row)] = money;
    }
    return formats;
}

Contents individualPaystubs()
{
    const std::string information = "=VLOOKUP(H3,'Employee information'!$B$4:$N$28,";
    const std::string calculator = "=VLOOKUP(H3,'Payroll calculator'!$B$3:$L$28,";
    Contents contents;
    for (const auto& [cell, text] : std::map<std::string, std::string>{
             {"C2", "[Company Name]"},
             {"C3", "Period:"},
             {"E3", "Employee Name"},
             {"G3", "Employee ID"},
             {"C5", "Tax Status"},
             {"E5", "Federal Allowance (From W-4)"},
             {"G5", "Hours Worked"},
             {"C6", "Hourly Rate"},
             {"E6", "Overtime Rate"},
             {"G6", "Sick Hours"},
             {"C7", "Social Security Tax"},
             {"E7", "Federal Income Tax "},
             {"G7", "Vacation Hours"},
             {"C8", "Medicare Tax "},
             {"E8", "State Tax "},
             {"G8", "Overtime Hours"},
             {"C9", "Insurance Deduction"},
             {"E9", "Other Regular Deduction"},
             {"G9", "Gross Pay"},
             {"C10", "Total Taxes and Regular Deductions "},
             {"E10", "Other Deduction"},
             {"G10", "Total Taxes and Deductions "},
             {"G11", "Net Pay"},
         })
        add(contents, {cell, text, ""});
    for (const Expected& expected : std::vector<Expected>{
             {"D3", 38018.0, "='Payroll calculator'!$L$2"},
             {"F3", "Alex Sample", information + "2,FALSE)"},
             {"H3", 1.0, ""},
             {"D5", 0.0, information + "4,FALSE)"},
             {"F5", 0.0, information + "5,FALSE)"},
             {"H5", 0.0, calculator + "3,FALSE)"},
             {"D6", 0.0, information + "3,FALSE)"},
             {"F6", 0.0, calculator + "7,FALSE)"},
             {"H6", 0.0, calculator + "5,FALSE)"},
             {"D7", 0.0, information + "8,FALSE)*H9"},
             {"F7", 0.0, information + "7,FALSE)*H9"},
             {"H7", 0.0, calculator + "4,FALSE)"},
             {"D8", 0.0, information + "9,FALSE)*H9"},
             {"F8", 0.0, information + "6,FALSE)*H9"},
             {"H8", 0.0, calculator + "6,FALSE)"},
             {"D9", 0.0, information + "11,FALSE)"},
             {"F9", 0.0, information + "12,FALSE)"},
             {"H9", 0.0, calculator + "8,FALSE)"},
             {"D10", 0.0, "=SUM(F7:F9)+SUM(D7:D9)"},
             {"F10", 20.0, calculator + "10,FALSE)"},
             {"H10", 20.0, calculator + "9,FALSE)+F10"},
             {"H11", -20.0, calculator + "11,FALSE)"},
         })
        add(contents, expected);
    return contents;
}

Formats individualPaystubsFormats()
{
    Formats formats = {{"D3", "m/d/yy"}};
    for (const char* const cell :
         {"D6", "D7", "D8", "D9", "D10", "F6", "F7", "F8", "F9", "F10", "H9", "H10", "H11", "I9", "I10", "I11"})
        formats[cell] = money;
    return formats;
}

std::string shown(const CellValue& value)
{
    if (const auto* const number = std::get_if<double>(&value))
        return std::to_string(*number);
    if (const auto* const text = std::get_if<std::string>(&value))
        return '"' + *text + '"';
    return "neither number nor text";
}

void expectEqual(const CellValue& actual, const CellValue& expected, const std::string& place)
{
    const auto* const number = std::get_if<double>(&expected);
    if (number != nullptr && std::holds_alternative<double>(actual))
        EXPECT_NEAR(std::get<double>(actual), *number, 1e-12) << place;
    else
        EXPECT_EQ(actual, expected) << place << " holds " << shown(actual) << ", expected " << shown(expected);
}

struct SheetTable {
    const char* name;
    Contents contents;
    Formats formats;
};

class TemplateContent : public testing::TestWithParam<std::size_t> {};

TEST_P(TemplateContent, IsExactlyTheTables)
{
    const std::vector<SheetTable> tables = {
        {"Employee information", employeeInformation(), employeeInformationFormats()},
        {"Payroll calculator", payrollCalculator(), payrollCalculatorFormats()},
        {"Individual paystubs", individualPaystubs(), individualPaystubsFormats()},
    };
    const Book book = payrollTemplate();
    ASSERT_EQ(book.sheets.size(), tables.size());
    const SheetTable& table = tables[GetParam()];
    const Sheet& sheet = *book.sheets[GetParam()];
    EXPECT_EQ(sheet.name, table.name);

    std::set<std::string> filled;
    int rowIndex = 0;
    for (const engine::Row& row : sheet.rows()) {
        for (const Cell& cell : row.cells) {
            const std::string place = engine::addressText({rowIndex, cell.column});
            const auto format = table.formats.find(place);
            EXPECT_EQ(book.styles.numberFormatCode(book.styles.format(cell.format).numberFormat),
                      format == table.formats.end() ? "General" : format->second)
                << table.name << ' ' << place;
            if (isEmpty(cell.value) && !cell.formula)
                continue;
            filled.insert(place);
            const auto expected = table.contents.find(place);
            if (expected == table.contents.end()) {
                ADD_FAILURE() << table.name << ' ' << place << " should be empty, holds " << shown(cell.value);
                continue;
            }
            expectEqual(cell.value, expected->second.value, table.name + (' ' + place));
            EXPECT_EQ(cell.formula ? formulaText(*cell.formula, book) : "", expected->second.formula)
                << table.name << ' ' << place;
        }
        ++rowIndex;
    }
    for (const auto& [place, expected] : table.contents)
        EXPECT_TRUE(filled.contains(place)) << table.name << ' ' << place << " is empty";
    for (const auto& [place, code] : table.formats)
        EXPECT_NE(sheet.find(address(place)), nullptr) << table.name << ' ' << place << " has no format";
}

INSTANTIATE_TEST_SUITE_P(Sheets, TemplateContent, testing::Values(0, 1, 2));

TEST(Template, IsATemplateThatSaysWhereItComesFrom)
{
    const Book book = payrollTemplate();
    EXPECT_TRUE(book.isTemplate);
    EXPECT_TRUE(book.notices.empty());
    EXPECT_EQ(book.activeSheet, 0U);
    EXPECT_EQ(book.properties.title, "Payroll workbook");
    EXPECT_EQ(book.properties.application, "Wagemill");
    EXPECT_NE(book.properties.created, 0U);
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
        expectEqual(book.sheets[2]->value(address(place)), figure, place);
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
    EXPECT_EQ(book.names.size(), 2U);
    for (const engine::DefinedName& name : book.names)
        EXPECT_EQ(name.name, "Print_Titles");
}

TEST(CustomResource, OnlyTheTemplateIsThere)
{
    EXPECT_THROW(customResource(100), std::runtime_error);
    EXPECT_THROW(customResource(0), std::runtime_error);
}

} // namespace
} // namespace wagemill
