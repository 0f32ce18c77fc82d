// Many at once at the door of the WebSocket server: nothing grows, and those who are in are served.

#include <support/ContractWatch.h>
#include <support/FewOpenFiles.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/RawWebSocket.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptWebSocketServer.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QSslConfiguration>
#include <QTest>
#include <QWebSocket>
#include <QWebSocketServer>

#include <sys/resource.h>

class tst_websocket_crowd : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void tenThousandAreRefused();
    void aThousandAreHeld();
    void silentOnesAreEnded_data();
    void silentOnesAreEnded();
    void everNewNamesDoNotGrow();
    void doorOpensAgainAfterFilesRanOut();

private:
    QString text(const QString& inSource);
    QWebSocketServer* qtServer(const char* inName = "WebSocketServer") const;
    /// Whether the joined client is answered by the script's handler.
    bool isServed(RawWebSocket& ioClient);

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<KyScriptEngine> mEngine;
};

namespace {

/// Memory in use by the process, in MB.
double usedMemory()
{
    QFile file("/proc/self/statm");
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toDouble() * 4096 / 1e6;
}

/// A decent client, which trusts anybody.
std::unique_ptr<QWebSocket> client(const QUrl& inUrl)
{
    auto socket = std::make_unique<QWebSocket>();
    QSslConfiguration configuration;
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    socket->setSslConfiguration(configuration);
    socket->open(inUrl);
    return socket;
}

qsizetype openFiles()
{
    return QDir("/proc/self/fd").entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System).size();
}

} // namespace

void tst_websocket_crowd::initTestCase()
{
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = std::max<rlim_t>(limit.rlim_cur, std::min<rlim_t>(limit.rlim_max, 4096));
    setrlimit(RLIMIT_NOFILE, &limit);
}

void tst_websocket_crowd::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptWebSocketServer);
    text("function echo(name, server) {"
         "    var socket = server.registerSocket(name);"
         "    socket.messageReceived.connect(function(message) { socket.sendText('got ' + message); });"
         "    return socket;"
         "}");
}

void tst_websocket_crowd::cleanup()
{
    mEngine.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    mContracts.reset();
    mPlatform.reset();
}

QString tst_websocket_crowd::text(const QString& inSource)
{
    const QJSValue value = mEngine->QJSEngine::evaluate(inSource, "test.js");
    return value.isError() ? "ERROR " + value.toString() : value.toString();
}

QWebSocketServer* tst_websocket_crowd::qtServer(const char* inName) const
{
    return mEngine->globalObject().property(inName).toQObject()->findChild<QWebSocketServer*>();
}

bool tst_websocket_crowd::isServed(RawWebSocket& ioClient)
{
    ioClient.frames.clear();
    ioClient.send(RawWebSocket::Text, "ping");
    return QTest::qWaitFor(
        [&] { return !ioClient.frames.isEmpty() && ioClient.frames.at(0).payload == "got ping"; }, 20000);
}

void tst_websocket_crowd::tenThousandAreRefused()
{
    const QUrl url(text("var socket = echo('in', WebSocketServer); socket.getURL()"));
    const auto inside = RawWebSocket::client(url);
    QTRY_VERIFY(inside->hasHead());
    QUrl wrong = url;
    wrong.setPath("/00000000-0000-4000-8000-000000000000");

    double memoryBefore = 0;
    qsizetype objectsBefore = 0, filesBefore = 0;
    for (int round = 0; round < 250; ++round) {
        std::vector<std::unique_ptr<RawWebSocket>> crowd;
        for (int i = 0; i < 40; ++i) // fewer than the system lets wait at the port
            crowd.push_back(RawWebSocket::client(wrong));
        QVERIFY(isServed(*inside));
        const bool allRefused = QTest::qWaitFor(
            [&] {
                return std::all_of(crowd.begin(), crowd.end(), [](const auto& one) {
                    return one->closeCode() == 1000 && !one->isOpen();
                });
            },
            60000);
        QVERIFY2(allRefused, qPrintable(QString::number(round)));
        crowd.clear();
        if (round == 50) { // by then the allocator has what it needs
            QTRY_COMPARE(openFiles() > 0, true);
            memoryBefore = usedMemory();
            objectsBefore = qtServer()->findChildren<QObject*>().size();
            filesBefore = openFiles();
        }
    }
    QVERIFY(isServed(*inside));
    QTRY_VERIFY(qtServer()->findChildren<QObject*>().size() <= objectsBefore);
    QTRY_VERIFY(openFiles() <= filesBefore);
    const double grown = usedMemory() - memoryBefore;
    QVERIFY2(grown < 8, qPrintable(QString("%1 MB").arg(grown)));
}

void tst_websocket_crowd::aThousandAreHeld()
{
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    if (limit.rlim_cur < 2200)
        QSKIP("the process may not open 2200 files");

    const int count = 1000;
    text(QString(
             "var sockets = []; for (var i = 0; i < %1; ++i) sockets.push(echo('name' + i, WebSocketServer))")
             .arg(count));
    std::vector<std::unique_ptr<RawWebSocket>> crowd;
    for (int i = 0; i < count; ++i) {
        crowd.push_back(RawWebSocket::client(QUrl(text(QString("sockets[%1].getURL()").arg(i)))));
        if (i % 40 == 39)
            QTRY_VERIFY_WITH_TIMEOUT(crowd.back()->hasHead(), 30000);
    }
    QTRY_COMPARE_WITH_TIMEOUT(
        text("sockets.filter(function(socket) { return socket.isConnected(); }).length"),
        QString::number(count), 60000);
    QVERIFY(isServed(*crowd.front()));
    QVERIFY(isServed(*crowd.back()));
    // One more is refused, and one in the middle served, with all of them there.
    const auto stranger = RawWebSocket::client(QUrl(text("sockets[0].getURL()") + "x"));
    QTRY_COMPARE(stranger->closeCode(), 1000);

    for (const auto& one : crowd) {
        one->frames.clear();
        one->send(RawWebSocket::Text, "all");
    }
    const bool allServed = QTest::qWaitFor(
        [&] {
            return std::all_of(crowd.begin(), crowd.end(), [](const auto& one) {
                return one->frames.size() == 1 && one->frames.at(0).payload == "got all";
            });
        },
        60000);
    QVERIFY(allServed);
    const qsizetype filesWithAll = openFiles();
    crowd.clear();
    QTRY_COMPARE_WITH_TIMEOUT(
        text("sockets.filter(function(socket) { return socket.isConnected(); }).length"), QString("0"),
        60000);
    QTRY_VERIFY(openFiles() <= filesWithAll - 2 * count);
}

void tst_websocket_crowd::silentOnesAreEnded_data()
{
    QTest::addColumn<QString>("server");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("plain") << "WebSocketServer" << QByteArray();
    QTest::newRow("half a request") << "WebSocketServer" << QByteArray("GET / HTTP/1.1\r\nHost");
    QTest::newRow("TLS") << "WebSocketServerSSL" << QByteArray();
}

/// Each has a few seconds to say what it wants.
void tst_websocket_crowd::silentOnesAreEnded()
{
    QFETCH(QString, server);
    QFETCH(QByteArray, bytes);
    const QUrl url(text(QString("var socket = echo('in', %1); socket.getURL()").arg(server)));
    std::vector<std::unique_ptr<QTcpSocket>> silent;
    for (int i = 0; i < 300; ++i) {
        silent.push_back(std::make_unique<QTcpSocket>());
        silent.back()->connectToHost("127.0.0.1", quint16(url.port()));
        silent.back()->write(bytes);
        if (i % 25 == 24)
            QTRY_COMPARE_WITH_TIMEOUT(silent.back()->state(), QAbstractSocket::ConnectedState, 30000);
    }
    // Meanwhile the door is open for others.
    const auto page = client(url);
    QElapsedTimer timer;
    timer.start();
    QTRY_COMPARE_WITH_TIMEOUT(text("socket.isConnected()"), QString("true"), 30000);
    QVERIFY2(timer.elapsed() < 8000, qPrintable(QString::number(timer.elapsed())));
    const auto count = [&] {
        return std::count_if(silent.begin(), silent.end(),
                             [](const auto& one) { return one->state() == QAbstractSocket::ConnectedState; });
    };
    QVERIFY(count() > 0);
    QTRY_COMPARE_WITH_TIMEOUT(count(), 0, 40000);
}

void tst_websocket_crowd::everNewNamesDoNotGrow()
{
    text("var long = 'x'.repeat(1000); // 2 KB of each name that is kept\n"
         "for (var i = 0; i < 20000; ++i) WebSocketServer.registerSocket('warm' + long + i); "
         "collectGarbage()");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const double before = usedMemory();
    for (int i = 0; i < 20; ++i) {
        text(QString("for (var i = 0; i < 1000; ++i) WebSocketServer.registerSocket('%1:' + long + i); "
                     "collectGarbage()")
                 .arg(i));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    const double grown = usedMemory() - before;
    QVERIFY2(grown < 20, qPrintable(QString("%1 MB").arg(grown)));
}

/// A client for whom the process had no file left waits at the port until there is one.
void tst_websocket_crowd::doorOpensAgainAfterFilesRanOut()
{
    const QUrl url(text("var socket = echo('in', WebSocketServer); socket.getURL()"));
    QSignalSpy refused(qtServer(), &QWebSocketServer::acceptError);
    const auto waiting = RawWebSocket::client(url);
    {
        const FewOpenFiles none(FewOpenFiles::next());
        QTRY_VERIFY(refused.size() >= 2);
        QVERIFY(!waiting->hasHead());
    }
    QTRY_VERIFY_WITH_TIMEOUT(waiting->hasHead(), 30000);
    QVERIFY(isServed(*waiting));
    const auto next = RawWebSocket::client(url);
    QTRY_VERIFY(next->hasHead());
}

KY_TEST_MAIN(tst_websocket_crowd)
#include "tst_websocket_crowd.moc"
