#include "KyScriptHttpRequest.h"

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

    void removeReply(const QPointer<QNetworkReply>& inReply);
    bool hasUnfinishedReply() const;

    KyScriptSender<QNetworkAccessManager> mManager;
    QNetworkRequest mRequest;
    QPointer<JxEventLoop> mWaitLoop;
    /// Not answered yet, in the order of sending.
    QList<QPointer<QNetworkReply>> mReplies;
};

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

void KyScriptHttpRequest::logRequest(const char* inVerb, const QString& inUrl)
{
    getTheLogInstance().printf("Send http %s request: %s", inVerb, inUrl.toLatin1().constData());
}

void KyScriptHttpRequest::get(QString request)
{
    logRequest("GET", request);
    d->mReplies.append(d->mManager->get(d->requestTo(request)));
}

void KyScriptHttpRequest::post(QString request, QString data)
{
    logRequest("POST", request);
    d->mReplies.append(d->mManager->post(d->requestTo(request), data.toUtf8()));
}

void KyScriptHttpRequest::put(QString request, QString data)
{
    logRequest("PUT", request);
    d->mReplies.append(d->mManager->put(d->requestTo(request), data.toUtf8()));
}

void KyScriptHttpRequest::del(QString request)
{
    logRequest("DELETE", request);
    d->mReplies.append(d->mManager->deleteResource(d->requestTo(request)));
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
