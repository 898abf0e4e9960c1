// Formulas made by a grammar of what people type, and functions of any number of arguments as files may hold them. What
// is accepted has a value, and is the same formula with the same value after it was saved and opened again.

#include "tests/engine/formula/Calculator.h"
#include "tests/reliability/engine/Limits.h"
#include "tests/support/LongForm.h"
#include "tests/support/OpenRecalculateWrite.h"
#include "workbook/engine/FunctionTable.h"
#include "workbook/engine/formula/FormulaFunctions.h"

#include <array>
#include <initializer_list>
#include <random>

namespace wagemill::engine {

namespace {

constexpr int functionNumbers = 400;
constexpr int formulasInABook = 50;

/// Writes formulas that are right more often than not.
class Grammar {
public:
    explicit Grammar(std::mt19937& random) : m_random(random)
    {
        // A function that we do not compute keeps the value from the file, which a new formula has not.
        for (std::uint16_t id = 0; id < functionNumbers; ++id)
            if (const FunctionInfo* const function = findFunction(id);
                function != nullptr && !function->isVolatile && findBinding(id) != nullptr)
                m_names.push_back(function->name);
    }

    std::string formula()
    {
        m_pieces = 0;
        return "=" + expression(static_cast<int>(m_random() % 9));
    }

    std::string cell()
    {
        return std::string(1, static_cast<char>('A' + m_random() % 6)) + std::to_string(1 + m_random() % 12);
    }

private:
    std::string pick(std::initializer_list<const char*> choices)
    {
        return choices.begin()[m_random() % choices.size()];
    }

    std::string operand()
    {
        const auto choice = m_random() % 5;
        if (choice < 2)
            return choice == 0 ? cell() + ":" + cell() : cell();
        return pick({"1", "0", "-2.5", "\"12.5\"", "\"\"", "\"Ann\"", "TRUE", "#N/A", "1E300", "7%", "{1,2;3,4}",
                     "46112.75", "B:B", "$3:$4", "65536", "\"A1\"", "#REF!", "{\"x\"}", "'Rates 1'!$A$1"});
    }

    std::string call(int depth)
    {
        std::string text(m_names[m_random() % m_names.size()]);
        const auto count = m_random() % (m_random() % 16 == 0 ? 35 : 5);
        for (std::mt19937::result_type i = 0; i < count; ++i)
            text += (i == 0 ? "(" : ",") + (m_random() % 12 == 0 ? "" : expression(depth - 1));
        return text + (count == 0 ? "()" : ")");
    }

    std::string expression(int depth)
    {
        if (depth <= 0 || ++m_pieces > 60)
            return operand();
        const auto choice = m_random() % 8;
        if (choice > 3)
            return call(depth);
        if (choice > 1)
            return expression(depth - 1) + pick({"+", "-", "*", "/", "^", "&", "=", "<>", "<", ">=", ":", " ", ","}) +
                   expression(depth - 1);
        return choice == 1 ? pick({"-", "+", "--"}) + expression(depth - 1) : "(" + expression(depth - 1) + ")";
    }

    std::mt19937& m_random;
    std::vector<std::string_view> m_names;
    int m_pieces = 0; ///< of the present formula
};

void expectInTime(Calculator& calculator, const std::string& what)
{
    const double start = test::secondsUsed();
    calculator.compute();
    EXPECT_LT(test::secondsUsed() - start, test::maxSeconds) << what;
    EXPECT_NO_THROW(test::requireFiniteNumbers(calculator.book)) << what;
}

} // namespace

TEST(RandomFormulas, HaveAValueThatIsSavedOrAreRefused)
{
    std::mt19937 random(20261121); // always the same formulas
    Grammar grammar(random);
    const int books = test::shortOrLong(20'000, 1'000'000) / formulasInABook;
    int accepted = 0;
    for (int number = 0; number < books; ++number) {
        Calculator calculator;
        std::string last;
        for (int i = 0; i < formulasInABook; ++i) {
            last = grammar.formula();
            try {
                calculator.type(grammar.cell(), last);
                ++accepted;
            } catch (const EngineError& refusal) {
                EXPECT_NE(std::string(refusal.what()).find("is left empty"), std::string::npos);
            }
        }
        expectInTime(calculator, "book " + std::to_string(number) + ", " + last);
        // saved, opened, computed and saved again it is the same file, with the same formulas and values
        const auto saved = xls::writeWorkbook(calculator.book, xls::FileKind::Workbook);
        Book again = xls::readWorkbook(saved, "formulas.xls");
        recalculate(again, calculator.settings);
        EXPECT_TRUE(xls::writeWorkbook(again, xls::FileKind::Workbook) == saved);
        ASSERT_FALSE(HasFailure()) << "book " << number;
    }
    EXPECT_GT(accepted, books * formulasInABook / 20) << "the grammar makes too few formulas that are any";
    EXPECT_LT(test::peakMegabytes(), test::maxMegabytes);
}

TEST(ArgumentCounts, AreThoseOfTheFunction)
{
    const auto operands =
        std::to_array<Token>({NumberToken{2}, TextToken{"A1"}, ErrorToken{ErrorCode::Value}, MissingArgumentToken{},
                              ArrayToken{OperandClass::Array, 1, 2, {1.0, 2.0}}});
    std::mt19937 random(20261121);
    Calculator calculator;
    for (std::uint16_t id = 0; id < functionNumbers; ++id)
        for (std::uint8_t count = 0; count <= 36; ++count) {
            Formula formula;
            for (int i = 0; i < count; ++i)
                formula.tokens.push_back(operands.at(random() % operands.size()));
            formula.tokens.emplace_back(FunctionToken{OperandClass::Value, id, count, true});
            calculator.book.sheets[0]->at({8, 8}).formula = std::make_shared<const Formula>(formula);
            expectInTime(calculator, "function " + std::to_string(id) + " of " + std::to_string(count) + " arguments");
        }
}

} // namespace wagemill::engine
