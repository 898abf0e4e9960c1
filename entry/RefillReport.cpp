#include "entry/RefillReport.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

namespace wagemill {

namespace {

constexpr std::size_t maxLines = 12;

/// Fields one after the other that cannot be refilled for the same reason.
struct FailedFields {
    std::string first; ///< "employee 2, Hourly Wage"
    std::string last;
    std::string reason;
};

std::string place(const EmployeePanel& employee, const RowField& field)
{
    const std::string_view caption = field.caption.substr(0, field.caption.rfind(':'));
    return "employee " + std::to_string(employee.row() + 1) + ", " + std::string(caption);
}

std::vector<FailedFields> failuresOfRefilling(std::span<EmployeePanel* const> employees)
{
    std::vector<FailedFields> failures;
    bool hasFailed = false; // the field before
    for (EmployeePanel* employee : employees)
        for (std::size_t field = 0; field < rowFields.size(); ++field)
            try {
                employee->refill(field);
                hasFailed = false;
            } catch (const std::exception& error) {
                const std::string failed = place(*employee, rowFields[field]);
                if (!hasFailed || failures.back().reason != error.what())
                    failures.push_back({failed, failed, error.what()});
                failures.back().last = failed;
                hasFailed = true;
            }
    return failures;
}

} // namespace

void refillTogether(std::span<EmployeePanel* const> employees)
{
    const std::vector<FailedFields> failures = failuresOfRefilling(employees);
    if (failures.empty())
        return;
    std::string text = "What is stored for these employees cannot be shown:";
    const std::size_t lines = std::min(failures.size(), maxLines);
    for (const auto& [first, last, reason] : std::span(failures).first(lines))
        text += "\n- " + first + (first == last ? "" : " to " + last) + ": " + reason;
    if (failures.size() > lines)
        text += "\nand " + std::to_string(failures.size() - lines) + " more, up to " + failures.back().last + ".";
    throw std::runtime_error(text);
}

} // namespace wagemill
