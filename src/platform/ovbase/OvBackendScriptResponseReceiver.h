#pragma once

#include "OvBackend.h"
#include "OvBackendScriptExecutor.h"

#include <QtCore/QObject>

/// Hears of the answers to the calls of one executor, which it keeps alive. GUI thread.
///
/// One without a parent ends with the application at the latest, so that calls that are never answered leave
/// nothing behind.
class OvBackendScriptResponseReceiver : public QObject
{
    Q_OBJECT

public:
    OvBackendScriptResponseReceiver(RnHandle<OvBackendScriptExecutor> inExecutor, QObject* parent);
    ~OvBackendScriptResponseReceiver() override;

Q_SIGNALS:
    /// \a json is the result as JSON text; empty with \a noResult, when the method has given none.
    void succeeded(const QString& json, bool noResult);
    /// \a message is for people.
    void failed(const QString& message);

private:
    friend class OvBackendScriptExecutor;
    void tell(const OvBackendReply::Answer& inAnswer);

    const RnHandle<OvBackendScriptExecutor> mExecutor;
};
