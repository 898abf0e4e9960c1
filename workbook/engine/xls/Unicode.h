#pragma once

namespace wagemill::engine::xls {

/// The capital of a letter of the Latin, Greek or Cyrillic alphabet, for comparing names; any other unit as it is.
char16_t upperCase(char16_t unit);

} // namespace wagemill::engine::xls
