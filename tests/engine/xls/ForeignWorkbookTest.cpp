#include "tests/engine/xls/TestBooks.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace wagemill::engine::xls {

namespace {

namespace fs = std::filesystem;

/// A folder for one test, gone afterwards.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string pattern = (fs::temp_directory_path() / "wagemill-xls-XXXXXX").string();
        m_path = mkdtemp(pattern.data());
    }
    ~TemporaryFolder() { fs::remove_all(m_path); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    fs::path operator/(const char* name) const { return m_path / name; }
    std::string text() const { return m_path.string(); }

private:
    fs::path m_path;
};

std::vector<std::byte> fileBytes(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(file)), {});
    const auto bytes = std::as_bytes(std::span(text));
    return {bytes.begin(), bytes.end()};
}

void writeFile(const fs::path& path, const std::vector<std::byte>& bytes)
{
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

std::string fileText(const fs::path& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool runs(const std::string& command)
{
    return std::system((command + " > /dev/null 2>&1").c_str()) == 0;
}

const fs::path checker = fs::path(WAGEMILL_CHECKERS_DIR) / "xls_lint.py";
const fs::path sampler = fs::path(WAGEMILL_CHECKERS_DIR) / "xls_sample.py";

bool canCheck()
{
    return fs::exists(checker) && runs("python3 --version");
}

/// What the checker finds in the file, warnings too; empty when nothing.
std::string findings(const TemporaryFolder& folder, const fs::path& file)
{
    const fs::path report = folder / "report.txt";
    const std::string command =
        "python3 '" + checker.string() + "' --strict '" + file.string() + "' > '" + report.string() + "'";
    return std::system(command.c_str()) == 0 ? "" : fileText(report);
}

/// A workbook with what the checker and other programs look at: formats, long texts, merged cells, hidden sheet, names.
Book variedBook()
{
    Book book = smallBook();
    Sheet& sheet = *book.sheets[0];
    for (int row = 10; row < 200; ++row)
        for (int column = row % 3; column < 12; column += 1 + row % 2) {
            Cell& cell = sheet.at({row, column});
            switch ((row + column) % 6) {
            case 0:
                cell.value = row * 1.25;
                break;
            case 1:
                cell.value = "text " + std::to_string(row) + " \xE6\x97\xA5";
                break;
            case 2:
                cell.formula = sumOfTwoCells();
                cell.value = "result " + std::to_string(column);
                break;
            case 3:
                cell.value = std::string(static_cast<std::size_t>(row * 40), 'l') + std::to_string(column);
                break;
            case 4:
                cell.value = row / 7.0;
                break;
            default:
                break;
            }
        }
    sheet.row(250).hidden = true;
    sheet.row(251).outlineLevel = 3;
    sheet.at({252, 0}).formula = formulaOf({FunctionToken{OperandClass::Value, 74, 0, false}});
    for (int row = 0; row < 2500; ++row)
        book.sheets[1]->merged.push_back({row + 100, 0, row + 100, 3});
    book.addSheet("Empty");
    book.addSheet("Hidden").hidden = true;
    ReferenceToken named = areaToken({0, 0, 3, 1}, false);
    named.externSheet = book.externSheetFor(0);
    book.names.push_back({"Table", std::nullopt, {{named}}, {}});
    book.properties = {"T\xC3\xADtulo \xE6\x97\xA5", "Ann", "Bob", "Wagemill", 1, 0x01DC000012345678};
    return book;
}

void expectSameCells(const Book& one, const Book& other)
{
    ASSERT_EQ(one.sheets.size(), other.sheets.size());
    for (std::size_t index = 0; index < one.sheets.size(); ++index) {
        const Sheet& sheet = *one.sheets[index];
        const Sheet& twin = *other.sheets[index];
        EXPECT_EQ(sheet.name, twin.name);
        EXPECT_EQ(sheet.usedRange(), twin.usedRange()) << sheet.name;
        EXPECT_EQ(sheet.merged, twin.merged) << sheet.name;
        for (int row = 0; row < static_cast<int>(sheet.rows().size()); ++row)
            for (const Cell& cell : sheet.rows()[static_cast<std::size_t>(row)].cells) {
                const CellAddress address{row, cell.column};
                const Cell* const match = twin.find(address);
                ASSERT_NE(match, nullptr) << addressText(address);
                EXPECT_EQ(match->value, cell.value) << addressText(address);
                EXPECT_EQ(match->format, cell.format) << addressText(address);
                ASSERT_EQ(match->formula != nullptr, cell.formula != nullptr) << addressText(address);
                if (cell.formula) {
                    EXPECT_EQ(*match->formula, *cell.formula) << addressText(address);
                }
            }
    }
}

/// Values that any program must give back, and formulas of the kinds that they write in their own ways.
constexpr const char* foreignTable =
    "1,2,3,\"=CHOOSE(A1,10,20,30)\",\"=IF(A1=1,IF(B1=2,\"\"a\"\",\"\"b\"\"),\"\"c\"\")\"\n"
    "4,5,6,\"=SUM(A1:B1,C1)\",\"=VLOOKUP(1,A1:C2,2,FALSE)\"\n"
    "Zo\xC3\xAB,\xE6\x97\xA5\xE6\x9C\xAC,\"two\nlines\",\"=A2+B2\",\"=NA()\"\n"
    "7,8,9,\"=A3&\"\"x\"\"\",\"=SUM({1,2;3,4})\"\n";

void expectForeignTable(const Book& book)
{
    const Sheet& sheet = *book.sheets.at(0);
    struct {
        CellAddress address;
        CellValue expected;
    } const cases[] = {
        {{0, 0}, 1.0},
        {{2, 0}, std::string("Zo\xC3\xAB")},
        {{2, 1}, std::string("\xE6\x97\xA5\xE6\x9C\xAC")},
        {{2, 2}, std::string("two\nlines")},
        {{0, 3}, 10.0},
        {{1, 3}, 6.0},
        {{1, 4}, 2.0},
        {{2, 3}, 9.0},
        {{2, 4}, ErrorCode::NotAvailable},
        {{3, 4}, 10.0},
    };
    for (const auto& [address, expected] : cases)
        EXPECT_EQ(sheet.value(address), expected) << addressText(address);
    for (const CellAddress address : {CellAddress{0, 3}, {0, 4}, {1, 3}, {1, 4}, {2, 3}, {2, 4}, {3, 3}, {3, 4}}) {
        ASSERT_NE(sheet.find(address), nullptr);
        ASSERT_TRUE(sheet.find(address)->formula) << addressText(address);
    }
    EXPECT_EQ(*sheet.find({2, 3})->formula,
              (Formula{{cellToken(1, 0), cellToken(1, 1), OperatorToken{Operator::Add}}}));
}

} // namespace

TEST(ForeignWorkbook, TheCheckerFindsNothingInOurs)
{
    if (!canCheck())
        GTEST_SKIP() << "the checking programs are not beside the checkout";
    const TemporaryFolder folder;
    for (const auto& [name, book, kind] : {std::tuple("small.xls", smallBook(), FileKind::Workbook),
                                           {"varied.xls", variedBook(), FileKind::Workbook},
                                           {"template.xlt", smallBook(), FileKind::Template}}) {
        writeFile(folder / name, writeWorkbook(book, kind));
        EXPECT_EQ(findings(folder, folder / name), "") << name;
    }
}

TEST(ForeignWorkbook, TheRegularSampleStaysWhatItIs)
{
    if (!canCheck() || !fs::exists(sampler))
        GTEST_SKIP() << "the checking programs are not beside the checkout";
    const TemporaryFolder folder;
    const fs::path sample = folder / "sample.xls";
    ASSERT_TRUE(runs("python3 '" + sampler.string() + "' '" + sample.string() + "'"));
    const Book book = readWorkbook(fileBytes(sample), "sample.xls");
    EXPECT_TRUE(book.notices.empty());
    const auto written = writeWorkbook(book, FileKind::Workbook);
    expectSameCells(book, readWorkbook(written, "written.xls"));
    writeFile(folder / "written.xls", written);
    EXPECT_EQ(findings(folder, folder / "written.xls"), "");
}

TEST(ForeignWorkbook, OfOtherProgramsIsReadAndWrittenClean)
{
    struct {
        const char* program;
        const char* command;
    } const programs[] = {
        {"soffice", "soffice -env:UserInstallation=file://@/profile --headless --infilter=CSV:44,34,76,1 --convert-to "
                    "'xls:MS Excel 97' --outdir "
                    "@ @/table.csv"},
        {"ssconvert", "ssconvert -T Gnumeric_Excel:excel_biff8 @/table.csv @/table.xls"},
    };
    int tried = 0;
    for (const auto& [program, command] : programs) {
        if (!runs(std::string("command -v ") + program))
            continue;
        ++tried;
        const TemporaryFolder folder;
        std::ofstream(folder / "table.csv") << foreignTable;
        std::string line = command;
        for (std::size_t place = line.find('@'); place != std::string::npos; place = line.find('@'))
            line.replace(place, 1, folder.text());
        ASSERT_TRUE(runs(line)) << program;
        const Book book = readWorkbook(fileBytes(folder / "table.xls"), program);
        expectForeignTable(book);
        writeFile(folder / "written.xls", writeWorkbook(book, FileKind::Workbook));
        expectSameCells(book, readWorkbook(fileBytes(folder / "written.xls"), "written.xls"));
        if (canCheck()) {
            EXPECT_EQ(findings(folder, folder / "written.xls"), "") << program;
        }
    }
    if (tried == 0)
        GTEST_SKIP() << "neither LibreOffice nor Gnumeric is installed";
}

TEST(ForeignWorkbook, OtherProgramsReadOurs)
{
    if (!runs("command -v ssconvert"))
        GTEST_SKIP() << "Gnumeric is not installed";
    const TemporaryFolder folder;
    Book book = smallBook();
    book.activeSheet = 0;
    writeFile(folder / "ours.xls", writeWorkbook(book, FileKind::Workbook));
    ASSERT_TRUE(runs("ssconvert --recalc -O 'sheet=\"Employee information\"' -T Gnumeric_stf:stf_assistant '" +
                     (folder / "ours.xls").string() + "' '" + (folder / "ours.csv").string() + "'"));
    const std::string text = fileText(folder / "ours.csv");
    EXPECT_NE(text.find("Zo\xC3\xAB \xE6\x97\xA5\xE6\x9C\xAC"), std::string::npos) << text;
    EXPECT_NE(text.find("TRUE,#N/A"), std::string::npos) << text;
    EXPECT_NE(text.find("38018.28"), std::string::npos) << text;
}

} // namespace wagemill::engine::xls
