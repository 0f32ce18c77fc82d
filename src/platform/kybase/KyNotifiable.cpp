#include "KyNotifiable.h"

#include "KySessionContext.h"

namespace {

KyNotifiables* sInstance = nullptr;

} // namespace

KyNotifiable::KyNotifiable() = default;
KyNotifiable::~KyNotifiable() = default;

void KyNotifiable::notify(const KyNotification& inNotification)
{
    if (sInstance)
        sInstance->tell(inNotification);
}

void KyNotifiable::notified(const KyNotification&) {}

bool KyNotifiable::hears(OvSessionContextID) const
{
    return true;
}

KyNotifiableContextSensitive::KyNotifiableContextSensitive(const std::shared_ptr<KySessionContext>& inSession)
    : mSession(inSession ? inSession->id() : OvSessionContextID())
{}

bool KyNotifiableContextSensitive::hears(OvSessionContextID inSession) const
{
    const OvSessionContextID any;
    return mSession == any || inSession == any || mSession == inSession;
}

KyNotifiables::KyNotifiables()
{
    sInstance = this;
}

KyNotifiables::~KyNotifiables()
{
    if (sInstance == this)
        sInstance = nullptr;
}

KyNotifiables* KyNotifiables::getInstance()
{
    return sInstance;
}

void KyNotifiables::addNotification(KyNotifiable* inReceiver, const KyNotification& inWanted)
{
    if (!inReceiver)
        return;
    mReceivers.add(&inReceiver->mLife, [inReceiver, inWanted](const KyNotification& sent) {
        if (inWanted.covers(sent) && inReceiver->hears(sent.session))
            inReceiver->notified(sent);
    });
}

void KyNotifiables::removeNotifications(const KyNotifiable* inReceiver)
{
    if (inReceiver)
        mReceivers.remove(&inReceiver->mLife);
}

void KyNotifiables::tell(const KyNotification& inNotification)
{
    mReceivers.tell(inNotification);
}
