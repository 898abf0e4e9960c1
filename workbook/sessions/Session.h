#pragma once

#include "app/base/text/RegionalFormats.h"
#include "workbook/spreadsheet/Spreadsheet.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace wagemill {

/// Makes a new, invisible session with the spreadsheet application. Throws SpreadsheetError when there is none.
using SessionFactory = std::function<std::unique_ptr<Application>()>;

/// The spreadsheet application that serves this run, and the clipboard to which it copies pictures.
struct SpreadsheetPlatform {
    SessionFactory createSession;
    PictureClipboard* clipboard = nullptr; ///< lives as long as the program
    /// Answers, once, what the application has to say about the workbooks that it computed; "" is nothing.
    std::function<std::string()> takeNotice = [] { return std::string(); };
};

/// The application chosen for this machine, or by the environment variable WAGEMILL_SPREADSHEET ("excel", "embedded").
SpreadsheetPlatform spreadsheetPlatform(const RegionalFormats& formats);

/// Ends the program with a message when no session can be created.
void checkExcelPresence(const SessionFactory& createSession);

/// A new session in which the file is open, as its last workbook. Throws SpreadsheetError.
std::unique_ptr<Application> openWorkbookInExcel(const SessionFactory& createSession, std::string_view path);

/// Excel8 from version 12 on, WorkbookNormal below.
/// session  null: a session is created to ask, and quit again
/// Throws std::invalid_argument when the version is not a number.
FileFormat getSaveFileFormat(const SessionFactory& createSession, Application* session);

} // namespace wagemill
