#pragma once

#include <ovbase/OvTokenSource.h>

#include <QtCore/QJsonObject>
#include <QtCore/QThreadPool>

/// Signed JSON Web Tokens by configurations in a file of JSON, an object whose names are those of the
/// configurations:
///
///     {"pacs": {"algorithm": "RS256", "keyFile": "pacs.pem", "keyId": "2026-1", "issuer": "workstation",
///               "audience": "pacs", "lifetimeSeconds": 300, "claims": {"role": "reader"}, "type": 2, "key":
///               2}}
///
/// "algorithm" and "keyFile", which is relative to the file, are needed. A token has the claims of the
/// configuration, and "iss" and "aud" where that names them, "sub" the user, "iat", "nbf" and "exp", one hour
/// later unless the lifetime is given, and a "jti" of its own; "userData" when a script has given some. A
/// token that is asked for by numbers is of the first configuration, in the order of their names, with that
/// "type" and "key"; without these it is 2 and 2.
///
/// The files are read anew for each token, on a thread of their own. What goes wrong is logged at level 3,
/// under "Tokens", and gives an empty token; nothing of a key is ever logged.
class KyJwtSource final : public OvTokenSource
{
public:
    explicit KyJwtSource(QString inFile);
    /// Waits for the requests that are under way.
    ~KyJwtSource() override;

    void request(int inType, int inKey, const QString& inUserData, const Answer& inAnswer) override;
    void requestJwt(const QString& inName, const Answer& inAnswer) override;

private:
    /// Picks a configuration of the file; sets its name.
    using Choice = std::function<QJsonObject(const QJsonObject& inConfigurations, QString& outName)>;

    void start(const Choice& inChoice, const QString& inUserData, const Answer& inAnswer);
    static QString make(const QString& inFile, const Choice& inChoice, const QString& inUser,
                        const QString& inUserData, QString& outError);

    const QString mFile;
    QThreadPool mThreads;
};
