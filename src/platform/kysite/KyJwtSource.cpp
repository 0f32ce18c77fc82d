#include "KyJwtSource.h"

#include "KyJwt.h"

#include <kyresources/KyResource.h>
#include <rnlib/RnLogFile.h>

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>
#include <QtCore/QUuid>

#include <optional>

namespace {

constexpr int DefaultNumber = 2;
constexpr int DefaultLifetime = 3600;

std::optional<QByteArray> contentOf(const QString& inFile)
{
    QFile file(inFile);
    return file.open(QIODevice::ReadOnly) ? std::optional(file.readAll()) : std::nullopt;
}

QJsonObject claimsOf(const QJsonObject& inConfiguration, const QString& inUser, const QString& inUserData)
{
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    QJsonObject claims = inConfiguration.value(QLatin1String("claims")).toObject();
    for (const auto& [claim, key] : {std::pair("iss", "issuer"), std::pair("aud", "audience")}) {
        const QJsonValue value = inConfiguration.value(QLatin1String(key));
        if (!value.isUndefined())
            claims.insert(QLatin1String(claim), value);
    }
    if (!inUser.isEmpty())
        claims.insert(QStringLiteral("sub"), inUser);
    if (!inUserData.isEmpty())
        claims.insert(QStringLiteral("userData"), inUserData);
    claims.insert(QStringLiteral("iat"), now);
    claims.insert(QStringLiteral("nbf"), now);
    claims.insert(
        QStringLiteral("exp"),
        now + std::max(1, inConfiguration.value(QLatin1String("lifetimeSeconds")).toInt(DefaultLifetime)));
    claims.insert(QStringLiteral("jti"), QUuid::createUuid().toString(QUuid::WithoutBraces));
    return claims;
}

/// A secret in a text file ends with a line break that is none of it.
QByteArray keyOf(const QByteArray& inContent, const QString& inAlgorithm)
{
    QByteArray key = inContent;
    while (inAlgorithm == QLatin1String("HS256") && (key.endsWith('\n') || key.endsWith('\r')))
        key.chop(1);
    return key;
}

} // namespace

KyJwtSource::KyJwtSource(QString inFile)
    : mFile(std::move(inFile))
{
    mThreads.setMaxThreadCount(1);
}

KyJwtSource::~KyJwtSource()
{
    mThreads.clear();
    mThreads.waitForDone();
}

void KyJwtSource::request(int inType, int inKey, const QString& inUserData, const Answer& inAnswer)
{
    const Choice byNumbers = [inType, inKey](const QJsonObject& inConfigurations, QString& outName) {
        for (const QString& name : inConfigurations.keys()) {
            const QJsonObject candidate = inConfigurations.value(name).toObject();
            if (candidate.value(QLatin1String("type")).toInt(DefaultNumber) == inType &&
                candidate.value(QLatin1String("key")).toInt(DefaultNumber) == inKey)
            {
                outName = name;
                return candidate;
            }
        }
        outName = QStringLiteral("of type %1 and key %2").arg(inType).arg(inKey);
        return QJsonObject();
    };
    start(byNumbers, inUserData, inAnswer);
}

void KyJwtSource::requestJwt(const QString& inName, const Answer& inAnswer)
{
    const Choice byName = [inName](const QJsonObject& inConfigurations, QString& outName) {
        outName = inName;
        return inConfigurations.value(inName).toObject();
    };
    start(byName, QString(), inAnswer);
}

void KyJwtSource::start(const Choice& inChoice, const QString& inUserData, const Answer& inAnswer)
{
    const QString user = QString::fromLatin1(KyResource::getUserName());
    mThreads.start([file = mFile, inChoice, user, inUserData, inAnswer] {
        QString error;
        const QString token = make(file, inChoice, user, inUserData, error);
        if (!error.isEmpty())
            getTheLogInstance().trace(3, "Tokens", error.toLatin1().constData());
        inAnswer(token);
    });
}

QString KyJwtSource::make(const QString& inFile, const Choice& inChoice, const QString& inUser,
                          const QString& inUserData, QString& outError)
{
    const auto content = contentOf(inFile);
    const QJsonDocument document = QJsonDocument::fromJson(content.value_or(QByteArray()));
    if (!document.isObject()) {
        outError = content ? QStringLiteral("%1 holds no JSON object").arg(inFile)
                           : QStringLiteral("%1 cannot be read").arg(inFile);
        return QString();
    }
    QString name;
    const QJsonObject chosen = inChoice(document.object(), name);
    if (chosen.isEmpty()) {
        outError = QStringLiteral("There is no token configuration %1").arg(name);
        return QString();
    }
    const QString keyFile =
        QDir(QFileInfo(inFile).absolutePath()).filePath(chosen.value(QLatin1String("keyFile")).toString());
    const auto key = contentOf(keyFile);
    if (!key) {
        outError = QStringLiteral("Token configuration %1: the key %2 cannot be read").arg(name, keyFile);
        return QString();
    }
    const QString algorithm = chosen.value(QLatin1String("algorithm")).toString();
    const QString token =
        KyJwt::sign(algorithm, keyOf(*key, algorithm), chosen.value(QLatin1String("keyId")).toString(),
                    claimsOf(chosen, inUser, inUserData), outError);
    if (!outError.isEmpty())
        outError = QStringLiteral("Token configuration %1: %2").arg(name, outError);
    return token;
}
