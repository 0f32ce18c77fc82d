#pragma once

#include "KySqlConnection.h"

#include <kybase/KyWorklistStore.h>

#include <QtCore/QDeadlineTimer>

/// The worklist in a table "ky_worklist" of a database, which many clients share. The table is made when it
/// is not there.
///
/// Each call asks the database. When that fails, the reason is logged, and for half a minute nothing is
/// asked: there is no row then, and the client stays quick.
class KySqlWorklistStore final : public KyWorklistStore
{
public:
    explicit KySqlWorklistStore(KyDatabaseSettings inSettings);

    std::shared_ptr<Ovg::WorklistEntry> find(const Ovg::DicomDirectoryEntry& inStudy) override;
    RnResult put(const Ovg::WorklistEntry& inEntry) override;

private:
    using Row = std::shared_ptr<Ovg::WorklistEntry>;

    bool prepareTable(QString& outError);
    Row select(const QString& inCondition, const QVariantList& inValues);
    bool write(const Ovg::WorklistEntry& inEntry, QString& outError);

    KySqlConnection mConnection;
    bool mHasTable = false;
    QDeadlineTimer mPause{0};
};
