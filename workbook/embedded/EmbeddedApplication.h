#pragma once

#include "app/base/text/RegionalFormats.h"
#include "workbook/embedded/PictureClipboard.h"
#include "workbook/spreadsheet/Spreadsheet.h"

#include <functional>
#include <memory>
#include <string>

namespace wagemill {

/// The engine as a spreadsheet application: a session of its own, with its own workbooks, selection and row clipboard.
class EmbeddedApplication : public Application {
public:
    /// formats      the user's, for everything typed into a cell and shown in a picture
    /// pictures     receives the pictures; lives longer than the session
    /// tellMissing  takes what to tell the user about formulas that are not computed, whenever there are some
    EmbeddedApplication(RegionalFormats formats, EmbeddedPictureClipboard& pictures,
                        std::function<void(std::string)> tellMissing = {});
    ~EmbeddedApplication() override;

    std::string Version() override;
    std::unique_ptr<wagemill::Workbooks> Workbooks() override;
    std::unique_ptr<Workbook> Workbooks(std::int32_t index) override;
    std::unique_ptr<wagemill::Selection> Selection() override;
    std::unique_ptr<CellRange> Range(std::string_view address) override;
    void PutVisible(bool visible) override;
    void PutDisplayAlerts(bool displayAlerts) override;
    void Quit() override;

private:
    struct Session;
    struct OpenBook;
    class BooksOfSession;
    class BookOfSession;
    class SheetOfBook;
    class RangeOfSheet;
    class SelectionOfSession;

    std::shared_ptr<Session> m_session;
};

} // namespace wagemill
