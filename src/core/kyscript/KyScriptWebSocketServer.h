#pragma once

#include <QtCore/QMap>
#include <QtCore/QObject>
#include <QtCore/QPointer>

#include <utility>

class KyScriptWebSocket;
class QSslCertificate;
class QSslKey;
class QWebSocketServer;

/// Lets local pages and programs reach a script: the globals `WebSocketServer`, and `WebSocketServerSSL` with
/// TLS.
///
/// The script registers a socket under a name of its own and passes the socket's URL on; a client that
/// connects to that URL is joined to the socket. The server listens on all interfaces at a port of the
/// system's choice, and the random path of the URL is its only secret: whoever knows it may connect. The
/// certificate of the secure one is made anew at each start, self-signed (X.509, RSA of 2048 bits), and never
/// stored.
///
/// The server starts with the first registration. Owned by the engine; sockets belong to the script. GUI
/// thread only.
class KyScriptWebSocketServer : public QObject
{
    Q_OBJECT

public:
    KyScriptWebSocketServer(QObject* parent, bool secure);
    ~KyScriptWebSocketServer() override;

    /// The KyScriptWebSocket of this name, made when there is none; any text is a name. It lives as long as
    /// the script refers to it, and its name and URL with it. When the server cannot listen the user is told,
    /// and a new socket has no URL, for good.
    Q_INVOKABLE QObject* registerSocket(QString socketName);

Q_SIGNALS:
    /// The server listens no longer.
    void closed();

private Q_SLOTS:
    /// Joins a client to the socket of its URL, in place of the client that the socket had; closes it (1000)
    /// when there is none.
    void onConnect();

private:
    /// In KyScriptWebSocketServerCertificate.cpp.
    static std::pair<QSslCertificate, QSslKey> generateSelfSignedCertificate();
    QString generateURL() const;

    void startServer();
    void makeServer();
    bool isAlive(KyScriptWebSocket* inSocket) const;
    void forgetSockets();

    /// By name; not owned.
    QMap<QString, QPointer<KyScriptWebSocket>> mSockets;
    QWebSocketServer* mServer = nullptr;
    const bool mSecure;
    /// So many names, and those without a socket are left out.
    qsizetype mForgetAt = 100;
};
