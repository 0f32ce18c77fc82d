// Any bytes from a client of the WebSocket server: as frames of one that has been joined, or, with an odd
// first byte, in place of its request.

#include "FuzzWorld.h"

#include <support/RawWebSocket.h>

namespace {

QUrl url()
{
    static const QUrl url(FuzzWorld::instance()
                              .run("var length = 0; var socket = WebSocketServer.registerSocket('fuzz');"
                                   "socket.setLogLevel(1);"
                                   "socket.messageReceived.connect(function(message) {"
                                   "    length += message.length;"
                                   "    socket.sendText(message.slice(0, 1000));"
                                   "}); socket.getURL()")
                              .toString());
    return url;
}

void giveAsStranger(const QByteArray& inBytes)
{
    QTcpSocket stranger;
    stranger.connectToHost("127.0.0.1", quint16(url().port()));
    FuzzWorld::serveUntil([&] { return stranger.state() == QAbstractSocket::ConnectedState; });
    stranger.write(inBytes);
    stranger.disconnectFromHost();
    // The server has seen all of it when it has closed its end, too.
    FuzzWorld::serveUntil([&] { return stranger.state() == QAbstractSocket::UnconnectedState; });
    for (int i = 0; i < 5; ++i)
        QCoreApplication::processEvents();
}

void giveAsClient(const QByteArray& inBytes)
{
    const auto client = RawWebSocket::client(url());
    FuzzWorld::serveUntil([&] { return client->hasHead(); });
    client->answersPings = false;
    client->sendBytes(inBytes);
    client->socket()->disconnectFromHost();
    FuzzWorld::serveUntil([] { return !FuzzWorld::instance().run("socket.isConnected()").toBool(); });
}

} // namespace

extern "C" void fuzzFinish()
{
    FuzzWorld::finish();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize)
{
    if (inSize < 1)
        return 0;
    const QByteArray bytes(reinterpret_cast<const char*>(inData + 1), static_cast<qsizetype>(inSize - 1));
    if (inData[0] & 1)
        giveAsStranger(bytes);
    else
        giveAsClient(bytes);
    return 0;
}
