#include "tests/engine/formula/Calculator.h"

#include <gtest/gtest.h>

namespace wagemill::engine {
namespace {

TEST(Recalculation, ComputesInAnyOrderOfDependence)
{
    Calculator calculator;
    calculator.type("A1", "=B1+1")
        .type("B1", "='Rates 1'!A1*2")
        .type("A1", "=Pay!C3", 1)
        .type("C3", "=C4")
        .type("C4", "5");
    calculator.compute();
    EXPECT_EQ(calculator.at("A1"), CellValue(11.0));
    calculator.type("C4", "6").compute();
    EXPECT_EQ(calculator.at("A1"), CellValue(13.0));
}

TEST(Recalculation, FollowsAChainDownTheWholeSheet)
{
    for (const bool upwards : {false, true}) {
        Calculator calculator;
        calculator.type(upwards ? "A65536" : "A1", "1");
        for (int row = 1; row < maxRows; ++row)
            calculator.type("A" + std::to_string(upwards ? row : row + 1),
                            "=A" + std::to_string(upwards ? row + 1 : row) + "+1");
        calculator.compute();
        EXPECT_EQ(calculator.at(upwards ? "A1" : "A65536"), CellValue(65536.0));
    }
}

TEST(Recalculation, SetsCellsThatDependOnThemselvesToZero)
{
    Calculator calculator;
    calculator.type("A1", "=A1+1");                                            // alone
    calculator.type("B1", "=B2+1").type("B2", "=B3+1").type("B3", "=B1+1");    // a ring
    calculator.type("C1", "=C2+C3+1").type("C2", "=C1+1").type("C3", "=C2+1"); // two rings that share a cell
    calculator.type("D1", "=SUM(D1:D5)+1");                                    // inside its own range
    calculator.type("E1", "=B1+5").type("E2", "=E1*2");                        // behind a ring
    calculator.type("F1", "=OFFSET(F1,0,0)+1");                                // by way of a reference that is computed
    calculator.type("G1", "=INDIRECT(\"G2\")+1").type("G2", "=INDIRECT(\"G1\")+1");
    calculator.compute();
    for (const char* const cell : {"A1", "B1", "B2", "B3", "C1", "C2", "C3", "D1", "F1", "G1", "G2"})
        EXPECT_EQ(calculator.at(cell), CellValue(0.0)) << cell;
    EXPECT_EQ(calculator.at("E1"), CellValue(5.0));
    EXPECT_EQ(calculator.at("E2"), CellValue(10.0));
}

TEST(Recalculation, ComputesFirstWhatAComputedReferenceNeeds)
{
    Calculator calculator;
    calculator.type("A1", "=SUM(OFFSET(B2,0,-1,3,1))")
        .type("A2", "=A3+1")
        .type("A3", "=INDIRECT(\"A\"&B1)")
        .type("A4", "=2*4");
    calculator.type("B1", "=B2").type("B2", "=4");
    calculator.compute();
    EXPECT_EQ(calculator.at("A3"), CellValue(8.0));
    EXPECT_EQ(calculator.at("A1"), CellValue(9.0 + 8 + 8));
}

TEST(Recalculation, KeepsWhatItCannotCompute)
{
    Calculator calculator;
    auto& sheet = *calculator.book.sheets[0];
    const auto keep = [&](int row, std::vector<Token> tokens, CellValue stored) {
        Cell& cell = sheet.at({row, 0});
        cell.formula = std::make_shared<const Formula>(Formula{std::move(tokens)});
        cell.value = std::move(stored);
    };
    const auto jump = [](AttributeToken::Kind kind, std::vector<std::size_t> targets) {
        return AttributeToken{kind, 0, 0, std::move(targets)};
    };
    keep(0, {OpaqueToken{}}, 17.0);
    keep(1, {FunctionToken{OperandClass::Value, 59, 0, true}}, text("stored")); // a function we do not know
    keep(2, {NumberToken{1}, OperatorToken{Operator::Add}}, 3.0);               // lacks an operand
    keep(3, {NumberToken{1}, NumberToken{2}}, 4.0);                             // leaves one too many
    keep(4, {jump(AttributeToken::Kind::Goto, {0})}, 5.0);                      // would run in circles
    keep(5, {LogicalToken{false}, jump(AttributeToken::Kind::If, {99})}, 6.0);
    keep(6, {NumberToken{1}, jump(AttributeToken::Kind::Choose, {})}, 7.0);
    keep(7, {ReferenceToken{OperandClass::Value, std::uint16_t{77}, {}, std::nullopt, false}}, 8.0);
    keep(8, {NameToken{OperandClass::Value, std::uint16_t{77}, 1}}, 9.0);
    keep(9, {}, 10.0);
    calculator.type("B1", "=A1+1").type("B2", "=IF(TRUE,1,A1)").compute();
    EXPECT_EQ(sheet.value({0, 0}), CellValue(17.0));
    EXPECT_EQ(sheet.value({1, 0}), text("stored"));
    for (int row = 2; row < 10; ++row)
        EXPECT_EQ(sheet.value({row, 0}), CellValue(row + 1.0)) << "row " << row;
    EXPECT_EQ(calculator.at("B1"), CellValue(18.0));
}

TEST(Recalculation, BoundsWhatAHostileFormulaAsksFor)
{
    Calculator calculator;
    auto& names = calculator.book.names;
    for (std::uint16_t i = 0; i < 40; ++i) // each name twice the one before it
        names.push_back({"twice" + std::to_string(i),
                         std::nullopt,
                         Formula{{NameToken{OperandClass::Value, std::nullopt, i},
                                  NameToken{OperandClass::Value, std::nullopt, i}, OperatorToken{Operator::Add}}},
                         {}});
    names[0].formula.tokens = {NumberToken{1}};
    calculator.type("A1", "=twice31").type("A2", "=SUMPRODUCT(A3:IV65536*A3:IV65536)").type("A3", "=twice3");
    calculator.compute();
    EXPECT_EQ(calculator.at("A1"), CellValue(ErrorCode::Name));
    EXPECT_EQ(calculator.at("A2"), CellValue(ErrorCode::Name));
    EXPECT_EQ(calculator.at("A3"), CellValue(8.0));
}

TEST(Recalculation, BoundsWhatManyHostileFormulasAskForTogether)
{
    Calculator calculator;
    calculator.type("B60000", "1", 1);
    for (int row = 1; row <= 100; ++row)
        calculator.type("A" + std::to_string(row), "=SUMPRODUCT('Rates 1'!A1:D60000*2)");
    calculator.compute();
    EXPECT_EQ(calculator.at("A1"), CellValue(2.0));
    EXPECT_EQ(calculator.at("A100"), CellValue(ErrorCode::Name)) << "24 million values in all";
}

/// As the payroll build makes it: a table of 25 employees, and many blocks of lookups into it.
TEST(Recalculation, IsQuickForManyPayStubs)
{
    Calculator calculator;
    for (int row = 4; row <= 28; ++row) {
        const std::string line = std::to_string(row);
        calculator.type("B" + line, std::to_string(row - 3), 1).type("C" + line, "12.5", 1);
        calculator.type("D" + line, "=C" + line + "*40", 1);
    }
    constexpr int blocks = 2730;
    calculator.type("A1", "7");
    for (int column = 1; column <= 20; ++column)
        calculator.type(columnName(column) + "1", "=VLOOKUP($A1,'Rates 1'!$B$4:$D$28,3,FALSE)+$A1");
    auto& sheet = *calculator.book.sheets[0];
    for (int block = 1; block < blocks; ++block)
        sheet.copyRows(0, 0, block * 12);
    calculator.compute();
    EXPECT_EQ(sheet.value({12 * (blocks - 1), 20}), CellValue(507.0));
}

} // namespace
} // namespace wagemill::engine
