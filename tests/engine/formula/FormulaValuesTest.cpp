#include "tests/engine/formula/Calculator.h"
#include "workbook/engine/OperandClasses.h"

#include <gtest/gtest.h>

namespace wagemill::engine {
namespace {

constexpr auto valueError = ErrorCode::Value;

TEST(Operators, WorkInTheirOrderOfPrecedence)
{
    Calculator calculator;
    const Case cases[] = {
        {"=1+2*3", 7.0},
        {"=(1+2)*3", 9.0},
        {"=-2^2", 4.0}, // a sign binds closer than a power
        {"=0-2^2", -4.0},
        {"=2^-1", 0.5},
        {"=2^3^2", 64.0}, // powers work from the left
        {"=50%*10", 5.0},
        {"=200%%", 0.02},
        {"=-5%", -0.05},
        {"=10-2-3", 5.0},
        {"=12/3/2", 2.0},
        {"=1+1&2+2", text("24")},
        {"=\"a\"&\"b\"=\"AB\"", true},
        {"=1<2=TRUE", true}, // comparisons too, from the left
        {"=--\"7\"", 7.0},
        {"=+\"text\"", text("text")}, // a plus sign changes nothing
    };
    expectValues(calculator, cases);
}

TEST(Operators, ReadValuesOfOtherKinds)
{
    Calculator calculator;
    calculator.type("A1", "'10").type("A2", "%").type("A3", "TRUE").type("B1", "5").type("B2", "#N/A");
    const Case cases[] = {
        {"=A1+1", 11.0}, // a text that reads as a number
        {"=\"$1,234.50\"*2", 2469.0},
        {"=\"7.65%\"*100", 7.65},
        {"=\"3/31/2026\"+0", 46112.0},
        {"=A2*1", valueError}, // "%" alone is a text
        {"=\"\"+1", valueError},
        {"=\"TRUE\"+1", valueError},
        {"=A3+1", 2.0},
        {"=TRUE+TRUE", 2.0},
        {"=D1+1", 1.0}, // an empty cell is 0 or ""
        {"=D1&\"x\"", text("x")},
        {"=D1", 0.0},
        {"=TRUE&1", text("TRUE1")},
        {"=1/3&\"\"", text("0.333333333333333")},
        {"=0.1+0.2&\"\"", text("0.3")},
        {"=100000000000000&\"\"", text("100000000000000")},
        {"=1E+100&\"\"", text("1E+100")},
        {"=-2.5E-12&\"\"", text("-2.5E-12")},
    };
    expectValues(calculator, cases);
}

TEST(Operators, CompareNumbersBeforeTextsBeforeLogicals)
{
    Calculator calculator;
    calculator.type("A1", "'5").type("B1", "5");
    const Case cases[] = {
        {"=A1=B1", false}, // the text "5" is not the number 5
        {"=A1>B1", true},
        {"=TRUE>\"z\"", true},
        {"=\"Z\">\"a\"", true},
        {"=\"abc\"=\"ABC\"", true},
        {"=\"\u00C9t\u00E9\"=\"\u00E9T\u00C9\"", true},
        {"=\"a\"<\"ab\"", true},
        {"=D1=0", true}, // an empty cell is like whatever it is compared with
        {"=D1=\"\"", true},
        {"=D1=FALSE", true},
        {"=D1=D2", true},
        {"=1<>1", false},
        {"=2>=2", true},
        {"=2<=1", false},
    };
    expectValues(calculator, cases);
}

TEST(Operators, PassErrorsOn)
{
    Calculator calculator;
    calculator.type("B2", "#N/A");
    const Case cases[] = {
        {"=B2+1", ErrorCode::NotAvailable},     {"=1/0", ErrorCode::DivisionByZero},
        {"=#REF!+B2", ErrorCode::Reference}, // the left one
        {"=B2&\"x\"", ErrorCode::NotAvailable}, {"=B2=B2", ErrorCode::NotAvailable},
        {"=-B2", ErrorCode::NotAvailable},      {"=0^0", ErrorCode::Number},
        {"=0^-1", ErrorCode::DivisionByZero},   {"=(-8)^0.5", ErrorCode::Number},
        {"=1E+300*1E+300", ErrorCode::Number},  {"=REPT(\"x\",32767)&\"y\"", valueError}, // no cell can hold it
    };
    expectValues(calculator, cases);
}

TEST(References, MeanCellsHereAndOnOtherSheets)
{
    Calculator calculator;
    for (int row = 1; row <= 10; ++row)
        calculator.type("A" + std::to_string(row), std::to_string(row));
    calculator.type("B1", "100", 1).type("B2", "200", 1).type("C1", "1000").type("B1", "50").type("C1", "7", 1);
    const Case cases[] = {
        {"=SUM(A1:A10)", 55.0},
        {"=SUM($A$10:A1)", 55.0}, // corners in any order
        {"=SUM(A:A)", 55.0},
        {"=SUM(1:2)", 1053.0},
        {"='Rates 1'!B2*2", 400.0},
        {"=SUM('Rates 1'!$B$1:$B$2)", 300.0},
        {"=SUM('rates 1'!b1:b2)", 300.0},
        {"=SUM('Pay:Rates 1'!B1)", 150.0}, // one cell of several sheets
        {"=SUM((A1:A3,A9))", 15.0},
        {"=SUM(A1:A5 A4:A9)", 9.0},
        {"=SUM(A1:A2 A4:A9)", ErrorCode::Null},
        {"=SUM(A1:INDEX(A1:A10,4))", 10.0},
        {"=A1:A10", 9.0}, // of a column the formula's own row counts, Z9
        {"=A1:A10*2", 18.0},
        {"=A1:A5", valueError},
        {"=A1:B10", valueError},
        {"=#REF!", ErrorCode::Reference},
    };
    expectValues(calculator, cases);
}

TEST(References, FollowDefinedNames)
{
    Calculator calculator;
    calculator.type("A1", "4").type("A2", "=A1*10").type("B9", "3");
    auto& book = calculator.book;
    const auto define = [&](std::string name, std::string_view formula) {
        book.names.push_back({std::move(name), std::nullopt, parseFormula(formula, book, 0, {}), {}});
    };
    define("Tens", "=Pay!$A$2");
    define("Doubled", "=Tens*2");
    define("Loop", "=1");
    book.names[2].formula.tokens = {NameToken{OperandClass::Value, std::nullopt, 3}};
    const Case cases[] = {
        {"=tens+1", 41.0},      {"=SUM(Tens,1)", 41.0}, {"=Doubled", 80.0},
        {"=Doubled/Tens", 2.0}, {"=Loop", 0.0}, // cannot be computed: the cell keeps its value, nothing
    };
    for (const auto& [formula, expected] : cases) {
        calculator.type("Z9", formula);
        calculator.book.sheets[0]->at({8, 25}).value = 0.0;
        calculator.compute();
        EXPECT_EQ(calculator.at("Z9"), expected) << formula;
    }
}

TEST(Arrays, AreComputedPlaceByPlaceWhereAFunctionWantsThem)
{
    Calculator calculator;
    calculator.type("A1", "x").type("A2", "y").type("A3", "X").type("B1", "1").type("B2", "2").type("B3", "4");
    const Case cases[] = {
        {"=SUM({1,2;3,4})", 10.0},
        {"=SUMPRODUCT((A1:A3=\"x\")*B1:B3)", 5.0},
        {"=SUMPRODUCT(B1:B3,B1:B3)", 21.0},
        {"=SUMPRODUCT(LEN(A1:A3))", 3.0},
        {"=SUMPRODUCT(--(B1:B3>1))", 2.0},
        {"=SUMPRODUCT({1,2,3}*{1;2})", 18.0}, // rows and columns cross
        {"=SUMPRODUCT(B1:B3,B1:B2)", valueError},
        {"={5,6}", 5.0},
        {"=INDEX({\"a\",\"b\";\"c\",\"d\"},2,1)", text("c")},
        {"=MATCH(\"b\",{\"a\",\"b\"},0)", 2.0},
        {"=SUM({1,TRUE,\"3\"})", 1.0},
        {"=MAX({-1,-2;-3,#DIV/0!})", ErrorCode::DivisionByZero},
    };
    expectValues(calculator, cases);
}

TEST(Arrays, FillTheCellsOfAnArrayFormula)
{
    Calculator calculator;
    calculator.type("A1", "x").type("A2", "y").type("B1", "1").type("B2", "2").type("B3", "=B2*2");
    const CellValue notThere = ErrorCode::NotAvailable;
    struct {
        std::string_view formula;
        CellValue inD1, inD2, inD3, inE1; ///< of D1:E3
    } const cases[] = {
        {"=B1:B3*10", 10.0, 20.0, 40.0, 10.0}, // one column serves for all
        {"=B1:B2", 1.0, 2.0, notThere, 1.0},
        {"={5,6}", 5.0, 5.0, 5.0, 6.0},
        {"=A3", 0.0, 0.0, 0.0, 0.0},
        {"=SUM(B1:B3)", 7.0, 7.0, 7.0, 7.0},
        {"=SUM(IF(B1:B3>1,B1:B3))", 6.0, 6.0, 6.0, 6.0},
        {"=IF(B1:B3>1,B1:B3,\"none\")", text("none"), 2.0, 4.0, text("none")},
        {"=IF(TRUE,B1:B3,0)", 1.0, 2.0, 4.0, 1.0},
        {"=CHOOSE(B1:B2,\"one\",\"two\")", text("one"), text("two"), notThere, text("one")},
        {"=SUM(LEN(A1:A3&\"!\"))", 5.0, 5.0, 5.0, 5.0},
        {"=ROW()", 1.0, 1.0, 1.0, 1.0}, // of its first cell
        {"=D2+1", 0.0, 0.0, 0.0, 0.0},  // circular
    };
    Book& book = calculator.book;
    for (const auto& [formula, inD1, inD2, inD3, inE1] : cases) {
        const Formula parsed = parseFormula(formula, book, 0, calculator.settings.formats);
        const auto shared = std::make_shared<const Formula>(Formula{asArrayFormula(parsed.tokens)});
        const auto area = std::make_shared<const ArrayArea>(ArrayArea{{0, 3, 2, 4}});
        for (int row = 0; row < 3; ++row)
            for (const int column : {3, 4}) {
                book.sheets[0]->at({row, column}).formula = shared;
                book.sheets[0]->at({row, column}).array = area;
            }
        calculator.compute();
        EXPECT_EQ(calculator.at("D1"), inD1) << formula;
        EXPECT_EQ(calculator.at("D2"), inD2) << formula;
        EXPECT_EQ(calculator.at("D3"), inD3) << formula;
        EXPECT_EQ(calculator.at("E1"), inE1) << formula;
    }
}

} // namespace
} // namespace wagemill::engine
