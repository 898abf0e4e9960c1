// The program's parts as a process of their own, for tests that kill it or run two at once:
//   reliability_driver type SEED         the entry window, typed into without an end
//   reliability_driver build WHO COUNT   so many payroll workbooks of a company and an employee named WHO
//   reliability_driver store WHO COUNT   so many keys "WHO0", "WHO1", ... written to the store
// What happened is written to the standard output, a line each, as soon as it is true.

#include "app/EndingSignals.h"
#include "app/base/ErrorTrap.h"
#include "app/base/Files.h"
#include "app/base/Messages.h"
#include "entry/Form1.h"
#include "settings/Settings.h"
#include "tests/support/EmbeddedBuilds.h"
#include "tests/workbook/BuildCases.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <iterator>
#include <random>
#include <thread>

namespace {

using namespace wagemill;

void tell(const std::string& line)
{
    std::cout << line + "\n" << std::flush; // one write: a kill leaves no half of a line
}

/// A message box would wait for ever: its text is written instead.
struct WrittenMessages : Messages {
    MessageAnswer show(const Message& message) override
    {
        tell("message " + QString::fromStdString(message.text).simplified().toStdString());
        return message.buttons == MessageButtons::Ok ? MessageAnswer::Ok : MessageAnswer::Yes;
    }
};

/// A text field of the first employee, and its key in the store.
struct TypedField {
    QLineEdit* edit;
    std::string key;

    std::string text() const { return edit->text().toStdString(); }
};

/// Says before every key what is about to be stored, and after it what is stored.
void typeForEver(const std::vector<TypedField>& fields, int seed)
{
    constexpr std::string_view letters = "abcdefgh XYZ0123456789'\",;";
    constexpr std::size_t maxLetters = 30;
    std::mt19937 random(static_cast<unsigned>(seed));
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

void type(int seed)
{
    const test::EmbeddedBuilds builds;
    Form1 window({builds.services, [] { return CalendarDate{2026, 4, 10}; }, 1});
    window.show();
    window.activateWindow();
    if (!QTest::qWaitForWindowActive(&window))
        return tell("the window is not active");
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
}

/// What a build shows and saves: the picture's bytes, and the value of every cell.
using Result = std::pair<std::vector<std::byte>, std::vector<engine::CellValue>>;

Result built(const std::string& who, const test::EmbeddedBuilds& builds)
{
    PayrollData data = test::buildCases().front().data;
    data.header.companyName = who + " & Sons";
    data.rows[0].texts[employeeIdField] = who;
    data.rows[0].texts[rowFieldIndex("txtName")] = "Employee " + who;
    const auto [workbook, picture] = builds.build(data);
    Result result = {picture, {}};
    const engine::Book book = engine::xls::readWorkbook(readOwnFile(workbook), workbook.string());
    for (const auto& sheet : book.sheets)
        for (const engine::Row& row : sheet->rows())
            std::ranges::transform(row.cells, std::back_inserter(result.second), &engine::Cell::value);
    deleteFileQuietly(workbook); // as leaving the preview does
    return result;
}

void build(const std::string& who, int count)
{
    const test::EmbeddedBuilds builds;
    const Result first = built(who, builds);
    for (const std::string& text : {who, who + " & Sons", "Employee " + who})
        if (first.first.empty() || std::ranges::count(first.second, engine::CellValue(text)) == 0)
            tell("wrong first");
    std::mt19937 random(static_cast<unsigned>(count));
    for (int number = 1; number < count; ++number) {
        if (built(who, builds) != first)
            tell("wrong " + std::to_string(number));
        tell("built " + std::to_string(number));
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 10));
        QCoreApplication::processEvents();
    }
}

void fillStore(const std::string& who, int count)
{
    for (int number = 0; number < count; ++number)
        handleEvent([&] {
            SaveSetting(settingsApplication, settingsSection, who + std::to_string(number), std::to_string(number));
        });
    while (!retrySettings().empty()) // as the entry window does
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

} // namespace

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    WrittenMessages messages;
    setMessages(&messages);
    endProgramOnSignals();
    ensureTemporaryFolder();
    const std::string what = argv[1];
    const int number = std::stoi(argv[argc - 1]);
    if (what == "type")
        type(number);
    else if (what == "build")
        build(argv[2], number);
    else
        fillStore(argv[2], number);
    tell("done");
    return 0;
}
