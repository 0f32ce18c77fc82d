// The samples of the guide's page on the browser, as they stand there.

#include "Peers.h"

#include <support/BrowserPeer.h>
#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LoopbackHttpServer.h>
#include <support/PeerProcess.h>

#include <common/KyReportEditor.h>
#include <kyscript/KyScriptEngine.h>

#include <QDir>
#include <QFile>
#include <QTest>
#include <QTextEdit>

class tst_browser_guide : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void pageIsShown();
    void sizeAndState();
    void formFillsTheReport();

private:
    static QString sample(const QString& inHeading, const QString& inLanguage);
    void run(const QString& inSource);
    /// What the browser got behind its geometry, once it ends like that.
    QByteArray commands(const QByteArray& inEnd);

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<BrowserPeer> mPeer;
    std::unique_ptr<QTextEdit> mOutput;
    std::unique_ptr<KyScriptEngine> mEngine;
};

void tst_browser_guide::initTestCase()
{
    QVERIFY(!sample("Show a page", "js").isEmpty());
}

/// The peer stands where the module looks for the browser.
void tst_browser_guide::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mPeer = std::make_unique<BrowserPeer>();
    qputenv("XDG_DATA_HOME", mPeer->file("data").toUtf8());
    qputenv("KY_BROWSER_LOG", mPeer->file("log").toUtf8());
    qunsetenv("PROGRAMFILES");
    const QString place = mPeer->file("data/Ky/kytest");
    QVERIFY(QDir().mkpath(place));
    QVERIFY(QFile::link(mPeer->program(), place + "/ovbrowser.exe"));
    mOutput = std::make_unique<QTextEdit>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, -1);
    mEngine->redirectPrintOutput(mOutput.get());
}

void tst_browser_guide::cleanup()
{
    mEngine.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    mOutput.reset();
    mPeer.reset();
    mContracts.reset();
    mPlatform.reset();
}

QString tst_browser_guide::sample(const QString& inHeading, const QString& inLanguage)
{
    QFile file(BROWSER_GUIDE);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    const QString text =
        QString::fromUtf8(file.readAll()).section("\n## " + inHeading + "\n", 1).section("\n## ", 0, 0);
    return text.section("```" + inLanguage + "\n", 1, 1).section("```", 0, 0);
}

void tst_browser_guide::run(const QString& inSource)
{
    QVERIFY(!inSource.isEmpty());
    const QJSValue value = mEngine->QJSEngine::evaluate(inSource, "guide.js");
    QVERIFY2(!value.isError(), qPrintable(value.toString()));
}

QByteArray tst_browser_guide::commands(const QByteArray& inEnd)
{
    if (!QTest::qWaitFor([&] { return mPeer->received().endsWith(inEnd); }, 30000))
        qWarning("no %s at the end", inEnd.constData());
    const QByteArray all = mPeer->received();
    return all.mid(all.indexOf(';') + 1);
}

void tst_browser_guide::pageIsShown()
{
    run(sample("Show a page", "js"));
    QCOMPARE(commands("SHOW;"), QByteArray("URL http://127.0.0.1:8080/help.html;SHOW;"));
}

void tst_browser_guide::sizeAndState()
{
    run(sample("Which browser it is", "js"));
    QCOMPARE(commands("HIDE;"),
             QByteArray("URL http://127.0.0.1:8080/help.html;ZOOM 125;SHOW;ISHIDDEN;HIDE;"));
    QCOMPARE(mOutput->toPlainText(), QString("true true"));
}

void tst_browser_guide::formFillsTheReport()
{
    KY_NEEDS(!Peers::program("chromium").isEmpty(), "chromium");
    KY_NEEDS(Peers::hasNode("playwright-core"), "playwright-core");
    KyReportEditor editor;
    LoopbackHttpServer pages;
    pages.answer("/form.html",
                 LoopbackHttpServer::reply("200 OK", sample("A form that fills the report", "html").toUtf8(),
                                           "Content-Type: text/html\r\n"));
    run(sample("A form that fills the report", "js")
            .replace("127.0.0.1:8080", QString("127.0.0.1:%1").arg(pages.port())));
    const QString command = QString::fromUtf8(commands("SHOW;"));
    QVERIFY(command.startsWith("URL http://"));

    PeerProcess browser(
        Peers::node(),
        {Peers::file("browser.js"), Peers::program("chromium"), command.section(' ', 1).section(';', 0, 0)},
        Peers::nodeEnvironment());
    QVERIFY(!browser.waitFor("loaded").isNull());
    browser.order("(async () => { while (fill.disabled) await new Promise((done) => setTimeout(done, 10));"
                  " fill.click();"
                  " while (!document.title) await new Promise((done) => setTimeout(done, 10));"
                  " console.log(document.title); })()");
    QVERIFY(!browser.waitFor("console written").isNull());
    QCOMPARE(editor.document().toPlainText(), QString("No focal lesion."));
}

KY_TEST_MAIN(tst_browser_guide)
#include "tst_browser_guide.moc"
