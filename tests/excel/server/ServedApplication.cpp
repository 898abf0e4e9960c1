#include "tests/excel/server/ServedApplication.h"

#include <utility>

namespace wagemill::test {

namespace {

using CopyPicture = std::function<void(CellRange&)>;

/// A member whose work takes the arguments and gives the result.
template <typename Work>
Member getter(std::string name, Work work, WORD kinds = DISPATCH_PROPERTYGET, std::vector<std::string> named = {})
{
    return {std::move(name), kinds, std::move(named),
            [work](const CallArguments& arguments, VARIANT& result) { setResult(result, work(arguments)); }};
}

/// One whose work takes the arguments and gives nothing.
template <typename Work>
Member action(std::string name, Work work, std::vector<std::string> named = {}, WORD kinds = DISPATCH_METHOD)
{
    return {std::move(name), kinds, std::move(named),
            [work](const CallArguments& arguments, VARIANT&) { work(arguments); }};
}

template <typename Work>
Member setter(std::string name, Work work)
{
    return action(std::move(name), work, {}, DISPATCH_PROPERTYPUT);
}

using Arguments = const CallArguments&;

/// Makes objects of the application's classes; what they refer to they keep alive.
class Classes {
public:
    Classes(Server& server, CopyPicture copyPicture) : m_server(server), m_copyPicture(std::move(copyPicture)) {}

    AutomationObject* application(std::shared_ptr<Application> given) const;

private:
    AutomationObject* workbooks(std::shared_ptr<Workbooks> given) const;
    AutomationObject* workbook(std::shared_ptr<Workbook> given) const;
    AutomationObject* worksheet(std::shared_ptr<Worksheet> given) const;
    AutomationObject* range(std::shared_ptr<CellRange> given) const;
    AutomationObject* selection(std::shared_ptr<Selection> given) const;
    AutomationObject* object(const char* name, std::vector<Member> members) const
    {
        return new AutomationObject(m_server, name, std::move(members)); // its last user releases it
    }

    Server& m_server;
    CopyPicture m_copyPicture;
};

AutomationObject* Classes::application(std::shared_ptr<Application> given) const
{
    const auto version = [given, version = m_server.instructions.text("version", "16.0")](Arguments) {
        given->Version(); // fails when it has ended
        return version;
    };
    const auto books = [given, self = *this](Arguments with) {
        return with.count() == 0 ? self.workbooks(given->Workbooks()) : self.workbook(given->Workbooks(with.number(0)));
    };
    return object(
        "Application",
        {getter("Version", version), getter("Workbooks", books),
         setter("Visible", [given](Arguments with) { given->PutVisible(with.putFlag()); }),
         setter("DisplayAlerts", [given](Arguments with) { given->PutDisplayAlerts(with.putFlag()); }),
         getter("Selection", [given, self = *this](Arguments) { return self.selection(given->Selection()); }),
         getter("Range", [given, self = *this](Arguments with) { return self.range(given->Range(with.text(0))); }),
         action("Quit", [given](Arguments) { given->Quit(); })});
}

AutomationObject* Classes::workbooks(std::shared_ptr<Workbooks> given) const
{
    const auto open = [given, self = *this](Arguments with) {
        const bool isReadOnly = with.count() == 3 && with.flag(2);
        return self.workbook(isReadOnly ? given->OpenReadOnly(with.text(0)) : given->Open(with.text(0)));
    };
    return object("Workbooks", {getter("Open", open, DISPATCH_METHOD, {"Filename", "UpdateLinks", "ReadOnly"}),
                                getter("count", [given](Arguments) { return given->count(); })});
}

AutomationObject* Classes::workbook(std::shared_ptr<Workbook> given) const
{
    const auto saveAs = [given](Arguments with) {
        given->SaveAs(with.text(0), static_cast<FileFormat>(with.number(1)));
    };
    return object(
        "Workbook",
        {getter("Sheets",
                [given, self = *this](Arguments with) { return self.worksheet(given->Sheets(with.number(0))); }),
         getter("ActiveSheet", [given, self = *this](Arguments) { return self.worksheet(given->ActiveSheet()); }),
         action("SaveAs", saveAs, {"Filename", "FileFormat"}),
         action("Close", [given](Arguments) { given->Close(); })});
}

AutomationObject* Classes::worksheet(std::shared_ptr<Worksheet> given) const
{
    const auto cells = [given](Arguments with) { given->PutCells(with.number(0), with.number(1), with.putText()); };
    const auto rows = [given, self = *this](Arguments with) { return self.range(given->Rows(with.text(0))); };
    const auto range = [given, self = *this](Arguments with) { return self.range(given->Range(with.text(0))); };
    return object("Worksheet",
                  {getter("Name", [given](Arguments) { return given->Name(); }),
                   action("Activate", [given](Arguments) { given->Activate(); }), getter("Rows", rows),
                   getter("Range", range),
                   getter("UsedRange", [given, self = *this](Arguments) { return self.range(given->UsedRange()); }),
                   setter("Cells", cells)});
}

AutomationObject* Classes::range(std::shared_ptr<CellRange> given) const
{
    const auto rows = [given, self = *this](Arguments with) {
        return self.range(with.count() == 0 ? given->Rows() : given->Rows(with.number(0)));
    };
    const auto columns = [given, self = *this](Arguments with) {
        return self.range(with.count() == 0 ? given->Columns() : given->Columns(with.number(0)));
    };
    return object("Range", {getter("Rows", rows), getter("Columns", columns),
                            getter("count", [given](Arguments) { return given->count(); }),
                            getter("Row", [given](Arguments) { return given->Row(); }),
                            getter("Column", [given](Arguments) { return given->Column(); }),
                            action("Select", [given](Arguments) { given->Select(); }),
                            action("CopyPicture", [given, copy = m_copyPicture](Arguments) { copy(*given); })});
}

AutomationObject* Classes::selection(std::shared_ptr<Selection> given) const
{
    const auto paste = [given](Arguments with) {
        given->PasteSpecial(static_cast<PasteType>(with.number(0)), static_cast<PasteOperation>(with.number(1)),
                            with.flag(2), with.flag(3));
    };
    return object("Selection", {action("Copy", [given](Arguments) { given->Copy(); }),
                                action("PasteSpecial", paste, {"Paste", "Operation", "SkipBlanks", "Transpose"})});
}

} // namespace

AutomationObject* serveApplication(Server& server, std::shared_ptr<Application> application, CopyPicture copyPicture)
{
    return Classes(server, std::move(copyPicture)).application(std::move(application));
}

} // namespace wagemill::test
