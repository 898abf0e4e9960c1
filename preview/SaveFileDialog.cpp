#include "preview/SaveFileDialog.h"

#include "app/look/Look.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QStandardPaths>

namespace wagemill {

namespace {

/// A folder that is missing would become the name that the dialog starts with.
QString startFolder(const QString& lastFolder)
{
    if (QFileInfo(lastFolder).isDir())
        return lastFolder;
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QFileInfo(documents).isDir() ? documents : QDir::homePath();
}

} // namespace

SaveFileDialog platformSaveFileDialog()
{
    return [lastFolder = QString()](const std::string& title, const std::string& filter,
                                    QWidget& owner) mutable -> std::filesystem::path {
        QFileDialog dialog(&owner, QString::fromStdString(title), startFolder(lastFolder));
        dialog.setObjectName(QStringLiteral("CommonDialog1"));
        applyDesignFont(dialog);
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.setOption(QFileDialog::DontConfirmOverwrite);
        QString nameFilter = QString::fromStdString(filter).section(u'|', 0, 0);
        if (QGuiApplication::platformName() == QStringLiteral("windows")) {
            // Its own dialog adds the ending after the filter's first "*." to a name that was typed without one.
            nameFilter.replace(QStringLiteral("*."), QStringLiteral("*?"));
            dialog.setOption(QFileDialog::HideNameFilterDetails);
        }
        dialog.setNameFilter(nameFilter);
        if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
            return {};
        const QFileInfo chosen(dialog.selectedFiles().constFirst());
        lastFolder = chosen.absolutePath();
        return chosen.filesystemFilePath().make_preferred();
    };
}

} // namespace wagemill
