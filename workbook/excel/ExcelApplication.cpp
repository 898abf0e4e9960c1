#include "app/base/text/NumberText.h"
#include "workbook/engine/CellAddress.h"
#include "workbook/excel/ExcelObject.h"
#include "workbook/excel/ExcelSession.h"

#include <utility>

namespace wagemill {

using automation::Arguments;
using automation::Variant;

namespace {

std::string numbered(std::string_view what, std::int32_t index)
{
    return "Excel gave no " + std::string(what) + " number " + std::to_string(index) + ".";
}

// The values that Excel's members take.
constexpr auto asNumber = &Variant::ofInt32;
constexpr auto asFlag = &Variant::ofBoolean;
constexpr Variant (*asText)(std::string_view) = &Variant::ofText;

class ExcelRange;

/// One of Excel's objects, driven by name: each member is one call of the member of that name there.
template <class Interface>
class Driven : public Interface {
public:
    explicit Driven(ExcelObject object) : m_object(std::move(object)) {}

protected:
    /// The object that a call gave.
    template <class Child>
    std::unique_ptr<Child> child(const Variant& result, std::string_view whenNothing) const
    {
        return std::make_unique<Child>(m_object.child(result, whenNothing));
    }

    /// The cells that a property gives. A template, because their class is below.
    template <class Cells = ExcelRange>
    std::unique_ptr<CellRange> cells(const wchar_t* property, const Arguments& arguments = {}) const
    {
        return child<Cells>(m_object.get(property, arguments), "Excel gave no cells.");
    }

    ExcelObject m_object;
};

class ExcelRange : public Driven<CellRange> {
public:
    using Driven::Driven;

    std::unique_ptr<CellRange> Rows() override { return cells(L"Rows"); }
    std::unique_ptr<CellRange> Columns() override { return cells(L"Columns"); }
    std::unique_ptr<CellRange> Rows(std::int32_t index) override { return cells(L"Rows", {asNumber(index)}); }
    std::unique_ptr<CellRange> Columns(std::int32_t index) override { return cells(L"Columns", {asNumber(index)}); }
    std::int32_t count() override { return m_object.number(L"count"); }
    std::int32_t Row() override { return m_object.number(L"Row"); }
    std::int32_t Column() override { return m_object.number(L"Column"); }
    void Select() override { m_object.call(L"Select"); }
    void CopyPicture() override { m_object.call(L"CopyPicture"); }
};

class ExcelSelection : public Driven<Selection> {
public:
    using Driven::Driven;

    void Copy() override { m_object.call(L"Copy"); }

    void PasteSpecial(PasteType paste, PasteOperation operation, bool skipBlanks, bool transpose) override
    {
        m_object.call(L"PasteSpecial", {},
                      {{L"Paste", asNumber(static_cast<std::int32_t>(paste))},
                       {L"Operation", asNumber(static_cast<std::int32_t>(operation))},
                       {L"SkipBlanks", asFlag(skipBlanks)},
                       {L"Transpose", asFlag(transpose)}});
    }
};

class ExcelWorksheet : public Driven<Worksheet> {
public:
    using Driven::Driven;

    std::string Name() override { return m_object.text(L"Name"); }
    void Activate() override { m_object.call(L"Activate"); }
    std::unique_ptr<CellRange> Rows(std::string_view address) override { return cells(L"Rows", {asText(address)}); }
    std::unique_ptr<CellRange> Range(std::string_view address) override { return cells(L"Range", {asText(address)}); }
    std::unique_ptr<CellRange> UsedRange() override { return cells(L"UsedRange"); }

    void PutCells(std::int32_t row, std::int32_t column, std::string_view text) override
    {
        m_object.putTyped(L"Cells", {Variant::ofInt16(toInt16(row)), Variant::ofInt16(toInt16(column))}, text,
                          "cell " + engine::addressText({row - 1, column - 1}));
    }
};

class ExcelWorkbook : public Driven<Workbook> {
public:
    using Driven::Driven;

    std::unique_ptr<Worksheet> Sheets(std::int32_t index) override
    {
        return child<ExcelWorksheet>(m_object.get(L"Sheets", {Variant::ofInt16(toInt16(index))}),
                                     numbered("worksheet", index));
    }
    std::unique_ptr<Worksheet> ActiveSheet() override
    {
        return child<ExcelWorksheet>(m_object.get(L"ActiveSheet"), "Excel gave no worksheet.");
    }
    void SaveAs(std::string_view path, FileFormat fileFormat) override
    {
        m_object.call(L"SaveAs", {asText(path)}, {{L"FileFormat", asNumber(static_cast<std::int32_t>(fileFormat))}});
    }
    void Close() override { m_object.call(L"Close"); }
};

class ExcelWorkbooks : public Driven<Workbooks> {
public:
    using Driven::Driven;

    std::unique_ptr<Workbook> Open(std::string_view path) override { return opened(path, {asText(path)}); }
    std::unique_ptr<Workbook> OpenReadOnly(std::string_view path) override
    {
        return opened(path, {asText(path), Variant::omitted(), asFlag(true)});
    }
    std::int32_t count() override { return m_object.number(L"count"); }

private:
    std::unique_ptr<Workbook> opened(std::string_view path, Arguments arguments) const
    {
        return child<ExcelWorkbook>(
            m_object.call(L"Open", std::move(arguments)),
            "Excel did not hand over the workbook \"" + std::string(path) +
                "\". It may have opened it in Protected View. Please open any workbook of that folder in "
                "Excel, choose Enable Editing, or make the folder a trusted location, and try again.");
    }
};

class ExcelApplication : public Driven<Application> {
public:
    using Driven::Driven;
    /// Releases Excel with everything that was reached through it; does not quit it.
    ~ExcelApplication() override { m_object.endSession(); }

    std::string Version() override { return m_object.text(L"Version"); }
    std::unique_ptr<wagemill::Workbooks> Workbooks() override
    {
        return child<ExcelWorkbooks>(m_object.get(L"Workbooks"), "Excel gave no list of its workbooks.");
    }
    std::unique_ptr<Workbook> Workbooks(std::int32_t index) override
    {
        return child<ExcelWorkbook>(m_object.get(L"Workbooks", {asNumber(index)}), numbered("workbook", index));
    }
    std::unique_ptr<wagemill::Selection> Selection() override
    {
        return child<ExcelSelection>(m_object.get(L"Selection"), "Nothing is selected in Excel.");
    }
    std::unique_ptr<CellRange> Range(std::string_view address) override { return cells(L"Range", {asText(address)}); }
    void PutVisible(bool visible) override { m_object.put(L"Visible", asFlag(visible)); }
    void PutDisplayAlerts(bool displayAlerts) override { m_object.put(L"DisplayAlerts", asFlag(displayAlerts)); }
    void Quit() override
    {
        m_object.call(L"Quit");
        m_object.endSession();
    }
};

} // namespace

bool isExcelSystem()
{
    return true;
}

std::unique_ptr<Application> createExcelSession(std::uint32_t typingLocale)
{
    auto references = std::make_shared<ExcelReferences>(typingLocale != 0 ? typingLocale : ::GetUserDefaultLCID());
    return std::make_unique<ExcelApplication>(ExcelObject(std::move(references), L"Excel.Application"));
}

} // namespace wagemill
