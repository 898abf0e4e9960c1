#include "app/look/Look.h"

#include "app/base/Files.h"
#include "app/base/text/Unicode.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QRadioButton>
#include <QWidget>

#include <algorithm>
#include <stdexcept>

namespace wagemill {

namespace {

constexpr std::string_view skinName = "/x/o.cjs";
constexpr std::int32_t skinTheControls = 1;
constexpr std::size_t longestApplicationTitle = 40;

enum class PictureBoxes { LeaveAlone, Include };

template <typename... Kinds>
bool isOneOf(const QWidget& control)
{
    return ((qobject_cast<const Kinds*>(&control) != nullptr) || ...);
}

/// A picture box is a plain frame; text areas, lists and labels build on frames but are no picture boxes.
bool isPictureBox(const QWidget& control)
{
    return control.metaObject() == &QFrame::staticMetaObject;
}

/// The role, not its colour of today: the window follows the user when the desktop turns dark.
void setNeutralBackground(QWidget& widget)
{
    widget.setBackgroundRole(QPalette::Button);
    widget.setAutoFillBackground(true);
}

void setNeutralBackgrounds(QWidget& window, PictureBoxes pictureBoxes)
{
    setNeutralBackground(window);
    for (QWidget* control : window.findChildren<QWidget*>())
        if (isOneOf<QLabel, QRadioButton, QCheckBox, QGroupBox>(*control) ||
            (pictureBoxes == PictureBoxes::Include && isPictureBox(*control)))
            setNeutralBackground(*control);
}

/// Whether listing the folder that holds the path yields its name.
bool isListed(const std::filesystem::path& path)
{
    std::error_code error;
    for (std::filesystem::directory_iterator entry(path.parent_path(), error), end; !error && entry != end;
         entry.increment(error))
        if (entry->path().filename() == path.filename())
            return true;
    return false;
}

} // namespace

std::unique_ptr<SkinningControl> createSkinningControl()
{
    return skinningControlFor(besideProgram(skinName));
}

void applyMainWindowSkin(QWidget& mainWindow, SkinningControl* skin)
{
    const std::filesystem::path skinFile = besideProgram(skinName);
    if (!isListed(skinFile))
        return;
    setNeutralBackgrounds(mainWindow, PictureBoxes::Include);
    if (skin == nullptr)
        return;
    skin->loadSkin(skinFile, "");
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

std::string shortenedTitle(std::string_view title)
{
    std::string_view remaining = title;
    do {
        const std::size_t lastBlank = remaining.rfind(' ');
        if (lastBlank == std::string_view::npos)
            throw std::invalid_argument("The title \"" + std::string(title) +
                                        "\" cannot be shortened: it has no blank to cut at.");
        remaining = remaining.substr(0, lastBlank);
    } while (characterCount(remaining) > longestApplicationTitle);
    return std::string(remaining);
}

void makeApplicationTitle(std::string_view title)
{
    // Not the application's display name: the platform would append that to the caption of every window.
    QCoreApplication::setApplicationName(QString::fromStdString(shortenedTitle(title)));
}

std::string applicationTitle()
{
    return QCoreApplication::applicationName().toStdString();
}

} // namespace wagemill
