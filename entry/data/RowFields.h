#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace wagemill {

enum class FieldKind : std::uint8_t { FreeText, Currency, Number, Rate };

/// The columns of the workbook that receive a field, from 1; 0: none.
struct FieldColumns {
    std::uint8_t sheet1 = 0; ///< Information
    std::uint8_t sheet2 = 0; ///< Calculator
};

/// What follows the last field of a group in the window; two columns side by side have it at the same height.
enum class Gap : std::uint8_t { None, Line, Column };

/// One of the fields that every employee row has.
struct RowField {
    std::string_view name; ///< of the control, and stem of its settings key
    std::string_view caption;
    FieldKind kind; ///< a Rate is a percentage: it is written with "%" after it
    FieldColumns columns;
    std::string_view sample; ///< the example for a new user; money is a plain number
    Gap gap = Gap::None;

    /// What is shown until a value was stored.
    constexpr std::string_view fallback() const { return kind == FieldKind::FreeText ? "" : "0"; }
};

/// The fields in the order of their labels, of the tab key, of the store and of the columns.
inline constexpr auto rowFields = std::to_array<RowField>({
    {"txtEmployeeID", "Employee Id:", FieldKind::FreeText, {.sheet1 = 2, .sheet2 = 2}, "E118"},
    {"txtName", "Name:", FieldKind::FreeText, {.sheet1 = 3}, "Ned Hollister", Gap::Line},
    {"txtHourlyWage", "Hourly Wage:", FieldKind::Currency, {.sheet1 = 4}, "15"},
    {"txtTaxStatus", "Tax Status:", FieldKind::FreeText, {.sheet1 = 5}, ""},
    {"txtFedAllowance", "Federal Allowance (From W-4):", FieldKind::FreeText, {.sheet1 = 6}, "", Gap::Line},
    {"txtStateTax", "State Tax (Percentage):", FieldKind::Rate, {.sheet1 = 7}, "10"},
    {"txtFedIT", "Federal Income Tax (Percentage based on Federal Allowance):", FieldKind::Rate, {.sheet1 = 8}, "15"},
    {"txtSocialSecurityTax", "Social Security Tax (Percentage):", FieldKind::Rate, {.sheet1 = 9}, "1"},
    {"txtMedicareTax", "Medicare Tax (Percentage):", FieldKind::Rate, {.sheet1 = 10}, "4", Gap::Column},
    {"txtInsuranceDeduction", "Insurance Deduction (Dollars):", FieldKind::Currency, {.sheet1 = 12}, "2"},
    {"txtOtherRegDeduction", "Other Regular Deduction (Dollars):", FieldKind::Currency, {.sheet1 = 13}, "5", Gap::Line},
    {"txtRegHoursWorked", "Regular Hours Worked:", FieldKind::Number, {.sheet2 = 4}, "39"},
    {"txtVacationHours", "Vacation Hours:", FieldKind::Number, {.sheet2 = 5}, "7"},
    {"txtSickHours", "Sick Hours:", FieldKind::Number, {.sheet2 = 6}, "15", Gap::Line},
    {"txtOT", "Overtime Hours:", FieldKind::Number, {.sheet2 = 7}, "8"},
    {"txtOTRate", "Overtime Rate:", FieldKind::Currency, {.sheet2 = 8}, "10.25"},
    {"txtOtherDeduction", "Other Deduction:", FieldKind::Currency, {.sheet2 = 11}, "2"},
});

/// The place of a field in rowFields. Throws (at compile time where used so) when there is none of that name.
constexpr std::size_t rowFieldIndex(std::string_view name)
{
    for (std::size_t index = 0; index < rowFields.size(); ++index)
        if (rowFields[index].name == name)
            return index;
    throw std::out_of_range("no such field");
}

inline constexpr std::size_t employeeIdField = rowFieldIndex("txtEmployeeID");

/// The settings key of a row's field: the name followed by the row's index, "txtOTRate0".
inline std::string rowFieldKey(const RowField& field, std::int16_t row)
{
    return std::string(field.name) + std::to_string(row);
}

} // namespace wagemill
