#include "KyJwt.h"

#include <QtCore/QJsonDocument>

#include <jwt.h>
#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>

#include <memory>

namespace {

struct Algorithm
{
    const char* name;
    jwt_alg_t id;
    int keyType; ///< OpenSSL's; 0 for a secret.
    int leastBits;
    int mostBits;
};

constexpr Algorithm Algorithms[] = {
    {"RS256", JWT_ALG_RS256, EVP_PKEY_RSA, 2048, 1 << 20},
    {"ES256", JWT_ALG_ES256, EVP_PKEY_EC, 256, 256},
    {"HS256", JWT_ALG_HS256, 0, 256, 1 << 20},
};

const Algorithm* algorithm(const QString& inName)
{
    for (const Algorithm& candidate : Algorithms) {
        if (inName == QLatin1String(candidate.name))
            return &candidate;
    }
    return nullptr;
}

/// Never asks anybody for a pass phrase.
int noPassPhrase(char*, int, int, void*)
{
    return 0;
}

QString keyError(const Algorithm& inAlgorithm, const QByteArray& inKey)
{
    if (inAlgorithm.keyType == 0)
        return inKey.size() * 8 < inAlgorithm.leastBits
                   ? QStringLiteral("the secret is shorter than 32 bytes")
                   : QString();
    const std::unique_ptr<BIO, decltype(&BIO_free)> bytes(
        BIO_new_mem_buf(inKey.constData(), int(inKey.size())), &BIO_free);
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
        bytes ? PEM_read_bio_PrivateKey(bytes.get(), nullptr, noPassPhrase, nullptr) : nullptr,
        &EVP_PKEY_free);
    if (!key)
        return QStringLiteral("the key is no private key in PEM without a pass phrase");
    const int bits = EVP_PKEY_bits(key.get());
    const bool fits = EVP_PKEY_base_id(key.get()) == inAlgorithm.keyType && bits >= inAlgorithm.leastBits &&
                      bits <= inAlgorithm.mostBits;
    return fits ? QString()
                : QStringLiteral("the key is not of a kind or size for %1")
                      .arg(QLatin1String(inAlgorithm.name));
}

} // namespace

QString KyJwt::sign(const QString& inAlgorithm, const QByteArray& inKey, const QString& inKeyId,
                    const QJsonObject& inClaims, QString& outError)
{
    const Algorithm* chosen = algorithm(inAlgorithm);
    if (!chosen) {
        outError = QStringLiteral("the algorithm %1 is none of RS256, ES256 and HS256").arg(inAlgorithm);
        return QString();
    }
    outError = keyError(*chosen, inKey);
    if (!outError.isEmpty())
        return QString();

    jwt_t* made = nullptr;
    jwt_new(&made);
    const std::unique_ptr<jwt_t, decltype(&jwt_free)> token(made, &jwt_free);
    const QByteArray claims = QJsonDocument(inClaims).toJson(QJsonDocument::Compact);
    const bool isSet =
        token &&
        jwt_set_alg(made, chosen->id, reinterpret_cast<const unsigned char*>(inKey.constData()),
                    int(inKey.size())) == 0 &&
        jwt_add_header(made, "typ", "JWT") == 0 &&
        (inKeyId.isEmpty() || jwt_add_header(made, "kid", inKeyId.toUtf8().constData()) == 0) &&
        jwt_add_grants_json(made, claims.constData()) == 0;
    const std::unique_ptr<char, decltype(&std::free)> text(isSet ? jwt_encode_str(made) : nullptr,
                                                           &std::free);
    if (!text)
        outError = QStringLiteral("the token could not be signed");
    return QString::fromLatin1(text.get());
}
