#pragma once

#include "tests/workbook/BuildCases.h"

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace wagemill::test {

/// 500 IDs that a spreadsheet may take for something else (blank, wildcards, numbers, dates, logicals, formulas, 255
/// letters), 25 to a workbook, each beside what it may be mistaken for.
class OddIds {
public:
    OddIds()
    {
        std::istringstream texts(
            "|*|?|~|~*|~?|~~|**|?*|E*|*1|E?|E1|e1|TRUE|true|FALSE|007|07|7|7.0|1e5|100000|1E5|1-2|1/2|"
            "3/4/2026|12:30|12.5%|0.125|$5|5|(5)|-5|'5|'008|'E1|'|''|#N/A|#REF!|=1+1|=2|=\"E1\"|=NA()|"
            "-Bob|+Ann|@home| 7|7 |a b|x&y|<5|>0|<>|1,234|1234|1,23|Net Pay|Employee ID|M\u00FCller|"
            "M\u00DCLLER|\u674E|\U0001F642|\u00DF|ss|0|-0|1e400|1e-400|0x10|NaN");
        for (std::string text; std::getline(texts, text, '|');)
            m_texts.push_back(text);
    }

    std::vector<BuildCase> cases()
    {
        std::vector<BuildCase> cases;
        for (std::size_t number = 0; number < 500; ++number) {
            if (number % 25 == 0)
                cases.push_back({"ids-" + std::to_string(number), {{"ACME Inc", "3/31/2026"}, {}}});
            EmployeeRow row;
            for (std::size_t field = 0; field < rowFields.size(); ++field)
                row.texts[field] = rowFields[field].kind == FieldKind::FreeText ? "" : std::to_string(number + 1);
            row.texts[employeeIdField] = number < m_texts.size() ? m_texts[number] : oddId();
            row.texts[rowFieldIndex("txtName")] = "Name " + std::to_string(number);
            cases.back().data.rows.push_back(row);
        }
        for (BuildCase& each : cases)
            std::ranges::shuffle(each.data.rows, m_random);
        return cases;
    }

private:
    const std::string& text() { return m_texts[m_random() % m_texts.size()]; }

    /// One of the texts, an unused slot's number, 255 letters, or two of the texts in one.
    std::string oddId()
    {
        switch (m_random() % 8) {
        case 0:
            return std::to_string(1 + m_random() % 27);
        case 1:
            return std::string(254, 'W') + static_cast<char>('A' + m_random() % 3);
        case 2: {
            const std::string first = text();
            return first.starts_with('=') ? first : first + text();
        }
        default:
            return text();
        }
    }

    std::mt19937 m_random{20261121}; ///< the same IDs in every run
    std::vector<std::string> m_texts;
};

} // namespace wagemill::test
