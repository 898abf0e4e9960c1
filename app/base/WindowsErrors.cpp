#include "app/base/WindowsErrors.h"

#include "app/base/Messages.h"
#include "app/base/text/WideText.h"

#include <windows.h>

#include <array>

namespace wagemill {

namespace {

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

std::string systemErrorText(unsigned long code)
{
    constexpr DWORD flags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
    std::array<wchar_t, 1024> buffer;
    const DWORD length = ::FormatMessageW(flags, nullptr, code, 0, buffer.data(), buffer.size(), nullptr);
    const std::string text = withoutFullStop(toUtf8(std::wstring_view(buffer.data(), length)));
    return text.empty() ? "error " + std::to_string(code) : text;
}

const std::error_category& windowsErrors()
{
    static const WindowsErrorCategory category;
    return category;
}

} // namespace wagemill
