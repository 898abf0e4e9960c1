// The program's parts as a process of their own, for tests that kill it or run two at once:
//   reliability_driver type SEED         the entry window, typed into without an end
//   reliability_driver build WHO COUNT   so many payroll workbooks of a company and an employee named WHO
//   reliability_driver store WHO COUNT   so many keys "WHO0", "WHO1", ... written to the store
// What happened is written to the standard output, a line each, as soon as it is true.

#include "app/EndingSignals.h"
#include "app/base/ErrorTrap.h"
#include "app/base/Files.h"
#include "app/base/Messages.h"
#include "app/base/RandomNumber.h"
#include "app/base/text/NumberText.h"
#include "entry/Form1.h"
#include "resources/CustomResource.h"
#include "settings/Settings.h"
#include "tests/support/RecordedWindows.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iterator>
#include <random>
#include <thread>
#include <unistd.h>

namespace {

using namespace wagemill;

/// One write, so that a kill leaves no half of a line.
void tell(const std::string& line)
{
    const std::string ended = line + "\n";
    if (::write(STDOUT_FILENO, ended.data(), ended.size()) != static_cast<ssize_t>(ended.size()))
        std::exit(2); // nobody listens any more
}

/// A message box would wait for ever: its text is written instead.
struct WrittenMessages : Messages {
    MessageAnswer show(const Message& message) override
    {
        tell("message " + QString::fromStdString(message.text).simplified().toStdString());
        return message.buttons == MessageButtons::Ok ? MessageAnswer::Ok : MessageAnswer::Yes;
    }
};

BuildServices productionServices()
{
    BuildServices services;
    services.spreadsheet = spreadsheetPlatform(services.formats);
    services.templateResource = [] { return customResource(payrollTemplateResource); };
    services.randomNumber = randomWholeNumber;
    return services;
}

/// A text field of the first employee, and its key in the store.
struct TypedField {
    QLineEdit* edit;
    std::string key;

    std::string text() const { return edit->text().toStdString(); }
};

/// Says before every key what is about to be stored, and after it what is stored.
void typeForEver(const std::vector<TypedField>& fields, unsigned seed)
{
    constexpr std::string_view letters = "abcdefgh XYZ0123456789'\",;";
    constexpr std::size_t maxLetters = 30;
    std::mt19937 random(seed);
    for (const TypedField* field = &fields.front();;) {
        if (random() % 12 == 0) {
            field = &fields[random() % fields.size()];
            field->edit->setFocus();
        }
        std::string text = field->text();
        char key = letters[random() % letters.size()];
        if (text.size() >= maxLetters || (random() % 6 == 0 && !text.empty())) {
            text.pop_back();
            key = '\b';
        } else {
            text += key;
        }
        tell("> " + field->key + "\t" + text);
        field->edit->end(false);
        QTest::keyClick(field->edit, key);
        tell("= " + field->key + "\t" + field->text());
    }
}

int type(unsigned seed)
{
    Form1 window({productionServices(), [] { return CalendarDate{2026, 4, 10}; }, 1});
    window.show();
    window.activateWindow();
    if (!QTest::qWaitForWindowActive(&window))
        return 1;
    std::vector<TypedField> fields;
    for (const RowField& field : rowFields) {
        if (field.kind != FieldKind::FreeText)
            continue;
        const auto name = QString::fromStdString(std::string(field.name) + "(0)");
        fields.push_back({window.findChild<QLineEdit*>(name), rowFieldKey(field, 0)});
        tell("was " + fields.back().key + "\t" + fields.back().text());
    }
    tell("ready");
    typeForEver(fields, seed);
    return 0;
}

/// What a build shows and saves: the picture's bytes, and the value of every cell.
using Result = std::pair<std::vector<std::byte>, std::vector<engine::CellValue>>;

Result built(const std::string& who, const BuildServices& services)
{
    PayrollData data = {{who + " & Sons", "3/31/2026"}, {EmployeeRow{}}};
    std::ranges::transform(rowFields, data.rows[0].texts.begin(), &RowField::sample);
    data.rows[0].texts[employeeIdField] = who;
    data.rows[0].texts[rowFieldIndex("txtName")] = "Employee " + who;
    test::RecordedWindows windows;
    buildPayrollWorkbook(data, windows, services);
    Result result = {windows.picture, {}};
    const engine::Book book = engine::xls::readWorkbook(readOwnFile(windows.workbook), windows.workbook.string());
    for (const auto& sheet : book.sheets)
        for (const engine::Row& row : sheet->rows())
            std::ranges::transform(row.cells, std::back_inserter(result.second), &engine::Cell::value);
    deleteFileQuietly(windows.workbook); // as leaving the preview does
    return result;
}

int build(const std::string& who, int count)
{
    const BuildServices services = productionServices();
    const Result first = built(who, services);
    for (const std::string& text : {who, who + " & Sons", "Employee " + who})
        if (first.first.empty() || std::ranges::count(first.second, engine::CellValue(text)) == 0)
            tell("wrong first");
    std::mt19937 chance(static_cast<unsigned>(count));
    for (int number = 1; number < count; ++number) {
        if (built(who, services) != first)
            tell("wrong " + std::to_string(number));
        tell("built " + std::to_string(number));
        std::this_thread::sleep_for(std::chrono::milliseconds(chance() % 10));
        QCoreApplication::processEvents();
    }
    return 0;
}

int fillStore(const std::string& who, int count)
{
    for (int number = 0; number < count; ++number)
        handleEvent([&] {
            SaveSetting(settingsApplication, settingsSection, who + std::to_string(number), std::to_string(number));
        });
    while (!retrySettings().empty()) // as the entry window does
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return 0;
}

} // namespace

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    WrittenMessages messages;
    setMessages(&messages);
    endProgramOnSignals();
    ensureTemporaryFolder();
    const std::string what = argc > 2 ? argv[1] : "";
    int outcome = 2;
    if (what == "type" && argc == 3)
        outcome = type(static_cast<unsigned>(std::stoul(argv[2])));
    if (what == "build" && argc == 4)
        outcome = build(argv[2], std::stoi(argv[3]));
    if (what == "store" && argc == 4)
        outcome = fillStore(argv[2], std::stoi(argv[3]));
    tell(outcome == 0 ? "done" : "failed");
    return outcome;
}
