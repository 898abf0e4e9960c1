// make_results FOLDER: builds the workbook of every build case through the embedded engine and leaves it in the folder
// as NAME.xls, beside it NAME.tsv with what each of its cells holds and shows by our own reading.

#include "app/base/Files.h"
#include "app/base/Messages.h"
#include "resources/CustomResource.h"
#include "tests/workbook/BuildCases.h"
#include "workbook/PayrollBuild.h"
#include "workbook/embedded/EmbeddedApplication.h"
#include "workbook/engine/text/NumberFormat.h"
#include "workbook/engine/xls/BiffReader.h"

#include <QGuiApplication>

#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace {

using namespace wagemill;
namespace fs = std::filesystem;

struct NoWindows : BuildWindows {
    void freezeDrawing() override {}
    void unfreezeDrawing() override {}
    void showHourglass() override {}
    void showArrow() override {}
    void showPicture(const fs::path&) override {}
    void passWorkbook(const fs::path& saved) override { workbook = saved; }
    void showPreview() override {}
    void hideEntry() override {}
    fs::path workbook;
};

struct FailOnMessages : Messages {
    MessageAnswer show(const Message& message) override
    {
        std::cerr << message.text << '\n';
        std::exit(1);
    }
};

std::string withoutControls(std::string text)
{
    for (char& letter : text)
        if (letter == '\n' || letter == '\t')
            letter = ' ';
    return text;
}

struct ValueText {
    std::string operator()(engine::Empty) const { return "empty\t"; }
    std::string operator()(double number) const
    {
        std::ostringstream text;
        text << "number\t" << std::setprecision(17) << number;
        return text.str();
    }
    std::string operator()(const std::string& text) const { return "text\t" + withoutControls(text); }
    std::string operator()(bool value) const { return value ? "logical\tTRUE" : "logical\tFALSE"; }
    std::string operator()(engine::ErrorCode error) const { return std::string("error\t") + engine::errorText(error); }
};

/// One line a cell: sheet from 1, address, formula or constant, number format, kind, value, shown text.
void writeCells(const fs::path& workbook, const fs::path& list)
{
    const engine::Book book = engine::xls::readWorkbook(readBytesFromFile(workbook), workbook.string());
    std::ofstream out(list);
    for (std::size_t sheet = 0; sheet < book.sheets.size(); ++sheet)
        for (int row = 0; row < static_cast<int>(book.sheets[sheet]->rows().size()); ++row)
            for (const engine::Cell& cell : book.sheets[sheet]->rows()[static_cast<std::size_t>(row)].cells) {
                if (engine::isEmpty(cell.value) && !cell.formula)
                    continue;
                const auto code = book.styles.numberFormatCode(book.styles.format(cell.format).numberFormat);
                out << sheet + 1 << '\t' << engine::addressText({row, cell.column}) << '\t'
                    << (cell.formula ? "formula" : "constant") << '\t' << withoutControls(std::string(code)) << '\t'
                    << std::visit(ValueText{}, cell.value) << '\t'
                    << withoutControls(engine::showValue(cell.value, code, {}).text) << '\n';
            }
}

} // namespace

int main(int argc, char* argv[])
{
    const QGuiApplication application(argc, argv); // pictures need its fonts
    FailOnMessages messages;
    setMessages(&messages);
    const fs::path folder = argv[1];
    ::setenv("TEMP", folder.c_str(), 1);
    EmbeddedPictureClipboard clipboard;
    BuildServices services;
    services.spreadsheet = {
        [&] { return std::make_unique<EmbeddedApplication>(RegionalFormats{}, clipboard, [] { return 1.0; }); },
        &clipboard};
    const std::vector<std::byte> givenTemplate = argc > 2 ? readBytesFromFile(argv[2]) : std::vector<std::byte>();
    services.templateResource = [&]() -> std::span<const std::byte> {
        return givenTemplate.empty() ? customResource(payrollTemplateResource) : givenTemplate;
    };
    services.randomNumber = [](std::int32_t, std::int32_t) { return 1; };
    for (const test::BuildCase& build : test::buildCases()) {
        NoWindows windows;
        buildPayrollWorkbook(build.data, windows, services);
        const fs::path result = folder / (build.name + ".xls");
        fs::rename(windows.workbook, result);
        writeCells(result, folder / (build.name + ".tsv"));
    }
    return 0;
}
