// WebSocket and WebSocketServer against programs that nobody here wrote.

#include "Peers.h"

#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>
#include <support/PeerProcess.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptWebSocket.h>

#include <QTest>

class tst_websocket_peers : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    // the script is the client
    void clientExchangesMessages_data() { addPeers(); }
    void clientExchangesMessages();
    void clientTakesFragments_data() { addPeers(); }
    void clientTakesFragments();
    void clientExchangesLargeMessages_data() { addPeers(); }
    void clientExchangesLargeMessages();
    void clientAnswersPings_data() { addPeers(); }
    void clientAnswersPings();
    void clientReconnects_data();
    void clientReconnects();
    void clientHasAHeartbeat();
    void clientNoticesAMissingPong();
    void clientClosesOnInvalidText();
    void clientRefusesAnUnknownCertificate_data() { addPeers(true); }
    void clientRefusesAnUnknownCertificate();

    // the script is the server
    void serverExchangesMessages_data() { addPeers(); }
    void serverExchangesMessages();
    void serverTakesFragments_data() { addPeers(); }
    void serverTakesFragments();
    void serverExchangesLargeMessages_data() { addPeers(); }
    void serverExchangesLargeMessages();
    void serverAnswersPings_data() { addPeers(); }
    void serverAnswersPings();
    void serverSeesTheEnd_data();
    void serverSeesTheEnd();
    void serverRefusesAStranger_data() { addPeers(); }
    void serverRefusesAStranger();
    void serverReplacesAClient_data() { addPeers(); }
    void serverReplacesAClient();
    void serverClosesOnInvalidText();

private:
    static void addPeers(bool inOnlySecure = false);
    static bool hasPeer(const QString& inPeer);
    std::unique_ptr<PeerProcess> start(const QString& inPeer, const QString& inKind,
                                       const QStringList& inArguments);

    QString text(const QString& inSource);
    /// Starts a server of the row's peer, and connects `ws` to it.
    void connectToPeer();
    /// Registers `ws` on the row's server, and lets the row's peer connect to it.
    void letPeerConnect();
    void registerSocket();

    std::unique_ptr<SelfSignedCertificate> mCertificate;
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<KyScriptEngine> mEngine;
    std::unique_ptr<PeerProcess> mPeer;
    QString mUrl;
};

void tst_websocket_peers::initTestCase()
{
    mCertificate = std::make_unique<SelfSignedCertificate>();
    QVERIFY2(mCertificate->isValid(), "the program openssl belongs to the library");
}

void tst_websocket_peers::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptWebSocket | ScriptWebSocketServer);
}

void tst_websocket_peers::cleanup()
{
    mEngine.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    mPeer.reset();
    mContracts.reset();
    mPlatform.reset();
}

void tst_websocket_peers::addPeers(bool inOnlySecure)
{
    QTest::addColumn<QString>("peer");
    QTest::addColumn<bool>("secure");
    for (const char* peer : {"node", "python"}) {
        if (!inOnlySecure)
            QTest::addRow("%s", peer) << QString(peer) << false;
        QTest::addRow("%s, TLS", peer) << QString(peer) << true;
    }
}

bool tst_websocket_peers::hasPeer(const QString& inPeer)
{
    return inPeer == "node" ? Peers::hasNode("ws") : Peers::hasPython("websockets");
}

std::unique_ptr<PeerProcess> tst_websocket_peers::start(const QString& inPeer, const QString& inKind,
                                                        const QStringList& inArguments)
{
    const bool isNode = inPeer == "node";
    return std::make_unique<PeerProcess>(isNode ? Peers::node() : Peers::python(),
                                         QStringList{Peers::file("ws_" + inKind + (isNode ? ".js" : ".py"))} +
                                             inArguments,
                                         Peers::nodeEnvironment());
}

QString tst_websocket_peers::text(const QString& inSource)
{
    const QJSValue value = mEngine->QJSEngine::evaluate(inSource, "test.js");
    return value.isError() ? "ERROR " + value.toString() : value.toString();
}

/// A server with a certificate of its own is accepted only at the second attempt.
void tst_websocket_peers::connectToPeer()
{
    QFETCH(QString, peer);
    QFETCH(bool, secure);
    mPeer = start(peer, "server",
                  secure ? QStringList{mCertificate->certificate(), mCertificate->key()} : QStringList());
    const QString port = mPeer->waitFor("ready (\\d+)");
    QVERIFY(!port.isEmpty());
    mUrl = QString("%1://127.0.0.1:%2/feed").arg(secure ? "wss" : "ws", port);
    mEngine->globalObject().setProperty("url", mUrl);
    text("var messages = []; var ws = new WebSocket();"
         "ws.messageReceived.connect(function(message) { messages.push(message); });"
         "if (!ws.open(url)) { ws.setIgnoreSslErrors(); ws.onHeartbeatTimeout(); }");
    QCOMPARE(text("ws.isConnected()"), QString("true"));
    QVERIFY(!mPeer->waitFor("open /feed").isNull());
}

void tst_websocket_peers::registerSocket()
{
    QFETCH(bool, secure);
    mUrl = text(QString("var messages = []; var ws = %1.registerSocket('peer');"
                        "ws.messageReceived.connect(function(message) { messages.push(message); });"
                        "ws.getURL()")
                    .arg(secure ? "WebSocketServerSSL" : "WebSocketServer"));
}

void tst_websocket_peers::letPeerConnect()
{
    QFETCH(QString, peer);
    registerSocket();
    mPeer = start(peer, "client", {mUrl});
    QVERIFY(!mPeer->waitFor("open").isNull());
    QTRY_COMPARE(text("ws.isConnected()"), QString("true"));
}

void tst_websocket_peers::clientExchangesMessages()
{
    QFETCH(QString, peer);
    KY_NEEDS(hasPeer(peer), "the WebSocket peer");
    connectToPeer();
    text("ws.sendText('hällo €😀'); ws.sendText(''); ws.sendText('third')");
    QTRY_COMPARE(text("messages.length"), QString("3"));
    QCOMPARE(text("messages.join('|')"), QString("hällo €😀||third"));
    text("for (var i = 0; i < 1000; ++i) ws.sendText('message ' + i)");
    QTRY_COMPARE_WITH_TIMEOUT(text("messages.length"), QString("1003"), 60000);
    QCOMPARE(
        text("messages.slice(3).every(function(message, index) { return message === 'message ' + index; })"),
        QString("true"));
}

void tst_websocket_peers::clientTakesFragments()
{
    QFETCH(QString, peer);
    KY_NEEDS(hasPeer(peer), "the WebSocket peer");
    connectToPeer();
    text("ws.sendText('fragments one ä two € three')");
    QTRY_COMPARE(text("messages"), QString("oneätwo€three"));
}

void tst_websocket_peers::clientExchangesLargeMessages()
{
    QFETCH(QString, peer);
    QFETCH(bool, secure);
    KY_NEEDS(hasPeer(peer), "the WebSocket peer");
    connectToPeer();
    for (const int size : {1 << 20, secure ? 8 << 20 : 64 << 20}) {
        text(QString("messages = []; ws.sendText('size %1')").arg(size));
        QTRY_COMPARE_WITH_TIMEOUT(text("messages.length"), QString("1"), 120000);
        QCOMPARE(text("messages[0].length"), QString::number(size));
        // And all the way back.
        text("var sent = messages[0]; messages = []; ws.sendText(sent)");
        QTRY_COMPARE_WITH_TIMEOUT(text("messages.length"), QString("1"), 120000);
        QCOMPARE(text("messages[0] === sent"), QString("true"));
    }
    QCOMPARE(text("ws.isConnected()"), QString("true"));
}

void tst_websocket_peers::clientAnswersPings()
{
    QFETCH(QString, peer);
    KY_NEEDS(hasPeer(peer), "the WebSocket peer");
    connectToPeer();
    text("ws.setHeartbeatInterval(-1); ws.sendText('ping payload')");
    QTRY_VERIFY_WITH_TIMEOUT(text("messages").contains("pong came"), 30000);
}

void tst_websocket_peers::clientReconnects_data()
{
    QTest::addColumn<QString>("peer");
    QTest::addColumn<bool>("secure");
    QTest::addColumn<QString>("order");
    QTest::addColumn<QString>("closed");
    for (const char* peer : {"node", "python"}) {
        for (const int code : {1000, 1001, 1002, 1003, 1007, 1008, 1009, 1011, 3000, 3999, 4000, 4999})
            QTest::addRow("%s, %d", peer, code)
                << QString(peer) << false << QString("close %1 a reason").arg(code)
                << QString("closed %1 a reason").arg(code);
        QTest::addRow("%s, vanished", peer) << QString(peer) << false << "vanish"
                                            << "closed 1006 ?";
        QTest::addRow("%s, TLS, 1001", peer) << QString(peer) << true << "close 1001 a reason"
                                             << "closed 1001 a reason";
        QTest::addRow("%s, TLS, vanished", peer) << QString(peer) << true << "vanish"
                                                 << "closed 1006 ?";
    }
    QTest::newRow("node, no code") << "node" << false << "close"
                                   << "closed 100[05] ?";
}

void tst_websocket_peers::clientReconnects()
{
    QFETCH(QString, peer);
    QFETCH(QString, order);
    QFETCH(QString, closed);
    KY_NEEDS(hasPeer(peer), "the WebSocket peer");
    connectToPeer();
    LogCapture log;
    text(QString("ws.sendText('%1')").arg(order));
    // The server may tell of the new connection before it tells of the end of the old one.
    const QRegularExpression end(QRegularExpression::anchoredPattern(closed));
    QTRY_COMPARE(mPeer->lines.filter(end).size(), 1);
    QTRY_COMPARE(mPeer->lines.count("open /feed"), 2);
    QTRY_COMPARE(text("ws.isConnected()"), QString("true"));
    QVERIFY(log.toStrings().contains("3||WebSocket: Diconnected from " + mUrl));
    QVERIFY(log.toStrings().contains("1||WebSocket: Connected to " + mUrl));
    text("ws.sendText('alive')");
    QTRY_COMPARE(text("messages"), QString("alive"));
}

void tst_websocket_peers::clientHasAHeartbeat()
{
    KY_NEEDS(hasPeer("node"), "node's ws");
    mPeer = start("node", "server", {});
    mEngine->globalObject().setProperty("url", "ws://127.0.0.1:" + mPeer->waitFor("ready (\\d+)"));
    LogCapture log(2);
    QCOMPARE(text("var ws = new WebSocket(); ws.setHeartbeatInterval(300); ws.open(url)"), QString("true"));
    for (int i = 0; i < 4; ++i)
        QVERIFY(!mPeer->waitFor("ping \\[\\]").isNull());
    QCOMPARE(log.take(), QStringList());
}

void tst_websocket_peers::clientNoticesAMissingPong()
{
    KY_NEEDS(hasPeer("node"), "node's ws");
    mPeer = start("node", "server", {});
    const QString url = "ws://127.0.0.1:" + mPeer->waitFor("ready (\\d+)");
    mEngine->globalObject().setProperty("url", url);
    LogCapture log(2);
    QCOMPARE(text("var ws = new WebSocket(); ws.setHeartbeatInterval(500); ws.open(url)"), QString("true"));
    text("ws.sendText('mute')");
    QTRY_COMPARE_WITH_TIMEOUT(
        log.toStrings(),
        QStringList(QString("3||WebSocket: Heartbeat timout of 500 msec for %1 reached, "
                            "trying to reconnect ...")
                        .arg(url)),
        30000);
    QCOMPARE(text("ws.isConnected()"), QString("true"));
}

void tst_websocket_peers::clientClosesOnInvalidText()
{
    KY_NEEDS(hasPeer("node"), "node's ws");
    mPeer = start("node", "server", {});
    mEngine->globalObject().setProperty("url", "ws://127.0.0.1:" + mPeer->waitFor("ready (\\d+)"));
    QCOMPARE(text("var messages = []; var ws = new WebSocket();"
                  "ws.messageReceived.connect(function(message) { messages.push(message); }); ws.open(url)"),
             QString("true"));
    text("ws.sendText('invalid')");
    QVERIFY(!mPeer->waitFor("closed 1007 .*").isNull());
    QVERIFY(!mPeer->waitFor("open /").isNull());
    QCOMPARE(text("messages.length"), QString("0"));
}

void tst_websocket_peers::clientRefusesAnUnknownCertificate()
{
    QFETCH(QString, peer);
    KY_NEEDS(hasPeer(peer), "the WebSocket peer");
    mPeer = start(peer, "server", {mCertificate->certificate(), mCertificate->key()});
    const QString url = "wss://127.0.0.1:" + mPeer->waitFor("ready (\\d+)");
    mEngine->globalObject().setProperty("url", url);
    LogCapture log;
    QCOMPARE(text("var ws = new WebSocket(); ws.open(url)"), QString("false"));
    QCOMPARE(log.take(), QStringList({"1||WebSocket: received ssl error form " + url,
                                      "1||WebSocket: received error code (13) form " + url}));
}

void tst_websocket_peers::serverExchangesMessages()
{
    QFETCH(QString, peer);
    KY_NEEDS(hasPeer(peer), "the WebSocket peer");
    letPeerConnect();
    mPeer->order("text hällo €😀");
    mPeer->order("text ");
    mPeer->order("text third");
    QTRY_COMPARE(text("messages.length"), QString("3"));
    QCOMPARE(text("messages.join('|')"), QString("hällo €😀||third"));
    text("ws.sendText('from the script ä€😀'); ws.sendText('')");
    QVERIFY(!mPeer->waitFor("message from the script ä€😀").isNull());
    QVERIFY(!mPeer->waitFor("message ?").isNull());
    mPeer->order("binary");
    mPeer->order("text after");
    QTRY_COMPARE(text("messages[3]"), QString("after"));
}

void tst_websocket_peers::serverTakesFragments()
{
    QFETCH(QString, peer);
    KY_NEEDS(hasPeer(peer), "the WebSocket peer");
    letPeerConnect();
    mPeer->order("fragments one ä two € three");
    QTRY_COMPARE(text("messages"), QString("oneätwo€three"));
}

void tst_websocket_peers::serverExchangesLargeMessages()
{
    QFETCH(QString, peer);
    QFETCH(bool, secure);
    KY_NEEDS(hasPeer(peer), "the WebSocket peer");
    letPeerConnect();
    for (const int size : {1 << 20, secure ? 8 << 20 : 64 << 20}) {
        mPeer->order(QString("size %1").arg(size));
        QTRY_COMPARE_WITH_TIMEOUT(text("messages.length"), QString("1"), 120000);
        QCOMPARE(text("var message = messages.pop(); message.length"), QString::number(size));
        text("ws.sendText(message)");
        QVERIFY(!mPeer->waitFor(QString("message of %1").arg(size), std::chrono::minutes(2)).isNull());
    }
}

void tst_websocket_peers::serverAnswersPings()
{
    QFETCH(QString, peer);
    KY_NEEDS(hasPeer(peer), "the WebSocket peer");
    letPeerConnect();
    mPeer->order("ping payload");
    QVERIFY(!mPeer->waitFor("pong payload").isNull());
}

void tst_websocket_peers::serverSeesTheEnd_data()
{
    QTest::addColumn<QString>("peer");
    QTest::addColumn<bool>("secure");
    QTest::addColumn<QString>("order");
    for (const char* peer : {"node", "python"}) {
        for (const int code : {1000, 1001, 1002, 1003, 1007, 1008, 1009, 1010, 1011, 3000, 4000, 4999})
            QTest::addRow("%s, %d", peer, code)
                << QString(peer) << false << QString("close %1 reason").arg(code);
        QTest::addRow("%s, vanished", peer) << QString(peer) << false << "vanish";
        QTest::addRow("%s, TLS, 1000", peer) << QString(peer) << true << "close 1000 reason";
        QTest::addRow("%s, TLS, vanished", peer) << QString(peer) << true << "vanish";
    }
    QTest::newRow("node, no code") << "node" << false << "close";
}

void tst_websocket_peers::serverSeesTheEnd()
{
    QFETCH(QString, peer);
    QFETCH(QString, order);
    KY_NEEDS(hasPeer(peer), "the WebSocket peer");
    letPeerConnect();
    LogCapture log(3);
    mPeer->order(order);
    QTRY_COMPARE(text("ws.isConnected()"), QString("false"));
    QTRY_COMPARE(log.toStrings(), QStringList("3||WebSocket: Diconnected from " + mUrl));
    // The socket waits for the next.
    const auto next = start(peer, "client", {mUrl});
    QVERIFY(!next->waitFor("open").isNull());
    next->order("text again");
    QTRY_COMPARE(text("messages"), QString("again"));
}

void tst_websocket_peers::serverRefusesAStranger()
{
    QFETCH(QString, peer);
    KY_NEEDS(hasPeer(peer), "the WebSocket peer");
    registerSocket();
    for (const QString& url : {mUrl + "?x", mUrl + "x", QString(mUrl).replace("127.0.0.1", "localhost")}) {
        const auto stranger = start(peer, "client", {url});
        QVERIFY(!stranger->waitFor("closed 1000 ?").isNull());
    }
    QCOMPARE(text("ws.isConnected()"), QString("false"));
}

void tst_websocket_peers::serverReplacesAClient()
{
    QFETCH(QString, peer);
    KY_NEEDS(hasPeer(peer), "the WebSocket peer");
    letPeerConnect();
    const auto second = start(peer, "client", {mUrl});
    QVERIFY(!second->waitFor("open").isNull());
    QVERIFY(!mPeer->waitFor("closed 1001 .*").isNull());
    second->order("text from the second");
    QTRY_COMPARE(text("messages"), QString("from the second"));
}

void tst_websocket_peers::serverClosesOnInvalidText()
{
    KY_NEEDS(hasPeer("node"), "node's ws");
    mUrl = text("var messages = []; var ws = WebSocketServer.registerSocket('peer');"
                "ws.messageReceived.connect(function(message) { messages.push(message); }); ws.getURL()");
    mPeer = start("node", "client", {mUrl});
    QVERIFY(!mPeer->waitFor("open").isNull());
    mPeer->order("invalid");
    QVERIFY(!mPeer->waitFor("closed 1007 .*").isNull());
    QTRY_COMPARE(text("ws.isConnected() + '' + messages.length"), QString("false0"));
}

KY_TEST_MAIN(tst_websocket_peers)
#include "tst_websocket_peers.moc"
