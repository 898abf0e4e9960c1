#include "preview/Printing.h"

#include <QFileDialog>
#include <QPrintDialog>
#include <QPrinter>
#include <QStandardPaths>

namespace wagemill {

/// Where no printer is installed the system has no dialog; a PDF file can still be written.
bool showPrintDialog(QPrinter& printer, QWidget& owner)
{
    if (printer.outputFormat() == QPrinter::NativeFormat)
        return QPrintDialog(&printer, &owner).exec() == QDialog::Accepted;
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const QString file = QFileDialog::getSaveFileName(&owner, QStringLiteral("Print to PDF File"),
                                                      documents + QLatin1Char('/') + printer.docName() + ".pdf",
                                                      QStringLiteral("PDF Files (*.pdf)"));
    printer.setOutputFileName(file);
    return !file.isEmpty();
}

} // namespace wagemill
