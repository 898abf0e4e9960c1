#include "tests/workbook/FakeSpreadsheet.h"

namespace wagemill::test {

namespace {

std::string quoted(std::string_view text)
{
    return "\"" + std::string(text) + "\"";
}

/// Every fake object knows how it was reached; each member adds its name and calls.
struct Node {
    FakeSpreadsheet& fake;
    std::string path;

    void call(const std::string& member) const { fake.call(path + member); }
    Node down(const std::string& member) const
    {
        call(member);
        return {fake, path + member};
    }
};

class FakeRange : public CellRange {
public:
    explicit FakeRange(Node node) : m_node(std::move(node)) {}
    std::unique_ptr<CellRange> Rows() override { return down(".Rows"); }
    std::unique_ptr<CellRange> Columns() override { return down(".Columns"); }
    std::unique_ptr<CellRange> Rows(std::int32_t index) override
    {
        return down(".Rows(" + std::to_string(index) + ")");
    }
    std::unique_ptr<CellRange> Columns(std::int32_t index) override
    {
        return down(".Columns(" + std::to_string(index) + ")");
    }
    std::int32_t count() override
    {
        m_node.call(".count");
        return 11;
    }
    std::int32_t Row() override
    {
        m_node.call(".Row");
        return m_node.fake.lastRow;
    }
    std::int32_t Column() override
    {
        m_node.call(".Column");
        return 8;
    }
    void Select() override { m_node.call(".Select"); }
    void CopyPicture() override { m_node.call(".CopyPicture"); }

private:
    std::unique_ptr<CellRange> down(const std::string& member)
    {
        return std::make_unique<FakeRange>(m_node.down(member));
    }
    Node m_node;
};

class FakeSelection : public Selection {
public:
    explicit FakeSelection(Node node) : m_node(std::move(node)) {}
    void Copy() override { m_node.call(".Copy"); }
    void PasteSpecial(PasteType paste, PasteOperation operation, bool skipBlanks, bool transpose) override
    {
        m_node.call(".PasteSpecial(" + std::to_string(static_cast<int>(paste)) + ", " +
                    std::to_string(static_cast<int>(operation)) + ", " + (skipBlanks ? "True" : "False") + ", " +
                    (transpose ? "True" : "False") + ")");
    }

private:
    Node m_node;
};

class FakeSheet : public Worksheet {
public:
    explicit FakeSheet(Node node) : m_node(std::move(node)) {}
    std::string Name() override
    {
        m_node.call(".Name");
        return "Individual paystubs";
    }
    void Activate() override { m_node.call(".Activate"); }
    std::unique_ptr<CellRange> Rows(std::string_view address) override
    {
        return down(".Rows(" + quoted(address) + ")");
    }
    std::unique_ptr<CellRange> Range(std::string_view address) override
    {
        return down(".Range(" + quoted(address) + ")");
    }
    std::unique_ptr<CellRange> UsedRange() override { return down(".UsedRange"); }
    void PutCells(std::int32_t row, std::int32_t column, std::string_view text) override
    {
        m_node.call(".Cells(" + std::to_string(row) + ", " + std::to_string(column) + ") = " + quoted(text));
    }

private:
    std::unique_ptr<CellRange> down(const std::string& member)
    {
        return std::make_unique<FakeRange>(m_node.down(member));
    }
    Node m_node;
};

class FakeWorkbook : public Workbook {
public:
    explicit FakeWorkbook(Node node) : m_node(std::move(node)) {}
    std::unique_ptr<Worksheet> Sheets(std::int32_t index) override
    {
        return std::make_unique<FakeSheet>(m_node.down(".Sheets(" + std::to_string(index) + ")"));
    }
    std::unique_ptr<Worksheet> ActiveSheet() override
    {
        return std::make_unique<FakeSheet>(m_node.down(".ActiveSheet"));
    }
    void SaveAs(std::string_view path, FileFormat fileFormat) override
    {
        m_node.call(".SaveAs(" + quoted(path) + ", FileFormat = " + std::to_string(static_cast<int>(fileFormat)) + ")");
    }
    void Close() override { m_node.call(".Close"); }

private:
    Node m_node;
};

class FakeWorkbooks : public Workbooks {
public:
    explicit FakeWorkbooks(Node node) : m_node(std::move(node)) {}
    std::unique_ptr<Workbook> Open(std::string_view path) override { return open("(" + quoted(path) + ")"); }
    std::unique_ptr<Workbook> OpenReadOnly(std::string_view path) override
    {
        return open("(" + quoted(path) + ", ReadOnly = True)");
    }
    std::int32_t count() override
    {
        m_node.call(".count");
        return 1;
    }

private:
    std::unique_ptr<Workbook> open(const std::string& arguments)
    {
        m_node.call(".Open" + arguments);
        return std::make_unique<FakeWorkbook>(Node{m_node.fake, m_node.path.substr(0, 1) + ".Book"});
    }
    Node m_node;
};

class FakeApplication : public Application {
public:
    explicit FakeApplication(Node node) : m_node(std::move(node)) {}
    std::string Version() override
    {
        m_node.call(".Version");
        return m_node.fake.version;
    }
    std::unique_ptr<wagemill::Workbooks> Workbooks() override
    {
        return std::make_unique<FakeWorkbooks>(m_node.down(".Workbooks"));
    }
    std::unique_ptr<Workbook> Workbooks(std::int32_t index) override
    {
        m_node.call(".Workbooks(" + std::to_string(index) + ")");
        return std::make_unique<FakeWorkbook>(Node{m_node.fake, m_node.path + ".Book"});
    }
    std::unique_ptr<wagemill::Selection> Selection() override
    {
        return std::make_unique<FakeSelection>(m_node.down(".Selection"));
    }
    std::unique_ptr<CellRange> Range(std::string_view address) override
    {
        return std::make_unique<FakeRange>(m_node.down(".Range(" + quoted(address) + ")"));
    }
    void PutVisible(bool visible) override { m_node.call(std::string(".Visible = ") + (visible ? "True" : "False")); }
    void PutDisplayAlerts(bool alerts) override
    {
        m_node.call(std::string(".DisplayAlerts = ") + (alerts ? "True" : "False"));
    }
    void Quit() override { m_node.call(".Quit"); }

private:
    Node m_node;
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
