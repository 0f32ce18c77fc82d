#include "JxFileDialog.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>

JxFileDialog::JxFileDialog(QWidget* inParent, const QString& inCaption, Options inOptions)
    : QFileDialog(inParent, inCaption)
{
    setOptions(inOptions);
    if (inParent)
        connect(inParent, &QObject::destroyed, this, &JxFileDialog::leaveParent);
}

QString JxFileDialog::getSaveFileName(QWidget* inParent, const QString& inCaption, const QString& inDir,
                                      const QString& inFilter, QString* ioSelectedFilter, Options inOptions)
{
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return QString();

    JxFileDialog dialog(inParent, inCaption, inOptions);
    dialog.setAcceptMode(AcceptSave);
    dialog.setFileMode(AnyFile);
    if (!inFilter.isEmpty())
        dialog.setNameFilter(inFilter);
    if (ioSelectedFilter && !ioSelectedFilter->isEmpty())
        dialog.selectNameFilter(*ioSelectedFilter);
    dialog.propose(inDir);
    if (dialog.exec() != Accepted)
        return QString();
    if (ioSelectedFilter)
        *ioSelectedFilter = dialog.selectedNameFilter();
    return dialog.selectedFiles().value(0);
}

void JxFileDialog::propose(const QString& inPath)
{
    const QFileInfo path(inPath);
    const bool isFolder = inPath.isEmpty() || path.isDir();
    QString folder = isFolder ? path.absoluteFilePath() : path.absolutePath();
    while (!QFileInfo(folder).isDir() && !QDir(folder).isRoot())
        folder = QFileInfo(folder).path();
    setDirectory(folder);
    if (!isFolder)
        selectFile(path.fileName());
}

void JxFileDialog::leaveParent()
{
    setParent(nullptr, windowFlags());
    reject();
}
