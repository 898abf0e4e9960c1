// make_results FOLDER [TEMPLATE | --odd-ids | --print]: builds the workbook of every build case, of every odd ID, or of
// stubs that alone are to be printed, through the embedded engine and leaves it in the folder as NAME.xls, beside it
// NAME.tsv with what each of its cells holds and shows by our own reading, or NAME.pdf.

#include "app/base/Files.h"
#include "app/base/text/DateText.h"
#include "preview/Printing.h"
#include "tests/support/EmbeddedBuilds.h"
#include "tests/support/RecordedMessages.h"
#include "tests/workbook/BuildCases.h"
#include "workbook/engine/formula/Coercion.h"
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
#include <iostream>
#include <random>
#include <sstream>

namespace {

using namespace wagemill;
namespace fs = std::filesystem;

std::string withoutControls(std::string text)
{
    std::ranges::replace(text, '\n', ' ');
    std::ranges::replace(text, '\t', ' ');
    return text;
}

std::string valueText(const engine::CellValue& value)
{
    const RegionalFormats formats;
    const auto text = engine::toText(value, {formats});
    return text.index() == 0 ? std::get<0>(text) : engine::errorText(std::get<1>(text));
}

/// One line a cell: sheet, row and column from 1, formula or constant, number format, kind, value, shown text.
void writeCells(const fs::path& workbook, const fs::path& list)
{
    constexpr const char* kinds[] = {"empty", "number", "text", "logical", "error"};
    const engine::Book book = engine::xls::readWorkbook(readBytesFromFile(workbook), workbook.string());
    std::ofstream out(list);
    for (std::size_t sheet = 0; sheet < book.sheets.size(); ++sheet)
        for (std::size_t row = 0; row < book.sheets[sheet]->rows().size(); ++row)
            for (const engine::Cell& cell : book.sheets[sheet]->rows()[row].cells) {
                if (engine::isEmpty(cell.value) && !cell.formula)
                    continue;
                const std::string code(book.styles.numberFormatCode(book.styles.format(cell.format).numberFormat));
                out << sheet + 1 << '\t' << row + 1 << '\t' << cell.column + 1;
                for (const std::string& text :
                     {std::string(cell.formula ? "formula" : "constant"), code, std::string(kinds[cell.value.index()]),
                      valueText(cell.value), engine::showValue(cell.value, code, {}).text})
                    out << '\t' << withoutControls(text);
                out << '\n';
            }
}

/// 500 IDs that a spreadsheet may take for something else (blank, wildcards, numbers, dates, logicals, formulas, 255
/// letters), 25 to a workbook, each near what it may be mistaken for.
std::vector<test::BuildCase> oddIdCases()
{
    std::istringstream list("|*|~|~*|~?|~~|**|?*|E*|*1|E?|E1|e1|TRUE|true|FALSE|007|07|7|7.0|1e5|100000|1E5|1-2|1/2|"
                            "3/4/2026|12:30|12.5%|0.125|$5|5|(5)|-5|'5|'008|'E1|'|''|#N/A|#REF!|=1+1|=2|=\"E1\"|=NA()|"
                            "-Bob|+Ann|@home| 7|7 |a b|x&y|<5|>0|<>|1,234|1234|1,23|Net Pay|Employee ID|M\u00FCller|"
                            "M\u00DCLLER|\u674E|\U0001F642|\u00DF|ss|0|-0|1e400|1e-400|0x10|NaN");
    std::vector<std::string> texts;
    for (std::string text; std::getline(list, text, '|');)
        texts.push_back(text);
    std::mt19937 random(20261121); // the same IDs in every run
    const std::vector<test::BuildCase> given = test::buildCases();
    std::vector<test::BuildCase> cases(20, *std::ranges::find(given, "typed-0", &test::BuildCase::name));
    std::size_t number = 0;
    for (test::BuildCase& each : cases) {
        each.name = "ids-" + std::to_string(number);
        for (EmployeeRow& row : each.data.rows) {
            const std::string& text = texts[(number++ + random() % 12) % texts.size()];
            const std::string& other = texts[random() % texts.size()];
            // Now and then an unused slot's number, 255 letters, or two texts in one.
            const std::string further[] = {std::to_string(1 + random() % 27),
                                           std::string(254, 'W') + static_cast<char>('A' + random() % 3),
                                           text.starts_with('=') ? text : text + other};
            const std::size_t kind = random() % 8;
            row.texts[employeeIdField] = kind < std::size(further) ? further[kind] : text;
        }
    }
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
            const bool isLong = name == std::string("long-names");
            while (isLong && data.header.companyName.size() < 200)
                data.header.companyName += " Shipwrights, Sailmakers & Chandlers of the Northern Harbours";
            for (EmployeeRow& row : data.rows) {
                // an empty answer of a lookup is shown as 0 or not at all
                row.texts[rowFieldIndex("txtTaxStatus")] = row.texts[rowFieldIndex("txtFedAllowance")] = "3";
                if (isLong) // four lines
                    row.texts[rowFieldIndex("txtName")] =
                        "Maximiliana Bartholomea Featherstonehaugh-Cholmondeley van den Oudenhoven Junior";
            }
            const fs::path workbook = folder / (std::string(name) + "-" + paperName + ".xls");
            fs::rename(builds.build(data).workbook, workbook);
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
    test::RecordedMessages messages;
    const fs::path folder = argv[1];
    ::setenv("TEMP", folder.c_str(), 1);
    const std::string_view option = argc > 2 ? argv[2] : "";
    if (option == "--print") {
        const QApplication application(argc, argv);
        printStubs(folder);
    } else {
        const bool areIds = option == "--odd-ids";
        const bool hasTemplate = !areIds && !option.empty();
        const std::vector<std::byte> given = hasTemplate ? readBytesFromFile(option) : std::vector<std::byte>();
        test::EmbeddedBuilds builds(given);
        for (const test::BuildCase& build : areIds ? oddIdCases() : test::buildCases()) {
            const fs::path result = folder / (build.name + ".xls");
            fs::rename(builds.build(build.data).workbook, result);
            writeCells(result, folder / (build.name + ".tsv"));
        }
    }
    for (const std::string& text : messages.texts())
        std::cerr << text << '\n';
    return messages.shown.empty() ? 0 : 1;
}
