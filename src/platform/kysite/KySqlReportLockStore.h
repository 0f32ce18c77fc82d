#pragma once

#include "KySqlConnection.h"

#include <kyreporttab/KyReportLockStore.h>

/// The locks of reports in a table "ky_report_locks" of a database, which many clients share. The table is
/// made when it is not there. A lock is a row under its study's key, so that of two clients one is refused by
/// the database itself.
class KySqlReportLockStore final : public KyReportLockStore
{
public:
    explicit KySqlReportLockStore(KyDatabaseSettings inSettings);

    RnResult lock(const Ovg::WorklistEntry& inEntry, const QString& inUser) override;
    void unlock(const Ovg::WorklistEntry& inEntry, const QString& inUser) override;

private:
    bool prepareTable(QString& outError);
    bool run(const QString& inSql, const QStringList& inValues, QString& outError,
             QString* outValue = nullptr);

    KySqlConnection mConnection;
    bool mHasTable = false;
};
