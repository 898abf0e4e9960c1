#include "tests/excel/server/ClipboardMetafile.h"

#include "drawing/DrawingFile.h"
#include "drawing/DrawingPainter.h"
#include "workbook/spreadsheet/Spreadsheet.h"

#include <QImage>
#include <QPainter>

#include <windows.h>

#include <utility>

namespace wagemill::test {

namespace {

/// A length in pixels at 96 dots per inch, in hundredths of a millimetre.
LONG hundredthsOfMillimetre(LONG pixels)
{
    return ::MulDiv(pixels, 2540, 96);
}

/// That length in the pixels of the screen, which a metafile is drawn in.
int screenPixels(HDC screen, LONG length, int pixels, int millimetres)
{
    return ::MulDiv(length, ::GetDeviceCaps(screen, pixels), 100 * ::GetDeviceCaps(screen, millimetres));
}

QImage painted(const drawing::Drawing& drawing)
{
    QImage image(static_cast<int>(drawing.width), static_cast<int>(drawing.height), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    DrawingPainter(drawing).paint(painter, image.rect());
    return image;
}

HENHMETAFILE metafileOf(const QImage& image)
{
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = image.width();
    info.bmiHeader.biHeight = -image.height(); // the first row is the top one
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = static_cast<WORD>(image.depth());
    const RECT frame = {0, 0, hundredthsOfMillimetre(image.width()), hundredthsOfMillimetre(image.height())};
    const HDC screen = ::GetDC(nullptr);
    const HDC recorder = ::CreateEnhMetaFileW(screen, nullptr, &frame, nullptr);
    ::StretchDIBits(recorder, 0, 0, screenPixels(screen, frame.right, HORZRES, HORZSIZE),
                    screenPixels(screen, frame.bottom, VERTRES, VERTSIZE), 0, 0, image.width(), image.height(),
                    image.constBits(), &info, DIB_RGB_COLORS, SRCCOPY);
    ::ReleaseDC(nullptr, screen);
    return ::CloseEnhMetaFile(recorder);
}

std::vector<std::byte> copiedFile;

/// The clipboard is open: by us, or by whoever fetches what is on it.
void putCopiedFile()
{
    const HENHMETAFILE metafile = metafileOf(painted(readDrawingFile(copiedFile)));
    if (::SetClipboardData(CF_ENHMETAFILE, metafile) == nullptr) // else the clipboard's from now on
        ::DeleteEnhMetaFile(metafile);
}

LRESULT CALLBACK receive(HWND window, UINT message, WPARAM word, LPARAM longWord)
{
    if (message != WM_RENDERFORMAT)
        return ::DefWindowProcW(window, message, word, longWord);
    ::Sleep(100); // as long as drawing a large sheet
    putCopiedFile();
    return 0;
}

HWND makeClipboardOwner()
{
    const HWND window =
        ::CreateWindowExW(0, L"STATIC", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    ::SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&receive));
    return window;
}

} // namespace

void copyAsMetafile(std::vector<std::byte> drawingFile, bool drawsLate)
{
    static const HWND owner = makeClipboardOwner();
    if (!::OpenClipboard(owner))
        throw SpreadsheetError("CopyPicture failed: another program holds the clipboard.");
    ::EmptyClipboard();
    copiedFile = std::move(drawingFile);
    if (drawsLate)
        ::SetClipboardData(CF_ENHMETAFILE, nullptr);
    else
        putCopiedFile();
    ::CloseClipboard();
}

} // namespace wagemill::test
