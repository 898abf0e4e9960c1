#include "preview/Printing.h"

#include "app/base/Messages.h"
#include "drawing/DrawingPainter.h"

#include <QFile>
#include <QLocale>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPrinter>

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace wagemill {

namespace {

using drawing::Page;
using drawing::PaperSize;

constexpr double pixelsPerInch = 96;
constexpr double pointsPerInch = 72;

/// The paper of the user's country.
QPageSize usualPaper()
{
    constexpr QLocale::Territory usesLetter[] = {QLocale::UnitedStates, QLocale::Canada, QLocale::Mexico,
                                                 QLocale::PuertoRico, QLocale::Philippines};
    const bool isLetter = std::ranges::find(usesLetter, QLocale().territory()) != std::end(usesLetter);
    return {isLetter ? QPageSize::Letter : QPageSize::A4};
}

void askForWishes(QPrinter& printer, const drawing::PrintableSheet& sheet)
{
    const QPageSize::PageSizeId paper = QPageSize::id(sheet.paper);
    if (sheet.paper != 0 && paper != QPageSize::Custom)
        printer.setPageSize(QPageSize(paper));
    else if (printer.outputFormat() == QPrinter::PdfFormat) // there is no printer that would know its own
        printer.setPageSize(usualPaper());
    printer.setPageOrientation(sheet.landscape ? QPageLayout::Landscape : QPageLayout::Portrait);
    printer.setCopyCount(std::clamp(sheet.copies, 1, 999));
    printer.setDocName(QString::fromStdString(sheet.title));
}

PaperSize paperOf(const QPrinter& printer)
{
    const QSizeF points = printer.pageLayout().fullRect(QPageLayout::Point).size();
    return {points.width() * pixelsPerInch / pointsPerInch, points.height() * pixelsPerInch / pointsPerInch};
}

/// The pages that the user wants, in the order of printing.
std::vector<const Page*> chosenPages(const QPrinter& printer, const std::vector<Page>& pages)
{
    std::vector<const Page*> chosen;
    const bool isRange = printer.printRange() == QPrinter::PageRange && !printer.pageRanges().isEmpty();
    for (std::size_t index = 0; index < pages.size(); ++index)
        if (!isRange || printer.pageRanges().contains(static_cast<int>(index) + 1))
            chosen.push_back(&pages[index]);
    if (printer.pageOrder() == QPrinter::LastPageFirst)
        std::ranges::reverse(chosen);
    if (printer.supportsMultipleCopies())
        return chosen;                                                    // it makes the copies
    const auto inTurn = printer.collateCopies() ? std::ssize(chosen) : 1; // pages
    std::vector<const Page*> copies;
    for (auto first = chosen.begin(); first != chosen.end(); first += inTurn)
        for (int copy = 0; copy < printer.copyCount(); ++copy)
            copies.insert(copies.end(), first, first + inTurn);
    return copies;
}

void paintPage(QPainter& painter, const Page& page, double dotsPerPixel)
{
    for (const drawing::PlacedDrawing& part : page.parts) {
        const QRectF area(0, 0, part.drawing.width, part.drawing.height);
        painter.save();
        painter.scale(dotsPerPixel, dotsPerPixel);
        painter.translate(part.left, part.top);
        painter.scale(part.scale, part.scale);
        painter.setClipRect(area);
        DrawingPainter(part.drawing).paint(painter, area);
        painter.restore();
    }
}

[[noreturn]] void throwFailure(const QPrinter& printer, const std::string& reason)
{
    const bool isFile = !printer.outputFileName().isEmpty();
    throw std::runtime_error((isFile ? "The file \"" + printer.outputFileName() + "\" could not be written: "
                                     : "\"" + printer.printerName() + "\" did not print: ")
                                 .toStdString() +
                             reason);
}

std::string reasonNotToBegin(const QPrinter& printer)
{
    QFile file(printer.outputFileName());
    if (file.fileName().isEmpty() || file.open(QIODevice::Append))
        return "it is not ready.";
    return withoutFullStop(file.errorString().toStdString()) + ".";
}

/// A file on a full disk is cut off without a word from the printer.
void requireWholeFile(const QPrinter& printer)
{
    constexpr qint64 endMark = 16;
    QFile file(printer.outputFileName());
    if (!file.open(QIODevice::ReadOnly))
        throwFailure(printer, withoutFullStop(file.errorString().toStdString()) + ".");
    file.seek(std::max<qint64>(0, file.size() - endMark));
    if (!file.read(endMark).contains("%%EOF"))
        throwFailure(printer, "its end is missing. Is there room on the disk?");
}

void printPages(QPrinter& printer, const std::vector<Page>& pages)
{
    const std::vector<const Page*> chosen = chosenPages(printer, pages);
    if (chosen.empty())
        throw std::runtime_error(
            "There is nothing to print: " +
            (pages.empty() ? "the sheet is empty." : "the pages are 1 to " + std::to_string(pages.size()) + "."));
    QPainter painter;
    if (!painter.begin(&printer))
        throwFailure(printer, reasonNotToBegin(printer));
    for (std::size_t index = 0; index < chosen.size(); ++index) {
        if (index > 0 && !printer.newPage())
            throwFailure(printer, "it stopped after page " + std::to_string(index) + ".");
        paintPage(painter, *chosen[index], printer.resolution() / pixelsPerInch);
    }
    if (!painter.end() || printer.printerState() == QPrinter::Error)
        throwFailure(printer, "it stopped before the end.");
    if (printer.outputFormat() == QPrinter::PdfFormat && !printer.outputFileName().isEmpty())
        requireWholeFile(printer);
}

} // namespace

void printSheet(const drawing::PrintableSheet& sheet, const PrintDialog& dialog, QWidget& owner)
{
    QPrinter printer(QPrinter::HighResolution);
    askForWishes(printer, sheet);
    if (!dialog(printer, owner))
        return;
    printer.setFullPage(true); // margins are the sheet's own
    printPages(printer, sheet.pagesOn(paperOf(printer)));
}

} // namespace wagemill
