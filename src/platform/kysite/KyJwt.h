#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QString>

/// Signs JSON Web Tokens (RFC 7519, in the compact form of RFC 7515).
class KyJwt
{
public:
    KyJwt() = delete;

    /// A token with the claims \a inClaims and, unless it is empty, the header "kid". \a inAlgorithm is
    /// RS256, ES256 or HS256 (RFC 7518); the key is a private one in PEM without a pass phrase, RSA of at
    /// least 2048 bits or on the curve P-256, or a secret of at least 32 bytes. Empty, with the reason, when
    /// it can't be made; the reason tells nothing of the key. May be called on any thread.
    static QString sign(const QString& inAlgorithm, const QByteArray& inKey, const QString& inKeyId,
                        const QJsonObject& inClaims, QString& outError);
};
