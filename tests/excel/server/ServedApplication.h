#pragma once

#include "tests/excel/server/AutomationObject.h"
#include "workbook/spreadsheet/Spreadsheet.h"

#include <functional>
#include <memory>

namespace wagemill::test {

/// The object model of a spreadsheet application with the members that we may ask for, and no others.
/// copyPicture  puts a picture of the range on the system's clipboard
AutomationObject* serveApplication(Server& server, std::shared_ptr<Application> application,
                                   std::function<void(CellRange&)> copyPicture);

} // namespace wagemill::test
