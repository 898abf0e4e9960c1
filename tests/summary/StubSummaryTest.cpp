#include "workbook/summary/StubSummary.h"

#include "app/base/Files.h"
#include "tests/support/TemporaryFolder.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <gtest/gtest.h>

namespace wagemill {

namespace {

using namespace engine;

struct Stub {
    CellValue name;
    CellValue gross;
    CellValue net;
};

/// A file with these stubs one below another, captions left of amounts, on its second sheet, in front.
std::filesystem::path workbookOf(const std::vector<Stub>& stubs, const test::TemporaryFolder& folder)
{
    Book book;
    book.addSheet("Employee information").at({0, 0}).value = std::string("Net Pay"); // not in front
    Sheet& sheet = book.addSheet("Individual paystubs");
    book.activeSheet = 1;
    CellFormat money;
    money.numberFormat = book.styles.numberFormatFor("\"$\"#,##0.00");
    book.styles.formats.push_back(money);
    const auto moneyFormat = static_cast<std::uint16_t>(book.styles.formats.size() - 1);
    int row = 1;
    for (const auto& [name, gross, net] : stubs) {
        sheet.at({row, 4}).value = std::string("Employee Name");
        sheet.at({row, 5}).value = name;
        for (const auto& [caption, amount] : {std::pair("Gross Pay", gross), std::pair("Net Pay", net)}) {
            row += 2;
            sheet.at({row, 6}).value = std::string(caption);
            sheet.at({row, 7}).value = amount;
            sheet.at({row, 7}).format = moneyFormat;
        }
        row += 8;
    }
    auto path = folder / "kvarno12345678.xls";
    writeBytesToFile(xls::writeWorkbook(book, xls::FileKind::Workbook), path);
    return path;
}

TEST(StubSummary, SaysNameGrossAndNetOfEveryStub)
{
    const std::string ned = "Ned Hollister";
    struct {
        std::vector<Stub> stubs;
        const char* expected;
    } const cases[] = {
        {{{ned, 997.0, 688.9}}, "Pay stub of Ned Hollister: gross pay $997.00, net pay $688.90."},
        {{{ned, 1997.5, -3.0}, {std::string("Ida"), 0.0, 0.0}},
         "Pay stub of Ned Hollister: gross pay $1,997.50, net pay -$3.00.\n"
         "Pay stub of Ida: gross pay $0.00, net pay $0.00."},
        {{{ErrorCode::NotAvailable, ErrorCode::NotAvailable, ErrorCode::NotAvailable}, {ned, 1.0, 1.0}},
         "Pay stub of Ned Hollister: gross pay $1.00, net pay $1.00.\n1 pay stub without amounts."},
        {{{ned, 1.0, ErrorCode::Value}, {ned, ErrorCode::Name, 1.0}}, "2 pay stubs without amounts."},
        {{}, ""},
    };
    for (const auto& [stubs, expected] : cases) {
        const test::TemporaryFolder folder;
        EXPECT_EQ(describeStubs(workbookOf(stubs, folder), {}), expected);
    }
}

TEST(StubSummary, SpeaksTheUsersNumbersAndSaysNothingOfWhatCannotBeRead)
{
    const test::TemporaryFolder folder;
    EXPECT_EQ(describeStubs(folder / "missing.xls", {}), "");
    RegionalFormats german;
    german.decimalSeparator = ",";
    german.groupSeparator = ".";
    const auto path = workbookOf({{std::string("Ida"), 1234.5, 1.0}}, folder);
    EXPECT_EQ(describeStubs(path, german), "Pay stub of Ida: gross pay $1.234,50, net pay $1,00.");
    std::filesystem::resize_file(path, 1000);
    EXPECT_EQ(describeStubs(path, {}), "");
}

} // namespace

} // namespace wagemill
