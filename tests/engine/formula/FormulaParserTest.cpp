#include "tests/engine/formula/Calculator.h"

#include <gtest/gtest.h>

namespace wagemill::engine {
namespace {

std::string again(Calculator& calculator, std::string_view formula)
{
    return formulaText(parseFormula(formula, calculator.book, 0, calculator.settings.formats), calculator.book);
}

TEST(FormulaParser, KeepsWhatWasTyped)
{
    Calculator calculator;
    calculator.book.names.push_back({"Tax", std::nullopt, {}, {}});
    const struct {
        std::string_view typed;
        std::string_view shown;
    } cases[] = {
        {"=b4+$B4 - b$4*$b$4", "=B4+$B4-B$4*$B$4"},
        {"=sum(a1:b2)", "=SUM(A1:B2)"},
        {"=SUM(A1:B2,C3)", "=SUM(A1:B2,C3)"},
        {"=VLOOKUP(B4,'Rates 1'!$B$4:$N$28,2,FALSE)", "=VLOOKUP(B4,'Rates 1'!$B$4:$N$28,2,FALSE)"},
        {"=(1+2)*-3%", "=(1+2)*-3%"},
        {"=IF(A1>1,\"x\",\"say \"\"y\"\"\")", "=IF(A1>1,\"x\",\"say \"\"y\"\"\")"},
        {"=IF(A1,,2)", "=IF(A1,,2)"},
        {"=CHOOSE(2,A1,B1,C1)", "=CHOOSE(2,A1,B1,C1)"},
        {"=A:C", "=A:C"},
        {"=$2:12", "=$2:12"},
        {"=Pay!A1", "=Pay!A1"},
        {"=SUM(A1:A2 B1,(C1,D1))", "=SUM(A1:A2 B1,(C1,D1))"},
        {"={1,-2;\"a\",TRUE}", "={1,-2;\"a\",TRUE}"},
        {"=#N/A", "=#N/A"},
        {"=TRUE()", "=TRUE()"},
        {"=tax*2", "=Tax*2"},
        {"=IFERROR(A1,0)", "=IFERROR(A1,0)"},
        {"=EOMONTH(A1,1)", "=EOMONTH(A1,1)"},
        {"=NOW()+IF(TRUE,1,2)", "=NOW()+IF(TRUE,1,2)"},
        {"=1.5E3", "=1500"},
        {"=LOG10(10)", "=LOG10(10)"},
        {"=Pay!#REF!", "=Pay!#REF!"},
        {"=SUM('Pay:Rates 1'!A1)", "=SUM('Pay:Rates 1'!A1)"},
        {" = 1 ", "=1"},
    };
    for (const auto& [typed, shown] : cases)
        EXPECT_EQ(again(calculator, typed), shown);
}

TEST(FormulaParser, WritesTokensAsTheFileWantsThem)
{
    Calculator calculator;
    const auto parsed = [&](std::string_view text) {
        return parseFormula(text, calculator.book, 0, calculator.settings.formats).tokens;
    };
    const auto cell = [](OperandClass wanted, int row, int column) {
        return ReferenceToken{wanted, std::nullopt, {row, column, true, true}, std::nullopt, false};
    };
    using enum OperandClass;
    ReferenceToken area = cell(Reference, 3, 6);
    area.last = ReferencePart{3, 9, true, true};
    const AttributeToken sum{AttributeToken::Kind::Sum, 0, 0, {}};
    EXPECT_EQ(parsed("=SUM(G4:J4)"), (std::vector<Token>{area, sum}));
    EXPECT_EQ(parsed("=L4+M4"),
              (std::vector<Token>{cell(Value, 3, 11), cell(Value, 3, 12), OperatorToken{Operator::Add}}));
    EXPECT_EQ(parsed("=SUM(A1,B1+C1)"),
              (std::vector<Token>{cell(Reference, 0, 0), cell(Value, 0, 1), cell(Value, 0, 2),
                                  OperatorToken{Operator::Add}, FunctionToken{Value, 4, 2, true}}));
    EXPECT_EQ(parsed("=ABS(SUMPRODUCT(ABS(A1)))"),
              (std::vector<Token>{cell(Array, 0, 0), FunctionToken{Array, 24, 1, false},
                                  FunctionToken{Value, 228, 1, true}, FunctionToken{Value, 24, 1, false}}));
    EXPECT_EQ(
        parsed("=IF(H3>1,\"x\",\"y\")"),
        (std::vector<Token>{cell(Value, 2, 7), NumberToken{1}, OperatorToken{Operator::Greater},
                            AttributeToken{AttributeToken::Kind::If, 0, 0, {6}}, TextToken{"x"},
                            AttributeToken{AttributeToken::Kind::Goto, 0, 0, {9}}, TextToken{"y"},
                            AttributeToken{AttributeToken::Kind::Goto, 0, 0, {9}}, FunctionToken{Value, 1, 3, true}}));
}

TEST(FormulaParser, NamesThePlaceOfAMistake)
{
    Calculator calculator;
    const struct {
        std::string_view typed;
        std::string_view message;
    } cases[] = {
        {"=", "it ends where a value is missing, at character 2."},
        {"=1+", "it ends where a value is missing, at character 4."},
        {"=1+*2", "a value is missing, at character 4."},
        {"=(1+2", "the bracket is never closed, at character 2."},
        {"=1+2)", "there is a closing bracket too many, at character 5."},
        {"=SUM(1,2", "the bracket is never closed, at character 5."},
        {"=\"a", "the text is never closed, at character 2."},
        {"=NoSuch(1", "the bracket is never closed, at character 8."},
        {"=A1(2)", "there is no function named \"A1\", at character 2."},
        {"=1+R1C1", "\"R1C1\" is not a cell, name or function, at character 4."},
        {"=1+c", "\"c\" is not a cell, name or function, at character 4."},
        {"=?x", "\"?x\" is not a cell, name or function, at character 2."},
        {"=\u2019x\u2019", "\"\u2019x\u2019\" is not a cell, name or function, at character 2."},
        {"=Wages!A1", "there is no sheet named \"Wages\", at character 2."},
        {"=[Other.xls]Pay!A1", "a value is missing, at character 2."},
        {"='[Other.xls]Pay'!A1", "other workbooks cannot be referred to, at character 2."},
        {"=ABS(1,2)", "ABS does not take 2 arguments, at character 2."},
        {"=VLOOKUP(1)", "VLOOKUP does not take 1 arguments, at character 2."},
        {"=1 2", "an operator is missing, at character 4."},
        {"=(A1,2)", "only cells can be joined by \",\", at character 5."},
        {"=\"\u00E9\"+*", "a value is missing, at character 6."}, // characters, not bytes
        {"={1,2;3}", "the rows of the constant array are not of one length, at character 2."},
        {"=1E999", "the number cannot be read, at character 2."},
    };
    for (const auto& [typed, message] : cases)
        try {
            parseFormula(typed, calculator.book, 0, calculator.settings.formats);
            ADD_FAILURE() << typed << " was read";
        } catch (const FormulaError& error) {
            EXPECT_EQ(std::string_view(error.what()), "The formula cannot be read: " + std::string(message)) << typed;
        }
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
        "=" + repeated("(", 10000) + "1" + repeated(")", 10000),
        "=" + repeated("(", 4000) + "1" + repeated(")", 4000),
        "=" + repeated("ABS(", 200) + "1" + repeated(")", 200),
        "=" + repeated("(", 8000),
        "=\"" + repeated("x", 256) + "\"",
        "=SUM(1" + repeated(",1", 30) + ")",
        "=1" + repeated("+1", 500), // 1800 bytes are all that a file holds of a formula
        "=CHOOSE(1," + repeated("CHOOSE(1,", 98) + "2" + repeated(")", 99),
        "={1" + repeated(",1", 256) + "}",
        "={1" + repeated(";1", 700) + "}",
    };
    for (const std::string& formula : refused)
        EXPECT_THROW(again(calculator, formula), FormulaError) << formula.substr(0, 20);
    EXPECT_EQ(calculator.value("=" + repeated("-", 1700) + "1"), CellValue(1.0));
    EXPECT_EQ(calculator.value("=1" + repeated("+1", 440)), CellValue(441.0));
    EXPECT_EQ(calculator.value("=SUM({1" + repeated(",1", 255) + "})"), CellValue(256.0));
    EXPECT_EQ(calculator.value("=" + repeated("(", 90) + "1" + repeated(")", 90)), CellValue(1.0));
    EXPECT_EQ(calculator.value("=\"" + repeated("x", 255) + "\"=\"\""), CellValue(false));
}

TEST(FormulaParser, ReadsTheUsersSeparators)
{
    Calculator calculator;
    calculator.settings.formats.decimalSeparator = ",";
    calculator.settings.formats.groupSeparator = ".";
    const struct {
        std::string_view typed;
        CellValue expected;
    } cases[] = {
        {"=SUM(1,5;2)", 3.5},
        {"=1,5*2", 3.0},
        {"=SUM({1,5\\2;3\\4})", 10.5},
        {"=0,5&\"\"", text("0,5")},
    };
    for (const auto& [typed, expected] : cases)
        EXPECT_EQ(calculator.value(typed), expected) << typed;
    EXPECT_EQ(again(calculator, "=SUM(1,5;2)"), "=SUM(1.5,2)");
}

} // namespace
} // namespace wagemill::engine
