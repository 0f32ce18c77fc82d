#include "RawWebSocket.h"

#include <QCryptographicHash>
#include <QTest>
#include <QtEndian>

#include <utility>

namespace {

QByteArray acceptKeyFor(const QByteArray& inHead)
{
    QByteArray key;
    for (const QByteArray& line : inHead.split('\n')) {
        if (line.toLower().startsWith("sec-websocket-key:"))
            key = line.mid(line.indexOf(':') + 1).trimmed();
    }
    return QCryptographicHash::hash(key + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11", QCryptographicHash::Sha1)
        .toBase64();
}

template <class T>
QByteArray bigEndian(T inValue)
{
    QByteArray bytes(sizeof(T), '\0');
    qToBigEndian(inValue, bytes.data());
    return bytes;
}

constexpr char MaskKey[4] = {0, 1, 0, 1};

QByteArray masked(QByteArray inPayload)
{
    for (qsizetype i = 0; i < inPayload.size(); ++i)
        inPayload[i] = char(inPayload.at(i) ^ MaskKey[i % 4]);
    return inPayload;
}

} // namespace

RawWebSocket::RawWebSocket(QTcpSocket* inSocket, bool inIsClient)
    : mSocket(inSocket)
    , mIsClient(inIsClient)
{
    mSocket->setParent(nullptr);
    connect(mSocket.get(), &QTcpSocket::readyRead, this, &RawWebSocket::read);
}

std::unique_ptr<RawWebSocket> RawWebSocket::client(const QUrl& inUrl)
{
    auto peer = std::make_unique<RawWebSocket>(new QTcpSocket, true);
    const QByteArray handshake =
        "GET " + inUrl.path().toLatin1() +
        (inUrl.hasQuery() ? "?" + inUrl.query().toLatin1() : QByteArray()) +
        " HTTP/1.1\r\nHost: " + inUrl.host().toLatin1() + ":" + QByteArray::number(inUrl.port()) +
        "\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
        "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n\r\n";
    connect(peer->socket(), &QTcpSocket::connected, peer.get(),
            [raw = peer.get(), handshake] { raw->sendBytes(handshake); });
    peer->socket()->connectToHost(inUrl.host(), quint16(inUrl.port()));
    return peer;
}

QByteArray RawWebSocket::frame(int inOpCode, const QByteArray& inPayload, bool inIsLast, bool inMasked)
{
    const char maskBit = inMasked ? char(0x80) : char(0);
    QByteArray bytes(1, char((inIsLast ? 0x80 : 0) | inOpCode));
    if (inPayload.size() < 126)
        bytes += char(maskBit | char(inPayload.size()));
    else if (inPayload.size() < 65536)
        bytes += char(maskBit | 126) + bigEndian(quint16(inPayload.size()));
    else
        bytes += char(maskBit | 127) + bigEndian(quint64(inPayload.size()));
    if (!inMasked)
        return bytes + inPayload;
    return bytes + QByteArray(MaskKey, 4) + masked(inPayload);
}

QByteArray RawWebSocket::closePayload(int inCode, const QByteArray& inReason)
{
    return bigEndian(quint16(inCode)) + inReason;
}

void RawWebSocket::send(int inOpCode, const QByteArray& inPayload, bool inIsLast)
{
    sendBytes(frame(inOpCode, inPayload, inIsLast, mIsClient));
}

void RawWebSocket::sendBytes(const QByteArray& inBytes)
{
    if (!isOpen())
        return;
    mSocket->write(inBytes);
    mSocket->flush();
}

QList<RawWebSocket::Frame> RawWebSocket::of(int inOpCode) const
{
    QList<Frame> found;
    std::copy_if(frames.begin(), frames.end(), std::back_inserter(found),
                 [&](const Frame& inFrame) { return inFrame.opCode == inOpCode; });
    return found;
}

int RawWebSocket::closeCode() const
{
    for (const Frame& frame : frames) {
        if (frame.opCode == Close)
            return frame.payload.size() < 2 ? 1005 : qFromBigEndian<quint16>(frame.payload.constData());
    }
    return 0;
}

void RawWebSocket::read()
{
    mReceived += mSocket->readAll();
    if (!mHasHead) {
        const qsizetype size = mReceived.indexOf("\r\n\r\n");
        if (size < 0)
            return;
        mHead = mReceived.left(size);
        mReceived.remove(0, size + 4);
        mHasHead = true;
        Q_EMIT headReceived();
    }
    while (takeFrame()) {
    }
}

bool RawWebSocket::takeFrame()
{
    if (mReceived.size() < 2)
        return false;
    qsizetype position = 2;
    const bool isMasked = mReceived.at(1) & 0x80;
    quint64 size = quint8(mReceived.at(1)) & 0x7f;
    const int lengthBytes = size == 126 ? 2 : size == 127 ? 8 : 0;
    if (mReceived.size() < position + lengthBytes + (isMasked ? 4 : 0))
        return false;
    if (lengthBytes == 2)
        size = qFromBigEndian<quint16>(mReceived.constData() + position);
    else if (lengthBytes == 8)
        size = qFromBigEndian<quint64>(mReceived.constData() + position);
    position += lengthBytes;
    const QByteArray key = mReceived.mid(position, isMasked ? 4 : 0);
    position += key.size();
    if (quint64(mReceived.size() - position) < size)
        return false;

    Frame frame{mReceived.at(0) & 0x0f, bool(mReceived.at(0) & 0x80),
                mReceived.mid(position, qsizetype(size))};
    mReceived.remove(0, position + qsizetype(size));
    for (qsizetype i = 0; isMasked && i < frame.payload.size(); ++i)
        frame.payload[i] = char(frame.payload.at(i) ^ key.at(i % 4));
    frames.append(frame);
    if (frame.opCode == Ping && answersPings)
        send(Pong, frame.payload);
    if (frame.opCode == Close && answersClose)
        send(Close, frame.payload);
    Q_EMIT frameReceived();
    return true;
}

RawWebSocketServer::RawWebSocketServer()
{
    connect(&mServer, &QTcpServer::newConnection, this, &RawWebSocketServer::accept);
    listen();
}

void RawWebSocketServer::listen()
{
    if (!mServer.listen(QHostAddress::LocalHost, mPort))
        qFatal("no port on the loopback interface: %s", qPrintable(mServer.errorString()));
    mPort = mServer.serverPort();
}

QString RawWebSocketServer::url(const QString& inPath) const
{
    return QStringLiteral("ws://127.0.0.1:%1%2").arg(QString::number(mPort), inPath);
}

void RawWebSocketServer::accept()
{
    while (QTcpSocket* socket = mServer.nextPendingConnection()) {
        const auto peer = std::make_shared<RawWebSocket>(socket, false);
        peer->answersPings = answersPings;
        peers.append(peer);
        connect(peer.get(), &RawWebSocket::headReceived, this, [this, raw = peer.get()] { answer(*raw); });
    }
}

void RawWebSocketServer::answer(RawWebSocket& ioPeer)
{
    const QByteArray key = handshake == WrongKey ? QByteArray("x") : acceptKeyFor(ioPeer.head());
    const QByteArray whole =
        "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
        "Sec-WebSocket-Accept: " +
        key + "\r\n\r\n";
    switch (handshake) {
    case Whole:
    case WrongKey:
        ioPeer.sendBytes(whole);
        break;
    case Half:
        ioPeer.sendBytes(whole.left(whole.size() / 2));
        break;
    case Silent:
        break;
    case Forbidden:
        ioPeer.sendBytes("HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\n\r\n");
        break;
    case Hangup:
        ioPeer.socket()->close();
        break;
    }
    Q_EMIT peerReady();
}
