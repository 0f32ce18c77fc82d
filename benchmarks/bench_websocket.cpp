// Sockets of scripts, against Qt's bare socket class and, for orientation, node's ws; and the door of the
// server with few and many registered names. Both ends of a connection are on one thread, but for node's.

#include "RatioReport.h"

#include <kyscript/KyScriptEngine.h>

#include <benchmark/benchmark.h>

#include <QtCore/QEventLoop>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QStandardPaths>
#include <QtWebSockets/QWebSocket>
#include <QtWebSockets/QWebSocketServer>
#include <QtWidgets/QApplication>

#include <functional>
#include <memory>

namespace {

constexpr int Accepts = 60;

void add(const std::string& inName, std::function<void(benchmark::State&)> inBody)
{
    benchmark::RegisterBenchmark(inName.c_str(), [=](benchmark::State& state) { inBody(state); });
}

/// With a fixed number of connections: each takes one of the system's ports for a minute.
void addAccepts(const std::string& inName, std::function<void(benchmark::State&)> inBody)
{
    benchmark::RegisterBenchmark(inName.c_str(), [=](benchmark::State& state) {
        inBody(state);
    })->Iterations(Accepts);
}

/// Connects \a ioClient and waits until it has.
bool connects(QWebSocket& ioClient, const QUrl& inUrl)
{
    QEventLoop loop;
    QObject::connect(&ioClient, &QWebSocket::connected, &loop, &QEventLoop::quit);
    QObject::connect(&ioClient, &QWebSocket::disconnected, &loop, &QEventLoop::quit);
    ioClient.open(inUrl);
    loop.exec();
    return ioClient.state() == QAbstractSocket::ConnectedState;
}

/// A client of \a inUrl sends a text, gets it back, and so on.
void measureEcho(benchmark::State& state, const QUrl& inUrl, int inSize)
{
    QWebSocket client;
    if (!connects(client, inUrl)) {
        state.SkipWithError("no connection");
        return;
    }
    QEventLoop loop;
    qsizetype received = 0;
    QObject::connect(&client, &QWebSocket::textMessageReceived, [&](const QString& inText) {
        received = inText.size();
        loop.quit();
    });
    const QString text(inSize, QLatin1Char('x'));
    for (auto _ : state) {
        received = -1;
        client.sendTextMessage(text);
        loop.exec();
        if (received != inSize)
            state.SkipWithError("no echo");
    }
}

/// The server's socket has a handler in a script that sends back.
void measureScriptEcho(benchmark::State& state, int inSize)
{
    KyScriptEngine engine(nullptr, ScriptWebSocketServer);
    const QJSValue url = engine.evaluate(
        QStringLiteral("var socket = WebSocketServer.registerSocket('echo');"
                       "socket.messageReceived.connect(function(message) { socket.sendText(message); });"
                       "socket.getURL()"));
    measureEcho(state, QUrl(url.toString()), inSize);
}

/// Qt's server, and a bare socket that sends back in C++.
void measureBareEcho(benchmark::State& state, int inSize)
{
    QWebSocketServer server(QStringLiteral("bare"), QWebSocketServer::NonSecureMode);
    server.listen(QHostAddress::LocalHost);
    std::unique_ptr<QWebSocket> socket;
    QObject::connect(&server, &QWebSocketServer::newConnection, [&] {
        socket.reset(server.nextPendingConnection());
        QObject::connect(socket.get(), &QWebSocket::textMessageReceived, socket.get(),
                         [&](const QString& inText) { socket->sendTextMessage(inText); });
    });
    measureEcho(state, server.serverUrl(), inSize);
}

/// node's ws in a process of its own, which ends with this one. No URL where it is not installed.
class NodeEcho
{
public:
    NodeEcho()
    {
        const QString node = QStandardPaths::findExecutable(QStringLiteral("node"));
        if (node.isEmpty() || !QFile::exists(QStringLiteral(PEER_MODULES "/ws")))
            return;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("NODE_PATH"), QStringLiteral(PEER_MODULES));
        mProcess.setProcessEnvironment(environment);
        mProcess.start(node, {QStringLiteral(ECHO_SERVER)});
        if (mProcess.waitForReadyRead(30000))
            mUrl = QStringLiteral("ws://127.0.0.1:") + QString::fromUtf8(mProcess.readLine().trimmed());
    }
    ~NodeEcho()
    {
        mProcess.kill();
        mProcess.waitForFinished();
    }

    QUrl url() const { return mUrl; }

private:
    QProcess mProcess;
    QUrl mUrl;
};

void addEchoes(const QUrl& inNode)
{
    for (const auto& [name, size] :
         {std::pair("64 B", 64), std::pair("16 KiB", 16 << 10), std::pair("1 MiB", 1 << 20)})
    {
        const std::string subject = std::string("echo of ") + name;
        const int bytes = size;
        add(subject + "<=1.2", [=](benchmark::State& state) { measureScriptEcho(state, bytes); });
        add(subject + "/yardstick", [=](benchmark::State& state) { measureBareEcho(state, bytes); });
        if (inNode.isEmpty())
            continue;
        add(subject + ", against node's ws",
            [=](benchmark::State& state) { measureScriptEcho(state, bytes); });
        add(subject + ", against node's ws/yardstick",
            [=](benchmark::State& state) { measureEcho(state, inNode, bytes); });
    }
}

/// A client comes, is let in, and goes.
void measureAccepts(benchmark::State& state, const QUrl& inUrl)
{
    for (auto _ : state) {
        QWebSocket client;
        if (!connects(client, inUrl))
            state.SkipWithError("no connection");
        client.abort();
    }
}

/// The client of the last name, behind all others.
void measureScriptAccepts(benchmark::State& state, int inNames)
{
    KyScriptEngine engine(nullptr, ScriptWebSocketServer);
    const QJSValue url = engine.evaluate(
        QStringLiteral("var sockets = [];"
                       "for (var i = 0; i < %1; ++i)"
                       "    sockets.push(WebSocketServer.registerSocket('name' + (1000000 + i)));"
                       "sockets[sockets.length - 1].getURL()")
            .arg(inNames));
    measureAccepts(state, QUrl(url.toString()));
    if (!engine
             .evaluate(QStringLiteral("sockets[sockets.length - 1] === WebSocketServer.registerSocket("
                                      "'name' + (999999 + sockets.length))"))
             .toBool())
        state.SkipWithError("not the socket of that name");
}

void measureBareAccepts(benchmark::State& state)
{
    QWebSocketServer server(QStringLiteral("bare"), QWebSocketServer::NonSecureMode);
    server.listen(QHostAddress::LocalHost);
    std::unique_ptr<QWebSocket> socket;
    QObject::connect(&server, &QWebSocketServer::newConnection,
                     [&] { socket.reset(server.nextPendingConnection()); });
    measureAccepts(state, server.serverUrl());
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const NodeEcho node;
    addEchoes(node.url());
    for (const int names : {1, 100, 1000}) {
        const std::string subject = "accept with " + std::to_string(names) + " registered";
        addAccepts(subject, [=](benchmark::State& state) { measureScriptAccepts(state, names); });
        addAccepts(subject + "/yardstick", measureBareAccepts);
    }
    return runWithRatios(argc, argv);
}
