#pragma once

#include "KyArchiveCache.h"

#include <ovwebservice/StudySource.h>

#include <QtCore/QTemporaryDir>

#include <memory>

/// The archive of this client: where its patients' studies are found, and the cache that their files come to.
///
/// Somebody's object: construction makes it the one that read() asks, and lets the files of its instances
/// come on demand; destruction ends both. Made and ended on the application's thread while no study is read.
class KyArchive
{
public:
    /// With an empty \a inCacheFolder the files last as long as this object.
    KyArchive(const QString& inUrl, const QString& inCaFile, const QString& inCacheFolder,
              qint64 inMostBytes);
    ~KyArchive();
    KyArchive(const KyArchive&) = delete;
    KyArchive& operator=(const KyArchive&) = delete;

    /// What stands for the folder of a patient's studies in the archive.
    static QString folderOf(const QString& inPatientId);

    /// The studies of a folder, or of a patient in the archive, see folderOf(). On any thread.
    static Ovg::StudySourceResult read(const QString& inFolder,
                                       const Ovg::StudySource::Progress& inProgress = {});

private:
    const KyDicomWeb mClient;
    std::unique_ptr<QTemporaryDir> mTemporary;
    std::shared_ptr<KyArchiveCache> mCache;
};
