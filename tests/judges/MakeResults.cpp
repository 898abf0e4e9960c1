// make_results FOLDER [TEMPLATE | --odd-ids | --print]: builds the workbook of every build case, of every odd ID, or of
// stubs that alone are to be printed, through the embedded engine and leaves it in the folder as NAME.xls, beside it
// NAME.tsv with what each of its cells holds and shows by our own reading, or NAME.pdf.

#include "app/base/Files.h"
#include "app/base/Messages.h"
#include "app/base/text/DateText.h"
#include "preview/Printing.h"
#include "tests/support/EmbeddedBuilds.h"
#include "tests/workbook/BuildCases.h"
#include "workbook/engine/text/NumberFormat.h"
#include "workbook/engine/xls/WorkbookFile.h"
#include "workbook/printing/SavedSheet.h"

#include <QApplication>
#include <QDate>
#include <QPrinter>
#include <QWidget>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <random>
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
    std::ranges::replace(text, '\n', ' ');
    std::ranges::replace(text, '\t', ' ');
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

/// 500 IDs that a spreadsheet may take for something else (blank, wildcards, numbers, dates, logicals, formulas, 255
/// letters), 25 to a workbook, each beside what it may be mistaken for.
std::vector<test::BuildCase> oddIdCases()
{
    std::istringstream list("|*|?|~|~*|~?|~~|**|?*|E*|*1|E?|E1|e1|TRUE|true|FALSE|007|07|7|7.0|1e5|100000|1E5|1-2|1/2|"
                            "3/4/2026|12:30|12.5%|0.125|$5|5|(5)|-5|'5|'008|'E1|'|''|#N/A|#REF!|=1+1|=2|=\"E1\"|=NA()|"
                            "-Bob|+Ann|@home| 7|7 |a b|x&y|<5|>0|<>|1,234|1234|1,23|Net Pay|Employee ID|M\u00FCller|"
                            "M\u00DCLLER|\u674E|\U0001F642|\u00DF|ss|0|-0|1e400|1e-400|0x10|NaN");
    std::vector<std::string> ids;
    for (std::string text; std::getline(list, text, '|');)
        ids.push_back(text);
    // And an unused slot's number, 255 letters, one of the texts again, or two in one: the same in every run.
    std::mt19937 random(20261121);
    for (const std::size_t texts = ids.size(); ids.size() < 500;) {
        const std::string& text = ids[random() % texts];
        const std::string further[] = {std::to_string(1 + random() % 27),
                                       std::string(254, 'W') + static_cast<char>('A' + random() % 3),
                                       text.starts_with('=') ? text : text + ids[random() % texts]};
        const std::size_t kind = random() % 8;
        ids.push_back(kind < std::size(further) ? further[kind] : text);
    }
    std::vector<test::BuildCase> cases;
    for (std::size_t number = 0; number < ids.size(); ++number) {
        if (number % 25 == 0)
            cases.push_back({"ids-" + std::to_string(number), {{"ACME Inc", "3/31/2026"}, {}}});
        EmployeeRow row;
        for (std::size_t field = 0; field < rowFields.size(); ++field)
            row.texts[field] = rowFields[field].kind == FieldKind::FreeText ? "" : std::to_string(number + 1);
        row.texts[employeeIdField] = ids[number];
        row.texts[rowFieldIndex("txtName")] = "Name " + std::to_string(number);
        cases.back().data.rows.push_back(row);
    }
    for (test::BuildCase& each : cases)
        std::ranges::shuffle(each.data.rows, random);
    return cases;
}

/// The other sheets hidden, which no program prints.
void keepStubsOnPaper(const fs::path& workbook, std::uint16_t paper)
{
    engine::Book book = engine::xls::readWorkbook(readBytesFromFile(workbook), workbook.string());
    for (std::size_t sheet = 0; sheet < book.sheets.size(); ++sheet) {
        book.sheets[sheet]->hidden = sheet != book.activeSheet;
        book.sheets[sheet]->print.paper = paper;
    }
    fs::remove(workbook);
    writeBytesToFile(engine::xls::writeWorkbook(book, engine::xls::FileKind::Workbook), workbook);
}

/// A company name of 255 letters, and names that take four lines.
void lengthenNames(PayrollData& data)
{
    constexpr std::size_t longest = 255;
    while (data.header.companyName.size() < longest)
        data.header.companyName += " Shipwrights, Sailmakers & Chandlers of the Northern Harbours";
    data.header.companyName.resize(longest);
    for (EmployeeRow& row : data.rows)
        row.texts[rowFieldIndex("txtName")] =
            "Maximiliana Bartholomea Featherstonehaugh-Cholmondeley van den Oudenhoven Junior";
}

/// The stubs of some numbers of employees on two papers, and beside each workbook NAME.pdf, as the preview's print
/// button makes it.
void printStubs(const fs::path& folder)
{
    const QDate day = QDate::currentDate();
    const std::string today = shortDateText({day.year(), day.month(), day.day()}, {});
    const std::vector<test::BuildCase> cases = test::buildCases();
    test::EmbeddedBuilds builds;
    QWidget owner;
    for (const auto& [paper, paperName] : {std::pair{1, "letter"}, {9, "a4"}})
        for (const auto& [name, employees] :
             {std::pair{"1", 1U}, {"4", 4U}, {"5", 5U}, {"25", 25U}, {"long-names", 25U}}) {
            PayrollData data = std::ranges::find(cases, "employees-25", &test::BuildCase::name)->data;
            data.rows.resize(employees);
            for (EmployeeRow& row : data.rows) // an empty answer of a lookup is shown as 0 or not at all
                row.texts[rowFieldIndex("txtTaxStatus")] = row.texts[rowFieldIndex("txtFedAllowance")] = "3";
            if (name == std::string("long-names"))
                lengthenNames(data);
            const fs::path workbook = folder / (std::string(name) + "-" + paperName + ".xls");
            fs::rename(builds.build(data), workbook);
            keepStubsOnPaper(workbook, static_cast<std::uint16_t>(paper));
            const auto printToFile = [file = fs::path(workbook).replace_extension("pdf")](QPrinter& printer, QWidget&) {
                printer.setOutputFileName(QString::fromStdString(file.string()));
                return true;
            };
            printSheet(savedSheet(workbook, {}, {today, ""}), printToFile, owner);
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
    if (option == "--print") {
        const QApplication application(argc, argv);
        printStubs(folder);
        return 0;
    }
    const bool areIds = option == "--odd-ids";
    const std::vector<std::byte> givenTemplate =
        option.empty() || areIds ? std::vector<std::byte>() : readBytesFromFile(fs::path(option));
    test::EmbeddedBuilds builds(givenTemplate);
    for (const test::BuildCase& build : areIds ? oddIdCases() : test::buildCases()) {
        const fs::path result = folder / (build.name + ".xls");
        fs::rename(builds.build(build.data), result);
        writeCells(result, folder / (build.name + ".tsv"));
    }
    return 0;
}
