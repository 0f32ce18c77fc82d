#include "OvBackendScriptExecutor.h"

#include "OvBackend.h"
#include "OvBackendScriptReceivers.h"
#include "OvBackendScriptResponseReceiver.h"
#include "OvObservers.h"

OvBackendScriptExecutor::OvBackendScriptExecutor(OvMeta*)
    : mReceivers(std::make_shared<Receivers>())
{}

OvBackendScriptExecutor::~OvBackendScriptExecutor() = default;

void OvBackendScriptExecutor::execScriptOnBackend(const std::string& className, const std::string& methodName,
                                                  const std::vector<std::string>& parameters)
{
    const auto tellReceivers = [receivers = mReceivers](const OvBackendReply::Answer& inAnswer) {
        const auto all = receivers->all; // a receiver may end others
        for (const QPointer<OvBackendScriptResponseReceiver>& receiver : all) {
            if (receiver)
                receiver->tell(inAnswer);
        }
    };
    const auto reply = std::make_shared<OvBackendReply>(tellReceivers);

    OvBackend* backend = OvBackend::instance();
    if (!backend) {
        reply->fail(QStringLiteral("This client has no backend"));
        return;
    }
    try {
        backend->start({className, methodName, parameters}, reply);
    } catch (...) {
        ovLogException("OvBackendScriptExecutor", "the backend");
        reply->fail(QStringLiteral("The backend failed"));
    }
}
