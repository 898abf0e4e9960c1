#pragma once

#include "workbook/excel/ExcelReferences.h"

namespace wagemill {

/// A running Excel, driven by name: each member here is one call of the member of that name there.
class ExcelApplication : public Application {
public:
    explicit ExcelApplication(ExcelObject application) : m_application(std::move(application)) {}
    /// Releases Excel with everything that was reached through it; does not quit it.
    ~ExcelApplication() override;

    std::string Version() override;
    std::unique_ptr<wagemill::Workbooks> Workbooks() override;
    std::unique_ptr<Workbook> Workbooks(std::int32_t index) override;
    std::unique_ptr<wagemill::Selection> Selection() override;
    std::unique_ptr<CellRange> Range(std::string_view address) override;
    void PutVisible(bool visible) override;
    void PutDisplayAlerts(bool displayAlerts) override;
    void Quit() override;

private:
    ExcelObject m_application;
};

/// createExcelSession with the regional format in which Excel reads what is typed into a cell; there it is the user's.
std::unique_ptr<Application> createExcelSession(LCID typingLocale);

} // namespace wagemill
