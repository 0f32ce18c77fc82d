#include "OvBackendScriptResponseReceiver.h"

#include "OvBackendScriptReceivers.h"

#include <QtCore/QCoreApplication>

OvBackendScriptResponseReceiver::OvBackendScriptResponseReceiver(RnHandle<OvBackendScriptExecutor> inExecutor,
                                                                 QObject* parent)
    : QObject(parent)
    , mExecutor(std::move(inExecutor))
{
    if (mExecutor)
        mExecutor->mReceivers->all.append(this);
    if (!parent && QCoreApplication::instance()) {
        connect(QCoreApplication::instance(), &QObject::destroyed, this, [this] {
            if (!this->parent())
                delete this;
        });
    }
}

OvBackendScriptResponseReceiver::~OvBackendScriptResponseReceiver()
{
    if (mExecutor)
        mExecutor->mReceivers->all.removeAll(this);
}

void OvBackendScriptResponseReceiver::tell(const OvBackendReply::Answer& inAnswer)
{
    if (inAnswer.isOk)
        Q_EMIT succeeded(inAnswer.text, inAnswer.noResult);
    else
        Q_EMIT failed(inAnswer.text);
}
