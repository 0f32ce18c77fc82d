#include "KyArchive.h"

#include "KyArchiveStudies.h"

#include <ovwebservice/FolderStudySource.h>

#include <QtCore/QDir>

namespace {

constexpr QLatin1String Prefix("archive:");

KyArchive* sInstance = nullptr;

} // namespace

KyArchive::KyArchive(const QString& inUrl, const QString& inCaFile, const QString& inCacheFolder,
                     qint64 inMostBytes)
    : mClient(inUrl, inCaFile)
    , mTemporary(inCacheFolder.isEmpty() ? std::make_unique<QTemporaryDir>() : nullptr)
    , mCache(std::make_shared<KyArchiveCache>(
          mClient, mTemporary ? mTemporary->path() : QDir(inCacheFolder).absolutePath(), inMostBytes))
{
    sInstance = this;
    Ovg::InstanceFiles::install(mCache);
}

KyArchive::~KyArchive()
{
    if (sInstance != this)
        return;
    sInstance = nullptr;
    Ovg::InstanceFiles::install(nullptr);
}

QString KyArchive::folderOf(const QString& inPatientId)
{
    return Prefix + inPatientId;
}

Ovg::StudySourceResult KyArchive::read(const QString& inFolder, const Ovg::StudySource::Progress& inProgress)
{
    if (!sInstance || !inFolder.startsWith(Prefix))
        return Ovg::FolderStudySource(inFolder).load(inProgress);
    const QString patient = inFolder.mid(Prefix.size());
    return KyArchiveStudies(sInstance->mClient, patient, sInstance->mCache).load(inProgress);
}
