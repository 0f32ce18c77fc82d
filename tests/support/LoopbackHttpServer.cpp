#include "LoopbackHttpServer.h"

#include <QTest>

namespace {

/// Takes a whole request off the front of \a ioBytes; false when there is none yet.
bool take(QByteArray& ioBytes, LoopbackHttpServer::Request& outRequest)
{
    const qsizetype headSize = ioBytes.indexOf("\r\n\r\n");
    if (headSize < 0)
        return false;
    QList<QByteArray> lines = ioBytes.left(headSize).split('\n');
    const QList<QByteArray> words = lines.takeFirst().trimmed().split(' ');
    LoopbackHttpServer::Request request;
    request.method = words.value(0);
    request.target = words.value(1);
    for (const QByteArray& line : lines) {
        const qsizetype colon = line.indexOf(':');
        request.headers.append({line.left(colon), line.mid(colon + 1).trimmed()});
    }
    const qsizetype bodySize = request.header("Content-Length").toLongLong();
    if (ioBytes.size() < headSize + 4 + bodySize)
        return false;
    request.body = ioBytes.mid(headSize + 4, bodySize);
    ioBytes.remove(0, headSize + 4 + bodySize);
    outRequest = request;
    return true;
}

} // namespace

QByteArray LoopbackHttpServer::Request::header(const QByteArray& inName) const
{
    for (const auto& [name, value] : headers) {
        if (name.compare(inName, Qt::CaseInsensitive) == 0)
            return value.isNull() ? QByteArray("") : value;
    }
    return {};
}

int LoopbackHttpServer::Request::count(const QByteArray& inName) const
{
    return int(std::count_if(headers.begin(), headers.end(), [&](const auto& header) {
        return header.first.compare(inName, Qt::CaseInsensitive) == 0;
    }));
}

LoopbackHttpServer::LoopbackHttpServer()
{
    connect(&mServer, &QTcpServer::newConnection, this, &LoopbackHttpServer::accept);
    if (!mServer.listen(QHostAddress::LocalHost))
        qFatal("no port on the loopback interface: %s", qPrintable(mServer.errorString()));
}

LoopbackHttpServer::~LoopbackHttpServer()
{
    for (QTcpSocket* socket : mReceived.keys())
        socket->disconnect(this);
}

QString LoopbackHttpServer::url(const QString& inPath) const
{
    return QStringLiteral("http://127.0.0.1:%1%2").arg(QString::number(port()), inPath);
}

void LoopbackHttpServer::answer(const QByteArray& inPath, const QByteArray& inBytes)
{
    handle(inPath, [inBytes](const Request&, QTcpSocket& ioSocket) { ioSocket.write(inBytes); });
}

void LoopbackHttpServer::handle(const QByteArray& inPath, Handler inHandler)
{
    mHandlers[inPath] = std::move(inHandler);
}

void LoopbackHttpServer::dropConnections()
{
    for (QTcpSocket* socket : mReceived.keys())
        socket->abort();
}

QByteArray LoopbackHttpServer::reply(const QByteArray& inStatus, const QByteArray& inBody,
                                     const QByteArray& inHeaders)
{
    return "HTTP/1.1 " + inStatus + "\r\nContent-Length: " + QByteArray::number(inBody.size()) + "\r\n" +
           inHeaders + "\r\n" + inBody;
}

void LoopbackHttpServer::accept()
{
    while (QTcpSocket* socket = mServer.nextPendingConnection()) {
        ++connections;
        mReceived.insert(socket, {});
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            mReceived.remove(socket);
            socket->deleteLater();
        });
    }
}

void LoopbackHttpServer::read(QTcpSocket* inSocket)
{
    mReceived[inSocket] += inSocket->readAll();
    Request request;
    while (mReceived.contains(inSocket) && take(mReceived[inSocket], request)) {
        requests.append(request);
        if (const Handler handler = mHandlers.value(request.target))
            handler(request, *inSocket);
    }
}
