#pragma once

#include "app/base/Interface.h"

#include <QStringList>

#include <filesystem>
#include <string>

class QWidget;

namespace wagemill {

struct SaveFileRequest {
    std::string fileName; ///< the name that the dialog starts with; empty for none
    std::string title;
    std::string filter; ///< pairs of description and pattern, each followed by a bar: "Excel Files (*.xls)|*.xls|"
};

/// Asks the user for the name of a file to be written.
class SaveFileDialog : public Interface {
public:
    /// The full path exactly as named, no extension added; empty when the user cancelled. A name that exists already is
    /// returned without a question.
    virtual std::filesystem::path showSave(const SaveFileRequest& request, QWidget& owner) = 0;
};

/// The platform's own dialog, opened in the user's documents and then in the folder of the last name.
class PlatformSaveFileDialog : public SaveFileDialog {
public:
    std::filesystem::path showSave(const SaveFileRequest& request, QWidget& owner) override;

private:
    QString m_lastFolder; ///< empty until a name was chosen
};

/// The filters of a dialog as Qt names them: "Excel Files (*.xls)|*.xls|" -> {"Excel Files (*.xls)"}.
QStringList nameFilters(const std::string& filter);

} // namespace wagemill
