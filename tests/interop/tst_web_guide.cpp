// The samples of the guide's page on web services, as they stand there.

#include "Peers.h"

#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>
#include <support/LoopbackHttpServer.h>
#include <support/PeerProcess.h>
#include <support/RawWebSocket.h>

#include <kyscript/KyScriptEngine.h>

#include <QDesktopServices>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QTextEdit>

class tst_web_guide : public QObject
{
    Q_OBJECT

public slots:
    void openUrl(const QUrl& inUrl) { mOpened = inUrl; }

private slots:
    void initTestCase();
    void thereAreNoOtherSamples();
    void init();
    void cleanup();

    void restService();
    void restServiceThatRefuses();
    void feed();
    void feedThatCannotBeReached();
    void feedWithItsOwnCertificate();
    void localPage();

private:
    /// The sample of this language that stands at this place under a heading.
    static QString sample(const QString& inHeading, const QString& inLanguage, int inPlace = 0);
    void run(const QString& inSource);
    QString printed() const { return mOutput->toPlainText(); }

    QUrl mOpened;
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<QTextEdit> mOutput;
    std::unique_ptr<KyScriptEngine> mEngine;
};

void tst_web_guide::initTestCase()
{
    QVERIFY(!sample("Call a REST service", "js").isEmpty());
}

/// Those of REST, feed, feed with a certificate, and local page with its HTML: each has its test below.
void tst_web_guide::thereAreNoOtherSamples()
{
    QFile file(GUIDE);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromUtf8(file.readAll()).split('\n');
    QCOMPARE(lines.filter(QRegularExpression("^```")).size(), 10);
    QCOMPARE(lines.count("```js"), 4);
    QCOMPARE(lines.count("```html"), 1);
    for (const auto& [heading, language, place] :
         {std::tuple("Call a REST service", "js", 0), std::tuple("Subscribe to a feed", "js", 0),
          std::tuple("Subscribe to a feed", "js", 1),
          std::tuple("Be controlled from a local web page", "js", 0),
          std::tuple("Be controlled from a local web page", "html", 0)})
        QVERIFY(!sample(heading, language, place).isEmpty());
}

void tst_web_guide::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mOutput = std::make_unique<QTextEdit>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, -1);
    mEngine->redirectPrintOutput(mOutput.get());
}

void tst_web_guide::cleanup()
{
    QDesktopServices::unsetUrlHandler("http");
    mEngine.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    mOutput.reset();
    mContracts.reset();
    mPlatform.reset();
}

QString tst_web_guide::sample(const QString& inHeading, const QString& inLanguage, int inPlace)
{
    QFile file(GUIDE);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    const QString text =
        QString::fromUtf8(file.readAll()).section("\n## " + inHeading + "\n", 1).section("\n## ", 0, 0);
    return text.section("```" + inLanguage + "\n", inPlace + 1, inPlace + 1).section("```", 0, 0);
}

void tst_web_guide::run(const QString& inSource)
{
    QVERIFY(!inSource.isEmpty());
    const QJSValue value = mEngine->QJSEngine::evaluate(inSource, "guide.js");
    QVERIFY2(!value.isError(), qPrintable(value.toString()));
}

void tst_web_guide::restService()
{
    LoopbackHttpServer server;
    server.answer("/reports", LoopbackHttpServer::reply("201 Created", "{\"id\": 17}"));
    run(sample("Call a REST service", "js")
            .replace("127.0.0.1:8080", QString("127.0.0.1:%1").arg(server.port())));
    QTRY_COMPARE(printed(), QString("stored as 17"));
    const auto& request = server.requests.at(0);
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.header("Authorization"), QByteArray("Bearer secret"));
    QCOMPARE(request.header("Content-Type"), QByteArray("application/json"));
    QCOMPARE(QJsonDocument::fromJson(request.body).object().value("patient").toString(),
             QString("Müller^Jürgen"));
}

void tst_web_guide::restServiceThatRefuses()
{
    LoopbackHttpServer server;
    server.answer("/reports", LoopbackHttpServer::reply("403 Forbidden", "no"));
    LogCapture log(3);
    run(sample("Call a REST service", "js")
            .replace("127.0.0.1:8080", QString("127.0.0.1:%1").arg(server.port())));
    QTRY_COMPARE(log.lines().size(), 2);
    QCOMPARE(log.toStrings().at(0), QString("3|MyScript|report not stored: 403 no"));
    QCOMPARE(printed(), QString());
}

void tst_web_guide::feed()
{
    RawWebSocketServer server;
    run(sample("Subscribe to a feed", "js").replace("127.0.0.1:8081", server.url("").mid(5)));
    QTRY_COMPARE(server.last()->of(RawWebSocket::Text).size(), 1);
    QCOMPARE(server.last()->of(RawWebSocket::Text).at(0).payload, QByteArray("{\"subscribe\":\"reports\"}"));
    QVERIFY(server.last()->head().startsWith("GET /feed HTTP/1.1"));
    server.last()->send(RawWebSocket::Text, "{\"kind\": \"signed\", \"patient\": \"Jürgen\"}");
    QTRY_COMPARE(printed(), QString("signed Jürgen"));
}

void tst_web_guide::feedThatCannotBeReached()
{
    LogCapture log(2);
    run(sample("Subscribe to a feed", "js")
            .replace("127.0.0.1:8081", QString("127.0.0.1:%1").arg(Peers::freePort())));
    QCOMPARE(log.take(), QStringList("2|MyScript|the feed cannot be reached"));
}

void tst_web_guide::feedWithItsOwnCertificate()
{
    KY_NEEDS(Peers::hasNode("ws"), "node's ws");
    const SelfSignedCertificate certificate;
    QVERIFY(certificate.isValid());
    PeerProcess peer(Peers::node(),
                     {Peers::file("ws_server.js"), certificate.certificate(), certificate.key()},
                     Peers::nodeEnvironment());
    const QString port = peer.waitFor("ready (\\d+)");
    QVERIFY(!port.isEmpty());
    run(sample("Subscribe to a feed", "js", 1).replace("127.0.0.1:8443", "127.0.0.1:" + port));
    QCOMPARE(printed(), QString("connected"));
    QVERIFY(!peer.waitFor("open /feed").isNull());
}

void tst_web_guide::localPage()
{
    KY_NEEDS(!Peers::program("chromium").isEmpty(), "chromium");
    KY_NEEDS(Peers::hasNode("playwright-core"), "playwright-core");
    LoopbackHttpServer pages;
    const QByteArray page = sample("Be controlled from a local web page", "html").toUtf8();
    QVERIFY(page.contains("<script>"));
    pages.answer("/remote.html", LoopbackHttpServer::reply("200 OK", page, "Content-Type: text/html\r\n"));
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("1.2.3", "Doe^Jane")});

    QDesktopServices::setUrlHandler("http", this, "openUrl");
    run(sample("Be controlled from a local web page", "js")
            .replace("127.0.0.1:8080", QString("127.0.0.1:%1").arg(pages.port())));
    QCOMPARE(mOpened.path(), QString("/remote.html"));

    PeerProcess browser(
        Peers::node(),
        {Peers::file("browser.js"), Peers::program("chromium"), mOpened.toString(QUrl::FullyEncoded)},
        Peers::nodeEnvironment());
    QVERIFY(!browser.waitFor("loaded").isNull());
    QTRY_COMPARE_WITH_TIMEOUT(mEngine->QJSEngine::evaluate("remote.isConnected()").toBool(), true, 30000);
    browser.order("(async () => { while (button.disabled) await new Promise((done) => setTimeout(done, 10));"
                  " button.click();"
                  " while (!document.querySelector('li')) await new Promise((done) => setTimeout(done, 10));"
                  " console.log(document.querySelector('li').textContent); })()");
    QVERIFY(!browser.waitFor("console Doe\\^Jane").isNull());
}

KY_TEST_MAIN(tst_web_guide)
#include "tst_web_guide.moc"
