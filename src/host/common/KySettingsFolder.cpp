#include "KySettingsFolder.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QSettings>
#include <QtCore/QUuid>

namespace {

/// Made by the first value that is stored, so that most processes make none.
QString temporaryFolder()
{
    return QDir::temp().filePath(QStringLiteral("ky-") + QUuid::createUuid().toString(QUuid::WithoutBraces));
}

} // namespace

KySettingsFolder::KySettingsFolder(const QString& inProfile)
    : mIsTemporary(inProfile.isEmpty())
    , mPath(mIsTemporary ? temporaryFolder() : QFileInfo(inProfile).absoluteFilePath())
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, mPath);
}

KySettingsFolder::~KySettingsFolder()
{
    if (mIsTemporary)
        QDir(mPath).removeRecursively();
}
