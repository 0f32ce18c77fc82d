#include "KyReportLockStore.h"

#include <ovwebservice/WorklistEntry.h>

namespace {

KyReportLockStore* sInstance = nullptr;

} // namespace

KyReportLockStore::KyReportLockStore()
{
    sInstance = this;
}

KyReportLockStore::~KyReportLockStore()
{
    if (sInstance == this)
        sInstance = nullptr;
}

KyReportLockStore* KyReportLockStore::instance()
{
    return sInstance;
}

QString KyReportLockStore::keyOf(const Ovg::WorklistEntry& inEntry)
{
    const std::string& key =
        inEntry.studyInstanceUid.empty() ? inEntry.accessionNumber : inEntry.studyInstanceUid;
    return QString::fromLatin1(key.data(), qsizetype(key.size()));
}

RnResult KyMemoryReportLockStore::lock(const Ovg::WorklistEntry& inEntry, const QString& inUser)
{
    const QString key = keyOf(inEntry);
    if (key.isEmpty())
        return RnResult::failure("The worklist entry names no study");
    const auto holder = mHolders.constFind(key);
    if (holder != mHolders.constEnd() && *holder != inUser)
        return RnResult::failure(RnString("Locked by ") + RnString(holder->toLatin1().constData()));
    mHolders.insert(key, inUser);
    return RnResult::ok();
}

void KyMemoryReportLockStore::unlock(const Ovg::WorklistEntry& inEntry, const QString& inUser)
{
    const auto holder = mHolders.find(keyOf(inEntry));
    if (holder != mHolders.end() && *holder == inUser)
        mHolders.erase(holder);
}
