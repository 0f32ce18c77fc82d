#pragma once

#include "KyArchiveCache.h"

#include <ovwebservice/StudySource.h>

/// The studies of one patient in a DICOMweb archive, of which at first only headers are asked for. The
/// instances have the paths of the cache; their files come when they are read.
///
/// What the archive can't tell is an error of the result, one line for each study, and the others are there.
class KyArchiveStudies final : public Ovg::StudySource
{
public:
    KyArchiveStudies(KyDicomWeb inArchive, QString inPatientId,
                     std::shared_ptr<const KyArchiveCache> inCache);

    Ovg::StudySourceResult load(const Progress& inProgress = {}) override;

private:
    const KyDicomWeb mArchive;
    const QString mPatientId;
    const std::shared_ptr<const KyArchiveCache> mCache;
};
