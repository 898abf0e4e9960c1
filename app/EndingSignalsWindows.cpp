#include "app/EndingSignals.h"

namespace wagemill {

/// Windows asks a program that has windows to end by closing them, so there is nothing to listen to.
void endProgramOnSignals()
{
}

} // namespace wagemill
