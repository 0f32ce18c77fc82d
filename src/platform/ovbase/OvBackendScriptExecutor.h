#pragma once

#include <rnlib/RnHandle.h>

#include <memory>
#include <string>
#include <vector>

class OvBackendScriptResponseReceiver;
class OvMeta;

/// Calls a method of a class on the backend, which is the OvBackend in force. Its answers go to the receivers
/// that share it. GUI thread.
class OvBackendScriptExecutor : public RnHandable
{
public:
    /// \a inMeta is not used and may be null.
    explicit OvBackendScriptExecutor(OvMeta* inMeta);
    ~OvBackendScriptExecutor() override;

    /// Starts a call and returns. Each of \a parameters is JSON text in UTF-8, the names are UTF-8. The
    /// answer comes from the event loop. Without a backend the call fails, as it does when the backend throws
    /// or drops it.
    void execScriptOnBackend(const std::string& className, const std::string& methodName,
                             const std::vector<std::string>& parameters);

private:
    friend class OvBackendScriptResponseReceiver;
    struct Receivers;

    const std::shared_ptr<Receivers> mReceivers;
};
