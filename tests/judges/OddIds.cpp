#include "tests/judges/OddIds.h"

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <string_view>

namespace wagemill::test {

namespace {

constexpr int allIds = 500;
constexpr int idsInAWorkbook = 25;

constexpr auto oddTexts = std::to_array<std::string_view>({"",
                                                           "*",
                                                           "?",
                                                           "~",
                                                           "~*",
                                                           "~?",
                                                           "~~",
                                                           "**",
                                                           "?*",
                                                           "E*",
                                                           "*1",
                                                           "E?",
                                                           "E1",
                                                           "e1",
                                                           "TRUE",
                                                           "true",
                                                           "FALSE",
                                                           "007",
                                                           "07",
                                                           "7",
                                                           "7.0",
                                                           "1e5",
                                                           "100000",
                                                           "1E5",
                                                           "1-2",
                                                           "1/2",
                                                           "3/4/2026",
                                                           "12:30",
                                                           "12.5%",
                                                           "0.125",
                                                           "$5",
                                                           "5",
                                                           "(5)",
                                                           "-5",
                                                           "'5",
                                                           "'008",
                                                           "'E1",
                                                           "'",
                                                           "''",
                                                           "#N/A",
                                                           "#REF!",
                                                           "=1+1",
                                                           "=2",
                                                           "=\"E1\"",

                                                           "=NA()",
                                                           "-Bob",
                                                           "+Ann",
                                                           "@home",
                                                           " 7",
                                                           "7 ",
                                                           "a b",
                                                           "x&y",
                                                           "<5",
                                                           ">0",
                                                           "<>",
                                                           "1,234",
                                                           "1234",
                                                           "1,23",
                                                           "Net Pay",
                                                           "Employee ID",
                                                           "M\xC3\xBCller",
                                                           "M\xC3\x9CLLER",
                                                           "\xE6\x9D\x8E",
                                                           "\xF0\x9F\x99\x82",
                                                           "\xC3\x9F",
                                                           "ss",
                                                           "0",
                                                           "-0",
                                                           "1e400",
                                                           "1e-400",
                                                           "0x10",
                                                           "NaN"});

std::string longId(std::mt19937& chance)
{
    return std::string(254, 'W') + static_cast<char>('A' + chance() % 3);
}

/// One of the texts above, an unused slot's number, 255 letters, or two of them in one.
std::string oddId(std::mt19937& chance)
{
    const auto text = [&] { return std::string(oddTexts.at(chance() % oddTexts.size())); };
    switch (chance() % 8) {
    case 0:
        return std::to_string(1 + chance() % 27);
    case 1:
        return longId(chance);
    case 2: {
        const std::string joined = text() + text();
        return joined.starts_with('=') ? text() : joined;
    }
    default:
        return text();
    }
}

EmployeeRow employee(int number, std::string id)
{
    EmployeeRow row;
    for (std::size_t field = 0; field < rowFields.size(); ++field)
        row.texts[field] = rowFields[field].kind == FieldKind::FreeText ? "" : std::to_string(number + 1);
    row.texts[employeeIdField] = std::move(id);
    row.texts[rowFieldIndex("txtName")] = "Name " + std::to_string(number);
    return row;
}

} // namespace

std::vector<BuildCase> oddIdCases()
{
    std::mt19937 chance(20261121); // the same IDs in every run
    std::vector<BuildCase> cases;
    for (int first = 0; first < allIds; first += idsInAWorkbook) {
        BuildCase build{"ids-" + std::to_string(first), {{"ACME Inc", "3/31/2026"}, {}}};
        for (int number = first; number < first + idsInAWorkbook; ++number) {
            const bool each = number < static_cast<int>(oddTexts.size());
            build.data.rows.push_back(
                employee(number, each ? std::string(oddTexts.at(static_cast<std::size_t>(number))) : oddId(chance)));
        }
        std::ranges::shuffle(build.data.rows, chance);
        cases.push_back(std::move(build));
    }
    return cases;
}

} // namespace wagemill::test
