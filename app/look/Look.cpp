#include "app/look/Look.h"

#include "app/base/Files.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFrame>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace wagemill {

namespace {

constexpr std::string_view skinName = "/x/o.cjs";
constexpr std::int32_t skinTheControls = 1;
constexpr qsizetype maxApplicationTitle = 40; // characters

constexpr const char* neutralControls[] = {"QLabel", "QRadioButton", "QCheckBox", "QGroupBox"};

enum class PictureBoxes { LeaveAlone, Include };

/// The role, not its colour of today: the window follows the user when the desktop turns dark.
void setNeutralBackground(QWidget& widget)
{
    widget.setBackgroundRole(QPalette::Button);
    widget.setAutoFillBackground(true);
}

void setNeutralBackgrounds(QWidget& window, PictureBoxes pictureBoxes)
{
    setNeutralBackground(window);
    for (QWidget* control : window.findChildren<QWidget*>()) {
        const bool isNeutral = std::ranges::any_of(neutralControls, [&](auto kind) { return control->inherits(kind); });
        // A picture box is a plain frame; text areas, lists and labels build on frames but are not picture boxes.
        const bool isPictureBox = control->metaObject() == &QFrame::staticMetaObject;
        if (isNeutral || (isPictureBox && pictureBoxes == PictureBoxes::Include))
            setNeutralBackground(*control);
    }
}

class PlaceKeeper : public QObject {
public:
    explicit PlaceKeeper(QWidget& window) : QObject(&window), m_window(window) { window.installEventFilter(this); }

protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        if (event->type() == QEvent::Hide && !event->spontaneous())
            m_place = m_window.geometry().topLeft();
        else if (event->type() == QEvent::Show && !event->spontaneous() && m_place)
            m_window.windowHandle()->setPosition(*m_place);
        return false;
    }

private:
    QWidget& m_window;
    std::optional<QPoint> m_place; ///< inside its frame; none until the window was hidden
};

} // namespace

std::unique_ptr<SkinningControl> createSkinningControl()
{
    return skinningControlFor(besideProgram(skinName));
}

void applyMainWindowSkin(QWidget& mainWindow, SkinningControl* skin)
{
    const std::filesystem::path skinFile = besideProgram(skinName);
    if (std::error_code error; !exists(symlink_status(skinFile, error))) // a link that leads nowhere is a faulty skin
        return;
    setNeutralBackgrounds(mainWindow, PictureBoxes::Include);
    if (skin == nullptr)
        return;
    skin->loadSkin(skinFile);
    skin->setOptions(skin->options() | skinTheControls);
    skin->setFlag(5, true);
    skin->setFlag(10, true);
    skin->applyWindow(mainWindow.winId());
}

void applyPlainBackground(QWidget& window)
{
    setNeutralBackgrounds(window, PictureBoxes::LeaveAlone);
}

void applyDesignFont(QWidget& window)
{
    QFont font = window.font();
    font.setFamily(QStringLiteral("Arial"));
    window.setFont(font);
}

void keepPlace(QWidget& window)
{
    new PlaceKeeper(window);
}

void makeApplicationTitle(QString title)
{
    const std::string whole = title.toStdString();
    do {
        const auto lastBlank = title.lastIndexOf(u' ');
        if (lastBlank < 0)
            throw std::invalid_argument("The title \"" + whole + "\" cannot be shortened: it has no blank to cut at.");
        title.truncate(lastBlank);
    } while (title.size() > maxApplicationTitle);
    // Not the application's display name: the platform would append that to the caption of every window.
    QCoreApplication::setApplicationName(title);
}

} // namespace wagemill
