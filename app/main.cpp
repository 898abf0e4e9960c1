#include "app/EndingSignals.h"
#include "app/base/ErrorTrap.h"
#include "app/base/Files.h"
#include "app/base/RandomNumber.h"
#include "app/look/QtMessages.h"
#include "app/look/ReadablePalette.h"
#include "app/look/UserRegion.h"
#include "entry/Form1.h"
#include "entry/data/EmployeeCount.h"
#include "resources/PayrollTemplate.h"
#include "settings/Settings.h"
#include "workbook/printing/SavedSheet.h"
#include "workbook/sessions/Session.h"
#include "workbook/summary/StubSummary.h"

#include <QApplication>
#include <QDate>
#include <QDir>
#include <QIcon>
#include <QLocale>
#include <QTime>

#include <algorithm>

namespace {

wagemill::CalendarDate today()
{
    const QDate date = QDate::currentDate();
    return {date.year(), date.month(), date.day()};
}

wagemill::Form1Setup productionSetup(std::int16_t employees)
{
    using namespace wagemill;
    BuildServices build;
    build.formats = regionalFormatsOf(userLocale());
    build.spreadsheet = spreadsheetPlatform(build.formats);
    build.templateResource = payrollTemplateFile;
    build.randomNumber = randomWholeNumber;
    const auto describeWorkbook = [formats = build.formats](const std::filesystem::path& workbook) {
        return describeStubs(workbook, formats);
    };
    const auto sheetOf = [formats = build.formats](const std::filesystem::path& workbook) {
        const QString time = userLocale().toString(QTime::currentTime(), QLocale::ShortFormat);
        return savedSheet(workbook, formats, {shortDateText(today(), formats), time.toStdString()});
    };
    return {std::move(build), today, employees, describeWorkbook, sheetOf};
}

void reportEmployeeCount(const std::string& wanted, std::int16_t employees)
{
    using namespace wagemill;
    showMessage({"WAGEMILL_EMPLOYEES is \"" + wanted + "\", but the window can hold 1 to " +
                     std::to_string(maxEmployees) + " employees. It opens with " + std::to_string(employees) + ".",
                 "", MessageIcon::Warning, MessageButtons::Ok});
}

/// What the settings store has refused is tried once more, and again when the user has removed the cause.
void endProgramWithAllStored()
{
    using namespace wagemill;
    setProgramEnd(nullptr); // closing once more ends it at once
    if (const std::string failure = retrySettings(); !failure.empty()) {
        showMessage({failure + " What you typed last is not stored yet. Please remove the cause, then press OK.", "",
                     MessageIcon::Warning, MessageButtons::Ok});
        retrySettings();
    }
    endProgram();
}

QIcon programIcon()
{
    QIcon icon;
    for (const int size : {16, 32, 48, 128})
        icon.addFile(QStringLiteral(":/icon/wagemill-%1.png").arg(size), {size, size});
    return icon;
}

void prepareProgram()
{
    using namespace wagemill;
    static QtMessages messages;
    setMessages(&messages);
    setProgramFolder(QDir(QCoreApplication::applicationDirPath()).filesystemPath().make_preferred());
    setProgramEnd(endProgramWithAllStored);
    setWindowEventPump([] { QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); });
    QLocale::setDefault(userLocale());
    QApplication::setWindowIcon(programIcon());
    QApplication::setPalette(readablePalette(QApplication::palette()));
    QApplication::setQuitOnLastWindowClosed(false); // the windows end the program themselves
}

} // namespace

int main(int argc, char* argv[])
{
    int program = std::min(argc, 1); // the command line is not read, not even for the switches of Qt
    QApplication application(program, argv);
    prepareProgram();
    wagemill::endProgramOnSignals();
    wagemill::handleEvent([] { wagemill::ensureTemporaryFolder(); });
    const std::string wanted = qgetenv("WAGEMILL_EMPLOYEES").toStdString();
    const auto [employees, isAsWanted] = wagemill::employeeCount(wanted);
    wagemill::Form1 entryWindow(productionSetup(employees));
    if (!isAsWanted)
        reportEmployeeCount(wanted, employees);
    entryWindow.show();
    return QApplication::exec();
}
