#include "tests/engine/formula/Calculator.h"

#include <gtest/gtest.h>

namespace wagemill::engine {
namespace {

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
        calculator.type(upwards ? "A65536" : "A1", upwards ? "=A1" : "=A65536").type("B1", "=SUM(A:A)").compute();
        EXPECT_EQ(calculator.at("B1"), CellValue(0.0)) << "a ring";
    }
}

TEST(Recalculation, KeepsWhatItCannotCompute)
{
    using Kind = AttributeToken::Kind;
    const auto jump = [](Kind kind, std::vector<std::size_t> targets) { return AttributeToken{kind, 0, 0, targets}; };
    const NameToken loop{OperandClass::Value, std::nullopt, 1}; // a name that means itself
    const ReferenceToken first{OperandClass::Reference, std::nullopt, {}, std::nullopt, false};
    const FunctionToken sum{OperandClass::Value, 4, 1, true};
    const std::vector<std::vector<Token>> formulas = {
        {OpaqueToken{}},
        {FunctionToken{OperandClass::Value, 59, 0, true}}, // a function we do not know
        {NumberToken{1}, OperatorToken{Operator::Add}},    // lacks an operand
        {NumberToken{1}, NumberToken{2}},                  // leaves one too many
        {jump(Kind::Goto, {0})},                           // would run in circles
        {LogicalToken{false}, jump(Kind::If, {99})},
        {NumberToken{1}, jump(Kind::Choose, {})},
        {ReferenceToken{OperandClass::Value, std::uint16_t{77}, {}, std::nullopt, false}},
        {NameToken{OperandClass::Value, std::uint16_t{77}, 1}},
        {},
        {loop},
        {OpaqueToken{{}, {}, true}, first, first, OperatorToken{Operator::Union}, sum}, // only a mark: 1 + 1
    };
    Calculator calculator;
    calculator.book.names.push_back({"Loop", std::nullopt, Formula{{loop}}, {}});
    Sheet& sheet = *calculator.book.sheets[0];
    for (int row = 0; row < static_cast<int>(formulas.size()); ++row) {
        sheet.at({row, 0}).formula = std::make_shared<const Formula>(Formula{formulas[static_cast<std::size_t>(row)]});
        sheet.at({row, 0}).value = row + 1.0;
    }
    calculator.type("B1", "=A1+1").compute();
    for (int row = 0; row < 11; ++row)
        EXPECT_EQ(sheet.value({row, 0}), CellValue(row + 1.0)) << "row " << row;
    EXPECT_EQ(calculator.at("A12"), CellValue(2.0));
    EXPECT_EQ(calculator.at("B1"), CellValue(2.0));
}

TEST(Recalculation, BoundsWhatHostileFormulasAskFor)
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
    calculator.type("B60000", "1", 1);
    for (int row = 1; row <= 100; ++row)
        calculator.type("C" + std::to_string(row), "=SUMPRODUCT('Rates 1'!A1:D60000*2)");
    calculator.compute();
    EXPECT_EQ(calculator.at("A1"), CellValue(ErrorCode::Name));
    EXPECT_EQ(calculator.at("A2"), CellValue(ErrorCode::Name));
    EXPECT_EQ(calculator.at("A3"), CellValue(8.0));
    EXPECT_EQ(calculator.at("C1"), CellValue(2.0));
    EXPECT_EQ(calculator.at("C100"), CellValue(ErrorCode::Name)) << "24 million values in all";
}

} // namespace
} // namespace wagemill::engine
