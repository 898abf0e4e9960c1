#include "bench/PayrollJob.h"

#include "app/base/Files.h"
#include "tests/support/EmbeddedBuilds.h"
#include "tests/support/TemporaryFolder.h"
#include "workbook/engine/picture/SheetPicture.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <algorithm>

namespace wagemill::bench {

namespace {

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
    const test::TemporaryFolder folder;
    const test::ScopedEnvironment temp("TEMP", folder.path().string());
    return engine::xls::readWorkbook(readBytesFromFile(test::EmbeddedBuilds().build(payroll(employees)).workbook),
                                     "built");
}

drawing::Drawing stubPicture(const engine::Book& book)
{
    const engine::Sheet& stubs = *book.sheets[book.activeSheet];
    return engine::sheetPicture(book, stubs, stubs.usedRange().value(), {});
}

} // namespace wagemill::bench
