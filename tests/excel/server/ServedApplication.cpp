#include "tests/excel/server/ServedApplication.h"

#include <utility>

namespace wagemill::test {

namespace {

using CopyPicture = std::function<void(CellRange&)>;

constexpr WORD get = DISPATCH_PROPERTYGET;
constexpr WORD put = DISPATCH_PROPERTYPUT;
constexpr WORD method = DISPATCH_METHOD;

/// Makes objects of the application's classes; what they refer to they keep alive.
class Classes {
public:
    Classes(Server& server, CopyPicture copyPicture) : m_server(server), m_copyPicture(std::move(copyPicture)) {}

    AutomationObject* application(std::shared_ptr<Application> application) const;

private:
    AutomationObject* workbooks(std::unique_ptr<Workbooks> given) const;
    AutomationObject* workbook(std::unique_ptr<Workbook> given) const;
    AutomationObject* worksheet(std::unique_ptr<Worksheet> given) const;
    AutomationObject* range(std::unique_ptr<CellRange> given) const;
    AutomationObject* selection(std::unique_ptr<Selection> given) const;
    AutomationObject* object(const char* name, std::vector<Member> members) const
    {
        return new AutomationObject(m_server, name, std::move(members)); // its last user releases it
    }

    Server& m_server;
    CopyPicture m_copyPicture;
};

AutomationObject* Classes::application(std::shared_ptr<Application> application) const
{
    return object(
        "Application",
        {
            {"Version",
             get,
             {},
             [application, version = m_server.instructions.version](const CallArguments&, VARIANT& result) {
                 application->Version(); // fails when it has ended
                 setResult(result, version);
             }},
            {"Workbooks",
             get,
             {},
             [application, self = *this](const CallArguments& arguments, VARIANT& result) {
                 if (arguments.count() == 0)
                     setResult(result, self.workbooks(application->Workbooks()));
                 else
                     setResult(result, self.workbook(application->Workbooks(arguments.number(0))));
             }},
            {"Visible",
             put,
             {},
             [application](const CallArguments& arguments, VARIANT&) { application->PutVisible(arguments.putFlag()); }},
            {"DisplayAlerts",
             put,
             {},
             [application](const CallArguments& arguments, VARIANT&) {
                 application->PutDisplayAlerts(arguments.putFlag());
             }},
            {"Selection",
             get,
             {},
             [application, self = *this](const CallArguments&, VARIANT& result) {
                 setResult(result, self.selection(application->Selection()));
             }},
            {"Range",
             get,
             {},
             [application, self = *this](const CallArguments& arguments, VARIANT& result) {
                 setResult(result, self.range(application->Range(arguments.text(0))));
             }},
            {"Quit", method, {}, [application](const CallArguments&, VARIANT&) { application->Quit(); }},
        });
}

AutomationObject* Classes::workbooks(std::unique_ptr<Workbooks> given) const
{
    const std::shared_ptr<Workbooks> workbooks = std::move(given);
    return object("Workbooks",
                  {
                      {"Open",
                       method,
                       {"Filename", "UpdateLinks", "ReadOnly"},
                       [workbooks, self = *this](const CallArguments& arguments, VARIANT& result) {
                           const bool isReadOnly = arguments.count() == 3 && arguments.flag(2);
                           const std::string path = arguments.text(0);
                           setResult(result,
                                     self.workbook(isReadOnly ? workbooks->OpenReadOnly(path) : workbooks->Open(path)));
                       }},
                      {"count",
                       get,
                       {},
                       [workbooks](const CallArguments&, VARIANT& result) { setResult(result, workbooks->count()); }},
                  });
}

AutomationObject* Classes::workbook(std::unique_ptr<Workbook> given) const
{
    const std::shared_ptr<Workbook> workbook = std::move(given);
    return object("Workbook",
                  {
                      {"Sheets",
                       get,
                       {},
                       [workbook, self = *this](const CallArguments& arguments, VARIANT& result) {
                           setResult(result, self.worksheet(workbook->Sheets(arguments.number(0))));
                       }},
                      {"ActiveSheet",
                       get,
                       {},
                       [workbook, self = *this](const CallArguments&, VARIANT& result) {
                           setResult(result, self.worksheet(workbook->ActiveSheet()));
                       }},
                      {"SaveAs",
                       method,
                       {"Filename", "FileFormat"},
                       [workbook](const CallArguments& arguments, VARIANT&) {
                           workbook->SaveAs(arguments.text(0), static_cast<FileFormat>(arguments.number(1)));
                       }},
                      {"Close", method, {}, [workbook](const CallArguments&, VARIANT&) { workbook->Close(); }},
                  });
}

AutomationObject* Classes::worksheet(std::unique_ptr<Worksheet> given) const
{
    const std::shared_ptr<Worksheet> sheet = std::move(given);
    return object(
        "Worksheet",
        {
            {"Name",
             get,
             {},
             [sheet](const CallArguments&, VARIANT& result) { setResult(result, std::string_view(sheet->Name())); }},
            {"Activate", method, {}, [sheet](const CallArguments&, VARIANT&) { sheet->Activate(); }},
            {"Rows",
             get,
             {},
             [sheet, self = *this](const CallArguments& arguments, VARIANT& result) {
                 setResult(result, self.range(sheet->Rows(arguments.text(0))));
             }},
            {"Range",
             get,
             {},
             [sheet, self = *this](const CallArguments& arguments, VARIANT& result) {
                 setResult(result, self.range(sheet->Range(arguments.text(0))));
             }},
            {"UsedRange",
             get,
             {},
             [sheet, self = *this](const CallArguments&, VARIANT& result) {
                 setResult(result, self.range(sheet->UsedRange()));
             }},
            {"Cells",
             put,
             {},
             [sheet](const CallArguments& arguments, VARIANT&) {
                 sheet->PutCells(arguments.number(0), arguments.number(1), arguments.putText());
             }},
        });
}

AutomationObject* Classes::range(std::unique_ptr<CellRange> given) const
{
    const std::shared_ptr<CellRange> range = std::move(given);
    return object(
        "Range",
        {
            {"Rows",
             get,
             {},
             [range, self = *this](const CallArguments& arguments, VARIANT& result) {
                 setResult(result,
                           self.range(arguments.count() == 0 ? range->Rows() : range->Rows(arguments.number(0))));
             }},
            {"Columns",
             get,
             {},
             [range, self = *this](const CallArguments& arguments, VARIANT& result) {
                 setResult(result,
                           self.range(arguments.count() == 0 ? range->Columns() : range->Columns(arguments.number(0))));
             }},
            {"count", get, {}, [range](const CallArguments&, VARIANT& result) { setResult(result, range->count()); }},
            {"Row", get, {}, [range](const CallArguments&, VARIANT& result) { setResult(result, range->Row()); }},
            {"Column", get, {}, [range](const CallArguments&, VARIANT& result) { setResult(result, range->Column()); }},
            {"Select", method, {}, [range](const CallArguments&, VARIANT&) { range->Select(); }},
            {"CopyPicture",
             method,
             {},
             [range, copyPicture = m_copyPicture](const CallArguments&, VARIANT&) { copyPicture(*range); }},
        });
}

AutomationObject* Classes::selection(std::unique_ptr<Selection> given) const
{
    const std::shared_ptr<Selection> selection = std::move(given);
    return object("Selection",
                  {
                      {"Copy", method, {}, [selection](const CallArguments&, VARIANT&) { selection->Copy(); }},
                      {"PasteSpecial",
                       method,
                       {"Paste", "Operation", "SkipBlanks", "Transpose"},
                       [selection](const CallArguments& arguments, VARIANT&) {
                           selection->PasteSpecial(static_cast<PasteType>(arguments.number(0)),
                                                   static_cast<PasteOperation>(arguments.number(1)), arguments.flag(2),
                                                   arguments.flag(3));
                       }},
                  });
}

} // namespace

AutomationObject* serveApplication(Server& server, std::shared_ptr<Application> application, CopyPicture copyPicture)
{
    return Classes(server, std::move(copyPicture)).application(std::move(application));
}

} // namespace wagemill::test
