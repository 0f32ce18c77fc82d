#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>

#include <kyscript/KyScriptAuthToken.h>
#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptInterface.h>

#include <ovbase/OvTokenSource.h>

#include <QPointer>
#include <QSignalSpy>

namespace {

/// Keeps its requests until the test answers them.
class SlowSource final : public OvTokenSource
{
public:
    void request(int inType, int inKey, const QString& inUserData, const Answer& inAnswer) override
    {
        requests.append(QStringLiteral("%1/%2/%3")
                            .arg(inType)
                            .arg(inKey)
                            .arg(inUserData.isEmpty() ? QStringLiteral("(empty)") : inUserData));
        answers.append(inAnswer);
    }
    void requestJwt(const QString& inName, const Answer& inAnswer) override
    {
        requests.append(QStringLiteral("JWT %1").arg(inName));
        answers.append(inAnswer);
    }

    QStringList requests;
    QList<Answer> answers;
};

} // namespace

class tst_KyScriptAuthToken : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void scriptsMakeThem();
    void constructionTakesAParent();
    void interfaceIsTheScripts();
    void defaultsAreTwoTwoAndNoUserData();
    void argumentsArePassedOn_data();
    void argumentsArePassedOn();
    void configurationIsPassedOn();
    void requestsAreTraced_data();
    void requestsAreTraced();
    void finishedCarriesTheToken();
    void generateReturnsBeforeItFinishes();
    void eachRequestEndsInOneFinished();
    void twoCallsMakeOneGenerator();
    void anUnusedTokenMakesNoGenerator();
    void cleanupEndsTokensThatWereAskedFor();
    void withoutAnEngineItIsReportedAndGoesOn();
    void withoutASourceTheTokenIsEmpty();
    void anAnswerToACollectedTokenIsDropped();
    void anAnswerAfterTheEngineIsDropped();
    void aTokenMayEndInItsHandler();
    void argumentsAreConvertedAsEver_data();
    void argumentsAreConvertedAsEver();

private:
    QJSValue run(const QString& inSource) { return mEngine->evaluate(inSource); }
    void collect()
    {
        mEngine->collectGarbage();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<LogCapture> mLog;
    std::unique_ptr<SlowSource> mSource;
    std::unique_ptr<KyScriptEngine> mEngine;
    std::size_t mGenerators = 0;
};

void tst_KyScriptAuthToken::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mLog = std::make_unique<LogCapture>();
    mSource = std::make_unique<SlowSource>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptAuthToken);
    collect();
    mGenerators = RnHandableThreaded::liveCount();
}

void tst_KyScriptAuthToken::cleanup()
{
    const QString broken = mContracts->verify();
    mEngine.reset();
    mSource.reset();
    QCoreApplication::sendPostedEvents();
    const std::size_t generators = RnHandableThreaded::liveCount();
    mLog.reset();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
    QCOMPARE(generators, mGenerators);
}

void tst_KyScriptAuthToken::scriptsMakeThem()
{
    QCOMPARE(run("typeof AuthToken").toString(), QStringLiteral("function"));
    QCOMPARE(run("typeof new AuthToken()").toString(), QStringLiteral("object"));
    const auto* made = qobject_cast<KyScriptAuthToken*>(run("var t = new AuthToken(); t").toQObject());
    QVERIFY(made);
    QCOMPARE(made->parent(), nullptr);
    KyScriptEngine without(nullptr, ScriptAllOptions & ~ScriptAuthToken);
    QCOMPARE(without.evaluate("typeof AuthToken").toString(), QStringLiteral("undefined"));
}

void tst_KyScriptAuthToken::constructionTakesAParent()
{
    QObject parent;
    const auto* child = new KyScriptAuthToken(&parent);
    QCOMPARE(child->parent(), &parent);
    const KyScriptAuthToken alone;
    QCOMPARE(alone.parent(), nullptr);
}

void tst_KyScriptAuthToken::interfaceIsTheScripts()
{
    QStringList methods;
    const QMetaObject& meta = KyScriptAuthToken::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        methods.append(QString::fromLatin1(meta.method(i).methodSignature()));
    QCOMPARE(methods, (QStringList{"finished(QString)", "generate(int,int,QString)", "generate(int,int)",
                                   "generate(int)", "generate()", "generateJWT(QString)"}));
}

void tst_KyScriptAuthToken::defaultsAreTwoTwoAndNoUserData()
{
    run("var t = new AuthToken(); t.generate()");
    QCOMPARE(mSource->requests, QStringList("2/2/(empty)"));
}

void tst_KyScriptAuthToken::argumentsArePassedOn_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("request");
    QTest::newRow("type") << "t.generate(1)"
                          << "1/2/(empty)";
    QTest::newRow("type and key") << "t.generate(1, 7)"
                                  << "1/7/(empty)";
    QTest::newRow("all") << "t.generate(-1, 0, 'for %1 \u4e2d')" << QStringLiteral("-1/0/for %1 \u4e2d");
    QTest::newRow("undefined counts as absent") << "t.generate(3, undefined)"
                                                << "3/2/(empty)";
}

void tst_KyScriptAuthToken::argumentsArePassedOn()
{
    QFETCH(QString, call);
    QFETCH(QString, request);
    run("var t = new AuthToken()");
    run(call);
    QCOMPARE(mSource->requests, QStringList(request));
}

void tst_KyScriptAuthToken::configurationIsPassedOn()
{
    run("var t = new AuthToken(); t.generateJWT('pacs'); t.generateJWT('')");
    QCOMPARE(mSource->requests, (QStringList{"JWT pacs", "JWT "}));
}

void tst_KyScriptAuthToken::requestsAreTraced_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("line");
    QTest::newRow("defaults")
        << "t.generate()"
        << "0|Script Interface|Generate authentication token (type=2, key=2, userData=)";
    QTest::newRow("all")
        << "t.generate(4, 5, 'a%1%2%s')"
        << "0|Script Interface|Generate authentication token (type=4, key=5, userData=a%1%2%s)";
    QTest::newRow("JWT") << "t.generateJWT('pacs %1')"
                         << "0|Script Interface|Generate JWT for config pacs %1";
}

void tst_KyScriptAuthToken::requestsAreTraced()
{
    QFETCH(QString, call);
    QFETCH(QString, line);
    run("var t = new AuthToken()");
    mLog->take();
    run(call);
    QCOMPARE(mLog->take(), QStringList(line));
}

void tst_KyScriptAuthToken::finishedCarriesTheToken()
{
    run("var t = new AuthToken(), got; t.finished.connect(function(token) { got = token }); t.generate()");
    mSource->answers.takeFirst()(QStringLiteral("abc.def"));
    QTRY_COMPARE(run("got").toString(), QStringLiteral("abc.def"));
}

void tst_KyScriptAuthToken::generateReturnsBeforeItFinishes()
{
    OvMemoryTokenSource atOnce;
    atOnce.token = [](int inType, int, const QString&) { return QStringLiteral("T%1").arg(inType); };
    atOnce.jwt = [](const QString& inName) { return QStringLiteral("J") + inName; };
    run("var order = []; var t = new AuthToken(); t.finished.connect(function(x) { order.push(x) });"
        "t.generate(9); order.push('returned'); t.generateJWT('n'); order.push('returned')");
    QCOMPARE(run("order.join()").toString(), QStringLiteral("returned,returned"));
    QTRY_COMPARE(run("order.join()").toString(), QStringLiteral("returned,returned,T9,Jn"));
}

void tst_KyScriptAuthToken::eachRequestEndsInOneFinished()
{
    run("var all = []; var t = new AuthToken(); t.finished.connect(function(x) { all.push(x) });"
        "t.generate(); t.generateJWT('a'); t.generate(1)");
    QCOMPARE(mSource->answers.size(), 3);
    mSource->answers.at(2)(QStringLiteral("third"));
    mSource->answers.at(0)(QStringLiteral("first"));
    mSource->answers.at(1)(QString());
    QTRY_COMPARE(run("all.join('|')").toString(), QStringLiteral("third|first|"));
    QCoreApplication::sendPostedEvents();
    QCOMPARE(run("all.length").toInt(), 3);
}

void tst_KyScriptAuthToken::twoCallsMakeOneGenerator()
{
    run("var t = new AuthToken(); t.generate(); t.generate(); t.generateJWT('x')");
    QCOMPARE(RnHandableThreaded::liveCount(), mGenerators + 1);
    QCOMPARE(mSource->requests.size(), 3);
    mSource->answers.clear();
}

void tst_KyScriptAuthToken::anUnusedTokenMakesNoGenerator()
{
    run("var t = new AuthToken()");
    QCOMPARE(RnHandableThreaded::liveCount(), mGenerators);
}

void tst_KyScriptAuthToken::cleanupEndsTokensThatWereAskedFor()
{
    KyScriptEngine& engine = KyScriptInterface::getInstance(QStringLiteral("tokens"));
    const auto made = [&engine](const QString& inSource) {
        return QPointer<QObject>(engine.evaluate(inSource).toQObject());
    };
    const auto asked = made("var asked = new AuthToken(); asked.generate(); asked.generate(); asked");
    const auto unused = made("var unused = new AuthToken(); unused");
    QVERIFY(asked && unused);
    KyScriptInterface::cleanupInstances();
    QVERIFY(!asked);
    QVERIFY(unused);
    mSource->answers.clear();
    engine.evaluate("asked = unused = undefined");
}

void tst_KyScriptAuthToken::withoutAnEngineItIsReportedAndGoesOn()
{
    mContracts->expect("engine");
    KyScriptAuthToken token;
    const QSignalSpy finished(&token, &KyScriptAuthToken::finished);
    token.generate(5);
    token.generate(6);
    QCOMPARE(mSource->requests, (QStringList{"5/2/(empty)", "6/2/(empty)"}));
    mSource->answers.takeFirst()(QStringLiteral("x"));
    mSource->answers.clear();
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(finished.at(0).at(0).toString(), QStringLiteral("x"));
}

void tst_KyScriptAuthToken::withoutASourceTheTokenIsEmpty()
{
    mSource.reset();
    run("var got = []; var t = new AuthToken(); t.finished.connect(function(x) { got.push(x) });"
        "t.generate(); t.generateJWT('a')");
    QTRY_COMPARE(run("JSON.stringify(got)").toString(), QStringLiteral("[\"\",\"\"]"));
    QVERIFY(mLog->take().contains("3|OvAuthTokenGenerator|This client makes no tokens"));
}

void tst_KyScriptAuthToken::anAnswerToACollectedTokenIsDropped()
{
    run("var got = 0; (function() { var t = new AuthToken(); t.finished.connect(function() { ++got });"
        " t.generate() })()");
    collect();
    mSource->answers.takeFirst()(QStringLiteral("late"));
    QCoreApplication::sendPostedEvents();
    QCOMPARE(run("got").toInt(), 0);
}

void tst_KyScriptAuthToken::anAnswerAfterTheEngineIsDropped()
{
    run("var t = new AuthToken(); t.generate()");
    mEngine.reset();
    mSource->answers.takeFirst()(QStringLiteral("late"));
    QCoreApplication::sendPostedEvents();
    QCOMPARE(RnHandableThreaded::liveCount(), mGenerators);
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptAuthToken);
}

void tst_KyScriptAuthToken::aTokenMayEndInItsHandler()
{
    run("var got = 0; var t = new AuthToken(); t.finished.connect(function() { ++got; t.destroy() });"
        "t.generate(); t.generate()");
    mSource->answers.takeFirst()(QStringLiteral("one"));
    QTRY_COMPARE(run("got").toInt(), 1);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    mSource->answers.takeFirst()(QStringLiteral("two"));
    QCoreApplication::sendPostedEvents();
    QCOMPARE(run("got").toInt(), 1);
}

void tst_KyScriptAuthToken::argumentsAreConvertedAsEver_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QStringList>("requests");
    QTest::addColumn<bool>("throws");
    QTest::newRow("texts as numbers") << "t.generate('3', '4x', 5)" << QStringList("3/0/5") << false;
    QTest::newRow("null") << "t.generate(null, null, null)" << QStringList("0/0/(empty)") << false;
    QTest::newRow("symbols in lists") << "t.generate(1, 1, [Symbol()])" << QStringList() << true;
    QTest::newRow("JWT without a name") << "t.generateJWT()" << QStringList() << true;
    QTest::newRow("JWT of null") << "t.generateJWT(null)" << QStringList("JWT ") << false;
}

void tst_KyScriptAuthToken::argumentsAreConvertedAsEver()
{
    QFETCH(QString, call);
    QFETCH(QStringList, requests);
    QFETCH(bool, throws);
    run("var t = new AuthToken()");
    const bool threw = run(call).isError();
    if (!throws || !call.contains("Symbol")) // what a list with a symbol becomes as a text is Qt's
        QCOMPARE(mSource->requests, requests);
    if (!call.contains("Symbol"))
        QCOMPARE(threw, throws);
}

KY_TEST_MAIN(tst_KyScriptAuthToken)
#include "tst_KyScriptAuthToken.moc"
