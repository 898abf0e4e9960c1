#pragma once

#include "app/base/text/Unicode.h"

/// Texts as the Windows interfaces take and give them; only where a wchar_t is a unit of UTF-16.
namespace wagemill {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

inline std::wstring toWide(std::string_view utf8)
{
    const std::u16string units = toUtf16(utf8);
    return {units.begin(), units.end()};
}

inline std::string toUtf8(std::wstring_view wide)
{
    return toUtf8(std::u16string(wide.begin(), wide.end()));
}

} // namespace wagemill
