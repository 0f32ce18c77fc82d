#pragma once

#include <kybase/KySessionContext.h>
#include <ovbase/OvReportLocker.h>

/// The reports of a session: which of them this user may write.
///
/// A session component. There is none in a session without a KyReportLockStore. Its end gives all locks back.
/// GUI thread only.
class KyReportHelper final : public KySessionComponent
{
public:
    /// Null when reports can't be locked.
    static std::unique_ptr<KyReportHelper> create(KySessionContext& inContext);

    ~KyReportHelper() override;

    /// The locker of this user, made if that is wanted; null when it has not been made.
    OvReportLocker* locker(bool inCreate);

private:
    std::unique_ptr<OvReportLocker> mLocker;
};
