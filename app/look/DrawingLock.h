#pragma once

class QWidget;

namespace wagemill {

/// Holds back the drawing of a window and of all in it; one window at a time. Where the platform refuses, the window is
/// drawn as ever: nothing fails.
void lockDrawing(QWidget& window);
/// The locked window draws again, at once what it has missed.
void unlockDrawing(QWidget& window);

} // namespace wagemill
