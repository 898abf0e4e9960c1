#include "workbook/excel/ExcelApplication.h"

#include "app/base/text/NumberText.h"
#include "workbook/engine/CellAddress.h"
#include "workbook/excel/ExcelSession.h"

#include <utility>

namespace wagemill {

using automation::int32In;
using automation::NamedArguments;
using automation::textIn;
using automation::Variant;

namespace {

constexpr std::string_view noCells = "Excel gave no cells.";
constexpr std::string_view noSheet = "Excel gave no worksheet.";

std::string numbered(std::string_view what, std::int32_t index)
{
    return "Excel gave no " + std::string(what) + " number " + std::to_string(index) + ".";
}

class ExcelRange : public CellRange {
public:
    explicit ExcelRange(ExcelObject range) : m_range(std::move(range)) {}

    std::unique_ptr<CellRange> Rows() override { return part(m_range->get(L"Rows")); }
    std::unique_ptr<CellRange> Columns() override { return part(m_range->get(L"Columns")); }
    std::unique_ptr<CellRange> Rows(std::int32_t index) override
    {
        return part(m_range->get(L"Rows", {Variant::ofInt32(index)}));
    }
    std::unique_ptr<CellRange> Columns(std::int32_t index) override
    {
        return part(m_range->get(L"Columns", {Variant::ofInt32(index)}));
    }
    std::int32_t count() override { return int32In(m_range->get(L"count"), L"count"); }
    std::int32_t Row() override { return int32In(m_range->get(L"Row"), L"Row"); }
    std::int32_t Column() override { return int32In(m_range->get(L"Column"), L"Column"); }
    void Select() override { m_range->call(L"Select"); }
    void CopyPicture() override { m_range->call(L"CopyPicture"); }

private:
    std::unique_ptr<CellRange> part(const Variant& range) const
    {
        return std::make_unique<ExcelRange>(m_range.child(range, noCells));
    }

    ExcelObject m_range;
};

class ExcelSelection : public Selection {
public:
    explicit ExcelSelection(ExcelObject selection) : m_selection(std::move(selection)) {}

    void Copy() override { m_selection->call(L"Copy"); }

    void PasteSpecial(PasteType paste, PasteOperation operation, bool skipBlanks, bool transpose) override
    {
        NamedArguments named;
        named.push_back({L"Paste", Variant::ofInt32(static_cast<std::int32_t>(paste))});
        named.push_back({L"Operation", Variant::ofInt32(static_cast<std::int32_t>(operation))});
        named.push_back({L"SkipBlanks", Variant::ofBoolean(skipBlanks)});
        named.push_back({L"Transpose", Variant::ofBoolean(transpose)});
        m_selection->call(L"PasteSpecial", {}, std::move(named));
    }

private:
    ExcelObject m_selection;
};

class ExcelWorksheet : public Worksheet {
public:
    explicit ExcelWorksheet(ExcelObject sheet) : m_sheet(std::move(sheet)) {}

    std::string Name() override { return textIn(m_sheet->get(L"Name"), L"Name"); }
    void Activate() override { m_sheet->call(L"Activate"); }
    std::unique_ptr<CellRange> Rows(std::string_view address) override
    {
        return range(m_sheet->get(L"Rows", {Variant::ofText(address)}));
    }
    std::unique_ptr<CellRange> Range(std::string_view address) override
    {
        return range(m_sheet->get(L"Range", {Variant::ofText(address)}));
    }
    std::unique_ptr<CellRange> UsedRange() override { return range(m_sheet->get(L"UsedRange")); }

    void PutCells(std::int32_t row, std::int32_t column, std::string_view text) override
    {
        m_sheet->putTyped(L"Cells", {Variant::ofInt16(toInt16(row)), Variant::ofInt16(toInt16(column))},
                          Variant::ofText(text), m_sheet.typingLocale(),
                          "cell " + engine::addressText({row - 1, column - 1}));
    }

private:
    std::unique_ptr<CellRange> range(const Variant& range) const
    {
        return std::make_unique<ExcelRange>(m_sheet.child(range, noCells));
    }

    ExcelObject m_sheet;
};

class ExcelWorkbook : public Workbook {
public:
    explicit ExcelWorkbook(ExcelObject workbook) : m_workbook(std::move(workbook)) {}

    std::unique_ptr<Worksheet> Sheets(std::int32_t index) override
    {
        const Variant sheet = m_workbook->get(L"Sheets", {Variant::ofInt16(toInt16(index))});
        return std::make_unique<ExcelWorksheet>(m_workbook.child(sheet, numbered("worksheet", index)));
    }

    std::unique_ptr<Worksheet> ActiveSheet() override
    {
        return std::make_unique<ExcelWorksheet>(m_workbook.child(m_workbook->get(L"ActiveSheet"), noSheet));
    }

    void SaveAs(std::string_view path, FileFormat fileFormat) override
    {
        NamedArguments named;
        named.push_back({L"FileFormat", Variant::ofInt32(static_cast<std::int32_t>(fileFormat))});
        m_workbook->call(L"SaveAs", {Variant::ofText(path)}, std::move(named));
    }

    void Close() override { m_workbook->call(L"Close"); }

private:
    ExcelObject m_workbook;
};

class ExcelWorkbooks : public Workbooks {
public:
    explicit ExcelWorkbooks(ExcelObject workbooks) : m_workbooks(std::move(workbooks)) {}

    std::unique_ptr<Workbook> Open(std::string_view path) override
    {
        return opened(path, m_workbooks->call(L"Open", {Variant::ofText(path)}));
    }

    std::unique_ptr<Workbook> OpenReadOnly(std::string_view path) override
    {
        return opened(
            path, m_workbooks->call(L"Open", {Variant::ofText(path), Variant::omitted(), Variant::ofBoolean(true)}));
    }

    std::int32_t count() override { return int32In(m_workbooks->get(L"count"), L"count"); }

private:
    std::unique_ptr<Workbook> opened(std::string_view path, const Variant& workbook) const
    {
        return std::make_unique<ExcelWorkbook>(m_workbooks.child(
            workbook, "Excel did not hand over the workbook \"" + std::string(path) +
                          "\". It may have opened it in Protected View. Please open any workbook of that folder in "
                          "Excel, choose Enable Editing, or make the folder a trusted location, and try again."));
    }

    ExcelObject m_workbooks;
};

} // namespace

ExcelApplication::~ExcelApplication()
{
    m_application.endSession();
}

std::string ExcelApplication::Version()
{
    return textIn(m_application->get(L"Version"), L"Version");
}

std::unique_ptr<wagemill::Workbooks> ExcelApplication::Workbooks()
{
    return std::make_unique<ExcelWorkbooks>(
        m_application.child(m_application->get(L"Workbooks"), "Excel gave no list of its workbooks."));
}

std::unique_ptr<Workbook> ExcelApplication::Workbooks(std::int32_t index)
{
    const Variant workbook = m_application->get(L"Workbooks", {Variant::ofInt32(index)});
    return std::make_unique<ExcelWorkbook>(m_application.child(workbook, numbered("workbook", index)));
}

std::unique_ptr<wagemill::Selection> ExcelApplication::Selection()
{
    return std::make_unique<ExcelSelection>(
        m_application.child(m_application->get(L"Selection"), "Nothing is selected in Excel."));
}

std::unique_ptr<CellRange> ExcelApplication::Range(std::string_view address)
{
    const Variant range = m_application->get(L"Range", {Variant::ofText(address)});
    return std::make_unique<ExcelRange>(m_application.child(range, noCells));
}

void ExcelApplication::PutVisible(bool visible)
{
    m_application->put(L"Visible", {}, Variant::ofBoolean(visible));
}

void ExcelApplication::PutDisplayAlerts(bool displayAlerts)
{
    m_application->put(L"DisplayAlerts", {}, Variant::ofBoolean(displayAlerts));
}

void ExcelApplication::Quit()
{
    m_application->call(L"Quit");
    m_application.endSession();
}

bool isExcelSystem()
{
    return true;
}

std::unique_ptr<Application> createExcelSession()
{
    return createExcelSession(::GetUserDefaultLCID());
}

std::unique_ptr<Application> createExcelSession(LCID typingLocale)
{
    auto references = std::make_shared<ExcelReferences>(typingLocale);
    auto application = automation::createObject(L"Excel.Application");
    return std::make_unique<ExcelApplication>(ExcelObject(std::move(references), std::move(application)));
}

} // namespace wagemill
