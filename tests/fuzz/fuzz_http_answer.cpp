// Any bytes as the answer of an HTTP server. Every host is behind the same server, as the proxy: nothing
// leaves the computer, wherever an answer redirects to.

#include "FuzzWorld.h"

#include <support/LoopbackHttpServer.h>

#include <utility>

namespace {

struct Scene
{
    Scene()
    {
        QObject::connect(&server, &QTcpServer::newConnection, [this] {
            while (QTcpSocket* socket = server.nextPendingConnection()) {
                QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
                QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                    if (!socket->readAll().contains("\r\n\r\n"))
                        return;
                    socket->write(answer);
                    socket->disconnectFromHost();
                });
            }
        });
        server.listen(QHostAddress::LocalHost);
        FuzzWorld& world = FuzzWorld::instance();
        world.facts.proxyHost = "127.0.0.1";
        world.facts.proxyPort = server.serverPort();
        world.run(
            "var count = 0;"
            "function ask() {"
            "    var request = new HttpRequest();"
            "    request.response.connect(function(message, header, status) {"
            "        ++count;"
            "        var length = new Uint8Array(message).length + String(message).length;"
            "        Object.keys(header).forEach(function(name) { length += header[name].byteLength; });"
            "        try { JSON.parse(message); } catch (e) { length += String(e).length; }"
            "        length += String(status).length;"
            "    });"
            "    request.get('http://fuzz.invalid/');"
            "    request.waitForFinished(20000);"
            "}");
    }

    QByteArray answer;
    QTcpServer server;
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
    sScene->answer = QByteArray(reinterpret_cast<const char*>(inData), static_cast<qsizetype>(inSize));
    if (world.run("count = 0; ask(); collectGarbage(); count").toInt() != 1)
        qFatal("not one answer for one request");
    FuzzWorld::serveUntil([] { return true; });
    return 0;
}
