#include "OvServerPeer.h"

#include <ovbase/OvObservers.h>

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

/// By a copy: a command may end the connection.
std::string OvServerPeer::evalOnServer(const char* inCommand, const char* inArguments)
{
    const CommandFunction function = mCommandFunction;
    try {
        return function ? function(inCommand ? inCommand : "", inArguments ? inArguments : "")
                        : std::string();
    } catch (...) {
        ovLogException("OvServerPeer", "a command");
        return std::string();
    }
}

void OvServerPeer::execOnServer(const char* inCommand, const char* inArguments)
{
    evalOnServer(inCommand, inArguments);
}
