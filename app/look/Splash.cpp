#include "app/look/Splash.h"

#include "app/base/ErrorTrap.h"
#include "app/base/Files.h"
#include "app/base/Messages.h"
#include "app/look/Controls.h"
#include "app/look/Look.h"
#include "settings/Settings.h"

#include <QCheckBox>
#include <QDirIterator>
#include <QEventLoop>
#include <QFile>
#include <QFrame>
#include <QImageReader>
#include <QLabel>
#include <QPixmap>
#include <QTimer>

#include <chrono>
#include <stdexcept>
#include <string>

namespace wagemill {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view showAgainKey = "ShowAgain"; // "1" hides it, whatever the name says
constexpr std::chrono::milliseconds shown(4000);
constexpr std::chrono::milliseconds shownInDevelopment(400);

constexpr int stripHeight = 20;
constexpr int gapBelowCheck = 2;
constexpr int lineLength = 666; // longer than most pictures; the window clips it

/// The first file in the file system's own order, empty when there is none. Folders and hidden files do not count.
fs::path firstSplashFile()
{
    QDirIterator files(QDir(besideProgram("/Splash")).path(), QDir::Files);
    return files.hasNext() ? QFileInfo(files.next()).filesystemFilePath() : fs::path();
}

} // namespace

Splash::Splash()
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint),
      Image1(named(new QLabel(this), "Image1")),
      Check1(named(new QCheckBox(QStringLiteral("Hide this at next startup"), this), "Check1")),
      m_lines{named(new QFrame(this), "Line1"), named(new QFrame(this), "Line2"), named(new QFrame(this), "Line3"),
              named(new QFrame(this), "Line4")}
{
    setObjectName(QStringLiteral("Splash"));
    Image1->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    applyDesignFont(*this);
    connect(Check1, &QCheckBox::clicked, this, [this] { handleEvent([this] { Check1_Click(); }); });
}

void Splash::Check1_Click()
{
    SaveSetting(settingsApplication, settingsSection, showAgainKey, Check1->isChecked() ? "1" : "0");
}

void Splash::SplashShow()
{
    const std::string hidden = GetSetting(settingsApplication, settingsSection, showAgainKey, "0");
    if (QString::fromStdString(hidden).toDouble() != 0)
        return;
    const fs::path file = firstSplashFile();
    if (!fileExists(file))
        return;
    setWindowTitle(productTitle);
    loadImage(file);
    placeControls();
    show();
    QEventLoop events;
    QTimer::singleShot(isDevelopmentRun() ? shownInDevelopment : shown, Qt::PreciseTimer, &events, &QEventLoop::quit);
    events.exec();
    hide();
}

void Splash::loadImage(const fs::path& file)
{
    QFile bytes(file);
    QImageReader reader(&bytes);
    const QImage image = bytes.open(QIODevice::ReadOnly) ? reader.read() : QImage();
    if (image.isNull()) {
        const QString reason = bytes.isOpen() ? reader.errorString() : bytes.errorString();
        throw std::runtime_error("Cannot show the picture \"" + file.string() +
                                 "\": " + withoutFullStop(reason.toStdString()) + ".");
    }
    Image1->setPixmap(QPixmap::fromImage(image));
    Image1->setGeometry(0, 0, image.width(), image.height() + stripHeight);
}

void Splash::placeControls()
{
    setFixedSize(Image1->size());
    Check1->adjustSize();
    Check1->move(Check1->fontMetrics().averageCharWidth(), height() - Check1->height() - gapBelowCheck);

    const QRect places[] = {{0, 0, 1, lineLength},
                            {0, 0, lineLength, 1},
                            {width() - 1, 0, 1, lineLength},
                            {0, height() - 1, lineLength, 1}};
    for (std::size_t line = 0; line < m_lines.size(); ++line) {
        m_lines[line]->setFrameStyle(QFrame::Box | QFrame::Plain);
        m_lines[line]->setGeometry(places[line]);
    }
}

} // namespace wagemill
