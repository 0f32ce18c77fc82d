#include "KySqlReportLockStore.h"

#include <rnlib/RnLogFile.h>

#include <QtSql/QSqlQuery>

KySqlReportLockStore::KySqlReportLockStore(KyDatabaseSettings inSettings)
    : mConnection(std::move(inSettings))
{}

/// Two clients may make it at the same time: the one that comes second finds it.
bool KySqlReportLockStore::prepareTable(QString& outError)
{
    const QString table = QStringLiteral(
        "create table if not exists ky_report_locks (study text primary key, holder text not null, "
        "since timestamp not null default current_timestamp)");
    for (int attempt = 0; attempt < 2 && !mHasTable; ++attempt)
        mHasTable = mConnection.execute(table, outError);
    return mHasTable;
}

bool KySqlReportLockStore::run(const QString& inSql, const QStringList& inValues, QString& outError,
                               QString* outValue)
{
    QSqlQuery query;
    if (!mConnection.prepare(query, inSql, outError))
        return false;
    for (const QString& value : inValues)
        query.addBindValue(value);
    if (!query.exec()) {
        outError = KySqlConnection::errorText(query);
        return false;
    }
    if (outValue && query.next())
        *outValue = query.value(0).toString();
    return true;
}

/// The holder is read behind the attempt: who gives the lock back in between leaves nobody there, and it is
/// tried again.
RnResult KySqlReportLockStore::lock(const Ovg::WorklistEntry& inEntry, const QString& inUser)
{
    constexpr int attempts = 5;
    const QString key = keyOf(inEntry);
    if (key.isEmpty())
        return RnResult::failure("The worklist entry names no study");
    QString error;
    if (!prepareTable(error))
        return RnResult::failure(error.toLatin1().constData());
    for (int i = 0; i < attempts; ++i) {
        QString holder;
        const bool isAsked =
            run(QStringLiteral("insert into ky_report_locks (study, holder) values (?, ?) on conflict "
                               "(study) do nothing"),
                {key, inUser}, error) &&
            run(QStringLiteral("select holder from ky_report_locks where study = ?"), {key}, error, &holder);
        if (!isAsked)
            return RnResult::failure(error.toLatin1().constData());
        if (holder == inUser)
            return RnResult::ok();
        if (!holder.isEmpty())
            return RnResult::failure(RnString("Locked by ") + RnString(holder.toLatin1().constData()));
    }
    return RnResult::failure("The lock changes hands too often");
}

void KySqlReportLockStore::unlock(const Ovg::WorklistEntry& inEntry, const QString& inUser)
{
    QString error;
    if (!prepareTable(error) ||
        !run(QStringLiteral("delete from ky_report_locks where study = ? and holder = ?"),
             {keyOf(inEntry), inUser}, error))
        getTheLogInstance().tracef(3, "Reports", "Lock not given back: %s", error.toLatin1().constData());
}
