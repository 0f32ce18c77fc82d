#include "KyUrlCall.h"

#include "KyScriptProxy.h"
#include "KyScriptReplyContent.h"
#include "KyScriptSender.h"

#include <jxbase/JxMessageBox.h>
#include <rnlib/RnLogFile.h>

#include <QtCore/QUrl>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>

namespace {

/// What a server says of the one page that was asked for: only logged.
bool isRefusalOfThePage(QNetworkReply::NetworkError inError)
{
    switch (inError) {
    case QNetworkReply::ContentAccessDenied:
    case QNetworkReply::ContentOperationNotPermittedError:
    case QNetworkReply::ContentNotFoundError:
    case QNetworkReply::ContentReSendError:
    case QNetworkReply::UnknownContentError:
        return true;
    default:
        return false;
    }
}

void logPage(QNetworkReply& inReply)
{
    if (inReply.size() == 0) {
        getTheLogInstance().printf("URL call received empty page");
        return;
    }
    if (KyScriptReplyContent::isPlainText(inReply.header(QNetworkRequest::ContentTypeHeader).toString()))
        getTheLogInstance().printf("URL reply: %s", KyScriptReplyContent::body(inReply).constData());
}

} // namespace

KyUrlCall::KyUrlCall(QObject* parent)
    : QObject(parent)
    , mManager(std::make_unique<KyScriptSender<QNetworkAccessManager>>(
          std::make_unique<QNetworkAccessManager>(this)))
{
    if (const auto proxy = KyScriptProxy::ofClient())
        mManager->data()->setProxy(*proxy);
    connect(mManager->data(), SIGNAL(finished(QNetworkReply*)), this, SLOT(replyFinished(QNetworkReply*)));
}

/// Under an open box the manager is in the middle of telling of an answer, and outlives this object.
KyUrlCall::~KyUrlCall()
{
    mManager->data()->setParent(nullptr);
}

void KyUrlCall::sendRequest(const QString& inUrl)
{
    getTheLogInstance().printf("URL request: %s", inUrl.toLatin1().constData());
    mManager->data()->get(QNetworkRequest(QUrl(inUrl, QUrl::TolerantMode)));
}

void KyUrlCall::replyFinished(QNetworkReply* reply)
{
    if (!reply)
        return;
    const QNetworkReply::NetworkError error = reply->error();
    if (error == QNetworkReply::NoError) {
        logPage(*reply);
        reply->deleteLater();
        return;
    }
    const QString errorText = reply->errorString();
    if (!isRefusalOfThePage(error)) {
        // Its loop may end this object, and the reply.
        const KyScriptSender<QNetworkAccessManager>::Handling handling(*mManager);
        JxMessageBox::critical(errorText, QMessageBox::Ok, QMessageBox::NoButton,
                               JxMessageBox::InformativeText());
    }
    getTheLogInstance().errorf("URL error: %s", errorText.toLatin1().constData());
}
