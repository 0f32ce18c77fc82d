#include "KyNotifiable.h"

#include "KySessionContext.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace {

KyNotifiables* sInstance = nullptr;
std::uint64_t sLists = 0;

/// All receivers, in the order in which they were made. Never destroyed, so that those which outlive the
/// static objects can still leave it.
std::vector<KyNotifiable*>& receivers()
{
    static auto* const all = new std::vector<KyNotifiable*>;
    return *all;
}

} // namespace

KyNotifiable::KyNotifiable()
{
    receivers().push_back(this);
}

KyNotifiable::~KyNotifiable()
{
    std::erase(receivers(), this);
}

void KyNotifiable::addNotifications() {}

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
    : mSerial(++sLists)
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
    inReceiver->mToldList = mSerial;
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

/// A receiver can't be asked by its base's constructor, in which it is not yet what it will be.
void KyNotifiables::askReceivers()
{
    std::vector<KyNotifiable*> asked;
    const auto isNew = [this](const KyNotifiable* receiver) { return receiver->mToldList != mSerial; };
    std::copy_if(receivers().begin(), receivers().end(), std::back_inserter(asked), isNew);
    for (KyNotifiable* const receiver : asked) {
        const auto& all = receivers();
        // It may have ended by the answer of one before.
        if (std::find(all.begin(), all.end(), receiver) != all.end() && isNew(receiver))
            receiver->addNotifications();
    }
}

void KyNotifiables::tell(const KyNotification& inNotification)
{
    askReceivers();
    mReceivers.tell(inNotification);
}
