// A page in a real browser that connects to a URL which a script has published.

#include "Peers.h"

#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>
#include <support/PeerProcess.h>

#include <kyscript/KyScriptEngine.h>

#include <QTest>
#include <QUrl>

class tst_browser_page : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void pageTalksToTheScript_data();
    void pageTalksToTheScript();
    void pageWithAnotherPathIsRefused();

private:
    QString text(const QString& inSource);
    std::unique_ptr<PeerProcess> open(const QString& inUrl);

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<KyScriptEngine> mEngine;
};

void tst_browser_page::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptWebSocketServer);
}

void tst_browser_page::cleanup()
{
    mEngine.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    mContracts.reset();
    mPlatform.reset();
}

QString tst_browser_page::text(const QString& inSource)
{
    const QJSValue value = mEngine->QJSEngine::evaluate(inSource, "test.js");
    return value.isError() ? "ERROR " + value.toString() : value.toString();
}

/// The page of these tests, which connects to \a inUrl.
std::unique_ptr<PeerProcess> tst_browser_page::open(const QString& inUrl)
{
    QUrl page = QUrl::fromLocalFile(Peers::file("page.html"));
    page.setFragment(inUrl);
    return std::make_unique<PeerProcess>(
        Peers::node(), QStringList{Peers::file("browser.js"), Peers::program("chromium"), page.toString()},
        Peers::nodeEnvironment());
}

void tst_browser_page::pageTalksToTheScript_data()
{
    QTest::addColumn<QString>("server");
    QTest::newRow("plain") << "WebSocketServer";
    QTest::newRow("TLS") << "WebSocketServerSSL";
}

void tst_browser_page::pageTalksToTheScript()
{
    QFETCH(QString, server);
    KY_NEEDS(!Peers::program("chromium").isEmpty(), "chromium");
    KY_NEEDS(Peers::hasNode("playwright-core"), "playwright-core");
    const QString url = text(QString("var messages = []; var socket = %1.registerSocket('page');"
                                     "socket.messageReceived.connect(function(message) {"
                                     "    messages.push(message.length < 100 ? message : message.length);"
                                     "    socket.sendText('got ' + message);"
                                     "}); socket.getURL()")
                                 .arg(server));
    LogCapture log(2);
    const auto browser = open(url);
    QVERIFY(!browser->waitFor("console open").isNull());
    QTRY_COMPARE(text("messages"), QString("hello from the page"));
    QVERIFY(!browser->waitFor("console message got hello from the page").isNull());
    QVERIFY(!browser->lines.filter("failed").size());

    browser->order("socket.send('ä€😀')");
    QVERIFY(!browser->waitFor("console message got ä€😀").isNull());
    browser->order("socket.send('x'.repeat(1048576))");
    QVERIFY(!browser->waitFor("console message 1048580").isNull());
    QCOMPARE(text("messages.join('|')"), QString("hello from the page|ä€😀|1048576"));
    QCOMPARE(log.take(), QStringList());

    browser->order("socket.close(4001, 'done')");
    QTRY_COMPARE(text("socket.isConnected()"), QString("false"));
    QTRY_COMPARE(log.toStrings(), QStringList("3||WebSocket: Diconnected from " + url));
    QVERIFY(!browser->waitFor("console closed 4001 true").isNull());

    // A page that is loaded again finds the socket again.
    browser->order("location.reload()");
    QTRY_COMPARE_WITH_TIMEOUT(text("messages.length"), QString("4"), 30000);
    text("socket = null");
    mEngine->collectGarbage();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

/// The page greets as soon as it is in. Whether that is read before the connection ends, and the end counts
/// as a clean one, is chance.
void tst_browser_page::pageWithAnotherPathIsRefused()
{
    KY_NEEDS(!Peers::program("chromium").isEmpty(), "chromium");
    KY_NEEDS(Peers::hasNode("playwright-core"), "playwright-core");
    const QString url = text("var socket = WebSocketServer.registerSocket('page'); socket.getURL()");
    const auto browser = open(url + "0");
    QVERIFY(!browser->waitFor("console closed 1000 (true|false)").isNull());
    QCOMPARE(text("socket.isConnected()"), QString("false"));
}

KY_TEST_MAIN(tst_browser_page)
#include "tst_browser_page.moc"
