#pragma once

namespace wagemill {

/// Gives freed memory back to the system, which the C library else keeps for its next use.
void returnFreedMemory();

} // namespace wagemill
