#include "KyScriptTimer.h"

KyScriptTimer::KyScriptTimer(QObject* parent)
    : QObject(parent)
{
    connect(&mTimer, &QTimer::timeout, this, &KyScriptTimer::timeout);
}

void KyScriptTimer::setSingleShot(bool value)
{
    mTimer.setSingleShot(value);
}

bool KyScriptTimer::isSingleShot() const
{
    return mTimer.isSingleShot();
}

void KyScriptTimer::start(int msec)
{
    mTimer.start(msec);
}

void KyScriptTimer::stop()
{
    mTimer.stop();
}

int KyScriptTimer::remainingTime() const
{
    return mTimer.remainingTime();
}
