#pragma once

#include <QWidget>

#include <array>
#include <filesystem>
#include <functional>

class QCheckBox;
class QFrame;
class QLabel;

namespace wagemill {

/// The local time in seconds since midnight, with its fraction.
double secondsSinceMidnight();

/// A picture that is shown for a few seconds, with the wish not to see it again. The window has no title bar: its size
/// is the picture's and the strip's below it, and a title bar would push the check box out.
class Splash : public QWidget {
    Q_OBJECT

public:
    /// clock  seconds since midnight; at midnight it starts again from 0
    explicit Splash(std::function<double()> clock = secondsSinceMidnight);

    /// Shows the first picture of the folder "Splash" beside the program for four seconds, 0.4 in a development run,
    /// unless the user hid it or there is none. Window events run meanwhile.
    /// Throws std::runtime_error that names the file and the reason when it is no picture.
    void SplashShow();

private:
    void Check1_Click();
    void loadImage(const std::filesystem::path& file);
    void placeControls();
    void placeLines();
    void waitSeconds(double seconds) const;

    QLabel* Image1;
    QCheckBox* Check1;
    std::array<QFrame*, 4> m_lines; ///< Line1 to Line4
    std::function<double()> m_clock;
};

} // namespace wagemill
