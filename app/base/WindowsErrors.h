#pragma once

#include <string>
#include <system_error>

namespace wagemill {

/// What the system says of an error number (GetLastError, a registry status, an HRESULT), in the user's language and
/// without a full stop: "Access is denied". "error 1234" for a number that the system has no text for.
std::string systemErrorText(unsigned long code);

/// The category of such numbers in a std::system_error.
const std::error_category& windowsErrors();

} // namespace wagemill
