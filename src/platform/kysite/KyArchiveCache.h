#pragma once

#include "KyDicomWeb.h"

#include <ovwebservice/InstanceFiles.h>

#include <QtCore/QString>

#include <mutex>

/// Files of an archive's instances in a folder, "STUDY/SERIES/INSTANCE.dcm", brought when they are needed.
///
/// The folder is kept below a limit: what has not been used for longest goes first, but nothing of the series
/// that is being brought. Several clients may share it. Files appear whole or not at all.
class KyArchiveCache final : public Ovg::InstanceFiles
{
public:
    KyArchiveCache(KyDicomWeb inArchive, QString inFolder, qint64 inMostBytes);

    /// Where an instance is, or will be. Empty for what are no UIDs.
    QString path(const QString& inStudy, const QString& inSeries, const QString& inInstance) const;

    void provide(const QStringList& inPaths, const Progress& inProgress = {}) override;

private:
    bool store(const KyDicomWeb::Request& inRequest, const QString& inPath) const;
    void makeRoom(const QStringList& inKept) const;

    const KyDicomWeb mArchive;
    const QString mFolder;
    const qint64 mMostBytes;
    std::mutex mMutex;
};
