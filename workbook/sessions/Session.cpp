#include "workbook/sessions/Session.h"

#include "app/base/ErrorTrap.h"
#include "app/base/Files.h"
#include "app/base/Messages.h"
#include "app/base/text/NumberText.h"

#include <cstdlib>
#include <stdexcept>

namespace wagemill {

namespace {

/// The first version that knows the newer code for the same workbook format.
constexpr std::int16_t firstVersionWithExcel8 = 12;

constexpr const char* missingApplicationText =
    "Error 842001. A normal instance of Excel could not be created."
    "\r\n\r\n"
    "1. Please make sure Excel is installed on this computer."
    "\r\n\r\n"
    "2. Please open Excel normally and make sure a blank spreadsheet opens immediately without any interrupting window "
    "(such as an Excel file recovery window)."
    "\r\n\r\n"
    "3. Please make sure that when you double-click on a XLS or XLSX file that Excel opens normally without any "
    "interrupting messages."
    "\r\n\r\n"
    "4. All versions of Excel are supported by this software except for the rare Excel Starter and Student editions.";

/// A version is written with a full stop or a comma, whatever the user's regional format.
std::int16_t majorVersion(std::string_view version)
{
    const RegionalFormats formats;
    const auto reading = readNumber(toLocalNumberText(version, formats), formats);
    const auto number = reading ? toDouble(reading->number) : std::nullopt;
    if (!number)
        throw std::invalid_argument("The spreadsheet application gives \"" + std::string(version) +
                                    "\" as its version, which is not a number.");
    return toInt16(*number);
}

/// No caller ever sees a session that fails here, so nobody else could end it.
template <typename Work>
void quitOnFailure(Application& session, Work&& work)
{
    try {
        work();
    } catch (...) {
        quietly([&] { session.Quit(); }); // the first failure is the one to report
        throw;
    }
}

} // namespace

void checkExcelPresence(const SessionFactory& createSession)
{
    try {
        createSession();
        return;
    } catch (const std::exception&) {
        showMessage({missingApplicationText, "", MessageIcon::None, MessageButtons::Ok});
    }
    endProgram();
}

std::unique_ptr<Application> openWorkbookInExcel(const SessionFactory& createSession, std::string_view path)
{
    auto session = createSession();
    quitOnFailure(*session, [&] { session->Workbooks()->Open(path); });
    return session;
}

FileFormat getSaveFileFormat(const SessionFactory& createSession, Application* session)
{
    std::string version;
    if (session != nullptr) {
        version = session->Version();
    } else {
        const auto asked = createSession();
        quitOnFailure(*asked, [&] { version = asked->Version(); });
        asked->Quit();
    }
    return majorVersion(version) < firstVersionWithExcel8 ? FileFormat::WorkbookNormal : FileFormat::Excel8;
}

} // namespace wagemill
