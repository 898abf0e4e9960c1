#include "preview/SaveFileDialog.h"

#include "app/look/Look.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QStandardPaths>

namespace wagemill {

QStringList nameFilters(const std::string& filter)
{
    const QStringList parts = QString::fromStdString(filter).split(u'|');
    QStringList filters;
    for (qsizetype index = 0; index + 1 < parts.size(); index += 2) {
        const QString description = parts[index].section(u'(', 0, 0).trimmed();
        const QString patterns = QString(parts[index + 1]).replace(u';', u' ');
        filters << QStringLiteral("%1 (%2)").arg(description, patterns);
    }
    return filters;
}

namespace {

/// A folder that is missing would become the name that the dialog starts with.
QString startFolder(const QString& lastFolder)
{
    if (!lastFolder.isEmpty() && QFileInfo(lastFolder).isDir())
        return lastFolder;
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QFileInfo(documents).isDir() ? documents : QDir::homePath();
}

} // namespace

std::filesystem::path PlatformSaveFileDialog::showSave(const SaveFileRequest& request, QWidget& owner)
{
    QFileDialog dialog(&owner, QString::fromStdString(request.title), startFolder(m_lastFolder));
    dialog.setObjectName(QStringLiteral("CommonDialog1"));
    applyDesignFont(dialog);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    QStringList filters = nameFilters(request.filter);
    if (QGuiApplication::platformName() == QStringLiteral("windows")) {
        // Its own dialog adds the ending that follows the first "*." of a filter to a name that was typed without one.
        filters.replaceInStrings(QStringLiteral("*."), QStringLiteral("*?"));
        dialog.setOption(QFileDialog::HideNameFilterDetails);
    }
    dialog.setNameFilters(filters);
    if (!request.fileName.empty())
        dialog.selectFile(QString::fromStdString(request.fileName));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return {};
    const QFileInfo chosen(dialog.selectedFiles().constFirst());
    m_lastFolder = chosen.absolutePath();
    return chosen.filesystemFilePath().make_preferred();
}

} // namespace wagemill
