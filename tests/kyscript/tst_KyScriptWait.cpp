#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>
#include <support/LoopbackHttpServer.h>
#include <support/ModalAnswer.h>
#include <support/RawWebSocket.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptWait.h>

#include <QApplication>
#include <QTest>
#include <QTimer>

class tst_KyScriptWait : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void waitsInsideWaitsHaveALimit();
    void logTellsOnceOfWaitsLeftOut();
    void eachWaitIsLeftOutBeyondTheLimit_data();
    void eachWaitIsLeftOutBeyondTheLimit();
    void boxIsLeftOutBeyondTheLimit_data();
    void boxIsLeftOutBeyondTheLimit();
    void openIsLeftOutBeyondTheLimit();
    void programIsNotAwaitedBeyondTheLimit();
    void answersAreNotAwaitedBeyondTheLimit();
    void handlersThatWaitForEachOtherComeToAnEnd_data();
    void handlersThatWaitForEachOtherComeToAnEnd();

private:
    QString text(const QString& inSource);

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<KyScriptEngine> mEngine;
};

namespace {

const QString Line = QStringLiteral("2|Script Interface|A wait inside 100 others is left out");

/// So many waits under way that no further one takes place.
class AllWaits
{
public:
    AllWaits()
    {
        for (int i = 0; i < KyScriptWait::Deepest; ++i)
            mWaits.push_back(std::make_unique<KyScriptWait>());
    }

    const KyScriptWait& last() const { return *mWaits.back(); }

private:
    std::vector<std::unique_ptr<KyScriptWait>> mWaits;
};

} // namespace

void tst_KyScriptWait::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, -1);
}

void tst_KyScriptWait::cleanup()
{
    mEngine.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    mContracts.reset();
    mPlatform.reset();
}

QString tst_KyScriptWait::text(const QString& inSource)
{
    const QJSValue value = mEngine->QJSEngine::evaluate(inSource, "test.js");
    return value.isError() ? "ERROR " + value.toString() : value.toString();
}

void tst_KyScriptWait::waitsInsideWaitsHaveALimit()
{
    QVERIFY(KyScriptWait().mayBegin());
    {
        const AllWaits all;
        QVERIFY(all.last().mayBegin());
        const KyScriptWait beyond;
        QVERIFY(!beyond.mayBegin());
        QVERIFY(!KyScriptWait().mayBegin());
    }
    QVERIFY(KyScriptWait().mayBegin());
}

void tst_KyScriptWait::logTellsOnceOfWaitsLeftOut()
{
    LogCapture log;
    {
        const AllWaits all;
        QCOMPARE(log.take(), QStringList());
        QVERIFY(!KyScriptWait().mayBegin());
        QCOMPARE(log.take(), QStringList(Line));
        QVERIFY(!KyScriptWait().mayBegin());
        QCOMPARE(log.take(), QStringList());
    }
    const AllWaits all;
    QVERIFY(!KyScriptWait().mayBegin());
    QCOMPARE(log.take(), QStringList(Line));
}

void tst_KyScriptWait::eachWaitIsLeftOutBeyondTheLimit_data()
{
    QTest::addColumn<QString>("wait");
    QTest::newRow("sleep") << "System.sleep(100)";
    QTest::newRow("processEvents") << "System.processEvents()";
    QTest::newRow("processEvents for a while") << "System.processEvents(100)";
}

void tst_KyScriptWait::eachWaitIsLeftOutBeyondTheLimit()
{
    QFETCH(QString, wait);
    bool isServed = false;
    const auto serveOnce = [&] {
        isServed = false;
        QMetaObject::invokeMethod(
            this, [&] { isServed = true; }, Qt::QueuedConnection);
    };
    serveOnce();
    QCOMPARE(text(wait), QString("undefined"));
    QVERIFY(isServed);

    const AllWaits all;
    LogCapture log;
    serveOnce();
    QCOMPARE(text(wait), QString("undefined"));
    QVERIFY(!isServed);
    QCOMPARE(log.take(), QStringList(Line));
    QTRY_VERIFY(isServed);
}

void tst_KyScriptWait::boxIsLeftOutBeyondTheLimit_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("result");
    QTest::newRow("show") << "Message.show('x')"
                          << "undefined";
    QTest::newRow("file dialog") << "'[' + new FileDialog().getSaveFileName('a', '') + ']'"
                                 << "[]";
    QTest::newRow("question") << "'[' + Message.question('x', ['a'], 'a') + ']'"
                              << "[]";
}

void tst_KyScriptWait::boxIsLeftOutBeyondTheLimit()
{
    QFETCH(QString, call);
    QFETCH(QString, result);
    bool isShown = false;
    QTimer close;
    connect(&close, &QTimer::timeout, this, [&] {
        if (QWidget* box = QApplication::activeModalWidget()) {
            isShown = true;
            box->close();
        }
    });
    close.start(10);
    const AllWaits all;
    QCOMPARE(text(call), result);
    QVERIFY(!isShown);
}

/// The attempt goes on without being waited for.
void tst_KyScriptWait::openIsLeftOutBeyondTheLimit()
{
    RawWebSocketServer server;
    mEngine->globalObject().setProperty("url", server.url());
    {
        const AllWaits all;
        QCOMPARE(text("var ws = new WebSocket(); ws.open(url)"), QString("false"));
    }
    QTRY_COMPARE(text("ws.isConnected()"), QString("true"));
}

/// A program that still runs then is one that was waited for in vain.
void tst_KyScriptWait::programIsNotAwaitedBeyondTheLimit()
{
    const QString start = "System.processCmd('/bin/sleep', ['600'])";
    const QString end = "System.processCmd('/bin/true', [], %1)";
    QCOMPARE(text(start), QString("true"));
    ModalAnswer answer(ModalAnswer::clicking("OK"));
    LogCapture log(2);
    {
        const AllWaits all;
        QCOMPARE(text(end.arg(200000)), QString("false"));
    }
    QTRY_VERIFY(answer.happened());
    QCOMPARE(log.toStrings().value(0), Line);
    QVERIFY(log.toStrings().value(1).contains("is still running! Skipping process"));
}

void tst_KyScriptWait::answersAreNotAwaitedBeyondTheLimit()
{
    LoopbackHttpServer server;
    server.answer("/hello", LoopbackHttpServer::reply("200 OK", "hello"));
    mEngine->globalObject().setProperty("url", server.url("/hello"));
    text("var count = 0; var request = new HttpRequest();"
         "request.response.connect(function() { ++count; });");
    {
        const AllWaits all;
        QCOMPARE(text("request.get(url); request.waitForFinished(20000); count"), QString("0"));
    }
    QTRY_COMPARE(text("count"), QString("1"));
    QCOMPARE(text("request.get(url); request.waitForFinished(20000); count"), QString("2"));
}

void tst_KyScriptWait::handlersThatWaitForEachOtherComeToAnEnd_data()
{
    QTest::addColumn<QString>("wait");
    QTest::newRow("sleep") << "System.sleep(500)";
    QTest::newRow("processEvents") << "System.processEvents(500)";
    QTest::newRow("answers") << "ask()";
}

/// Each handler sets off the next and waits. Without a limit, the next comes inside the wait of the one
/// before.
void tst_KyScriptWait::handlersThatWaitForEachOtherComeToAnEnd()
{
    QFETCH(QString, wait);
    LoopbackHttpServer server;
    server.handle("/never", [](const auto&, QTcpSocket&) {});
    mEngine->globalObject().setProperty("url", server.url("/never"));
    text("var timers = [], requests = [], runs = 0, depth = 0, deepest = 0;"
         "function ask() {"
         "    var request = new HttpRequest();"
         "    requests.push(request); request.get(url); request.waitForFinished(500);"
         "}"
         "function again() {"
         "    var timer = new Timer();"
         "    timers.push(timer); timer.setSingleShot(true);"
         "    timer.timeout.connect(function() {"
         "        deepest = Math.max(deepest, ++depth);"
         "        if (++runs < 150) again();" +
         wait +
         "        ; --depth;"
         "    });"
         "    timer.start(0);"
         "}"
         "again(); " +
         wait);
    QTRY_COMPARE_WITH_TIMEOUT(text("depth"), QString("0"), 60000);
    QVERIFY(text("runs").toInt() > 1);
    QVERIFY2(text("deepest").toInt() <= KyScriptWait::Deepest, qPrintable(text("deepest")));
}

KY_TEST_MAIN(tst_KyScriptWait)
#include "tst_KyScriptWait.moc"
