#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

#include <memory>

/// One end of a WebSocket, frame by frame and without any manners of its own: it can send what no decent
/// program would. Client or server; the sockets run on the thread of the test.
class RawWebSocket final : public QObject
{
    Q_OBJECT

public:
    enum OpCode
    {
        Continuation = 0,
        Text = 1,
        Binary = 2,
        Close = 8,
        Ping = 9,
        Pong = 10
    };

    struct Frame
    {
        int opCode = 0;
        bool isLast = true;
        QByteArray payload;
    };

    /// Speaks over \a inSocket, which it owns. A client masks its frames.
    RawWebSocket(QTcpSocket* inSocket, bool inIsClient);

    /// A client at \a inUrl, whose handshake is sent once it has connected.
    static std::unique_ptr<RawWebSocket> client(const QUrl& inUrl);

    /// The bytes of one frame. \a inMasked masks with a key of zeros and ones.
    static QByteArray frame(int inOpCode, const QByteArray& inPayload, bool inIsLast = true,
                            bool inMasked = false);
    static QByteArray closePayload(int inCode, const QByteArray& inReason = QByteArray());

    void send(int inOpCode, const QByteArray& inPayload, bool inIsLast = true);
    void sendBytes(const QByteArray& inBytes);

    /// What the other end sent before the first frame.
    QByteArray head() const { return mHead; }
    /// Whether the whole head has come.
    bool hasHead() const { return mHasHead; }
    /// Those of an operation that have come, the oldest first.
    QList<Frame> of(int inOpCode) const;
    /// The code of the first close frame; 0 without one, 1005 for one without a code.
    int closeCode() const;
    bool isOpen() const { return mSocket && mSocket->state() == QAbstractSocket::ConnectedState; }
    QTcpSocket* socket() const { return mSocket.get(); }

    QList<Frame> frames;
    bool answersPings = true;
    bool answersClose = true;

Q_SIGNALS:
    void headReceived();
    void frameReceived();

private:
    void read();
    bool takeFrame();

    const std::unique_ptr<QTcpSocket> mSocket;
    const bool mIsClient;
    QByteArray mReceived;
    QByteArray mHead;
    bool mHasHead = false;
};

/// Accepts WebSockets on a port of the loopback interface and answers their handshake as it is told to.
class RawWebSocketServer final : public QObject
{
    Q_OBJECT

public:
    enum Handshake
    {
        Whole,
        Half,      ///< The first half of the answer, then silence.
        Silent,    ///< No answer at all.
        Forbidden, ///< HTTP 403.
        WrongKey,  ///< An answer to another handshake.
        Hangup     ///< The connection is closed in place of an answer.
    };

    RawWebSocketServer();

    QString url(const QString& inPath = QStringLiteral("/")) const;
    /// No further connection is accepted: the port refuses. listen() opens it again.
    void refuse() { mServer.close(); }
    void listen();

    RawWebSocket* last() const { return peers.isEmpty() ? nullptr : peers.constLast().get(); }

    Handshake handshake = Whole;
    bool answersPings = true;
    /// All who ever connected, the oldest first.
    QList<std::shared_ptr<RawWebSocket>> peers;

Q_SIGNALS:
    /// The handshake of a peer has been answered.
    void peerReady();

private:
    void accept();
    void answer(RawWebSocket& ioPeer);

    QTcpServer mServer;
    quint16 mPort = 0;
};
