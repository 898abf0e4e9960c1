#include "bench/OpenWindows.h"

#include "app/base/RandomNumber.h"
#include "bench/PayrollJob.h"
#include "resources/CustomResource.h"
#include "workbook/embedded/EmbeddedApplication.h"

#include <QApplication>
#include <QEventLoop>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPushButton>
#include <QTimer>

namespace wagemill::bench {

namespace {

constexpr int quietMilliseconds = 200;

void sendMouse(QWidget& target, QEvent::Type type, QPointF at, Qt::MouseButton button, Qt::MouseButtons held)
{
    QMouseEvent event(type, at, target.mapToGlobal(at), button, held, Qt::NoModifier);
    QCoreApplication::sendEvent(&target, &event);
}

std::unique_ptr<SettingsStore> filledStore(const PayrollData& data)
{
    auto store = std::make_unique<MemoryStore>();
    store->write({}, {}, "txtCompanyName", data.header.companyName);
    store->write({}, {}, "dtPeriodEnding", data.header.periodEnding);
    for (std::size_t row = 0; row < data.rows.size(); ++row)
        for (std::size_t field = 0; field < rowFields.size(); ++field)
            store->write({}, {}, rowFieldKey(rowFields[field], static_cast<std::int16_t>(row)),
                         data.rows[row].texts[field]);
    return store;
}

Form1Setup setupOf(int employees, EmbeddedPictureClipboard& clipboard)
{
    setUserStore(filledStore(payroll(employees)));
    BuildServices build;
    build.spreadsheet = {[&] { return std::make_unique<EmbeddedApplication>(RegionalFormats{}, clipboard); },
                         &clipboard};
    build.templateResource = [] { return customResource(payrollTemplateResource); };
    build.randomNumber = randomWholeNumber;
    return {std::move(build), [] { return CalendarDate{2026, 4, 7}; }, static_cast<std::int16_t>(employees)};
}

} // namespace

PaintWatch::PaintWatch(const char* window, const char* widget)
    : m_window(QString::fromLatin1(window)), m_widget(QString::fromLatin1(widget))
{
    QCoreApplication::instance()->installEventFilter(this);
}

void PaintWatch::untilPainted()
{
    const int before = m_paints;
    while (m_paints == before)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

bool PaintWatch::eventFilter(QObject* watched, QEvent* event)
{
    const bool isWatched = m_widget.isEmpty() || watched->objectName() == m_widget;
    if (event->type() == QEvent::Paint && watched->isWidgetType() && isWatched &&
        static_cast<QWidget*>(watched)->window()->objectName() == m_window)
        ++m_paints;
    return false;
}

void pressKey(QWidget& target, int key)
{
    const QString text = key < Qt::Key_Escape ? QString(QChar(key)) : QString();
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(&target, &event);
    }
}

void pressMouse(QWidget& target, QPointF at)
{
    sendMouse(target, QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton);
}

void dragMouse(QWidget& target, QPointF to)
{
    sendMouse(target, QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton);
}

void releaseMouse(QWidget& target, QPointF at)
{
    sendMouse(target, QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton);
}

void showActive(QWidget& window)
{
    window.show();
    window.activateWindow();
    while (!window.isActiveWindow())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QEventLoop quiet;
    QTimer::singleShot(quietMilliseconds, &quiet, &QEventLoop::quit);
    quiet.exec();
}

void leavePreview()
{
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible() && window->objectName() == QStringLiteral("Form2"))
            return control<QPushButton>(*window, QStringLiteral("PushButton8")).click();
    throw std::runtime_error("There is no preview.");
}

std::optional<std::string> MemoryStore::read(std::string_view /*application*/, std::string_view /*section*/,
                                             std::string_view key)
{
    const auto found = m_values.find(key);
    return found == m_values.end() ? std::nullopt : std::optional(found->second);
}

void MemoryStore::write(std::string_view /*application*/, std::string_view /*section*/, std::string_view key,
                        std::string_view value)
{
    m_values.insert_or_assign(std::string(key), std::string(value));
}

EntryWindow::EntryWindow(int employees) : m_window(setupOf(employees, m_clipboard))
{
    showActive(m_window);
}

EntryWindow::~EntryWindow()
{
    setUserStore(nullptr);
}

} // namespace wagemill::bench
