#include "app/base/Files.h"
#include "tests/engine/xls/TestBooks.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace wagemill::engine::xls {

namespace {

bool runs(const std::string& command)
{
    return std::system(command.c_str()) == 0;
}

std::string checkingProgram(const char* name)
{
    return std::string("python3 '" WAGEMILL_CHECKERS_DIR "/") + name + "' ";
}

bool canCheck()
{
    return std::filesystem::exists(WAGEMILL_CHECKERS_DIR "/xls_lint.py") && runs("python3 --version > /dev/null");
}

/// What the checker looks at beyond the workbooks of a build: texts that go on in further records, merged cells in
/// several, outlines, hidden and empty sheets, names.
Book variedBook()
{
    Book book = smallBook();
    Sheet& sheet = *book.sheets[0];
    for (int row = 10; row < 200; ++row) {
        const std::string number = std::to_string(row);
        const CellValue values[] = {row * 1.25, std::string(static_cast<std::size_t>(row) * 40, 'l') + number,
                                    row / 7.0, "text " + number + " \xE6\x97\xA5", Empty{}};
        for (int column = row % 3; column < 12; column += 1 + row % 2)
            sheet.at({row, column}).value = values[static_cast<std::size_t>(row + column) % std::size(values)];
        sheet.at({row, 13}).formula = sumOfTwoCells();
        sheet.at({row, 13}).value = "result " + number;
    }
    sheet.row(250).hidden = true;
    sheet.row(251).outlineLevel = 3;
    for (int row = 0; row < 2500; ++row)
        book.sheets[1]->merged.push_back({row + 100, 0, row + 100, 3});
    book.addSheet("Empty").hidden = true;
    ReferenceToken named = areaToken({0, 0, 3, 1}, false);
    named.externSheet = book.externSheetFor(0);
    book.names = {{"Table", std::nullopt, {{named}}, {}}, {"Unknown", std::nullopt, {}, {}}};
    book.properties = {"T\xC3\xADtulo \xE6\x97\xA5", "Ann", "Bob", "Wagemill", 1, 0x01DC000012345678};
    return book;
}

} // namespace

TEST(ForeignWorkbook, TheCheckerFindsNothingInOurs)
{
    if (!canCheck())
        GTEST_SKIP() << "the checking programs are not beside the checkout";
    const test::TemporaryFolder folder;
    const auto sample = folder / "sample.xls";
    ASSERT_TRUE(runs(checkingProgram("xls_sample.py") + sample.string() + " > /dev/null"));
    const Book regular = readWorkbook(readBytesFromFile(sample), "sample.xls");
    EXPECT_TRUE(regular.notices.empty());
    struct {
        const char* name;
        std::vector<std::byte> file;
    } const cases[] = {
        {"small.xls", writeWorkbook(smallBook(), FileKind::Workbook)},
        {"varied.xls", writeWorkbook(variedBook(), FileKind::Workbook)},
        {"template.xlt", writeWorkbook(smallBook(), FileKind::Template)},
        {"written.xls", writeWorkbook(regular, FileKind::Workbook)},
    };
    for (const auto& [name, file] : cases) {
        writeBytesToFile(file, folder / name);
        EXPECT_TRUE(runs(checkingProgram("xls_lint.py") + "--strict " + (folder / name).string())) << name;
    }
    EXPECT_EQ(writeWorkbook(readWorkbook(cases[3].file, "written.xls"), FileKind::Workbook), cases[3].file);
}

} // namespace wagemill::engine::xls
