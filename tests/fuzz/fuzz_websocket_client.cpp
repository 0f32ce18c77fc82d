// Any bytes from a WebSocket server: behind a proper handshake, or, with an odd first byte, in place of it.

#include "FuzzWorld.h"

#include <support/RawWebSocket.h>

#include <utility>

namespace {

struct Scene
{
    Scene()
    {
        QObject::connect(&server, &RawWebSocketServer::peerReady, &server, [this] {
            server.last()->answersPings = false;
            server.last()->answersClose = false;
            server.last()->sendBytes(bytes);
            server.last()->socket()->disconnectFromHost();
        });
        FuzzWorld& world = FuzzWorld::instance();
        world.engine().globalObject().setProperty("url", server.url());
        world.run("var ws, length = 0;"
                  "function start() {"
                  "    ws = new WebSocket();"
                  "    ws.setLogLevel(1);"
                  "    ws.messageReceived.connect(function(message) { length += message.length; });"
                  "    ws.open(url);"
                  "}"
                  "function stop() { ws = null; collectGarbage(); }");
    }

    QByteArray bytes;
    RawWebSocketServer server;
};

Scene* sScene = nullptr;

} // namespace

extern "C" void fuzzFinish()
{
    delete std::exchange(sScene, nullptr);
    FuzzWorld::finish();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize)
{
    FuzzWorld& world = FuzzWorld::instance(); // before the server: sockets need the application
    if (!sScene)
        sScene = new Scene;
    if (inSize < 1)
        return 0;
    auto& server = sScene->server;
    server.handshake = inData[0] & 1 ? RawWebSocketServer::Silent : RawWebSocketServer::Whole;
    sScene->bytes = QByteArray(reinterpret_cast<const char*>(inData + 1), static_cast<qsizetype>(inSize - 1));
    world.run("start()");
    // The first connection, and the attempts to reconnect, which get the same.
    FuzzWorld::serveUntil(
        [&] { return server.peers.size() > 2 || !server.last() || !server.last()->isOpen(); });
    world.run("stop()");
    FuzzWorld::serveUntil([] { return true; });
    server.peers.clear();
    return 0;
}
