#include "KyStudyFolders.h"

#include <QtCore/QFileInfo>
#include <QtCore/QMimeData>
#include <QtCore/QUrl>

QString KyStudyFolders::of(const QString& inPath)
{
    const QFileInfo info(inPath);
    return info.isFile() ? info.path() : inPath;
}

QStringList KyStudyFolders::dropped(const QMimeData& inData)
{
    QStringList folders;
    for (const QUrl& url : inData.urls()) {
        if (url.isLocalFile())
            folders.append(of(url.toLocalFile()));
    }
    folders.removeDuplicates();
    return folders;
}
