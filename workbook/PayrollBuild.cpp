#include "workbook/PayrollBuild.h"

#include "app/base/ErrorTrap.h"
#include "app/base/Files.h"
#include "app/base/Messages.h"
#include "app/base/text/NumberText.h"
#include "workbook/Excel1.h"

#include <memory>

namespace wagemill {

namespace {

constexpr std::int16_t firstSummaryRow = 4;
constexpr std::int16_t stubHeight = 12; ///< rows from one stub to the next
constexpr std::int16_t firstStubRow = 2;
constexpr std::string_view stubBlock = "2:12";
constexpr int fileNameDigits = 8;

enum class SheetNumber : std::int32_t { Information = 1, Calculator = 2, Stubs = 3 };

/// One build: the steps in their order, and what they hand to each other. A member that an earlier step failed to make
/// is empty, and the steps that reach for it fail in their turn.
class PayrollBuild {
public:
    PayrollBuild(const PayrollData& data, BuildWindows& windows, const BuildServices& services)
        : m_data(data), m_windows(windows), m_services(services)
    {
    }

    void run()
    {
        openTemplate();
        for (std::size_t row = 0; row < m_data.rows.size(); ++row)
            fillEmployee(static_cast<std::int16_t>(row));
        saveWorkbook();
        takePicture();
        showResult();
        cleanUp();
    }

private:
    void openTemplate()
    {
        m_trap.step(10, [&] { m_windows.freezeDrawing(); });
        m_trap.step(20, [&] { m_windows.showHourglass(); });
        m_trap.step(25, [&] { m_folderLock = lockTemporaryFolder(); });
        m_trap.step(30, [&] { m_session = m_services.spreadsheet.createSession(); });
        m_trap.step(40, [&] { m_templateBytes = m_services.templateResource(); });
        m_trap.step(50, [&] {
            if (!fileExists(m_template))
                writeBytesToFile(m_templateBytes, m_template);
        });
        m_trap.step(60, [&] {
            requireOwnFile(m_template);
            m_workbook = session().Workbooks()->OpenReadOnly(m_template.string());
        });
    }

    void fillEmployee(std::int16_t row)
    {
        const EmployeeRow& employee = m_data.rows[static_cast<std::size_t>(row)];
        fillSheet(100, SheetNumber::Information, &FieldColumns::sheet1, employee);
        fillSheet(200, SheetNumber::Calculator, &FieldColumns::sheet2, employee);
        put(220, SheetNumber::Calculator, 2, 12, m_data.header.periodEnding);
        m_trap.step(230, [&] { m_summaryRow = toInt16(m_summaryRow + 1); });
        copyStub(row, employee);
    }

    /// Every field has a step of its own: `step` for the first, one more for each that follows.
    void fillSheet(int step, SheetNumber sheet, std::uint8_t FieldColumns::*column, const EmployeeRow& employee)
    {
        for (std::size_t index = 0; index < rowFields.size(); ++index) {
            const RowField& field = rowFields[index];
            if (field.columns.*column != 0)
                put(step + static_cast<int>(index), sheet, m_summaryRow, field.columns.*column,
                    employee.texts[index] + (field.kind == FieldKind::Rate ? "%" : ""));
        }
    }

    void put(int step, SheetNumber number, std::int32_t row, std::int32_t column, const std::string& text)
    {
        m_trap.step(step, [&] {
            const auto target = sheet(number);
            try {
                target->PutCells(row, column, text);
            } catch (const std::exception&) {
                quietly([&] { target->PutCells(row, column, ""); }); // rather than the template's example
                throw;
            }
        });
    }

    void copyStub(std::int16_t row, const EmployeeRow& employee)
    {
        std::int16_t stubRow = firstStubRow;
        m_trap.step(300, [&] { stubRow = toInt16(row * stubHeight + firstStubRow); });
        m_trap.step(310, [&] { sheet(SheetNumber::Stubs)->Activate(); });
        m_trap.step(320, [&] { sheet(SheetNumber::Stubs)->Rows(stubBlock)->Select(); });
        m_trap.step(330, [&] { session().Selection()->Copy(); });
        m_trap.step(340, [&] { sheet(SheetNumber::Stubs)->Range("A" + std::to_string(stubRow))->Select(); });
        m_trap.step(350,
                    [&] { session().Selection()->PasteSpecial(PasteType::All, PasteOperation::None, false, false); });
        put(360, SheetNumber::Stubs, stubRow, 3, m_data.header.companyName);
        put(370, SheetNumber::Stubs, stubRow + 1, 8, employee.texts[employeeIdField]);
        m_trap.step(380, [&] { sheet(SheetNumber::Stubs)->Range("A1")->Select(); });
    }

    void saveWorkbook()
    {
        m_trap.step(400, [&] { session().Range("D5")->Select(); });
        m_trap.step(410, [&] { session().PutVisible(false); });
        m_trap.step(420, [&] { chooseWorkbookPath(); });
        m_trap.step(430, [&] {
            const FileFormat format = getSaveFileFormat(m_services.spreadsheet.createSession, m_session.get());
            present(m_workbook, "workbook").SaveAs(m_path.string(), format);
        });
        m_trap.step(440, [&] { session().PutDisplayAlerts(false); });
        m_trap.step(450, [&] { present(m_workbook, "workbook").Close(); });
        m_trap.step(460, [&] { session().Quit(); });
        m_workbook.reset();
        m_session.reset();
    }

    void chooseWorkbookPath()
    {
        do {
            std::string name = "/kvarno";
            for (int digit = 0; digit < fileNameDigits; ++digit)
                name += std::to_string(m_services.randomNumber(1, 9));
            m_path = inTemporaryFolder(name + ".xls");
        } while (fileExists(m_path));
    }

    void takePicture()
    {
        std::unique_ptr<Application> session;
        std::unique_ptr<Workbook> workbook;
        m_trap.step(500, [&] {
            std::error_code ignored;
            std::filesystem::remove(m_picture, ignored); // a killed run's must not pass for this build's
            requireOwnFile(m_path);
            session = openWorkbookInExcel(m_services.spreadsheet.createSession, m_path.string());
        });
        m_trap.step(510, [&] { m_windows.showHourglass(); });
        m_trap.step(520, [&] {
            Application& preview = present(session, "spreadsheet session for the preview");
            workbook = preview.Workbooks(preview.Workbooks()->count());
        });
        saveCellsActivesheet(workbook.get(), m_picture, present(m_services.spreadsheet.clipboard, "clipboard"));
        m_trap.step(540, [&] { present(session, "spreadsheet session for the preview").PutDisplayAlerts(false); });
        m_trap.step(550, [&] { present(workbook, "workbook for the preview").Close(); });
        m_trap.step(560, [&] { present(session, "spreadsheet session for the preview").Quit(); });
        m_trap.step(570, [&] { m_windows.showHourglass(); });
    }

    void showResult()
    {
        m_trap.step(600, [&] {
            requireOwnFile(m_picture);
            m_windows.showPicture(m_picture);
        });
        m_trap.step(610, [&] { m_windows.passWorkbook(m_path); });
        m_trap.step(620, [&] { m_windows.showPreview(); });
        m_trap.step(630, [&] { m_windows.hideEntry(); });
    }

    void cleanUp()
    {
        m_trap.step(700, [&] { deleteFileQuietly(m_picture); });
        m_trap.step(710, [&] { deleteFileQuietly(m_template); });
        m_trap.step(720, [&] { m_windows.unfreezeDrawing(); });
        m_trap.step(730, [&] { m_windows.showArrow(); });
    }

    Application& session() const { return present(m_session, "spreadsheet session"); }
    std::unique_ptr<Worksheet> sheet(SheetNumber number) const
    {
        return present(m_workbook, "workbook").Sheets(static_cast<std::int32_t>(number));
    }

    const PayrollData& m_data;
    BuildWindows& m_windows;
    const BuildServices& m_services;
    ErrorTrap m_trap{"Form1.PushButton22_Click"};

    std::shared_ptr<void> m_folderLock; ///< the names of template and picture are the same for every build
    std::filesystem::path m_template = inTemporaryFolder("/template.xlt");
    std::filesystem::path m_picture = inTemporaryFolder("/temp.bmp");
    std::filesystem::path m_path; ///< of the saved workbook
    std::unique_ptr<Application> m_session;
    std::unique_ptr<Workbook> m_workbook;
    std::span<const std::byte> m_templateBytes;
    std::int16_t m_summaryRow = firstSummaryRow;
};

} // namespace

void buildPayrollWorkbook(const PayrollData& data, BuildWindows& windows, const BuildServices& services)
{
    PayrollBuild(data, windows, services).run(); // and gives the folder back before the user is asked to read
    if (const std::string notice = services.spreadsheet.takeNotice(); !notice.empty())
        showMessage({notice, "", MessageIcon::Information, MessageButtons::Ok});
}

} // namespace wagemill
