#pragma once

#include "workbook/engine/xls/WorkbookFile.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace wagemill::engine::xls {

using Bytes = std::vector<std::byte>;

/// Bytes written as hexadecimal digits, "1E 02 00"; blanks do not count.
inline Bytes fromHex(std::string digits)
{
    std::erase(digits, ' ');
    Bytes bytes;
    for (std::size_t index = 0; index + 1 < digits.size(); index += 2)
        bytes.push_back(static_cast<std::byte>(std::stoi(digits.substr(index, 2), nullptr, 16)));
    return bytes;
}

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
    return {operandClass, {}, {row, column, true, true}, {}};
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
    book.addSheet("Employee information").at({0, 0}).value = 38018.0;
    Sheet& stubs = book.addSheet("Stubs \xC3\xA9");
    const ReferenceToken table = {OperandClass::Reference, book.externSheetFor(0), {}, ReferencePart{3, 1}};
    stubs.at({1, 2}).formula = formulaOf({cellToken(0, 7), table, NumberToken{2}, LogicalToken{false},
                                          FunctionToken{OperandClass::Value, 102, 4, true}});
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
