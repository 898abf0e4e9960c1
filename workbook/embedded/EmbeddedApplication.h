#pragma once

#include "app/base/text/RegionalFormats.h"
#include "drawing/Drawing.h"
#include "workbook/spreadsheet/Spreadsheet.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace wagemill {

struct EmbeddedSession;

/// The embedded engine's own clipboard, so that pay stubs never reach other programs and what the user had copied
/// stays. It holds one picture, a drawing in its file form.
class EmbeddedPictureClipboard : public PictureClipboard {
public:
    void copy(const drawing::Drawing& drawing);
    void clear() { m_picture.reset(); }

    /// Format 0 only, for a drawing is no format of the system's. Throws SpreadsheetError when there is no picture.
    Picture GetData(std::int16_t format) override;

private:
    std::optional<Picture> m_picture;
};

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
    std::shared_ptr<EmbeddedSession> m_session;
};

} // namespace wagemill
