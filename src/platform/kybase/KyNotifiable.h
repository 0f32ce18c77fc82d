#pragma once

#include "KyNotification.h"

#include <ovbase/OvObservers.h>

#include <QObject>

#include <cstdint>
#include <memory>

class KySessionContext;

/// Base of whoever wants to hear of notifications. It tells KyNotifiables which ones, by itself or when it is
/// asked; its end takes all of that back. GUI thread.
class KyNotifiable
{
public:
    KyNotifiable();
    virtual ~KyNotifiable();
    KyNotifiable(const KyNotifiable&) = delete;
    KyNotifiable& operator=(const KyNotifiable&) = delete;

    /// Tells all who want to hear of \a inNotification, before it returns. Without a KyNotifiables nobody
    /// hears.
    static void notify(const KyNotification& inNotification);

    /// Called once for each of the receiver's own wishes that covers the notification. What it throws ends in
    /// the log.
    virtual void notified(const KyNotification& inNotification);

protected:
    /// The question of a KyNotifiables what the receiver wants to hear of, as
    /// KyNotifiables::addNotification() takes it. Asked before each notification until the receiver has named
    /// something.
    virtual void addNotifications();

    /// Whether the receiver wants anything of this session; every one, here.
    virtual bool hears(OvSessionContextID inSession) const;

private:
    friend class KyNotifiables;

    std::uint64_t mToldList = 0; ///< The serial of the list that it has told something.

    const QObject mLife; ///< Shows the list of receivers when this one has ended.
};

/// A receiver that hears only of one session, and of what is sent to no session in particular.
class KyNotifiableContextSensitive : public KyNotifiable
{
public:
    /// With a null \a inSession it hears of all sessions. It does not keep the session alive.
    explicit KyNotifiableContextSensitive(const std::shared_ptr<KySessionContext>& inSession);

protected:
    bool hears(OvSessionContextID inSession) const override;

private:
    const OvSessionContextID mSession;
};

/// Who wants to hear of what.
///
/// Somebody's object: the host makes one, and getInstance() finds the newest while it lives. GUI thread.
class KyNotifiables
{
public:
    KyNotifiables();
    ~KyNotifiables();
    KyNotifiables(const KyNotifiables&) = delete;
    KyNotifiables& operator=(const KyNotifiables&) = delete;

    /// Null when there is none.
    static KyNotifiables* getInstance();

    /// From now on \a inReceiver hears of what \a inWanted covers, beside what it hears of already. Null is
    /// ignored.
    void addNotification(KyNotifiable* inReceiver, const KyNotification& inWanted);
    /// From now on \a inReceiver hears of nothing.
    void removeNotifications(const KyNotifiable* inReceiver);

    /// Tells those who want to hear of it, in the order of their wishes. A receiver may add and remove
    /// receivers, end them and itself, and notify again.
    void tell(const KyNotification& inNotification);

private:
    void askReceivers();

    const std::uint64_t mSerial; ///< Its own for each list of the process.
    OvObservers<const KyNotification&> mReceivers;
};
