#pragma once

#include <rnlib/RnHandle.h>

#include <QtCore/QByteArray>
#include <QtCore/QPointer>
#include <QtCore/QString>

class OvMeta;

/// Asks the OvTokenSource in force for tokens, and hands each to its callback.
///
/// It is counted by handles on any thread, since a request that is under way keeps it; everything else is for
/// the GUI thread.
class OvAuthTokenGenerator : public RnHandableThreaded
{
public:
    /// \a inMeta is not used and may be null.
    explicit OvAuthTokenGenerator(OvMeta* inMeta);

    /// The method \a method, a slot, a signal or an invokable one, of \a receiver gets the text of each
    /// token, on the GUI thread and from the event loop: once for each request, with an empty text when no
    /// token could be made. Nothing is called any more when the receiver has gone.
    void setCallback(QObject* receiver, const char* method);

    /// Starts a request for a token and returns. What the numbers mean is the source's.
    void generateAsync(int type, int key, QString userData);
    /// Starts a request for a JSON Web Token (RFC 7519) of the configuration \a name and returns.
    void generateJWTAsync(QString name);

protected:
    ~OvAuthTokenGenerator() override;

private:
    /// A function that takes the token, on any thread.
    auto answer();
    void deliver(const QString& inToken) const;

    QPointer<QObject> mReceiver;
    QByteArray mMethod;
};
