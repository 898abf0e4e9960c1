#include "tests/engine/formula/Calculator.h"

#include <gtest/gtest.h>

namespace wagemill::engine {
namespace {

using Kind = AttributeToken::Kind;

AttributeToken jump(Kind kind, std::vector<std::size_t> targets)
{
    return {kind, 0, 0, std::move(targets)};
}

TEST(FormulaParser, WritesTokensAsTheFileWantsThem)
{
    using enum OperandClass;
    const auto cell = [](OperandClass wanted, int row, int column, bool rowRelative = true,
                         bool columnRelative = true) {
        return ReferenceToken{wanted, {}, {row, column, rowRelative, columnRelative}, {}, false};
    };
    ReferenceToken area = cell(Reference, 3, 6);
    area.last = ReferencePart{3, 9, true, true};
    const OperatorToken add{Operator::Add};
    const struct {
        std::string_view typed;
        std::vector<Token> tokens;
    } cases[] = {
        {"=SUM(G4:J4)", {area, jump(Kind::Sum, {})}},
        {"=$L4+m$4", {cell(Value, 3, 11, true, false), cell(Value, 3, 12, false, true), add}},
        {"=SUM(A1,B1+C1)",
         {cell(Reference, 0, 0), cell(Value, 0, 1), cell(Value, 0, 2), add, FunctionToken{Value, 4, 2, true}}},
        {"=ABS(SUMPRODUCT(ABS(A1)))",
         {cell(Array, 0, 0), FunctionToken{Array, 24, 1, false}, FunctionToken{Value, 228, 1, true},
          FunctionToken{Value, 24, 1, false}}},
        {R"(=IF(H3>1,"x","y"))",
         {cell(Value, 2, 7), NumberToken{1}, OperatorToken{Operator::Greater}, jump(Kind::If, {6}), TextToken{"x"},
          jump(Kind::Goto, {9}), TextToken{"y"}, jump(Kind::Goto, {9}), FunctionToken{Value, 1, 3, true}}},
        {"=CHOOSE(1,2,)",
         {NumberToken{1}, jump(Kind::Choose, {2, 4, 6}), NumberToken{2}, jump(Kind::Goto, {7}), MissingArgumentToken{},
          jump(Kind::Goto, {7}), FunctionToken{Value, 100, 3, true}}},
    };
    Calculator calculator;
    for (const auto& [typed, tokens] : cases)
        EXPECT_EQ(parseFormula(typed, calculator.book, 0, calculator.settings.formats).tokens, tokens) << typed;
}

TEST(FormulaParser, RefusesWhatIsTooLongOrTooDeep)
{
    Calculator calculator;
    const auto repeated = [](std::string_view part, int times) {
        std::string text;
        for (int i = 0; i < times; ++i)
            text += part;
        return text;
    };
    const std::string refused[] = {
        "=" + repeated("(", 4000) + "1" + repeated(")", 4000),
        "=" + repeated(" ", 8192) + "1",
        "=" + repeated("ABS(", 200) + "1" + repeated(")", 200),
        "=\"" + repeated("x", 256) + "\"",
        "=1" + repeated("+1", 500), // 1800 bytes are all that a file holds of a formula
        "=CHOOSE(1," + repeated("CHOOSE(1,", 98) + "2" + repeated(")", 99),
        "={1" + repeated(",1", 256) + "}",
        "={1" + repeated(";1", 700) + "}",
    };
    for (const std::string& formula : refused)
        EXPECT_THROW(calculator.value(formula), EngineError) << formula.substr(0, 20);
    EXPECT_EQ(calculator.value("=" + repeated("-", 1700) + "1"), CellValue(1.0));
    EXPECT_EQ(calculator.value("=1" + repeated("+1", 440)), CellValue(441.0));
    EXPECT_EQ(calculator.value("=SUM({1" + repeated(",1", 255) + "})"), CellValue(256.0));
    EXPECT_EQ(calculator.value("=" + repeated("(", 90) + "1" + repeated(")", 90)), CellValue(1.0));
    EXPECT_EQ(calculator.value("=\"" + repeated("x", 255) + "\"=\"\""), CellValue(false));
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
        calculator.type(upwards ? "A65536" : "A1", upwards ? "=A1" : "=A65536").type("B1", "=SUM(A:A)").compute();
        EXPECT_EQ(calculator.at("B1"), CellValue(0.0)) << "a ring";
    }
}

TEST(Recalculation, KeepsWhatItCannotCompute)
{
    const NameToken loop{OperandClass::Value, std::nullopt, 1}; // a name that means itself
    const ReferenceToken first{OperandClass::Reference, std::nullopt, {}, std::nullopt, false};
    const FunctionToken sum{OperandClass::Value, 4, 1, true};
    const std::vector<std::vector<Token>> formulas = {
        {OpaqueToken{}},
        {FunctionToken{OperandClass::Value, 59, 0, true}}, // a function we do not know
        {NumberToken{1}, OperatorToken{Operator::Add}},    // lacks an operand
        {NumberToken{1}, NumberToken{2}},                  // leaves one too many
        {ReferenceToken{OperandClass::Value, std::uint16_t{77}, {}, std::nullopt, false}},
        {NameToken{OperandClass::Value, std::uint16_t{77}, 1}},
        {LogicalToken{false}, jump(Kind::If, {3}), NumberToken{1}}, // nothing else
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
    for (int row = 0; row < 9; ++row)
        EXPECT_EQ(sheet.value({row, 0}), CellValue(row + 1.0)) << "row " << row;
    EXPECT_EQ(calculator.at("A10"), CellValue(2.0));
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
