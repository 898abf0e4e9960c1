#pragma once

#include <QWidget>

#include <array>
#include <filesystem>

class QCheckBox;
class QFrame;
class QLabel;

namespace wagemill {

/// A picture that is shown for a few seconds, with the wish not to see it again. The window has no title bar: its size
/// is the picture's and the strip's below it, and a title bar would push the check box out.
class Splash : public QWidget {
public:
    Splash();

    /// Shows the first picture of the folder "Splash" beside the program for four seconds, 0.4 in a development run,
    /// unless the user hid it or there is none. Window events run meanwhile: the box can be ticked.
    /// Throws std::runtime_error that names the file and the reason when it is not a picture.
    void SplashShow();

private:
    void Check1_Click();
    void loadImage(const std::filesystem::path& file);
    void placeControls();

    QLabel* Image1;
    QCheckBox* Check1;
    std::array<QFrame*, 4> m_lines; ///< Line1 to Line4
};

} // namespace wagemill
