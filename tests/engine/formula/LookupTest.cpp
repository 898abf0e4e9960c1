#include "tests/engine/formula/Calculator.h"

#include <gtest/gtest.h>

namespace wagemill::engine {
namespace {

constexpr auto notAvailable = ErrorCode::NotAvailable;

/// Keys of every kind in B3 to B12 of the second sheet, with a heading above and the row's number beside them.
Calculator withRates()
{
    Calculator calculator;
    const std::string_view keys[] = {"Employee ID", "1", "'5", "5", "5", "Smith", "TRUE", "", "a*b", "O'Neil"};
    int row = 3;
    for (const std::string_view key : keys) {
        calculator.type("B" + std::to_string(row), key, 1);
        calculator.type("C" + std::to_string(row), std::to_string(row), 1);
        ++row;
    }
    calculator.type("A1", "").type("A2", "smith").type("A3", "5").type("A4", "'5");
    return calculator;
}

TEST(ExactLookup, FindsTheFirstKeyOfItsKind)
{
    Calculator calculator = withRates();
    const Case cases[] = {
        {"=VLOOKUP(5,'Rates 1'!$B$3:$C$12,2,FALSE)", 6.0},
        {"=VLOOKUP(\"5\",'Rates 1'!$B$3:$C$12,2,FALSE)", 5.0},
        {"=VLOOKUP(A3,'Rates 1'!$B$3:$C$12,2,FALSE)", 6.0},
        {"=VLOOKUP(A4,'Rates 1'!$B$3:$C$12,2,FALSE)", 5.0},
        {"=VLOOKUP(A2,'Rates 1'!$B$3:$C$12,2,FALSE)", 8.0}, // case does not count
        {"=VLOOKUP(\"s?ITH\",'Rates 1'!$B$3:$C$12,2,0)", 8.0},
        {"=VLOOKUP(\"*\",'Rates 1'!$B$3:$C$12,2,FALSE)", 3.0}, // any text: the heading
        {"=VLOOKUP(\"a~*b\",'Rates 1'!$B$3:$C$12,2,FALSE)", 11.0},
        {"=VLOOKUP(\"employee id\",'Rates 1'!$B$3:$C$12,1,FALSE)", text("Employee ID")},
        {"=VLOOKUP(TRUE,'Rates 1'!$B$3:$C$12,2,FALSE)", 9.0},
        {"=VLOOKUP(1,'Rates 1'!$B$3:$C$12,2,)", 4.0}, // an argument left out behind a comma is FALSE
        {"=VLOOKUP(7,'Rates 1'!$B$3:$C$12,2,FALSE)", notAvailable},
        {"=VLOOKUP(A1,'Rates 1'!$B$3:$C$12,2,FALSE)", notAvailable},   // an empty key finds nothing,
        {"=VLOOKUP(\"\",'Rates 1'!$B$3:$C$12,2,FALSE)", notAvailable}, // and an empty cell is never found
        {"=VLOOKUP(0,'Rates 1'!$B$3:$C$12,2,FALSE)", notAvailable},
        {"=VLOOKUP(1,'Rates 1'!$B$3:$C$12,3,FALSE)", ErrorCode::Reference},
        {"=VLOOKUP(1,'Rates 1'!$B$3:$C$12,0,FALSE)", ErrorCode::Value},
        {"=VLOOKUP(1/0,'Rates 1'!$B$3:$C$12,2,FALSE)", ErrorCode::DivisionByZero},
        {"=VLOOKUP(\"SMITH\",'Rates 1'!$B$3:$D$12,3,FALSE)", 0.0}, // answers an empty cell
        {"=VLOOKUP(\"SMITH\",'Rates 1'!$B$3:$D$12,3,FALSE)&\"\"", text("")},
        {"=VLOOKUP(1,'Rates 1'!$B:$C,2,FALSE)", 4.0},
        {"=MATCH(\"o'neil\",'Rates 1'!B3:B12,0)", 10.0},
        {"=MATCH(5,'Rates 1'!B3:C12,0)", notAvailable}, // neither a row nor a column
        {"=HLOOKUP(\"c\",{\"a\",\"b\",\"C\";1,2,3},2,FALSE)", 3.0},
        {"=HLOOKUP(\"c\",{\"a\",\"b\",\"C\";1,2,3},3,FALSE)", ErrorCode::Reference},
        {"=INDEX('Rates 1'!B3:C12,MATCH(\"Smith\",'Rates 1'!B3:B12,0),2)", 8.0},
    };
    expectValues(calculator, cases);
}

TEST(ApproximateLookup, TakesTheLastKeyThatIsNotPast)
{
    Calculator calculator;
    for (int row = 1; row <= 5; ++row) {
        calculator.type("A" + std::to_string(row), std::to_string(row * 10));
        calculator.type("B" + std::to_string(row), std::to_string(row));
        calculator.type("C" + std::to_string(row), std::to_string(60 - row * 10));
    }
    const Case cases[] = {
        {"=VLOOKUP(25,A1:B5,2)", 2.0},
        {"=VLOOKUP(30,A1:B5,2,TRUE)", 3.0},
        {"=VLOOKUP(99,A1:B5,2)", 5.0},
        {"=VLOOKUP(9,A1:B5,2)", notAvailable},
        {"=VLOOKUP(\"x\",A1:B5,2)", notAvailable},
        {"=VLOOKUP(99,A:B,2)", 5.0}, // empty cells behind the table are passed over
        {"=MATCH(25,A1:A5)", 2.0},
        {"=MATCH(25,C1:C5,-1)", 3.0}, // descending
        {"=LOOKUP(45,A1:A5,B1:B5)", 4.0},
        {"=LOOKUP(45,A1:B5)", 4.0},
        {"=LOOKUP(2,{1,2,3},{\"a\",\"b\",\"c\"})", text("b")},
        {"=MATCH(\"m\",{\"a\",\"k\",\"z\"})", 2.0},
    };
    expectValues(calculator, cases);
}

TEST(Index, AnswersCellsRowsAndColumns)
{
    Calculator calculator;
    calculator.type("A1", "1").type("B1", "2").type("A2", "3").type("B2", "4");
    const Case cases[] = {
        {"=INDEX(A1:B2,2,1)", 3.0},
        {"=SUM(INDEX(A1:B2,0,2))", 6.0},
        {"=SUM(INDEX(A1:B2,2,0))", 7.0},
        {"=INDEX(A1:B1,2)", 2.0}, // of a single row the one index is the column's
        {"=INDEX(A1:A2,2)", 3.0},
        {"=INDEX((A1:A2,B1:B2),2,1,2)", 4.0},
        {"=INDEX(A1:B2,3,1)", ErrorCode::Reference},
        {"=INDEX(A1:B2,-1,1)", ErrorCode::Value},
    };
    expectValues(calculator, cases);
}

} // namespace
} // namespace wagemill::engine
