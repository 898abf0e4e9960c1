#pragma once

#include "workbook/engine/Book.h"
#include "workbook/engine/xls/BiffReader.h"
#include "workbook/engine/xls/BiffWriter.h"

#include <memory>
#include <utility>
#include <vector>

namespace wagemill::engine::xls {

inline Book writtenAndRead(const Book& book, FileKind kind = FileKind::Workbook)
{
    return readWorkbook(writeWorkbook(book, kind), "test.xls");
}

inline std::shared_ptr<const Formula> formulaOf(std::vector<Token> tokens)
{
    return std::make_shared<const Formula>(Formula{std::move(tokens)});
}

inline ReferenceToken cellToken(int row, int column, OperandClass operandClass = OperandClass::Value)
{
    ReferenceToken token;
    token.operandClass = operandClass;
    token.first = {row, column, true, true};
    return token;
}

inline ReferenceToken areaToken(const CellRect& area, bool relative = true)
{
    ReferenceToken token;
    token.operandClass = OperandClass::Reference;
    token.first = {area.firstRow, area.firstColumn, relative, relative};
    token.last = ReferencePart{area.lastRow, area.lastColumn, relative, relative};
    return token;
}

/// =A1+A2
inline std::shared_ptr<const Formula> sumOfTwoCells()
{
    return formulaOf({cellToken(0, 0), cellToken(1, 0), OperatorToken{Operator::Add}});
}

/// A small workbook with a bit of everything that a payroll workbook has.
inline Book smallBook()
{
    Book book;
    Sheet& employees = book.addSheet("Employee information");
    Sheet& stubs = book.addSheet("Stubs \xC3\xA9");
    employees.at({0, 0}).value = 38018.0;
    employees.at({1, 0}).value = 0.28;
    employees.at({2, 0}).value = std::string("Zo\xC3\xAB \xE6\x97\xA5\xE6\x9C\xAC");
    employees.at({3, 0}).value = true;
    employees.at({3, 1}).value = ErrorCode::NotAvailable;
    CellFormat percent;
    percent.numberFormat = 10;
    percent.usedAttributes = 4;
    employees.at({1, 0}).format = book.styles.formatFor(percent);
    Cell& sum = employees.at({4, 0});
    sum.formula = sumOfTwoCells();
    sum.value = 38018.28;
    ReferenceToken table = areaToken({0, 0, 3, 1}, false);
    table.externSheet = book.externSheetFor(0);
    Cell& lookup = stubs.at({1, 2});
    lookup.formula = formulaOf({cellToken(0, 7), table, NumberToken{2}, LogicalToken{false},
                                FunctionToken{OperandClass::Value, 102, 4, true}});
    lookup.value = std::string("found");
    stubs.merged.push_back({5, 0, 6, 3});
    stubs.columns.push_back({2, 3, 5000, defaultCellFormat, false, true, 0, false});
    stubs.row(7).heightTwips = 600;
    stubs.row(7).heightSetByHand = true;
    stubs.selection = {{3, 4}, {3, 4, 5, 6}};
    book.activeSheet = 1;
    book.properties.title = "Payroll";
    return book;
}

} // namespace wagemill::engine::xls
