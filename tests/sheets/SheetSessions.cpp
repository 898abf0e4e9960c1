// Runs every session in this folder; README.md says what their lines mean.

#include "tests/base/text/Regions.h"
#include "workbook/engine/Formula.h"
#include "workbook/engine/formula/CellEntry.h"
#include "workbook/engine/formula/FormulaParser.h"
#include "workbook/engine/formula/Recalculation.h"
#include "workbook/engine/text/NumberFormat.h"
#include "workbook/engine/text/TypedText.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <tuple>

namespace wagemill::engine {
namespace {

constexpr CalendarDate sessionDay{2026, 3, 31};
constexpr double sessionMoment = 46112.75;

std::vector<std::filesystem::path> sessionFiles()
{
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(WAGEMILL_SOURCE_DIR "/tests/sheets"))
        if (entry.path().extension() == ".txt" && entry.path().stem() != "CMakeLists")
            files.push_back(entry.path());
    std::ranges::sort(files);
    return files;
}

/// Takes the first word off `line`, and the one blank after it.
std::string takeWord(std::string_view& line)
{
    const std::size_t end = std::min(line.find(' '), line.size());
    std::string word(line.substr(0, end));
    line.remove_prefix(std::min(end + 1, line.size()));
    return word;
}

std::string withLineBreaks(std::string text)
{
    for (std::size_t at = text.find("\\n"); at != std::string::npos; at = text.find("\\n", at))
        text.replace(at, 2, "\n");
    return text;
}

std::string written(const CellValue& value)
{
    if (const auto* const number = std::get_if<double>(&value)) {
        std::ostringstream text;
        text.precision(17);
        text << *number;
        return text.str();
    }
    if (const auto* const text = std::get_if<std::string>(&value))
        return '"' + *text + '"';
    if (const auto* const logical = std::get_if<bool>(&value))
        return *logical ? "TRUE" : "FALSE";
    if (const auto* const error = std::get_if<ErrorCode>(&value))
        return errorText(*error);
    return "empty";
}

bool isAbout(double actual, const std::string& expected)
{
    char* end = nullptr;
    const double number = std::strtod(expected.c_str(), &end);
    return !expected.empty() && *end == '\0' && std::fabs(actual - number) <= 1e-14 * std::max(std::fabs(number), 1.0);
}

/// Splits "LEFT SIGN RIGHT" at the last such sign; the right part loses the remark that may follow it.
std::string takeBefore(std::string_view& rest, std::string_view sign)
{
    const std::size_t at = rest.rfind(sign);
    if (at == std::string_view::npos)
        throw std::runtime_error("the line lacks \"" + std::string(sign) + "\"");
    std::string left(rest.substr(0, at));
    rest.remove_prefix(at + sign.size());
    rest = rest.substr(0, rest.find("  # "));
    return left;
}

CellValue readValue(std::string_view written)
{
    if (written.starts_with('"'))
        return std::string(written.substr(1, written.size() - 2));
    return readTypedText(written, {}, sessionDay).value;
}

class Session {
public:
    void run(const std::string& line)
    {
        std::string_view rest = line;
        if (rest.starts_with('='))
            return expectResult(rest);
        const std::string word = takeWord(rest);
        if (word.empty() || word.starts_with('#'))
            return;
        const auto action = actions.find(word);
        ASSERT_NE(action, actions.end()) << "no session line begins with \"" << word << '"';
        (this->*action->second)(rest);
    }

private:
    using Action = void (Session::*)(std::string_view);

    Sheet& sheet() { return *m_book.sheets.at(m_sheet); }

    /// And saves the book and opens it again, so that whatever a session holds goes through a file too.
    void compute()
    {
        recalculate(m_book, {m_formats, sessionMoment});
        m_book = xls::readWorkbook(xls::writeWorkbook(m_book, xls::FileKind::Workbook), "session.xls");
    }

    static CellRect takeArea(std::string_view& rest)
    {
        const std::string word = takeWord(rest);
        const auto area = parseAddress(word);
        if (!area)
            throw std::runtime_error("\"" + word + "\" is not a cell");
        return *area;
    }

    static CellAddress takeAddress(std::string_view& rest) { return takeArea(rest).first(); }

    std::string codeOf(const Cell& cell) const
    {
        return std::string(m_book.styles.numberFormatCode(m_book.styles.format(cell.format).numberFormat));
    }

    const Cell& takeCell(std::string_view& rest)
    {
        static const Cell none;
        compute();
        const Cell* const cell = sheet().find(takeAddress(rest));
        return cell == nullptr ? none : *cell;
    }

    void goToSheet(std::string_view name)
    {
        if (!m_book.sheetIndex(name))
            m_book.addSheet(name);
        m_sheet = *m_book.sheetIndex(name);
    }

    void put(std::string_view rest)
    {
        const CellRect area = takeArea(rest);
        for (int row = area.firstRow; row <= area.lastRow; ++row)
            for (int column = area.firstColumn; column <= area.lastColumn; ++column) {
                const bool isLast = row == area.lastRow && column == area.lastColumn;
                const std::size_t end = isLast ? rest.size() : rest.find(" | ");
                enterText(m_book, m_sheet, {row, column}, withLineBreaks(std::string(rest.substr(0, end))), m_formats,
                          sessionDay);
                rest.remove_prefix(isLast ? end : end + 3);
            }
    }

    void style(std::string_view rest)
    {
        Cell& cell = sheet().at(takeAddress(rest));
        CellFormat format = m_book.styles.format(cell.format);
        format.numberFormat = m_book.styles.numberFormatFor(rest);
        cell.format = m_book.styles.formatFor(format);
    }

    void copy(std::string_view rest)
    {
        const CellRect rows = takeArea(rest);
        ASSERT_EQ(takeWord(rest), "to");
        sheet().copyRows(rows.firstRow, rows.lastRow, std::stoi(std::string(rest)) - 1);
    }

    void region(std::string_view name)
    {
        static const std::map<std::string_view, RegionalFormats> regions = {
            {"germany", test::germanFormats()}, {"india", test::indianFormats()}, {"arabia", test::arabicFormats()}};
        m_formats = regions.at(name);
    }

    void countFrom1904(std::string_view /*rest*/) { m_book.dates1904 = true; }

    void hide(std::string_view rest)
    {
        const CellRect rows = takeArea(rest);
        for (int row = rows.firstRow; row <= rows.lastRow; ++row)
            sheet().row(row).hidden = true;
    }

    /// As a file says it: a mark in the sheet, and a name for the rows.
    void filter(std::string_view rest)
    {
        const CellRect rows = takeArea(rest);
        sheet().isFiltered = true;
        sheet().kept.push_back({0x009B, {}, {}}); // FILTERMODE
        const ReferenceToken area{OperandClass::Reference,
                                  m_book.externSheetFor(m_sheet),
                                  {rows.firstRow, 0, false, false},
                                  ReferencePart{rows.lastRow, 1, false, false}};
        m_book.names.push_back({"_FilterDatabase", static_cast<std::uint16_t>(m_sheet), Formula{{area}}, {}});
    }

    void expect(const CellValue& value, std::string_view text)
    {
        const std::string expected = withLineBreaks(std::string(text));
        if (const auto* const number = std::get_if<double>(&value))
            EXPECT_TRUE(isAbout(*number, expected)) << "the value is " << written(value);
        else
            EXPECT_EQ(written(value), expected);
    }

    void expectValue(std::string_view rest)
    {
        const CellValue value = takeCell(rest).value;
        expect(value, rest);
    }

    void expectResult(std::string_view rest)
    {
        put("Z9 " + takeBefore(rest, " -> "));
        compute();
        expect(sheet().value({8, 25}), rest);
    }

    void expectArray(std::string_view rest)
    {
        const CellRect area = takeArea(rest);
        const Formula parsed = parseFormula(takeBefore(rest, " -> "), m_book, m_sheet, m_formats);
        const auto formula = std::make_shared<const Formula>(Formula{asArrayFormula(parsed.tokens)});
        const auto array = std::make_shared<const ArrayArea>(ArrayArea{area});
        const auto forEachCell = [&](auto visit) {
            for (int row = area.firstRow; row <= area.lastRow; ++row)
                for (int column = area.firstColumn; column <= area.lastColumn; ++column)
                    visit(sheet().at({row, column}));
        };
        forEachCell([&](Cell& cell) { std::tie(cell.formula, cell.array) = std::tie(formula, array); });
        compute();
        std::string values;
        forEachCell([&](const Cell& cell) { values += (values.empty() ? "" : " | ") + written(cell.value); });
        EXPECT_EQ(values, rest);
    }

    void defineName(std::string_view rest)
    {
        const std::string name = takeWord(rest);
        m_book.names.push_back({name, std::nullopt, parseFormula(rest, m_book, m_sheet, m_formats), {}});
    }

    void iterate(std::string_view rest)
    {
        const std::string turns = takeWord(rest);
        m_book.iteration = {true, static_cast<std::uint16_t>(std::stoi(turns)), std::stod(std::string(rest))};
    }

    void expectTyped(std::string_view rest)
    {
        const std::string text = withLineBreaks(takeBefore(rest, " -> "));
        const TypedValue typed = readTypedText(text, m_formats, sessionDay);
        const std::size_t as = std::min(rest.find(" as "), rest.size());
        expect(typed.value, rest.substr(0, as));
        EXPECT_EQ(typed.numberFormat, rest.substr(std::min(as + 4, rest.size())));
        EXPECT_EQ(typed.quotePrefix, text.starts_with('\''));
    }

    void expectShows(std::string_view rest)
    {
        const std::string asked = takeBefore(rest, " -> ");
        const std::size_t as = asked.find(" as ");
        const CellValue value = readValue(asked.substr(0, as));
        EXPECT_EQ('"' + showValue(value, asked.substr(as + 4), m_formats, m_book.dates1904).text + '"', rest);
    }

    void expectShown(std::string_view rest)
    {
        const Cell& cell = takeCell(rest);
        EXPECT_EQ('"' + showValue(cell.value, codeOf(cell), m_formats, m_book.dates1904).text + '"',
                  withLineBreaks(std::string(rest)));
    }

    void expectFormat(std::string_view rest)
    {
        const std::string code = codeOf(takeCell(rest));
        EXPECT_EQ(code, rest);
    }

    void expectFormula(std::string_view rest)
    {
        const Cell& cell = takeCell(rest);
        ASSERT_TRUE(cell.formula) << "the cell holds no formula";
        EXPECT_EQ(*cell.formula, parseFormula(rest, m_book, m_sheet, m_formats));
    }

    void expectRefused(std::string_view rest)
    {
        const CellAddress address = takeAddress(rest);
        const std::size_t end = std::min(rest.find(" -> "), rest.size());
        try {
            enterText(m_book, m_sheet, address, rest.substr(0, end), m_formats, sessionDay);
            FAIL() << "the text was taken";
        } catch (const EngineError& error) {
            const std::string_view why = rest.substr(std::min(end + 4, rest.size()));
            EXPECT_TRUE(std::string_view(error.what()).ends_with(why.substr(0, why.find("  # ")))) << error.what();
        }
        EXPECT_EQ(written(sheet().value(address)), "empty");
    }

    void expectUsed(std::string_view rest)
    {
        const auto range = sheet().usedRange();
        EXPECT_EQ(range ? addressText(range->first()) + ":" + addressText({range->lastRow, range->lastColumn})
                        : "nothing",
                  rest);
    }

    inline static const std::map<std::string, Action> actions = {
        {"sheet", &Session::goToSheet},       {"put", &Session::put},
        {"style", &Session::style},           {"copy", &Session::copy},
        {"region", &Session::region},         {"value", &Session::expectValue},
        {"shown", &Session::expectShown},     {"format", &Session::expectFormat},
        {"formula", &Session::expectFormula}, {"refused", &Session::expectRefused},
        {"used", &Session::expectUsed},       {"hide", &Session::hide},
        {"filter", &Session::filter},         {"dates1904", &Session::countFrom1904},
        {"typed", &Session::expectTyped},     {"shows", &Session::expectShows},
        {"array", &Session::expectArray},     {"name", &Session::defineName},
        {"iterate", &Session::iterate},
    };

    Book m_book;
    std::size_t m_sheet = 0;
    RegionalFormats m_formats;
};

class SheetSession : public testing::TestWithParam<std::filesystem::path> {};

TEST_P(SheetSession, HoldsAndShowsWhatItMust)
{
    std::ifstream file(GetParam());
    ASSERT_TRUE(file) << GetParam();
    Session session;
    int number = 0;
    for (std::string line; std::getline(file, line);) {
        SCOPED_TRACE(GetParam().filename().string() + ":" + std::to_string(++number) + ": " + line);
        ASSERT_NO_THROW(session.run(line));
    }
}

INSTANTIATE_TEST_SUITE_P(All, SheetSession, testing::ValuesIn(sessionFiles()), [](const auto& parameter) {
    std::string name = parameter.param.stem().string();
    std::ranges::replace(name, '-', '_');
    return name;
});

} // namespace
} // namespace wagemill::engine
