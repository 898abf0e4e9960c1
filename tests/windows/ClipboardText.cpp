// Prints the text on the clipboard, as UTF-8; ends with 1 when there is none.
#include "app/base/text/WideText.h"

#include <windows.h>

#include <cstdio>
#include <fcntl.h>
#include <io.h>

int main()
{
    ::_setmode(::_fileno(stdout), _O_BINARY); // line ends as they are
    if (!::OpenClipboard(nullptr))
        return 1;
    const HANDLE data = ::GetClipboardData(CF_UNICODETEXT);
    const auto* const text = data == nullptr ? nullptr : static_cast<const wchar_t*>(::GlobalLock(data));
    if (text != nullptr)
        std::fputs(wagemill::toUtf8(text).c_str(), stdout);
    ::CloseClipboard();
    return text == nullptr ? 1 : 0;
}
