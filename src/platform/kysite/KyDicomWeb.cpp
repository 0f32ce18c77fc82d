#include "KyDicomWeb.h"

#include <kyresources/KyClientConfig.h>
#include <ovwebservice/DicomHeader.h>

#include <QtCore/QEventLoop>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QRegularExpression>
#include <QtCore/QThread>
#include <QtCore/QTimer>
#include <QtCore/QUrl>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QSslConfiguration>

#include <memory>
#include <optional>

namespace {

constexpr int AtATime = 6;
constexpr int IdleMilliseconds = 30000;
constexpr int PauseMilliseconds = 200;

/// One run of KyDicomWeb::fetch(), on the thread of its manager.
class Run : public QObject
{
public:
    Run(QString inUrl, const QString& inCaFile, std::optional<QNetworkProxy> inProxy,
        QList<KyDicomWeb::Request>& ioRequests, const KyDicomWeb::Done& inDone)
        : mUrl(std::move(inUrl))
        , mRequests(ioRequests)
        , mDone(inDone)
        , mTls(QSslConfiguration::defaultConfiguration())
    {
        if (!inCaFile.isEmpty())
            mTls.addCaCertificates(inCaFile);
        if (inProxy)
            mNetwork.setProxy(*inProxy);
    }

    void exec()
    {
        for (int i = 0; i < AtATime; ++i)
            next();
        if (mUnderWay > 0)
            mLoop.exec();
    }

private:
    void next()
    {
        if (mIsStopped || mNext >= mRequests.size())
            return;
        ++mUnderWay;
        start(mNext++, 1);
    }

    void start(qsizetype inIndex, int inAttempt)
    {
        QNetworkRequest request(QUrl(mUrl + mRequests[inIndex].path));
        request.setRawHeader("Accept", mRequests[inIndex].accept);
        request.setTransferTimeout(IdleMilliseconds);
        request.setSslConfiguration(mTls);
        QNetworkReply* reply = mNetwork.get(request);
        connect(reply, &QNetworkReply::finished, this, [this, reply, inIndex, inAttempt] {
            finish(*reply, inIndex, inAttempt);
            reply->deleteLater();
        });
    }

    /// What may be better the next time: no answer, one that is cut, a server that is too busy.
    static bool isPassing(int inStatus) { return inStatus == 0 || inStatus == 200 || inStatus >= 500; }

    /// A connection that ends too early can look like the end of the answer.
    static bool isWhole(const KyDicomWeb::Request& inRequest)
    {
        if (inRequest.accept.startsWith("multipart"))
            return !KyDicomWeb::onlyPart(inRequest.contentType, inRequest.body).isNull();
        return !QJsonDocument::fromJson(inRequest.body).isNull();
    }

    void finish(QNetworkReply& ioReply, qsizetype inIndex, int inAttempt)
    {
        KyDicomWeb::Request& request = mRequests[inIndex];
        const int status = ioReply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        request.body = ioReply.isOpen() ? ioReply.readAll() : QByteArray();
        request.contentType = ioReply.header(QNetworkRequest::ContentTypeHeader).toByteArray();
        request.error.clear();
        if (ioReply.error() != QNetworkReply::NoError)
            request.error = ioReply.errorString();
        else if (status != 200 && status != 204)
            request.error = QStringLiteral("status %1").arg(status);
        else if (status == 200 && !isWhole(request))
            request.error = QStringLiteral("the answer is not whole");
        if (!request.error.isEmpty() && isPassing(status) && inAttempt < KyDicomWeb::attempts && !mIsStopped)
        {
            QTimer::singleShot(PauseMilliseconds * inAttempt, this,
                               [this, inIndex, inAttempt] { start(inIndex, inAttempt + 1); });
            return;
        }
        if (mDone && !mDone(request))
            mIsStopped = true;
        --mUnderWay;
        next();
        if (mUnderWay == 0)
            mLoop.quit();
    }

    const QString mUrl;
    QList<KyDicomWeb::Request>& mRequests;
    const KyDicomWeb::Done& mDone;
    QSslConfiguration mTls;
    QNetworkAccessManager mNetwork;
    QEventLoop mLoop;
    qsizetype mNext = 0;
    int mUnderWay = 0;
    bool mIsStopped = false;
};

/// The value of one element as text that DicomHeader takes; null for what has none.
QString valueText(const QJsonObject& inElement)
{
    QStringList texts;
    for (const QJsonValue& value : inElement.value(QLatin1String("Value")).toArray()) {
        const QJsonObject name = value.toObject();
        if (!name.isEmpty()) {
            QStringList groups;
            for (const char* group : {"Alphabetic", "Ideographic", "Phonetic"})
                groups.append(name.value(QLatin1String(group)).toString());
            while (!groups.isEmpty() && groups.last().isEmpty())
                groups.removeLast();
            texts.append(groups.join(QLatin1Char('=')));
        } else {
            texts.append(value.toVariant().toString());
        }
    }
    return texts.join(QLatin1Char('\\'));
}

/// Deeper ones are left out, as files that nest them are refused.
constexpr int MaxDepth = 60;

void readItem(const QJsonObject& inJson, const QString& inPrefix, int inDepth, Ovg::DicomHeader& outHeader)
{
    static const QRegularExpression tag(QStringLiteral("\\A[0-9A-Fa-f]{8}\\z"));
    for (auto it = inJson.begin(); it != inJson.end() && inDepth < MaxDepth; ++it) {
        if (!tag.match(it.key()).hasMatch())
            continue;
        const QString path = inPrefix + QStringLiteral("(%1,%2)").arg(it.key().left(4), it.key().mid(4));
        const QJsonObject element = it.value().toObject();
        if (element.value(QLatin1String("vr")).toString() != QLatin1String("SQ")) {
            outHeader.setText(Ovg::DicomTagPath::fromText(path), valueText(element));
            continue;
        }
        const QJsonArray items = element.value(QLatin1String("Value")).toArray();
        for (qsizetype i = 0; i < items.size(); ++i)
            readItem(items.at(i).toObject(), QStringLiteral("%1[%2].").arg(path).arg(i), inDepth + 1,
                     outHeader);
    }
}

} // namespace

KyDicomWeb::KyDicomWeb(QString inUrl, QString inCaFile)
    : mUrl(std::move(inUrl))
    , mCaFile(std::move(inCaFile))
{}

void KyDicomWeb::fetch(QList<Request>& ioRequests, const Done& inDone) const
{
    int port = 0;
    std::optional<QNetworkProxy> proxy;
    if (const char* host = KyClientConfig::getProxyServer(port))
        proxy = QNetworkProxy(QNetworkProxy::HttpProxy, QString::fromLatin1(host), quint16(port));
    const std::unique_ptr<QThread> thread(
        QThread::create([&] { Run(mUrl, mCaFile, proxy, ioRequests, inDone).exec(); }));
    thread->start();
    thread->wait();
}

KyDicomWeb::Request KyDicomWeb::json(const QString& inPath)
{
    return {inPath, "application/dicom+json", {}, {}, {}};
}

KyDicomWeb::Request KyDicomWeb::instance(const QString& inStudy, const QString& inSeries,
                                         const QString& inInstance)
{
    return {QStringLiteral("/studies/%1/series/%2/instances/%3").arg(inStudy, inSeries, inInstance),
            "multipart/related; type=\"application/dicom\"; transfer-syntax=*",
            {},
            {},
            {}};
}

QByteArray KyDicomWeb::onlyPart(const QByteArray& inContentType, const QByteArray& inBody)
{
    static const QRegularExpression parameter(QStringLiteral("boundary=(?:\"([^\"]+)\"|([^;\\s]+))"),
                                              QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = parameter.match(QString::fromLatin1(inContentType));
    if (!match.hasMatch())
        return QByteArray();
    const QByteArray boundary = "--" + (match.captured(1) + match.captured(2)).toLatin1();
    const qsizetype begin = inBody.indexOf(boundary);
    const qsizetype headers = begin < 0 ? -1 : inBody.indexOf("\r\n\r\n", begin);
    const qsizetype end = headers < 0 ? -1 : inBody.indexOf("\r\n" + boundary, headers + 2);
    if (end < 0)
        return QByteArray();
    return end < headers + 4 ? QByteArray("") : inBody.mid(headers + 4, end - headers - 4);
}

void KyDicomWeb::readHeader(const QJsonObject& inJson, Ovg::DicomHeader& outHeader)
{
    readItem(inJson, QString(), 0, outHeader);
}

QString KyDicomWeb::text(const QJsonObject& inJson, const char* inTag)
{
    const QJsonArray values =
        inJson.value(QLatin1String(inTag)).toObject().value(QLatin1String("Value")).toArray();
    const QJsonValue first = values.isEmpty() ? QJsonValue() : values.first();
    return first.isObject() ? first.toObject().value(QLatin1String("Alphabetic")).toString()
                            : first.toVariant().toString();
}
