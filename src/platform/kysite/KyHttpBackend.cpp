#include "KyHttpBackend.h"

#include <kyresources/KyClientConfig.h>
#include <rnlib/RnLogFile.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTimer>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QNetworkReply>

namespace {

constexpr const char* TimedOut = "timedOut";

QByteArray jsonText(const QJsonValue& inValue)
{
    const QByteArray array = QJsonDocument(QJsonArray{inValue}).toJson(QJsonDocument::Compact);
    return array.mid(1, array.size() - 2);
}

QByteArray body(const OvBackendCall& inCall)
{
    QByteArrayList parameters;
    for (const std::string& parameter : inCall.parameters)
        parameters.append(QByteArray::fromStdString(parameter));
    return "{\"class\":" + jsonText(QString::fromStdString(inCall.className)) +
           ",\"method\":" + jsonText(QString::fromStdString(inCall.methodName)) + ",\"parameters\":[" +
           parameters.join(',') + "]}";
}

} // namespace

KyHttpBackend::KyHttpBackend(QUrl inUrl, const QString& inCaFile, int inTimeoutSeconds)
    : mUrl(std::move(inUrl))
    , mTimeoutSeconds(inTimeoutSeconds)
    , mTls(QSslConfiguration::defaultConfiguration())
{
    int port = 0;
    if (const char* host = KyClientConfig::getProxyServer(port))
        mNetwork.setProxy(QNetworkProxy(QNetworkProxy::HttpProxy, QString::fromLatin1(host), quint16(port)));
    if (inCaFile.isEmpty())
        return;
    if (!mTls.addCaCertificates(inCaFile))
        getTheLogInstance().tracef(3, "Backend", "No certificates can be read from %s", qPrintable(inCaFile));
}

KyHttpBackend::~KyHttpBackend() = default;

void KyHttpBackend::start(const OvBackendCall& inCall, const Reply& inReply)
{
    QNetworkRequest request(mUrl);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    request.setSslConfiguration(mTls);
    request.setRawHeader("Accept", "application/json");
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    QNetworkReply* answer = mNetwork.post(request, body(inCall));
    connect(answer, &QNetworkReply::finished, this, [this, answer, reply = inReply] {
        finish(*answer, *reply);
        answer->deleteLater();
    });
    QTimer::singleShot(mTimeoutSeconds * 1000, answer, [answer] {
        answer->setProperty(TimedOut, true);
        answer->abort();
    });
}

void KyHttpBackend::finish(QNetworkReply& ioAnswer, OvBackendReply& ioReply) const
{
    const int status = ioAnswer.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QByteArray text = ioAnswer.isOpen() ? ioAnswer.readAll() : QByteArray();
    const QJsonDocument document = QJsonDocument::fromJson(text);
    const QJsonObject object = document.object();
    const QJsonValue error = object.value(QLatin1String("error"));
    const QString server = mUrl.toString(QUrl::RemoveUserInfo | QUrl::RemoveQuery);

    if (ioAnswer.property(TimedOut).toBool())
        ioReply.fail(QStringLiteral("The backend %1 gave no answer within %2 seconds")
                         .arg(server, QString::number(mTimeoutSeconds)));
    else if (!error.isUndefined())
        ioReply.fail(error.isString() ? error.toString() : QString::fromUtf8(jsonText(error)));
    else if (status == 0 || (status == 200 && ioAnswer.error() != QNetworkReply::NoError))
        ioReply.fail(QStringLiteral("The backend %1: %2").arg(server, ioAnswer.errorString()));
    else if (status != 200)
        ioReply.fail(QStringLiteral("The backend %1 answered with the status %2").arg(server).arg(status));
    else if (!document.isObject())
        ioReply.fail(
            QStringLiteral("The backend %1 answered with something else than a JSON object").arg(server));
    else if (object.contains(QLatin1String("result")))
        ioReply.succeed(QString::fromUtf8(jsonText(object.value(QLatin1String("result")))));
    else
        ioReply.succeed();
}
