#include "KyJsonFile.h"

#include <rnlib/RnLogFile.h>

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QLockFile>
#include <QSaveFile>

#include <chrono>

namespace {

constexpr auto LogContext = "Profile";
constexpr auto LockPatience = std::chrono::seconds(10);

void reportFailure(const QString& inText)
{
    getTheLogInstance().error(LogContext, inText.toUtf8().constData());
}

RnResult failure(const QString& inText)
{
    return RnResult::failure(RnString(inText.toLatin1().constData()));
}

} // namespace

KyJsonFile::KyJsonFile(QString inPath)
    : mPath(std::move(inPath))
{}

std::optional<QJsonObject> KyJsonFile::read()
{
    mStamp = stampOnDisk();
    QFile file(mPath);
    if (!file.exists())
        return QJsonObject();
    if (!file.open(QIODevice::ReadOnly)) {
        reportFailure(QStringLiteral("Cannot read %1: %2").arg(mPath, file.errorString()));
        return std::nullopt;
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (document.isObject())
        return document.object();
    file.close();
    const bool isText = error.error != QJsonParseError::NoError;
    if (!setAside(isText ? error.errorString() : QStringLiteral("no JSON object")))
        return std::nullopt;
    return QJsonObject();
}

bool KyJsonFile::hasChanged() const
{
    return mStamp != stampOnDisk();
}

RnResult KyJsonFile::update(const std::function<bool(QJsonObject&)>& inChange)
{
    const QString folder = QFileInfo(mPath).absolutePath();
    if (!QDir().mkpath(folder))
        return failure(QStringLiteral("Cannot make the folder %1").arg(folder));
    QLockFile lock(mPath + QLatin1String(".lock"));
    if (!lock.tryLock(LockPatience))
        return failure(QStringLiteral("Another process holds %1").arg(mPath));
    std::optional<QJsonObject> document = read();
    if (!document)
        return failure(QStringLiteral("Cannot use %1").arg(mPath));
    return inChange(*document) ? write(*document) : RnResult::ok();
}

KyJsonFile::Stamp KyJsonFile::stampOnDisk() const
{
    const QFileInfo info(mPath);
    return info.exists() ? Stamp{info.lastModified(), info.size()} : Stamp();
}

bool KyJsonFile::setAside(const QString& inReason) const
{
    const QString timestamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddhhmmsszzz"));
    const QString kept = mPath + QLatin1String(".damaged-") + timestamp;
    const bool moved = QFile::rename(mPath, kept);
    reportFailure(QStringLiteral("%1 is damaged (%2) and %3")
                      .arg(mPath, inReason,
                           moved ? QStringLiteral("was renamed to %1").arg(kept)
                                 : QStringLiteral("could not be renamed")));
    return moved;
}

RnResult KyJsonFile::write(const QJsonObject& inDocument)
{
    const QByteArray text = QJsonDocument(inDocument).toJson();
    QSaveFile file(mPath);
    // Unbuffered and counted: commit() by itself takes a write that a full disk has cut short for a success.
    const bool isWritten =
        file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(text) == text.size();
    if (!isWritten || !file.commit())
        return failure(QStringLiteral("Cannot write %1: %2").arg(mPath, file.errorString()));
    mStamp = stampOnDisk();
    return RnResult::ok();
}
