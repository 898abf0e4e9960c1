#pragma once

#include <string>
#include <string_view>
#include <system_error>

/// Texts as the Windows interfaces take and give them. Built on Windows alone.
namespace wagemill {

/// UTF-8 to UTF-16 and back; what is no valid sequence becomes U+FFFD. Zero characters pass through.
std::wstring toWide(std::string_view utf8);
std::string toUtf8(std::wstring_view wide);

/// What the system says of an error number (GetLastError, a registry status, an HRESULT), in the user's language and
/// without a full stop: "Access is denied". "error 1234" for a number that the system has no text for.
std::string systemErrorText(unsigned long code);

/// The category of such numbers in a std::system_error.
const std::error_category& windowsErrors();

} // namespace wagemill
