#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>
#include <support/ModalAnswer.h>
#include <support/RawWebSocket.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptWebSocket.h>
#include <kyscript/KyScriptWebSocketServer.h>

#include <jxbase/JxMessageBox.h>

#include <QApplication>
#include <QEventLoop>
#include <QNetworkProxy>
#include <QPointer>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QSslCertificate>
#include <QSslCertificateExtension>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslSocket>
#include <QTest>
#include <QTimer>
#include <QWebSocket>
#include <QWebSocketServer>

class tst_KyScriptWebSocketServer : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // registration
    void globalsAreInstances();
    void nothingListensAtFirst();
    void firstRegistrationStartsTheServer_data();
    void firstRegistrationStartsTheServer();
    void urlIsRandom();
    void sameNameGivesTheSameSocket();
    void namesAreKeys_data();
    void namesAreKeys();
    void destroyedSocketIsReplaced();
    void collectedSocketIsReplaced();
    void forgottenSocketIsCollected();
    void enginesHaveServersOfTheirOwn();
    void manyNames();

    // clients
    void clientIsJoined_data();
    void clientIsJoined();
    void strangerIsRefused_data();
    void strangerIsRefused();
    void refusalLeavesNoTrace();
    void secondClientReplacesTheFirst();
    void secondClientMayComeInAHandlerOfTheFirst();
    void joinedSocketHasNoHeartbeat();
    void joinedSocketHasNoBudget();
    void socketServesOneClientAfterTheOther();
    void heartbeatByHandOnASecondClient();
    void clientOfADestroyedSocketIsRefused();
    void handlerMayDestroyItsSocket();
    void handlerMayDestroyItsSocketAndRegisterAnew();
    void socketOpenedToItsOwnUrl();
    void registeredSocketMayBeOpenedElsewhere();
    void unfinishedClientsDisturbNobody_data();
    void unfinishedClientsDisturbNobody();
    void proxyRuleHoldsForClients();

    // failure
    void failureToListenShowsABoxEachTime();
    void registrationUnderTheBox();
    void socketWithoutAServerHasNoUrlForGood();

    // TLS
    void certificate();
    void certificateIsMadeAnew();
    void strictClientRefusesTheCertificate();
    void currentTlsIsSpoken();
    void scriptClientHasToIgnoreTheCertificate();

    // ends
    void closedIsForwarded();
    void endClosesWhatIsOpen();
    void socketsGoWithTheServer();
    void engineMayEndWithClients();
    void scriptsCannotDestroyIt();

private:
    QString text(const QString& inSource);
    /// The URL of `socket`, which is registered as "name" on the global \a inServer and collects messages.
    QString registered(const QString& inServer = QStringLiteral("WebSocketServer"));
    KyScriptWebSocketServer* server(const char* inName = "WebSocketServer") const;

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<KyScriptEngine> mEngine;
};

namespace {

void turn(int inMSecs)
{
    QEventLoop loop;
    QTimer::singleShot(inMSecs, &loop, &QEventLoop::quit);
    loop.exec();
}

void flushDeletions()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

/// A decent client, which trusts anybody.
std::unique_ptr<QWebSocket> client(const QString& inUrl)
{
    auto socket = std::make_unique<QWebSocket>();
    QSslConfiguration configuration;
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    socket->setSslConfiguration(configuration);
    socket->open(QUrl(inUrl));
    return socket;
}

/// While it lives the process can't listen: an HTTP proxy does not support that.
class NoListening
{
public:
    NoListening()
    {
        QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::HttpProxy, "127.0.0.1", 9));
    }
    ~NoListening() { QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy); }
};

class Host : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE void kill(QObject* inObject) { delete inObject; }
    Q_INVOKABLE void wait(int inMSecs) { turn(inMSecs); }
};

} // namespace

void tst_KyScriptWebSocketServer::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptWebSocketServer | ScriptWebSocket);
    mEngine->globalObject().setProperty("Host", mEngine->newQObject(new Host));
}

void tst_KyScriptWebSocketServer::cleanup()
{
    mEngine.reset();
    flushDeletions();
    mContracts.reset();
    mPlatform.reset();
}

QString tst_KyScriptWebSocketServer::text(const QString& inSource)
{
    const QJSValue value = mEngine->QJSEngine::evaluate(inSource, "test.js");
    return value.isError() ? "ERROR " + value.toString() : value.toString();
}

QString tst_KyScriptWebSocketServer::registered(const QString& inServer)
{
    return text(QString("var messages = []; var socket = %1.registerSocket('name');"
                        "socket.messageReceived.connect(function(message) { messages.push(message); });"
                        "socket.getURL()")
                    .arg(inServer));
}

KyScriptWebSocketServer* tst_KyScriptWebSocketServer::server(const char* inName) const
{
    return qobject_cast<KyScriptWebSocketServer*>(mEngine->globalObject().property(inName).toQObject());
}

void tst_KyScriptWebSocketServer::globalsAreInstances()
{
    QCOMPARE(text("typeof WebSocketServer + typeof WebSocketServerSSL"), QString("objectobject"));
    QCOMPARE(text("WebSocketServer === WebSocketServerSSL"), QString("false"));
    QVERIFY(text("new WebSocketServer()").startsWith("ERROR TypeError"));
    QVERIFY(text("new WebSocketServerSSL()").startsWith("ERROR TypeError"));
    for (const char* name : {"WebSocketServer", "WebSocketServerSSL"}) {
        QVERIFY(server(name));
        QCOMPARE(server(name)->parent(), mEngine.get());
    }
    QCOMPARE(text("typeof WebSocketServer.registerSocket + typeof WebSocketServer.closed +"
                  "typeof WebSocketServer.onConnect + typeof WebSocketServer.generateURL"),
             QString("functionfunctionundefinedundefined"));
}

void tst_KyScriptWebSocketServer::nothingListensAtFirst()
{
    LogCapture log;
    const KyScriptEngine engine(nullptr, ScriptWebSocketServer);
    QVERIFY(engine.findChildren<QWebSocketServer*>().isEmpty());
    const KyScriptWebSocketServer secure(nullptr, true);
    QVERIFY(secure.children().isEmpty());
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptWebSocketServer::firstRegistrationStartsTheServer_data()
{
    QTest::addColumn<QString>("global");
    QTest::addColumn<QString>("serverName");
    QTest::addColumn<QString>("scheme");
    QTest::newRow("plain") << "WebSocketServer"
                           << "Orvane Websocket Server"
                           << "ws";
    QTest::newRow("TLS") << "WebSocketServerSSL"
                         << "Orvane SSL Websocket Server"
                         << "wss";
}

void tst_KyScriptWebSocketServer::firstRegistrationStartsTheServer()
{
    QFETCH(QString, global);
    QFETCH(QString, serverName);
    QFETCH(QString, scheme);
    LogCapture log;
    const QString url = registered(global);
    const auto* qtServer = server(global.toLatin1())->findChild<QWebSocketServer*>();
    QVERIFY(qtServer);
    QVERIFY(qtServer->isListening());
    QCOMPARE(qtServer->serverName(), serverName);
    QCOMPARE(qtServer->serverAddress(), QHostAddress(QHostAddress::Any));
    QCOMPARE(qtServer->maxPendingConnections(), 1000);
    QCOMPARE(qtServer->secureMode(),
             scheme == "wss" ? QWebSocketServer::SecureMode : QWebSocketServer::NonSecureMode);
    const QString port = QString::number(qtServer->serverPort());
    QCOMPARE(log.take(), QStringList(QString("1||%1 is listening on port %2").arg(serverName, port)));

    const QRegularExpression form("^" + scheme + "://127\\.0\\.0\\.1:" + port +
                                  "/[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}$");
    QVERIFY2(form.match(url).hasMatch(), qPrintable(url));
    QVERIFY(form.match(text(global + ".registerSocket('other').getURL()")).hasMatch());
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(server(global.toLatin1())->findChildren<QWebSocketServer*>().size(), 1);
}

void tst_KyScriptWebSocketServer::urlIsRandom()
{
    QSet<QString> urls;
    for (int i = 0; i < 200; ++i)
        urls.insert(text(QString("WebSocketServer.registerSocket('%1').getURL()").arg(i)));
    QCOMPARE(urls.size(), 200);
}

void tst_KyScriptWebSocketServer::sameNameGivesTheSameSocket()
{
    QCOMPARE(text("var a = WebSocketServer.registerSocket('a'); var url = a.getURL();"
                  "[a === WebSocketServer.registerSocket('a'), a.getURL() === url,"
                  " a === WebSocketServer.registerSocket('b'), "
                  " url === WebSocketServer.registerSocket('b').getURL(), a.isConnected()].join()"),
             QString("true,true,false,false,false"));
}

void tst_KyScriptWebSocketServer::namesAreKeys_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << "''";
    QTest::newRow("null") << "null";
    QTest::newRow("blanks") << "'  '";
    QTest::newRow("a path") << "'/../x?a=b#c'";
    QTest::newRow("beyond Latin-1") << QString::fromUtf8("'ä€😀'");
    QTest::newRow("number") << "5";
    QTest::newRow("long") << "'x'.repeat(100000)";
    QTest::newRow("NUL") << "'a\\u0000b'";
}

void tst_KyScriptWebSocketServer::namesAreKeys()
{
    QFETCH(QString, name);
    QCOMPARE(text(QString("var socket = WebSocketServer.registerSocket(%1);"
                          "var upper = WebSocketServer.registerSocket('A'), lower = "
                          "WebSocketServer.registerSocket('a');"
                          "[socket === WebSocketServer.registerSocket(%1), upper === lower,"
                          " /\\/[0-9a-f-]{36}$/.test(socket.getURL())].join()")
                      .arg(name)),
             QString("true,false,true"));
}

void tst_KyScriptWebSocketServer::destroyedSocketIsReplaced()
{
    QCOMPARE(
        text("var old = WebSocketServer.registerSocket('a'), url = old.getURL(); Host.kill(old);"
             "var anew = WebSocketServer.registerSocket('a');"
             "[anew !== null, anew.getURL() !== url, anew === WebSocketServer.registerSocket('a')].join()"),
        QString("true,true,true"));
}

/// What the collector has taken lives on until the event loop turns, but no script can have it again.
void tst_KyScriptWebSocketServer::collectedSocketIsReplaced()
{
    const QString url = text("WebSocketServer.registerSocket('a').getURL()");
    mEngine->collectGarbage();
    QCOMPARE(
        text("var socket = WebSocketServer.registerSocket('a'); [socket !== null, typeof socket].join()"),
        QString("true,object"));
    const QString newUrl = text("socket.getURL()");
    QVERIFY(newUrl != url);
    flushDeletions();
    QCOMPARE(text("socket === WebSocketServer.registerSocket('a')"), QString("true"));
    QCOMPARE(text("socket.getURL()"), newUrl);
    const auto reached = client(newUrl);
    QTRY_COMPARE(text("socket.isConnected()"), QString("true"));
}

void tst_KyScriptWebSocketServer::forgottenSocketIsCollected()
{
    const QPointer<QObject> socket =
        mEngine->QJSEngine::evaluate("WebSocketServer.registerSocket('a')").toQObject();
    QVERIFY(socket);
    QVERIFY(!socket->parent());
    mEngine->collectGarbage();
    flushDeletions();
    QVERIFY(!socket);
}

void tst_KyScriptWebSocketServer::enginesHaveServersOfTheirOwn()
{
    KyScriptEngine other(nullptr, ScriptWebSocketServer);
    const QString url = registered();
    const QString otherUrl =
        other.QJSEngine::evaluate("WebSocketServer.registerSocket('name').getURL()").toString();
    QVERIFY(QUrl(url).port() != QUrl(otherUrl).port());
    // Nor is a path of one known to the other.
    const auto stranger =
        client(QString("ws://127.0.0.1:%1%2").arg(QUrl(otherUrl).port()).arg(QUrl(url).path()));
    QSignalSpy closed(stranger.get(), &QWebSocket::disconnected);
    QTRY_COMPARE(closed.size(), 1);
    QCOMPARE(text("socket.isConnected()"), QString("false"));
}

void tst_KyScriptWebSocketServer::manyNames()
{
    text("var sockets = []; for (var i = 0; i < 1000; ++i) {"
         "    sockets.push(WebSocketServer.registerSocket('name' + i)); }");
    const auto last = client(text("sockets[999].getURL()"));
    QTRY_COMPARE(text("sockets[999].isConnected()"), QString("true"));
    QCOMPARE(text("sockets.filter(function(socket) { return socket.isConnected(); }).length"), QString("1"));
}

void tst_KyScriptWebSocketServer::clientIsJoined_data()
{
    QTest::addColumn<QString>("global");
    QTest::newRow("plain") << "WebSocketServer";
    QTest::newRow("TLS") << "WebSocketServerSSL";
}

void tst_KyScriptWebSocketServer::clientIsJoined()
{
    QFETCH(QString, global);
    const QString url = registered(global);
    LogCapture log;
    const auto page = client(url);
    QSignalSpy received(page.get(), &QWebSocket::textMessageReceived);
    QTRY_COMPARE(text("socket.isConnected()"), QString("true"));
    QTRY_COMPARE(page->state(), QAbstractSocket::ConnectedState);
    page->sendTextMessage(QString::fromUtf8("from the page ä€😀"));
    QTRY_COMPARE(text("messages"), QString::fromUtf8("from the page ä€😀"));
    text(QString::fromUtf8("socket.sendText('from the script ä€😀')"));
    QTRY_COMPARE(received.size(), 1);
    QCOMPARE(received.at(0).at(0).toString(), QString::fromUtf8("from the script ä€😀"));
    QCOMPARE(text("socket.getURL()"), url);
    QCOMPARE(log.take(), QStringList());

    text("socket.setLogLevel(1); socket.sendText('x')");
    QCOMPARE(log.take(), QStringList(QString("1||WebSocket: sent 1 bytes on to %1\n x").arg(url)));
}

void tst_KyScriptWebSocketServer::strangerIsRefused_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    QTest::newRow("localhost") << "127.0.0.1"
                               << "localhost";
    QTest::newRow("other loopback address") << "127.0.0.1"
                                            << "127.0.0.2";
    QTest::newRow("query") << "$"
                           << "?x=1";
    QTest::newRow("empty query") << "$"
                                 << "?";
    QTest::newRow("trailing slash") << "$"
                                    << "/";
    QTest::newRow("further character") << "$"
                                       << "0";
    QTest::newRow("one character less") << ".$"
                                        << "";
    QTest::newRow("capitals") << "CAPITALS"
                              << "";
    QTest::newRow("no path") << "/[0-9a-f-]{36}"
                             << "/";
    QTest::newRow("name as path") << "/[0-9a-f-]{36}"
                                  << "/name";
    QTest::newRow("other path") << "/[0-9a-f-]{36}"
                                << "/00000000-0000-4000-8000-000000000000";
    QTest::newRow("two slashes") << "/([0-9a-f-]{36})"
                                 << "//\\1";
}

void tst_KyScriptWebSocketServer::strangerIsRefused()
{
    QFETCH(QString, from);
    QFETCH(QString, to);
    QString url = registered();
    while (!url.right(36).contains(QRegularExpression("[a-f]"))) { // so that capitals differ
        text("Host.kill(socket)");
        url = registered();
    }
    QString strange = url;
    if (from == "CAPITALS")
        strange = url.left(url.size() - 36) + url.right(36).toUpper();
    else
        strange.replace(QRegularExpression(from), to);
    QVERIFY(strange != url);
    LogCapture log;
    const auto raw = RawWebSocket::client(QUrl(strange));
    QTRY_COMPARE(raw->closeCode(), 1000);
    QCOMPARE(raw->frames.at(0).payload.size(), 2); // no reason
    QTRY_VERIFY(!raw->isOpen());
    QCOMPARE(text("socket.isConnected()"), QString("false"));
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptWebSocketServer::refusalLeavesNoTrace()
{
    const QString url = registered();
    auto* qtServer = server()->findChild<QWebSocketServer*>();
    const auto objects = [&] { return qtServer->findChildren<QObject*>().size(); };
    const auto before = objects();
    for (int i = 0; i < 50; ++i) {
        const auto raw = RawWebSocket::client(QUrl(url + "x"));
        QTRY_COMPARE(raw->closeCode(), 1000);
        QTRY_VERIFY(!raw->isOpen());
    }
    QTRY_COMPARE(objects(), before);
    QVERIFY(!qtServer->hasPendingConnections());
}

void tst_KyScriptWebSocketServer::secondClientReplacesTheFirst()
{
    const QString url = registered();
    LogCapture log;
    const auto first = RawWebSocket::client(QUrl(url));
    QTRY_COMPARE(text("socket.isConnected()"), QString("true"));
    const auto second = RawWebSocket::client(QUrl(url));
    QTRY_VERIFY(second->hasHead());
    QTRY_COMPARE(first->closeCode(), 1001);
    QTRY_VERIFY(!first->isOpen());
    QCOMPARE(second->frames.size(), 0);
    second->send(RawWebSocket::Text, "from the second");
    QTRY_COMPARE(text("messages"), QString("from the second"));
    text("socket.sendText('to the second')");
    QTRY_COMPARE(second->frames.size(), 1);
    QCOMPARE(text("socket.isConnected() + socket.getURL()"), "true" + url);
    QCOMPARE(log.take(), QStringList("3||WebSocket: Diconnected from " + url));
}

/// The socket of the first is then in the middle of telling of its message.
void tst_KyScriptWebSocketServer::secondClientMayComeInAHandlerOfTheFirst()
{
    const QString url = registered();
    text("socket.messageReceived.connect(function(message) { if (message == 'wait') Host.wait(300); })");
    const auto first = RawWebSocket::client(QUrl(url));
    QTRY_COMPARE(text("socket.isConnected()"), QString("true"));
    first->sendBytes(RawWebSocket::frame(RawWebSocket::Text, "wait", true, true) +
                     RawWebSocket::frame(RawWebSocket::Text, "told all the same", true, true));
    std::unique_ptr<RawWebSocket> second;
    QTimer::singleShot(50, this, [&] {
        second = RawWebSocket::client(QUrl(url));
        connect(second.get(), &RawWebSocket::headReceived, this,
                [&] { second->send(RawWebSocket::Text, "inside"); });
    });
    // The wait of the handler stands below this one.
    turn(600);
    QVERIFY(second);
    QCOMPARE(first->closeCode(), 1001);
    QCOMPARE(text("messages"), QString("wait,told all the same,inside"));
    second->send(RawWebSocket::Text, "still there");
    QTRY_COMPARE(text("messages"), QString("wait,told all the same,inside,still there"));
}

void tst_KyScriptWebSocketServer::joinedSocketHasNoHeartbeat()
{
    const QString url = registered();
    text("socket.setHeartbeatInterval(20)");
    const auto raw = RawWebSocket::client(QUrl(url));
    QTRY_COMPARE(text("socket.isConnected()"), QString("true"));
    turn(200);
    QCOMPARE(raw->frames.size(), 0);
}

void tst_KyScriptWebSocketServer::joinedSocketHasNoBudget()
{
    const QString url = registered();
    const auto raw = RawWebSocket::client(QUrl(url));
    QTRY_COMPARE(text("socket.isConnected()"), QString("true"));
    LogCapture log;
    raw->send(RawWebSocket::Close, RawWebSocket::closePayload(1000));
    QTRY_COMPARE(text("socket.isConnected()"), QString("false"));
    QTRY_COMPARE(log.toStrings(), QStringList("3||WebSocket: Diconnected from " + url));
    log.take();
    text("socket.onHeartbeatTimeout()");
    turn(50);
    QCOMPARE(log.take(),
             QStringList(QString("3||WebSocket: Heartbeat timout of 30000 msec for %1 reached, trying to "
                                 "reconnect ...")
                             .arg(url)));
    QCOMPARE(text("socket.isConnected() + '' + socket.open(url)"),
             QString("ERROR ReferenceError: url is not defined"));
    QCOMPARE(text("socket.open('ws://127.0.0.1:1/')"), QString("false"));
    QCOMPARE(text("socket.getURL()"), url);
}

void tst_KyScriptWebSocketServer::socketServesOneClientAfterTheOther()
{
    const QString url = registered();
    for (int i = 1; i <= 15; ++i) {
        const auto raw = RawWebSocket::client(QUrl(url));
        QTRY_COMPARE(text("socket.isConnected()"), QString("true"));
        raw->send(RawWebSocket::Text, QByteArray::number(i));
        QTRY_COMPARE(text("messages.length"), QString::number(i));
        raw->socket()->abort();
        QTRY_COMPARE(text("socket.isConnected()"), QString("false"));
    }
}

/// Each expiry counts once, however many clients the socket has had.
void tst_KyScriptWebSocketServer::heartbeatByHandOnASecondClient()
{
    const QString url = registered();
    text("socket.setHeartbeatInterval(60)");
    const auto first = RawWebSocket::client(QUrl(url));
    QTRY_COMPARE(text("socket.isConnected()"), QString("true"));
    const auto second = RawWebSocket::client(QUrl(url));
    QTRY_COMPARE(first->closeCode(), 1001);
    LogCapture log(2);
    second->answersPings = false;
    text("socket.onConnected()");
    QTRY_COMPARE(log.lines().size(), 1);
    turn(200);
    QCOMPARE(log.lines().size(), 1);
    QCOMPARE(second->of(RawWebSocket::Ping).size(), 1);
}

void tst_KyScriptWebSocketServer::clientOfADestroyedSocketIsRefused()
{
    const QString url = registered();
    const auto before = RawWebSocket::client(QUrl(url));
    QTRY_COMPARE(text("socket.isConnected()"), QString("true"));
    text("Host.kill(socket)");
    QTRY_COMPARE(before->closeCode(), 1001);
    const auto after = RawWebSocket::client(QUrl(url));
    QTRY_COMPARE(after->closeCode(), 1000);
}

void tst_KyScriptWebSocketServer::handlerMayDestroyItsSocket()
{
    const QString url = registered();
    text("socket.messageReceived.connect(function() { Host.kill(socket); Host.wait(20); })");
    const auto raw = RawWebSocket::client(QUrl(url));
    QTRY_COMPARE(text("socket.isConnected()"), QString("true"));
    raw->sendBytes(RawWebSocket::frame(RawWebSocket::Text, "one", true, true) +
                   RawWebSocket::frame(RawWebSocket::Text, "two", true, true));
    QTRY_COMPARE(raw->closeCode(), 1001);
    turn(50);
    QCOMPARE(text("messages"), QString("one"));
}

void tst_KyScriptWebSocketServer::handlerMayDestroyItsSocketAndRegisterAnew()
{
    const QString url = registered();
    text("var anew; socket.messageReceived.connect(function() {"
         "    Host.kill(socket); anew = WebSocketServer.registerSocket('name');"
         "})");
    const auto raw = RawWebSocket::client(QUrl(url));
    QTRY_COMPARE(text("socket.isConnected()"), QString("true"));
    raw->send(RawWebSocket::Text, "x");
    QTRY_COMPARE(text("typeof anew"), QString("object"));
    QVERIFY(text("anew.getURL()") != url);
    const auto next = RawWebSocket::client(QUrl(text("anew.getURL()")));
    QTRY_COMPARE(text("anew.isConnected()"), QString("true"));
}

/// It becomes its own client, which ends the end that asked for it.
void tst_KyScriptWebSocketServer::socketOpenedToItsOwnUrl()
{
    registered();
    text("var result = socket.open(socket.getURL())");
    turn(50);
    QVERIFY(text("typeof socket.isConnected()") == "boolean");
    const QString url = text("socket.getURL()");
    const auto raw = RawWebSocket::client(QUrl(url));
    QTRY_VERIFY(raw->hasHead());
    QTRY_COMPARE(text("socket.isConnected()"), QString("true"));
    raw->send(RawWebSocket::Text, "after all");
    QTRY_VERIFY(text("messages").contains("after all"));
}

void tst_KyScriptWebSocketServer::registeredSocketMayBeOpenedElsewhere()
{
    RawWebSocketServer elsewhere;
    const QString url = registered();
    mEngine->globalObject().setProperty("elsewhere", elsewhere.url());
    QCOMPARE(text("socket.open(elsewhere)"), QString("true"));
    QCOMPARE(text("socket.getURL()"), elsewhere.url());
    const auto raw = RawWebSocket::client(QUrl(url));
    QTRY_COMPARE(raw->closeCode(), 1000);
    QVERIFY(elsewhere.last()->isOpen());
}

void tst_KyScriptWebSocketServer::unfinishedClientsDisturbNobody_data()
{
    QTest::addColumn<QString>("global");
    QTest::addColumn<QByteArray>("bytes");
    for (const char* global : {"WebSocketServer", "WebSocketServerSSL"}) {
        QTest::addRow("silent, %s", global) << QString(global) << QByteArray();
        QTest::addRow("half a request, %s", global)
            << QString(global) << QByteArray("GET /x HTTP/1.1\r\nHost: 127.0.0.1\r\nUpgr");
        QTest::addRow("no WebSocket, %s", global)
            << QString(global) << QByteArray("GET / HTTP/1.1\r\nHost: x\r\n\r\n");
        QTest::addRow("garbage, %s", global)
            << QString(global) << QByteArray("\x16\x03\x01\xff\xff\0\0\r\n\r\n", 11);
        QTest::addRow("binary zeros, %s", global) << QString(global) << QByteArray(5000, '\0');
    }
}

void tst_KyScriptWebSocketServer::unfinishedClientsDisturbNobody()
{
    QFETCH(QString, global);
    QFETCH(QByteArray, bytes);
    const QString url = registered(global);
    LogCapture log;
    std::vector<std::unique_ptr<QTcpSocket>> strangers;
    for (int i = 0; i < 5; ++i) {
        auto stranger = std::make_unique<QTcpSocket>();
        stranger->connectToHost("127.0.0.1", quint16(QUrl(url).port()));
        QTRY_COMPARE(stranger->state(), QAbstractSocket::ConnectedState);
        stranger->write(bytes);
        stranger->flush();
        strangers.push_back(std::move(stranger));
    }
    turn(20);
    const auto page = client(url);
    QTRY_COMPARE(text("socket.isConnected()"), QString("true"));
    QTRY_COMPARE(page->state(), QAbstractSocket::ConnectedState);
    page->sendTextMessage("served");
    QTRY_COMPARE(text("messages"), QString("served"));
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptWebSocketServer::proxyRuleHoldsForClients()
{
    const QString url = registered();
    mPlatform->facts.proxyHost = "127.0.0.1";
    mPlatform->facts.proxyPort = 9;
    LogCapture log;
    auto raw = RawWebSocket::client(QUrl(url));
    QTRY_COMPARE(text("socket.isConnected()"), QString("true"));
    QCOMPARE(log.take(), QStringList("1||WebSocket: Using proxy server 127.0.0.1:9"));
    raw->send(RawWebSocket::Text, "direct all the same");
    QTRY_COMPARE(text("messages"), QString("direct all the same"));
}

void tst_KyScriptWebSocketServer::failureToListenShowsABoxEachTime()
{
    const NoListening noListening;
    LogCapture log;
    const auto expectBox = [&](QWidget* inWindow) {
        auto* box = qobject_cast<JxMessageBox*>(inWindow);
        QVERIFY(box);
        QCOMPARE(box->icon(), QMessageBox::Warning);
        QCOMPARE(box->text(), QString("WebSocketServer could not listen"));
        QCOMPARE(box->informativeText(), QString());
        QCOMPARE(box->standardButtons(), QMessageBox::Ok);
        ModalAnswer::clicking("OK")(box);
    };
    {
        ModalAnswer answer(expectBox);
        QCOMPARE(text("var a = WebSocketServer.registerSocket('a'); typeof a + '[' + a.getURL() + ']'"),
                 QString("object[]"));
        QVERIFY(answer.happened());
    }
    QVERIFY(!server()->findChild<QWebSocketServer*>());
    {
        ModalAnswer answer(expectBox);
        QCOMPARE(text("a === WebSocketServer.registerSocket('a')"), QString("true"));
        QVERIFY(answer.happened());
    }
    {
        ModalAnswer answer(expectBox);
        QCOMPARE(text("var b = WebSocketServer.registerSocket('b'); (a === b) + '[' + b.getURL() + ']'"),
                 QString("false[]"));
        QVERIFY(answer.happened());
    }
    {
        ModalAnswer answer(expectBox);
        QCOMPARE(text("typeof WebSocketServerSSL.registerSocket('a')"), QString("object"));
        QVERIFY(answer.happened());
    }
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptWebSocketServer::registrationUnderTheBox()
{
    auto noListening = std::make_unique<NoListening>();
    ModalAnswer answer([&](QWidget* inWindow) {
        noListening.reset();
        QVERIFY(text("inner = WebSocketServer.registerSocket('a'); inner.getURL()").startsWith("ws://"));
        ModalAnswer::clicking("OK")(inWindow);
    });
    QCOMPARE(text("var inner; var outer = WebSocketServer.registerSocket('a'); inner === outer"),
             QString("true"));
    QCOMPARE(server()->findChildren<QWebSocketServer*>().size(), 1);
}

void tst_KyScriptWebSocketServer::socketWithoutAServerHasNoUrlForGood()
{
    {
        const NoListening noListening;
        ModalAnswer answer(ModalAnswer::clicking("OK"));
        text("var early = WebSocketServer.registerSocket('early')");
    }
    QCOMPARE(text("WebSocketServer.registerSocket('early') === early"), QString("true"));
    QCOMPARE(text("'[' + early.getURL() + ']'"), QString("[]"));
    QVERIFY(text("WebSocketServer.registerSocket('late').getURL()").startsWith("ws://127.0.0.1:"));
    QCOMPARE(text("'[' + early.getURL() + ']'"), QString("[]"));
}

void tst_KyScriptWebSocketServer::certificate()
{
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-2);
    const QString url = registered("WebSocketServerSSL");
    const QDateTime after = QDateTime::currentDateTimeUtc().addSecs(2);
    const QSslConfiguration configuration =
        server("WebSocketServerSSL")->findChild<QWebSocketServer*>()->sslConfiguration();
    QCOMPARE(configuration.peerVerifyMode(), QSslSocket::VerifyNone);
    QCOMPARE(configuration.protocol(), QSsl::TlsV1_2OrLater);

    // What a client gets is that certificate.
    QSslSocket peer;
    peer.setPeerVerifyMode(QSslSocket::VerifyNone);
    peer.connectToHostEncrypted("127.0.0.1", quint16(QUrl(url).port()));
    QTRY_VERIFY(peer.isEncrypted());
    const QSslCertificate found = peer.peerCertificate();
    QCOMPARE(found, configuration.localCertificate());
    QCOMPARE(peer.peerCertificateChain().size(), 1);

    QVERIFY(found.isSelfSigned());
    QCOMPARE(found.version(), QByteArray("1"));
    QCOMPARE(found.serialNumber(), QByteArray("01"));
    QVERIFY(found.effectiveDate() >= before && found.effectiveDate() <= after);
    QCOMPARE(found.effectiveDate().secsTo(found.expiryDate()), qint64(31536000));
    for (const auto& [field, value] : {std::pair(QSslCertificate::CountryName, "DE"),
                                       std::pair(QSslCertificate::Organization, "Orvane Imaging"),
                                       std::pair(QSslCertificate::CommonName, "localhost")})
    {
        QCOMPARE(found.subjectInfo(field), QStringList(value));
        QCOMPARE(found.issuerInfo(field), QStringList(value));
    }
    QCOMPARE(found.subjectInfoAttributes().size(), 3);
    QVERIFY(found.extensions().isEmpty());

    const QSslKey key = found.publicKey();
    QCOMPARE(key.algorithm(), QSsl::Rsa);
    QCOMPARE(key.length(), 2048);
    // 65537, at the end of the key's DER form.
    QVERIFY(key.toDer().endsWith(QByteArray("\x02\x03\x01\x00\x01", 5)));
    const QString told = found.toText();
    QVERIFY(told.contains("sha256WithRSAEncryption"));
    QVERIFY(told.contains(QRegularExpression("C ?= ?DE, O ?= ?Orvane Imaging, CN ?= ?localhost")));
}

void tst_KyScriptWebSocketServer::certificateIsMadeAnew()
{
    registered("WebSocketServerSSL");
    const auto of = [](KyScriptWebSocketServer* inServer) {
        return inServer->findChild<QWebSocketServer*>()->sslConfiguration().localCertificate();
    };
    const QSslCertificate first = of(server("WebSocketServerSSL"));
    KyScriptWebSocketServer second(nullptr, true);
    const std::unique_ptr<QObject> socket(second.registerSocket("x"));
    QVERIFY(first.publicKey() != of(&second).publicKey());
    // One start, one certificate.
    text("WebSocketServerSSL.registerSocket('other')");
    QCOMPARE(of(server("WebSocketServerSSL")), first);
}

void tst_KyScriptWebSocketServer::strictClientRefusesTheCertificate()
{
    const QString url = registered("WebSocketServerSSL");
    QWebSocket strict;
    QList<QSslError> errors;
    connect(&strict, &QWebSocket::sslErrors, this,
            [&](const QList<QSslError>& inErrors) { errors = inErrors; });
    QSignalSpy ended(&strict, &QWebSocket::disconnected);
    strict.open(QUrl(url));
    QTRY_COMPARE(ended.size(), 1);
    QVERIFY(std::any_of(errors.begin(), errors.end(), [](const QSslError& inError) {
        return inError.error() == QSslError::SelfSignedCertificate;
    }));
    QCOMPARE(text("socket.isConnected()"), QString("false"));
}

/// What is older is ruled out by the configuration; see certificate().
void tst_KyScriptWebSocketServer::currentTlsIsSpoken()
{
    const QString url = registered("WebSocketServerSSL");
    for (const QSsl::SslProtocol protocol : {QSsl::TlsV1_2, QSsl::TlsV1_3}) {
        QSslSocket peer;
        peer.setPeerVerifyMode(QSslSocket::VerifyNone);
        peer.setProtocol(protocol);
        peer.connectToHostEncrypted("127.0.0.1", quint16(QUrl(url).port()));
        QTRY_VERIFY(peer.isEncrypted());
        QCOMPARE(peer.sessionProtocol(), protocol);
    }
}

void tst_KyScriptWebSocketServer::scriptClientHasToIgnoreTheCertificate()
{
    const QString url = registered("WebSocketServerSSL");
    mEngine->globalObject().setProperty("url", url);
    LogCapture log;
    QCOMPARE(text("var ws = new WebSocket(); ws.setHeartbeatInterval(-1); ws.open(url)"), QString("false"));
    QCOMPARE(log.take(), QStringList({"1||WebSocket: received ssl error form " + url,
                                      "1||WebSocket: received error code (13) form " + url}));
    text("ws.setIgnoreSslErrors(); ws.onHeartbeatTimeout()");
    QCOMPARE(text("ws.isConnected()"), QString("true"));
    QTRY_COMPARE(text("socket.isConnected()"), QString("true"));
    text("ws.sendText('by TLS')");
    QTRY_COMPARE(text("messages"), QString("by TLS"));
    // Told, and accepted.
    QVERIFY(log.toStrings().contains("1||WebSocket: Connected to " + url));
}

void tst_KyScriptWebSocketServer::closedIsForwarded()
{
    registered();
    text("var closed = 0; WebSocketServer.closed.connect(function() { ++closed; })");
    server()->findChild<QWebSocketServer*>()->close();
    QTRY_COMPARE(text("closed"), QString("1"));
}

void tst_KyScriptWebSocketServer::endClosesWhatIsOpen()
{
    auto own = std::make_unique<KyScriptWebSocketServer>(nullptr, false);
    const QPointer<QObject> socket = own->registerSocket("a");
    const auto raw = RawWebSocket::client(QUrl(qobject_cast<KyScriptWebSocket*>(socket)->getURL()));
    QTRY_VERIFY(qobject_cast<KyScriptWebSocket*>(socket)->isConnected());
    const int port = QUrl(qobject_cast<KyScriptWebSocket*>(socket)->getURL()).port();
    own.reset();
    QVERIFY(socket);
    flushDeletions();
    QVERIFY(!socket);
    QTRY_VERIFY(!raw->isOpen());
    QTcpSocket late;
    late.connectToHost("127.0.0.1", quint16(port));
    QTRY_COMPARE(late.error(), QAbstractSocket::ConnectionRefusedError);
}

void tst_KyScriptWebSocketServer::socketsGoWithTheServer()
{
    auto own = std::make_unique<KyScriptWebSocketServer>(nullptr, false);
    QStringList gone;
    for (const char* name : {"b", "a", "", "C", "c"}) {
        connect(own->registerSocket(name), &QObject::destroyed, this, [&gone, name] { gone.append(name); });
    }
    own.reset();
    QCOMPARE(gone, QStringList());
    flushDeletions();
    QCOMPARE(gone, QStringList({"", "C", "a", "b", "c"}));

    KyScriptWebSocketServer unused(nullptr, false);
    Q_UNUSED(unused)
}

void tst_KyScriptWebSocketServer::engineMayEndWithClients()
{
    const auto plain = RawWebSocket::client(QUrl(registered()));
    QTRY_COMPARE(text("socket.isConnected()"), QString("true"));
    const auto waiting = RawWebSocket::client(QUrl(text("socket.getURL()") + "x"));
    mEngine.reset();
    QTRY_COMPARE(plain->closeCode(), 1001);
    QTRY_VERIFY(!waiting->isOpen());
}

void tst_KyScriptWebSocketServer::scriptsCannotDestroyIt()
{
    QCOMPARE(
        text("try { WebSocketServer.destroy(); } catch (e) {}"
             "try { WebSocketServerSSL.destroy(); } catch (e) {} typeof WebSocketServer.registerSocket('a')"),
        QString("object"));
}

KY_TEST_MAIN(tst_KyScriptWebSocketServer)
#include "tst_KyScriptWebSocketServer.moc"
