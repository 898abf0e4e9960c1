#pragma once

#include "app/base/Interface.h"
#include "drawing/Pages.h"

#include <filesystem>
#include <functional>

class QPrinter;
class QWidget;

namespace wagemill {

/// Asks the user for printer, paper, pages and copies.
class PrintDialog : public Interface {
public:
    /// Writes the user's choice into the printer; false when the user cancelled.
    virtual bool choose(QPrinter& printer, QWidget& owner) = 0;
};

/// The platform's own dialog; "Print to File (PDF)" is among its printers where the platform has no such printer.
class PlatformPrintDialog : public PrintDialog {
public:
    bool choose(QPrinter& printer, QWidget& owner) override;
};

/// The sheet of a saved workbook that is printed. Throws with file and reason.
using SheetOf = std::function<drawing::PrintableSheet(const std::filesystem::path& workbook)>;

/// Asks with the sheet's own paper, orientation and copies chosen already, then prints as the user chose. Throws when
/// it cannot be printed: printer or file, and why.
void printSheet(const drawing::PrintableSheet& sheet, PrintDialog& dialog, QWidget& owner);

} // namespace wagemill
