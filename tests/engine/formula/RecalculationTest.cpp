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
    keep(10, {NameToken{OperandClass::Value, std::nullopt, 1}}, 11.0); // a name that stands for itself
    calculator.book.names.push_back({"Loop", std::nullopt, *sheet.at({10, 0}).formula, {}});
    const ReferenceToken first{OperandClass::Reference, std::nullopt, {}, std::nullopt, false};
    keep(11,
         {OpaqueToken{{}, {}, true}, first, first, OperatorToken{Operator::Union},
          FunctionToken{OperandClass::Value, 4, 1, true}},
         0.0);
    calculator.type("B1", "=A1+1").compute();
    EXPECT_EQ(sheet.value({0, 0}), CellValue(17.0));
    EXPECT_EQ(sheet.value({1, 0}), text("stored"));
    for (int row = 2; row < 11; ++row)
        EXPECT_EQ(sheet.value({row, 0}), CellValue(row + 1.0)) << "row " << row;
    EXPECT_EQ(sheet.value({11, 0}), CellValue(34.0)) << "a mark before a union is no part that we cannot compute";
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

} // namespace
} // namespace wagemill::engine
