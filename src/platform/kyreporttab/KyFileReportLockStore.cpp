#include "KyFileReportLockStore.h"

#include <rnlib/RnLogFile.h>

namespace {

constexpr QLatin1String Locks("locks");

} // namespace

KyFileReportLockStore::KyFileReportLockStore(QString inPath)
    : mFile(std::move(inPath))
{}

RnResult KyFileReportLockStore::lock(const Ovg::WorklistEntry& inEntry, const QString& inUser)
{
    const QString key = keyOf(inEntry);
    if (key.isEmpty())
        return RnResult::failure("The worklist entry names no study");

    QString holder;
    const RnResult written = mFile.update([&](QJsonObject& document) {
        QJsonObject locks = document.value(Locks).toObject();
        holder = locks.value(key).toString();
        if (!holder.isEmpty())
            return false;
        locks.insert(key, inUser);
        document.insert(Locks, locks);
        return true;
    });
    if (!written.isOk() || holder.isEmpty() || holder == inUser)
        return written;
    return RnResult::failure(RnString("Locked by ") + RnString(holder.toLatin1().constData()));
}

void KyFileReportLockStore::unlock(const Ovg::WorklistEntry& inEntry, const QString& inUser)
{
    const RnResult written = mFile.update([&](QJsonObject& document) {
        QJsonObject locks = document.value(Locks).toObject();
        if (locks.value(keyOf(inEntry)).toString() != inUser)
            return false;
        locks.remove(keyOf(inEntry));
        document.insert(Locks, locks);
        return true;
    });
    if (!written.isOk())
        getTheLogInstance().tracef(3, "Reports", "Lock not given back: %s", written.text().c_str());
}
