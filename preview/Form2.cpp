#include "preview/Form2.h"

#include "app/base/ErrorTrap.h"
#include "app/base/Files.h"
#include "app/base/text/NumberText.h"
#include "app/look/Controls.h"
#include "app/look/Look.h"
#include "preview/PictureBox.h"
#include "preview/ViewGeometry.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QScreen>
#include <QShortcut>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <system_error>
#include <tuple>
#include <utility>

namespace wagemill {

namespace fs = std::filesystem;

namespace {

constexpr QSizeF partOfScreen(0.92, 0.85); // 1024 units across are enough for a pay stub at natural size
constexpr QSize maxWindow(1600, 1200);
constexpr int wheelNotch = 120; // eighths of a degree
constexpr float zoomStep = 0.25F;
constexpr float minZoom = 0.25F;
constexpr float maxZoom = 3.75F;

QScrollBar* makeScrollBar(Qt::Orientation orientation, const char* name, const char* accessibleName, QWidget* parent)
{
    auto* scrollBar = named(new ScrollBar(orientation, parent), name, accessibleName);
    scrollBar->setTracking(false); // the picture moves when the thumb is let go
    scrollBar->setFocusPolicy(Qt::StrongFocus);
    scrollBar->setRange(0, 100);
    scrollBar->setEnabled(false);
    return scrollBar;
}

/// The range of one scroll bar, and the unit of its steps. The thumb shows how much of the picture is in view.
std::int16_t setUpScrollBar(QScrollBar& scrollBar, float pictureExtent, float viewportExtent)
{
    const ScrollRange range = scrollRange(pictureExtent - viewportExtent);
    scrollBar.setEnabled(range.unit != 0);
    scrollBar.setPageStep(static_cast<int>(viewportExtent) / std::max<int>(1, range.unit));
    if (range.unit != 0) {
        scrollBar.setMaximum(range.maximum);
        scrollBar.setValue(0);
    }
    return range.unit;
}

/// Whether both paths are one name of one file. A link to the file is another name: it can go without the file.
bool isSameFile(const fs::path& one, const fs::path& other)
{
    std::error_code error;
    return fs::equivalent(one, other, error) && !fs::is_symlink(fs::symlink_status(one, error)) &&
           !fs::is_symlink(fs::symlink_status(other, error)) && fs::hard_link_count(one, error) == 1;
}

/// The new name appears with its last byte or not at all, replacing a file or link of that name. Throws
/// std::runtime_error that names both files and the reason.
void copyFile(const fs::path& from, const fs::path& to)
{
    if (isSameFile(from, to))
        throw std::runtime_error("The workbook cannot be saved as \"" + to.string() +
                                 "\": that is the temporary workbook itself, which is deleted when you leave. Please "
                                 "choose another name.");
    try {
        writeWholeFile(readOwnFile(from), to, FileLife::Kept);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error("Cannot copy the file \"" + from.string() + "\" to \"" + to.string() + "\". " +
                                 error.what());
    }
}

} // namespace

Form2::Form2(std::function<void()> showEntryWindow, SheetOf sheetOf, SaveFileDialog commonDialog)
    : PushButton1(named(new PushButton(QStringLiteral("Zoom In"), Qt::Key_I, this), "PushButton1")),
      PushButton2(named(new PushButton(QStringLiteral("Zoom Out"), Qt::Key_O, this), "PushButton2")),
      PushButtonPrint(named(new PushButton(QStringLiteral("Print..."), Qt::Key_P, this), "PushButtonPrint")),
      PushButton6(named(new PushButton(QStringLiteral("Save Results To Excel File"), Qt::Key_S, this), "PushButton6")),
      PushButton8(named(new PushButton(QStringLiteral("< Back"), Qt::Key_B, this), "PushButton8")),
      Frame1(named(new QGroupBox(QStringLiteral("Zoom:"), this), "Frame1")),
      Picture2(named(new QWidget(this), "Picture2", "View of the payroll sheet")),
      Picture1(named(new PictureBox(Picture2), "Picture1", "Picture of the payroll sheet")),
      Zoom_Ori(named(new PictureBox(this), "Zoom_Ori")),
      HScroll1(makeScrollBar(Qt::Horizontal, "HScroll1", "Scroll left and right", this)),
      VScroll1(makeScrollBar(Qt::Vertical, "VScroll1", "Scroll up and down", this)),
      CommonDialog1(std::move(commonDialog)),
      m_sheetOf(std::move(sheetOf)),
      m_pointer(*this),
      m_showEntryWindow(std::move(showEntryWindow))
{
    setObjectName(QStringLiteral("Form2"));
    keepPlace(*this);
    layOutControls();
    connectControls();
    setKeys();
    Form_Load();
}

void Form2::layOutControls()
{
    // The viewport has no border: a picture dragged to its far edge then is where the scroll bar's end puts it.
    Picture2->setBackgroundRole(QPalette::Midlight);
    Picture2->setAutoFillBackground(true);
    Picture1->setCursor(Qt::OpenHandCursor);
    Zoom_Ori->hide();
    PushButtonPrint->setEnabled(m_sheetOf != nullptr);
    applyDesignFont(*this);

    auto* zoomButtons = new QHBoxLayout(Frame1);
    zoomButtons->addWidget(PushButton1);
    zoomButtons->addWidget(PushButton2);

    auto* leave = new QHBoxLayout;
    const int belowZoomButtons = zoomButtons->contentsMargins().bottom() + Frame1->contentsMargins().bottom();
    leave->setContentsMargins(0, 0, 0, belowZoomButtons); // on one line with them
    leave->addWidget(PushButtonPrint);
    leave->addWidget(PushButton6);
    leave->addWidget(PushButton8);

    auto* tools = new QHBoxLayout;
    tools->addWidget(Frame1);
    tools->addStretch();
    tools->addLayout(leave);
    tools->setAlignment(leave, Qt::AlignBottom);

    auto* sheet = new QGridLayout;
    sheet->setSpacing(0);
    sheet->addWidget(Picture2, 0, 0);
    sheet->addWidget(VScroll1, 0, 1);
    sheet->addWidget(HScroll1, 1, 0);
    sheet->setRowStretch(0, 1);
    sheet->setColumnStretch(0, 1);

    auto* rows = new QVBoxLayout(this);
    rows->addLayout(tools);
    rows->addLayout(sheet, 1);

    for (PushButton* button : {PushButton1, PushButton2, PushButtonPrint, PushButton6, PushButton8})
        button->setMinimumSize(button->sizeHint() + QSize(button->fontMetrics().averageCharWidth() * 3, 4));
    const QSizeF available = screen()->availableSize();
    if (rows->minimumSize().width() > available.width())
        tools->setDirection(QBoxLayout::TopToBottom); // large letters on a small screen
    const QSizeF part(available.width() * partOfScreen.width(), available.height() * partOfScreen.height());
    const QSize wanted = part.toSize().boundedTo(maxWindow);
    setFixedSize(wanted.expandedTo(rows->minimumSize()));
}

void Form2::connectControls()
{
    const std::pair<PushButton*, void (Form2::*)()> clicks[] = {{PushButton1, &Form2::PushButton1_Click},
                                                                {PushButton2, &Form2::PushButton2_Click},
                                                                {PushButtonPrint, &Form2::PushButtonPrint_Click},
                                                                {PushButton6, &Form2::PushButton6_Click},
                                                                {PushButton8, &Form2::PushButton8_Click}};
    for (const auto& [button, click] : clicks)
        connect(button, &QPushButton::clicked, this,
                [this, handler = click] { handleEvent([&] { (this->*handler)(); }); });
    connect(Picture1, &PictureBox::MouseDown, this, &Form2::Picture1_MouseDown);
    connect(Picture1, &PictureBox::MouseMove, this, &Form2::Picture1_MouseMove);
    connect(Picture1, &PictureBox::MouseUp, this, &Form2::Picture1_MouseUp);
    connect(HScroll1, &QScrollBar::valueChanged, this, [this] { handleEvent([this] { HScroll1_Change(); }); });
    connect(VScroll1, &QScrollBar::valueChanged, this, [this] { handleEvent([this] { VScroll1_Change(); }); });
}

/// Keys beside the tab key and the access keys. Arrow, page, Home and End keys scroll wherever the focus is.
void Form2::setKeys()
{
    const std::pair<QKeyCombination, PushButton*> presses[] = {
        {Qt::CTRL | Qt::Key_Plus, PushButton1},  {Qt::CTRL | Qt::Key_Equal, PushButton1}, // the same key without Shift
        {Qt::CTRL | Qt::Key_Minus, PushButton2}, {Qt::CTRL | Qt::Key_P, PushButtonPrint},
        {Qt::CTRL | Qt::Key_S, PushButton6},
    };
    for (const auto& [keys, button] : presses)
        new QShortcut(keys, this, button, &PushButton::click);
    const std::tuple<Qt::Key, QScrollBar*, QAbstractSlider::SliderAction> scrolls[] = {
        {Qt::Key_Left, HScroll1, QAbstractSlider::SliderSingleStepSub},
        {Qt::Key_Right, HScroll1, QAbstractSlider::SliderSingleStepAdd},
        {Qt::Key_Up, VScroll1, QAbstractSlider::SliderSingleStepSub},
        {Qt::Key_Down, VScroll1, QAbstractSlider::SliderSingleStepAdd},
        {Qt::Key_PageUp, VScroll1, QAbstractSlider::SliderPageStepSub},
        {Qt::Key_PageDown, VScroll1, QAbstractSlider::SliderPageStepAdd},
        {Qt::Key_Home, VScroll1, QAbstractSlider::SliderToMinimum},
        {Qt::Key_End, VScroll1, QAbstractSlider::SliderToMaximum},
    };
    for (const auto& [key, scrollBar, action] : scrolls)
        new QShortcut(key, this, [bar = scrollBar, scroll = action] {
            if (bar->isEnabled())
                bar->triggerAction(scroll);
        });
}

void Form2::Form_Load()
{
    ErrorTrap trap("Form2.Form_Load");
    trap.step(10, [&] { applyPlainBackground(*this); });
    trap.step(20, [&] { setWindowTitle(productTitle); });
    trap.step(30, [&] {
        if (const fs::path handCursor = besideProgram(handCursorName); fileExists(handCursor))
            m_pointer.loadHandCursor(handCursor);
    });
}

void Form2::setPicture(const SharedPicture& picture)
{
    Picture1->setVisible(picture != nullptr);
    Picture1->setPicture(picture);
    Picture1->sizeToPicture();
    if (SetupPending) {
        fitWindow(); // the first activation does the rest
        return;
    }
    keepOriginal();
    takeNaturalSize();
    scrollToOrigin();
    RedrawImage();
}

/// Makes the window a little smaller, so that the ends of the scroll bars are the ends of the picture.
void Form2::fitWindow()
{
    for (QWidget* control : findChildren<QWidget*>())
        control->ensurePolished(); // only then does it know its size
    layout()->invalidate();
    layout()->activate();
    const auto surplus = [](int picture, int viewport) {
        return toPixels(missingOverhang(static_cast<float>(naturalExtent(toUnits(picture))) - toUnits(viewport)));
    };
    setFixedSize(size() -
                 QSize(surplus(Picture1->width(), Picture2->width()), surplus(Picture1->height(), Picture2->height())));
}

void Form2::describePicture(const std::string& description)
{
    Picture1->setAccessibleDescription(QString::fromStdString(description));
}

/// Every zoom is drawn from it.
void Form2::keepOriginal()
{
    Zoom_Ori->setPicture(Picture1->picture());
    Zoom_Ori->resize(Picture1->size());
}

void Form2::takeNaturalSize()
{
    OrigWidth = naturalExtent(toUnits(Zoom_Ori->width()));
    OrigHeight = naturalExtent(toUnits(Zoom_Ori->height()));
}

void Form2::Form_Activate()
{
    if (!SetupPending || Picture1->picture() == nullptr)
        return;           // a build that failed has no picture to set up the scroll bars for
    SetupPending = false; // at once: the error dialog of a step activates the window again
    ErrorTrap trap("Form2.Form_Activate");
    trap.step(10, [&] { Picture1->sizeToPicture(); });
    trap.step(20, [&] { keepOriginal(); });
    ZoomFactor = 1;
    trap.step(30, [&] { takeNaturalSize(); });
    trap.step(40, [&] { RedrawImage(); });
    trap.step(50, [&] { SetupScrollBars(); });
}

void Form2::RedrawImage()
{
    ErrorTrap trap("Form2.RedrawImage");
    trap.step(10, [&] { ZoomWidth = zoomedExtent(OrigWidth, ZoomFactor); });
    trap.step(20, [&] { ZoomHeight = zoomedExtent(OrigHeight, ZoomFactor); });
    if (!isDrawable(ZoomWidth, ZoomHeight)) {
        ZoomFactor = 1;
        trap.step(30, [&] { takeNaturalSize(); });
        ZoomWidth = OrigWidth;
        ZoomHeight = OrigHeight;
        return;
    }
    trap.step(40, [&] { Picture1->resize(QSize(ZoomWidth, ZoomHeight) * toPixels(1)); });
    trap.step(50, [&] {
        Picture1->paintPicture(Zoom_Ori->picture(), QSize(OrigWidth, OrigHeight), QSize(ZoomWidth, ZoomHeight));
    });
    trap.step(60, [&] { scrollToOrigin(); });
    HScroll1->setEnabled(toUnits(Picture2->width()) < static_cast<float>(ZoomWidth));
    VScroll1->setEnabled(toUnits(Picture2->height()) < static_cast<float>(ZoomHeight));
}

void Form2::scrollToOrigin()
{
    HScroll1->setValue(0);
    VScroll1->setValue(0);
    Picture1->move(0, 0); // with both bars at 0 already, a drag may have left it elsewhere
}

void Form2::SetupScrollBars()
{
    Picture1->move(0, 0);
    HScrollUnit = setUpScrollBar(*HScroll1, toUnits(Picture1->width()), toUnits(Picture2->width()));
    VScrollUnit = setUpScrollBar(*VScroll1, toUnits(Picture1->height()), toUnits(Picture2->height()));
}

void Form2::PushButton1_Click()
{
    ErrorTrap trap("Form2.PushButton1_Click");
    trap.step(10, [&] { StepZoom(ZoomDirection::In); });
}

void Form2::PushButton2_Click()
{
    ErrorTrap trap("Form2.PushButton2_Click");
    trap.step(10, [&] { StepZoom(ZoomDirection::Out); });
}

void Form2::StepZoom(ZoomDirection direction)
{
    SetZoom(ZoomFactor + (direction == ZoomDirection::In ? zoomStep : -zoomStep));
}

void Form2::SetZoom(float factor)
{
    if (factor < minZoom || factor > maxZoom)
        return;
    ZoomFactor = factor;
    RedrawImage();
}

void Form2::HScroll1_Change()
{
    Picture1->move(toPixels(scrolledPosition(HScrollUnit, toInt16(HScroll1->value()))), Picture1->y());
}

void Form2::VScroll1_Change()
{
    Picture1->move(Picture1->x(), toPixels(scrolledPosition(VScrollUnit, toInt16(VScroll1->value()))));
}

void Form2::SetHScrollbarByPercent(QScrollBar& scrollBar, std::int16_t percent)
{
    if (const auto value = horizontalScrollValue(percent, toInt16(scrollBar.maximum())))
        scrollBar.setValue(*value);
}

void Form2::SetVScrollbarByPercent(QScrollBar& scrollBar, std::int16_t percent)
{
    if (const auto value = verticalScrollValue(percent, toInt16(scrollBar.maximum())))
        scrollBar.setValue(*value);
}

void Form2::Picture1_MouseDown(float x, float y)
{
    ErrorTrap trap("Form2.picture1_MouseDown");
    DragStartX = x;
    DragStartY = y;
    trap.step(10, [&] { Picture1->setCursor(Qt::ClosedHandCursor); });
}

void Form2::Picture1_MouseMove(Qt::MouseButtons buttons, float x, float y)
{
    ErrorTrap trap("Form2.picture1_MouseMove");
    if (buttons == Qt::NoButton)
        return;
    const float newLeft = draggedPosition(toUnits(Picture1->x()) - DragStartX + x, toUnits(Picture2->width()),
                                          toUnits(Picture1->width()));
    const float newTop = draggedPosition(toUnits(Picture1->y()) - DragStartY + y, toUnits(Picture2->height()),
                                         toUnits(Picture1->height()));
    trap.step(10, [&] { Picture1->move(toPixels(newLeft), toPixels(newTop)); });
}

void Form2::Picture1_MouseUp()
{
    ErrorTrap trap("Form2.Picture1_MouseUp");
    std::int16_t hPercent = 0;
    std::int16_t vPercent = 0;
    trap.step(10, [&] { Picture1->setCursor(Qt::OpenHandCursor); });
    trap.step(20, [&] { hPercent = scrolledPercent(Picture1->x(), Picture1->width(), Picture2->width(), "wide"); });
    trap.step(30, [&] { vPercent = scrolledPercent(Picture1->y(), Picture1->height(), Picture2->height(), "high"); });
    trap.step(40, [&] { SetHScrollbarByPercent(*HScroll1, hPercent); });
    trap.step(50, [&] { SetVScrollbarByPercent(*VScroll1, vPercent); });
}

void Form2::PushButtonPrint_Click()
{
    printSheet(m_sheetOf(mExcelFile), showPrintDialog, *this);
}

void Form2::PushButton6_Click()
{
    ErrorTrap trap("Form2.PushButton6_Click");
    fs::path name;
    MessageAnswer answer = MessageAnswer::No;
    trap.step(10, [&] { name = CommonDialog1("Save File", "Excel Files (*.xls)|*.xls|", *this); });
    trap.step(20, [&] { answer = makeRoomFor(name); });
    if (answer == MessageAnswer::Yes)
        trap.step(47, [&] { copyFile(mExcelFile, name); });
    trap.step(50, [&] { showMessage({.text = "Done.", .title = {}}); });
}

/// Yes when the workbook is to be written under the name. A file of that name is deleted once the user agreed.
MessageAnswer Form2::makeRoomFor(const fs::path& name)
{
    if (name.empty())
        return MessageAnswer::No;
    if (!fileExists(name))
        return MessageAnswer::Yes;
    const MessageAnswer answer = showMessage({.text = "Are you sure you wish to overwrite " + name.string() + " ?",
                                              .title = {},
                                              .buttons = MessageButtons::YesNo});
    if (answer == MessageAnswer::Yes && !isSameFile(name, mExcelFile)) // else it would be lost before it was copied
        deleteFileQuietly(name);
    return answer;
}

void Form2::PushButton8_Click()
{
    ErrorTrap trap("Form2.PushButton8_Click");
    trap.step(10, [&] { deleteFileQuietly(mExcelFile); });
    trap.step(20, [&] { m_showEntryWindow(); });
    trap.step(30, [&] { hide(); });
}

void Form2::Form_QueryUnload()
{
    deleteFileQuietly(mExcelFile);
    processWindowEvents();
    processWindowEvents();
}

void Form2::Form_Unload()
{
    endProgram();
}

bool Form2::event(QEvent* event)
{
    const bool isHandled = QWidget::event(event);
    if (event->type() == QEvent::WindowActivate)
        Form_Activate();
    return isHandled;
}

/// However the window was left, it opens with the focus on its first control.
void Form2::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (!event->spontaneous())
        PushButton1->setFocus();
}

void Form2::closeEvent(QCloseEvent* event)
{
    Form_QueryUnload();
    event->accept();
    Form_Unload();
}

/// The wheel over the picture turns the scroll bars; with Ctrl it zooms a step a notch, of which fine wheels send
/// parts.
void Form2::wheelEvent(QWheelEvent* event)
{
    const QPoint turn = event->angleDelta();
    if ((event->modifiers() & Qt::ControlModifier) != 0) {
        for (m_zoomTurn += turn.y(); m_zoomTurn >= wheelNotch; m_zoomTurn -= wheelNotch)
            PushButton1_Click();
        for (; m_zoomTurn <= -wheelNotch; m_zoomTurn += wheelNotch)
            PushButton2_Click();
        return;
    }
    QScrollBar* scrollBar = std::abs(turn.x()) > std::abs(turn.y()) ? HScroll1 : VScroll1;
    if (scrollBar->isEnabled())
        QCoreApplication::sendEvent(scrollBar, event);
}

} // namespace wagemill
