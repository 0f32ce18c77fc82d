#include "OvServer.h"

#include <ovbase/OvPropertyPool.h>

namespace {

OvServer* sInstance = nullptr;

} // namespace

OvServer::OvServer(RnString inRenderServer, RnString inRenderServerVersion, bool inIsClient)
    : mRenderServer(std::move(inRenderServer))
    , mIsClient(inIsClient)
    , mPeer(std::move(inRenderServerVersion))
{
    sInstance = this;
    OvPropertyPool::setClientQuestion([] { return !sInstance || sInstance->isClient(); });
}

OvServer::~OvServer()
{
    if (sInstance != this)
        return;
    OvPropertyPool::setClientQuestion({});
    sInstance = nullptr;
}

OvServer* OvServer::instance()
{
    return sInstance;
}
