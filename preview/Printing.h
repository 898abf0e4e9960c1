#pragma once

#include "drawing/Pages.h"

#include <filesystem>
#include <functional>

class QPrinter;
class QWidget;

namespace wagemill {

/// Asks the user for printer, paper, pages and copies: writes the choice into the printer, or is false when the user
/// cancelled.
using PrintDialog = std::function<bool(QPrinter& printer, QWidget& owner)>;

/// The platform's own dialog; "Print to File (PDF)" is among its printers where the platform has no such printer.
bool showPrintDialog(QPrinter& printer, QWidget& owner);

/// The sheet of a saved workbook that is printed. Throws with file and reason.
using SheetOf = std::function<drawing::PrintableSheet(const std::filesystem::path& workbook)>;

/// Asks with the sheet's own paper, orientation and copies chosen already, then prints as the user chose. Throws when
/// it cannot be printed: printer or file, and why.
void printSheet(const drawing::PrintableSheet& sheet, const PrintDialog& dialog, QWidget& owner);

} // namespace wagemill
