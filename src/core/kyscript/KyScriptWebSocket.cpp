#include "KyScriptWebSocket.h"

#include "KyScriptOpenFiles.h"
#include "KyScriptProxy.h"
#include "KyScriptWait.h"

#include <rnlib/RnContract.h>
#include <rnlib/RnLogFile.h>

#include <QtCore/QEventLoop>
#include <QtCore/QPointer>
#include <QtCore/QUrl>
#include <QtNetwork/QSslError>
#include <QtWebSockets/QWebSocket>

#include <utility>

namespace {

constexpr int ConnectLimitMSecs = 3000;

/// Its name is `errorOccurred` from Qt 6.5 on.
constexpr auto ErrorSignal =
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    &QWebSocket::errorOccurred;
#else
    qOverload<QAbstractSocket::SocketError>(&QWebSocket::error);
#endif

} // namespace

KyScriptWebSocket::KyScriptWebSocket(QObject* parent)
    : QObject(parent)
{}

KyScriptWebSocket::~KyScriptWebSocket()
{
    mReconnectBudget = 0;
    releaseSocket();
    dbc_holds(!mWebSocket.data());
    mHeartbeatTimer.disconnect();
}

bool KyScriptWebSocket::open(QString url)
{
    if (mWebSocket)
        return false;
    mReconnectBudget = mReconnectLimit;
    mURL = url;
    if (!KyScriptOpenFiles::areLeft()) {
        onWebSocketError(QAbstractSocket::SocketResourceError);
        return false;
    }
    return connect(new QWebSocket(QString(), QWebSocketProtocol::Version13));
}

QString KyScriptWebSocket::getURL() const
{
    return mURL;
}

void KyScriptWebSocket::setURL(const QString& inUrl)
{
    mURL = inUrl;
}

bool KyScriptWebSocket::isConnected() const
{
    return mWebSocket && mWebSocket->state() == QAbstractSocket::ConnectedState;
}

void KyScriptWebSocket::sendText(QString text)
{
    if (!mWebSocket || !mWebSocket->isValid())
        return;
    const qint64 sent = mWebSocket->sendTextMessage(text);
    if (mLogLevel > 0)
        getTheLogInstance().printf("WebSocket: sent %lld bytes on to %s\n %s", static_cast<long long>(sent),
                                   mURL.toLatin1().constData(), text.toLatin1().constData());
}

void KyScriptWebSocket::setIgnoreSslErrors()
{
    if (!mWebSocket)
        return;
    mIgnoresSslErrors = true;
    mWebSocket->ignoreSslErrors();
}

void KyScriptWebSocket::setLogLevel(int level)
{
    mLogLevel = level;
}

void KyScriptWebSocket::setHeartbeatInterval(int interval)
{
    mHeartbeatInterval = interval;
    if (interval >= 0)
        mHeartbeatTimer.setInterval(interval);
}

bool KyScriptWebSocket::connect(QWebSocket* socket)
{
    if (!socket)
        return false;
    if (socket != mWebSocket.data())
        wire(socket);
    if (socket->state() == QAbstractSocket::ConnectedState)
        return true;
    return waitForConnection(socket);
}

void KyScriptWebSocket::wire(QWebSocket* socket)
{
    releaseSocket();
    mWebSocket.reset(socket);
    mIsEstablished = socket->state() == QAbstractSocket::ConnectedState;

    QObject::connect(socket, &QWebSocket::connected, this, [this] {
        mIsEstablished = true;
        onConnected();
    });
    QObject::connect(socket, &QWebSocket::disconnected, this, &KyScriptWebSocket::takeDisconnection);
    QObject::connect(socket, &QWebSocket::textMessageReceived, this, &KyScriptWebSocket::takeMessage);
    QObject::connect(socket, &QWebSocket::sslErrors, this, [this](const QList<QSslError>& inErrors) {
        onSslErrors(QVariant::fromValue(inErrors));
    });
    QObject::connect(socket, ErrorSignal, this, &KyScriptWebSocket::onWebSocketError);
    QObject::connect(socket, &QWebSocket::pong, this, [this] { mPongPending = false; });
    QObject::connect(&mHeartbeatTimer, &QTimer::timeout, this, &KyScriptWebSocket::onHeartbeatTimeout,
                     Qt::UniqueConnection);

    mHeartbeatTimer.setSingleShot(true);
    mHeartbeatTimer.setInterval(mHeartbeatInterval);
    if (const auto proxy = KyScriptProxy::ofClient("WebSocket: "))
        socket->setProxy(*proxy);
}

void KyScriptWebSocket::takeDisconnection()
{
    if (std::exchange(mIsEstablished, false))
        QMetaObject::invokeMethod(this, &KyScriptWebSocket::onDisconnected, Qt::QueuedConnection);
}

void KyScriptWebSocket::takeMessage(const QString& inMessage)
{
    mMessages.append(inMessage);
    if (mMessages.size() == 1)
        QMetaObject::invokeMethod(this, &KyScriptWebSocket::deliverMessages, Qt::QueuedConnection);
}

/// A handler may wait, which leads here again, and may end this object.
void KyScriptWebSocket::deliverMessages()
{
    if (mIsDelivering)
        return;
    const QPointer<KyScriptWebSocket> self(this);
    mIsDelivering = true;
    while (self && !mMessages.isEmpty())
        onTextMessageReceived(mMessages.takeFirst());
    if (self)
        mIsDelivering = false;
}

/// A URL that can't be used is told before the loop runs. The other end may hang up without an error. Scripts
/// run in the loop and may end this object.
bool KyScriptWebSocket::waitForConnection(QWebSocket* socket)
{
    QEventLoop loop;
    QTimer limit;
    bool isOver = false;
    const auto end = [&] {
        isOver = true;
        loop.quit();
    };
    QObject::connect(socket, &QWebSocket::connected, &loop, end);
    QObject::connect(&limit, &QTimer::timeout, &loop, end);
    QObject::connect(socket, ErrorSignal, &loop, end);
    QObject::connect(socket, &QWebSocket::disconnected, &loop, end);
    QObject::connect(socket, &QObject::destroyed, &loop, end);

    const QPointer<QWebSocket> held(socket);
    socket->open(QUrl(mURL.simplified(), QUrl::TolerantMode));
    if (mIgnoresSslErrors)
        socket->ignoreSslErrors();
    limit.start(ConnectLimitMSecs);
    const KyScriptWait wait;
    if (!isOver && wait.mayBegin())
        loop.exec();
    return held && held->state() == QAbstractSocket::ConnectedState;
}

void KyScriptWebSocket::releaseSocket()
{
    if (!mWebSocket)
        return;
    mWebSocket->disconnect(this);
    mWebSocket.reset();
    if (std::exchange(mIsEstablished, false))
        endConnection();
}

void KyScriptWebSocket::reconnect()
{
    if (mReconnectBudget < 1)
        return;
    --mReconnectBudget;
    connect(mWebSocket.data());
}

void KyScriptWebSocket::sendHeartbeat()
{
    if (mHeartbeatInterval < 0 || !mWebSocket)
        return;
    mPongPending = true;
    mWebSocket->ping(QByteArray());
    mHeartbeatTimer.start();
}

void KyScriptWebSocket::onConnected()
{
    sendHeartbeat();
    getTheLogInstance().printf("WebSocket: Connected to %s", mURL.toLatin1().constData());
}

void KyScriptWebSocket::onDisconnected()
{
    endConnection();
    reconnect();
}

void KyScriptWebSocket::endConnection()
{
    mHeartbeatTimer.stop();
    getTheLogInstance().errorf("WebSocket: Diconnected from %s", mURL.toLatin1().constData());
}

void KyScriptWebSocket::onHeartbeatTimeout()
{
    if (!mPongPending) {
        sendHeartbeat();
        return;
    }
    getTheLogInstance().errorf(
        "WebSocket: Heartbeat timout of %d msec for %s reached, trying to reconnect ...", mHeartbeatInterval,
        mURL.toLatin1().constData());
    reconnect();
}

void KyScriptWebSocket::onTextMessageReceived(const QString& message)
{
    const QPointer<KyScriptWebSocket> self(this);
    Q_EMIT messageReceived(message);
    if (self && mLogLevel > 0)
        getTheLogInstance().printf("WebSocket: received message form %s\n %s", mURL.toLatin1().constData(),
                                   message.toLatin1().constData());
}

/// Whether they are ignored was decided before, by setIgnoreSslErrors().
void KyScriptWebSocket::onSslErrors(const QVariant&)
{
    getTheLogInstance().printf("WebSocket: received ssl error form %s", mURL.toLatin1().constData());
}

void KyScriptWebSocket::onWebSocketError(QAbstractSocket::SocketError error)
{
    getTheLogInstance().printf("WebSocket: received error code (%d) form %s", static_cast<int>(error),
                               mURL.toLatin1().constData());
}
