#include "entry/Form1.h"

#include "app/base/ErrorTrap.h"
#include "app/base/Files.h"
#include "app/look/Controls.h"
#include "entry/DatePicker.h"
#include "entry/EmployeePanel.h"
#include "entry/EntryArea.h"
#include "entry/EntryField.h"
#include "help/HelpMessage.h"
#include "preview/Form2.h"
#include "settings/Settings.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFrame>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QScreen>
#include <QScrollBar>
#include <QShortcut>
#include <QWheelEvent>

#include <algorithm>
#include <span>

namespace wagemill {

namespace {

constexpr const char* companyNameKey = "txtCompanyName";
constexpr const char* periodEndingKey = "dtPeriodEnding";
constexpr int rowGap = 8;
constexpr QSize roomForFrame(8, 40); ///< what the window manager puts around a window

} // namespace

Form1::Form1(Form1Setup setup)
    : m_setup(std::move(setup)), m_pointer(new WindowPointer(*this)), m_leaveGuard(new LeaveGuard(this))
{
    setObjectName(QStringLiteral("Form1"));
    applyDesignFont(*this);
    keepPlace(*this);
    m_metrics = entryMetrics(fontMetrics(), screen()->availableSize().width());
    m_retry.setInterval(std::chrono::seconds(1));
    connect(&m_retry, &QTimer::timeout, this, [this] {
        if (retrySettings().empty())
            m_retry.stop();
    });
    layOut();
    connectHandlers();
    setKeys();
    Form_Load();
    placeRows(); // the skin has changed the sizes
    resize(m_area->sizeWithin(screen()->availableSize() - roomForFrame));
    txtCompanyName->setFocus();
}

Form1::~Form1() = default;

void Form1::layOut()
{
    auto* const content = new QWidget(this);
    auto* const column = new QVBoxLayout(content);
    column->setContentsMargins(m_metrics.smallGap(), m_metrics.smallGap(), m_metrics.smallGap(), m_metrics.line);
    column->setSpacing(m_metrics.groupGap());
    column->addWidget(headerFrame());
    column->addWidget(employeeFrame(), 1);
    column->addWidget(buttonRow());
    m_area = new EntryArea(content, this);
    auto* const whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(m_area);
}

/// Its fields end where those of the employee end.
QGroupBox* Form1::headerFrame()
{
    Frame1 = named(new QGroupBox(QStringLiteral("Header Details"), this), "Frame1");
    auto* const company = named(new QLabel(QStringLiteral("Company Name:"), Frame1), "Label1");
    txtCompanyName = named(new EntryField(Frame1), "txtCompanyName");
    txtCompanyName->setFixedWidth(m_metrics.columnWidth() - m_metrics.smallGap() - company->sizeHint().width());
    auto* const date = named(new QLabel(QStringLiteral("Period ending:"), Frame1), "Label2");
    date->setFixedWidth(m_metrics.labelWidth);
    dtPeriodEnding = named(new DatePicker(m_setup.build.formats, m_setup.today, Frame1), "dtPeriodEnding");
    dtPeriodEnding->setFixedWidth(m_metrics.fieldWidth);

    QBoxLayout* const both = besideEachOther(Frame1);
    both->setContentsMargins(2 * m_metrics.smallGap(), m_metrics.smallGap(), m_metrics.line, m_metrics.groupGap());
    both->setSpacing(m_metrics.columns == 2 ? m_metrics.columnGap() : m_metrics.smallGap());
    both->addLayout(lineOf(company, txtCompanyName));
    both->addLayout(lineOf(date, dtPeriodEnding));
    both->addStretch(1);
    return Frame1;
}

/// A caption and its field.
QHBoxLayout* Form1::lineOf(QLabel* label, EntryField* field) const
{
    label->setBuddy(field);
    auto* const line = new QHBoxLayout;
    line->setSpacing(m_metrics.smallGap());
    line->addWidget(label);
    line->addWidget(field);
    line->addStretch(1);
    return line;
}

/// One below the other where the screen is too narrow.
QBoxLayout* Form1::besideEachOther(QWidget* parent) const
{
    return new QBoxLayout(m_metrics.columns == 2 ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom, parent);
}

QGroupBox* Form1::employeeFrame()
{
    Frame3 = named(new QGroupBox(QStringLiteral("Employee Details"), this), "Frame3");
    Picture1 = named(new QFrame(Frame3), "Picture1");
    Picture3 = named(new QFrame(Picture1), "Picture3");
    VScroll1 = named(new ScrollBar(Qt::Vertical, Frame3), "VScroll1", "Employee shown");
    VScroll1->setRange(0, m_setup.rows - 1);
    VScroll1->setEnabled(m_setup.rows > 1);
    VScroll1->setPageStep(1); // a turn of the wheel, or a click beside the thumb, is one employee
    VScroll1->setTracking(false);

    const StoreText storeText = [this](const std::string& key, const QString& text) { store(key, text); };
    for (std::int16_t row = 0; row < m_setup.rows; ++row)
        picMainContainer.push_back(
            new EmployeePanel(row, m_setup.rows, m_metrics, m_setup.build.formats, storeText, Picture3));

    auto* const row = new QHBoxLayout(Frame3);
    row->setContentsMargins(m_metrics.smallGap(), m_metrics.smallGap(), m_metrics.smallGap(), m_metrics.smallGap());
    row->setSpacing(0);
    row->addWidget(Picture1, 1, Qt::AlignLeft);
    row->addWidget(VScroll1);
    return Frame3;
}

void Form1::placeRows()
{
    for (QWidget* control : findChildren<QWidget*>()) {
        control->ensurePolished(); // only then does it know its size
        control->updateGeometry();
    }
    for (QLayout* layout : findChildren<QLayout*>())
        layout->invalidate();
    const QSize panel = picMainContainer.front()->sizeHint();
    for (EmployeePanel* container : picMainContainer)
        container->setGeometry(QRect(QPoint(0, (panel.height() + rowGap) * container->row()), panel));
    Picture3->setGeometry(0, 0, panel.width(), picMainContainer.back()->geometry().bottom() + 1);
    Picture1->setFixedSize(panel);
    Frame3->layout()->activate();
    m_area->widget()->layout()->activate();
}

QWidget* Form1::buttonRow()
{
    auto* const buttons = new QWidget(this);
    // In the order of the tab key.
    PushButton22 = named(new PushButton(QStringLiteral("Start Creating Template"), Qt::Key_S, buttons), "PushButton22");
    PushButton7 = named(new PushButton(QStringLiteral("Load Sample/Example Data"), Qt::Key_L, buttons), "PushButton7");
    PushButton6 = named(new PushButton(QStringLiteral("Help"), Qt::Key_H, buttons), "PushButton6");

    auto* const helpful = new QHBoxLayout;
    helpful->addWidget(PushButton6);
    helpful->addWidget(PushButton7);
    helpful->addStretch(1);
    QBoxLayout* const all = besideEachOther(buttons);
    all->setContentsMargins(0, 0, 0, 0);
    all->addLayout(helpful, 1);
    all->addWidget(PushButton22, 0, Qt::AlignRight);
    return buttons;
}

/// Keys beside the tab key and the access keys of the buttons; the captions show none of them.
void Form1::setKeys()
{
    new QShortcut(Qt::Key_F1, this, [this] { PushButton6_Click(); });
    new QShortcut(Qt::ALT | Qt::Key_C, this, [this] { goTo(*txtCompanyName); });
    new QShortcut(Qt::ALT | Qt::Key_P, this, [this] { goTo(*dtPeriodEnding); });
    new QShortcut(Qt::ALT | Qt::Key_E, this, [this] { goToField(VScroll1->value(), employeeIdField); });
    new QShortcut(Qt::CTRL | Qt::Key_PageDown, this, [this] { goToEmployee(VScroll1->value() + 1); });
    new QShortcut(Qt::CTRL | Qt::Key_PageUp, this, [this] { goToEmployee(VScroll1->value() - 1); });
}

void Form1::goTo(QWidget& target)
{
    if (m_leaveGuard->allows(target))
        target.setFocus(Qt::ShortcutFocusReason);
}

/// To the field that has the focus in another employee, from elsewhere to the first.
void Form1::goToEmployee(int row)
{
    if (row < VScroll1->minimum() || row > VScroll1->maximum())
        return;
    std::size_t index = employeeIdField;
    for (const EmployeePanel* container : picMainContainer)
        if (const auto focused = std::ranges::find_if(container->fields(), &QWidget::hasFocus);
            focused != container->fields().end())
            index = static_cast<std::size_t>(focused - container->fields().begin());
    goToField(row, index);
}

void Form1::goToField(int row, std::size_t index)
{
    goTo(*picMainContainer[static_cast<std::size_t>(row)]->fields()[index]);
}

void Form1::connectHandlers()
{
    connect(txtCompanyName, &QLineEdit::textChanged, this, [this] { handleEvent([&] { txtCompanyName_Change(); }); });
    connect(dtPeriodEnding, &DatePicker::dateChanged, this, [this] { handleEvent([&] { dtPeriodEnding_Change(); }); });
    connect(VScroll1, &QScrollBar::valueChanged, this, &Form1::VScroll1_Change);
    connect(VScroll1, &QScrollBar::sliderMoved, this, &Form1::VScroll1_Change);
    const std::pair<PushButton*, void (Form1::*)()> clicks[] = {{PushButton22, &Form1::PushButton22_Click},
                                                                {PushButton7, &Form1::PushButton7_Click},
                                                                {PushButton6, &Form1::PushButton6_Click}};
    for (const auto& [button, click] : clicks)
        connect(button, &QPushButton::clicked, this, [this, pressed = button, handler = click] {
            if (m_leaveGuard->allows(*pressed)) // an access key, or a screen reader, presses without moving the focus
                (this->*handler)();
        });
    for (const EmployeePanel* container : picMainContainer)
        for (EntryField* field : container->fields())
            connect(field, &EntryField::needsView, this, [this, row = container->row()] { VScroll1->setValue(row); });
    for (EntryField* field : findChildren<EntryField*>())
        connect(field, &EntryField::needsView, this, [this, field] { m_area->showWhole(*field); }); // of that employee
}

void Form1::Form_Load()
{
    ErrorTrap trap("Form1.Form_Load");
    trap.step(10, [&] {
        SkinFramework1 = createSkinningControl();
        applyMainWindowSkin(*this, SkinFramework1.get());
    });
    trap.step(20, [&] { setWindowTitle(productTitle); });
    trap.step(30, [&] { makeApplicationTitle(productPhrase); });
    const std::filesystem::path cursor = besideProgram(handCursorName);
    trap.step(40, [&] { handCursorPresent = fileExists(cursor); });
    trap.step(50, [&] {
        if (handCursorPresent)
            m_pointer->loadHandCursor(cursor);
    });
    trap.step(60, [&] {
        const std::string stored = GetSetting(settingsApplication, settingsSection, companyNameKey, "");
        txtCompanyName->refillText(QString::fromStdString(stored));
        txtCompanyName_Change();
    });
    trap.step(70, [&] { refillPeriodEnding(); });
    for (std::size_t field = 0; field < rowFields.size(); ++field)
        trap.step(100 + static_cast<int>(field), [&] { picMainContainer.front()->refill(field); });
    trap.step(120, [&] { refillTogether(std::span(picMainContainer).subspan(1)); });
    trap.step(200, [&] { checkExcelPresence(m_setup.build.spreadsheet.createSession); });
}

void Form1::refillPeriodEnding()
{
    const std::string today = shortDateText(m_setup.today(), m_setup.build.formats);
    const std::string stored = GetSetting(settingsApplication, settingsSection, periodEndingKey, today);
    const auto date = readTypedDate(stored, m_setup.build.formats, m_setup.today());
    if (!date)
        throw std::runtime_error("The stored period ending \"" + stored + "\" is not a date.");
    dtPeriodEnding->refillDate(*date);
    dtPeriodEnding_Change();
}

/// What cannot be stored now is offered to the store again every second.
void Form1::store(const std::string& key, const QString& text)
{
    m_retry.start();
    SaveSetting(settingsApplication, settingsSection, key, text.toStdString());
    m_retry.stop();
}

void Form1::txtCompanyName_Change()
{
    store(companyNameKey, txtCompanyName->text());
}

void Form1::dtPeriodEnding_Change()
{
    store(periodEndingKey, QString::fromStdString(shortDateText(dtPeriodEnding->date(), m_setup.build.formats)));
}

/// The strip follows the thumb while it is dragged; the value changes when it is let go.
void Form1::VScroll1_Change()
{
    Picture3->move(0, -picMainContainer[static_cast<std::size_t>(VScroll1->sliderPosition())]->y());
}

/// From here until the preview gives the turn back, nothing acts on this window: neither what was pressed while it was
/// busy nor what still reaches it once it is hidden.
void Form1::PushButton22_Click()
{
    m_focusBefore = focusWidget();
    setEnabled(false);
    buildPayrollWorkbook(payrollData(), *this, m_setup.build);
}

void Form1::PushButton6_Click()
{
    showHelpMessage();
}

void Form1::PushButton7_Click()
{
    ErrorTrap trap("Form1.PushButton7_Click");
    VScroll1->setValue(0);
    trap.step(10, [&] {
        txtCompanyName->replaceText(QStringLiteral("ACME Inc"));
        txtCompanyName_Change();
    });
    trap.step(20, [&] {
        const CalendarDate today = m_setup.today();
        const int firstOfMonth = daysSinceEpoch({today.year, today.month, 1});
        dtPeriodEnding->replaceDate(dateFromDaysSinceEpoch(firstOfMonth - 1));
        dtPeriodEnding_Change();
    });
    for (std::size_t field = 0; field < rowFields.size(); ++field)
        trap.step(100 + static_cast<int>(field), [&] { picMainContainer.front()->assignSample(field); });
}

PayrollData Form1::payrollData() const
{
    PayrollData payroll;
    payroll.header.companyName = txtCompanyName->text().toStdString();
    payroll.header.periodEnding = shortDateText(dtPeriodEnding->date(), m_setup.build.formats);
    std::ranges::transform(picMainContainer, std::back_inserter(payroll.rows), &EmployeePanel::texts);
    return payroll;
}

Form2& Form1::preview()
{
    if (!m_preview) {
        m_preview = std::make_unique<Form2>([this] { takeTurn(); }, m_setup.sheetOf);
        m_preview->setStyleSheet(styleSheet()); // the skin of this window, where it is one
    }
    return *m_preview;
}

void Form1::takeTurn()
{
    setEnabled(true);
    if (m_focusBefore)
        m_focusBefore->setFocus();
    show();
}

void Form1::showPicture(const std::filesystem::path& picture)
{
    preview().setPicture({}); // a build whose picture fails must not show the amounts of an earlier one
    preview().setPicture(loadPicture(picture));
}

void Form1::passWorkbook(const std::filesystem::path& workbook)
{
    preview().setExcelFile(workbook);
    preview().describePicture(m_setup.describeWorkbook ? m_setup.describeWorkbook(workbook) : std::string());
}

void Form1::showPreview()
{
    preview().show();
}

/// The wheel over the employees, where nothing else takes it, turns to the next one.
void Form1::wheelEvent(QWheelEvent* event)
{
    if (Picture1->rect().contains(Picture1->mapFromGlobal(event->globalPosition().toPoint())))
        QCoreApplication::sendEvent(VScroll1, event);
    else
        event->ignore();
}

/// The field that has the focus when the window opens, or comes back, is selected like any other.
void Form1::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (auto* const field = qobject_cast<EntryField*>(focusWidget()); field != nullptr && !event->spontaneous())
        field->selectAll();
}

/// Asked for while the turn was passed on, a close is the preview's, which knows the workbook to delete.
void Form1::closeEvent(QCloseEvent* event)
{
    event->accept();
    if (isEnabled())
        Form_Unload();
    else
        preview().close();
}

void Form1::Form_Unload()
{
    dtPeriodEnding->takeTypedText();
    endProgram();
}

} // namespace wagemill
