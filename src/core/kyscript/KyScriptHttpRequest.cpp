#include "KyScriptHttpRequest.h"

#include "KyScriptOpenFiles.h"
#include "KyScriptProxy.h"
#include "KyScriptReplyContent.h"
#include "KyScriptSender.h"
#include "KyScriptWait.h"

#include <jxbase/JxEventLoop.h>
#include <rnlib/RnContract.h>
#include <rnlib/RnLogFile.h>

#include <QtCore/QPointer>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>
#include <QtNetwork/QSslConfiguration>

#include <algorithm>

namespace {

/// As a C string has it: up to the first NUL, and never null, since Qt takes a null value for no header.
QByteArray headerBytes(const QString& inText)
{
    return QByteArray(inText.toLatin1().constData());
}

void logAnswer(QNetworkReply::NetworkError inError, const QByteArray& inErrorText, const QByteArray& inUrl)
{
    if (inError == QNetworkReply::NoError)
        getTheLogInstance().printf("Received http response for request %s", inUrl.constData());
    else
        getTheLogInstance().errorf("Received http error %s for %s request ", inErrorText.constData(),
                                   inUrl.constData());
}

/// The answer to a request for which there are no sockets: a failure, told by the event loop as any other.
class RefusedReply : public QNetworkReply
{
public:
    RefusedReply(const QNetworkRequest& inRequest, QObject* inParent)
        : QNetworkReply(inParent)
    {
        setRequest(inRequest);
        setUrl(inRequest.url());
        setError(UnknownNetworkError, QStringLiteral("Too many open files"));
        QMetaObject::invokeMethod(this, &RefusedReply::finish, Qt::QueuedConnection);
    }
    void abort() override {}

protected:
    qint64 readData(char*, qint64) override { return -1; }

private:
    void finish()
    {
        setFinished(true);
        Q_EMIT finished();
    }
};

/// Objects that have sent something. The manager of each has a thread, which opens a file of its own when it
/// gets to it; so they are counted.
int sSending = 0;

} // namespace

class KyScriptHttpRequest::Private
{
public:
    Private()
        : mManager(std::make_unique<QNetworkAccessManager>())
    {}
    /// A wait in progress stands on the loop, which therefore goes on its own.
    ~Private()
    {
        sSending -= mIsSending ? 1 : 0;
        if (!mWaitLoop || !mWaitLoop->isRunning())
            return;
        mWaitLoop->setParent(nullptr);
        mWaitLoop->exit(0);
    }

    /// The request for \a inUrl, which is not tested.
    const QNetworkRequest& requestTo(const QString& inUrl)
    {
        mRequest.setUrl(QUrl(inUrl, QUrl::TolerantMode));
        return mRequest;
    }

    bool begin();
    void removeReply(const QPointer<QNetworkReply>& inReply);
    bool hasUnfinishedReply() const;

    KyScriptSender<QNetworkAccessManager> mManager;
    QNetworkRequest mRequest;
    QPointer<JxEventLoop> mWaitLoop;
    /// Not answered yet, in the order of sending.
    QList<QPointer<QNetworkReply>> mReplies;
    bool mIsSending = false;
};

/// Whether there are sockets for a request.
bool KyScriptHttpRequest::Private::begin()
{
    if (!KyScriptOpenFiles::areLeft() || (!mIsSending && sSending >= KyScriptOpenFiles::limit() / 4))
        return false;
    sSending += mIsSending ? 0 : 1;
    mIsSending = true;
    return true;
}

void KyScriptHttpRequest::Private::removeReply(const QPointer<QNetworkReply>& inReply)
{
    const auto removedReplyCount = mReplies.removeAll(inReply);
    dbc_holds(inReply.isNull() || removedReplyCount == 1);
    const auto removedNullCount = mReplies.removeAll(QPointer<QNetworkReply>());
    dbc_holds(removedNullCount == 0);
    if (!hasUnfinishedReply() && mWaitLoop && mWaitLoop->isRunning())
        mWaitLoop->exit(0);
}

bool KyScriptHttpRequest::Private::hasUnfinishedReply() const
{
    return std::any_of(mReplies.begin(), mReplies.end(),
                       [](const auto& reply) { return reply && !reply->isFinished(); });
}

KyScriptHttpRequest::KyScriptHttpRequest(QObject* parent)
    : QObject(parent)
    , d(std::make_unique<Private>())
{
    if (const auto proxy = KyScriptProxy::ofClient())
        d->mManager->setProxy(*proxy);
    connect(d->mManager.data(), SIGNAL(finished(QNetworkReply*)), this, SLOT(replyFinished(QNetworkReply*)));
}

KyScriptHttpRequest::~KyScriptHttpRequest() = default;

template <class Send>
void KyScriptHttpRequest::send(const char* inVerb, const QString& inUrl, Send inSend)
{
    getTheLogInstance().printf("Send http %s request: %s", inVerb, inUrl.toLatin1().constData());
    const QNetworkRequest& request = d->requestTo(inUrl);
    if (d->begin()) {
        d->mReplies.append(inSend(*d->mManager.data(), request));
        return;
    }
    auto* refused = new RefusedReply(request, d->mManager.data());
    connect(refused, &QNetworkReply::finished, this, [this, refused] { replyFinished(refused); });
    d->mReplies.append(refused);
}

void KyScriptHttpRequest::get(QString request)
{
    send("GET", request, [](auto& ioManager, const auto& inRequest) { return ioManager.get(inRequest); });
}

void KyScriptHttpRequest::post(QString request, QString data)
{
    send("POST", request,
         [&](auto& ioManager, const auto& inRequest) { return ioManager.post(inRequest, data.toUtf8()); });
}

void KyScriptHttpRequest::put(QString request, QString data)
{
    send("PUT", request,
         [&](auto& ioManager, const auto& inRequest) { return ioManager.put(inRequest, data.toUtf8()); });
}

void KyScriptHttpRequest::del(QString request)
{
    send("DELETE", request,
         [](auto& ioManager, const auto& inRequest) { return ioManager.deleteResource(inRequest); });
}

void KyScriptHttpRequest::setHeader(QString headerName, QString headerValue)
{
    d->mRequest.setRawHeader(headerBytes(headerName), headerBytes(headerValue));
}

void KyScriptHttpRequest::setSSLNoVerify(bool noSSLVerify)
{
    QSslConfiguration configuration;
    if (noSSLVerify)
        configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    d->mRequest.setSslConfiguration(configuration);
}

void KyScriptHttpRequest::waitForFinished(int inMsecs)
{
    if (!d->hasUnfinishedReply() || inMsecs < 1)
        return;
    if (!d->mWaitLoop)
        d->mWaitLoop = new JxEventLoop(this);
    const KyScriptWait wait;
    if (d->mWaitLoop->isRunning() || !wait.mayBegin())
        return;

    const QPointer<KyScriptHttpRequest> self(this);
    JxEventLoop* loop = d->mWaitLoop;
    loop->exec(inMsecs, QEventLoop::ProcessEventsFlags());
    if (!self)
        delete loop;
}

void KyScriptHttpRequest::replyFinished(QNetworkReply* reply)
{
    if (!reply)
        return;

    const QVariantMap header = KyScriptReplyContent::headerMap(reply->rawHeaderPairs());
    const QByteArray body = KyScriptReplyContent::body(*reply);
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    const QByteArray url = reply->request().url().toString().toLatin1();
    const QNetworkReply::NetworkError error = reply->error();
    const QByteArray errorText = reply->errorString().toLatin1();

    // A receiver of the signal may end either.
    const KyScriptSender<QNetworkAccessManager>::Handling handling(d->mManager);
    const QPointer<KyScriptHttpRequest> self(this);
    const QPointer<QNetworkReply> answered(reply);
    Q_EMIT response(body, header, status);

    logAnswer(error, errorText, url);
    if (self)
        d->removeReply(answered);
    if (answered)
        answered->deleteLater();
}
