#include "app/base/WindowsText.h"

#include "app/base/Messages.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <limits>

namespace wagemill {

namespace {

/// No text of ours comes near the length that the conversions can take; one that does is cut rather than refused.
int convertibleLength(std::size_t length)
{
    return static_cast<int>(std::min<std::size_t>(length, std::numeric_limits<int>::max()));
}

/// The standard library's own category may speak in another encoding than ours.
class WindowsErrorCategory : public std::error_category {
public:
    const char* name() const noexcept override { return "windows"; }
    std::string message(int code) const override
    {
        if (code == ERROR_SHARING_VIOLATION || code == ERROR_LOCK_VIOLATION)
            return "it is open in another program. Please close it there and try again";
        return systemErrorText(static_cast<unsigned long>(code));
    }
};

} // namespace

std::wstring toWide(std::string_view utf8)
{
    const int length = convertibleLength(utf8.size());
    const int size = ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, wide.data(), size);
    return wide;
}

std::string toUtf8(std::wstring_view wide)
{
    const int length = convertibleLength(wide.size());
    const int size = ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(size), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, utf8.data(), size, nullptr, nullptr);
    return utf8;
}

std::string systemErrorText(unsigned long code)
{
    constexpr DWORD flags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
    std::array<wchar_t, 1024> buffer;
    const DWORD length = ::FormatMessageW(flags, nullptr, code, 0, buffer.data(), buffer.size(), nullptr);
    const std::string text = withoutFullStop(toUtf8({buffer.data(), length}));
    return text.empty() ? "error " + std::to_string(code) : text;
}

const std::error_category& windowsErrors()
{
    static const WindowsErrorCategory category;
    return category;
}

} // namespace wagemill
