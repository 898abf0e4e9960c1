#pragma once

#include <string_view>

namespace wagemill {

/// The maker's online contact form.
inline constexpr std::string_view contactAddress = "https://quellory.example/contact";

/// What the Help button does: shows where to reach the maker's support team. Failures are reported here.
void showHelpMessage();

} // namespace wagemill
