// HttpRequest against servers and a proxy that nobody here wrote.

#include "Peers.h"

#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>
#include <support/LoopbackHttpServer.h>
#include <support/PeerProcess.h>
#include <support/RawWebSocket.h>

#include <kyscript/KyScriptEngine.h>

#include <QElapsedTimer>
#include <QTest>

class tst_http_peers : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    // Python's server
    void requestsArriveWhole_data();
    void requestsArriveWhole();
    void restServiceWithATokenAndJson();
    void statusReachesTheScript_data();
    void statusReachesTheScript();
    void chunksAreJoined();
    void redirectKeepsTheVerb();
    void vanishingServerIsAFailure();
    void largeAnswerIsWhole();
    void waitLastsAsLongAsItMay();
    void manyRequestsAtOnce();
    void selfSignedServerIsRefused();
    void selfSignedServerIsAcceptedOnDemand();
    void refusalCanBeChosenAgain();

    // nginx
    void pagesOfNginx_data();
    void pagesOfNginx();
    void compressedPageIsUnpacked();
    void http2WithoutVerification();

    // tinyproxy
    void requestGoesThroughTheProxy();
    void tlsGoesThroughTheProxy();
    void proxyThatCannotReachTheHost();
    void webSocketGoesThroughTheProxy();

private:
    QString text(const QString& inSource);
    /// Starts Python's server and tells the script its address as `base`.
    void startPython(bool inSecure = false);
    void startNginx();
    void startProxy();
    void setBase(const QString& inScheme, int inPort);

    std::unique_ptr<SelfSignedCertificate> mCertificate;
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<KyScriptEngine> mEngine;
    std::unique_ptr<QTemporaryDir> mFolder;
    std::unique_ptr<PeerProcess> mPeer;
    std::unique_ptr<PeerProcess> mProxy;
    int mNginxPort = 0;
    int mNginxTlsPort = 0;
};

namespace {

bool write(const QString& inPath, const QByteArray& inBytes)
{
    QFile file(inPath);
    return file.open(QIODevice::WriteOnly) && file.write(inBytes) == inBytes.size();
}

/// Whether somebody listens on the port within a time.
bool waitForPort(int inPort)
{
    return QTest::qWaitFor(
        [&] {
            QTcpSocket socket;
            socket.connectToHost("127.0.0.1", quint16(inPort));
            return socket.waitForConnected(200);
        },
        30000);
}

} // namespace

void tst_http_peers::initTestCase()
{
    mCertificate = std::make_unique<SelfSignedCertificate>();
    QVERIFY2(mCertificate->isValid(), "the program openssl belongs to the library");
}

void tst_http_peers::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mFolder = std::make_unique<QTemporaryDir>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptHttpRequest | ScriptWebSocket);
    text("var answers = [], last;"
         "function make() {"
         "    var request = new HttpRequest();"
         "    request.response.connect(function(message, header, status) {"
         "        last = { body: String(message), header: header, status: status };"
         "        answers.push(last.body + '|' + status);"
         "    });"
         "    return request;"
         "}");
}

void tst_http_peers::cleanup()
{
    mEngine.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    mProxy.reset();
    mPeer.reset();
    mContracts.reset();
    mPlatform.reset();
    mFolder.reset();
}

QString tst_http_peers::text(const QString& inSource)
{
    const QJSValue value = mEngine->QJSEngine::evaluate(inSource, "test.js");
    return value.isError() ? "ERROR " + value.toString() : value.toString();
}

void tst_http_peers::setBase(const QString& inScheme, int inPort)
{
    mEngine->globalObject().setProperty("base", QString("%1://127.0.0.1:%2").arg(inScheme).arg(inPort));
}

void tst_http_peers::startPython(bool inSecure)
{
    QStringList arguments{Peers::file("http_server.py")};
    if (inSecure)
        arguments << mCertificate->certificate() << mCertificate->key();
    mPeer = std::make_unique<PeerProcess>(Peers::python(), arguments);
    const int port = mPeer->waitFor("ready (\\d+)").toInt();
    QVERIFY(port > 0);
    setBase(inSecure ? "https" : "http", port);
}

void tst_http_peers::startNginx()
{
    QVERIFY(QDir(mFolder->path()).mkdir("pages"));
    QVERIFY(write(mFolder->filePath("pages/index.html"), "<p>hällo</p>"));
    QVERIFY(write(mFolder->filePath("pages/large.txt"), QByteArray(300000, 'n')));
    mNginxPort = Peers::freePort();
    mNginxTlsPort = Peers::freePort();
    const QString configuration =
        QString("daemon off; master_process off; pid %1/nginx.pid; error_log stderr;"
                "events { worker_connections 64; }"
                "http {"
                "  access_log off; client_body_temp_path %1/b; proxy_temp_path %1/p; fastcgi_temp_path %1/f;"
                "  uwsgi_temp_path %1/u; scgi_temp_path %1/s;"
                "  types { text/html html; text/plain txt; }"
                "  server {"
                "    listen 127.0.0.1:%2; listen 127.0.0.1:%3 ssl http2;"
                "    ssl_certificate %4; ssl_certificate_key %5;"
                "    root %1/pages; add_header X-Mixed-Case kept always; gzip on; gzip_types text/plain;"
                "    location /told { return 201 \"$request_method $content_type $http_x_token "
                "$server_protocol\"; }"
                "    location /gone { return 410 \"gone\"; }"
                "    location /moved { return 302 /index.html; }"
                "  }"
                "}")
            .arg(mFolder->path())
            .arg(mNginxPort)
            .arg(mNginxTlsPort)
            .arg(mCertificate->certificate(), mCertificate->key());
    QVERIFY(write(mFolder->filePath("nginx.conf"), configuration.toUtf8()));
    mPeer = std::make_unique<PeerProcess>(
        Peers::program("nginx"),
        QStringList{"-e", "stderr", "-p", mFolder->path(), "-c", mFolder->filePath("nginx.conf")});
    QVERIFY2(waitForPort(mNginxPort), qPrintable(mPeer->lines.join('\n')));
    setBase("http", mNginxPort);
}

void tst_http_peers::startProxy()
{
    const int port = Peers::freePort();
    const QString configuration = QString("Port %1\nListen 127.0.0.1\nAllow 127.0.0.1\nTimeout 60\n"
                                          "LogLevel Connect\nMaxClients 20\nViaProxyName \"testproxy\"\n")
                                      .arg(port);
    QVERIFY(write(mFolder->filePath("proxy.conf"), configuration.toUtf8()));
    mProxy = std::make_unique<PeerProcess>(Peers::program("tinyproxy"),
                                           QStringList{"-d", "-c", mFolder->filePath("proxy.conf")});
    QVERIFY2(waitForPort(port), qPrintable(mProxy->lines.join('\n')));
    mPlatform->facts.proxyHost = "127.0.0.1";
    mPlatform->facts.proxyPort = port;
}

void tst_http_peers::requestsArriveWhole_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("told");
    QTest::newRow("get") << "get(base + '/a?b=c')"
                         << "GET /a?b=c []";
    QTest::newRow("post") << "post(base + '/a', 'ä€😀')"
                          << "POST /a [ä€😀]";
    QTest::newRow("put") << "put(base + '/a', 'x\\ny')"
                         << "PUT /a [x\ny]";
    QTest::newRow("post nothing") << "post(base + '/a', '')"
                                  << "POST /a []";
    QTest::newRow("del") << "del(base + '/a')"
                         << "DELETE /a []";
}

void tst_http_peers::requestsArriveWhole()
{
    QFETCH(QString, call);
    QFETCH(QString, told);
    startPython();
    text("var request = make(); request.setHeader('Content-Type', 'text/plain'); request." + call +
         "; request.waitForFinished(60000)");
    QCOMPARE(text("var told = JSON.parse(last.body); told.method + ' ' + told.path + ' [' + told.body + ']'"),
             told);
    QCOMPARE(text("last.status + String(last.header['X-Mixed-Case'])"), QString("200kept"));
}

void tst_http_peers::restServiceWithATokenAndJson()
{
    startPython();
    text("var request = make();"
         "request.setHeader('Content-Type', 'application/json');"
         "request.setHeader('Authorization', 'Bearer abc.def');"
         "request.post(base + '/reports', JSON.stringify({ patient: 'Müller', ids: [1, 2] }));"
         "request.waitForFinished(60000)");
    QCOMPARE(
        text("var told = JSON.parse(last.body), sent = JSON.parse(told.body);"
             "[told.headers['content-type'], told.headers.authorization, sent.patient, sent.ids[1]].join()"),
        QString("application/json,Bearer abc.def,Müller,2"));
}

void tst_http_peers::statusReachesTheScript_data()
{
    QTest::addColumn<int>("status");
    for (const int status : {200, 202, 400, 403, 404, 409, 422, 500, 503})
        QTest::addRow("%d", status) << status;
}

void tst_http_peers::statusReachesTheScript()
{
    QFETCH(int, status);
    startPython();
    LogCapture log(3);
    text(QString("var request = make(); request.get(base + '/status/%1'); request.waitForFinished(60000)")
             .arg(status));
    QCOMPARE(text("answers"), QString("page of the status|%1").arg(status));
    QCOMPARE(log.lines().size(), status < 400 ? 0 : 1);
}

void tst_http_peers::chunksAreJoined()
{
    startPython();
    text("var request = make(); request.get(base + '/chunks'); request.waitForFinished(60000)");
    QCOMPARE(text("answers"), QString("one two three|200"));
}

void tst_http_peers::redirectKeepsTheVerb()
{
    startPython();
    text("var request = make(); request.get(base + '/redirect'); request.waitForFinished(60000)");
    QCOMPARE(text("JSON.parse(last.body).path"), QString("/redirected"));
}

void tst_http_peers::vanishingServerIsAFailure()
{
    startPython();
    LogCapture log(3);
    text("var request = make(); request.get(base + '/vanish'); request.waitForFinished(60000)");
    QCOMPARE(text("answers"), QString("|undefined"));
    QCOMPARE(log.lines().size(), 1);
}

void tst_http_peers::largeAnswerIsWhole()
{
    startPython();
    text("var request = make(); request.get(base + '/size/16777216'); request.waitForFinished(60000)");
    QCOMPARE(text("last.body.length + ':' + last.status"), QString("16777216:200"));
}

void tst_http_peers::waitLastsAsLongAsItMay()
{
    startPython();
    QElapsedTimer timer;
    timer.start();
    text("var request = make(); request.get(base + '/slow/3'); request.waitForFinished(300)");
    QVERIFY(timer.elapsed() >= 299);
    QCOMPARE(text("answers.length"), QString("0"));
    text("request.waitForFinished(60000)");
    QCOMPARE(text("answers"), QString("slow|200"));
}

void tst_http_peers::manyRequestsAtOnce()
{
    startPython();
    text("var request = make(); for (var i = 0; i < 200; ++i) request.get(base + '/size/' + i);"
         "request.waitForFinished(110000)");
    QCOMPARE(text("answers.length"), QString("200"));
    QCOMPARE(text("answers.map(function(answer) { return answer.length - 4; }).sort(function(a, b) "
                  "{ return a - b; }).every(function(size, index) { return size === index; })"),
             QString("true"));
}

void tst_http_peers::selfSignedServerIsRefused()
{
    startPython(true);
    LogCapture log(3);
    text("var request = make(); request.get(base + '/'); request.waitForFinished(60000)");
    QCOMPARE(text("answers"), QString("|undefined"));
    QCOMPARE(log.lines().size(), 1);
    QVERIFY2(log.toStrings().at(0).startsWith("3||Received http error SSL handshake failed"),
             qPrintable(log.toStrings().at(0)));
}

void tst_http_peers::selfSignedServerIsAcceptedOnDemand()
{
    startPython(true);
    text("var request = make(); request.setSSLNoVerify();"
         "request.get(base + '/status/200'); request.waitForFinished(60000);"
         "request.post(base + '/status/202', ''); request.waitForFinished(60000);");
    QCOMPARE(text("answers"), QString("page of the status|200,page of the status|202"));
    // The choice is that of one object.
    text("answers = []; var first = make(), second = make();"
         "first.get(base + '/status/200'); second.get(base + '/status/200'); second.waitForFinished(60000)");
    QTRY_COMPARE(text("answers"), QString("|undefined,|undefined"));
}

void tst_http_peers::refusalCanBeChosenAgain()
{
    startPython(true);
    text("var request = make(); request.setSSLNoVerify(true); request.setSSLNoVerify(false);"
         "request.get(base + '/status/200'); request.waitForFinished(60000)");
    QCOMPARE(text("answers"), QString("|undefined"));
}

void tst_http_peers::pagesOfNginx_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("answer");
    QTest::newRow("page") << "get(base + '/index.html')"
                          << "<p>hällo</p>|200";
    QTest::newRow("folder") << "get(base + '/')"
                            << "<p>hällo</p>|200";
    QTest::newRow("told") << "post(base + '/told', 'x')"
                          << "POST application/json secret HTTP/1.1|201";
    QTest::newRow("deleted") << "del(base + '/told')"
                             << "DELETE application/json secret HTTP/1.1|201";
    QTest::newRow("gone") << "get(base + '/gone')"
                          << "gone|410";
    QTest::newRow("moved") << "get(base + '/moved')"
                           << "<p>hällo</p>|200";
}

void tst_http_peers::pagesOfNginx()
{
    KY_NEEDS(!Peers::program("nginx").isEmpty(), "nginx");
    QFETCH(QString, call);
    QFETCH(QString, answer);
    startNginx();
    text("var request = make(); request.setHeader('X-Token', 'secret');"
         "request.setHeader('Content-Type', 'application/json'); request." +
         call + "; request.waitForFinished(60000)");
    QCOMPARE(text("answers"), answer);
    QCOMPARE(text("String(last.header['X-Mixed-Case'])"), QString("kept"));
    text("request.get(base + '/missing'); request.waitForFinished(60000)");
    QCOMPARE(text("last.status"), QString("404"));
    text("request.put(base + '/index.html', 'x'); request.waitForFinished(60000)");
    QCOMPARE(text("last.status"), QString("405"));
}

void tst_http_peers::compressedPageIsUnpacked()
{
    KY_NEEDS(!Peers::program("nginx").isEmpty(), "nginx");
    startNginx();
    text("var request = make(); request.get(base + '/large.txt'); request.waitForFinished(60000)");
    QCOMPARE(text("last.body.length + last.body[0]"), QString("300000n"));
}

/// Names of headers are in small letters there: that is how the server sends them.
void tst_http_peers::http2WithoutVerification()
{
    KY_NEEDS(!Peers::program("nginx").isEmpty(), "nginx");
    startNginx();
    setBase("https", mNginxTlsPort);
    text("var request = make(); request.setSSLNoVerify(); request.setHeader('X-Token', 'secret');"
         "request.setHeader('Content-Type', 'text/plain');"
         "request.post(base + '/told', 'x'); request.waitForFinished(60000)");
    QCOMPARE(text("answers"), QString("POST text/plain secret HTTP/2.0|201"));
    QCOMPARE(text("last.header['x-mixed-case'] + typeof last.header['X-Mixed-Case']"),
             QString("keptundefined"));
}

void tst_http_peers::requestGoesThroughTheProxy()
{
    KY_NEEDS(!Peers::program("tinyproxy").isEmpty(), "tinyproxy");
    startPython();
    startProxy();
    text("var request = make(); request.setHeader('Content-Type', 'text/plain');"
         "request.post(base + '/x', 'through'); request.waitForFinished(60000)");
    QCOMPARE(text("var told = JSON.parse(last.body); told.body + told.headers.via"),
             QString("through1.1 testproxy (tinyproxy/1.11.1)"));
}

void tst_http_peers::tlsGoesThroughTheProxy()
{
    KY_NEEDS(!Peers::program("tinyproxy").isEmpty(), "tinyproxy");
    startPython(true);
    startProxy();
    text("var request = make(); request.setSSLNoVerify(); request.get(base + '/status/200');"
         "request.waitForFinished(60000)");
    QCOMPARE(text("answers"), QString("page of the status|200"));
    QVERIFY(!mProxy->waitFor(".*CONNECT 127.0.0.1:\\d+ .*").isNull());
}

void tst_http_peers::proxyThatCannotReachTheHost()
{
    KY_NEEDS(!Peers::program("tinyproxy").isEmpty(), "tinyproxy");
    startProxy();
    setBase("http", Peers::freePort());
    text("var request = make(); request.get(base + '/'); request.waitForFinished(60000)");
    QCOMPARE(text("last.status >= 500"), QString("true"));
}

void tst_http_peers::webSocketGoesThroughTheProxy()
{
    KY_NEEDS(!Peers::program("tinyproxy").isEmpty(), "tinyproxy");
    startProxy();
    RawWebSocketServer server;
    mEngine->globalObject().setProperty("url", server.url());
    LogCapture log;
    QCOMPARE(text("var messages = []; var ws = new WebSocket();"
                  "ws.messageReceived.connect(function(message) { messages.push(message); }); ws.open(url)"),
             QString("true"));
    QCOMPARE(log.toStrings().at(0),
             QString("1||WebSocket: Using proxy server 127.0.0.1:%1").arg(mPlatform->facts.proxyPort));
    QVERIFY(!mProxy->waitFor(".*CONNECT 127.0.0.1:\\d+ .*").isNull());
    server.last()->send(RawWebSocket::Text, "through");
    QTRY_COMPARE(text("messages"), QString("through"));
}

KY_TEST_MAIN(tst_http_peers)
#include "tst_http_peers.moc"
