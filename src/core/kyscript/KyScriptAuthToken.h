#pragma once

#include <ovbase/OvAuthTokenGenerator.h>

#include <QtCore/QObject>

/// Tokens with which a script authenticates at other services, published as `new AuthToken()`: the door to
/// the application's OvAuthTokenGenerator.
///
/// The script that makes one owns it; the engine's cleanup ends it at the latest, once it has been asked for
/// a token. One that nothing refers to any more goes with the next garbage collection, and what it was asked
/// for comes to nobody. GUI thread only.
class KyScriptAuthToken : public QObject
{
    Q_OBJECT

public:
    /// Cheap and without effects, since every engine makes one to check that scripts can.
    Q_INVOKABLE explicit KyScriptAuthToken(QObject* parent = nullptr);
    ~KyScriptAuthToken() override;

    /// Asks for a token and returns. What type and key mean is the generator's; the user data become part of
    /// the token. Each request ends in one finished().
    Q_INVOKABLE void generate(int inType = 2, int inKey = 2, QString userData = QString());
    /// Asks for a JSON Web Token (RFC 7519) of the configuration of that name and returns. Likewise.
    Q_INVOKABLE void generateJWT(QString inName);

Q_SIGNALS:
    /// A token; empty when none could be made, for which the log has the reason. It does not tell which
    /// request it answers.
    void finished(QString inAuthToken);

private:
    /// Made at first use.
    OvAuthTokenGenerator* generator();

    RnHandle<OvAuthTokenGenerator> mGenerator;
};
