#pragma once

#include "app/base/text/DateText.h"
#include "app/look/Look.h"
#include "app/look/WindowPointer.h"
#include "entry/EntryMetrics.h"
#include "preview/Printing.h"
#include "workbook/PayrollBuild.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class QBoxLayout;
class QFrame;
class QGroupBox;
class QHBoxLayout;
class QLabel;
class QScrollBar;

namespace wagemill {

class DatePicker;
class EmployeePanel;
class EntryArea;
class EntryField;
class Form2;
class LeaveGuard;
class PushButton;

/// What the entry window is given.
struct Form1Setup {
    BuildServices build;                 ///< with the user's regional formats
    std::function<CalendarDate()> today; ///< the clock
    std::int16_t rows = 1;               ///< employees, at least 1
    /// What a saved workbook shows, in words; empty where it cannot be said. None: never said.
    std::function<std::string(const std::filesystem::path& workbook)> describeWorkbook = {};
    SheetOf sheetOf = {}; ///< for printing
};

/// The entry window: one pay period, typed, kept and turned into a workbook. Making it is the whole start-up, up to and
/// with the check that the spreadsheet application is there; it is shown by its maker.
class Form1 : public QWidget, private BuildWindows {
public:
    explicit Form1(Form1Setup setup);
    ~Form1() override;

    /// The mouse pointer becomes the arrow, unless the window is busy.
    void resetPointer() { m_pointer->resetPointer(); }

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void layOut();
    QGroupBox* headerFrame();
    QHBoxLayout* lineOf(QLabel* label, EntryField* field) const;
    QBoxLayout* besideEachOther(QWidget* parent) const;
    QGroupBox* employeeFrame();
    QWidget* buttonRow();
    void placeRows();
    void setKeys();
    void connectHandlers();

    void Form_Load();
    void Form_Unload();
    void refillPeriodEnding();
    void txtCompanyName_Change();
    void dtPeriodEnding_Change();
    void VScroll1_Change();
    void PushButton22_Click();
    void PushButton6_Click();
    void PushButton7_Click();

    void goTo(QWidget& target);
    void goToEmployee(int row);
    void goToField(int row, std::size_t index);
    void store(const std::string& key, const QString& text);
    PayrollData payrollData() const;
    Form2& preview();
    void takeTurn();

    void freezeDrawing() override { lockDrawing(*this); }
    void unfreezeDrawing() override { unlockDrawing(*this); }
    void showHourglass() override { m_pointer->setMode(PointerMode::Hourglass); }
    void showArrow() override { m_pointer->setMode(PointerMode::Arrow); }
    void showPicture(const std::filesystem::path& picture) override;
    void passWorkbook(const std::filesystem::path& workbook) override;
    void showPreview() override;
    void hideEntry() override { hide(); }

    Form1Setup m_setup;
    EntryMetrics m_metrics;
    WindowPointer* m_pointer;
    LeaveGuard* m_leaveGuard;
    EntryArea* m_area = nullptr;
    bool handCursorPresent = false;

    QGroupBox* Frame1 = nullptr;
    QGroupBox* Frame3 = nullptr;
    EntryField* txtCompanyName = nullptr;
    DatePicker* dtPeriodEnding = nullptr;
    QFrame* Picture1 = nullptr; ///< the viewport
    QFrame* Picture3 = nullptr; ///< the strip of all rows inside it
    QScrollBar* VScroll1 = nullptr;
    std::vector<EmployeePanel*> picMainContainer;
    PushButton* PushButton6 = nullptr;
    PushButton* PushButton7 = nullptr;
    PushButton* PushButton22 = nullptr;
    std::unique_ptr<SkinningControl> SkinFramework1; ///< null where none is installed
    std::unique_ptr<Form2> m_preview;                ///< made by the first build, then kept
    QPointer<QWidget> m_focusBefore;                 ///< when the turn was passed on
    QTimer m_retry;                                  ///< runs while something is not stored yet
};

} // namespace wagemill
