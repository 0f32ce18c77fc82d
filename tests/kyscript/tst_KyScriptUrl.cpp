#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>

#include <kyscript/KyScriptEngine.h>

#include <QDesktopServices>
#include <QTest>
#include <QUrl>

class tst_KyScriptUrl : public QObject
{
    Q_OBJECT

public slots:
    void taken(const QUrl& inUrl) { mTaken.append(inUrl.toString(QUrl::FullyEncoded)); }

private slots:
    void init();
    void cleanup();

    void desktopOpensTheUrl();
    void urlIsParsedTolerantly();
    void desktopSaysNo_data();
    void desktopSaysNo();
    void scriptsCannotDestroyIt();

private:
    QString text(const QString& inSource);

    QStringList mTaken;
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<KyScriptEngine> mEngine;
};

void tst_KyScriptUrl::init()
{
    mTaken.clear();
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptUrl);
    QDesktopServices::setUrlHandler("kytest", this, "taken");
}

void tst_KyScriptUrl::cleanup()
{
    QDesktopServices::unsetUrlHandler("kytest");
    mEngine.reset();
    mContracts.reset();
    mPlatform.reset();
}

QString tst_KyScriptUrl::text(const QString& inSource)
{
    return mEngine->QJSEngine::evaluate(inSource).toString();
}

void tst_KyScriptUrl::desktopOpensTheUrl()
{
    LogCapture log;
    QCOMPARE(text("Url.open('kytest://host/page?a=b#c')"), QString("true"));
    QCOMPARE(mTaken, QStringList("kytest://host/page?a=b#c"));
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptUrl::urlIsParsedTolerantly()
{
    QCOMPARE(text(QString::fromUtf8("Url.open('kytest://host/a b/ä|{x}')")), QString("true"));
    QCOMPARE(mTaken, QStringList("kytest://host/a%20b/%C3%A4%7C%7Bx%7D"));
}

void tst_KyScriptUrl::desktopSaysNo_data()
{
    QTest::addColumn<QString>("argument");
    QTest::newRow("no URL") << "'this is no URL'";
    QTest::newRow("empty") << "''";
    QTest::newRow("null") << "null";
    QTest::newRow("unknown scheme") << "'kyunknown:x'";
    QTest::newRow("unreadable") << "'http://['";
    QTest::newRow("number") << "5";
}

/// Offscreen there is no desktop that could open anything.
void tst_KyScriptUrl::desktopSaysNo()
{
    QFETCH(QString, argument);
    LogCapture log;
    QCOMPARE(text("var opened = Url.open(" + argument + "); typeof opened + opened"),
             QString("booleanfalse"));
    QCOMPARE(mTaken, QStringList());
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptUrl::scriptsCannotDestroyIt()
{
    QCOMPARE(text("try { Url.destroy(); } catch (e) {} Url.open('kytest:x')"), QString("true"));
}

KY_TEST_MAIN(tst_KyScriptUrl)
#include "tst_KyScriptUrl.moc"
