#include "KyRenderServer.h"

#include <kyresources/KyResource.h>
#include <rnlib/RnBuildInfo.h>

namespace {

/// For people and for scripts: there is no other machine.
constexpr const char* Address = "localhost";

} // namespace

KyRenderServer::KyRenderServer()
    : mServer(Address, RnString(RnBuildInfo::getBuildString(1)))
{
    peer().setCommandFunction([this](const std::string& inCommand, const std::string& inArguments) {
        return run(inCommand, inArguments);
    });
}

std::string KyRenderServer::run(const std::string& inCommand, const std::string& inArguments)
{
    if (inCommand == "commands")
        return "commands\necho\nlog\nsession\nversion";
    if (inCommand == "version")
        return peer().renderServerVersion();
    if (inCommand == "session")
        return KyResource::getSessionId();
    if (inCommand == "echo")
        return inArguments;
    if (inCommand != "log")
        return "Unknown command " + inCommand;
    peer().printSessionLog("Command", inArguments.c_str(), 1);
    return std::string();
}
