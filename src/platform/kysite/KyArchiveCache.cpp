#include "KyArchiveCache.h"

#include <rnlib/RnLogFile.h>

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QHash>
#include <QtCore/QRegularExpression>
#include <QtCore/QSaveFile>
#include <QtCore/QSet>

#include <algorithm>

namespace {

constexpr qsizetype PreambleSize = 128;

bool isUid(const QString& inText)
{
    static const QRegularExpression uid(QStringLiteral("\\A[0-9][0-9.]{0,63}\\z"));
    return uid.match(inText).hasMatch();
}

/// Marks the file as used.
void touch(const QString& inPath)
{
    QFile file(inPath);
    if (file.open(QIODevice::ReadWrite))
        file.setFileTime(QDateTime::currentDateTime(), QFileDevice::FileModificationTime);
}

} // namespace

KyArchiveCache::KyArchiveCache(KyDicomWeb inArchive, QString inFolder, qint64 inMostBytes)
    : mArchive(std::move(inArchive))
    , mFolder(std::move(inFolder))
    , mMostBytes(inMostBytes)
{}

QString KyArchiveCache::path(const QString& inStudy, const QString& inSeries, const QString& inInstance) const
{
    if (!isUid(inStudy) || !isUid(inSeries) || !isUid(inInstance))
        return QString();
    return QStringLiteral("%1/%2/%3/%4.dcm").arg(mFolder, inStudy, inSeries, inInstance);
}

/// One series after the other, so that two that are shown at once do not fetch the same.
void KyArchiveCache::provide(const QStringList& inPaths, const Progress& inProgress)
{
    const std::lock_guard lock(mMutex);
    QList<KyDicomWeb::Request> requests;
    QHash<QString, QString> paths;
    int done = 0;
    for (const QString& path : inPaths) {
        if (!path.startsWith(mFolder + QLatin1Char('/')))
            continue;
        if (QFile::exists(path)) {
            touch(path);
            ++done;
            continue;
        }
        const QStringList parts = path.mid(mFolder.size() + 1).split(QLatin1Char('/'));
        if (parts.size() != 3)
            continue;
        requests.append(KyDicomWeb::instance(parts.at(0), parts.at(1), parts.at(2).chopped(4)));
        paths.insert(requests.last().path, path);
    }
    if (requests.isEmpty())
        return;
    const int total = done + int(requests.size());
    mArchive.fetch(requests, [&](KyDicomWeb::Request& ioRequest) {
        const bool isStored = ioRequest.error.isEmpty() && store(ioRequest, paths.value(ioRequest.path));
        if (!isStored)
            getTheLogInstance().tracef(
                3, "Archive", "%s: %s", qPrintable(ioRequest.path),
                qPrintable(ioRequest.error.isEmpty() ? QStringLiteral("cannot be stored") : ioRequest.error));
        ioRequest.body.clear();
        return !inProgress || inProgress(++done, total);
    });
    makeRoom(inPaths);
}

bool KyArchiveCache::store(const KyDicomWeb::Request& inRequest, const QString& inPath) const
{
    const QByteArray content = KyDicomWeb::onlyPart(inRequest.contentType, inRequest.body);
    if (content.mid(PreambleSize, 4) != "DICM" || !QDir().mkpath(QFileInfo(inPath).path()))
        return false;
    QSaveFile file(inPath);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.commit();
}

void KyArchiveCache::makeRoom(const QStringList& inKept) const
{
    struct Found
    {
        QString path;
        QDateTime used;
        qint64 size;
    };
    const QSet<QString> kept(inKept.begin(), inKept.end());
    QList<Found> found;
    qint64 size = 0;
    QDirIterator files(mFolder, {QStringLiteral("*.dcm")}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        const QFileInfo info = files.fileInfo();
        found.append({info.filePath(), info.lastModified(), info.size()});
        size += info.size();
    }
    std::sort(found.begin(), found.end(),
              [](const Found& inA, const Found& inB) { return inA.used < inB.used; });
    for (const Found& file : found) {
        if (size <= mMostBytes)
            return;
        if (!kept.contains(file.path) && QFile::remove(file.path))
            size -= file.size;
    }
}
