#pragma once

#include "workbook/spreadsheet/Spreadsheet.h"

#include <cstdint>
#include <memory>

namespace wagemill {

/// Whether programs of this system can drive an Excel at all. Where they can, it is the usual application.
bool isExcelSystem();

/// A new, invisible Excel in a process of its own; it ends at Quit, or when the application object here is released.
/// Throws SpreadsheetError when there is none, always so on a system that has no automation.
/// typingLocale  the regional format in which Excel reads what is typed into a cell; 0: the user's
std::unique_ptr<Application> createExcelSession(std::uint32_t typingLocale = 0);

/// The clipboard of the system, to which Excel copies its pictures. Lives as long as the program.
PictureClipboard& systemPictureClipboard();

} // namespace wagemill
