#include "KySqlWorklistStore.h"

#include <kybase/KyWorklistRows.h>
#include <ovwebservice/DicomDirectoryEntry.h>
#include <rnlib/RnLogFile.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtSql/QSqlQuery>

namespace {

constexpr int PauseMilliseconds = 30000;

const QString Columns =
    QStringLiteral("study_uid, accession_number, patient_id, assignee, status, flags, attributes");

QString attributesText(const Ovg::WorklistEntry& inEntry)
{
    QJsonObject attributes;
    for (auto it = inEntry.attributes.begin(); it != inEntry.attributes.end(); ++it)
        attributes.insert(it.key(), it.value());
    return QString::fromUtf8(QJsonDocument(attributes).toJson(QJsonDocument::Compact));
}

std::shared_ptr<Ovg::WorklistEntry> entryOf(const QSqlQuery& inQuery)
{
    auto entry = std::make_shared<Ovg::WorklistEntry>();
    entry->studyInstanceUid = inQuery.value(0).toString().toLatin1().toStdString();
    entry->accessionNumber = inQuery.value(1).toString().toStdString();
    entry->patientId = inQuery.value(2).toString().toStdString();
    entry->assignee = inQuery.value(3).toString().toLatin1().toStdString();
    entry->status = inQuery.value(4).toString().toLatin1().toStdString();
    entry->flags = inQuery.value(5).toInt();
    const QJsonObject attributes = QJsonDocument::fromJson(inQuery.value(6).toString().toUtf8()).object();
    for (auto it = attributes.begin(); it != attributes.end(); ++it)
        entry->attributes.insert(it.key(), it.value().toVariant().toString());
    return entry;
}

} // namespace

KySqlWorklistStore::KySqlWorklistStore(KyDatabaseSettings inSettings)
    : mConnection(std::move(inSettings))
{}

/// Two clients may make it at the same time: the one that comes second finds it.
bool KySqlWorklistStore::prepareTable(QString& outError)
{
    const QString table = QStringLiteral(
        "create table if not exists ky_worklist (study_uid text not null, accession_number text not null, "
        "patient_id text not null, assignee text not null, status text not null, flags integer not null, "
        "attributes text not null, primary key (study_uid, accession_number, patient_id))");
    for (int attempt = 0; attempt < 2 && !mHasTable; ++attempt)
        mHasTable = mConnection.execute(table, outError);
    return mHasTable;
}

KySqlWorklistStore::Row KySqlWorklistStore::select(const QString& inCondition, const QVariantList& inValues)
{
    if (!mPause.hasExpired())
        return nullptr;
    QString error;
    QSqlQuery query;
    bool isOk =
        prepareTable(error) &&
        mConnection.prepare(
            query, QStringLiteral("select %1 from ky_worklist where %2").arg(Columns, inCondition), error);
    for (const QVariant& value : inValues)
        query.addBindValue(value);
    if (isOk && !query.exec()) {
        isOk = false;
        error = KySqlConnection::errorText(query);
    }
    if (isOk)
        return query.next() ? entryOf(query) : nullptr;
    getTheLogInstance().tracef(3, "Worklist", "The worklist cannot be read: %s",
                               error.toLatin1().constData());
    mPause.setRemainingTime(PauseMilliseconds);
    return nullptr;
}

std::shared_ptr<Ovg::WorklistEntry> KySqlWorklistStore::find(const Ovg::DicomDirectoryEntry& inStudy)
{
    const QString uid = QString::fromStdString(inStudy.studyInstanceUid());
    if (!uid.isEmpty()) {
        if (Row row = select(QStringLiteral("study_uid = ?"), {uid}))
            return row;
    }
    const QString accession = QString::fromStdString(inStudy.accessionNumber());
    if (accession.isEmpty())
        return nullptr;
    return select(
        QStringLiteral("study_uid = '' and accession_number = ? and (patient_id = '' or patient_id = ?)"
                       " order by patient_id desc"),
        {accession, inStudy.patientId()});
}

RnResult KySqlWorklistStore::put(const Ovg::WorklistEntry& inEntry)
{
    if (!KyWorklistRows::namesAStudy(inEntry))
        return RnResult::failure("The row names no study");
    QString error;
    if (prepareTable(error) && write(inEntry, error))
        return RnResult::ok();
    return RnResult::failure(error.toLatin1().constData());
}

/// A row with a UID is the one about its study, whatever its accession number was before.
bool KySqlWorklistStore::write(const Ovg::WorklistEntry& inEntry, QString& outError)
{
    const QString uid = QString::fromStdString(inEntry.studyInstanceUid);
    const QString accession = QString::fromStdString(inEntry.accessionNumber);
    const QString patient = QString::fromStdString(inEntry.patientId);
    const QString same = uid.isEmpty()
                             ? QStringLiteral("study_uid = ? and accession_number = ? and patient_id = ?")
                             : QStringLiteral("study_uid = ?");
    const QVariantList identity =
        uid.isEmpty() ? QVariantList{QStringLiteral(""), accession, patient} : QVariantList{uid};
    const bool isSqlite = mConnection.settings().kind == KyDatabaseSettings::Kind::Sqlite;
    if (!mConnection.execute(isSqlite ? QStringLiteral("begin immediate") : QStringLiteral("begin"),
                             outError))
        return false;

    const auto run = [&](const QString& inSql, const QVariantList& inValues) {
        QSqlQuery query;
        if (!mConnection.prepare(query, inSql, outError, true))
            return false;
        for (const QVariant& value : inValues)
            query.addBindValue(value);
        if (query.exec())
            return true;
        outError = KySqlConnection::errorText(query);
        return false;
    };
    const bool isOk =
        run(QStringLiteral("delete from ky_worklist where ") + same, identity) &&
        run(QStringLiteral("insert into ky_worklist (%1) values (?, ?, ?, ?, ?, ?, ?)").arg(Columns),
            {uid.isNull() ? QStringLiteral("") : uid, accession.isNull() ? QStringLiteral("") : accession,
             patient.isNull() ? QStringLiteral("") : patient, QString::fromLatin1(inEntry.assignee.c_str()),
             QString::fromLatin1(inEntry.status.c_str()), inEntry.flags, attributesText(inEntry)}) &&
        mConnection.execute(QStringLiteral("commit"), outError, true);
    if (!isOk) {
        QString ignored;
        mConnection.execute(QStringLiteral("rollback"), ignored, true);
    }
    return isOk;
}
