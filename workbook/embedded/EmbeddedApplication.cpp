#include "workbook/embedded/EmbeddedApplication.h"

#include "app/base/Files.h"
#include "app/base/Messages.h"
#include "app/base/text/Unicode.h"
#include "workbook/engine/formula/CellEntry.h"
#include "workbook/engine/formula/Recalculation.h"
#include "workbook/engine/picture/SheetPicture.h"
#include "workbook/engine/xls/BiffReader.h"
#include "workbook/engine/xls/BiffWriter.h"

#include <chrono>
#include <cmath>
#include <ctime>
#include <new>
#include <optional>
#include <ratio>
#include <utility>
#include <vector>

namespace wagemill {

using engine::CellRect;

namespace {

/// The version whose file formats and members we serve.
constexpr const char* servedVersion = "16.0";

std::tm localTime()
{
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    return *std::localtime(&now); // there is one thread
}

CalendarDate today()
{
    const std::tm local = localTime();
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday};
}

/// The present moment as the file format counts it: 100 ns since 1601.
std::uint64_t fileTimeNow()
{
    constexpr std::uint64_t unixEpoch = 116'444'736'000'000'000;
    using Ticks = std::chrono::duration<std::uint64_t, std::ratio<1, 10'000'000>>;
    return unixEpoch + std::chrono::duration_cast<Ticks>(std::chrono::system_clock::now().time_since_epoch()).count();
}

/// A workbook made from a template is created when it is saved for the first time.
void stampProperties(engine::Book& book)
{
    book.properties.saved = fileTimeNow();
    if (std::exchange(book.isTemplate, false))
        book.properties.created = book.properties.saved;
}

double serialNow()
{
    using namespace std::chrono;
    constexpr sys_days dayZero = year{1899} / December / 30; // as seen from March 1900 on
    const std::tm local = localTime();
    const sys_days date = year{local.tm_year + 1900} / (local.tm_mon + 1) / local.tm_mday;
    const auto moment = date + hours(local.tm_hour) + minutes(local.tm_min) + seconds(local.tm_sec);
    return duration<double, days::period>(moment - dayZero).count();
}

} // namespace

/// A workbook that is open in a session. It outlives its closing for as long as somebody refers to it.
struct EmbeddedApplication::OpenBook {
    engine::Book book;
    bool isOpen = true;
    bool isChanged = false;
    bool needsRecalculation = true; ///< a value was put or rows were pasted since the last one

    engine::Sheet& sheet(std::size_t index) { return *book.sheets.at(index); }
};

struct EmbeddedApplication::Session {
    /// Whole rows that were copied, at the place where they stand; pasting reads them there.
    struct CopiedRows {
        std::shared_ptr<OpenBook> book;
        std::size_t sheet = 0;
        int first = 0;
        int last = 0;
    };

    RegionalFormats formats;
    EmbeddedPictureClipboard& pictures;
    std::function<void(std::string)> tellMissing;
    std::vector<std::shared_ptr<OpenBook>> books;
    std::shared_ptr<OpenBook> activeBook;
    std::optional<CopiedRows> copied;
    bool displayAlerts = true;
    bool isRunning = true;

    void requireRunning() const
    {
        if (!isRunning)
            throw SpreadsheetError("The spreadsheet session has ended.");
    }

    void requireOpen(const OpenBook& book) const
    {
        requireRunning();
        if (!book.isOpen)
            throw SpreadsheetError("The workbook is closed.");
    }

    OpenBook& requireActiveBook() const
    {
        requireRunning();
        if (!activeBook)
            throw SpreadsheetError("No workbook is open.");
        return *activeBook;
    }

    std::shared_ptr<OpenBook> open(std::string_view path);
    void close(const std::shared_ptr<OpenBook>& book);
    void recalculate(OpenBook& book) const;
};

namespace {

/// A text that is no address, or not one of the kind that is asked for.
[[noreturn]] void throwBadAddress(std::string_view address)
{
    throw SpreadsheetError("\"" + std::string(address) + "\" is no range of cells.");
}

CellRect requireAddress(std::string_view address)
{
    const auto range = engine::parseAddress(address);
    if (!range)
        throwBadAddress(address);
    return *range;
}

/// What a workbook of another program loses here, or keeps without being computed, is said when it is opened.
void tellNotices(const engine::Book& book, std::string_view path)
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

bool isWholeRows(const CellRect& range)
{
    return range.firstColumn == 0 && range.lastColumn == engine::maxColumns - 1;
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

} // namespace

std::shared_ptr<EmbeddedApplication::OpenBook> EmbeddedApplication::Session::open(std::string_view path)
{
    requireRunning();
    return asApplication([&] {
        const auto bytes = readOwnFile(toPath(path));
        auto opened = std::make_shared<OpenBook>();
        opened->book = engine::xls::readWorkbook(bytes, path);
        books.push_back(opened);
        activeBook = opened;
        if (displayAlerts)
            tellNotices(opened->book, path);
        return opened;
    });
}

void EmbeddedApplication::Session::close(const std::shared_ptr<OpenBook>& book)
{
    requireOpen(*book);
    if (book->isChanged && displayAlerts)
        throw SpreadsheetError("The workbook has changes that are not saved, and there is no window to ask in.");
    book->isOpen = false;
    std::erase(books, book);
    if (activeBook == book)
        activeBook = books.empty() ? nullptr : books.back();
}

void EmbeddedApplication::Session::recalculate(OpenBook& book) const
{
    if (!book.needsRecalculation)
        return;
    const engine::MissingParts missing = engine::recalculate(book.book, {formats, serialNow()});
    if (!missing.empty() && tellMissing)
        tellMissing(missingText(book.book, missing));
    book.needsRecalculation = false; // not before: where memory ran out, the next one tries again
}

/// A range of one sheet: cells, or those cells counted as rows or columns.
class EmbeddedApplication::RangeOfSheet : public CellRange {
public:
    enum class Unit { Cells, Rows, Columns };

    RangeOfSheet(std::shared_ptr<Session> session, std::shared_ptr<OpenBook> book, std::size_t sheet, CellRect range,
                 Unit unit = Unit::Cells)
        : m_session(std::move(session)), m_book(std::move(book)), m_sheet(sheet), m_range(range), m_unit(unit)
    {
    }

    std::unique_ptr<CellRange> Rows() override { return part(m_range, Unit::Rows); }
    std::unique_ptr<CellRange> Columns() override { return part(m_range, Unit::Columns); }

    std::unique_ptr<CellRange> Rows(std::int32_t index) override
    {
        requireIndex(index, m_range.rows(), "row");
        CellRect row = m_range;
        row.firstRow = row.lastRow = m_range.firstRow + index - 1;
        return part(row, Unit::Rows);
    }

    std::unique_ptr<CellRange> Columns(std::int32_t index) override
    {
        requireIndex(index, m_range.columns(), "column");
        CellRect column = m_range;
        column.firstColumn = column.lastColumn = m_range.firstColumn + index - 1;
        return part(column, Unit::Columns);
    }

    std::int32_t count() override
    {
        m_session->requireOpen(*m_book);
        switch (m_unit) {
        case Unit::Rows:
            return m_range.rows();
        case Unit::Columns:
            return m_range.columns();
        case Unit::Cells:
            break;
        }
        return m_range.rows() * m_range.columns();
    }

    std::int32_t Row() override
    {
        m_session->requireOpen(*m_book);
        return m_range.firstRow + 1;
    }

    std::int32_t Column() override
    {
        m_session->requireOpen(*m_book);
        return m_range.firstColumn + 1;
    }

    void Select() override
    {
        m_session->requireOpen(*m_book);
        if (m_book->book.activeSheet != m_sheet)
            throw SpreadsheetError("Cells of the sheet \"" + m_book->sheet(m_sheet).name +
                                   "\" cannot be selected while another sheet is active.");
        m_book->sheet(m_sheet).selection = {{m_range.firstRow, m_range.firstColumn}, m_range};
    }

    void CopyPicture() override
    {
        m_session->requireOpen(*m_book);
        asApplication([&] {
            m_session->pictures.clear(); // a picture that fails leaves no earlier one there
            m_session->recalculate(*m_book);
            m_session->pictures.copy(
                engine::sheetPicture(m_book->book, m_book->sheet(m_sheet), m_range, m_session->formats));
        });
    }

private:
    std::unique_ptr<CellRange> part(const CellRect& range, Unit unit)
    {
        m_session->requireOpen(*m_book);
        return std::make_unique<RangeOfSheet>(m_session, m_book, m_sheet, range, unit);
    }

    void requireIndex(std::int32_t index, int count, const char* what) const
    {
        m_session->requireOpen(*m_book);
        if (index < 1 || index > count)
            throw SpreadsheetError("The range has no " + std::string(what) + " " + std::to_string(index) + ".");
    }

    std::shared_ptr<Session> m_session;
    std::shared_ptr<OpenBook> m_book;
    std::size_t m_sheet;
    CellRect m_range;
    Unit m_unit;
};

class EmbeddedApplication::SheetOfBook : public Worksheet {
public:
    SheetOfBook(std::shared_ptr<Session> session, std::shared_ptr<OpenBook> book, std::size_t sheet)
        : m_session(std::move(session)), m_book(std::move(book)), m_sheet(sheet)
    {
    }

    std::string Name() override
    {
        m_session->requireOpen(*m_book);
        return m_book->sheet(m_sheet).name;
    }

    void Activate() override
    {
        m_session->requireOpen(*m_book);
        if (m_book->sheet(m_sheet).hidden)
            throw SpreadsheetError("The sheet \"" + m_book->sheet(m_sheet).name + "\" is hidden.");
        m_book->book.activeSheet = m_sheet;
    }

    std::unique_ptr<CellRange> Rows(std::string_view address) override
    {
        const CellRect rows = requireAddress(address);
        if (!isWholeRows(rows))
            throwBadAddress(address);
        return range(rows);
    }

    std::unique_ptr<CellRange> Range(std::string_view address) override { return range(requireAddress(address)); }

    std::unique_ptr<CellRange> UsedRange() override
    {
        return range(m_book->sheet(m_sheet).usedRange().value_or(CellRect{}));
    }

    void PutCells(std::int32_t row, std::int32_t column, std::string_view text) override
    {
        m_session->requireOpen(*m_book);
        asApplication([&] {
            engine::enterText(m_book->book, m_sheet, {row - 1, column - 1}, text, m_session->formats, today());
        });
        m_book->isChanged = m_book->needsRecalculation = true;
    }

private:
    std::unique_ptr<CellRange> range(const CellRect& cells) const
    {
        m_session->requireOpen(*m_book);
        return std::make_unique<RangeOfSheet>(m_session, m_book, m_sheet, cells);
    }

    std::shared_ptr<Session> m_session;
    std::shared_ptr<OpenBook> m_book;
    std::size_t m_sheet;
};

class EmbeddedApplication::BookOfSession : public Workbook {
public:
    BookOfSession(std::shared_ptr<Session> session, std::shared_ptr<OpenBook> book)
        : m_session(std::move(session)), m_book(std::move(book))
    {
    }

    std::unique_ptr<Worksheet> Sheets(std::int32_t index) override
    {
        m_session->requireOpen(*m_book);
        if (index < 1 || static_cast<std::size_t>(index) > m_book->book.sheets.size())
            throw SpreadsheetError("The workbook has no sheet number " + std::to_string(index) + ".");
        return std::make_unique<SheetOfBook>(m_session, m_book, static_cast<std::size_t>(index) - 1);
    }

    std::unique_ptr<Worksheet> ActiveSheet() override
    {
        m_session->requireOpen(*m_book);
        return Sheets(static_cast<std::int32_t>(m_book->book.activeSheet) + 1);
    }

    void SaveAs(std::string_view path, FileFormat fileFormat) override
    {
        m_session->requireOpen(*m_book);
        if (fileFormat != FileFormat::Excel8 && fileFormat != FileFormat::WorkbookNormal)
            throw SpreadsheetError("The file format " + std::to_string(static_cast<std::int32_t>(fileFormat)) +
                                   " is not known.");
        if (fileExists(toPath(path)))
            throw SpreadsheetError("Cannot save as \"" + std::string(path) +
                                   "\": there is already a file of that name.");
        asApplication([&] {
            m_session->recalculate(*m_book);
            stampProperties(m_book->book);
            writeWholeFile(engine::xls::writeWorkbook(m_book->book, engine::xls::FileKind::Workbook), toPath(path),
                           FileLife::Temporary);
        });
        m_book->isChanged = false;
    }

    void Close() override { m_session->close(m_book); }

private:
    std::shared_ptr<Session> m_session;
    std::shared_ptr<OpenBook> m_book;
};

class EmbeddedApplication::BooksOfSession : public wagemill::Workbooks {
public:
    explicit BooksOfSession(std::shared_ptr<Session> session) : m_session(std::move(session)) {}

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
    std::shared_ptr<Session> m_session;
};

class EmbeddedApplication::SelectionOfSession : public wagemill::Selection {
public:
    explicit SelectionOfSession(std::shared_ptr<Session> session) : m_session(std::move(session)) {}

    void Copy() override
    {
        OpenBook& book = m_session->requireActiveBook();
        const CellRect area = selectedArea(book);
        if (!isWholeRows(area))
            throw SpreadsheetError("Only whole rows can be copied.");
        m_session->copied = {m_session->activeBook, book.book.activeSheet, area.firstRow, area.lastRow};
    }

    void PasteSpecial(PasteType paste, PasteOperation operation, bool skipBlanks, bool transpose) override
    {
        OpenBook& book = m_session->requireActiveBook();
        if (paste != PasteType::All || operation != PasteOperation::None || skipBlanks || transpose)
            throw SpreadsheetError("Only everything, as it is, can be pasted.");
        const auto& copied = m_session->copied;
        if (!copied || copied->book != m_session->activeBook || copied->sheet != book.book.activeSheet)
            throw SpreadsheetError("No rows of this sheet have been copied.");
        asApplication([&] {
            const CellRect area = selectedArea(book);
            if (area.firstColumn != 0)
                throw SpreadsheetError("Whole rows can only be pasted at the first column.");
            book.sheet(copied->sheet).copyRows(copied->first, copied->last, area.firstRow);
            selectPasted(book, area.firstRow, copied->last - copied->first);
        });
        book.isChanged = book.needsRecalculation = true;
    }

private:
    static CellRect selectedArea(OpenBook& book) { return book.sheet(book.book.activeSheet).selection.area; }

    static void selectPasted(OpenBook& book, int firstRow, int furtherRows)
    {
        book.sheet(book.book.activeSheet).selection = {{firstRow, 0},
                                                       {firstRow, 0, firstRow + furtherRows, engine::maxColumns - 1}};
    }

    std::shared_ptr<Session> m_session;
};

EmbeddedApplication::EmbeddedApplication(RegionalFormats formats, EmbeddedPictureClipboard& pictures,
                                         std::function<void(std::string)> tellMissing)
    : m_session(std::make_shared<Session>(
          Session{std::move(formats), pictures, std::move(tellMissing), {}, nullptr, std::nullopt}))
{
}

EmbeddedApplication::~EmbeddedApplication()
{
    m_session->isRunning = false; // objects of the session that live on fail with a message
}

std::string EmbeddedApplication::Version()
{
    m_session->requireRunning();
    return servedVersion;
}

std::unique_ptr<wagemill::Workbooks> EmbeddedApplication::Workbooks()
{
    m_session->requireRunning();
    return std::make_unique<BooksOfSession>(m_session);
}

std::unique_ptr<Workbook> EmbeddedApplication::Workbooks(std::int32_t index)
{
    m_session->requireRunning();
    if (index < 1 || static_cast<std::size_t>(index) > m_session->books.size())
        throw SpreadsheetError("The session has no workbook number " + std::to_string(index) + ".");
    return std::make_unique<BookOfSession>(m_session, m_session->books[static_cast<std::size_t>(index) - 1]);
}

std::unique_ptr<wagemill::Selection> EmbeddedApplication::Selection()
{
    m_session->requireActiveBook();
    return std::make_unique<SelectionOfSession>(m_session);
}

std::unique_ptr<CellRange> EmbeddedApplication::Range(std::string_view address)
{
    const OpenBook& book = m_session->requireActiveBook();
    return std::make_unique<RangeOfSheet>(m_session, m_session->activeBook, book.book.activeSheet,
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
