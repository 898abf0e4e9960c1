#pragma once

#include "workbook/engine/Book.h"
#include "workbook/engine/formula/FormulaParser.h"

#include <memory>

namespace wagemill::fuzz {

/// Two sheets with a value of every kind in A1:C4, a formula that reads what is tried, and names.
inline engine::Book preparedBook()
{
    using namespace engine;
    Book book;
    const auto parsed = [&book](const char* text) { return parseFormula(text, book, 0, {}); };
    Sheet& sheet = book.addSheet("Pay");
    book.addSheet("Rates 1").at({0, 0}).value = 0.28;
    const CellValue values[] = {1.0,  -2.5, 0.0, "12.5", "Ann", true, false, 46112.0, "", ErrorCode::DivisionByZero,
                                1e300};
    for (int index = 0; const CellValue& value : values) { // C4 is empty
        sheet.at({index / 3, index % 3}).value = value;
        ++index;
    }
    sheet.at({9, 0}).formula = std::make_shared<const Formula>(parsed("=SUM(A1:F6,'Rates 1'!A1)"));
    book.names = {{"rate", {}, parsed("='Rates 1'!$A$1"), {}},
                  {"below", {}, parsed("=A2:B3"), {}},
                  {"itself", {}, {{NameToken{OperandClass::Value, {}, 3}}}, {}}};
    return book;
}

} // namespace wagemill::fuzz
