#include "bench/PayrollJob.h"

#include "app/base/Files.h"
#include "resources/PayrollTemplate.h"
#include "workbook/engine/formula/CellEntry.h"
#include "workbook/engine/formula/Recalculation.h"
#include "workbook/engine/picture/SheetPicture.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <algorithm>
#include <string_view>

namespace wagemill::bench {

namespace {

constexpr std::size_t informationSheet = 0;
constexpr std::size_t calculatorSheet = 1;
constexpr std::size_t stubSheet = 2;
constexpr int firstSummaryRow = 3; // rows and columns of the engine count from 0
constexpr int firstStubRow = 1;
constexpr int lastStubRow = 11;
constexpr int stubHeight = 12;
constexpr engine::CellAddress periodEndingCell = {1, 11};
constexpr int companyColumn = 2;
constexpr int employeeColumn = 7;
constexpr CalendarDate today = {2026, 4, 7};
constexpr double now = 46119.5;

EmployeeRow employee(int number)
{
    EmployeeRow row;
    std::ranges::transform(rowFields, row.texts.begin(), &RowField::sample);
    row.texts[employeeIdField] = "E" + std::to_string(1000 + number);
    row.texts[rowFieldIndex("txtName")] = "Employee Number " + std::to_string(number);
    row.texts[rowFieldIndex("txtHourlyWage")] = "$" + std::to_string(10 + number % 40) + ".25";
    row.texts[rowFieldIndex("txtRegHoursWorked")] = std::to_string(30 + number % 11) + ".5";
    return row;
}

void type(engine::Book& book, std::size_t sheet, engine::CellAddress cell, std::string_view text)
{
    engine::enterText(book, sheet, cell, text, {}, today);
}

void fillSheet(engine::Book& book, std::size_t sheet, std::uint8_t FieldColumns::*column, int row,
               const EmployeeRow& texts)
{
    for (std::size_t index = 0; index < rowFields.size(); ++index)
        if (const RowField& field = rowFields[index]; field.columns.*column != 0)
            type(book, sheet, {row, field.columns.*column - 1},
                 texts.texts[index] + (field.kind == FieldKind::Rate ? "%" : ""));
}

/// Types the payroll into a workbook opened from the template and pastes a stub for every employee, in the order of a
/// build, through the engine alone.
void fill(engine::Book& book, const PayrollData& payroll)
{
    engine::Sheet& stubs = *book.sheets.at(stubSheet);
    for (int index = 0; index < static_cast<int>(payroll.rows.size()); ++index) {
        const EmployeeRow& row = payroll.rows[static_cast<std::size_t>(index)];
        const int stub = firstStubRow + index * stubHeight;
        fillSheet(book, informationSheet, &FieldColumns::sheet1, firstSummaryRow + index, row);
        fillSheet(book, calculatorSheet, &FieldColumns::sheet2, firstSummaryRow + index, row);
        type(book, calculatorSheet, periodEndingCell, payroll.header.periodEnding);
        stubs.copyRows(firstStubRow, lastStubRow, stub);
        type(book, stubSheet, {stub, companyColumn}, payroll.header.companyName);
        type(book, stubSheet, {stub + 1, employeeColumn}, row.texts[employeeIdField]);
    }
    book.activeSheet = stubSheet;
}

} // namespace

PayrollData payroll(int employees)
{
    PayrollData data{{"ACME Inc", "3/31/2026"}, {}};
    for (int number = 0; number < employees; ++number)
        data.rows.push_back(employee(number));
    return data;
}

engine::Book filledBook(int employees)
{
    engine::Book book = engine::xls::readWorkbook(payrollTemplateFile(), "template.xlt");
    fill(book, payroll(employees));
    engine::recalculate(book, {{}, now});
    return book;
}

drawing::Drawing stubPicture(const engine::Book& book)
{
    const engine::Sheet& stubs = *book.sheets[book.activeSheet];
    return engine::sheetPicture(book, stubs, stubs.usedRange().value(), {});
}

engine::Book engineJob(const PayrollData& payroll, const std::filesystem::path& folder)
{
    const std::filesystem::path workbook = folder / "workbook.xls";
    engine::Book book = engine::xls::readWorkbook(readBytesFromFile(folder / "template.xlt"), "workbook.xls");
    fill(book, payroll);
    engine::recalculate(book, {{}, now});
    std::filesystem::remove(workbook);
    writeBytesToFile(engine::xls::writeWorkbook(book, engine::xls::FileKind::Workbook), workbook);
    return engine::xls::readWorkbook(readBytesFromFile(workbook), "workbook.xls");
}

} // namespace wagemill::bench
