#include "preview/Printing.h"

#include "tests/support/FailureOf.h"
#include "tests/support/TemporaryFolder.h"

#include <QFile>
#include <QPrinter>
#include <QWidget>

#include <gtest/gtest.h>

#include <functional>
#include <string>

using namespace wagemill;
using namespace wagemill::test;

namespace {

class PrintingTest : public testing::Test {
protected:
    /// A sheet of three pages that keeps the size of the paper that it was asked for.
    drawing::PrintableSheet sheet(int paper = 1, bool landscape = false)
    {
        return {.title = "Stubs",
                .paper = paper,
                .landscape = landscape,
                .pagesOn = [this](const drawing::PaperSize& size) {
                    printed = size;
                    return std::vector<drawing::Page>(3, drawing::Page{std::vector<drawing::PlacedDrawing>(1)});
                }};
    }
    void print(const drawing::PrintableSheet& toPrint)
    {
        QWidget owner;
        const auto choose = [this](QPrinter& printer, QWidget&) {
            printer.setOutputFileName(QString::fromStdString(file));
            change(printer);
            return !isCancelled;
        };
        printSheet(toPrint, choose, owner);
    }
    int pagesOfFile() const
    {
        QFile printout(QString::fromStdString(file));
        return printout.open(QIODevice::ReadOnly) ? static_cast<int>(printout.readAll().count("/Type /Page\n")) : -1;
    }

    const TemporaryFolder folder;
    std::string file = folder / "stubs.pdf";
    std::function<void(QPrinter&)> change = [](QPrinter&) {}; ///< what else the user chooses
    bool isCancelled = false;
    drawing::PaperSize printed;
};

TEST_F(PrintingTest, PrintsThePagesAndCopiesThatTheUserChose)
{
    const std::pair<std::function<void(QPrinter&)>, int> cases[] = {
        {[](QPrinter&) {}, 3},
        {[](QPrinter& printer) { printer.setCopyCount(2); }, 6},
        {[](QPrinter& printer) { printer.setCollateCopies(false), printer.setCopyCount(3); }, 9},
        {[](QPrinter& printer) { printer.setPrintRange(QPrinter::PageRange), printer.setFromTo(2, 3); }, 2},
        {[](QPrinter& printer) { printer.setPrintRange(QPrinter::PageRange), printer.setFromTo(3, 9); }, 1},
    };
    for (const auto& [chosen, pages] : cases) {
        change = chosen;
        print(sheet());
        EXPECT_EQ(pagesOfFile(), pages);
    }
}

TEST_F(PrintingTest, PaperIsTheSheetsUnlessTheUserChoosesAnotherOrCancels)
{
    constexpr double a4Width = 793.7;
    print(sheet(1, false));
    EXPECT_NEAR(printed.width, 816, 1) << "Letter";
    print(sheet(9, true));
    EXPECT_NEAR(printed.height, a4Width, 1) << "A4, landscape";
    change = [](QPrinter& printer) { printer.setPageSize(QPageSize(QPageSize::A4)); };
    print(sheet(1, false));
    EXPECT_NEAR(printed.width, a4Width, 1);
    std::filesystem::remove(file);
    isCancelled = true;
    print(sheet());
    EXPECT_EQ(pagesOfFile(), -1);
}

TEST_F(PrintingTest, SaysWhatCouldNotBePrintedAndWhy)
{
    const auto failure = [this] { return failureOf([this] { print(sheet()); }); };
    file = folder / "no such folder/stubs.pdf";
    EXPECT_EQ(failure(), "The file \"" + file + "\" could not be written: No such file or directory.");
    file = "/dev/full";
    EXPECT_EQ(failure(), "The file \"/dev/full\" could not be written: its end is missing. Is there room on the disk?");
    file = folder / "none.pdf";
    change = [](QPrinter& printer) { printer.setPrintRange(QPrinter::PageRange), printer.setFromTo(7, 7); };
    EXPECT_EQ(failure(), "There is nothing to print: the pages are 1 to 3.");
}

} // namespace
