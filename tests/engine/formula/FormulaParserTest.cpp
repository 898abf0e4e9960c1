#include "tests/engine/formula/Calculator.h"

#include <gtest/gtest.h>

namespace wagemill::engine {
namespace {

TEST(FormulaParser, WritesTokensAsTheFileWantsThem)
{
    using enum OperandClass;
    using Kind = AttributeToken::Kind;
    const auto cell = [](OperandClass wanted, int row, int column, bool rowRelative = true,
                         bool columnRelative = true) {
        return ReferenceToken{wanted, {}, {row, column, rowRelative, columnRelative}, {}, false};
    };
    const auto function = [](OperandClass wanted, std::uint16_t number, std::uint8_t arguments, bool variable) {
        return FunctionToken{wanted, number, arguments, variable};
    };
    const auto jump = [](Kind kind, std::vector<std::size_t> targets) { return AttributeToken{kind, 0, 0, targets}; };
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
         {cell(Reference, 0, 0), cell(Value, 0, 1), cell(Value, 0, 2), add, function(Value, 4, 2, true)}},
        {"=ABS(SUMPRODUCT(ABS(A1)))",
         {cell(Array, 0, 0), function(Array, 24, 1, false), function(Value, 228, 1, true),
          function(Value, 24, 1, false)}},
        {"=IF(H3>1,\"x\",\"y\")",
         {cell(Value, 2, 7), NumberToken{1}, OperatorToken{Operator::Greater}, jump(Kind::If, {6}), TextToken{"x"},
          jump(Kind::Goto, {9}), TextToken{"y"}, jump(Kind::Goto, {9}), function(Value, 1, 3, true)}},
        {"=CHOOSE(1,2,)",
         {NumberToken{1}, jump(Kind::Choose, {2, 4, 6}), NumberToken{2}, jump(Kind::Goto, {7}), MissingArgumentToken{},
          jump(Kind::Goto, {7}), function(Value, 100, 3, true)}},
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

} // namespace
} // namespace wagemill::engine
