#include "KyStudyMetrics.h"

namespace {

KyStudyMetrics* sInstance = nullptr;

} // namespace

KyStudyMetrics::KyStudyMetrics()
{
    sInstance = this;
}

KyStudyMetrics::~KyStudyMetrics()
{
    if (sInstance == this)
        sInstance = nullptr;
}

KyStudyMetrics* KyStudyMetrics::instance()
{
    return sInstance;
}

float KyStudyMetrics::getTimeSpent(const QString& inStudyInstanceUid) const
{
    return static_cast<float>(mSeconds.value(inStudyInstanceUid, 0.0));
}

void KyStudyMetrics::addTimeSpent(const QString& inStudyInstanceUid, float inSeconds)
{
    if (!inStudyInstanceUid.isEmpty() && inSeconds > 0)
        mSeconds[inStudyInstanceUid] += static_cast<double>(inSeconds);
}
