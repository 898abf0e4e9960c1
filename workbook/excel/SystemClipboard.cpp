#include "workbook/excel/ExcelSession.h"
#include "workbook/excel/PackedBitmap.h"

#include <windows.h>

#include <chrono>
#include <thread>

namespace wagemill {

namespace {

/// The clipboard, open for as long as this object lives. No other program can open it meanwhile.
class OpenClipboardScope {
public:
    /// Waits for another program up to two milliseconds, which the system's timer cannot measure out.
    OpenClipboardScope()
    {
        using Clock = std::chrono::steady_clock;
        const auto end = Clock::now() + std::chrono::milliseconds(2);
        while (!::OpenClipboard(nullptr)) {
            if (Clock::now() >= end)
                throw SpreadsheetError("the clipboard cannot be opened, because another program holds it");
            std::this_thread::yield();
        }
    }
    OpenClipboardScope(const OpenClipboardScope&) = delete;
    OpenClipboardScope& operator=(const OpenClipboardScope&) = delete;
    ~OpenClipboardScope() { ::CloseClipboard(); }
};

/// The program that copied may draw its picture only now; the object stays the clipboard's.
HANDLE clipboardObject(UINT format)
{
    const HANDLE object = ::GetClipboardData(format);
    if (object == nullptr)
        throw SpreadsheetError("the clipboard does not hand over its picture");
    return object;
}

std::vector<std::byte> bitmapOnClipboard()
{
    const HANDLE object = clipboardObject(CF_DIB);
    const auto unlock = [object](const void*) { ::GlobalUnlock(object); };
    const std::unique_ptr<const void, decltype(unlock)> bytes(::GlobalLock(object), unlock);
    return fileOfPackedBitmap({static_cast<const std::byte*>(bytes.get()), bytes ? ::GlobalSize(object) : 0});
}

std::vector<std::byte> metafileOnClipboard()
{
    const auto metafile = static_cast<HENHMETAFILE>(clipboardObject(CF_ENHMETAFILE));
    std::vector<std::byte> file(::GetEnhMetaFileBits(metafile, 0, nullptr));
    const UINT copied =
        ::GetEnhMetaFileBits(metafile, static_cast<UINT>(file.size()), reinterpret_cast<BYTE*>(file.data()));
    if (copied == 0)
        throw SpreadsheetError("the clipboard's metafile cannot be read");
    return file;
}

bool isBitmap(UINT format)
{
    return format == CF_BITMAP || format == CF_DIB || format == CF_DIBV5;
}

bool isMetafile(UINT format)
{
    return format == CF_METAFILEPICT || format == CF_ENHMETAFILE;
}

/// The first picture format on the clipboard: its owner puts the best one first. 0 when there is none.
UINT firstPictureFormat()
{
    UINT format = ::EnumClipboardFormats(0);
    while (format != 0 && !isBitmap(format) && !isMetafile(format))
        format = ::EnumClipboardFormats(format);
    return format;
}

class SystemClipboard : public PictureClipboard {
public:
    Picture GetData(std::int16_t format) override
    {
        const OpenClipboardScope open;
        const UINT found = format == 0 ? firstPictureFormat() : static_cast<UINT>(format);
        if ((!isBitmap(found) && !isMetafile(found)) || !::IsClipboardFormatAvailable(found))
            throw SpreadsheetError("the clipboard holds no picture");
        // The system turns every bitmap on the clipboard into a device independent one, and every metafile into an
        // enhanced one, when it is asked for that.
        return {std::make_shared<const std::vector<std::byte>>(isBitmap(found) ? bitmapOnClipboard()
                                                                               : metafileOnClipboard())};
    }
};

} // namespace

PictureClipboard& systemPictureClipboard()
{
    static SystemClipboard clipboard;
    return clipboard;
}

} // namespace wagemill
