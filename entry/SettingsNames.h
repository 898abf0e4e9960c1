#pragma once

#include <string_view>

namespace wagemill {

/// Where the entry window's values lie in the settings store.
inline constexpr std::string_view settingsApplication = "Quellory";
inline constexpr std::string_view settingsSection = "Wagemill";

} // namespace wagemill
