#include "KyReportHelper.h"

#include "KyReportLockStore.h"

#include <kyresources/KyResource.h>
#include <rnlib/RnLogFile.h>

namespace {

QString user()
{
    return QString::fromLatin1(KyResource::getUserName());
}

bool lockForUser(const OvReportLocker::Entry& inEntry)
{
    KyReportLockStore* store = KyReportLockStore::instance();
    const RnResult result =
        store ? store->lock(*inEntry, user()) : RnResult::failure("There is no store of locks");
    if (!result.isOk())
        getTheLogInstance().tracef(2, "Reports", "Not locked for reporting: %s", result.text().c_str());
    return result.isOk();
}

} // namespace

std::unique_ptr<KyReportHelper> KyReportHelper::create(KySessionContext&)
{
    return KyReportLockStore::instance() ? std::make_unique<KyReportHelper>() : nullptr;
}

KyReportHelper::~KyReportHelper()
{
    KyReportLockStore* store = KyReportLockStore::instance();
    if (!mLocker || !store)
        return;
    for (const OvReportLocker::Entry& entry : mLocker->release())
        store->unlock(*entry, user());
}

OvReportLocker* KyReportHelper::locker(bool inCreate)
{
    if (!mLocker && inCreate)
        mLocker = std::make_unique<OvReportLocker>(lockForUser);
    return mLocker.get();
}
