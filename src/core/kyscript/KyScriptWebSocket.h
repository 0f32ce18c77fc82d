#pragma once

#include <QtCore/QObject>
#include <QtCore/QSharedPointer>
#include <QtCore/QStringList>
#include <QtCore/QTimer>
#include <QtCore/QVariant>
#include <QtNetwork/QAbstractSocket>

class QWebSocket;

/// One WebSocket (RFC 6455) for scripts: text messages, a heartbeat, and ten reconnections for the object's
/// whole life. `new WebSocket()`, or the result of `WebSocketServer.registerSocket`.
///
/// States: closed until open() or until a client of the server is joined to it; connecting, which blocks in a
/// nested event loop for 3 seconds at most; connected; unconnected with a socket, after a failed attempt or a
/// lost connection. A lost connection is reopened at once while the budget lasts. An object joined to a
/// client of the server has neither heartbeat nor budget.
///
/// What a handler may answer with a wait is told to it by the event loop, never from inside Qt's socket,
/// which does not survive that. Messages come one after the other: those that arrive while a handler waits
/// are told when it has returned.
///
/// Heartbeat: a ping goes out on connecting, and a further one when the interval is over and the pong has
/// come. An interval without a pong takes one from the budget and reopens a socket that is no longer
/// connected; on one that still counts as connected the heartbeat rests until the next connection.
///
/// Owner: the script. Failures are lines of the log. GUI thread only.
class KyScriptWebSocket : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE explicit KyScriptWebSocket(QObject* parent = nullptr);
    ~KyScriptWebSocket() override;

    /// Connects to \a url, white space around it left out, and waits for that 3 seconds at most; the
    /// application goes on meanwhile. True when the socket is connected. An object can be opened once: false
    /// at once on every later call, be it that the first one failed.
    Q_INVOKABLE bool open(QString url);

    /// The URL given to open(), or the one under which the server waits for the client; else empty.
    Q_INVOKABLE QString getURL() const;
    Q_INVOKABLE bool isConnected() const;

    /// Sends one text message. Without a connection it is lost.
    Q_INVOKABLE void sendText(QString text);

    /// Accepts any certificate at the next attempt to connect. Nothing before open().
    Q_INVOKABLE void setIgnoreSslErrors();

    /// Above 0 the texts of all messages are logged.
    Q_INVOKABLE void setLogLevel(int level);

    /// Milliseconds between heartbeats; below 0 there are none. It takes effect at once when it is not.
    Q_INVOKABLE void setHeartbeatInterval(int interval);

Q_SIGNALS:
    void messageReceived(QString message);

public Q_SLOTS:
    void onConnected();
    void onDisconnected();
    void onTextMessageReceived(const QString& message);
    /// The errors as a list of QSslError, which nobody looks at: scripts may pass anything.
    void onSslErrors(const QVariant& errors);
    void onWebSocketError(QAbstractSocket::SocketError error);
    void onHeartbeatTimeout();

private:
    friend class KyScriptWebSocketServer;

    /// Makes \a socket, which it owns from now on, the object's socket, and connects it to the URL unless it
    /// is connected already. False when it is null or the attempt failed.
    bool connect(QWebSocket* socket);
    void wire(QWebSocket* socket);
    void takeMessage(const QString& inMessage);
    void takeDisconnection();
    void deliverMessages();
    bool waitForConnection(QWebSocket* socket);
    void releaseSocket();
    void endConnection();
    void reconnect();
    void sendHeartbeat();
    void setURL(const QString& inUrl);

    int mHeartbeatInterval = 30000;
    QTimer mHeartbeatTimer;
    bool mPongPending = true;
    const int mReconnectLimit = 10;
    int mReconnectBudget = 0;
    QString mURL;
    int mLogLevel = 0;
    QSharedPointer<QWebSocket> mWebSocket;

    /// Qt tells of a disconnection after a failed attempt too. Only what was connected can be lost.
    bool mIsEstablished = false;
    /// Qt forgets it with each attempt.
    bool mIgnoresSslErrors = false;
    /// Received and not told yet.
    QStringList mMessages;
    bool mIsDelivering = false;
};
