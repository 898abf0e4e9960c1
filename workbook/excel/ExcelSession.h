#pragma once

#include "workbook/spreadsheet/Spreadsheet.h"

#include <memory>

namespace wagemill {

/// Whether programs of this system can drive an Excel at all. Where they can, it is the usual application.
bool isExcelSystem();

/// A new, invisible Excel in a process of its own; it ends at Quit, or when the application object here is released.
/// Throws SpreadsheetError when there is none, always so on a system that has no automation.
std::unique_ptr<Application> createExcelSession();

/// The clipboard of the system, to which Excel copies its pictures. Lives as long as the program.
PictureClipboard& systemPictureClipboard();

} // namespace wagemill
