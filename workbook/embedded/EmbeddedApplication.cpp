#include "workbook/embedded/EmbeddedApplication.h"

#include "app/base/Files.h"
#include "app/base/Messages.h"
#include "app/base/text/DateText.h"
#include "app/base/text/Unicode.h"
#include "drawing/DrawingFile.h"
#include "workbook/engine/formula/CellEntry.h"
#include "workbook/engine/formula/Recalculation.h"
#include "workbook/engine/picture/SheetPicture.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <chrono>
#include <ctime>
#include <new>
#include <optional>
#include <ratio>
#include <utility>
#include <vector>

namespace wagemill {

using engine::CellRect;

namespace {

std::tm localTime()
{
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    return *std::localtime(&now); // there is one thread
}

CalendarDate dateOf(const std::tm& moment)
{
    return {moment.tm_year + 1900, moment.tm_mon + 1, moment.tm_mday};
}

/// The present moment in serial days.
double serialNow()
{
    constexpr int firstOf1970 = 25'569;
    const std::tm local = localTime();
    const double seconds = (local.tm_hour * 60 + local.tm_min) * 60 + local.tm_sec;
    return firstOf1970 + daysSinceEpoch(dateOf(local)) + seconds / 86'400;
}

/// The present moment as the file format counts it: 100 ns since 1601.
std::uint64_t fileTimeNow()
{
    constexpr std::uint64_t unixEpoch = 116'444'736'000'000'000;
    using Ticks = std::chrono::duration<std::uint64_t, std::ratio<1, 10'000'000>>;
    return unixEpoch + std::chrono::duration_cast<Ticks>(std::chrono::system_clock::now().time_since_epoch()).count();
}

/// A text that is not an address, or not one of the kind that is asked for.
[[noreturn]] void throwBadAddress(std::string_view address)
{
    throw SpreadsheetError("\"" + std::string(address) + "\" is not a range of cells.");
}

CellRect requireAddress(std::string_view address)
{
    const auto range = engine::parseAddress(address);
    if (!range)
        throwBadAddress(address);
    return *range;
}

bool isWholeRows(const CellRect& range)
{
    return range.firstColumn == 0 && range.lastColumn == engine::maxColumns - 1;
}

/// The number `index`, from 1, as one from 0.
std::size_t requireIndex(std::int32_t index, std::size_t count, const std::string& what)
{
    if (index < 1 || static_cast<std::size_t>(index) > count)
        throw SpreadsheetError(what + " " + std::to_string(index) + ".");
    return static_cast<std::size_t>(index) - 1;
}

/// What a workbook of another program loses here, or keeps without being computed, is said when it is opened.
void showNotices(const engine::Book& book, std::string_view path)
{
    if (book.notices.empty())
        return;
    std::string text = "The workbook \"" + std::string(path) + "\" was opened, but:";
    for (const std::string& notice : book.notices)
        text += "\n- " + notice;
    showMessage({text, "", MessageIcon::Information, MessageButtons::Ok});
}

std::string missingText(const engine::Book& book, const engine::MissingParts& missing)
{
    constexpr std::size_t maxParts = 20;
    std::string text = "The workbook holds formulas that Wagemill does not compute:";
    std::size_t left = missing.size();
    for (const auto& [part, place] : missing) {
        if (missing.size() - left == maxParts)
            break;
        --left;
        text += "\n- " + part + ", first in cell " + addressText(place.cell) + " of the sheet \"" +
                book.sheets[place.sheet]->name + '"';
    }
    if (left > 0)
        text += "\n- and " + std::to_string(left) + " more";
    return text + "\nCells with such a formula keep the value they were saved with; where you typed one, the cell "
                  "shows #NAME?.";
}

/// Whatever fails in the engine is the application's failure for those who drive it.
template <typename Work>
auto asApplication(Work&& work)
{
    try {
        return work();
    } catch (const SpreadsheetError&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw SpreadsheetError("There is not enough memory.");
    } catch (const std::exception& error) {
        throw SpreadsheetError(error.what());
    }
}

/// A workbook that is open in a session. It outlives its closing for as long as somebody refers to it.
struct OpenBook {
    engine::Book book;
    bool isOpen = true;
    bool isChanged = false;
    bool needsRecalculation = true; ///< a value was put or rows were pasted since the last one

    engine::Sheet& activeSheet() { return *book.sheets.at(book.activeSheet); }
};

using BookPointer = std::shared_ptr<OpenBook>;

} // namespace

struct EmbeddedSession {
    /// Whole rows that were copied, at the place where they are; pasting reads them there.
    struct CopiedRows {
        BookPointer book;
        std::size_t sheet = 0;
        int first = 0;
        int last = 0;
    };

    RegionalFormats formats;
    EmbeddedPictureClipboard& pictures;
    std::function<void(std::string)> tellMissing;
    std::vector<BookPointer> books = {};
    BookPointer activeBook = nullptr;
    std::optional<CopiedRows> copied = {};
    bool displayAlerts = true;
    bool isRunning = true;

    void requireRunning() const
    {
        if (!isRunning)
            throw SpreadsheetError("The spreadsheet session has ended.");
    }

    OpenBook& requireActiveBook() const
    {
        requireRunning();
        if (!activeBook)
            throw SpreadsheetError("No workbook is open.");
        return *activeBook;
    }

    BookPointer open(std::string_view path)
    {
        requireRunning();
        return asApplication([&] {
            OpenBook whole = {engine::xls::readWorkbook(readOwnFile(toPath(path)), path)};
            auto opened = std::make_shared<OpenBook>(std::move(whole));
            books.push_back(opened);
            activeBook = opened;
            if (displayAlerts)
                showNotices(opened->book, path);
            return opened;
        });
    }

    void recalculate(OpenBook& book) const
    {
        if (!book.needsRecalculation)
            return;
        const engine::MissingParts missing = engine::recalculate(book.book, {formats, serialNow()});
        if (!missing.empty() && tellMissing)
            tellMissing(missingText(book.book, missing));
        book.needsRecalculation = false; // not before: where memory ran out, the next one tries again
    }
};

namespace {

using SessionPointer = std::shared_ptr<EmbeddedSession>;

/// A workbook of a session, or a sheet in it. Its members fail once the workbook is closed or the session has ended.
struct Place {
    SessionPointer session;
    BookPointer open;
    std::size_t index = 0; ///< of the sheet

    OpenBook& opened() const
    {
        session->requireRunning();
        if (!open->isOpen)
            throw SpreadsheetError("The workbook is closed.");
        return *open;
    }
    engine::Book& book() const { return opened().book; }
    engine::Sheet& sheet() const { return *book().sheets.at(index); }
};

/// A range of one sheet: cells, or those cells counted as rows or columns.
class RangeOfSheet : public CellRange {
public:
    enum class Unit { Cells, Rows, Columns };

    RangeOfSheet(Place place, CellRect range, Unit unit = Unit::Cells)
        : m_place(std::move(place)), m_range(range), m_unit(unit)
    {
        m_place.opened();
    }

    std::unique_ptr<CellRange> Rows() override { return part(m_range, Unit::Rows); }
    std::unique_ptr<CellRange> Columns() override { return part(m_range, Unit::Columns); }

    std::unique_ptr<CellRange> Rows(std::int32_t index) override
    {
        CellRect row = m_range;
        row.firstRow = row.lastRow = m_range.firstRow + indexIn(index, m_range.rows(), "row");
        return part(row, Unit::Rows);
    }

    std::unique_ptr<CellRange> Columns(std::int32_t index) override
    {
        CellRect column = m_range;
        column.firstColumn = column.lastColumn = m_range.firstColumn + indexIn(index, m_range.columns(), "column");
        return part(column, Unit::Columns);
    }

    std::int32_t count() override
    {
        m_place.opened();
        return (m_unit == Unit::Columns ? 1 : m_range.rows()) * (m_unit == Unit::Rows ? 1 : m_range.columns());
    }

    std::int32_t Row() override
    {
        m_place.opened();
        return m_range.firstRow + 1;
    }

    std::int32_t Column() override
    {
        m_place.opened();
        return m_range.firstColumn + 1;
    }

    void Select() override
    {
        engine::Sheet& sheet = m_place.sheet();
        if (m_place.book().activeSheet != m_place.index)
            throw SpreadsheetError("Cells of the sheet \"" + sheet.name +
                                   "\" cannot be selected while another sheet is active.");
        sheet.selection = {m_range.first(), m_range};
    }

    void CopyPicture() override
    {
        OpenBook& opened = m_place.opened();
        const EmbeddedSession& session = *m_place.session;
        asApplication([&] {
            session.pictures.clear(); // a picture that fails leaves no earlier one there
            session.recalculate(opened);
            session.pictures.copy(engine::sheetPicture(opened.book, m_place.sheet(), m_range, session.formats));
        });
    }

private:
    std::unique_ptr<CellRange> part(const CellRect& range, Unit unit) const
    {
        return std::make_unique<RangeOfSheet>(m_place, range, unit);
    }

    int indexIn(std::int32_t index, int count, const std::string& what) const
    {
        m_place.opened();
        return static_cast<int>(requireIndex(index, static_cast<std::size_t>(count), "The range has no " + what));
    }

    Place m_place;
    CellRect m_range;
    Unit m_unit;
};

class SheetOfBook : public Worksheet {
public:
    explicit SheetOfBook(Place place) : m_place(std::move(place)) {}

    std::string Name() override { return m_place.sheet().name; }

    void Activate() override
    {
        if (m_place.sheet().hidden)
            throw SpreadsheetError("The sheet \"" + m_place.sheet().name + "\" is hidden.");
        m_place.book().activeSheet = m_place.index;
    }

    std::unique_ptr<CellRange> Rows(std::string_view address) override
    {
        const CellRect rows = requireAddress(address);
        if (!isWholeRows(rows))
            throwBadAddress(address);
        return range(rows);
    }

    std::unique_ptr<CellRange> Range(std::string_view address) override { return range(requireAddress(address)); }

    std::unique_ptr<CellRange> UsedRange() override { return range(m_place.sheet().usedRange().value_or(CellRect{})); }

    void PutCells(std::int32_t row, std::int32_t column, std::string_view text) override
    {
        OpenBook& opened = m_place.opened();
        asApplication([&] {
            engine::enterText(opened.book, m_place.index, {row - 1, column - 1}, text, m_place.session->formats,
                              dateOf(localTime()));
        });
        opened.isChanged = opened.needsRecalculation = true;
    }

private:
    std::unique_ptr<CellRange> range(const CellRect& cells) const
    {
        return std::make_unique<RangeOfSheet>(m_place, cells);
    }

    Place m_place;
};

class BookOfSession : public Workbook {
public:
    BookOfSession(SessionPointer session, BookPointer book) : m_place{std::move(session), std::move(book)} {}

    std::unique_ptr<Worksheet> Sheets(std::int32_t index) override
    {
        const std::size_t sheet = requireIndex(index, m_place.book().sheets.size(), "The workbook has no sheet number");
        return std::make_unique<SheetOfBook>(Place{m_place.session, m_place.open, sheet});
    }

    std::unique_ptr<Worksheet> ActiveSheet() override
    {
        return Sheets(static_cast<std::int32_t>(m_place.book().activeSheet) + 1);
    }

    void SaveAs(std::string_view path, FileFormat /*both are codes of the one format*/) override
    {
        OpenBook& opened = m_place.opened();
        if (fileExists(toPath(path)))
            throw SpreadsheetError("Cannot save as \"" + std::string(path) +
                                   "\": there is already a file of that name.");
        asApplication([&] {
            m_place.session->recalculate(opened);
            engine::DocumentProperties& properties = opened.book.properties;
            properties.saved = fileTimeNow();
            if (std::exchange(opened.book.isTemplate, false)) // it is created when it is saved for the first time
                properties.created = properties.saved;
            writeWholeFile(engine::xls::writeWorkbook(opened.book, engine::xls::FileKind::Workbook), toPath(path),
                           FileLife::Temporary);
        });
        opened.isChanged = false;
    }

    void Close() override
    {
        OpenBook& closed = m_place.opened();
        EmbeddedSession& session = *m_place.session;
        if (closed.isChanged && session.displayAlerts)
            throw SpreadsheetError("The workbook has changes that are not saved, and there is no window to ask in.");
        closed.isOpen = false;
        std::erase(session.books, m_place.open);
        if (session.activeBook == m_place.open)
            session.activeBook = session.books.empty() ? nullptr : session.books.back();
    }

private:
    Place m_place;
};

class BooksOfSession : public Workbooks {
public:
    explicit BooksOfSession(SessionPointer session) : m_session(std::move(session)) {}

    std::unique_ptr<Workbook> Open(std::string_view path) override
    {
        return std::make_unique<BookOfSession>(m_session, m_session->open(path));
    }

    /// A workbook is read whole into memory and its file never written again, so reading only is what always happens.
    std::unique_ptr<Workbook> OpenReadOnly(std::string_view path) override { return Open(path); }

    std::int32_t count() override
    {
        m_session->requireRunning();
        return static_cast<std::int32_t>(m_session->books.size());
    }

private:
    SessionPointer m_session;
};

class SelectionOfSession : public Selection {
public:
    explicit SelectionOfSession(SessionPointer session) : m_session(std::move(session)) {}

    void Copy() override
    {
        OpenBook& opened = m_session->requireActiveBook();
        const CellRect area = opened.activeSheet().selection.area;
        if (!isWholeRows(area))
            throw SpreadsheetError("Only whole rows can be copied.");
        m_session->copied = {m_session->activeBook, opened.book.activeSheet, area.firstRow, area.lastRow};
    }

    void PasteSpecial(PasteType paste, PasteOperation operation, bool skipBlanks, bool transpose) override
    {
        OpenBook& opened = m_session->requireActiveBook();
        if (paste != PasteType::All || operation != PasteOperation::None || skipBlanks || transpose)
            throw SpreadsheetError("Only everything, as it is, can be pasted.");
        const auto& copied = m_session->copied;
        if (!copied || copied->book != m_session->activeBook || copied->sheet != opened.book.activeSheet)
            throw SpreadsheetError("No rows of this sheet have been copied.");
        engine::SheetSelection& selection = opened.activeSheet().selection;
        const int target = selection.area.firstRow;
        if (selection.area.firstColumn != 0)
            throw SpreadsheetError("Whole rows can only be pasted at the first column.");
        asApplication([&] { opened.activeSheet().copyRows(copied->first, copied->last, target); });
        selection = {{target, 0}, {target, 0, target + copied->last - copied->first, engine::maxColumns - 1}};
        opened.isChanged = opened.needsRecalculation = true;
    }

private:
    SessionPointer m_session;
};

} // namespace

void EmbeddedPictureClipboard::copy(const drawing::Drawing& drawing)
{
    m_picture = Picture{std::make_shared<const std::vector<std::byte>>(drawingFile(drawing))};
}

Picture EmbeddedPictureClipboard::GetData(std::int16_t format)
{
    if (!m_picture || format != 0)
        throw SpreadsheetError("the clipboard holds no picture");
    return *m_picture;
}

EmbeddedApplication::EmbeddedApplication(RegionalFormats formats, EmbeddedPictureClipboard& pictures,
                                         std::function<void(std::string)> tellMissing)
    : m_session(
          std::make_shared<EmbeddedSession>(EmbeddedSession{std::move(formats), pictures, std::move(tellMissing)}))
{
}

EmbeddedApplication::~EmbeddedApplication()
{
    m_session->isRunning = false; // objects of the session that live on fail with a message
}

std::string EmbeddedApplication::Version()
{
    m_session->requireRunning();
    return "16.0"; // the one whose file formats and members we serve
}

std::unique_ptr<wagemill::Workbooks> EmbeddedApplication::Workbooks()
{
    m_session->requireRunning();
    return std::make_unique<BooksOfSession>(m_session);
}

std::unique_ptr<Workbook> EmbeddedApplication::Workbooks(std::int32_t index)
{
    m_session->requireRunning();
    const auto& books = m_session->books;
    const std::size_t found = requireIndex(index, books.size(), "The session has no workbook number");
    return std::make_unique<BookOfSession>(m_session, books[found]);
}

std::unique_ptr<wagemill::Selection> EmbeddedApplication::Selection()
{
    m_session->requireActiveBook();
    return std::make_unique<SelectionOfSession>(m_session);
}

std::unique_ptr<CellRange> EmbeddedApplication::Range(std::string_view address)
{
    const OpenBook& opened = m_session->requireActiveBook();
    return std::make_unique<RangeOfSheet>(Place{m_session, m_session->activeBook, opened.book.activeSheet},
                                          requireAddress(address));
}

void EmbeddedApplication::PutVisible(bool visible)
{
    m_session->requireRunning();
    if (visible)
        throw SpreadsheetError("The embedded spreadsheet has no window to show.");
}

void EmbeddedApplication::PutDisplayAlerts(bool displayAlerts)
{
    m_session->requireRunning();
    m_session->displayAlerts = displayAlerts;
}

void EmbeddedApplication::Quit()
{
    m_session->requireRunning();
    m_session->isRunning = false;
    m_session->books.clear();
    m_session->activeBook.reset();
    m_session->copied.reset();
    m_session->pictures.clear();
}

} // namespace wagemill
