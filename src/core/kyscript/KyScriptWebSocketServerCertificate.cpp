// Certificates by libcrypto's interface of 1.1, which the build asks for in this file.

#include "KyScriptWebSocketServer.h"

#include <QtNetwork/QSslCertificate>
#include <QtNetwork/QSslKey>

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/buffer.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

namespace {

constexpr int ModulusBits = 2048;
constexpr BN_ULONG PublicExponent = 65537;
constexpr long ValiditySeconds = 31536000; // 365 days

EVP_PKEY* makeKey()
{
    EVP_PKEY* key = EVP_PKEY_new();
    RSA* rsa = RSA_new();
    BIGNUM* exponent = BN_new();
    BN_set_word(exponent, PublicExponent);
    RSA_generate_key_ex(rsa, ModulusBits, exponent, nullptr);
    EVP_PKEY_assign(key, EVP_PKEY_RSA, rsa);
    BN_free(exponent);
    return key;
}

void addNameEntry(X509_NAME* ioName, const char* inField, const char* inValue)
{
    X509_NAME_add_entry_by_txt(ioName, inField, MBSTRING_ASC, reinterpret_cast<const unsigned char*>(inValue),
                               -1, -1, 0);
}

X509* makeCertificate(EVP_PKEY* inKey)
{
    X509* certificate = X509_new();
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate), 0);
    X509_gmtime_adj(X509_getm_notAfter(certificate), ValiditySeconds);
    X509_set_pubkey(certificate, inKey);

    X509_NAME* name = X509_get_subject_name(certificate);
    addNameEntry(name, "C", "DE");
    addNameEntry(name, "O", "Orvane Imaging");
    addNameEntry(name, "CN", "localhost");
    X509_set_issuer_name(certificate, name);
    X509_sign(certificate, inKey, EVP_sha256());
    return certificate;
}

QByteArray bytesOf(BIO* inMemory)
{
    BUF_MEM* buffer = nullptr;
    BIO_ctrl(inMemory, BIO_C_GET_BUF_MEM_PTR, 0, &buffer);
    return QByteArray(buffer->data, static_cast<qsizetype>(buffer->length));
}

} // namespace

std::pair<QSslCertificate, QSslKey> KyScriptWebSocketServer::generateSelfSignedCertificate()
{
    EVP_PKEY* key = makeKey();
    X509* certificate = makeCertificate(key);

    BIO* certificateText = BIO_new(BIO_s_mem());
    PEM_write_bio_X509(certificateText, certificate);
    BIO* keyText = BIO_new(BIO_s_mem());
    PEM_write_bio_PrivateKey(keyText, key, nullptr, nullptr, 0, nullptr, nullptr);

    std::pair result(QSslCertificate(bytesOf(certificateText), QSsl::Pem),
                     QSslKey(bytesOf(keyText), QSsl::Rsa, QSsl::Pem, QSsl::PrivateKey));
    BIO_free_all(certificateText);
    BIO_free_all(keyText);
    X509_free(certificate);
    EVP_PKEY_free(key);
    return result;
}
