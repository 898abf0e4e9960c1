#pragma once

namespace wagemill {

/// From now on a signal that asks the program to end closes its windows, as the user would: the preview deletes its
/// workbook, and the run's own temporary folder is removed. A build that is under way is finished first. Needs the
/// application object.
void endProgramOnSignals();

} // namespace wagemill
