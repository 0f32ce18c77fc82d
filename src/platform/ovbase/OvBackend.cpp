#include "OvBackend.h"

#include <QtCore/QCoreApplication>

#include <atomic>

namespace {

OvBackend* sInstance = nullptr;

} // namespace

struct OvBackendReply::State
{
    std::atomic<bool> isAnswered = false;
    Function function;
};

OvBackendReply::OvBackendReply(Function inFunction)
    : mState(std::make_unique<State>())
{
    mState->function = std::move(inFunction);
}

OvBackendReply::~OvBackendReply()
{
    fail(QStringLiteral("The backend gave no answer"));
}

void OvBackendReply::succeed(const QString& inJson)
{
    answer({true, false, inJson});
}

void OvBackendReply::succeed()
{
    answer({true, true, QString()});
}

void OvBackendReply::fail(const QString& inMessage)
{
    answer({false, false, inMessage});
}

/// The function goes along with the event: it lives and ends on the thread of the application.
void OvBackendReply::answer(Answer inAnswer)
{
    if (mState->isAnswered.exchange(true) || !mState->function)
        return;
    if (QCoreApplication* application = QCoreApplication::instance()) {
        QMetaObject::invokeMethod(
            application,
            [function = std::move(mState->function), answer = std::move(inAnswer)] { function(answer); },
            Qt::QueuedConnection);
    }
}

OvBackend::OvBackend()
{
    sInstance = this;
}

OvBackend::~OvBackend()
{
    if (sInstance == this)
        sInstance = nullptr;
}

OvBackend* OvBackend::instance()
{
    return sInstance;
}

void OvMemoryBackend::add(const std::string& inClassName, const std::string& inMethodName, Method inMethod)
{
    mMethods[{inClassName, inMethodName}] = std::move(inMethod);
}

void OvMemoryBackend::start(const OvBackendCall& inCall, const Reply& inReply)
{
    const auto method = mMethods.find({inCall.className, inCall.methodName});
    if (method != mMethods.end() && method->second)
        method->second(inCall.parameters, inReply);
    else
        inReply->fail(
            QStringLiteral("There is no method %1.%2")
                .arg(QString::fromStdString(inCall.className), QString::fromStdString(inCall.methodName)));
}
