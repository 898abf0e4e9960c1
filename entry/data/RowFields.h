#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace wagemill {

enum class FieldKind : std::uint8_t { FreeText, Currency, Number };

/// One of the fields that every employee row has.
struct RowField {
    std::string_view name; ///< of the control, and stem of its settings key
    std::string_view caption;
    FieldKind kind;
    std::string_view fallback;      ///< shown until a value was stored
    std::uint8_t informationColumn; ///< column of sheet 1 that receives it, from 1; 0: none
    std::uint8_t calculatorColumn;  ///< column of sheet 2
    bool isRate = false;            ///< a percentage: written with "%" behind it
};

/// The fields in the order of their labels, of the tab key, of the store and of the columns.
inline constexpr auto rowFields = std::to_array<RowField>({
    {"txtEmployeeID", "Employee Id:", FieldKind::FreeText, "", 2, 2},
    {"txtName", "Name:", FieldKind::FreeText, "", 3, 0},
    {"txtHourlyWage", "Hourly Wage:", FieldKind::Currency, "0", 4, 0},
    {"txtTaxStatus", "Tax Status:", FieldKind::FreeText, "", 5, 0},
    {"txtFedAllowance", "Federal Allowance (From W-4):", FieldKind::FreeText, "", 6, 0},
    {"txtStateTax", "State Tax (Percentage):", FieldKind::Number, "0", 7, 0, true},
    {"txtFedIT", "Federal Income Tax (Percentage based on Federal Allowance):", FieldKind::Number, "0", 8, 0, true},
    {"txtSocialSecurityTax", "Social Security Tax (Percentage):", FieldKind::Number, "0", 9, 0, true},
    {"txtMedicareTax", "Medicare Tax (Percentage):", FieldKind::Number, "0", 10, 0, true},
    {"txtInsuranceDeduction", "Insurance Deduction (Dollars):", FieldKind::Currency, "0", 12, 0},
    {"txtOtherRegDeduction", "Other Regular Deduction (Dollars):", FieldKind::Currency, "0", 13, 0},
    {"txtRegHoursWorked", "Regular Hours Worked:", FieldKind::Number, "0", 0, 4},
    {"txtVacationHours", "Vacation Hours:", FieldKind::Number, "0", 0, 5},
    {"txtSickHours", "Sick Hours:", FieldKind::Number, "0", 0, 6},
    {"txtOT", "Overtime Hours:", FieldKind::Number, "0", 0, 7},
    {"txtOTRate", "Overtime Rate:", FieldKind::Currency, "0", 0, 8},
    {"txtOtherDeduction", "Other Deduction:", FieldKind::Currency, "0", 0, 11},
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
