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

} // namespace wagemill::engine::xls
