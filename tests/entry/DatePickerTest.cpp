#include "app/look/UserRegion.h"
#include "tests/entry/EntryWindow.h"
#include "tests/support/TemporaryFolder.h"

#include <QCalendarWidget>
#include <QDate>
#include <QLabel>
#include <QLocale>
#include <QRegularExpression>
#include <QTableView>
#include <QToolButton>
#include <QWheelEvent>

#include <algorithm>
#include <functional>
#include <random>
#include <tuple>
#include <utility>

using namespace wagemill;
using namespace wagemill::test;

namespace {

/// A date field that is typed into. The clock is at 15 March 2026.
class DatePickerTest : public EntryWindow {
protected:
    void openIn(const QString& region)
    {
        formats = regionalFormatsOf(QLocale(region));
        store.values.clear();
        open();
        date = field("dtPeriodEnding");
        enter();
    }
    void enter() const { date->setFocus(Qt::TabFocusReason); }
    static void pressSign(QChar sign)
    {
        QTest::sendKeyEvent(QTest::Click, QApplication::focusWidget(), Qt::Key(sign.unicode()), QString(sign), {});
    }
    static void typeText(const QString& typed)
    {
        for (const QChar sign : typed)
            pressSign(sign);
    }
    /// The date that is stored, as yyyy-MM-dd; the field is expected to show the same text.
    std::string held()
    {
        const std::string stored = store.values["dtPeriodEnding"];
        EXPECT_EQ(date->text().toStdString(), stored);
        const CalendarDate day = readShortDate(stored, formats).value();
        return QDate(day.year, day.month, day.day).toString(Qt::ISODate).toStdString();
    }
    /// What the bubble says; empty while there is none.
    std::string said()
    {
        QApplication::processEvents();
        const auto* const bubble = form->findChild<QLabel*>("Bubble");
        const QString text = bubble != nullptr && bubble->isVisible() ? bubble->text() : QString();
        EXPECT_EQ(date->accessibleDescription(), text);
        if (!text.isEmpty()) { // below the field, as wide as it needs to be
            const QPoint corner = date->mapTo(form.get(), date->rect().bottomRight());
            EXPECT_EQ(bubble->geometry().topRight(), corner + QPoint(0, 2));
            EXPECT_EQ(bubble->height(), bubble->heightForWidth(bubble->width()));
        }
        return text.toStdString();
    }

    EntryField* date = nullptr;
};

/// Region, what is typed and the date that it is; nothing where the date before stays.
constexpr const char* typedTexts = R"(
en_US: 1/15/27 = 2027-01-15; 2026-04-30 = 2026-04-30; 12311999 = 1999-12-31; 11-4-2020 = 2020-11-04; 17; 1/15; ;
en_US: 1.5.1850 = 1850-01-05; 10 1 2026 = 2026-10-01; 3 / 5 / 1601 = 1601-03-05; 2/29/2024 = 2024-02-29; 2/29/2023;
en_US: 2/29/00 = 2000-02-29; 3/14/76 = 2076-03-14; 3/15/76 = 1976-03-15; 12/31/9999 = 9999-12-31; 1/1/10000; 31/3/2026;
en_US: ９/１/2026 = 2026-09-01; 2/30/2026; 12/31/1600; 31122026; 20260331; 1231202; 1/15/202; 1/15/7; 1//15/2026; someday;
en_US: 3/31-2026; 0/1/2026; 1/0/2026; -1/1/2026; 1/1/0026; 2026-31-03; 2026-02-30; 26-04-30
en_GB: 1/2/27 = 2027-02-01; 31/3/2026 = 2026-03-31; 31122026 = 2026-12-31; 26-04-30 = 2030-04-26; 3/31/2026; 12312026
de_DE: 31.3.26 = 2026-03-31; 1.2.2027 = 2027-02-01; 01022027 = 2027-02-01; 2026-04-30 = 2026-04-30; 31.04.2026; 31.12.
sv_SE: 26-04-30 = 2026-04-30; 2026-02-3 = 2026-02-03; 2026-02-30; 20261231 = 2026-12-31; 31/12/2026
ja_JP: 2026/3/31 = 2026-03-31; 26/4/30 = 2026-04-30; 20261231 = 2026-12-31; 2026-05-31 = 2026-05-31; 12/31/2026
ar_EG: ٣١/٣/٢٠٢٦ = 2026-03-31; 1/2/27 = 2027-02-01; ٠١٠٣٢٠٢٧ = 2027-03-01; ٢٠٢٦-٠٤-٣٠ = 2026-04-30; ٣١/٢/٢٠٢٦
fa_IR: ۲۰۲۶/۳/۳۱ = 2026-03-31; ۲۶/۴/۳۰ = 2026-04-30; ۲۰۲۶۱۲۳۱ = 2026-12-31; 2026-01-02 = 2026-01-02; ۱۴۰۵/۱/۱۱
)";

TEST_F(DatePickerTest, ReadsWholeTextsAndRefusesOthers)
{
    for (const QString& line : QString(typedTexts).split('\n', Qt::SkipEmptyParts)) {
        openIn(line.section(':', 0, 0));
        for (const QString& text : line.section(':', 1).split(';')) {
            const QString typed = text.section('=', 0, 0).trimmed();
            const std::string day = text.section('=', 1).trimmed().toStdString();
            const std::string before = held();
            enter();
            press(Qt::Key_Delete);
            typeText(typed);
            pressTab();
            EXPECT_EQ(held(), day.empty() ? before : day) << line.toStdString() << " typed " << typed.toStdString();
            EXPECT_EQ(said().starts_with("\"" + typed.toStdString() + "\""), day.empty()) << typed.toStdString();
        }
    }
}

/// Digits as 0 to 9, and whether such texts are that day, in that order ("Mdy") or year, month, day.
QString plainDigits(QString text)
{
    for (QChar& sign : text)
        sign = sign.digitValue() < 0 ? sign : QChar('0' + sign.digitValue());
    return text;
}

QRegularExpression waysToType(const std::string& day, const QString& order)
{
    const QDate date = QDate::fromString(QString::fromStdString(day), Qt::ISODate);
    const QString year = date.toString("yyyy");
    QStringList parts;
    for (const QChar part : order)
        parts += part == 'y' ? "(?:" + year.left(2) + ")?" + year.right(2)
                             : "0?" + QString::number(part == 'M' ? date.month() : date.day());
    const QString yearFirst = date.toString("yyyy\\D*0?M\\D*0?d");
    return QRegularExpression("^\\D*(?:" + parts.join("\\D*") + "|" + yearFirst + ")\\D*$");
}

TEST_F(DatePickerTest, HoldsAfterAnyTypingADateThatWasTypedInFullOrTheOneBefore)
{
#ifdef NDEBUG
    constexpr int typings = 1250;
#else
    constexpr int typings = 250; // a slow build samples
#endif
    const std::pair<const char*, const char*> regions[] = {{"en_US", "Mdy"}, {"en_GB", "dMy"}, {"de_DE", "dMy"},
                                                           {"fr_FR", "dMy"}, {"sv_SE", "yMd"}, {"ja_JP", "yMd"},
                                                           {"ar_EG", "dMy"}, {"fa_IR", "yMd"}};
    const Qt::Key edits[] = {Qt::Key_Left, Qt::Key_Right, Qt::Key_Home, Qt::Key_End, Qt::Key_Backspace, Qt::Key_Delete};
    std::mt19937 random(20260315); // NOLINT(cert-msc51-cpp): the same typings every time
    const auto number = [&random](int low, int high) { return std::uniform_int_distribution(low, high)(random); };
    int taken = 0;
    for (const auto& [region, order] : regions) {
        openIn(region);
        QLocale locale(region);
        locale.setNumberOptions(QLocale::OmitGroupSeparator);
        const auto digits = [&](int value) {
            return number(0, 1) == 0 ? locale.toString(value) : QString::number(value).rightJustified(2, '0');
        };
        for (int typing = 0; typing < typings; ++typing) {
            QStringList parts = {digits(number(0, 32)), digits(number(0, 13)),
                                 digits(number(0, 1) == 0 ? number(0, 110) : number(1590, 2100))};
            std::ranges::shuffle(parts, random);
            QString typed = parts.join(QStringList{"/", "-", ".", " ", ""}[number(0, 4)]);
            if (number(0, 3) == 0)
                typed.insert(number(0, static_cast<int>(typed.size())), QStringLiteral("/-. x7")[number(0, 5)]);
            const std::string before = held();
            enter();
            QStringList shown;
            for (const QChar sign : typed) {
                pressSign(sign);
                shown += plainDigits(date->text());
                if (number(0, 9) == 0)
                    press(edits[number(0, 5)]);
                shown += plainDigits(date->text());
            }
            pressTab();
            const std::string after = held();
            taken += after == before ? 0 : 1;
            EXPECT_TRUE(after == before || shown.indexOf(waysToType(after, order)) >= 0)
                << region << " typed " << typed.toStdString() << " over " << before << ": " << after;
        }
    }
    EXPECT_GT(taken, typings); // of eight times as many
}

TEST_F(DatePickerTest, StoresAWholeDateAtOnceAndNeverHalfOfOne)
{
    openIn("en_US");
    for (const QString almost : {"2026-01-1", "1/5/202"}) {
        date->selectAll();
        typeText(almost);
        EXPECT_EQ(store.values["dtPeriodEnding"], almost.startsWith('1') ? "1/17/2026" : "3/15/2026");
        pressSign('7');
    }
    EXPECT_EQ(held(), "2027-01-05");
    press(Qt::Key_A, Qt::ControlModifier); // a new start: what was typed to its end stays
    typeText("2/30/2027");
    pressTab();
    EXPECT_EQ(held(), "2027-01-05");
    enter();
    date->setSelection(2, 1);
    typeText("45"); // the 4th on its way
    EXPECT_EQ(store.values["dtPeriodEnding"], "1/4/2027");
    pressTab();
    EXPECT_EQ(held(), "2027-01-05");
    date->setText("2/28/27"); // without the focus, as by an accessibility client
    EXPECT_EQ(held(), "2027-02-28");
}

TEST_F(DatePickerTest, SaysWhatItCouldNotReadUntilTypingGoesOn)
{
    const std::pair<const char*, const char*> regions[] = {
        {"en_US", "month, day, year, for example 12/31/2026. The date is still 3/15/2026."},
        {"de_DE", "day, month, year, for example 31.12.2026. The date is still 15.03.2026."},
        {"fa_IR", "year, month, day, for example ۲۰۲۶/۱۲/۳۱. The date is still ۲۰۲۶/۳/۱۵."}};
    for (const auto& [region, advice] : regions) {
        openIn(region);
        typeText("1/2/3");
        pressTab();
        EXPECT_EQ(said(), "\"1/2/3\" could not be read as a date. Type " + std::string(advice));
        enter();
        press(Qt::Key_Z, Qt::ControlModifier);
        EXPECT_EQ(date->text(), "1/2/3");
        EXPECT_EQ(said(), "");
        press(Qt::Key_Z, Qt::ControlModifier);
        EXPECT_EQ(held(), "2026-03-15");
    }
}

TEST_F(DatePickerTest, IsReadHoweverItIsLeft)
{
    const TemporaryFolder folder;
    const ScopedEnvironment temp("TEMP", folder.path().string());
    const auto isBuilt = [&] {
        return std::ranges::any_of(spreadsheet.calls,
                                   [](auto& call) { return call.find("1/15/2027") != std::string::npos; });
    };
    const std::function<void()> ways[] = {[&] { clickOn(field("txtName(0)")); }, [] { leaveForAnotherProgram(); },
                                          [&] {
                                              press(Qt::Key_S, Qt::AltModifier);
                                              EXPECT_TRUE(QTest::qWaitFor(isBuilt));
                                          },
                                          [&] { form->close(); }};
    for (const auto& leave : ways) {
        openIn("en_US");
        setProgramEnd([&] { EXPECT_EQ(store.values["dtPeriodEnding"], "1/15/2027"); });
        typeText("1/15/27");
        EXPECT_EQ(store.values["dtPeriodEnding"], "3/15/2026");
        leave();
        EXPECT_EQ(held(), "2027-01-15");
    }
}

TEST_F(DatePickerTest, StepsByDaysAndMonths)
{
    const std::tuple<const char*, Qt::Key, const char*> cases[] = {
        {"1/31/27", Qt::Key_Up, "2027-02-01"},       {"3/1/2028", Qt::Key_Down, "2028-02-29"},
        {"1/31/2027", Qt::Key_PageUp, "2027-02-28"}, {"1/15/2027", Qt::Key_PageDown, "2026-12-15"},
        {"12/31/9999", Qt::Key_Up, "9999-12-31"},    {"1/1/1601", Qt::Key_PageDown, "1601-01-01"}};
    openIn("en_US");
    for (const auto& [typed, key, expected] : cases) {
        date->selectAll();
        typeText(typed);
        press(key);
        EXPECT_EQ(held(), expected);
    }
    press(Qt::Key_Up, Qt::ControlModifier);
    EXPECT_EQ(held(), "1601-01-01");
}

TEST_F(DatePickerTest, TakesADayFromTheCalendarByEnterOrAClick)
{
    openIn("en_US");
    const std::function<void()> openings[] = {[] { press(Qt::Key_F4); }, [] { press(Qt::Key_Down, Qt::AltModifier); },
                                              [&] { clickOn(date->findChild<QToolButton*>()); }};
    int day = 15;
    for (const auto& openCalendar : openings)
        for (const Qt::Key end : {Qt::Key_Escape, Qt::Key_Return}) {
            openCalendar();
            auto* const calendar = control<QCalendarWidget>("");
            ASSERT_TRUE(calendar->isVisible());
            EXPECT_EQ(calendar->selectedDate(), QDate(2026, 3, day));
            press(Qt::Key_Right);
            press(Qt::Key_7); // digits do nothing here
            press(end);
            EXPECT_FALSE(calendar->isVisible());
            EXPECT_EQ(focused(), "dtPeriodEnding");
            EXPECT_EQ(held(), "2026-03-" + std::to_string(end == Qt::Key_Return ? ++day : day));
        }
    press(Qt::Key_F4);
    auto* const days = control<QTableView>("qt_calendar_calendarview");
    const QModelIndex weekLater = days->currentIndex().siblingAtRow(days->currentIndex().row() + 1);
    QTest::mouseClick(days->viewport(), Qt::LeftButton, {}, days->visualRect(weekLater).center());
    EXPECT_EQ(held(), "2026-03-25");
    date->selectAll();
    typeText("4/30/27"); // not yet read, yet it is what the calendar opens at
    press(Qt::Key_F4);
    QWheelEvent turn({9, 9}, days->mapToGlobal(QPointF(9, 9)), {}, {0, 120}, {}, {}, {}, false);
    QApplication::sendEvent(days->viewport(), &turn);
    press(Qt::Key_Return);
    EXPECT_EQ(held(), "2027-03-30");
}

} // namespace
