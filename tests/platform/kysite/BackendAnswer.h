#pragma once

#include <ovbase/OvBackendScriptExecutor.h>
#include <ovbase/OvBackendScriptResponseReceiver.h>

#include <QObject>
#include <QString>

#include <string>
#include <vector>

/// One call of the backend, and what has come of it: "ok JSON", "ok" for no result, "failed: MESSAGE", or
/// nothing as yet.
class BackendAnswer
{
public:
    BackendAnswer(const std::string& inClass, const std::string& inMethod,
                  const std::vector<std::string>& inParameters = {})
        : mExecutor(new OvBackendScriptExecutor(nullptr))
        , mReceiver(mExecutor, nullptr)
    {
        QObject::connect(&mReceiver, &OvBackendScriptResponseReceiver::succeeded,
                         [this](const QString& inJson, bool inNoResult) {
                             text = inNoResult ? QStringLiteral("ok") : QStringLiteral("ok ") + inJson;
                             ++count;
                         });
        QObject::connect(&mReceiver, &OvBackendScriptResponseReceiver::failed,
                         [this](const QString& inMessage) {
                             text = QStringLiteral("failed: ") + inMessage;
                             ++count;
                         });
        mExecutor->execScriptOnBackend(inClass, inMethod, inParameters);
    }

    QString text;
    int count = 0;

private:
    const RnHandle<OvBackendScriptExecutor> mExecutor;
    OvBackendScriptResponseReceiver mReceiver;
};
