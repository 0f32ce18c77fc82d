#include "KyScriptWebSocketServer.h"

#include "KyScriptWebSocket.h"

#include <jxbase/JxMessageBox.h>
#include <rnlib/RnLogFile.h>

#include <QtCore/QTimer>
#include <QtCore/QUuid>
#include <QtNetwork/QSslCertificate>
#include <QtNetwork/QSslConfiguration>
#include <QtNetwork/QSslKey>
#include <QtQml/QJSEngine>
#include <QtWebSockets/QWebSocket>
#include <QtWebSockets/QWebSocketServer>

namespace {

/// So many clients may be in the middle of their handshake. With TLS, Qt lets nobody in beyond that until one
/// of them has finished or run out of time.
constexpr int PendingClients = 1000;

/// Qt lets nobody in any more once the process had no file left for a client.
constexpr int AcceptAgainMSecs = 500;

} // namespace

KyScriptWebSocketServer::KyScriptWebSocketServer(QObject* parent, bool secure)
    : QObject(parent)
    , mSecure(secure)
{}

KyScriptWebSocketServer::~KyScriptWebSocketServer()
{
    if (!mServer)
        return;
    mServer->close();
    for (const auto& socket : std::as_const(mSockets)) {
        if (socket)
            socket->deleteLater();
    }
    mSockets.clear();
    delete mServer;
}

QObject* KyScriptWebSocketServer::registerSocket(QString socketName)
{
    if (!mServer)
        startServer();
    if (KyScriptWebSocket* known = mSockets.value(socketName); isAlive(known))
        return known;

    auto* socket = new KyScriptWebSocket;
    socket->setURL(generateURL());
    forgetSockets();
    mSockets.insert(socketName, socket);
    return socket;
}

/// Names whose sockets have gone would pile up where a script uses ever new ones.
void KyScriptWebSocketServer::forgetSockets()
{
    if (mSockets.size() < mForgetAt)
        return;
    mSockets.removeIf([](const auto& entry) { return entry.value().isNull(); });
    mForgetAt = 2 * mSockets.size() + 100;
}

/// One that the garbage collector has taken waits for its deletion, and scripts can't have it any more.
bool KyScriptWebSocketServer::isAlive(KyScriptWebSocket* inSocket) const
{
    QJSEngine* engine = qjsEngine(this);
    return inSocket && (!engine || !engine->newQObject(inSocket).isNull());
}

void KyScriptWebSocketServer::startServer()
{
    makeServer();
    mServer->setMaxPendingConnections(PendingClients);
    if (mServer->listen(QHostAddress(QHostAddress::Any), 0)) {
        getTheLogInstance().printf("%s is listening on port %hu",
                                   mServer->serverName().toLatin1().constData(), mServer->serverPort());
        connect(mServer, &QWebSocketServer::newConnection, this, &KyScriptWebSocketServer::onConnect);
        connect(mServer, &QWebSocketServer::closed, this, &KyScriptWebSocketServer::closed);
        connect(mServer, &QWebSocketServer::acceptError, mServer, [server = mServer] {
            QTimer::singleShot(AcceptAgainMSecs, server, [server] {
                if (server->isListening())
                    server->resumeAccepting();
            });
        });
        return;
    }
    delete mServer;
    mServer = nullptr;
    JxMessageBox::warning(QStringLiteral("WebSocketServer could not listen"), QMessageBox::Ok,
                          QMessageBox::NoButton, JxMessageBox::InformativeText());
}

void KyScriptWebSocketServer::makeServer()
{
    if (!mSecure) {
        mServer = new QWebSocketServer(QStringLiteral("Orvane Websocket Server"),
                                       QWebSocketServer::NonSecureMode, this);
        return;
    }
    mServer = new QWebSocketServer(QStringLiteral("Orvane SSL Websocket Server"),
                                   QWebSocketServer::SecureMode, this);
    const auto [certificate, key] = generateSelfSignedCertificate();
    QSslConfiguration configuration;
    configuration.setLocalCertificate(certificate);
    configuration.setPrivateKey(key);
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    configuration.setProtocol(QSsl::TlsV1_2OrLater);
    mServer->setSslConfiguration(configuration);
}

QString KyScriptWebSocketServer::generateURL() const
{
    if (!mServer)
        return QString();
    const QString braced = QUuid::createUuid().toString();
    return mServer->serverUrl().toString() + QLatin1Char('/') + braced.mid(1, braced.size() - 2);
}

void KyScriptWebSocketServer::onConnect()
{
    QWebSocket* client = mServer->nextPendingConnection();
    if (!client)
        return;
    const QString url = client->requestUrl().toString();
    for (const auto& socket : std::as_const(mSockets)) {
        if (socket && socket->getURL() == url) {
            socket->connect(client);
            return;
        }
    }
    client->close(QWebSocketProtocol::CloseCodeNormal);
    client->deleteLater();
}
