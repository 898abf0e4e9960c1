#include "tests/workbook/BuildCases.h"

#include <algorithm>
#include <array>
#include <random>

namespace wagemill::test {

namespace {

constexpr int typedEmployees = 200;
constexpr int employeesInAWorkbook = 25;

EmployeeRow sampleEmployee()
{
    EmployeeRow row;
    std::ranges::transform(rowFields, row.texts.begin(), &RowField::sample);
    return row;
}

EmployeeRow employeeWith(std::initializer_list<std::pair<std::string_view, std::string>> changes)
{
    EmployeeRow row = sampleEmployee();
    for (const auto& [field, text] : changes)
        row.texts[rowFieldIndex(field)] = text;
    return row;
}

std::vector<EmployeeRow> numberedEmployees(int count)
{
    std::vector<EmployeeRow> rows;
    for (int number = 1; number <= count; ++number)
        rows.push_back(employeeWith({{"txtEmployeeID", "E" + std::to_string(100 + number)},
                                     {"txtName", "Employee " + std::to_string(number)},
                                     {"txtHourlyWage", "$" + std::to_string(10 + number) + ".25"},
                                     {"txtRegHoursWorked", std::to_string(30 + number % 11) + ".50"}}));
    return rows;
}

/// IDs that a spreadsheet may take for something else. Each is once in a workbook.
constexpr auto oddIds = std::to_array<std::string_view>(
    {"007",  "1e5",   "1-2",     "TRUE",          "false",        "12.5%", "3/4/2026", "$5",   "E*",
     "A?c",  "x&y",   "Net Pay", "'42",           "  7b ",        "=1+1",  "-Bob",     "+Ann", "@home",
     "#N/A", "1,234", "12:30",   "M\xC3\xBCller", "\xE6\x9D\x8E", "(9)",   "E 1"});

/// Amounts of a size that leaves every product within the 15 digits that a spreadsheet shows.
constexpr auto amounts = std::to_array<std::string_view>(
    {"$15.00", "0", "7.65", "1,234.56", "0.005", "12.345", "($3.50)", "-2", "$0.01", "9,999.99", "33.333", "1E2"});

template <std::size_t Count>
std::string pick(const std::array<std::string_view, Count>& choices, std::mt19937& random)
{
    return std::string(choices.at(random() % Count));
}

std::vector<EmployeeRow> typedWorkbook(int first, std::mt19937& random)
{
    std::vector<EmployeeRow> rows;
    for (int number = 0; number < employeesInAWorkbook; ++number) {
        EmployeeRow row;
        for (std::size_t field = 0; field < rowFields.size(); ++field)
            row.texts[field] = rowFields[field].kind == FieldKind::FreeText ? "" : pick(amounts, random);
        const bool odd = first == 0 || random() % 4 == 0;
        row.texts[employeeIdField] =
            odd ? std::string(oddIds.at(static_cast<std::size_t>(number))) : "T" + std::to_string(first + number);
        row.texts[rowFieldIndex("txtName")] = "Name " + std::to_string(first + number);
        row.texts[rowFieldIndex("txtTaxStatus")] = number % 3 == 0 ? "" : "single";
        row.texts[rowFieldIndex("txtFedAllowance")] = number % 4 == 0 ? "" : std::to_string(number);
        rows.push_back(row);
    }
    return rows;
}

} // namespace

std::vector<BuildCase> buildCases()
{
    const PayrollHeader acme = {"ACME Inc", "3/31/2026"};
    std::vector<BuildCase> cases = {
        {"sample", {acme, {sampleEmployee()}}},
        {"blank", {{"", "2/29/2028"}, {EmployeeRow{}}}},
        {"long-texts",
         {{"The Very Long Named Family Company of Shipwrights, Sailmakers and Chandlers", "12/31/2026"},
          {employeeWith({{"txtName", "Bartholomew Maximilian Featherstonehaugh-Cholmondeley"},
                         {"txtTaxStatus", "Married, filing separately"},
                         {"txtEmployeeID", std::string(255, 'W')}})}}},
        {"negative-net-pay", {acme, {employeeWith({{"txtOtherDeduction", "$5,000.00"}, {"txtStateTax", "95"}})}}},
        {"huge", {acme, {employeeWith({{"txtHourlyWage", "$99,999.99"}, {"txtRegHoursWorked", "744"}})}}},
        {"unknown-names", {acme, {employeeWith({{"txtName", "=Smith"}, {"txtTaxStatus", "=Foo(1)&\"x\""}})}}},
        {"employees-3", {acme, numberedEmployees(3)}},
        {"employees-25", {acme, numberedEmployees(25)}},
        {"employees-26", {acme, numberedEmployees(26)}},
    };
    std::mt19937 random(20260331); // the same amounts in every run
    for (int first = 0; first < typedEmployees; first += employeesInAWorkbook)
        cases.push_back({"typed-" + std::to_string(first), {acme, typedWorkbook(first, random)}});
    return cases;
}

} // namespace wagemill::test
