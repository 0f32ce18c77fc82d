#include "KyScriptFileDialog.h"

#include "KyScriptWait.h"

#include <jxbase/JxFileDialog.h>
#include <kybase/KyMonitorManager.h>

#include <QtCore/QStandardPaths>

KyScriptFileDialog::KyScriptFileDialog(QObject* parent)
    : QObject(parent)
{}

QString KyScriptFileDialog::getSaveFileName(QString inFileName, QString inFilter)
{
    const KyScriptWait wait;
    if (!wait.mayBegin())
        return QString();
    const QString path =
        QStandardPaths::writableLocation(QStandardPaths::DownloadLocation) + QLatin1Char('/') + inFileName;
    return JxFileDialog::getSaveFileName(KyMonitorManager::parentForModalWidget(), tr("Save as..."), path,
                                         inFilter, nullptr, QFileDialog::Options());
}
