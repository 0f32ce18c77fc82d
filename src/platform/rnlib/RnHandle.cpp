#include "RnHandle.h"

namespace {

// Objects that live on one thread each may still be made on several.
std::atomic<std::size_t> theLiveCount{0};
std::atomic<std::size_t> theThreadedLiveCount{0};

} // namespace

RnHandable::RnHandable()
{
    ++theLiveCount;
}

RnHandable::~RnHandable()
{
    --theLiveCount;
}

void RnHandable::unref() const
{
    if (!dbc_holds(mCount > 0))
        return;
    if (--mCount == 0)
        delete this;
}

std::size_t RnHandable::liveCount()
{
    return theLiveCount;
}

RnHandableThreaded::RnHandableThreaded()
{
    ++theThreadedLiveCount;
}

RnHandableThreaded::~RnHandableThreaded()
{
    --theThreadedLiveCount;
}

void RnHandableThreaded::unref() const
{
    if (!dbc_holds(mCount > 0))
        return;
    if (mCount.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete this;
}

std::size_t RnHandableThreaded::liveCount()
{
    return theThreadedLiveCount;
}
