#include "resources/CellLook.h"
#include "resources/DescriptionLines.h"
#include "resources/SheetDescription.h"
#include "resources/TemplateDescription.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace wagemill {
namespace {

using engine::Book;
using engine::Sheet;

Book described(const std::string& text)
{
    Book book;
    book.addSheet("Stub");
    Looks looks(book.styles);
    for (const DescriptionLine& line : readDescription("color accent 1B4F72\n"
                                                       "number-format money \"$\"#,##0.00\n",
                                                       "workbook.txt"))
        line.keyword == "color" ? looks.defineColor(line) : looks.defineNumberFormat(line);
    describeSheet(book, 0, looks, readDescription(text, "stub.txt"));
    return book;
}

TEST(SheetDescription, CarriesOutItsStatements)
{
    const Book book = described("# a remark\n"
                                "\n"
                                "put B2 \"two\\nlines \\\"quoted\\\" \"\n"
                                "put C2:C4 =B2*2\n"
                                "count B3:B4\n"
                                "put D2 38018\n"
                                "width B:C 70\n"
                                "height 2:3 20\n"
                                "look B2:C2 bold size 12 ink accent fill accent right indent 1 format money\n"
                                "look B2 left\n"
                                "frame B2:C3 thick accent\n"
                                "merge B2:C2\n"
                                "grid-lines off\n");
    const Sheet& sheet = *book.sheets[0];
    EXPECT_EQ(sheet.value({1, 1}), engine::CellValue("two\nlines \"quoted\" "));
    EXPECT_EQ(sheet.value({3, 1}), engine::CellValue(2.0));
    EXPECT_EQ(sheet.value({1, 3}), engine::CellValue(38018.0));
    const auto& lastFormula = std::get<engine::ReferenceToken>(sheet.find({3, 2})->formula->tokens.front());
    EXPECT_EQ(lastFormula.first.row, 3) << "filled down like a copied formula";
    EXPECT_EQ(sheet.columnWidth(2), 2560);
    EXPECT_EQ(sheet.rowHeightTwips(2), 300);
    EXPECT_EQ(sheet.merged.size(), 1U);
    EXPECT_FALSE(sheet.showGridLines);

    const engine::CellFormat& format = book.styles.format(sheet.find({1, 1})->format);
    EXPECT_EQ(book.styles.fontOf(format).heightTwips, 240);
    EXPECT_EQ(book.styles.rgb(book.styles.fontOf(format).color, {}), (engine::Rgb{0x1B, 0x4F, 0x72}));
    EXPECT_EQ(format.horizontal, engine::HorizontalAlignment::Left) << "what is said later counts";
    EXPECT_EQ(format.indent, 1);
    EXPECT_EQ(book.styles.numberFormatCode(format.numberFormat), "\"$\"#,##0.00");
    EXPECT_EQ(format.top.style, engine::BorderStyle::Thick);
    EXPECT_EQ(format.right.style, engine::BorderStyle::None) << "a frame runs around, not through";
}

TEST(SheetDescription, SaysWhereAndWhatIsWrong)
{
    const struct {
        const char* line;
        const char* message;
    } cases[] = {
        {"putt B2 5", "\"putt\" is no statement"},
        {"put B2 \"open", "the closing quote is missing"},
        {"put B2 \"open\\", "the closing quote is missing"},
        {"put B2 \"text\" more", "there is more behind \"put\" than it takes"},
        {"put", "\"put\" needs more words"},
        {"put ZZ9 5", "\"ZZ9\" is no cell or area"},
        {"put B2 =SUM(", "The formula cannot be read"},
        {"look B2 bald", "\"bald\" is neither an attribute nor a style"},
        {"look B2 size", "a number is missing"},
        {"look B2 size big", "\"big\" is no whole number"},
        {"look B2 ink red", "\"red\" is no colour"},
        {"look B2 indent 99", "\"99\" is not within 0 and 15"},
        {"look B2 format", "a number format is missing"},
        {"look B2 line above thin accent", "\"above\" is no side"},
        {"look B2 line top wavy accent", "\"wavy\" is no line style"},
        {"frame B2:C3 thin", "\"frame\" needs more words"},
        {"width B wide", "\"wide\" is no whole number"},
        {"width 3 50", "\"3\" names no columns"},
        {"width B 0", "a column is 1 to"},
        {"height B 20", "\"B\" names no rows"},
        {"height 2 9999", "a row is 1 to"},
        {"margins 1 1 1 x", "\"x\" is no number"},
        {"scale 5", "printed at 10 to 400 percent"},
        {"page-breaks 49 48 2000", "do not lie within a sheet"},
        {"repeat-rows 3 2", "no rows of a sheet"},
        {"freeze-rows 0", "no rows of a sheet"},
        {"grid-lines maybe", R"("on" or "off")"},
    };
    for (const auto& [line, message] : cases)
        try {
            described(std::string("# first line\n") + line + "\n");
            ADD_FAILURE() << line << " was accepted";
        } catch (const DescriptionError& error) {
            const std::string text = error.what();
            EXPECT_TRUE(text.starts_with("stub.txt, line 2: ")) << text;
            EXPECT_NE(text.find(message), std::string::npos) << text;
        }
}

TEST(SheetDescription, ColumnsComeInTheirOrder)
{
    EXPECT_THROW(described("width C 50\nwidth B 50\n"), DescriptionError);
    EXPECT_THROW(described("width B:D 50\nwidth C 50\n"), DescriptionError);
}

TEST(TemplateDescription, NamesTheFileOfAFault)
{
    const test::TemporaryFolder folder;
    const auto write = [&](const char* name, const char* text) { std::ofstream(folder / name) << text; };
    const auto faultOf = [&](const char* workbook) -> std::string {
        write("workbook.txt", workbook);
        try {
            describedWorkbook(folder.path());
        } catch (const std::exception& error) {
            return error.what();
        }
        return "none";
    };
    write("stub.txt", "put A1 1\nput A2 =\n");
    EXPECT_TRUE(faultOf("sheet \"Stub\" stub.txt").starts_with("stub.txt, line 2"));
    EXPECT_TRUE(faultOf("title \"Pay\"\ndated 2026-13-01").starts_with("workbook.txt, line 2"));
    EXPECT_TRUE(faultOf("color accent 1B4F7").starts_with("workbook.txt, line 1"));
    EXPECT_TRUE(faultOf("sheet \"a/b\" stub.txt").starts_with("workbook.txt, line 1"));
    EXPECT_NE(faultOf("sheet \"Stub\" missing.txt").find("missing.txt"), std::string::npos);
}

} // namespace
} // namespace wagemill
