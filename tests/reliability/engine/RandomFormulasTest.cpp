// Formulas made by a grammar of what people and files hold: nested, circular, with any number of arguments. Whatever is
// accepted has a value, and is the same formula with the same value once it was saved and opened again.

#include "tests/engine/formula/Calculator.h"
#include "tests/reliability/engine/Limits.h"
#include "tests/support/LongForm.h"
#include "tests/support/OpenRecalculateWrite.h"
#include "workbook/engine/FunctionTable.h"
#include "workbook/engine/formula/FormulaFunctions.h"

#include <array>
#include <random>

namespace wagemill::engine {

namespace {

constexpr int functionNumbers = 400;
constexpr int formulasInABook = 50;

/// Of the functions that we compute; one that we do not keeps the value from the file, which a new formula has not.
std::vector<std::string_view> functionNames()
{
    std::vector<std::string_view> names;
    for (std::uint16_t id = 0; id < functionNumbers; ++id)
        if (const FunctionInfo* const function = findFunction(id);
            function != nullptr && !function->isVolatile && findBinding(id) != nullptr)
            names.push_back(function->name);
    return names;
}

/// Writes formulas that are right more often than not.
class Grammar {
public:
    explicit Grammar(std::mt19937& chance) : m_chance(chance) {}

    std::string formula()
    {
        m_pieces = 0;
        return "=" + expression(static_cast<int>(m_chance() % 9));
    }

private:
    template <std::size_t Count>
    std::string pick(const std::array<const char*, Count>& choices)
    {
        return choices.at(m_chance() % Count);
    }

    std::string cell()
    {
        return std::string(1, static_cast<char>('A' + m_chance() % 6)) + std::to_string(1 + m_chance() % 12);
    }

    std::string operand()
    {
        switch (m_chance() % 8) {
        case 0:
            return cell() + ":" + cell();
        case 1:
            return "'Rates 1'!$" + cell();
        case 2:
        case 3:
            return cell();
        default:
            return pick(
                std::to_array({"1", "0", "-2.5", "\"12.5\"", "\"\"", "\"Ann\"", "TRUE", "#N/A", "1E300", "7%",
                               "{1,2;3,4}", "46112.75", "B:B", "$3:$4", "65536", "\"A1\"", "#REF!", "{\"x\"}"}));
        }
    }

    std::string call(int depth)
    {
        std::string text(m_names[m_chance() % m_names.size()]);
        const auto count = m_chance() % (m_chance() % 16 == 0 ? 35 : 5);
        for (std::mt19937::result_type i = 0; i < count; ++i)
            text += (i == 0 ? "(" : ",") + (m_chance() % 12 == 0 ? "" : expression(depth - 1));
        return text + (count == 0 ? "()" : ")");
    }

    std::string expression(int depth)
    {
        if (depth <= 0 || ++m_pieces > 60)
            return operand();
        switch (m_chance() % 8) {
        case 0:
            return "(" + expression(depth - 1) + ")";
        case 1:
            return pick(std::to_array({"-", "+", "--"})) + expression(depth - 1);
        case 2:
        case 3:
            return expression(depth - 1) +
                   pick(std::to_array({"+", "-", "*", "/", "^", "&", "=", "<>", "<", ">=", ":", " ", ","})) +
                   expression(depth - 1);
        default:
            return call(depth);
        }
    }

    std::mt19937& m_chance;
    const std::vector<std::string_view> m_names = functionNames();
    int m_pieces = 0; ///< of the present formula
};

/// Saved, opened, computed and saved again it is the same file, with the same formulas and values.
void expectSameAgain(const Calculator& calculator)
{
    const auto saved = xls::writeWorkbook(calculator.book, xls::FileKind::Workbook);
    Book again = xls::readWorkbook(saved, "formulas.xls");
    recalculate(again, calculator.settings);
    EXPECT_TRUE(xls::writeWorkbook(again, xls::FileKind::Workbook) == saved);
}

void expectInTime(Calculator& calculator, const std::string& what)
{
    const double start = test::secondsUsed();
    calculator.compute();
    EXPECT_LT(test::secondsUsed() - start, test::mostSeconds) << what;
    EXPECT_NO_THROW(test::requireFiniteNumbers(calculator.book)) << what;
}

} // namespace

TEST(RandomFormulas, HaveAValueThatIsSavedOrAreRefused)
{
    std::mt19937 chance(20261121); // always the same formulas
    Grammar grammar(chance);
    const int books = test::shortOrLong(20'000, 1'000'000) / formulasInABook;
    int accepted = 0;
    for (int number = 0; number < books; ++number) {
        Calculator calculator;
        std::string last;
        for (int i = 0; i < formulasInABook; ++i) {
            last = grammar.formula();
            const CellAddress cell{static_cast<int>(chance() % 12), static_cast<int>(chance() % 6)};
            try {
                enterText(calculator.book, 0, cell, last, calculator.settings.formats, {2026, 3, 31});
                ++accepted;
            } catch (const EngineError& refusal) {
                EXPECT_NE(std::string(refusal.what()).find("is left empty"), std::string::npos);
            }
        }
        expectInTime(calculator, "book " + std::to_string(number) + ", " + last);
        expectSameAgain(calculator);
        ASSERT_FALSE(HasFailure()) << "book " << number;
    }
    EXPECT_GT(accepted, books * formulasInABook / 20) << "the grammar makes too few formulas that are any";
    EXPECT_LT(test::peakMegabytes(), test::mostMegabytes);
    std::cout << books * formulasInABook << " formulas, " << accepted << " accepted, at most " << test::peakMegabytes()
              << " MB\n";
}

namespace {

std::string repeated(std::string_view text, std::size_t count)
{
    std::string all;
    for (std::size_t i = 0; i < count; ++i)
        all += text;
    return all;
}

/// Computes, shows and saves the one formula of the book; what is too long for a file is refused in words.
void expectComputedAndSaved(Calculator& calculator, const std::string& what)
{
    expectInTime(calculator, what);
    try {
        xls::writeWorkbook(calculator.book, xls::FileKind::Workbook);
    } catch (const EngineError& refusal) {
        EXPECT_NE(std::string(refusal.what()).find("Pay"), std::string::npos) << refusal.what();
    }
}

constexpr auto depths = std::to_array<std::size_t>({1, 10, 99, 100, 101, 255, 256, 600, 1000, 4000, 10000});

} // namespace

TEST(NestedFormulas, AreTypedOrRefused)
{
    struct {
        const char* open;
        const char* middle;
        const char* close;
    } const kinds[] = {
        {"(", "1", ")"},  {"-", "1", ""},    {"SUM(", "1", ")"},   {"IF(1,", "2", ",3)"}, {"1+(", "A1", ")"},
        {"1^", "1", ""},  {"A1:", "A1", ""}, {"1&", "1", ""},      {"(A1,", "A2", ")"},   {"CHOOSE(1,", "2", ")"},
        {"", "1", "%"},   {"{", "1", "}"},   {"'", "Pay", "'!A1"}, {"\"", "", "\""},      {"A1 ", "A1", ""},
        {"IF(", "1", ""}, {"{1,", "1", "}"}, {"", "{1", ",1"},     {"\"x\"&", "1", ""},   {"Pay:", "Pay!A1", ""},
    };
    for (const auto& [open, middle, close] : kinds)
        for (const std::size_t depth : depths) {
            const std::string text = "=" + repeated(open, depth) + middle + repeated(close, depth);
            const std::string what = text.substr(0, 20) + " to a depth of " + std::to_string(depth);
            Calculator calculator;
            try {
                calculator.type("Z9", text);
            } catch (const EngineError&) {
                continue;
            }
            expectComputedAndSaved(calculator, what);
            EXPECT_NO_THROW(xls::writeWorkbook(calculator.book, xls::FileKind::Workbook))
                << what << ": typed, not saved";
        }
}

TEST(NestedFormulas, AreComputedAsTokens)
{
    const Token sum = FunctionToken{OperandClass::Value, 4, 1, true};
    const Token condition = FunctionToken{OperandClass::Value, 1, 1, true};
    for (const std::size_t depth : depths)
        for (const Token& outer :
             {Token(OperatorToken{Operator::Negate}), Token(OperatorToken{Operator::Brackets}), sum, condition}) {
            Calculator calculator;
            Formula formula{{NumberToken{1}}};
            formula.tokens.insert(formula.tokens.end(), depth, outer);
            calculator.book.sheets[0]->at({0, 0}).formula = std::make_shared<const Formula>(formula);
            expectComputedAndSaved(calculator, "depth " + std::to_string(depth));
        }
    for (const std::size_t width : depths) {
        Calculator calculator;
        Formula formula{{NumberToken{1}}};
        formula.tokens.insert(formula.tokens.end(), width, NumberToken{1});
        formula.tokens.insert(formula.tokens.end(), width, OperatorToken{Operator::Add});
        calculator.book.sheets[0]->at({0, 0}).formula = std::make_shared<const Formula>(formula);
        expectComputedAndSaved(calculator, "width " + std::to_string(width));
        EXPECT_EQ(calculator.at("A1"), CellValue(static_cast<double>(width + 1)));
    }
}

TEST(CircularFormulas, EndWhateverTheyGoThrough)
{
    std::mt19937 chance(20261121);
    const auto links = std::to_array<const char*>({"=A#+1", "=SUM(A#:B#)", "=INDIRECT(\"A#\")", "=OFFSET(A1,#-1,0)",
                                                   "=INDEX(A1:A5000,#)", "=VLOOKUP(1,A#:C#,1,FALSE)",
                                                   "=CHOOSE(1,A#,B#)", "=IF(A#,A#,B#)", "=SUMIF(A#:A5000,\">0\")"});
    const int books = test::shortOrLong(60, 3000);
    for (int number = 0; number < books; ++number) {
        Calculator calculator;
        const int cells = number % 20 == 0 ? 5000 : 60; // all in one ring, or each to any other
        for (int row = 1; row <= cells; ++row) {
            const int next = number % 20 == 0 ? row % cells + 1 : 1 + static_cast<int>(chance() % 60);
            std::string text = number % 20 == 0 ? links[0] : links.at(chance() % links.size());
            for (std::size_t at = text.find('#'); at != std::string::npos; at = text.find('#'))
                text.replace(at, 1, std::to_string(next));
            calculator.type("A" + std::to_string(row), text);
        }
        expectInTime(calculator, "book " + std::to_string(number));
        expectSameAgain(calculator);
        ASSERT_FALSE(HasFailure());
    }
}

TEST(ArgumentCounts, AreThoseOfTheFunction)
{
    const auto operands =
        std::to_array<Token>({NumberToken{2}, TextToken{"A1"}, ErrorToken{ErrorCode::Value}, MissingArgumentToken{},
                              ArrayToken{OperandClass::Array, 1, 2, {1.0, 2.0}}});
    std::mt19937 chance(20261121);
    Calculator calculator;
    calculator.type("A1", "1").type("A2", "x");
    for (std::uint16_t id = 0; id < functionNumbers; ++id) {
        const FunctionInfo* const function = findFunction(id);
        for (int count = 0; count <= 36; ++count) {
            Formula formula;
            std::string text = function == nullptr ? "" : "=" + std::string(function->name) + "(";
            for (int i = 0; i < count; ++i) {
                formula.tokens.push_back(operands.at(chance() % operands.size()));
                text += i == 0 ? "1" : ",1";
            }
            formula.tokens.emplace_back(FunctionToken{OperandClass::Value, id, static_cast<std::uint8_t>(count), true});
            calculator.book.sheets[0]->at({8, 8}).formula = std::make_shared<const Formula>(formula);
            expectInTime(calculator, "function " + std::to_string(id) + " of " + std::to_string(count) + " arguments");
            if (function == nullptr)
                continue;
            const bool fits = count >= function->minArguments && count <= function->maxArguments;
            if (fits)
                EXPECT_NO_THROW(calculator.type("I9", text + ")")) << text;
            else
                EXPECT_THROW(calculator.type("I9", text + ")"), EngineError) << text;
        }
    }
}

} // namespace wagemill::engine
