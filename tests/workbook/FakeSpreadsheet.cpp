#include "tests/workbook/FakeSpreadsheet.h"

namespace wagemill::test {

namespace {

std::string quoted(std::string_view text)
{
    return "\"" + std::string(text) + "\"";
}

/// A member and its argument.
std::string with(const char* member, std::string_view text)
{
    return member + ("(" + quoted(text) + ")");
}

std::string with(const char* member, std::int32_t index)
{
    return member + ("(" + std::to_string(index) + ")");
}

std::string nameOf(bool value)
{
    return value ? "True" : "False";
}

/// Every fake object knows how it was reached; each member adds its name and calls.
struct Node {
    FakeSpreadsheet& fake;
    std::string path;

    void call(const std::string& member) const { fake.call(path + member); }
    auto call(const std::string& member, auto answer) const
    {
        call(member);
        return answer;
    }
    Node down(const std::string& member) const { return call(member, Node{fake, path + member}); }
};

/// A fake object of the application.
template <class Interface>
struct Fake : Interface {
    explicit Fake(Node reached) : node(std::move(reached)) {}

    /// The object that a member gives.
    template <class Child>
    std::unique_ptr<Child> child(const std::string& member) const
    {
        return std::make_unique<Child>(node.down(member));
    }

    const Node node;
};

struct FakeRange : Fake<CellRange> {
    using Fake::Fake;

    std::unique_ptr<CellRange> Rows() override { return child<FakeRange>(".Rows"); }
    std::unique_ptr<CellRange> Columns() override { return child<FakeRange>(".Columns"); }
    std::unique_ptr<CellRange> Rows(std::int32_t index) override { return child<FakeRange>(with(".Rows", index)); }
    std::unique_ptr<CellRange> Columns(std::int32_t index) override
    {
        return child<FakeRange>(with(".Columns", index));
    }
    std::int32_t count() override { return node.call(".count", 11); }
    std::int32_t Row() override { return node.call(".Row", node.fake.lastRow); }
    std::int32_t Column() override { return node.call(".Column", 8); }
    void Select() override { node.call(".Select"); }
    void CopyPicture() override { node.call(".CopyPicture"); }
};

struct FakeSelection : Fake<Selection> {
    using Fake::Fake;

    void Copy() override { node.call(".Copy"); }
    void PasteSpecial(PasteType paste, PasteOperation operation, bool skipBlanks, bool transpose) override
    {
        node.call(".PasteSpecial(" + std::to_string(static_cast<int>(paste)) + ", " +
                  std::to_string(static_cast<int>(operation)) + ", " + nameOf(skipBlanks) + ", " + nameOf(transpose) +
                  ")");
    }
};

struct FakeSheet : Fake<Worksheet> {
    using Fake::Fake;

    std::string Name() override { return node.call(".Name", "Individual paystubs"); }
    void Activate() override { node.call(".Activate"); }
    std::unique_ptr<CellRange> Rows(std::string_view address) override
    {
        return child<FakeRange>(with(".Rows", address));
    }
    std::unique_ptr<CellRange> Range(std::string_view address) override
    {
        return child<FakeRange>(with(".Range", address));
    }
    std::unique_ptr<CellRange> UsedRange() override { return child<FakeRange>(".UsedRange"); }
    void PutCells(std::int32_t row, std::int32_t column, std::string_view text) override
    {
        node.call(".Cells(" + std::to_string(row) + ", " + std::to_string(column) + ") = " + quoted(text));
    }
};

struct FakeWorkbook : Fake<Workbook> {
    using Fake::Fake;

    std::unique_ptr<Worksheet> Sheets(std::int32_t index) override { return child<FakeSheet>(with(".Sheets", index)); }
    std::unique_ptr<Worksheet> ActiveSheet() override { return child<FakeSheet>(".ActiveSheet"); }
    void SaveAs(std::string_view path, FileFormat fileFormat) override
    {
        node.call(".SaveAs(" + quoted(path) + ", FileFormat = " + std::to_string(static_cast<int>(fileFormat)) + ")");
    }
    void Close() override { node.call(".Close"); }
};

struct FakeWorkbooks : Fake<Workbooks> {
    using Fake::Fake;

    std::unique_ptr<Workbook> Open(std::string_view path) override { return open(quoted(path)); }
    std::unique_ptr<Workbook> OpenReadOnly(std::string_view path) override
    {
        return open(quoted(path) + ", ReadOnly = True");
    }
    std::int32_t count() override { return node.call(".count", 1); }

    std::unique_ptr<Workbook> open(const std::string& arguments)
    {
        node.call(".Open(" + arguments + ")");
        return std::make_unique<FakeWorkbook>(Node{node.fake, node.path.substr(0, 1) + ".Book"});
    }
};

struct FakeApplication : Fake<Application> {
    using Fake::Fake;

    std::string Version() override { return node.call(".Version", node.fake.version); }
    std::unique_ptr<wagemill::Workbooks> Workbooks() override { return child<FakeWorkbooks>(".Workbooks"); }
    std::unique_ptr<Workbook> Workbooks(std::int32_t index) override
    {
        node.call(with(".Workbooks", index));
        return std::make_unique<FakeWorkbook>(Node{node.fake, node.path + ".Book"});
    }
    std::unique_ptr<wagemill::Selection> Selection() override { return child<FakeSelection>(".Selection"); }
    std::unique_ptr<CellRange> Range(std::string_view address) override
    {
        return child<FakeRange>(with(".Range", address));
    }
    void PutVisible(bool visible) override { node.call(".Visible = " + nameOf(visible)); }
    void PutDisplayAlerts(bool alerts) override { node.call(".DisplayAlerts = " + nameOf(alerts)); }
    void Quit() override { node.call(".Quit"); }
};

} // namespace

void FakeSpreadsheet::call(const std::string& text)
{
    calls.push_back(text);
    if (fails(static_cast<int>(calls.size())))
        throw SpreadsheetError("The call " + text + " was refused.");
}

SpreadsheetPlatform FakeSpreadsheet::platform()
{
    return {[this]() -> std::unique_ptr<Application> {
                call("new");
                return std::make_unique<FakeApplication>(Node{*this, std::to_string(++sessions)});
            },
            &m_clipboard};
}

Picture FakeSpreadsheet::Clipboard::GetData(std::int16_t /*format*/)
{
    if (++m_fake.fetches <= m_fake.emptyFetches)
        throw SpreadsheetError("The clipboard holds no picture.");
    return {std::make_shared<const std::vector<std::byte>>(m_fake.pictureBytes)};
}

} // namespace wagemill::test
