#include "OvServerPeer.h"

namespace {

OvServerPeer* sInstance = nullptr;

} // namespace

OvServerPeer::OvServerPeer(RnString inRenderServerVersion)
    : mRenderServerVersion(std::move(inRenderServerVersion))
{
    sInstance = this;
}

OvServerPeer::~OvServerPeer()
{
    if (sInstance == this)
        sInstance = nullptr;
}

OvServerPeer* OvServerPeer::instance()
{
    return sInstance;
}

void OvServerPeer::printSessionLog(const char* inContext, const char* inText, int inLevel)
{
    mSessionLog.trace(inLevel, inContext, inText);
}
