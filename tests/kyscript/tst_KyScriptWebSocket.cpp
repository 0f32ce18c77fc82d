#include <support/ContractWatch.h>
#include <support/FewOpenFiles.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>
#include <support/LoopbackHttpServer.h>
#include <support/RawWebSocket.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptWebSocket.h>

#include <QElapsedTimer>
#include <QEventLoop>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

class tst_KyScriptWebSocket : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void scriptsConstructIt();
    void freshObject();
    void slotsOfAFreshObjectAreHarmless();
    void sslErrorsMayBeAnything();

    // open
    void openConnects();
    void openDropsBlanks_data();
    void openDropsBlanks();
    void openAgainIsFalse();
    void failedOpen_data();
    void failedOpen();
    void silentPeerBlocksForThreeSeconds_data();
    void silentPeerBlocksForThreeSeconds();
    void eventsAreServedWhileOpening();
    void lateHandshakeStillConnects();
    void failedOpenKeepsSocketAndBudget();
    void openInsideOpenIsFalse();
    void openFailsWithFewFilesLeft();

    // messages
    void textGoesBothWays();
    void messagesArrive_data();
    void messagesArrive();
    void pingBetweenFragmentsIsAnswered();
    void binaryMessagesAreIgnored();
    void invalidMessageClosesTheConnection_data();
    void invalidMessageClosesTheConnection();
    void textWithoutAConnectionIsLost();
    void largeMessageIsWhole();
    void manyMessagesKeepTheirOrder();
    void logLevelWritesMessages();

    // heartbeat
    void firstPingGoesOutOnConnecting();
    void pongLeadsToTheNextPing();
    void anyPongClearsThePendingFlag();
    void missingPongRestsOnAConnectedSocket();
    void heartbeatBeginsAnewWithTheNextConnection();
    void expiryReconnectsAnUnconnectedSocket();
    void expiryWithoutBudgetOnlyLogs();
    void negativeIntervalBeforeOpen();
    void negativeIntervalEndsARunningHeartbeat();
    void negativeIntervalLeavesARunningTimerAlone();
    void intervalTakesEffectOnTheRunningTimer();
    void intervalZeroEndsSomewhere();
    void disconnectionStopsTheHeartbeat();

    // reconnection
    void everyCloseCodeIsADisconnection_data();
    void everyCloseCodeIsADisconnection();
    void vanishedPeerIsADisconnection();
    void tenReconnectionsForTheWholeLife();
    void peerThatClosesAtOnceUsesUpTheBudget();
    void refusedReconnectionStaysDown();
    void disconnectionWithinAnAttemptNests();

    // ends
    void endOfTheObjectClosesTheConnection();
    void handlerMayDestroyTheObject();
    void hostMayDeleteTheObjectInTheHandler();
    void handlerMayEndTheObjectInANestedLoop();
    void handlerMayCollectTheObject();
    void handlerMayWaitWhileMessagesArrive();
    void objectMayEndInsideOpen();
    void objectMayEndInsideAReconnection();
    void objectMayEndInItsHeartbeat();
    void engineMayEndWithAnOpenSocket();

    // proxy
    void proxyIsUsed();

private:
    QString text(const QString& inSource);
    /// Opens `ws` of the script to the server, and gives the server's end.
    RawWebSocket* connected(const QString& inBefore = QString());

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<RawWebSocketServer> mServer;
    std::unique_ptr<KyScriptEngine> mEngine;
};

namespace {

QString closedUrl()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return QStringLiteral("ws://127.0.0.1:%1/x").arg(server.serverPort());
}

void turn(int inMSecs)
{
    QEventLoop loop;
    QTimer::singleShot(inMSecs, &loop, &QEventLoop::quit);
    loop.exec();
}

class Host : public QObject
{
    Q_OBJECT
public:
    explicit Host(KyScriptEngine* inEngine)
        : mEngine(inEngine)
    {}
    Q_INVOKABLE void kill(QObject* inObject) { delete inObject; }
    Q_INVOKABLE void wait(int inMSecs) { turn(inMSecs); }
    Q_INVOKABLE void collectSoon()
    {
        QTimer::singleShot(0, mEngine, [this] { mEngine->collectGarbage(); });
    }

private:
    KyScriptEngine* const mEngine;
};

} // namespace

void tst_KyScriptWebSocket::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mServer = std::make_unique<RawWebSocketServer>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptWebSocket);
    mEngine->globalObject().setProperty("Host", mEngine->newQObject(new Host(mEngine.get())));
    mEngine->globalObject().setProperty("url", mServer->url());
    text("var messages = []; var ws = new WebSocket();"
         "ws.messageReceived.connect(function(message) { messages.push(message); });");
}

void tst_KyScriptWebSocket::cleanup()
{
    mEngine.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    mServer.reset();
    mContracts.reset();
    mPlatform.reset();
}

QString tst_KyScriptWebSocket::text(const QString& inSource)
{
    const QJSValue value = mEngine->QJSEngine::evaluate(inSource, "test.js");
    return value.isError() ? "ERROR " + value.toString() : value.toString();
}

RawWebSocket* tst_KyScriptWebSocket::connected(const QString& inBefore)
{
    return text(inBefore + "; ws.open(url)") == "true" ? mServer->last() : nullptr;
}

void tst_KyScriptWebSocket::scriptsConstructIt()
{
    LogCapture log;
    QCOMPARE(text("typeof WebSocket + typeof new WebSocket() + typeof new WebSocket(null)"),
             QString("functionobjectobject"));
    for (const char* name :
         {"open", "getURL", "isConnected", "sendText", "setIgnoreSslErrors", "setLogLevel",
          "setHeartbeatInterval", "messageReceived", "onConnected", "onDisconnected", "onTextMessageReceived",
          "onSslErrors", "onWebSocketError", "onHeartbeatTimeout"})
        QCOMPARE(text(QString("typeof ws.%1").arg(name)), QString("function"));
    for (const char* name : {"reconnect", "sendHeartbeat", "setURL"})
        QCOMPARE(name + text(QString("typeof ws.%1").arg(name)), name + QString("undefined"));
    QCOMPARE(log.take(), QStringList());
    QObject parent;
    QCOMPARE((new KyScriptWebSocket(&parent))->parent(), &parent);
}

void tst_KyScriptWebSocket::freshObject()
{
    LogCapture log;
    QCOMPARE(text("'[' + ws.getURL() + ']' + ws.isConnected() + ws.sendText('x')"),
             QString("[]falseundefined"));
    QCOMPARE(log.take(), QStringList());
    // The interval and the pending pong stand in this line, and a budget of 0 means that it is all.
    text("ws.onHeartbeatTimeout()");
    QCOMPARE(
        log.take(),
        QStringList("3||WebSocket: Heartbeat timout of 30000 msec for  reached, trying to reconnect ..."));
}

void tst_KyScriptWebSocket::slotsOfAFreshObjectAreHarmless()
{
    LogCapture log;
    text(
        "ws.setIgnoreSslErrors(); ws.setLogLevel(1); ws.sendText('x'); ws.onConnected(); ws.onDisconnected();"
        "ws.onWebSocketError(3); ws.setLogLevel(0); ws.onTextMessageReceived('by hand')");
    QCOMPARE(log.take(), QStringList({"1||WebSocket: Connected to ", "3||WebSocket: Diconnected from ",
                                      "1||WebSocket: received error code (3) form "}));
    QCOMPARE(text("messages"), QString("by hand"));
    QCOMPARE(text("ws.isConnected()"), QString("false"));
}

void tst_KyScriptWebSocket::sslErrorsMayBeAnything()
{
    LogCapture log;
    for (const char* errors :
         {"[]", "[Symbol()]", "[[{a: Symbol()}]]", "Symbol()", "null", "undefined, 1", "'x'", "ws",
          "(function() { var a = []; a.length = 4294967295; return a; })()",
          "(function() { var n = []; for (var i = 0; i < 100000; ++i) n = [n]; return n; })()"})
    {
        log.take();
        QCOMPARE(text(QString("ws.onSslErrors(%1)").arg(errors)), QString("undefined"));
        QCOMPARE(log.toStrings().value(0), QString("1||WebSocket: received ssl error form "));
    }
}

void tst_KyScriptWebSocket::openConnects()
{
    LogCapture log;
    QCOMPARE(text("ws.open(url)"), QString("true"));
    QCOMPARE(log.take(), QStringList("1||WebSocket: Connected to " + mServer->url()));
    QCOMPARE(text("ws.isConnected() + ws.getURL()"), "true" + mServer->url());
    const QByteArray head = mServer->last()->head();
    QVERIFY(head.startsWith("GET / HTTP/1.1\r\n"));
    QVERIFY(head.contains("Sec-WebSocket-Version: 13"));
    QVERIFY(!head.toLower().contains("origin:"));
}

void tst_KyScriptWebSocket::openDropsBlanks_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QByteArray>("target");
    QTest::newRow("around") << "  %1/path \t\n" << QByteArray("/path");
    QTest::newRow("inside") << "%1/a \t\n  b" << QByteArray("/a%20b");
    QTest::newRow("query") << " %1/a?x=1 " << QByteArray("/a?x=1");
}

void tst_KyScriptWebSocket::openDropsBlanks()
{
    QFETCH(QString, given);
    QFETCH(QByteArray, target);
    given = given.arg(mServer->url(""));
    mEngine->globalObject().setProperty("given", given);
    LogCapture log;
    QCOMPARE(text("ws.open(given)"), QString("true"));
    QCOMPARE(text("ws.getURL()"), given);
    QCOMPARE(mServer->last()->head().split(' ').value(1), target);
    QCOMPARE(log.take(), QStringList("1||WebSocket: Connected to " + given));
}

void tst_KyScriptWebSocket::openAgainIsFalse()
{
    QVERIFY(connected());
    QCOMPARE(text("ws.open(url)"), QString("false"));
    QCOMPARE(text("ws.open('ws://127.0.0.1:1/') + ws.getURL() + ws.isConnected()"),
             "false" + mServer->url() + "true");
    QCOMPARE(mServer->peers.size(), 1);
}

void tst_KyScriptWebSocket::failedOpen_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<int>("handshake");
    QTest::addColumn<int>("error");
    QTest::newRow("refused") << closedUrl() << -1 << 0;
    QTest::newRow("no host") << "ws://name.invalid/" << -1 << 2;
    QTest::newRow("empty") << "" << -1 << 0;
    QTest::newRow("blanks") << "  " << -1 << 0;
    QTest::newRow("no URL") << "http://[" << -1 << 0;
    QTest::newRow("other scheme") << "http://127.0.0.1/" << -1 << 10;
    QTest::newRow("forbidden") << "" << int(RawWebSocketServer::Forbidden) << 0;
    QTest::newRow("other handshake") << "" << int(RawWebSocketServer::WrongKey) << 0;
    QTest::newRow("hangup") << "" << int(RawWebSocketServer::Hangup) << 1;
}

void tst_KyScriptWebSocket::failedOpen()
{
    QFETCH(QString, url);
    QFETCH(int, handshake);
    QFETCH(int, error);
    if (handshake >= 0) {
        mServer->handshake = RawWebSocketServer::Handshake(handshake);
        url = mServer->url();
    }
    mEngine->globalObject().setProperty("url", url);
    LogCapture log;
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(text("ws.open(url)"), QString("false"));
    const qint64 elapsed = timer.elapsed();
    QVERIFY2(elapsed < 2900, qPrintable(QString::number(elapsed)));
    QCOMPARE(log.take(),
             QStringList(QString("1||WebSocket: received error code (%1) form %2").arg(error).arg(url)));
    QCOMPARE(text("ws.isConnected() + ws.getURL()"), "false" + url);
    QCOMPARE(text("ws.open(url)"), QString("false"));

    // Nothing more happens by itself: no attempt draws on the budget.
    turn(100);
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(mServer->peers.size(), handshake >= 0 ? 1 : 0);
}

void tst_KyScriptWebSocket::silentPeerBlocksForThreeSeconds_data()
{
    QTest::addColumn<int>("handshake");
    QTest::newRow("silent") << int(RawWebSocketServer::Silent);
    QTest::newRow("half a handshake") << int(RawWebSocketServer::Half);
}

void tst_KyScriptWebSocket::silentPeerBlocksForThreeSeconds()
{
    QFETCH(int, handshake);
    mServer->handshake = RawWebSocketServer::Handshake(handshake);
    LogCapture log;
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(text("ws.open(url)"), QString("false"));
    const qint64 elapsed = timer.elapsed();
    // The timer of the wait is a coarse one: within a twentieth.
    QVERIFY2(elapsed >= 2850 && elapsed < 10000, qPrintable(QString::number(elapsed)));
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptWebSocket::eventsAreServedWhileOpening()
{
    mServer->handshake = RawWebSocketServer::Silent;
    bool served = false;
    QTimer::singleShot(0, this, [&] {
        served = true;
        QCOMPARE(text("ws.isConnected() + ws.getURL()"), "false" + mServer->url());
        connect(mServer.get(), &RawWebSocketServer::peerReady, this,
                [&] { mServer->last()->socket()->close(); });
    });
    QCOMPARE(text("ws.open(url)"), QString("false"));
    QVERIFY(served);
}

void tst_KyScriptWebSocket::lateHandshakeStillConnects()
{
    mServer->handshake = RawWebSocketServer::Silent;
    LogCapture log;
    QCOMPARE(text("ws.open(url)"), QString("false"));
    QCOMPARE(mServer->peers.size(), 1);
    const QByteArray key = mServer->last()->head();
    const qsizetype at = key.indexOf("Sec-WebSocket-Key: ") + 19;
    const QByteArray hash = QCryptographicHash::hash(key.mid(at, key.indexOf('\r', at) - at) +
                                                         "258EAFA5-E914-47DA-95CA-C5AB0DC85B11",
                                                     QCryptographicHash::Sha1);
    mServer->last()->sendBytes("HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\n"
                               "Connection: Upgrade\r\nSec-WebSocket-Accept: " +
                               hash.toBase64() + "\r\n\r\n");
    QTRY_COMPARE(text("ws.isConnected()"), QString("true"));
    QCOMPARE(log.take(), QStringList("1||WebSocket: Connected to " + mServer->url()));
    QTRY_COMPARE(mServer->last()->of(RawWebSocket::Ping).size(), 1);
}

void tst_KyScriptWebSocket::failedOpenKeepsSocketAndBudget()
{
    mServer->handshake = RawWebSocketServer::Forbidden;
    QCOMPARE(text("ws.open(url)"), QString("false"));
    mServer->handshake = RawWebSocketServer::Whole;
    LogCapture log;
    // What a timer event does to an object with a socket and a budget.
    text("ws.onHeartbeatTimeout()");
    QCOMPARE(text("ws.isConnected()"), QString("true"));
    QCOMPARE(log.take(),
             QStringList({QString("3||WebSocket: Heartbeat timout of 30000 msec for %1 reached, trying to "
                                  "reconnect ...")
                              .arg(mServer->url()),
                          "1||WebSocket: Connected to " + mServer->url()}));
    // One of ten is gone.
    for (int i = 0; i < 9; ++i) {
        mServer->last()->socket()->abort();
        QTRY_COMPARE(mServer->peers.size(), i + 3);
        QTRY_COMPARE(text("ws.isConnected()"), QString("true"));
    }
    mServer->last()->socket()->abort();
    QTRY_COMPARE(text("ws.isConnected()"), QString("false"));
    turn(50);
    QCOMPARE(mServer->peers.size(), 11);
}

void tst_KyScriptWebSocket::openInsideOpenIsFalse()
{
    mServer->handshake = RawWebSocketServer::Silent;
    QString inner;
    connect(mServer.get(), &RawWebSocketServer::peerReady, this, [&] {
        inner = text("ws.open('ws://127.0.0.1:1/')");
        mServer->last()->socket()->close();
    });
    QCOMPARE(text("ws.open(url)"), QString("false"));
    QCOMPARE(inner, QString("false"));
    QCOMPARE(text("ws.getURL()"), mServer->url());
}

/// The object has no socket then, and may try again.
void tst_KyScriptWebSocket::openFailsWithFewFilesLeft()
{
    LogCapture log;
    {
        FewOpenFiles few(400);
        few.takeAllBut(50); // of an eighth
        QCOMPARE(text("ws.open(url)"), QString("false"));
        QCOMPARE(log.take(), QStringList("1||WebSocket: received error code (4) form " + mServer->url()));
        QCOMPARE(text("ws.isConnected() + ws.getURL()"), "false" + mServer->url());
        few.takeAllBut(0);
        QCOMPARE(text("ws.open(url)"), QString("false"));
    }
    QCOMPARE(text("ws.open(url)"), QString("true"));
}

void tst_KyScriptWebSocket::textGoesBothWays()
{
    RawWebSocket* peer = connected();
    QVERIFY(peer);
    text(QString::fromUtf8("ws.sendText('hello ü€😀'); ws.sendText(''); ws.sendText(5); ws.sendText(null)"));
    QTRY_COMPARE(peer->of(RawWebSocket::Text).size(), 4);
    const auto frames = peer->of(RawWebSocket::Text);
    QCOMPARE(frames.at(0).payload, QByteArray("hello ü€😀"));
    QCOMPARE(frames.at(1).payload, QByteArray());
    QCOMPARE(frames.at(2).payload, QByteArray("5"));
    QCOMPARE(frames.at(3).payload, QByteArray());
    peer->send(RawWebSocket::Text, "ä€😀");
    QTRY_COMPARE(text("messages"), QString::fromUtf8("ä€😀"));
}

void tst_KyScriptWebSocket::messagesArrive_data()
{
    QTest::addColumn<QList<QByteArray>>("fragments");
    QTest::newRow("one frame") << QList<QByteArray>{"hello"};
    QTest::newRow("empty") << QList<QByteArray>{""};
    QTest::newRow("two fragments") << QList<QByteArray>{"hel", "lo"};
    QTest::newRow("five fragments") << QList<QByteArray>{"h", "e", "l", "l", "o"};
    QTest::newRow("empty fragments") << QList<QByteArray>{"", "hello", "", "", ""};
    QTest::newRow("only empty fragments") << QList<QByteArray>{"", ""};
    QTest::newRow("125 bytes") << QList<QByteArray>{QByteArray(125, 'x')};
    QTest::newRow("126 bytes") << QList<QByteArray>{QByteArray(126, 'x')};
    QTest::newRow("65535 bytes") << QList<QByteArray>{QByteArray(65535, 'x')};
    QTest::newRow("65536 bytes") << QList<QByteArray>{QByteArray(65536, 'x')};
    QTest::newRow("1 MB") << QList<QByteArray>{QByteArray(1 << 20, 'x')};
    QTest::newRow("1 MB in fragments") << QList<QByteArray>(64, QByteArray(16 << 10, 'x'));
    QTest::newRow("NUL inside") << QList<QByteArray>{QByteArray("a\0b", 3)};
    QTest::newRow("all planes") << QList<QByteArray>{"aä€😀", "\xef\xbf\xbf"};
    QTest::newRow("letters split at their bounds") << QList<QByteArray>{"ä", "€", "😀"};
}

void tst_KyScriptWebSocket::messagesArrive()
{
    QFETCH(QList<QByteArray>, fragments);
    RawWebSocket* peer = connected();
    QVERIFY(peer);
    for (qsizetype i = 0; i < fragments.size(); ++i)
        peer->send(i == 0 ? RawWebSocket::Text : RawWebSocket::Continuation, fragments.at(i),
                   i == fragments.size() - 1);
    peer->send(RawWebSocket::Text, "next");
    QTRY_COMPARE_WITH_TIMEOUT(text("messages.length"), QString("2"), 20000);
    QVERIFY(text("messages[0]") == QString::fromUtf8(fragments.join()));
    QCOMPARE(text("messages[1]"), QString("next"));
}

void tst_KyScriptWebSocket::pingBetweenFragmentsIsAnswered()
{
    RawWebSocket* peer = connected();
    QVERIFY(peer);
    peer->send(RawWebSocket::Text, "a", false);
    peer->send(RawWebSocket::Ping, "payload");
    peer->send(RawWebSocket::Continuation, "b", true);
    QTRY_COMPARE(text("messages"), QString("ab"));
    QTRY_COMPARE(peer->of(RawWebSocket::Pong).size(), 1);
    QCOMPARE(peer->of(RawWebSocket::Pong).at(0).payload, QByteArray("payload"));
}

void tst_KyScriptWebSocket::binaryMessagesAreIgnored()
{
    RawWebSocket* peer = connected();
    QVERIFY(peer);
    peer->send(RawWebSocket::Binary, "binary");
    peer->send(RawWebSocket::Text, "text");
    QTRY_COMPARE(text("messages"), QString("text"));
    QCOMPARE(text("ws.isConnected()"), QString("true"));
}

void tst_KyScriptWebSocket::invalidMessageClosesTheConnection_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("code");
    const auto textFrame = [](const QByteArray& inPayload) {
        return RawWebSocket::frame(RawWebSocket::Text, inPayload);
    };
    QTest::newRow("invalid UTF-8") << textFrame("a\xff") << 1007;
    QTest::newRow("overlong") << textFrame("\xc0\x80") << 1007;
    QTest::newRow("surrogate") << textFrame("\xed\xa0\x80") << 1007;
    QTest::newRow("beyond Unicode") << textFrame("\xf4\x90\x80\x80") << 1007;
    QTest::newRow("letter cut short") << textFrame("\xe2\x82") << 1007;
    QTest::newRow("reserved bit") << QByteArray("\xc1\x01x", 3) << 1002;
    QTest::newRow("reserved operation") << QByteArray("\x83\x01x", 3) << 1002;
    QTest::newRow("continuation of nothing") << RawWebSocket::frame(RawWebSocket::Continuation, "x") << 1002;
    QTest::newRow("message inside a message")
        << RawWebSocket::frame(RawWebSocket::Text, "a", false) + textFrame("b") << 1002;
    QTest::newRow("fragmented ping") << RawWebSocket::frame(RawWebSocket::Ping, "x", false) << 1002;
    QTest::newRow("long ping") << RawWebSocket::frame(RawWebSocket::Ping, QByteArray(126, 'x')) << 1002;
    QTest::newRow("announced too large")
        << QByteArray("\x81\x7f\x7f\xff\xff\xff\xff\xff\xff\xff", 10) << 1009;
    QTest::newRow("close of one byte") << RawWebSocket::frame(RawWebSocket::Close, "x") << 1002;
}

void tst_KyScriptWebSocket::invalidMessageClosesTheConnection()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, code);
    RawWebSocket* peer = connected();
    QVERIFY(peer);
    LogCapture log(3);
    peer->sendBytes(bytes);
    QTRY_COMPARE(peer->closeCode(), code);
    QTRY_COMPARE(log.toStrings(), QStringList("3||WebSocket: Diconnected from " + mServer->url()));
    QCOMPARE(text("messages"), QString());
    QTRY_COMPARE(text("ws.isConnected()"), QString("true"));
    mServer->last()->send(RawWebSocket::Text, "new connection");
    QTRY_COMPARE(text("messages"), QString("new connection"));
}

void tst_KyScriptWebSocket::textWithoutAConnectionIsLost()
{
    LogCapture log;
    text("ws.setLogLevel(1); ws.open('ws://127.0.0.1:1/')");
    log.take();
    text("ws.sendText('lost')");
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptWebSocket::largeMessageIsWhole()
{
    RawWebSocket* peer = connected();
    QVERIFY(peer);
    const int size = 64 << 20;
    peer->send(RawWebSocket::Text, QByteArray(size, 'y'));
    QTRY_COMPARE_WITH_TIMEOUT(text("messages.length"), QString("1"), 120000);
    QCOMPARE(text("var message = messages.pop(); message.length + message[0] + message[message.length - 1]"),
             QString("%1yy").arg(size));
    text("ws.sendText(message)");
    const auto received = [&] {
        qsizetype sum = 0;
        for (const auto& frame : peer->frames)
            sum += frame.opCode == RawWebSocket::Text || frame.opCode == RawWebSocket::Continuation
                       ? frame.payload.size()
                       : 0;
        return sum;
    };
    QTRY_COMPARE_WITH_TIMEOUT(received(), qsizetype(size), 120000);
    QVERIFY(peer->frames.constLast().isLast);
}

void tst_KyScriptWebSocket::manyMessagesKeepTheirOrder()
{
    RawWebSocket* peer = connected();
    QVERIFY(peer);
    QByteArray bytes;
    for (int i = 0; i < 5000; ++i)
        bytes += RawWebSocket::frame(RawWebSocket::Text, QByteArray::number(i));
    peer->sendBytes(bytes);
    QTRY_COMPARE_WITH_TIMEOUT(text("messages.length"), QString("5000"), 20000);
    QCOMPARE(text("messages.every(function(message, index) { return message === String(index); })"),
             QString("true"));
}

void tst_KyScriptWebSocket::logLevelWritesMessages()
{
    RawWebSocket* peer = connected();
    QVERIFY(peer);
    LogCapture log;
    text("ws.sendText('unlogged')");
    peer->send(RawWebSocket::Text, "unlogged");
    QTRY_COMPARE(text("messages.length"), QString("1"));
    text("ws.setLogLevel(-1); ws.sendText('unlogged')");
    QCOMPARE(log.take(), QStringList());

    QStringList atMessage;
    auto* socket = qobject_cast<KyScriptWebSocket*>(mEngine->globalObject().property("ws").toQObject());
    connect(socket, &KyScriptWebSocket::messageReceived, this, [&] { atMessage = log.toStrings(); });
    text(QString::fromUtf8("ws.setLogLevel(1); ws.sendText('ä€ 100%\\nx')"));
    QCOMPARE(log.take(),
             QStringList(
                 QString::fromUtf8("1||WebSocket: sent 12 bytes on to %1\n ä? 100%\nx").arg(mServer->url())));
    text("ws.setLogLevel(2); ws.sendText('')");
    QCOMPARE(log.take(), QStringList(QString("1||WebSocket: sent 0 bytes on to %1\n ").arg(mServer->url())));
    peer->send(RawWebSocket::Text, "ü€ %s");
    QTRY_COMPARE(text("messages.length"), QString("2"));
    QCOMPARE(atMessage, QStringList());
    QCOMPARE(
        log.take(),
        QStringList(QString::fromUtf8("1||WebSocket: received message form %1\n ü? %s").arg(mServer->url())));
}

void tst_KyScriptWebSocket::firstPingGoesOutOnConnecting()
{
    RawWebSocket* peer = connected();
    QVERIFY(peer);
    QTRY_COMPARE(peer->of(RawWebSocket::Ping).size(), 1);
    turn(100);
    QCOMPARE(peer->frames.size(), 1);
    QCOMPARE(peer->frames.at(0).payload, QByteArray());
}

void tst_KyScriptWebSocket::pongLeadsToTheNextPing()
{
    LogCapture log(2);
    RawWebSocket* peer = connected("ws.setHeartbeatInterval(300)");
    QVERIFY(peer);
    QTRY_VERIFY(peer->frames.size() >= 4);
    for (const auto& ping : peer->of(RawWebSocket::Ping))
        QCOMPARE(ping.payload, QByteArray());
    QCOMPARE(peer->of(RawWebSocket::Ping).size(), peer->frames.size());
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(mServer->peers.size(), 1);
}

void tst_KyScriptWebSocket::anyPongClearsThePendingFlag()
{
    LogCapture log(2);
    mServer->answersPings = false;
    RawWebSocket* peer = connected("ws.setHeartbeatInterval(500)");
    QVERIFY(peer);
    for (int pings = 1; pings <= 2; ++pings) {
        QTRY_COMPARE(peer->of(RawWebSocket::Ping).size(), pings);
        peer->send(RawWebSocket::Pong, pings == 1 ? "" : "another payload");
    }
    QTRY_COMPARE(peer->of(RawWebSocket::Ping).size(), 3);
    QCOMPARE(log.take(), QStringList());
}

/// One unit of the budget is gone, no ping is sent and the timer is not started again.
void tst_KyScriptWebSocket::missingPongRestsOnAConnectedSocket()
{
    LogCapture log(2);
    mServer->answersPings = false;
    RawWebSocket* peer = connected("ws.setHeartbeatInterval(60)");
    QVERIFY(peer);
    QTRY_COMPARE(log.toStrings(),
                 QStringList(QString("3||WebSocket: Heartbeat timout of 60 msec for %1 reached, "
                                     "trying to reconnect ...")
                                 .arg(mServer->url())));
    turn(300);
    QCOMPARE(log.take().size(), 1);
    QCOMPARE(peer->of(RawWebSocket::Ping).size(), 1);
    QCOMPARE(text("ws.isConnected()"), QString("true"));
    QCOMPARE(mServer->peers.size(), 1);
    // The connection works on.
    peer->send(RawWebSocket::Text, "alive");
    QTRY_COMPARE(text("messages"), QString("alive"));

    // Nine are left.
    for (int i = 0; i < 9; ++i) {
        text("ws.setHeartbeatInterval(60000)");
        mServer->last()->socket()->abort();
        QTRY_COMPARE(mServer->peers.size(), i + 2);
        QTRY_COMPARE(text("ws.isConnected()"), QString("true"));
    }
    mServer->last()->socket()->abort();
    QTRY_COMPARE(text("ws.isConnected()"), QString("false"));
    turn(50);
    QCOMPARE(mServer->peers.size(), 10);
}

void tst_KyScriptWebSocket::heartbeatBeginsAnewWithTheNextConnection()
{
    LogCapture log(3);
    mServer->answersPings = false;
    RawWebSocket* peer = connected("ws.setHeartbeatInterval(60)");
    QVERIFY(peer);
    QTRY_COMPARE(log.lines().size(), 1);
    mServer->answersPings = true;
    peer->socket()->abort();
    QTRY_COMPARE(mServer->peers.size(), 2);
    QTRY_VERIFY(mServer->last()->of(RawWebSocket::Ping).size() >= 2);
}

void tst_KyScriptWebSocket::expiryReconnectsAnUnconnectedSocket()
{
    QVERIFY(connected());
    LogCapture log;
    mServer->refuse();
    mServer->last()->socket()->abort();
    // The end, and the refusal of the attempt that follows it.
    QTRY_COMPARE(log.lines().size(), 3);
    QCOMPARE(text("ws.isConnected()"), QString("false"));
    mServer->listen();
    log.take();
    text("ws.onHeartbeatTimeout()");
    QCOMPARE(text("ws.isConnected()"), QString("true"));
    QVERIFY(log.take().constFirst().startsWith("3||WebSocket: Heartbeat timout"));
    QCOMPARE(mServer->peers.size(), 2);
}

void tst_KyScriptWebSocket::expiryWithoutBudgetOnlyLogs()
{
    LogCapture log(3);
    mServer->answersPings = false;
    RawWebSocket* peer = connected("ws.setHeartbeatInterval(60)");
    QVERIFY(peer);
    // The pending pong and a connected socket: each takes one from the budget and does nothing.
    text("for (var i = 0; i < 10; ++i) ws.onHeartbeatTimeout()");
    log.take();
    peer->socket()->abort();
    QTRY_COMPARE(log.toStrings(), QStringList("3||WebSocket: Diconnected from " + mServer->url()));
    QCOMPARE(text("ws.isConnected()"), QString("false"));
    log.take();
    text("ws.onHeartbeatTimeout()");
    QCOMPARE(log.take(),
             QStringList(QString("3||WebSocket: Heartbeat timout of 60 msec for %1 reached, trying to "
                                 "reconnect ...")
                             .arg(mServer->url())));
    turn(100);
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(mServer->peers.size(), 1);
}

void tst_KyScriptWebSocket::negativeIntervalBeforeOpen()
{
    LogCapture log(2);
    RawWebSocket* peer = connected("ws.setHeartbeatInterval(-1)");
    QVERIFY(peer);
    turn(150);
    QCOMPARE(peer->frames.size(), 0);
    QCOMPARE(log.take(), QStringList());
    // The connection is as good as any other.
    text("ws.sendText('x')");
    QTRY_COMPARE(peer->of(RawWebSocket::Text).size(), 1);
}

void tst_KyScriptWebSocket::negativeIntervalEndsARunningHeartbeat()
{
    LogCapture log(2);
    RawWebSocket* peer = connected("ws.setHeartbeatInterval(300)");
    QVERIFY(peer);
    QTRY_COMPARE(peer->of(RawWebSocket::Ping).size(), 1);
    text("ws.sendText('wait for the pong')");
    QTRY_COMPARE(peer->of(RawWebSocket::Text).size(), 1);
    text("ws.setHeartbeatInterval(-5)");
    turn(700);
    QCOMPARE(peer->of(RawWebSocket::Ping).size(), 1);
    QCOMPARE(log.take(), QStringList());
}

/// The pong that it waits for does not come.
void tst_KyScriptWebSocket::negativeIntervalLeavesARunningTimerAlone()
{
    LogCapture log(2);
    mServer->answersPings = false;
    QVERIFY(connected("ws.setHeartbeatInterval(300)"));
    text("ws.setHeartbeatInterval(-5)");
    QTRY_COMPARE(log.toStrings(),
                 QStringList(QString("3||WebSocket: Heartbeat timout of -5 msec for %1 reached, trying to "
                                     "reconnect ...")
                                 .arg(mServer->url())));
}

void tst_KyScriptWebSocket::intervalTakesEffectOnTheRunningTimer()
{
    RawWebSocket* peer = connected();
    QVERIFY(peer);
    QTRY_COMPARE(peer->of(RawWebSocket::Ping).size(), 1);
    text("ws.sendText('wait for the pong')");
    QTRY_COMPARE(peer->of(RawWebSocket::Text).size(), 1);
    text("ws.setHeartbeatInterval(100)");
    QTRY_VERIFY(peer->of(RawWebSocket::Ping).size() >= 2);
}

/// No pong can be there in no time.
void tst_KyScriptWebSocket::intervalZeroEndsSomewhere()
{
    LogCapture log(3);
    RawWebSocket* peer = connected("ws.setHeartbeatInterval(0)");
    QVERIFY(peer);
    QTRY_VERIFY(!log.lines().isEmpty());
    QCOMPARE(log.toStrings().at(0),
             QString("3||WebSocket: Heartbeat timout of 0 msec for %1 reached, trying to "
                     "reconnect ...")
                 .arg(mServer->url()));
}

void tst_KyScriptWebSocket::disconnectionStopsTheHeartbeat()
{
    RawWebSocket* peer = connected("ws.setHeartbeatInterval(100)");
    QVERIFY(peer);
    LogCapture log(2);
    mServer->refuse();
    peer->socket()->abort();
    QTRY_COMPARE(text("ws.isConnected()"), QString("false"));
    turn(400);
    QCOMPARE(log.take(), QStringList("3||WebSocket: Diconnected from " + mServer->url()));
}

void tst_KyScriptWebSocket::everyCloseCodeIsADisconnection_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("answered");
    QTest::newRow("without a code") << 0 << 1000;
    for (const int code : {1000, 1001, 1002, 1003, 1007, 1008, 1009, 1010, 1011, 3000, 3999, 4000, 4999})
        QTest::addRow("%d", code) << code << code;
    // These must not be sent.
    for (const int code : {1, 999, 1004, 1005, 1006, 1012, 1013, 1014, 1015, 1016, 2999, 5000, 65535})
        QTest::addRow("invalid %d", code) << code << 1002;
}

void tst_KyScriptWebSocket::everyCloseCodeIsADisconnection()
{
    QFETCH(int, code);
    QFETCH(int, answered);
    RawWebSocket* peer = connected();
    QVERIFY(peer);
    LogCapture log;
    peer->answersClose = false;
    peer->send(RawWebSocket::Close, code == 0 ? QByteArray() : RawWebSocket::closePayload(code, "reason ä"));
    QTRY_COMPARE(peer->closeCode(), answered);
    QTRY_COMPARE(log.toStrings(), QStringList({"3||WebSocket: Diconnected from " + mServer->url(),
                                               "1||WebSocket: Connected to " + mServer->url()}));
    QCOMPARE(mServer->peers.size(), 2);
}

void tst_KyScriptWebSocket::vanishedPeerIsADisconnection()
{
    RawWebSocket* peer = connected();
    QVERIFY(peer);
    LogCapture log;
    peer->send(RawWebSocket::Text, "half a messa", false);
    peer->socket()->abort();
    QTRY_COMPARE(log.lines().size(), 3);
    QCOMPARE(log.take(), QStringList({"1||WebSocket: received error code (1) form " + mServer->url(),
                                      "3||WebSocket: Diconnected from " + mServer->url(),
                                      "1||WebSocket: Connected to " + mServer->url()}));
    // Nothing of the old message is left.
    mServer->last()->send(RawWebSocket::Text, "whole");
    QTRY_COMPARE(text("messages"), QString("whole"));
}

void tst_KyScriptWebSocket::tenReconnectionsForTheWholeLife()
{
    QVERIFY(connected());
    LogCapture log;
    const QString lost = "3||WebSocket: Diconnected from " + mServer->url();
    const QString found = "1||WebSocket: Connected to " + mServer->url();
    for (int i = 1; i <= 10; ++i) {
        mServer->last()->send(RawWebSocket::Close, RawWebSocket::closePayload(1000));
        QTRY_COMPARE(log.toStrings(), QStringList({lost, found}));
        log.take();
        QCOMPARE(mServer->peers.size(), i + 1);
        // A success does not refill the budget.
        mServer->last()->send(RawWebSocket::Text, QByteArray::number(i));
        QTRY_COMPARE(text("messages.length"), QString::number(i));
    }
    mServer->last()->send(RawWebSocket::Close, RawWebSocket::closePayload(1000));
    QTRY_COMPARE(log.toStrings(), QStringList(lost));
    turn(100);
    QCOMPARE(log.take(), QStringList(lost));
    QCOMPARE(mServer->peers.size(), 11);
    QCOMPARE(text("ws.isConnected() + '' + ws.open(url)"), QString("falsefalse"));
}

void tst_KyScriptWebSocket::peerThatClosesAtOnceUsesUpTheBudget()
{
    connect(mServer.get(), &RawWebSocketServer::peerReady, this,
            [&] { mServer->last()->send(RawWebSocket::Close, RawWebSocket::closePayload(1001)); });
    LogCapture log(3);
    text("ws.open(url)");
    QTRY_COMPARE_WITH_TIMEOUT(log.lines().size(), 11, 30000);
    turn(100);
    QCOMPARE(log.lines().size(), 11);
    QCOMPARE(mServer->peers.size(), 11);
    QCOMPARE(text("ws.isConnected()"), QString("false"));
}

/// Only what was connected can be lost: a refused attempt is not followed by another.
void tst_KyScriptWebSocket::refusedReconnectionStaysDown()
{
    QVERIFY(connected());
    LogCapture log;
    mServer->refuse();
    mServer->last()->send(RawWebSocket::Close, RawWebSocket::closePayload(1000));
    QTRY_COMPARE(log.toStrings(),
                 QStringList({"3||WebSocket: Diconnected from " + mServer->url(),
                              "1||WebSocket: received error code (0) form " + mServer->url()}));
    turn(100);
    QCOMPARE(log.lines().size(), 2);
}

/// The second connection is lost while the wait of its own attempt still stands.
void tst_KyScriptWebSocket::disconnectionWithinAnAttemptNests()
{
    int readies = 0;
    connect(mServer.get(), &RawWebSocketServer::peerReady, this, [&] {
        if (++readies == 2)
            mServer->last()->send(RawWebSocket::Close, RawWebSocket::closePayload(1000));
    });
    RawWebSocket* peer = connected();
    QVERIFY(peer);
    LogCapture log;
    peer->send(RawWebSocket::Close, RawWebSocket::closePayload(1000));
    QTRY_COMPARE(mServer->peers.size(), 3);
    QTRY_COMPARE(text("ws.isConnected()"), QString("true"));
    const QString lost = "3||WebSocket: Diconnected from " + mServer->url();
    const QString found = "1||WebSocket: Connected to " + mServer->url();
    QCOMPARE(log.take(), QStringList({lost, found, lost, found}));
    mServer->last()->send(RawWebSocket::Text, "here");
    QTRY_COMPARE(text("messages"), QString("here"));
}

void tst_KyScriptWebSocket::endOfTheObjectClosesTheConnection()
{
    auto socket = std::make_unique<KyScriptWebSocket>();
    QVERIFY(socket->open(mServer->url()));
    LogCapture log;
    socket.reset();
    QCOMPARE(log.take(), QStringList("3||WebSocket: Diconnected from " + mServer->url()));
    QTRY_COMPARE(mServer->last()->closeCode(), 1001);
    QTRY_VERIFY(!mServer->last()->isOpen());
    turn(50);
    QCOMPARE(mServer->peers.size(), 1);
}

/// destroy() waits for the event loop: until then the object lives, and hears.
void tst_KyScriptWebSocket::handlerMayDestroyTheObject()
{
    text("var other = new WebSocket(); var count = 0;"
         "other.messageReceived.connect(function() { ++count; other.destroy(); Host.wait(30); });"
         "other.setLogLevel(1); other.open(url)");
    const QPointer<QObject> watched = mEngine->globalObject().property("other").toQObject();
    RawWebSocket* peer = mServer->last();
    QVERIFY(peer && watched);
    peer->sendBytes(RawWebSocket::frame(RawWebSocket::Text, "one") +
                    RawWebSocket::frame(RawWebSocket::Text, "two"));
    QTRY_VERIFY(!watched);
    QVERIFY(text("count").toInt() >= 1);
    QTRY_COMPARE(peer->closeCode(), 1001);
    turn(50);
    QCOMPARE(mServer->peers.size(), 1);
}

void tst_KyScriptWebSocket::hostMayDeleteTheObjectInTheHandler()
{
    LogCapture log;
    auto* socket = new KyScriptWebSocket;
    socket->setLogLevel(1);
    connect(socket, &KyScriptWebSocket::messageReceived, this, [&] { delete socket; });
    QVERIFY(socket->open(mServer->url()));
    log.take();
    mServer->last()->sendBytes(RawWebSocket::frame(RawWebSocket::Text, "one") +
                               RawWebSocket::frame(RawWebSocket::Text, "two"));
    QTRY_COMPARE(mServer->last()->closeCode(), 1001);
    turn(20);
    QCOMPARE(log.take(), QStringList("3||WebSocket: Diconnected from " + mServer->url()));
}

void tst_KyScriptWebSocket::handlerMayEndTheObjectInANestedLoop()
{
    text("var other = new WebSocket(); var steps = [];"
         "other.messageReceived.connect(function(message) {"
         "    steps.push(message); Host.wait(200); steps.push('waited');"
         "}); other.setHeartbeatInterval(-1); other.open(url)");
    RawWebSocket* peer = mServer->last();
    peer->send(RawWebSocket::Text, "first");
    peer->send(RawWebSocket::Text, "second");
    QTimer::singleShot(50, peer, [&] { text("Host.kill(other)"); });
    QTRY_COMPARE(text("steps"), QString("first,waited"));
    QTRY_COMPARE(peer->closeCode(), 1001);
    turn(50);
    QCOMPARE(text("steps"), QString("first,waited"));
}

void tst_KyScriptWebSocket::handlerMayCollectTheObject()
{
    text("(function() {"
         "    var other = new WebSocket();"
         "    other.messageReceived.connect(function() { Host.collectSoon(); Host.wait(50); });"
         "    other.open(url);"
         "})()");
    RawWebSocket* peer = mServer->last();
    peer->send(RawWebSocket::Text, "collect");
    turn(100);
    mEngine->collectGarbage();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QTRY_COMPARE(peer->closeCode(), 1001);
}

/// Messages that arrive in pieces while a handler waits are whole, and told when it has returned.
void tst_KyScriptWebSocket::handlerMayWaitWhileMessagesArrive()
{
    text("var other = new WebSocket(); var steps = [];"
         "other.messageReceived.connect(function(message) {"
         "    steps.push(message); if (message == 'wait') { Host.wait(400); steps.push('waited'); }"
         "}); other.setHeartbeatInterval(-1); other.open(url)");
    RawWebSocket* peer = mServer->last();
    const QByteArray within = RawWebSocket::frame(RawWebSocket::Text, "within");
    const QByteArray across = RawWebSocket::frame(RawWebSocket::Text, "across");
    peer->sendBytes(RawWebSocket::frame(RawWebSocket::Text, "wait") + within.left(4));
    QTimer::singleShot(50, peer, [&] { peer->sendBytes(within.mid(4)); });
    QTimer::singleShot(100, peer, [&] { peer->sendBytes(across.left(4)); });
    QTRY_COMPARE(text("steps"), QString("wait,waited,within"));
    peer->sendBytes(across.mid(4));
    QTRY_COMPARE(text("steps"), QString("wait,waited,within,across"));
    QCOMPARE(text("other.isConnected()"), QString("true"));
}

void tst_KyScriptWebSocket::objectMayEndInsideOpen()
{
    mServer->handshake = RawWebSocketServer::Silent;
    connect(mServer.get(), &RawWebSocketServer::peerReady, this, [&] { text("Host.kill(other)"); });
    QCOMPARE(text("var other = new WebSocket(); other.open(url)"), QString("false"));
    // The socket ended with the object, and the wait with its time.
    turn(20);
    QVERIFY(!mServer->last()->isOpen());
}

void tst_KyScriptWebSocket::objectMayEndInsideAReconnection()
{
    text("var other = new WebSocket(); other.open(url)");
    RawWebSocket* peer = mServer->last();
    mServer->handshake = RawWebSocketServer::Silent;
    connect(mServer.get(), &RawWebSocketServer::peerReady, this, [&] { text("Host.kill(other)"); });
    peer->send(RawWebSocket::Close, RawWebSocket::closePayload(1000));
    QTRY_COMPARE(mServer->peers.size(), 2);
    QTRY_VERIFY_WITH_TIMEOUT(!mServer->last()->isOpen(), 15000);
    turn(50);
}

void tst_KyScriptWebSocket::objectMayEndInItsHeartbeat()
{
    mServer->handshake = RawWebSocketServer::Forbidden;
    QCOMPARE(text("var other = new WebSocket(); other.open(url)"), QString("false"));
    mServer->handshake = RawWebSocketServer::Silent;
    connect(mServer.get(), &RawWebSocketServer::peerReady, this, [&] { text("Host.kill(other)"); });
    auto* socket = qobject_cast<KyScriptWebSocket*>(mEngine->globalObject().property("other").toQObject());
    QVERIFY(socket);
    // As the timer calls it.
    socket->onHeartbeatTimeout();
    QCOMPARE(text("Object.keys(other).length"), QString("0"));
    QCOMPARE(mServer->peers.size(), 2);
}

void tst_KyScriptWebSocket::engineMayEndWithAnOpenSocket()
{
    RawWebSocket* peer = connected();
    QVERIFY(peer);
    peer->sendBytes(RawWebSocket::frame(RawWebSocket::Text, "on its way"));
    mEngine.reset();
    QTRY_COMPARE(peer->closeCode(), 1001);
}

void tst_KyScriptWebSocket::proxyIsUsed()
{
    LoopbackHttpServer proxy;
    proxy.answer("name.invalid:80", "HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\n\r\n");
    mPlatform->facts.proxyHost = "127.0.0.1";
    mPlatform->facts.proxyPort = proxy.port();
    LogCapture log;
    QCOMPARE(text("ws.open('ws://name.invalid/')"), QString("false"));
    const QStringList lines = log.take();
    QCOMPARE(lines.at(0), QString("1||WebSocket: Using proxy server 127.0.0.1:%1").arg(proxy.port()));
    QVERIFY(lines.at(1).startsWith("1||WebSocket: received error code ("));
    QCOMPARE(lines.size(), 2);
    QCOMPARE(proxy.requests.size(), 1);
    QCOMPARE(proxy.requests.at(0).method, QByteArray("CONNECT"));
}

KY_TEST_MAIN(tst_KyScriptWebSocket)
#include "tst_KyScriptWebSocket.moc"
