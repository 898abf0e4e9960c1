#include "tests/excel/server/ServedApplication.h"

#include "app/look/UserRegion.h"
#include "drawing/DrawingFile.h"
#include "tests/excel/server/AutomationObject.h"
#include "tests/support/DrawnMetafile.h"
#include "workbook/embedded/EmbeddedApplication.h"

#include <QLocale>

namespace wagemill::test {

namespace {

EmbeddedPictureClipboard pictures;

/// The picture is drawn when somebody fetches it.
LRESULT CALLBACK receive(HWND window, UINT message, WPARAM word, LPARAM longWord)
{
    if (message == WM_RENDERFORMAT)
        ::SetClipboardData(CF_ENHMETAFILE, metafileOf(readDrawingFile(*pictures.GetData(0).fileBytes)));
    return ::DefWindowProcW(window, message, word, longWord);
}

HWND makeClipboardOwner()
{
    const HWND window =
        ::CreateWindowExW(0, L"STATIC", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    ::SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&receive));
    return window;
}

void copyPicture(CellRange& range)
{
    static const HWND owner = makeClipboardOwner();
    range.CopyPicture();
    if (!::OpenClipboard(owner))
        throw SpreadsheetError("CopyPicture failed: another program holds the clipboard.");
    ::EmptyClipboard();
    ::SetClipboardData(CF_ENHMETAFILE, nullptr);
    ::CloseClipboard();
}

/// Templates are opened for reading alone, workbooks never.
std::unique_ptr<Workbook> open(Workbooks& books, const std::string& path, bool isReadOnly)
{
    if (path.ends_with(".xlt") != isReadOnly)
        throw SpreadsheetError("Open failed: " + path + " is opened in the wrong way.");
    return isReadOnly ? books.OpenReadOnly(path) : books.Open(path);
}

void saveAs(Workbook& book, const std::string& path, std::int32_t format)
{
    if (format != (instruction("version").empty() ? 56 : -4143))
        throw SpreadsheetError("SaveAs failed: the format is another version's.");
    book.SaveAs(path, static_cast<FileFormat>(format));
}

void paste(Selection& selection, std::int32_t type, std::int32_t operation, bool skipsBlanks, bool transposes)
{
    selection.PasteSpecial(static_cast<PasteType>(type), static_cast<PasteOperation>(operation), skipsBlanks,
                           transposes);
}

} // namespace

using enum automation::CallKind;
using std::int16_t;
using std::int32_t;
using std::string;

template <>
std::vector<Member> membersOf(std::shared_ptr<CellRange> range)
{
    return {{"Rows", Get, [=] { return range->Rows(); }},
            {"Rows", GetItem, [=](int32_t index) { return range->Rows(index); }},
            {"Columns", Get, [=] { return range->Columns(); }},
            {"Columns", GetItem, [=](int32_t index) { return range->Columns(index); }},
            {"count", Get, [=] { return range->count(); }},
            {"Row", Get, [=] { return range->Row(); }},
            {"Column", Get, [=] { return range->Column(); }},
            {"Select", Call, [=] { range->Select(); }},
            {"CopyPicture", Call, [=] { copyPicture(*range); }}};
}

template <>
std::vector<Member> membersOf(std::shared_ptr<Selection> selection)
{
    return {{"Copy", Call, [=] { selection->Copy(); }},
            {"PasteSpecial",
             Call,
             [=](int32_t type, int32_t operation, bool skipsBlanks, bool transposes) {
                 paste(*selection, type, operation, skipsBlanks, transposes);
             },
             {"Paste", "Operation", "SkipBlanks", "Transpose"}}};
}

template <>
std::vector<Member> membersOf(std::shared_ptr<Worksheet> sheet)
{
    return {
        {"Name", Get, [=] { return sheet->Name(); }},
        {"Activate", Call, [=] { sheet->Activate(); }},
        {"Rows", GetItem, [=](const string& address) { return sheet->Rows(address); }},
        {"Range", GetItem, [=](const string& address) { return sheet->Range(address); }},
        {"UsedRange", Get, [=] { return sheet->UsedRange(); }},
        {"Cells", Put, [=](int16_t row, int16_t column, const string& text) { sheet->PutCells(row, column, text); }}};
}

template <>
std::vector<Member> membersOf(std::shared_ptr<Workbook> book)
{
    return {{"Sheets", GetItem, [=](int16_t index) { return book->Sheets(index); }},
            {"ActiveSheet", Get, [=] { return book->ActiveSheet(); }},
            {"SaveAs",
             Call,
             [=](const string& path, int32_t format) { saveAs(*book, path, format); },
             {"Filename", "FileFormat"}},
            {"Close", Call, [=] { book->Close(); }}};
}

template <>
std::vector<Member> membersOf(std::shared_ptr<Workbooks> books)
{
    return {
        {"Open", Call, [=](const string& path) { return open(*books, path, false); }},
        {"Open", Call, [=](const string& path, Omitted, bool isReadOnly) { return open(*books, path, isReadOnly); }},
        {"count", Get, [=] { return books->count(); }}};
}

template <>
std::vector<Member> membersOf(std::shared_ptr<Application> application)
{
    return {{"Version", Get, [=] { return instruction("version", application->Version()); }},
            {"Workbooks", Get, [=] { return application->Workbooks(); }},
            {"Workbooks", GetItem, [=](int32_t index) { return application->Workbooks(index); }},
            {"Selection", Get, [=] { return application->Selection(); }},
            {"Range", GetItem, [=](const string& address) { return application->Range(address); }},
            {"Visible", Put, [=](bool isVisible) { application->PutVisible(isVisible); }},
            {"DisplayAlerts", Put, [=](bool areShown) { application->PutDisplayAlerts(areShown); }},
            {"Quit", Call, [=] { application->Quit(); }}};
}

IDispatch* newServedApplication()
{
    const QLocale region(QString::fromStdString(instruction("region", "en-US")));
    return new AutomationObject(
        membersOf<Application>(std::make_shared<EmbeddedApplication>(regionalFormatsOf(region), pictures)));
}

} // namespace wagemill::test
