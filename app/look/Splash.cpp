#include "app/look/Splash.h"

#include "app/base/ErrorTrap.h"
#include "app/base/Files.h"
#include "app/base/Messages.h"
#include "app/look/Look.h"
#include "settings/Settings.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QFile>
#include <QFrame>
#include <QImageReader>
#include <QLabel>
#include <QPixmap>
#include <QTime>

#include <chrono>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>

namespace wagemill {

namespace fs = std::filesystem;

namespace {

constexpr double secondsOfDay = 86400;
constexpr double shownSeconds = 4;
constexpr double shownSecondsInDevelopment = 0.4;
constexpr std::chrono::milliseconds restBetweenEvents(5); // so that waiting does not keep a core busy

constexpr int twipsInPixel = 15;
constexpr int stripTwips = 300;
constexpr int gapBelowCheckTwips = 20;
constexpr int lineLengthTwips = 10000; // longer than most pictures; the window clips it
constexpr int lineFromEdgeTwips = 10;

/// The first file in the file system's own order, empty when there is none. Folders and hidden files do not count.
fs::path firstSplashFile()
{
    std::error_code error;
    for (fs::directory_iterator entry(besideProgram("/Splash/"), error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (!entry->is_directory(error) && !name.starts_with('.'))
            return besideProgram("/Splash/" + name);
    }
    return {};
}

} // namespace

double secondsSinceMidnight()
{
    return QTime::currentTime().msecsSinceStartOfDay() / 1000.0;
}

Splash::Splash(std::function<double()> clock)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint),
      Image1(new QLabel(this)),
      Check1(new QCheckBox(QStringLiteral("Hide this at next startup"), this)),
      m_clock(std::move(clock))
{
    setObjectName(QStringLiteral("Splash"));
    Image1->setObjectName(QStringLiteral("Image1"));
    Image1->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    Check1->setObjectName(QStringLiteral("Check1"));
    for (std::size_t index = 0; QFrame * &line : m_lines) {
        line = new QFrame(this);
        line->setObjectName(QStringLiteral("Line%1").arg(++index));
        line->setFrameStyle((index % 2 == 1 ? QFrame::VLine : QFrame::HLine) | QFrame::Plain);
    }
    applyDesignFont(*this);
    connect(Check1, &QCheckBox::clicked, this, [this] { handleEvent([this] { Check1_Click(); }); });
}

void Splash::Check1_Click()
{
    SaveSetting("Quellory", "Wagemill", "ShowAgain", Check1->isChecked() ? "1" : "0");
}

void Splash::SplashShow()
{
    const std::string hidden = GetSetting("Quellory", "Wagemill", "ShowAgain", "0");
    if (QString::fromStdString(hidden).toDouble() != 0)
        return;
    const fs::path file = firstSplashFile();
    if (file.empty() || !fileExists(file))
        return;
    setWindowTitle(QString::fromUtf8(productTitle.data(), productTitle.size()));
    loadImage(file);
    placeControls();
    show();
    waitSeconds(isDevelopmentRun() ? shownSecondsInDevelopment : shownSeconds);
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
    Image1->setGeometry(0, 0, image.width(), image.height() + stripTwips / twipsInPixel);
}

void Splash::placeControls()
{
    setFixedSize(Image1->size());
    Check1->adjustSize();
    const int top = (Image1->height() - Check1->height()) * twipsInPixel - gapBelowCheckTwips;
    Check1->move(Check1->fontMetrics().averageCharWidth(), top / twipsInPixel);
    placeLines();
}

void Splash::placeLines()
{
    const int length = lineLengthTwips / twipsInPixel;
    const int right = (Image1->width() * twipsInPixel - lineFromEdgeTwips) / twipsInPixel;
    const int bottom = (Image1->height() * twipsInPixel - lineFromEdgeTwips) / twipsInPixel;
    m_lines[0]->setGeometry(0, 0, 1, length);
    m_lines[1]->setGeometry(0, 0, length, 1);
    m_lines[2]->setGeometry(right, 0, 1, length);
    m_lines[3]->setGeometry(0, bottom, length, 1);
}

/// A clock that runs backwards passed midnight, or was set back; both ends count on from there.
void Splash::waitSeconds(double seconds) const
{
    const double start = m_clock();
    const auto passed = [&] {
        const double difference = m_clock() - start;
        return difference < 0 ? difference + secondsOfDay : difference;
    };
    while (passed() < seconds) {
        QCoreApplication::processEvents(); // clicks too: the box can be ticked
        std::this_thread::sleep_for(restBetweenEvents);
    }
}

} // namespace wagemill
