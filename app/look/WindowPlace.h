#pragma once

class QWidget;

namespace wagemill {

/// From now on a window that was hidden comes back where it was, not where the window manager would put a new one.
void keepPlace(QWidget& window);

} // namespace wagemill
