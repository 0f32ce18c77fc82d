#include "OvAuthTokenGenerator.h"

#include "OvObservers.h"
#include "OvTokenSource.h"

#include <rnlib/RnLogFile.h>

#include <QtCore/QCoreApplication>

namespace {

constexpr const char* Context = "OvAuthTokenGenerator";

/// Asks the source; without one, or when it throws, the answer is empty.
template <class Request>
void ask(const OvTokenSource::Answer& inAnswer, const Request& inRequest)
{
    OvTokenSource* source = OvTokenSource::instance();
    if (!source) {
        getTheLogInstance().trace(3, Context, "This client makes no tokens");
        inAnswer(QString());
        return;
    }
    try {
        inRequest(*source);
    } catch (...) {
        ovLogException(Context, "a token");
        inAnswer(QString());
    }
}

} // namespace

OvAuthTokenGenerator::OvAuthTokenGenerator(OvMeta*) {}

OvAuthTokenGenerator::~OvAuthTokenGenerator() = default;

void OvAuthTokenGenerator::setCallback(QObject* receiver, const char* method)
{
    mReceiver = receiver;
    mMethod = method;
}

auto OvAuthTokenGenerator::answer()
{
    return [self = RnHandle<OvAuthTokenGenerator>(this)](const QString& inToken) {
        if (QCoreApplication* application = QCoreApplication::instance())
            QMetaObject::invokeMethod(
                application, [self, inToken] { self->deliver(inToken); }, Qt::QueuedConnection);
    };
}

void OvAuthTokenGenerator::deliver(const QString& inToken) const
{
    if (mReceiver && !mMethod.isEmpty())
        QMetaObject::invokeMethod(mReceiver, mMethod.constData(), Qt::DirectConnection,
                                  Q_ARG(QString, inToken));
}

void OvAuthTokenGenerator::generateAsync(int type, int key, QString userData)
{
    const OvTokenSource::Answer taken = answer();
    ask(taken, [&](OvTokenSource& ioSource) { ioSource.request(type, key, userData, taken); });
}

void OvAuthTokenGenerator::generateJWTAsync(QString name)
{
    const OvTokenSource::Answer taken = answer();
    ask(taken, [&](OvTokenSource& ioSource) { ioSource.requestJwt(name, taken); });
}
