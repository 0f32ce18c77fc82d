#include "KyFileWorklistStore.h"

#include <QJsonArray>

namespace {

constexpr QLatin1String Entries("entries");

std::string latin1(const QJsonValue& inValue)
{
    return inValue.toString().toLatin1().toStdString();
}

Ovg::WorklistEntry fromJson(const QJsonObject& inRow)
{
    Ovg::WorklistEntry entry;
    entry.assignee = latin1(inRow[QLatin1String("assignee")]);
    entry.status = latin1(inRow[QLatin1String("status")]);
    entry.flags = inRow[QLatin1String("flags")].toInt();
    entry.studyInstanceUid = latin1(inRow[QLatin1String("studyInstanceUid")]);
    entry.accessionNumber = inRow[QLatin1String("accessionNumber")].toString().toStdString();
    entry.patientId = inRow[QLatin1String("patientId")].toString().toStdString();
    const QJsonObject attributes = inRow[QLatin1String("attributes")].toObject();
    for (auto it = attributes.begin(); it != attributes.end(); ++it)
        entry.attributes.insert(it.key(), it.value().toVariant().toString());
    return entry;
}

QJsonObject toJson(const Ovg::WorklistEntry& inEntry)
{
    QJsonObject attributes;
    for (auto it = inEntry.attributes.begin(); it != inEntry.attributes.end(); ++it)
        attributes.insert(it.key(), it.value());
    return {{QStringLiteral("assignee"), QString::fromLatin1(inEntry.assignee)},
            {QStringLiteral("status"), QString::fromLatin1(inEntry.status)},
            {QStringLiteral("flags"), inEntry.flags},
            {QStringLiteral("studyInstanceUid"), QString::fromLatin1(inEntry.studyInstanceUid)},
            {QStringLiteral("accessionNumber"), QString::fromStdString(inEntry.accessionNumber)},
            {QStringLiteral("patientId"), QString::fromStdString(inEntry.patientId)},
            {QStringLiteral("attributes"), attributes}};
}

/// Whether both rows are about the same study, as KyWorklistRows tells them apart.
bool sameStudy(const Ovg::WorklistEntry& inA, const Ovg::WorklistEntry& inB)
{
    if (!inA.studyInstanceUid.empty() || !inB.studyInstanceUid.empty())
        return inA.studyInstanceUid == inB.studyInstanceUid;
    return inA.accessionNumber == inB.accessionNumber && inA.patientId == inB.patientId;
}

bool replaceRow(QJsonObject& ioDocument, const Ovg::WorklistEntry& inEntry)
{
    QJsonArray rows;
    for (const QJsonValue& row : ioDocument[Entries].toArray()) {
        if (!sameStudy(fromJson(row.toObject()), inEntry))
            rows.append(row);
    }
    rows.append(toJson(inEntry));
    ioDocument[Entries] = rows;
    return true;
}

} // namespace

KyFileWorklistStore::KyFileWorklistStore(QString inPath)
    : mFile(std::move(inPath))
{
    readRows();
}

std::shared_ptr<Ovg::WorklistEntry> KyFileWorklistStore::find(const Ovg::DicomDirectoryEntry& inStudy)
{
    if (mFile.hasChanged())
        readRows();
    return mRows.find(inStudy);
}

RnResult KyFileWorklistStore::put(const Ovg::WorklistEntry& inEntry)
{
    if (!KyWorklistRows::namesAStudy(inEntry))
        return RnResult::failure("The row names no study");
    const RnResult result =
        mFile.update([&](QJsonObject& ioDocument) { return replaceRow(ioDocument, inEntry); });
    if (result)
        readRows();
    return result;
}

void KyFileWorklistStore::readRows()
{
    mRows = KyWorklistRows();
    const QJsonObject document = mFile.read().value_or(QJsonObject());
    for (const QJsonValue& row : document[Entries].toArray())
        mRows.put(fromJson(row.toObject()));
}
