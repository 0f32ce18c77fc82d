#pragma once

#include "KyReportLockStore.h"

#include <kybase/KyJsonFile.h>

/// Locks in a JSON file of the profile, `{ "locks": { "1.2.3": "meier" } }`, which the processes of several
/// users may share. What becomes of a damaged file stands at KyJsonFile.
class KyFileReportLockStore final : public KyReportLockStore
{
public:
    explicit KyFileReportLockStore(QString inPath);

    RnResult lock(const Ovg::WorklistEntry& inEntry, const QString& inUser) override;
    void unlock(const Ovg::WorklistEntry& inEntry, const QString& inUser) override;

private:
    KyJsonFile mFile;
};
