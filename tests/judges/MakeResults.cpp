// make_results FOLDER [TEMPLATE | --odd-ids]: builds the workbook of every build case, or of every odd ID, through the
// embedded engine and leaves it in the folder as NAME.xls, beside it NAME.tsv with what each of its cells holds and
// shows by our own reading.

#include "app/base/Files.h"
#include "app/base/Messages.h"
#include "tests/judges/OddIds.h"
#include "tests/support/EmbeddedBuilds.h"
#include "workbook/engine/text/NumberFormat.h"
#include "workbook/engine/xls/BiffReader.h"

#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace {

using namespace wagemill;
namespace fs = std::filesystem;

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
    FailOnMessages messages;
    setMessages(&messages);
    const fs::path folder = argv[1];
    ::setenv("TEMP", folder.c_str(), 1);
    const std::string_view option = argc > 2 ? argv[2] : "";
    const bool areIds = option == "--odd-ids";
    const std::vector<std::byte> givenTemplate =
        option.empty() || areIds ? std::vector<std::byte>() : readBytesFromFile(fs::path(option));
    test::EmbeddedBuilds builds(givenTemplate);
    for (const test::BuildCase& build : areIds ? test::OddIds().cases() : test::buildCases()) {
        const fs::path result = folder / (build.name + ".xls");
        fs::rename(builds.build(build.data), result);
        writeCells(result, folder / (build.name + ".tsv"));
    }
    return 0;
}
