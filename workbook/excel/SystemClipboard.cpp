#include "workbook/excel/ExcelSession.h"
#include "workbook/excel/PackedBitmap.h"

#include <windows.h>

#include <algorithm>
#include <array>
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

/// The bytes of a memory object of the clipboard, which stays the clipboard's.
class LockedMemory {
public:
    explicit LockedMemory(HGLOBAL memory) : m_memory(memory), m_bytes(::GlobalLock(memory)) {}
    LockedMemory(const LockedMemory&) = delete;
    LockedMemory& operator=(const LockedMemory&) = delete;
    ~LockedMemory() { ::GlobalUnlock(m_memory); }

    std::span<const std::byte> bytes() const
    {
        return {static_cast<const std::byte*>(m_bytes), m_bytes != nullptr ? ::GlobalSize(m_memory) : 0};
    }

private:
    HGLOBAL m_memory;
    const void* m_bytes;
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
    return fileOfPackedBitmap(LockedMemory(clipboardObject(CF_DIB)).bytes());
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

struct PictureFormat {
    UINT code;
    std::vector<std::byte> (*fileBytes)();
};

/// The system turns every bitmap on the clipboard into a device independent one, and every metafile into an enhanced
/// one, when it is asked for that.
constexpr std::array<PictureFormat, 5> pictureFormats = {{
    {CF_BITMAP, bitmapOnClipboard},
    {CF_DIB, bitmapOnClipboard},
    {CF_DIBV5, bitmapOnClipboard},
    {CF_METAFILEPICT, metafileOnClipboard},
    {CF_ENHMETAFILE, metafileOnClipboard},
}};

const PictureFormat* pictureFormat(UINT code)
{
    const auto* const found = std::ranges::find(pictureFormats, code, &PictureFormat::code);
    return found != pictureFormats.end() ? found : nullptr;
}

/// The first picture format on the clipboard: its owner puts the best one first. Null when there is none.
const PictureFormat* firstPictureFormat()
{
    for (UINT code = ::EnumClipboardFormats(0); code != 0; code = ::EnumClipboardFormats(code))
        if (const PictureFormat* format = pictureFormat(code))
            return format;
    return nullptr;
}

class SystemClipboard : public PictureClipboard {
public:
    Picture GetData(std::int16_t format) override
    {
        const OpenClipboardScope open;
        const auto code = static_cast<UINT>(format);
        const PictureFormat* found = code == 0 ? firstPictureFormat() : pictureFormat(code);
        if (found == nullptr || !::IsClipboardFormatAvailable(found->code))
            throw SpreadsheetError("the clipboard holds no picture");
        return {std::make_shared<const std::vector<std::byte>>(found->fileBytes())};
    }
};

} // namespace

PictureClipboard& systemPictureClipboard()
{
    static SystemClipboard clipboard;
    return clipboard;
}

} // namespace wagemill
