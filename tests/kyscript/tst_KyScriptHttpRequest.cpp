#include <support/ContractWatch.h>
#include <support/FewOpenFiles.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>
#include <support/LoopbackHttpServer.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptHttpRequest.h>

#include <jxbase/JxEventLoop.h>

#include <QElapsedTimer>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>
#include <QSignalSpy>
#include <QTemporaryFile>
#include <QTest>
#include <QTimer>

class tst_KyScriptHttpRequest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // requests
    void scriptsConstructIt();
    void verbsSendTheirRequests_data();
    void verbsSendTheirRequests();
    void bodyIsUtf8();
    void noHeaderOfItsOwn();
    void headersStayInForce();
    void headerIsCutAtNul();
    void headersAreLatin1();
    void emptyHeaderIsSent();
    void requestLineOfTheLogIsLatin1();
    void urlIsParsedTolerantly();

    // answers
    void answerReachesTheScript();
    void headerKeysAreAsTheServerWroteThem();
    void headerValuesAreByteArrays();
    void emptyBodyIsAByteArray_data();
    void emptyBodyIsAByteArray();
    void statusReachesTheScript_data();
    void statusReachesTheScript();
    void failureReachesTheScript_data();
    void failureReachesTheScript();
    void vanishingServerIsAFailure();
    void redirectIsFollowed();
    void responseComesBeforeTheLogLine();
    void largeBodyIsWhole();
    void foreignReplyIsAContract();
    void noReplyIsNothing();
    void replyDeletedByOthersIsAContract();
    void manyObjectsFailInPlaceOfTheProcess();
    void requestFailsWithFewFilesLeft();
    void signalSentByAScriptIsHarmless_data();
    void signalSentByAScriptIsHarmless();

    // waiting
    void waitBelowOneReturnsAtOnce_data();
    void waitBelowOneReturnsAtOnce();
    void waitWithNothingInFlightMakesNoLoop();
    void waitEndsWithTheLastAnswer();
    void waitEndsAtItsLimit();
    void waitReusesItsLoop();
    void nestedWaitReturnsAtOnce();
    void waitServesOtherEvents();
    void waitDoesNotCountWhatIsFinishedAlready();
    void requestInTheHandlerIsWaitedFor();

    // ends
    void handlerMayDestroyTheObject();
    void hostMayDeleteTheObjectInTheHandler();
    void objectMayEndInsideItsWait();
    void objectMayEndInANestedWaitOfAnother();
    void objectMayBeCollectedInsideItsWait();
    void endOfTheObjectEndsItsRequests();
    void methodsOfAnEndedObjectAreHarmless();
    void engineMayEndWithRequestsInFlight();

    // proxy
    void proxyIsUsed();
    void proxyIsReadOnce();
    void withoutAProxyNothingIsLogged();

private:
    /// The value of a text at the top level, as text.
    QString text(const QString& inSource);
    /// Runs events until the script's `answers` holds so many.
    bool waitForAnswers(int inCount);

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<LoopbackHttpServer> mServer;
    std::unique_ptr<KyScriptEngine> mEngine;
};

namespace {

/// An address on which nothing listens.
QString closedUrl()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return QStringLiteral("http://127.0.0.1:%1/x").arg(server.serverPort());
}

void flushDeletions()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

/// Ends objects for a script, as host code may.
class Terminator : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE void kill(QObject* inObject) { delete inObject; }
    Q_INVOKABLE void turn(int inMSecs)
    {
        QEventLoop loop;
        QTimer::singleShot(inMSecs, &loop, &QEventLoop::quit);
        loop.exec();
    }
};

/// Sees the manager of a request when that gets its first reply.
class ManagerFinder : public QObject
{
public:
    ManagerFinder() { qApp->installEventFilter(this); }

    bool eventFilter(QObject* inWatched, QEvent* inEvent) override
    {
        if (inEvent->type() == QEvent::ChildAdded && !found)
            found = qobject_cast<QNetworkAccessManager*>(inWatched);
        return false;
    }

    QPointer<QNetworkAccessManager> found;
};

} // namespace

void tst_KyScriptHttpRequest::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mServer = std::make_unique<LoopbackHttpServer>();
    mServer->answer("/hello", LoopbackHttpServer::reply("200 OK", "hello"));
    mServer->answer("/other", LoopbackHttpServer::reply("200 OK", "other"));
    mServer->answer("/missing", LoopbackHttpServer::reply("404 Not Found", "no such page"));
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptHttpRequest);
    auto* terminator = new Terminator;
    mEngine->globalObject().setProperty("Host", mEngine->newQObject(terminator));
    mEngine->globalObject().setProperty("base", mServer->url(""));
    text("var answers = [];"
         "function make() {"
         "    var request = new HttpRequest();"
         "    request.response.connect(function(message, header, status) {"
         "        answers.push(String(message) + '|' + status);"
         "    });"
         "    return request;"
         "}");
}

void tst_KyScriptHttpRequest::cleanup()
{
    mEngine.reset();
    flushDeletions();
    mServer.reset();
    mContracts.reset();
    mPlatform.reset();
}

QString tst_KyScriptHttpRequest::text(const QString& inSource)
{
    const QJSValue value = mEngine->QJSEngine::evaluate(inSource, "test.js");
    return value.isError() ? "ERROR " + value.toString() : value.toString();
}

bool tst_KyScriptHttpRequest::waitForAnswers(int inCount)
{
    return QTest::qWaitFor([&] { return text("answers.length").toInt() >= inCount; }, 20000);
}

void tst_KyScriptHttpRequest::scriptsConstructIt()
{
    LogCapture log;
    QCOMPARE(text("typeof HttpRequest"), QString("function"));
    QCOMPARE(text("typeof new HttpRequest()"), QString("object"));
    QCOMPARE(text("typeof new HttpRequest(null)"), QString("object"));
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(mServer->connections, 0);
    for (const char* name :
         {"get", "post", "put", "del", "setHeader", "setSSLNoVerify", "waitForFinished", "response"})
        QCOMPARE(text(QString("typeof new HttpRequest().%1").arg(name)), QString("function"));
}

void tst_KyScriptHttpRequest::verbsSendTheirRequests_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("get") << "get(base + '/hello')" << QByteArray("GET") << QByteArray();
    QTest::newRow("post") << "post(base + '/hello', 'data')" << QByteArray("POST") << QByteArray("data");
    QTest::newRow("post nothing") << "post(base + '/hello', '')" << QByteArray("POST") << QByteArray();
    QTest::newRow("post null") << "post(base + '/hello', null)" << QByteArray("POST") << QByteArray();
    QTest::newRow("put") << "put(base + '/hello', 'data')" << QByteArray("PUT") << QByteArray("data");
    QTest::newRow("put nothing") << "put(base + '/hello', '')" << QByteArray("PUT") << QByteArray();
    QTest::newRow("del") << "del(base + '/hello')" << QByteArray("DELETE") << QByteArray();
}

void tst_KyScriptHttpRequest::verbsSendTheirRequests()
{
    QFETCH(QString, call);
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, body);
    LogCapture log;
    QCOMPARE(text("var request = make(); typeof request." + call), QString("undefined"));
    const QString url = mServer->url("/hello");
    QCOMPARE(log.take(), QStringList(QString("1||Send http %1 request: %2").arg(method, url)));
    QVERIFY(waitForAnswers(1));
    QCOMPARE(mServer->requests.size(), 1);
    QCOMPARE(mServer->requests.at(0).method, method);
    QCOMPARE(mServer->requests.at(0).target, QByteArray("/hello"));
    QCOMPARE(mServer->requests.at(0).body, body);
    QCOMPARE(text("answers"), QString("hello|200"));
    QCOMPARE(log.take(), QStringList("1||Received http response for request " + url));
}

void tst_KyScriptHttpRequest::bodyIsUtf8()
{
    text(QString::fromUtf8("var request = make(); request.setHeader('Content-Type', 'text/plain');"
                           "request.post(base + '/hello', 'ü€😀'); request.put(base + '/hello', 'ä');"));
    QVERIFY(waitForAnswers(2));
    QCOMPARE(mServer->requests.at(0).body, QByteArray("ü€😀"));
    QCOMPARE(mServer->requests.at(1).body, QByteArray("ä"));
}

/// What is sent is what the bare network manager sends.
void tst_KyScriptHttpRequest::noHeaderOfItsOwn()
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("content-type missing"));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("content-type missing"));
    text("var request = make(); request.get(base + '/hello'); request.waitForFinished(20000);"
         "request.post(base + '/hello', 'data'); request.waitForFinished(20000);");
    QNetworkAccessManager bare;
    const std::unique_ptr<QNetworkReply> got(bare.get(QNetworkRequest(mServer->url("/hello"))));
    QTRY_VERIFY(got->isFinished());
    const std::unique_ptr<QNetworkReply> posted(
        bare.post(QNetworkRequest(mServer->url("/hello")), QByteArray("data")));
    QTRY_VERIFY(posted->isFinished());

    QCOMPARE(mServer->requests.size(), 4);
    QCOMPARE(mServer->requests.at(0).headers, mServer->requests.at(2).headers);
    QCOMPARE(mServer->requests.at(1).headers, mServer->requests.at(3).headers);
    QCOMPARE(mServer->requests.at(1).header("Content-Type"), QByteArray("application/x-www-form-urlencoded"));
}

void tst_KyScriptHttpRequest::headersStayInForce()
{
    text("var request = make();"
         "request.setHeader('X-Token', 'one'); request.setHeader('Content-Type', 'application/json');"
         "request.get(base + '/hello'); request.waitForFinished(20000);"
         "request.post(base + '/hello', '{}'); request.waitForFinished(20000);"
         "request.setHeader('x-token', 'two'); request.del(base + '/hello'); request.waitForFinished(20000);"
         "var other = make(); other.get(base + '/hello')");
    QVERIFY(waitForAnswers(4));
    QCOMPARE(mServer->requests.at(0).header("X-Token"), QByteArray("one"));
    QCOMPARE(mServer->requests.at(1).header("X-Token"), QByteArray("one"));
    QCOMPARE(mServer->requests.at(1).header("Content-Type"), QByteArray("application/json"));
    QCOMPARE(mServer->requests.at(2).header("X-Token"), QByteArray("two"));
    QCOMPARE(mServer->requests.at(2).count("X-Token"), 1);
    QCOMPARE(mServer->requests.at(3).count("X-Token"), 0);
}

void tst_KyScriptHttpRequest::headerIsCutAtNul()
{
    text("var request = make(); request.setHeader('X-Cut\\u0000Name', 'some\\u0000thing');"
         "request.setHeader('X-Nul', '\\u0000'); request.get(base + '/hello')");
    QVERIFY(waitForAnswers(1));
    QCOMPARE(mServer->requests.at(0).header("X-Cut"), QByteArray("some"));
    QCOMPARE(mServer->requests.at(0).header("X-Nul"), QByteArray(""));
    QCOMPARE(mServer->requests.at(0).count("X-Nul"), 1);
}

void tst_KyScriptHttpRequest::headersAreLatin1()
{
    text(QString::fromUtf8("var request = make(); request.setHeader('X-Name', 'Jürgen €');"
                           "request.get(base + '/hello')"));
    QVERIFY(waitForAnswers(1));
    QCOMPARE(mServer->requests.at(0).header("X-Name"), QByteArray("J\xfcrgen ?"));
}

/// There is no way of clearing a header, neither by an empty text nor by null.
void tst_KyScriptHttpRequest::emptyHeaderIsSent()
{
    text("var request = make(); request.setHeader('X-A', 'x'); request.setHeader('X-A', '');"
         "request.setHeader('X-B', 'x'); request.setHeader('X-B', null); request.get(base + '/hello')");
    QVERIFY(waitForAnswers(1));
    for (const char* name : {"X-A", "X-B"}) {
        QCOMPARE(mServer->requests.at(0).count(name), 1);
        QCOMPARE(mServer->requests.at(0).header(name), QByteArray(""));
    }
}

void tst_KyScriptHttpRequest::requestLineOfTheLogIsLatin1()
{
    LogCapture log;
    text(QString::fromUtf8("var request = make(); request.get(base + '/ä€%20%s')"));
    QCOMPARE(log.take(),
             QStringList(QString::fromUtf8("1||Send http GET request: %1/ä?%20%s").arg(mServer->url(""))));
    QTRY_COMPARE(mServer->requests.size(), 1);
    QCOMPARE(mServer->requests.at(0).target, QByteArray("/%C3%A4%E2%82%AC%2520%25s"));
}

void tst_KyScriptHttpRequest::urlIsParsedTolerantly()
{
    mServer->answer("/a%20b?q=%7Bx%7D%7C", LoopbackHttpServer::reply("200 OK", "tolerant"));
    text("var request = make(); request.get(base + '/a b?q={x}|')");
    QVERIFY(waitForAnswers(1));
    QCOMPARE(text("answers"), QString("tolerant|200"));
}

void tst_KyScriptHttpRequest::answerReachesTheScript()
{
    mServer->answer("/json", LoopbackHttpServer::reply("200 OK", "{\"name\": \"Jürgen\", \"list\": [1, 2]}"));
    text("var seen; var request = new HttpRequest();"
         "request.response.connect(function(message, header, status) {"
         "    var value = JSON.parse(message);"
         "    seen = [value.name, value.list[1], typeof message, message.byteLength, status, "
         "            typeof status, arguments.length].join();"
         "}); request.get(base + '/json')");
    QTRY_COMPARE(text("seen"), QString::fromUtf8("Jürgen,2,object,35,200,number,3"));
}

void tst_KyScriptHttpRequest::headerKeysAreAsTheServerWroteThem()
{
    mServer->answer("/h", LoopbackHttpServer::reply("200 OK", "x",
                                                    "X-Foo: 1\r\nx-bar: 2\r\nX-LOUD:3\r\nX-foo-2: a: b\r\n"
                                                    "Set-Cookie: a=1\r\nSet-Cookie: b=2\r\n"
                                                    "X-Twice: one\r\nX-Twice: two\r\n"));
    text("var names, found, request = new HttpRequest();"
         "request.response.connect(function(message, header) {"
         "    names = Object.keys(header).join();"
         "    found = [header['X-Foo'], header['x-bar'], header['X-LOUD'], header['X-foo-2'], "
         "             header['x-foo'], header['Set-Cookie'], header['X-Twice']].map(String).join(';');"
         "}); request.get(base + '/h')");
    QTRY_COMPARE(text("names"), QString("Content-Length,Set-Cookie,X-Foo,X-LOUD,X-Twice,X-foo-2,x-bar"));
    // Qt joins the values of a name before anybody sees them.
    QCOMPARE(text("found"), QString("1;2;3;a: b;undefined;a=1\nb=2;one, two"));
}

void tst_KyScriptHttpRequest::headerValuesAreByteArrays()
{
    mServer->answer("/h", LoopbackHttpServer::reply("200 OK", "x", "X-Bytes: \xfc\r\nX-Empty:\r\n"));
    // Qt drops a header without a value.
    text("var seen, request = new HttpRequest();"
         "request.response.connect(function(message, header) {"
         "    seen = [header['X-Bytes'] instanceof ArrayBuffer, new Uint8Array(header['X-Bytes'])[0],"
         "            typeof header['X-Empty']].join();"
         "}); request.get(base + '/h')");
    QTRY_COMPARE(text("seen"), QString("true,252,undefined"));
}

void tst_KyScriptHttpRequest::emptyBodyIsAByteArray_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("length 0") << LoopbackHttpServer::reply("200 OK", "");
    QTest::newRow("no content") << QByteArray("HTTP/1.1 204 No Content\r\n\r\n");
    QTest::newRow("error without a page") << LoopbackHttpServer::reply("500 Oops", "");
    QTest::newRow("empty chunk") << QByteArray(
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n");
}

void tst_KyScriptHttpRequest::emptyBodyIsAByteArray()
{
    QFETCH(QByteArray, answer);
    mServer->answer("/e", answer);
    text("var seen, request = new HttpRequest();"
         "request.response.connect(function(message) {"
         "    seen = [message instanceof ArrayBuffer, message.byteLength, new Uint8Array(message).length,"
         "            '[' + message + ']'].join();"
         "}); request.get(base + '/e')");
    QTRY_COMPARE(text("seen"), QString("true,0,0,[]"));
}

void tst_KyScriptHttpRequest::statusReachesTheScript_data()
{
    QTest::addColumn<QByteArray>("status");
    for (const char* status :
         {"200 OK", "201 Created", "202 Accepted", "206 Partial Content", "304 Not Modified",
          "400 Bad Request", "401 Unauthorized", "403 Forbidden", "404 Not Found", "405 Method Not Allowed",
          "409 Conflict", "410 Gone", "418 Teapot", "500 Internal Server Error", "501 Not Implemented",
          "503 Service Unavailable", "599 Odd"})
        QTest::newRow(status) << QByteArray(status);
}

void tst_KyScriptHttpRequest::statusReachesTheScript()
{
    QFETCH(QByteArray, status);
    const bool hasBody = !status.startsWith("304");
    mServer->answer("/s", LoopbackHttpServer::reply(status, hasBody ? "page" : ""));
    LogCapture log(3);
    text("var request = make(); request.get(base + '/s')");
    QVERIFY(waitForAnswers(1));
    QCOMPARE(text("answers"), QString("%1|%2").arg(hasBody ? "page" : "", status.left(3)));

    const QString url = mServer->url("/s");
    const QString error = status.startsWith("401")
                              ? QString("Host requires authentication")
                              : QString("Error transferring %1 - server replied: %2").arg(url, status.mid(4));
    const QString line = QString("3||Received http error %1 for %2 request ").arg(error, url);
    QCOMPARE(log.take(), status.left(3).toInt() >= 400 ? QStringList(line) : QStringList());
}

void tst_KyScriptHttpRequest::failureReachesTheScript_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("error");
    QTest::newRow("refused") << closedUrl() << "Connection refused";
    QTest::newRow("no host") << "http://name.invalid/"
                             << "Host name.invalid not found";
    QTest::newRow("empty") << ""
                           << "Protocol \"\" is unknown";
    QTest::newRow("no scheme") << "just text"
                               << "Protocol \"\" is unknown";
    QTest::newRow("unknown scheme") << "gopher://127.0.0.1/"
                                    << "Protocol \"gopher\" is unknown";
    QTest::newRow("no URL at all") << "http://["
                                   << "Host  not found";
    QTest::newRow("missing file") << "file:///no/such/file"
                                  << "Error opening /no/such/file: No such file or directory";
}

void tst_KyScriptHttpRequest::failureReachesTheScript()
{
    QFETCH(QString, url);
    QFETCH(QString, error);
    LogCapture log(3);
    mEngine->globalObject().setProperty("url", url);
    text("var seen, request = new HttpRequest();"
         "request.response.connect(function(message, header, status) {"
         "    seen = [message instanceof ArrayBuffer, message.byteLength, Object.keys(header).length, "
         "            typeof status].join();"
         "}); request.get(url)");
    QTRY_COMPARE_WITH_TIMEOUT(text("seen"), QString("true,0,0,undefined"), 20000);
    QTRY_COMPARE(log.lines().size(), 1);
    const QString line = log.take().constFirst();
    QVERIFY2(line.startsWith("3||Received http error " + error + " for "), qPrintable(line));
    QVERIFY2(line.endsWith(" request "), qPrintable(line));
}

void tst_KyScriptHttpRequest::vanishingServerIsAFailure()
{
    mServer->handle("/cut", [](const auto&, QTcpSocket& ioSocket) {
        ioSocket.write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\npart");
        ioSocket.flush();
        ioSocket.disconnectFromHost();
    });
    mServer->handle("/gone", [](const auto&, QTcpSocket& ioSocket) { ioSocket.abort(); });
    LogCapture log(3);
    text("var request = make(); request.get(base + '/cut'); request.waitForFinished(20000)");
    QCOMPARE(text("answers"), QString("part|200"));
    QCOMPARE(
        log.take(),
        QStringList(
            QString("3||Received http error Connection closed for %1 request ").arg(mServer->url("/cut"))));
    text("request.get(base + '/gone'); request.waitForFinished(20000)");
    QCOMPARE(text("answers[1]"), QString("|undefined"));
    QCOMPARE(
        log.take(),
        QStringList(
            QString("3||Received http error Connection closed for %1 request ").arg(mServer->url("/gone"))));
}

void tst_KyScriptHttpRequest::redirectIsFollowed()
{
    mServer->answer("/old", LoopbackHttpServer::reply("302 Found", "", "Location: /hello\r\n"));
    text("var request = make(); request.get(base + '/old')");
    QVERIFY(waitForAnswers(1));
    QCOMPARE(text("answers"), QString("hello|200"));
}

void tst_KyScriptHttpRequest::responseComesBeforeTheLogLine()
{
    KyScriptHttpRequest request;
    LogCapture log;
    QStringList atResponse;
    connect(&request, &KyScriptHttpRequest::response, this, [&] { atResponse = log.take(); });
    request.get(mServer->url("/missing"));
    request.waitForFinished(20000);
    QCOMPARE(atResponse, QStringList("1||Send http GET request: " + mServer->url("/missing")));
    QCOMPARE(
        log.take(),
        QStringList(QString("3||Received http error Error transferring %1 - server replied: Not Found for %1 "
                            "request ")
                        .arg(mServer->url("/missing"))));
}

void tst_KyScriptHttpRequest::largeBodyIsWhole()
{
    QByteArray large(16 << 20, 'x');
    for (qsizetype i = 0; i < large.size(); i += 4099)
        large[i] = char(i);
    mServer->answer("/large", LoopbackHttpServer::reply("200 OK", large));
    KyScriptHttpRequest request;
    QSignalSpy spy(&request, &KyScriptHttpRequest::response);
    request.get(mServer->url("/large"));
    request.waitForFinished(60000);
    QCOMPARE(spy.size(), 1);
    QVERIFY(spy.at(0).at(0).toByteArray() == large);

    mServer->answer("/echo", LoopbackHttpServer::reply("200 OK", "taken"));
    request.setHeader("Content-Type", "text/plain");
    request.put(mServer->url("/echo"), QString(5 << 20, QChar(0xe4)));
    request.waitForFinished(60000);
    QCOMPARE(spy.size(), 2);
    QCOMPARE(mServer->requests.constLast().body.size(), 10 << 20);
}

void tst_KyScriptHttpRequest::foreignReplyIsAContract()
{
    KyScriptHttpRequest request;
    QNetworkAccessManager other;
    QPointer<QNetworkReply> reply = other.get(QNetworkRequest(mServer->url("/hello")));
    QTRY_VERIFY(reply->isFinished());
    QSignalSpy spy(&request, &KyScriptHttpRequest::response);
    mContracts->expect("inReply.isNull() || removedReplyCount == 1");
    request.replyFinished(reply);
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy.at(0).at(0).toByteArray(), QByteArray("hello"));
    flushDeletions();
    QVERIFY(!reply);
}

void tst_KyScriptHttpRequest::noReplyIsNothing()
{
    LogCapture log;
    KyScriptHttpRequest request;
    QSignalSpy spy(&request, &KyScriptHttpRequest::response);
    request.replyFinished(nullptr);
    // Scripts can't call the slot at all: the engine knows no value of its argument.
    QVERIFY(text("make().replyFinished(null)").startsWith("ERROR "));
    QVERIFY(text("make().replyFinished(make())").startsWith("ERROR "));
    QCOMPARE(spy.size(), 0);
    QCOMPARE(text("answers.length"), QString("0"));
    QCOMPARE(log.take(), QStringList());
}

/// Its place in the list is found empty when another answer comes.
void tst_KyScriptHttpRequest::replyDeletedByOthersIsAContract()
{
    mServer->handle("/never", [](const auto&, QTcpSocket&) {});
    ManagerFinder manager;
    KyScriptHttpRequest request;
    QSignalSpy spy(&request, &KyScriptHttpRequest::response);
    request.get(mServer->url("/never"));
    QVERIFY(manager.found);
    const auto replies = manager.found->findChildren<QNetworkReply*>();
    QCOMPARE(replies.size(), 1);
    delete replies.constFirst();

    mContracts->expect("removedNullCount == 0");
    request.get(mServer->url("/hello"));
    request.waitForFinished(20000);
    QCOMPARE(spy.size(), 1);
    // It is gone from the list: the next answer finds nothing to report.
    request.get(mServer->url("/hello"));
    request.waitForFinished(20000);
    QCOMPARE(spy.size(), 2);
}

/// Each that sends has a thread, and one that finds no file left would end the process.
void tst_KyScriptHttpRequest::manyObjectsFailInPlaceOfTheProcess()
{
    const FewOpenFiles few(800);
    LogCapture log(3);
    text("var requests = []; for (var i = 0; i < 300; ++i) {"
         "    requests.push(make()); requests[i].get(base + '/hello'); }");
    QVERIFY(waitForAnswers(300));
    QCOMPARE(text("answers.filter(function(answer) { return answer === 'hello|200'; }).length"),
             QString("200"));
    QCOMPARE(text("answers.filter(function(answer) { return answer === '|undefined'; }).length"),
             QString("100"));
    const QString line =
        "3||Received http error Too many open files for " + mServer->url("/hello") + " request ";
    QCOMPARE(log.take(), QStringList(100, line));

    // Those that have gone leave their place to others.
    text("requests = null");
    mEngine->collectGarbage();
    flushDeletions();
    text("var next = make(); next.get(base + '/other')");
    QVERIFY(waitForAnswers(301));
    QCOMPARE(text("answers[300]"), QString("other|200"));
}

void tst_KyScriptHttpRequest::requestFailsWithFewFilesLeft()
{
    LogCapture log(3);
    for (const char* call : {"get(base + '/hello')", "post(base + '/hello', 'x')",
                             "put(base + '/hello', 'x')", "del(base + '/hello')"})
    {
        text("answers = []; var request = make()");
        {
            FewOpenFiles few(400);
            few.takeAllBut(50); // of an eighth
            text(QString("request.%1; request.waitForFinished(60000)").arg(call));
        }
        QCOMPARE(text("answers"), QString("|undefined"));
        QCOMPARE(log.take(), QStringList("3||Received http error Too many open files for " +
                                         mServer->url("/hello") + " request "));
        text(QString("request.setHeader('Content-Type', 'text/plain'); request.%1; "
                     "request.waitForFinished(60000)")
                 .arg(call));
        QCOMPARE(text("answers"), QString("|undefined,hello|200"));
    }
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptHttpRequest::signalSentByAScriptIsHarmless_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::newRow("list with a symbol") << "[Symbol()], {}, 200";
    QTest::newRow("map with a symbol") << "'', {a: Symbol()}, 200";
    QTest::newRow("symbol deep inside") << "'', {a: [{b: Symbol('x')}]}, [[Symbol()]]";
    QTest::newRow("symbols") << "Symbol(), Symbol(), Symbol()";
    QTest::newRow("absurd length")
        << "(function() { var a = []; a.length = 4294967295; return a; })(), {}, 1";
    QTest::newRow("deep")
        << "(function() { var n = []; for (var i = 0; i < 100000; ++i) n = [n]; return n; })(), {}, 1";
    QTest::newRow("deep map")
        << "'', (function() { var n = {}; for (var i = 0; i < 100000; ++i) n = {n: n}; return n; })(), 1";
    QTest::newRow("cycle") << "'', (function() { var o = {}; o.o = o; return o; })(), 1";
    QTest::newRow("throwing getter") << "'', {get a() { throw new Error('a'); }}, 1";
    QTest::newRow("nothing") << "null, undefined, null";
}

void tst_KyScriptHttpRequest::signalSentByAScriptIsHarmless()
{
    QFETCH(QString, arguments);
    QCOMPARE(text("var told = 0, request = new HttpRequest();"
                  "request.response.connect(function(message, header, status) { told += arguments.length; });"
                  "request.response(" +
                  arguments + "); told"),
             QString("3"));
    text("request = make(); request.get(base + '/hello')");
    QVERIFY(waitForAnswers(1));
    QCOMPARE(text("answers"), QString("hello|200"));
}

void tst_KyScriptHttpRequest::waitBelowOneReturnsAtOnce_data()
{
    QTest::addColumn<int>("msecs");
    QTest::newRow("0") << 0;
    QTest::newRow("-1") << -1;
    QTest::newRow("least") << std::numeric_limits<int>::min();
}

void tst_KyScriptHttpRequest::waitBelowOneReturnsAtOnce()
{
    QFETCH(int, msecs);
    KyScriptHttpRequest request;
    QSignalSpy spy(&request, &KyScriptHttpRequest::response);
    request.get(mServer->url("/hello"));
    request.waitForFinished(msecs);
    QCOMPARE(spy.size(), 0);
    QVERIFY(!request.findChild<JxEventLoop*>());
    QTRY_COMPARE(spy.size(), 1);
}

void tst_KyScriptHttpRequest::waitWithNothingInFlightMakesNoLoop()
{
    KyScriptHttpRequest request;
    request.waitForFinished(60000);
    QVERIFY(!request.findChild<JxEventLoop*>());
    request.get(mServer->url("/hello"));
    request.waitForFinished(20000);
    QVERIFY(request.findChild<JxEventLoop*>());
    QElapsedTimer timer;
    timer.start();
    request.waitForFinished(60000);
    QVERIFY(timer.elapsed() < 30000);
}

void tst_KyScriptHttpRequest::waitEndsWithTheLastAnswer()
{
    QTcpSocket* slow = nullptr;
    mServer->handle("/slow", [&](const auto&, QTcpSocket& ioSocket) { slow = &ioSocket; });
    KyScriptHttpRequest request;
    int handled = 0;
    connect(&request, &KyScriptHttpRequest::response, this, [&](const QVariant& inMessage) {
        ++handled;
        if (inMessage.toByteArray() == "hello" && slow)
            slow->write(LoopbackHttpServer::reply("200 OK", "slow"));
    });
    request.get(mServer->url("/slow"));
    QTRY_VERIFY(slow);
    request.get(mServer->url("/hello"));
    request.waitForFinished(60000);
    QCOMPARE(handled, 2);
}

void tst_KyScriptHttpRequest::waitEndsAtItsLimit()
{
    QTcpSocket* never = nullptr;
    mServer->handle("/never", [&](const auto&, QTcpSocket& ioSocket) { never = &ioSocket; });
    LogCapture log;
    text("var request = make(); request.get(base + '/never')");
    QTRY_VERIFY(never);
    log.take();
    QElapsedTimer timer;
    timer.start();
    text("request.waitForFinished(150)");
    QVERIFY(timer.elapsed() >= 149);
    QCOMPARE(text("answers.length"), QString("0"));
    QCOMPARE(log.take(), QStringList());

    // Nothing was cancelled: the answer still comes.
    never->write(LoopbackHttpServer::reply("200 OK", "late"));
    QVERIFY(waitForAnswers(1));
    QCOMPARE(text("answers"), QString("late|200"));
}

void tst_KyScriptHttpRequest::waitReusesItsLoop()
{
    KyScriptHttpRequest request;
    request.get(mServer->url("/hello"));
    request.waitForFinished(20000);
    const QPointer<JxEventLoop> loop = request.findChild<JxEventLoop*>();
    request.get(mServer->url("/hello"));
    request.waitForFinished(20000);
    QCOMPARE(request.findChildren<JxEventLoop*>(), QList<JxEventLoop*>{loop});
}

void tst_KyScriptHttpRequest::nestedWaitReturnsAtOnce()
{
    mServer->handle("/never", [](const auto&, QTcpSocket&) {});
    text("var steps = []; var request = new HttpRequest();"
         "request.response.connect(function(message) {"
         "    steps.push('handled'); request.waitForFinished(60000); steps.push('nested wait returned');"
         "});"
         "request.get(base + '/never'); request.get(base + '/hello'); request.waitForFinished(400);"
         "steps.push('wait returned')");
    QCOMPARE(text("steps"), QString("handled,nested wait returned,wait returned"));
}

void tst_KyScriptHttpRequest::waitServesOtherEvents()
{
    mServer->handle("/never", [](const auto&, QTcpSocket&) {});
    int ticks = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] { ++ticks; });
    timer.start(5);
    text("var other = make(); var request = make(); request.get(base + '/never'); other.get(base + '/hello');"
         "request.waitForFinished(400)");
    QVERIFY(ticks > 1);
    QCOMPARE(text("answers"), QString("hello|200"));
}

/// Replies of local data are finished before they are told.
void tst_KyScriptHttpRequest::waitDoesNotCountWhatIsFinishedAlready()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    file.write("in a file");
    file.close();
    mEngine->globalObject().setProperty("fileUrl", QUrl::fromLocalFile(file.fileName()).toString());
    text("var request = make(); request.get('data:text/plain,in%20the%20url'); request.get(fileUrl);"
         "request.waitForFinished(60000); var atOnce = answers.length");
    QCOMPARE(text("atOnce"), QString("0"));
    QVERIFY(waitForAnswers(2));
    QCOMPARE(text("answers"), QString("in the url|undefined,in a file|200"));
}

void tst_KyScriptHttpRequest::requestInTheHandlerIsWaitedFor()
{
    text("var request = new HttpRequest(); var count = 0;"
         "request.response.connect(function(message) { if (++count < 3) request.get(base + '/hello'); });"
         "request.get(base + '/hello'); request.waitForFinished(60000)");
    QCOMPARE(text("count"), QString("3"));
}

/// destroy() waits for the event loop: until then the object lives, and answers.
void tst_KyScriptHttpRequest::handlerMayDestroyTheObject()
{
    LogCapture log;
    text("var seen = 0; var request = new HttpRequest();"
         "request.response.connect(function() { ++seen; request.destroy(); Host.turn(20); });"
         "request.get(base + '/hello'); request.get(base + '/other');");
    const QPointer<QObject> watched = mEngine->globalObject().property("request").toQObject();
    QVERIFY(watched);
    QTRY_VERIFY(!watched);
    const int seen = text("seen").toInt();
    QVERIFY(seen >= 1);
    QCOMPARE(log.toStrings().filter("Received").size(), seen);
    QTest::qWait(50);
    QCOMPARE(text("seen").toInt(), seen);
}

/// Unlike destroy(), which waits for the outermost event loop, here all is over before the handler is.
void tst_KyScriptHttpRequest::hostMayDeleteTheObjectInTheHandler()
{
    auto* request = new KyScriptHttpRequest;
    const QPointer<KyScriptHttpRequest> watched(request);
    LogCapture log;
    connect(request, &KyScriptHttpRequest::response, this, [&] { delete request; });
    request->get(mServer->url("/hello"));
    QTRY_VERIFY(!watched);
    QTRY_COMPARE(log.toStrings().filter("Received http response for").size(), 1);
    QTest::qWait(0);
    flushDeletions();
}

void tst_KyScriptHttpRequest::objectMayEndInsideItsWait()
{
    mServer->handle("/never", [](const auto&, QTcpSocket&) {});
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(text("var request = new HttpRequest();"
                  "request.response.connect(function() { Host.kill(request); });"
                  "request.get(base + '/never'); request.get(base + '/hello');"
                  "request.waitForFinished(60000); 'returned'"),
             QString("returned"));
    QVERIFY(timer.elapsed() < 50000);
}

/// The answer of the first comes in the wait of the second, whose handler waits again and ends both.
void tst_KyScriptHttpRequest::objectMayEndInANestedWaitOfAnother()
{
    QCOMPARE(
        text("var first = new HttpRequest(), second = new HttpRequest();"
             "first.response.connect(function() {"
             "    second.get(base + '/other'); second.waitForFinished(20000);"
             "});"
             "second.response.connect(function() { Host.kill(first); Host.kill(second); Host.turn(20); });"
             "first.get(base + '/hello'); first.waitForFinished(20000); 'returned'"),
        QString("returned"));
}

void tst_KyScriptHttpRequest::objectMayBeCollectedInsideItsWait()
{
    mServer->handle("/never", [](const auto&, QTcpSocket&) {});
    const QPointer<QObject> watched =
        mEngine->QJSEngine::evaluate("var request = new HttpRequest(); request").toQObject();
    QVERIFY(watched);
    text("request.get(base + '/never'); var wait = request.waitForFinished; request = null");
    QTimer collect;
    connect(&collect, &QTimer::timeout, this, [&] { mEngine->collectGarbage(); });
    collect.start(10);
    text("wait(500)");
    collect.stop();
    mEngine->collectGarbage();
    flushDeletions();
    QVERIFY(!watched);
}

void tst_KyScriptHttpRequest::endOfTheObjectEndsItsRequests()
{
    QPointer<QTcpSocket> connection;
    mServer->handle("/never", [&](const auto&, QTcpSocket& ioSocket) { connection = &ioSocket; });
    auto request = std::make_unique<KyScriptHttpRequest>();
    QSignalSpy spy(request.get(), &KyScriptHttpRequest::response);
    request->get(mServer->url("/never"));
    QTRY_VERIFY(connection);
    LogCapture log;
    request.reset();
    QTRY_VERIFY(!connection);
    QCOMPARE(spy.size(), 0);
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptHttpRequest::methodsOfAnEndedObjectAreHarmless()
{
    QVERIFY(text("var request = new HttpRequest(); request.get(base + '/hello'); Host.kill(request);"
                 "request.get(base + '/hello')")
                .startsWith("ERROR TypeError"));
}

void tst_KyScriptHttpRequest::engineMayEndWithRequestsInFlight()
{
    mServer->handle("/never", [](const auto&, QTcpSocket&) {});
    text("var request = make(); request.get(base + '/never'); request.get(base + '/hello')");
    QTRY_VERIFY(mServer->requests.size() >= 2);
    mEngine.reset();
    QTest::qWait(20);
}

void tst_KyScriptHttpRequest::proxyIsUsed()
{
    mPlatform->facts.proxyHost = "127.0.0.1";
    mPlatform->facts.proxyPort = mServer->port();
    mServer->answer("http://archive.invalid/x", LoopbackHttpServer::reply("200 OK", "by the proxy"));
    LogCapture log;
    text("var request = make()");
    QCOMPARE(log.take(), QStringList(QString("1||Using proxy server 127.0.0.1:%1").arg(mServer->port())));
    text("request.get('http://archive.invalid/x')");
    QVERIFY(waitForAnswers(1));
    QCOMPARE(text("answers"), QString("by the proxy|200"));
}

void tst_KyScriptHttpRequest::proxyIsReadOnce()
{
    text("var request = make()");
    mPlatform->facts.proxyHost = "127.0.0.1";
    mPlatform->facts.proxyPort = 1;
    LogCapture log;
    text("request.get(base + '/hello')");
    QVERIFY(waitForAnswers(1));
    QCOMPARE(text("answers"), QString("hello|200"));
    QCOMPARE(log.toStrings().filter("proxy"), QStringList());

    text("var later = make(); later.get(base + '/hello')");
    QVERIFY(waitForAnswers(2));
    QCOMPARE(text("answers[1]"), QString("|undefined"));
}

void tst_KyScriptHttpRequest::withoutAProxyNothingIsLogged()
{
    LogCapture log;
    const KyScriptHttpRequest request;
    QCOMPARE(log.take(), QStringList());
}

KY_TEST_MAIN(tst_KyScriptHttpRequest)
#include "tst_KyScriptHttpRequest.moc"
