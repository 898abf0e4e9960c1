// print_results FOLDER: for some numbers of employees and two papers, the workbook of a build whose stubs alone are to
// be printed, NAME.xls, and beside it NAME.pdf, as the preview's print button makes it.

#include "app/base/Files.h"
#include "app/base/text/DateText.h"
#include "preview/Printing.h"
#include "tests/support/EmbeddedBuilds.h"
#include "tests/workbook/BuildCases.h"
#include "workbook/engine/xls/BiffReader.h"
#include "workbook/engine/xls/BiffWriter.h"
#include "workbook/printing/SavedSheet.h"

#include <QApplication>
#include <QDate>
#include <QPrinter>
#include <QWidget>

#include <algorithm>
#include <cstdlib>

namespace {

using namespace wagemill;
namespace fs = std::filesystem;

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

} // namespace

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    const fs::path folder = argv[1];
    ::setenv("TEMP", folder.c_str(), 1);
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
    return 0;
}
