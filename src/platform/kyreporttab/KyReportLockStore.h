#pragma once

#include <rnlib/RnResult.h>

#include <QHash>
#include <QString>

namespace Ovg {
struct WorklistEntry;
}

/// Port: who is writing the report of which study. KyFileReportLockStore, KyMemoryReportLockStore.
///
/// Somebody's object: construction makes it the one that instance() finds, destruction ends that. GUI thread
/// only.
class KyReportLockStore
{
public:
    KyReportLockStore();
    virtual ~KyReportLockStore();
    KyReportLockStore(const KyReportLockStore&) = delete;
    KyReportLockStore& operator=(const KyReportLockStore&) = delete;

    /// Null when reports can't be locked.
    static KyReportLockStore* instance();

    /// Gives the report of \a inEntry to \a inUser. A success when that user has it already; a failure that
    /// names the holder when another one has it, and for an entry that names no study.
    virtual RnResult lock(const Ovg::WorklistEntry& inEntry, const QString& inUser) = 0;

    /// Takes the lock of \a inUser back; nothing when another one has it.
    virtual void unlock(const Ovg::WorklistEntry& inEntry, const QString& inUser) = 0;

protected:
    /// What an entry is locked under: its study instance UID, or its accession number. Empty without either.
    static QString keyOf(const Ovg::WorklistEntry& inEntry);
};

/// Locks that last as long as the object.
class KyMemoryReportLockStore final : public KyReportLockStore
{
public:
    RnResult lock(const Ovg::WorklistEntry& inEntry, const QString& inUser) override;
    void unlock(const Ovg::WorklistEntry& inEntry, const QString& inUser) override;

private:
    QHash<QString, QString> mHolders;
};
