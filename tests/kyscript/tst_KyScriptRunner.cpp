#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>

#include <kyscript/KyScriptProgram.h>
#include <kyscript/KyScriptRunner.h>

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QPointer>
#include <QRegularExpression>
#include <QStringBuilder>
#include <QTest>
#include <QUrl>

#include <array>
#include <list>
#include <map>
#include <optional>
#include <set>
#include <unordered_map>
#include <vector>

/// An object of a host that a runner publishes. Lives until the context disposes of it.
class Desk : public QObject
{
    Q_OBJECT
public:
    explicit Desk(const QString& inLabel = QStringLiteral("desk"), QStringList* ioEnded = nullptr)
        : mLabel(inLabel)
        , mEnded(ioEnded)
    {}
    ~Desk() override
    {
        if (mEnded)
            mEnded->append(mLabel);
    }
    Q_INVOKABLE QString label() const { return mLabel; }
    Q_INVOKABLE QVariant act() { return action(); }

    std::function<QVariant()> action;

private:
    const QString mLabel;
    QStringList* const mEnded;
};

/// A value type of a host.
class Dose
{
    Q_GADGET
    Q_PROPERTY(double amount MEMBER amount)
public:
    enum class Unit
    {
        Milligram = 3
    };
    Q_ENUM(Unit)

    double amount = 0;
};

class tst_KyScriptRunner : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // no engine
    void newRunnerHasNothing();
    void evaluatingNeedsAnEngine();
    void validatingNeedsAnEngine();
    void contextNeedsAnEngine();
    void functionsNeedAnEngine();
    void objectsNeedAnEngine();
    void callWithoutAnEngineGivesUndefined();

    // from no engine to an engine
    void emptyProgramMakesAnEngine();
    void definitionsMakeAnEngine();
    void optionsReachTheEngine_data();
    void optionsReachTheEngine();
    void failingScriptLeavesNoEngine_data();
    void failingScriptLeavesNoEngine();
    void runnerWorksAfterAFailedStart();
    void valueOfTheFirstScriptIsLogged();
    void thrownTextIsAValue();
    void engineIsReplacedWithAReport();
    void engineIsReplacedByNoneWithAReport();
    void engineIsReplacedUnderAnOpenContext();

    // engine
    void everyScriptThatIsNotEmptyIsValid();
    void unexpectedValueIsLogged_data();
    void unexpectedValueIsLogged();
    void expectedValueIsTold_data();
    void expectedValueIsTold();
    void errorIsLoggedAndEmptiesTheResult();
    void errorObjectAsValueCountsAsAnError();
    void emptyProgramIsRefusedSilently();
    void isolatedProgramIsAContractReport();
    void contextOperationsNeedAContext();
    void newObjectIsThatOfTheEngine();

    // context
    void contextOpensAndCloses();
    void contextOpenedTwiceIsAContractReport();
    void objectIsPublishedUntilTheContextEnds();
    void functionsOfTheScriptStay();
    void objectsDieAtTheNextReturnToTheEventLoop();
    void objectsDieInTheOrderOfTheirNames();
    void objectThatHasGoneIsSkippedAndItsNameStays();
    void nameThatAScriptHasTakenAwayIsFine();
    void nameThatStaysIsAContractReport();
    void secondObjectOfANameReplacesTheFirst();
    void sameObjectAgainStaysPublished();
    void objectWithTwoNamesStaysUnderTheOther();
    void secondObjectOfADeadOneTakesItsName();
    void replacedNameThatStaysIsAContractReport();
    void nullObjectIsPublishedAsNull();
    void nameThatIsNoIdentifierIsAContractReport_data();
    void nameThatIsNoIdentifierIsAContractReport();
    void nameOfAReadOnlyGlobalIsAContractReport();
    void selfCheckIsAnOrdinaryEvaluation();
    void scriptCannotEndAPublishedObject();

    // functions
    void functionsOfAContextAreFound_data();
    void functionsOfAContextAreFound();
    void functionsOfTheGlobalObjectAreFound_data();
    void functionsOfTheGlobalObjectAreFound();
    void functionOfTheContextNeedsAContext();
    void functionOfTheGlobalObjectWithAContextIsAContractReport();

    // destructor
    void runnerEndsWithAnEngine();
    void runnerEndsWithAnOpenContext();

    // calls
    void callPassesNumbers();
    void callPassesEnumerations();
    void callPassesTexts();
    void callPassesCharacters();
    void callPassesContainers();
    void callPassesMapsAndSequencesOfAnything();
    void callPassesBytes();
    void callPassesObjects();
    void callPassesScriptValues();
    void callPassesDatesAndVariants();
    void callPassesValueTypes();
    void callTakesAnyNumberOfArguments();
    void callGivesTheValue();
    void callLeavesOwnershipAlone();
    void callOfAThrowingFunctionGivesTheErrorUnlogged();
    void callOfSomethingElseGivesUndefined_data();
    void callOfSomethingElseGivesUndefined();
    void callHasNoGuardAndNoStore();
    void functionOutlivesItsEngine();
    void scriptInsideACallIsNotStrict();

    // errors that host code has left pending
    void pendingErrorIsLoggedAndTheFunctionCalled();
    void pendingErrorDoesNotHideAFunction_data();
    void pendingErrorDoesNotHideAFunction();
    void pendingErrorDoesNotDisturbTheContext();
    void pendingErrorGoesBackToTheOuterScript_data();
    void pendingErrorGoesBackToTheOuterScript();

private:
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
};

namespace {

constexpr const char* SelfCheck = "!result.isUndefined() && result.toString() == QStringLiteral(\"object\")";

KyScriptProgram program(const char* inSource, const char* inInfo = "lib")
{
    return KyScriptProgram(QString::fromUtf8(inSource), inInfo);
}

/// A runner with an engine whose first script is \a inSource.
struct Started : KyScriptRunner
{
    explicit Started(const char* inSource = "", int inOptions = 0)
    {
        const bool started = initEngine(inOptions, program(inSource));
        Q_ASSERT(started);
        Q_UNUSED(started);
    }

    QString text(const char* inSource) const
    {
        QString result;
        return evaluateScript(program(inSource), result) ? result : QStringLiteral("failed");
    }
};

/// A started runner with an open context.
struct Opened : Started
{
    explicit Opened(const char* inSource = "", int inOptions = 0)
        : Started(inSource, inOptions)
    {
        createCurrentContext();
    }
};

void flushDeferredDeletes()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

void tst_KyScriptRunner::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
}

void tst_KyScriptRunner::cleanup()
{
    const QString broken = mContracts->verify();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

void tst_KyScriptRunner::newRunnerHasNothing()
{
    KyScriptRunner runner;
    QVERIFY(!runner.hasEngine());
    mContracts->expect("hasEngine()");
    QVERIFY(!runner.hasCurrentContext());
}

void tst_KyScriptRunner::evaluatingNeedsAnEngine()
{
    KyScriptRunner runner;
    QString result = "old";
    for (int i = 0; i < 3; ++i)
        mContracts->expect("hasEngine()");
    QVERIFY(!runner.evaluateScript(program("1")));
    QVERIFY(!runner.evaluateScript(program("1"), result));
    QVERIFY(!runner.evaluateScript(KyScriptProgram()));
    QCOMPARE(result, QString());
}

void tst_KyScriptRunner::validatingNeedsAnEngine()
{
    KyScriptRunner runner;
    mContracts->expect("hasEngine()");
    mContracts->expect("hasEngine()");
    QVERIFY(!runner.isValidScript(program("1")));
    QVERIFY(!runner.isValidScript(KyScriptProgram()));
}

void tst_KyScriptRunner::contextNeedsAnEngine()
{
    KyScriptRunner runner;
    mContracts->expect("hasEngine()");
    mContracts->expect("!mContext.isUndefined()");
    runner.createCurrentContext();

    mContracts->expect("hasEngine()");
    mContracts->expect("hasCurrentContext()");
    runner.destroyCurrentContext();
    QVERIFY(!runner.hasEngine());
}

void tst_KyScriptRunner::functionsNeedAnEngine()
{
    KyScriptRunner runner;
    LogCapture log;
    mContracts->expect("hasEngine()");
    mContracts->expect("hasCurrentContext()");
    QVERIFY(runner.getCurrentContextFunction("f").isUndefined());
    mContracts->expect("hasEngine()");
    QVERIFY(runner.getGlobalFunction("f").isUndefined());
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptRunner::objectsNeedAnEngine()
{
    KyScriptRunner runner;
    mContracts->expect("hasEngine()");
    QVERIFY(runner.createObject().isUndefined());

    Desk desk;
    mContracts->expect("hasEngine()");
    mContracts->expect("hasCurrentContext()");
    runner.addScriptObjectToCurrentContext("Desk", &desk);
}

void tst_KyScriptRunner::callWithoutAnEngineGivesUndefined()
{
    KyScriptRunner runner;
    QVERIFY(runner.callFunction(QJSValue(), 1, QString("text")).isUndefined());
}

void tst_KyScriptRunner::emptyProgramMakesAnEngine()
{
    KyScriptRunner runner;
    LogCapture log;
    QVERIFY(runner.initEngine(0, KyScriptProgram()));
    QVERIFY(runner.hasEngine());
    QVERIFY(!runner.hasCurrentContext());
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptRunner::definitionsMakeAnEngine()
{
    KyScriptRunner runner;
    LogCapture log(2);
    QVERIFY(
        runner.initEngine(0, program("function six() { return 6; } function seven() { return six() + 1; }")));
    QVERIFY(runner.hasEngine());
    QCOMPARE(runner.callFunction(runner.getGlobalFunction("seven")).toInt(), 7);
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptRunner::optionsReachTheEngine_data()
{
    QTest::addColumn<int>("options");
    QTest::addColumn<QString>("kinds");
    QTest::newRow("none") << 0 << "undefined undefined";
    QTest::newRow("message") << 2 << "object undefined";
    QTest::newRow("all") << -1 << "object object";
}

void tst_KyScriptRunner::optionsReachTheEngine()
{
    QFETCH(int, options);
    QFETCH(QString, kinds);
    const Started runner("", options);
    QCOMPARE(runner.text("typeof Message + ' ' + typeof StudyList"), kinds);
}

void tst_KyScriptRunner::failingScriptLeavesNoEngine_data()
{
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<QString>("line");
    QTest::newRow("error") << QByteArray("throw new Error('no luck')")
                           << "3|KyScriptRunner|Uncaught exception in lib\nException: no luck\nLine: 1\n"
                              "Backtrace:\n%entry@:1";
    QTest::newRow("syntax") << QByteArray("var = 1")
                            << "3|KyScriptRunner|Uncaught exception in lib\n"
                               "Exception: Expected token `identifier'\nLine: 1\n"
                               "Backtrace:\n@:1";
}

void tst_KyScriptRunner::failingScriptLeavesNoEngine()
{
    QFETCH(QByteArray, source);
    QFETCH(QString, line);
    KyScriptRunner runner;
    LogCapture log(2);
    QVERIFY(!runner.initEngine(0, program(source)));
    QVERIFY(!runner.hasEngine());
    QCOMPARE(log.take(), QStringList(line));
}

void tst_KyScriptRunner::runnerWorksAfterAFailedStart()
{
    KyScriptRunner runner;
    QVERIFY(!runner.initEngine(0, program("throw new Error('x')")));
    QVERIFY(runner.initEngine(0, program("function f() { return 7; }")));
    QCOMPARE(runner.callFunction(runner.getGlobalFunction("f")).toInt(), 7);
}

void tst_KyScriptRunner::valueOfTheFirstScriptIsLogged()
{
    KyScriptRunner runner;
    LogCapture log(2);
    QVERIFY(runner.initEngine(0, program("1 + 1")));
    QCOMPARE(log.take(), QStringList("2|KyScriptRunner|Unexpected result value from script: lib\nValue: 2"));
}

void tst_KyScriptRunner::thrownTextIsAValue()
{
    KyScriptRunner runner;
    LogCapture log(2);
    QVERIFY(runner.initEngine(0, program("throw 'bare'")));
    QCOMPARE(log.take(),
             QStringList("2|KyScriptRunner|Unexpected result value from script: lib\nValue: bare"));
}

void tst_KyScriptRunner::engineIsReplacedWithAReport()
{
    Started runner("var old = 1");
    mContracts->expect("!hasEngine()");
    QVERIFY(runner.initEngine(0, program("var young = 1")));
    QCOMPARE(runner.text("typeof old + ' ' + typeof young"), QStringLiteral("undefined number"));
}

void tst_KyScriptRunner::engineIsReplacedByNoneWithAReport()
{
    Started runner;
    mContracts->expect("!hasEngine()");
    QVERIFY(!runner.initEngine(0, program("throw new Error('x')")));
    QVERIFY(!runner.hasEngine());
}

/// The context is the old engine's and goes with it; the table of its objects is left over.
void tst_KyScriptRunner::engineIsReplacedUnderAnOpenContext()
{
    auto runner = std::make_unique<Opened>();
    Desk desk;
    runner->addScriptObjectToCurrentContext("Desk", &desk);
    mContracts->expect("!hasEngine()");
    QVERIFY(runner->initEngine(0, KyScriptProgram()));
    QVERIFY(!runner->hasCurrentContext());
    QCOMPARE(runner->text("typeof Desk"), QStringLiteral("undefined"));

    mContracts->expect("mContextObjects.empty()");
    runner.reset();
}

void tst_KyScriptRunner::everyScriptThatIsNotEmptyIsValid()
{
    const Started runner;
    LogCapture log;
    QVERIFY(runner.isValidScript(program("1")));
    QVERIFY(runner.isValidScript(program("var = ;")));
    QVERIFY(!runner.isValidScript(KyScriptProgram()));
    QVERIFY(!runner.isValidScript(KyScriptProgram(QString(), "only a description")));
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptRunner::unexpectedValueIsLogged_data()
{
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<QString>("value");
    QTest::newRow("number") << QByteArray("1 + 1") << "2";
    QTest::newRow("null") << QByteArray("null") << "null";
    QTest::newRow("false") << QByteArray("false") << "false";
    QTest::newRow("object") << QByteArray("({})") << "[object Object]";
    QTest::newRow("per cent sign") << QByteArray("'100%s'") << "100%s";
    QTest::newRow("outside Latin-1") << QByteArray("'ü€'") << QString::fromUtf8("ü?");
    QTest::newRow("undefined") << QByteArray("undefined") << QString();
    QTest::newRow("declaration") << QByteArray("var d = 1") << QString();
    QTest::newRow("empty text") << QByteArray("''") << QString();
}

void tst_KyScriptRunner::unexpectedValueIsLogged()
{
    QFETCH(QByteArray, source);
    QFETCH(QString, value);
    const Started runner;
    LogCapture log(2);
    QVERIFY(runner.evaluateScript(program(source)));
    QStringList expected;
    if (!value.isNull())
        expected.append("2|KyScriptRunner|Unexpected result value from script: lib\nValue: " + value);
    QCOMPARE(log.take(), expected);
}

void tst_KyScriptRunner::expectedValueIsTold_data()
{
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<QString>("value");
    QTest::newRow("number") << QByteArray("1 + 1") << "2";
    QTest::newRow("null") << QByteArray("null") << "null";
    QTest::newRow("array") << QByteArray("[1, [2]]") << "1,2";
    QTest::newRow("object") << QByteArray("({toString: function() { return 'o'; }})") << "o";
    QTest::newRow("text") << QByteArray("'ü€'") << QString::fromUtf8("ü€");
    QTest::newRow("thrown text") << QByteArray("throw 'bare'") << "bare";
    QTest::newRow("undefined") << QByteArray("undefined") << "";
}

void tst_KyScriptRunner::expectedValueIsTold()
{
    QFETCH(QByteArray, source);
    QFETCH(QString, value);
    const Started runner;
    LogCapture log(2);
    QString result = "old";
    QVERIFY(runner.evaluateScript(program(source), result));
    QCOMPARE(result, value);
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptRunner::errorIsLoggedAndEmptiesTheResult()
{
    const Started runner;
    const QString line =
        "3|KyScriptRunner|Uncaught exception in lib\nException: x\nLine: 1\nBacktrace:\n%entry@:1";
    LogCapture log(2);
    QString result = "old";
    QVERIFY(!runner.evaluateScript(program("throw new Error('x')"), result));
    QCOMPARE(result, QString());
    QCOMPARE(log.take(), QStringList(line));
    QVERIFY(!runner.evaluateScript(program("throw new Error('x')")));
    QCOMPARE(log.take(), QStringList(line));
    QCOMPARE(runner.text("1 + 1"), QStringLiteral("2"));
}

void tst_KyScriptRunner::errorObjectAsValueCountsAsAnError()
{
    const Started runner;
    LogCapture log(2);
    QString result = "old";
    QVERIFY(!runner.evaluateScript(program("new Error('only a value')"), result));
    QCOMPARE(result, QString());
    QCOMPARE(log.take().size(), 1);
}

void tst_KyScriptRunner::emptyProgramIsRefusedSilently()
{
    const Started runner;
    LogCapture log;
    QString result = "old";
    QVERIFY(!runner.evaluateScript(KyScriptProgram()));
    QVERIFY(!runner.evaluateScript(KyScriptProgram(), result));
    QCOMPARE(result, QString());
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptRunner::isolatedProgramIsAContractReport()
{
    const Started runner;
    KyScriptProgram isolated = program("var d = 7; return d");
    isolated.setIsolatedContext(true);
    mContracts->expect("inPushContext == inScript.isolatedContext()");
    QString result;
    QVERIFY(runner.evaluateScript(isolated, result));
    QCOMPARE(result, QStringLiteral("7"));
}

void tst_KyScriptRunner::contextOperationsNeedAContext()
{
    Started runner("function f() {}");
    mContracts->expect("hasCurrentContext()");
    runner.destroyCurrentContext();
    QVERIFY(!runner.hasCurrentContext());

    // Published on no context: the check of the name fails. The object is kept in the table all the same.
    Desk desk;
    mContracts->expect("hasCurrentContext()");
    mContracts->expect(SelfCheck);
    runner.addScriptObjectToCurrentContext("Desk", &desk);
    QCOMPARE(runner.text("typeof Desk"), QStringLiteral("undefined"));

    mContracts->expect("mContextObjects.empty()"); // at the end
}

void tst_KyScriptRunner::newObjectIsThatOfTheEngine()
{
    Started runner("function keys(o) { return Object.keys(o).join(); }");
    QJSValue object = runner.createObject();
    QVERIFY(object.isObject());
    object.setProperty("a", 1);
    object.setProperty("b", 2);
    QCOMPARE(runner.callFunction(runner.getGlobalFunction("keys"), object).toString(), QStringLiteral("a,b"));
    runner.createCurrentContext();
    QVERIFY(runner.createObject().isObject());
}

void tst_KyScriptRunner::contextOpensAndCloses()
{
    Started runner;
    QVERIFY(!runner.hasCurrentContext());
    runner.createCurrentContext();
    QVERIFY(runner.hasCurrentContext());
    runner.destroyCurrentContext();
    QVERIFY(!runner.hasCurrentContext());
    runner.createCurrentContext();
    QVERIFY(runner.hasCurrentContext());
}

void tst_KyScriptRunner::contextOpenedTwiceIsAContractReport()
{
    Opened runner;
    runner.addScriptObjectToCurrentContext("Desk", new Desk);
    mContracts->expect("!hasCurrentContext()");
    runner.createCurrentContext();
    QVERIFY(runner.hasCurrentContext());
    QCOMPARE(runner.text("Desk.label()"), QStringLiteral("desk"));
    runner.destroyCurrentContext();
    flushDeferredDeletes();
}

void tst_KyScriptRunner::objectIsPublishedUntilTheContextEnds()
{
    Opened runner;
    runner.addScriptObjectToCurrentContext("Desk", new Desk);
    QCOMPARE(runner.text("Desk.label()"), QStringLiteral("desk"));
    runner.destroyCurrentContext();
    QCOMPARE(runner.text("typeof Desk + ('Desk' in this)"), QStringLiteral("undefinedfalse"));
    flushDeferredDeletes();
}

void tst_KyScriptRunner::functionsOfTheScriptStay()
{
    Opened runner("function label() { return Desk.label(); } function seven() { return 7; }");
    runner.addScriptObjectToCurrentContext("Desk", new Desk);
    QCOMPARE(runner.callFunction(runner.getCurrentContextFunction("label")).toString(),
             QStringLiteral("desk"));
    runner.destroyCurrentContext();
    QCOMPARE(runner.callFunction(runner.getGlobalFunction("seven")).toInt(), 7);
    QVERIFY(runner.callFunction(runner.getGlobalFunction("label")).isError());
    flushDeferredDeletes();
}

void tst_KyScriptRunner::objectsDieAtTheNextReturnToTheEventLoop()
{
    Opened runner;
    const QPointer<Desk> desk = new Desk;
    runner.addScriptObjectToCurrentContext("Desk", desk);
    runner.destroyCurrentContext();
    QVERIFY(desk);
    flushDeferredDeletes();
    QVERIFY(!desk);
}

void tst_KyScriptRunner::objectsDieInTheOrderOfTheirNames()
{
    Opened runner;
    QStringList ended;
    for (const char* name : {"b", "c", "a", "B"})
        runner.addScriptObjectToCurrentContext(name, new Desk(name, &ended));
    runner.destroyCurrentContext();
    flushDeferredDeletes();
    QCOMPARE(ended, QStringList({"B", "a", "b", "c"}));
}

void tst_KyScriptRunner::objectThatHasGoneIsSkippedAndItsNameStays()
{
    Opened runner;
    auto desk = std::make_unique<Desk>();
    runner.addScriptObjectToCurrentContext("Desk", desk.get());
    desk.reset();
    runner.destroyCurrentContext();
    QVERIFY(!runner.hasCurrentContext());
    QCOMPARE(runner.text("('Desk' in this) + typeof Desk"), QStringLiteral("trueobject"));
}

void tst_KyScriptRunner::nameThatAScriptHasTakenAwayIsFine()
{
    Opened runner;
    const QPointer<Desk> desk = new Desk;
    runner.addScriptObjectToCurrentContext("Desk", desk);
    QCOMPARE(runner.text("delete this.Desk"), QStringLiteral("true"));
    runner.destroyCurrentContext();
    flushDeferredDeletes();
    QVERIFY(!desk);
}

void tst_KyScriptRunner::nameThatStaysIsAContractReport()
{
    Opened runner;
    const QPointer<Desk> desk = new Desk;
    runner.addScriptObjectToCurrentContext("Desk", desk);
    runner.text("Object.defineProperty(this, 'Desk', {configurable: false}); 1");
    mContracts->expect("!mContext.hasProperty(name)");
    runner.destroyCurrentContext();
    QVERIFY(!runner.hasCurrentContext());
    flushDeferredDeletes();
    QVERIFY(!desk);
}

void tst_KyScriptRunner::secondObjectOfANameReplacesTheFirst()
{
    Opened runner;
    const QPointer<Desk> first = new Desk("first");
    const QPointer<Desk> second = new Desk("second");
    runner.addScriptObjectToCurrentContext("Desk", first);
    runner.addScriptObjectToCurrentContext("Desk", second);
    QCOMPARE(runner.text("Desk.label()"), QStringLiteral("second"));
    QVERIFY(first);
    flushDeferredDeletes();
    QVERIFY(!first);
    QVERIFY(second);
    runner.destroyCurrentContext();
    flushDeferredDeletes();
    QVERIFY(!second);
}

void tst_KyScriptRunner::sameObjectAgainStaysPublished()
{
    Opened runner;
    const QPointer<Desk> desk = new Desk("same");
    runner.addScriptObjectToCurrentContext("Desk", desk);
    runner.text("Desk = null");
    runner.addScriptObjectToCurrentContext("Desk", desk);
    flushDeferredDeletes();
    QVERIFY(desk);
    QCOMPARE(runner.text("Desk.label()"), QStringLiteral("same"));
    runner.destroyCurrentContext();
    QCOMPARE(runner.text("typeof Desk"), QStringLiteral("undefined"));
    flushDeferredDeletes();
    QVERIFY(!desk);
}

void tst_KyScriptRunner::objectWithTwoNamesStaysUnderTheOther()
{
    Opened runner;
    const QPointer<Desk> desk = new Desk("both");
    for (const char* name : {"First", "Second"})
        runner.addScriptObjectToCurrentContext(name, desk);
    runner.addScriptObjectToCurrentContext("First", new Desk("other"));
    flushDeferredDeletes();
    QVERIFY(desk);
    QCOMPARE(runner.text("First.label() + Second.label()"), QStringLiteral("otherboth"));
    runner.addScriptObjectToCurrentContext("Second", nullptr); // its last name
    flushDeferredDeletes();
    QVERIFY(!desk);

    const QPointer<Desk> again = new Desk;
    for (const char* name : {"A", "B"})
        runner.addScriptObjectToCurrentContext(name, again);
    runner.destroyCurrentContext();
    QCOMPARE(runner.text("typeof A + typeof B + typeof First"),
             QStringLiteral("undefinedundefinedundefined"));
    flushDeferredDeletes();
    QVERIFY(!again);
}

void tst_KyScriptRunner::secondObjectOfADeadOneTakesItsName()
{
    Opened runner;
    auto first = std::make_unique<Desk>("first");
    runner.addScriptObjectToCurrentContext("Desk", first.get());
    first.reset();
    runner.addScriptObjectToCurrentContext("Desk", new Desk("second"));
    QCOMPARE(runner.text("Desk.label()"), QStringLiteral("second"));
    runner.destroyCurrentContext();
    QCOMPARE(runner.text("typeof Desk"), QStringLiteral("undefined"));
    flushDeferredDeletes();
}

void tst_KyScriptRunner::replacedNameThatStaysIsAContractReport()
{
    Opened runner;
    const QPointer<Desk> first = new Desk("first");
    runner.addScriptObjectToCurrentContext("Desk", first);
    runner.text("Object.defineProperty(this, 'Desk', {configurable: false}); 1");
    mContracts->expect("!mContext.hasProperty(name)");
    runner.addScriptObjectToCurrentContext("Desk", new Desk("second"));
    QCOMPARE(runner.text("Desk.label()"), QStringLiteral("second"));
    flushDeferredDeletes();
    QVERIFY(!first);
    mContracts->expect("!mContext.hasProperty(name)");
    runner.destroyCurrentContext();
    flushDeferredDeletes();
}

void tst_KyScriptRunner::nullObjectIsPublishedAsNull()
{
    Opened runner;
    runner.addScriptObjectToCurrentContext("Desk", nullptr);
    QCOMPARE(runner.text("Desk === null"), QStringLiteral("true"));
    runner.destroyCurrentContext();
    QCOMPARE(runner.text("Desk === null"), QStringLiteral("true"));
}

void tst_KyScriptRunner::nameThatIsNoIdentifierIsAContractReport_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("blank") << "a b";
    QTest::newRow("keyword") << "class";
    QTest::newRow("hyphen") << "my-desk"; // a subtraction: "typeof my - desk"
    QTest::newRow("digit") << "9lives";
    QTest::newRow("empty") << "";
}

void tst_KyScriptRunner::nameThatIsNoIdentifierIsAContractReport()
{
    QFETCH(QString, name);
    Opened runner;
    const QPointer<Desk> desk = new Desk;
    LogCapture log(2);
    mContracts->expect(SelfCheck);
    runner.addScriptObjectToCurrentContext(name, desk);
    QCOMPARE(log.take(), QStringList());
    runner.destroyCurrentContext();
    flushDeferredDeletes();
    QVERIFY(!desk);
}

void tst_KyScriptRunner::nameOfAReadOnlyGlobalIsAContractReport()
{
    Opened runner;
    mContracts->expect(SelfCheck);
    runner.addScriptObjectToCurrentContext("NaN", new Desk);
    QCOMPARE(runner.text("NaN"), QStringLiteral("NaN"));
    mContracts->expect("!mContext.hasProperty(name)");
    runner.destroyCurrentContext();
    flushDeferredDeletes();
}

void tst_KyScriptRunner::selfCheckIsAnOrdinaryEvaluation()
{
    Opened runner;
    runner.addScriptObjectToCurrentContext("Lamp", new Desk);
    LogCapture log(1);
    runner.addScriptObjectToCurrentContext("Lamp", new Desk);
    const QStringList lines = log.take();
    QVERIFY(!lines.isEmpty());
    const QRegularExpression form("^1\\|Script Interface\\|Executing script \\{[-0-9a-f]{36}\\}$");
    QVERIFY2(form.match(lines.first()).hasMatch(), qPrintable(lines.first()));
    runner.destroyCurrentContext();
    flushDeferredDeletes();
}

void tst_KyScriptRunner::scriptCannotEndAPublishedObject()
{
    Opened runner("", -1);
    const QPointer<Desk> desk = new Desk;
    runner.addScriptObjectToCurrentContext("Desk", desk);
    QCOMPARE(runner.text("try { Desk.destroy(); 'passed' } catch (e) { 'refused' }"),
             QStringLiteral("refused"));
    QCOMPARE(runner.text("Desk = null; collectGarbage(); collectGarbage(); 'collected'"),
             QStringLiteral("collected"));
    flushDeferredDeletes();
    QVERIFY(desk);
    runner.destroyCurrentContext();
    flushDeferredDeletes();
    QVERIFY(!desk);
}

void tst_KyScriptRunner::functionsOfAContextAreFound_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("found");
    QTest::addColumn<bool>("reported");
    QTest::newRow("function") << "f" << true << false;
    QTest::newRow("arrow function") << "arrow" << true << false;
    QTest::newRow("builtin") << "parseInt" << true << false;
    QTest::newRow("class") << "Class" << true << false;
    QTest::newRow("missing") << "missing" << false << false;
    QTest::newRow("undefined") << "nothing" << false << false;
    QTest::newRow("number") << "number" << false << true;
    QTest::newRow("null") << "none" << false << true;
    QTest::newRow("text") << "text" << false << true;
    QTest::newRow("object") << "object" << false << true;
}

namespace {

constexpr const char* Names = "function f() {} var arrow = () => 1, number = 5, none = null, text = 'f',"
                              " object = {}, nothing, Class = class {}";

} // namespace

void tst_KyScriptRunner::functionsOfAContextAreFound()
{
    QFETCH(QString, name);
    QFETCH(bool, found);
    QFETCH(bool, reported);
    Opened runner(Names);
    LogCapture log;
    if (reported)
        mContracts->expect("funcValue.isCallable()");
    const QJSValue function = runner.getCurrentContextFunction(name);
    QCOMPARE(function.isCallable(), found);
    QCOMPARE(function.isUndefined(), !found);
    QCOMPARE(log.take(), reported ? QStringList("3|KyScriptRunner|Script value is not a function: " + name)
                                  : QStringList());
}

void tst_KyScriptRunner::functionsOfTheGlobalObjectAreFound_data()
{
    functionsOfAContextAreFound_data();
}

void tst_KyScriptRunner::functionsOfTheGlobalObjectAreFound()
{
    QFETCH(QString, name);
    QFETCH(bool, found);
    QFETCH(bool, reported);
    Started runner(Names);
    LogCapture log;
    if (reported)
        mContracts->expect("funcValue.isCallable()");
    const QJSValue function = runner.getGlobalFunction(name);
    QCOMPARE(function.isCallable(), found);
    QCOMPARE(function.isUndefined(), !found);
    QCOMPARE(log.take(), reported ? QStringList("3|KyScriptRunner|Script value is not a function: " + name)
                                  : QStringList());
}

void tst_KyScriptRunner::functionOfTheContextNeedsAContext()
{
    Started runner("function f() {}");
    LogCapture log;
    mContracts->expect("hasCurrentContext()");
    QVERIFY(runner.getCurrentContextFunction("f").isUndefined());
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptRunner::functionOfTheGlobalObjectWithAContextIsAContractReport()
{
    Opened runner("function f() { return 7; }");
    mContracts->expect("!hasCurrentContext()");
    QCOMPARE(runner.callFunction(runner.getGlobalFunction("f")).toInt(), 7);
}

void tst_KyScriptRunner::runnerEndsWithAnEngine()
{
    auto runner = std::make_unique<Opened>();
    const QPointer<Desk> desk = new Desk;
    runner->addScriptObjectToCurrentContext("Desk", desk);
    runner->destroyCurrentContext();
    runner.reset();
    flushDeferredDeletes();
    QVERIFY(!desk);
}

void tst_KyScriptRunner::runnerEndsWithAnOpenContext()
{
    auto runner = std::make_unique<Opened>();
    const QPointer<Desk> desk = new Desk;
    runner->addScriptObjectToCurrentContext("Desk", desk);
    QVERIFY(qjsEngine(desk.data()));
    runner.reset();
    QVERIFY(desk); // after the engine, at the next return to the event loop
    QVERIFY(!qjsEngine(desk.data()));
    flushDeferredDeletes();
    QVERIFY(!desk);
}

namespace {

/// Describes its arguments.
constexpr const char* Describe =
    "function describe() {"
    "  return Array.prototype.map.call(arguments, function(x) {"
    "    return x === null ? 'null' : typeof x + ':' + (Object.is(x, -0) ? '-0' : x);"
    "  }).join(' ');"
    "}"
    "function json() { return JSON.stringify(Array.prototype.slice.call(arguments)); }";

/// Calls the functions of Describe.
struct Describing : Started
{
    Describing()
        : Started(Describe)
    {}

    template <class... Args>
    QString describe(const Args&... inArgs)
    {
        return callFunction(getGlobalFunction("describe"), inArgs...).toString();
    }
    template <class... Args>
    QString json(const Args&... inArgs)
    {
        return callFunction(getGlobalFunction("json"), inArgs...).toString();
    }
};

} // namespace

void tst_KyScriptRunner::callPassesNumbers()
{
    Describing runner;
    QCOMPARE(runner.describe(3, -4, 0), QStringLiteral("number:3 number:-4 number:0"));
    QCOMPARE(runner.describe(std::numeric_limits<int>::min(), std::numeric_limits<int>::max()),
             QStringLiteral("number:-2147483648 number:2147483647"));
    QCOMPARE(runner.describe(4000000000U), QStringLiteral("number:4000000000"));
    QCOMPARE(runner.describe(short(-5), static_cast<unsigned short>(60000)),
             QStringLiteral("number:-5 number:60000"));
    QCOMPARE(runner.describe(static_cast<signed char>(-5), static_cast<unsigned char>(200)),
             QStringLiteral("number:-5 number:200"));
    QCOMPARE(runner.describe(int8_t(65), uint8_t(66), int16_t(-67), uint16_t(68)),
             QStringLiteral("number:65 number:66 number:-67 number:68"));
    QCOMPARE(runner.describe(9007199254740992LL, -1LL), QStringLiteral("number:9007199254740992 number:-1"));
    QCOMPARE(runner.describe(9007199254740992ULL, 7L, 8UL),
             QStringLiteral("number:9007199254740992 number:7 number:8"));
    QCOMPARE(runner.describe(size_t(5), int64_t(-6), qint64(7)),
             QStringLiteral("number:5 number:-6 number:7"));
    QCOMPARE(runner.describe(2.5, -0.0, 0.5F, 1e300),
             QStringLiteral("number:2.5 number:-0 number:0.5 number:1e+300"));
    QCOMPARE(runner.describe(1.25L), QStringLiteral("number:1.25"));
    QCOMPARE(runner.describe(qQNaN(), qInf()), QStringLiteral("number:NaN number:Infinity"));
    QCOMPARE(runner.describe(true, false), QStringLiteral("boolean:true boolean:false"));
}

namespace {

enum class Signed : signed char
{
    Value = -2
};
enum class Large : quint64
{
    Value = 9007199254740991
};
enum class Truth : bool
{
    Value = true
};
enum class Letter : char
{
    Value = 'a'
};
enum class Top : unsigned
{
    Value = 4000000000U
};
enum Old
{
    OldValue = 9
};

} // namespace

void tst_KyScriptRunner::callPassesEnumerations()
{
    Describing runner;
    QCOMPARE(runner.describe(ScriptMessage, OldValue, Dose::Unit::Milligram),
             QStringLiteral("number:2 number:9 number:3"));
    QCOMPARE(runner.describe(Signed::Value, Large::Value, Truth::Value, Letter::Value, Top::Value),
             QStringLiteral("number:-2 number:9007199254740991 number:1 number:97 number:4000000000"));
    QCOMPARE(runner.describe(std::byte(7), Qt::AlignRight), QStringLiteral("number:7 number:2"));
}

void tst_KyScriptRunner::callPassesTexts()
{
    Describing runner;
    const char* pointer = "pointer";
    char array[] = "array";
    const std::string standard = "stän\u20ac";
    QCOMPARE(runner.describe(QString::fromUtf8("tä€"), "lit\u20ac", pointer, array, standard),
             QString::fromUtf8("string:tä€ string:lit€ string:pointer string:array string:stän€"));
    QCOMPARE(runner.describe(QString(), QString(""), std::string()),
             QStringLiteral("string: string: string:"));
    QCOMPARE(runner.describe(static_cast<const char*>(nullptr)), QStringLiteral("string:"));
    QCOMPARE(runner.describe(static_cast<char*>(nullptr)), QStringLiteral("string:"));

    QCOMPARE(runner.describe(std::string_view("ä€"), std::string_view("cut off", 3)),
             QString::fromUtf8("string:ä€ string:cut"));
    QCOMPARE(runner.describe(QLatin1String("\xe4"), QLatin1String(), QStringView(u"ä€"), QStringView()),
             QString::fromUtf8("string:ä string: string:ä€ string:"));
    QCOMPARE(runner.describe(QAnyStringView("ä€"), QUtf8StringView("ä€")),
             QString::fromUtf8("string:ä€ string:ä€"));
    QCOMPARE(runner.describe(u8"ä€", std::u8string(u8"ä€"), u"ä€", std::u16string(u"ä€"),
                             std::u16string_view(u"ä€")),
             QString::fromUtf8("string:ä€ string:ä€ string:ä€ string:ä€ string:ä€"));
    QCOMPARE(runner.describe(L"ä😀", std::wstring(L"ä😀"), std::wstring_view(L"ä"), U"😀", std::u32string(U"😀")),
             QString::fromUtf8("string:ä😀 string:ä😀 string:ä string:😀 string:😀"));
    QCOMPARE(runner.describe(static_cast<const wchar_t*>(nullptr), static_cast<const char16_t*>(nullptr)),
             QStringLiteral("string: string:"));
    QCOMPARE(runner.describe(QStringLiteral("a") % QLatin1Char('b')), QStringLiteral("string:ab"));
    QCOMPARE(runner.describe(QString("a\0b").left(1) + QChar(0) + "b").size(), 10); // "string:a?b"
}

void tst_KyScriptRunner::callPassesCharacters()
{
    Describing runner;
    QCOMPARE(runner.describe('a', '\xe4', QLatin1Char('b'), QChar(u'€')),
             QString::fromUtf8("string:a string:ä string:b string:€"));
    QCOMPARE(runner.describe(u8'a', u'€', U'😀', L'ä'),
             QString::fromUtf8("string:a string:€ string:😀 string:ä"));
}

void tst_KyScriptRunner::callPassesContainers()
{
    Describing runner;
    const QVariantMap map{{"b", QVariantList{1, "x"}}, {"a", true}};
    QCOMPARE(runner.json(map), QStringLiteral("[{\"a\":true,\"b\":[1,\"x\"]}]"));
    QCOMPARE(runner.json(QVariantList{1, "x", QVariantMap{{"k", 2}}}),
             QStringLiteral("[[1,\"x\",{\"k\":2}]]"));
    QCOMPARE(runner.json(QStringList({"a", "b"}), QList<int>({1, 2})),
             QStringLiteral("[[\"a\",\"b\"],[1,2]]"));
    QCOMPARE(runner.json(QVariantMap(), QVariantList(), QStringList()), QStringLiteral("[{},[],[]]"));
    QCOMPARE(runner.callFunction(runner.getGlobalFunction("describe"), QStringList({"a", "b"})).toString(),
             QStringLiteral("object:a,b"));
}

void tst_KyScriptRunner::callPassesMapsAndSequencesOfAnything()
{
    Describing runner;
    QCOMPARE(runner.json(QMap<QString, QString>{{"a", "b"}}, QVariantHash{{"h", 1}}),
             QStringLiteral("[{\"a\":\"b\"},{\"h\":1}]"));
    QCOMPARE(runner.json(std::map<std::string, std::vector<long>>{{"a", {1, 2}}, {"__proto__", {}}}),
             QStringLiteral("[{\"__proto__\":[],\"a\":[1,2]}]"));
    QCOMPARE(runner.json(QHash<QString, QMap<QString, char>>{{"a", {{"b", 'c'}}}}),
             QStringLiteral("[{\"a\":{\"b\":\"c\"}}]"));
    QCOMPARE(runner.json(QMap<QString, QString>(), std::unordered_map<std::string, int>{{"k", 7}}),
             QStringLiteral("[{},{\"k\":7}]"));

    const int plain[] = {1, 2, 3};
    QCOMPARE(runner.json(plain, std::array<double, 2>{0.5, 1}, std::vector<bool>{true, false}),
             QStringLiteral("[[1,2,3],[0.5,1],[true,false]]"));
    QCOMPARE(
        runner.json(std::vector<uint8_t>{1, 200}, QList<quint16>{65}, std::vector<std::string>{"x", "y"}),
        QStringLiteral("[[1,200],[65],[\"x\",\"y\"]]"));
    QCOMPARE(runner.json(QSet<int>{5}, std::list<QStringList>{{"a"}, {}}, QList<QVariantMap>{{{"k", 1}}}),
             QStringLiteral("[[5],[[\"a\"],[]],[{\"k\":1}]]"));
    QCOMPARE(runner.json(std::vector<int>(), std::initializer_list<int>{1}, QByteArrayList{}),
             QStringLiteral("[[],[1],[]]"));
    QCOMPARE(runner.describe(QList<int>{1, 2}, std::vector<long>{3}), QStringLiteral("object:1,2 object:3"));

    // Script values and objects inside are the very same.
    Started same("function same(list, map, a, b) {"
                 "  return Array.isArray(list) && list[0] === a && list[1] === map.o && map.o === a && map.d "
                 "=== b; }");
    const QJSValue object = same.createObject();
    Desk desk;
    const QMap<QString, QJSValue> map{{"o", object},
                                      {"d", same.text("1").isEmpty() ? QJSValue() : QJSValue(1)}};
    QVERIFY(same.callFunction(same.getGlobalFunction("same"), std::vector<QJSValue>{object, object}, map,
                              object, 1)
                .toBool());
    Started labels(
        "function labels(list) { return list.map(function(d) { return d ? d.label() : d; }).join(); }");
    QCOMPARE(labels.callFunction(labels.getGlobalFunction("labels"), std::vector<Desk*>{&desk, nullptr})
                 .toString(),
             QStringLiteral("desk,"));
    QCOMPARE(labels.callFunction(labels.getGlobalFunction("labels"), QObjectList{&desk, &desk}).toString(),
             QStringLiteral("desk,desk"));
}

void tst_KyScriptRunner::callPassesBytes()
{
    Started runner(
        "function bytes(b) { return Object.prototype.toString.call(b) + new Uint8Array(b).join(); }");
    const QJSValue bytes = runner.getGlobalFunction("bytes");
    const QByteArray three("a\0c", 3);
    QCOMPARE(runner.callFunction(bytes, three).toString(), QStringLiteral("[object ArrayBuffer]97,0,99"));
    QCOMPARE(runner.callFunction(bytes, QByteArrayView(three).first(2)).toString(),
             QStringLiteral("[object ArrayBuffer]97,0"));
    for (const QByteArray& none : {QByteArray(), QByteArray("")}) {
        QCOMPARE(runner.callFunction(bytes, none).toString(), QStringLiteral("[object ArrayBuffer]"));
        QCOMPARE(runner.callFunction(bytes, QByteArrayView(none)).toString(),
                 QStringLiteral("[object ArrayBuffer]"));
    }
}

/// What scripts could do nothing with is refused when the caller is compiled.
static_assert(!KyScriptArgument::isPossible<int*>());
static_assert(!KyScriptArgument::isPossible<void*>());
static_assert(!KyScriptArgument::isPossible<const QObject*>());
static_assert(!KyScriptArgument::isPossible<std::unique_ptr<QObject>>());
static_assert(!KyScriptArgument::isPossible<std::shared_ptr<QObject>>());
static_assert(!KyScriptArgument::isPossible<std::pair<int, int>>());
static_assert(!KyScriptArgument::isPossible<std::optional<int>>());
static_assert(!KyScriptArgument::isPossible<QMap<int, int>>());
static_assert(!KyScriptArgument::isPossible<std::map<int, int>>());
static_assert(!KyScriptArgument::isPossible<QList<std::pair<int, int>>>());
static_assert(!KyScriptArgument::isPossible<QMap<QString, int*>>());
static_assert(!KyScriptArgument::isPossible<QIODevice::OpenMode>());
static_assert(!KyScriptArgument::isPossible<void (*)()>());

void tst_KyScriptRunner::callPassesObjects()
{
    Started runner("function label(d) { return d === null ? 'null' : d.label(); }"
                   "function same(a, b) { return a === b; }");
    Desk desk("mine");
    const QJSValue label = runner.getGlobalFunction("label");
    QCOMPARE(runner.callFunction(label, &desk).toString(), QStringLiteral("mine"));
    QCOMPARE(runner.callFunction(label, static_cast<QObject*>(&desk)).toString(), QStringLiteral("mine"));
    QCOMPARE(runner.callFunction(label, QPointer<Desk>(&desk)).toString(), QStringLiteral("mine"));
    QCOMPARE(runner.callFunction(label, static_cast<Desk*>(nullptr)).toString(), QStringLiteral("null"));
    QCOMPARE(runner.callFunction(label, QPointer<Desk>()).toString(), QStringLiteral("null"));
    QCOMPARE(runner.callFunction(label, nullptr).toString(), QStringLiteral("null"));
    QVERIFY(runner.callFunction(runner.getGlobalFunction("same"), &desk, &desk).toBool());
}

void tst_KyScriptRunner::callPassesScriptValues()
{
    Describing runner;
    QJSValue object = runner.createObject();
    object.setProperty("a", 1);
    QCOMPARE(runner.json(object, QJSValue(5), QJSValue("x")), QStringLiteral("[{\"a\":1},5,\"x\"]"));
    QCOMPARE(runner.describe(QJSValue(), QJSValue(QJSValue::NullValue)),
             QStringLiteral("undefined:undefined null"));

    // The object itself, no copy.
    Started changing("function change(o) { o.changed = 7; }");
    QJSValue given = changing.createObject();
    changing.callFunction(changing.getGlobalFunction("change"), given);
    QCOMPARE(given.property("changed").toInt(), 7);
}

void tst_KyScriptRunner::callPassesDatesAndVariants()
{
    Started runner("function year(d) { return d.getFullYear(); } function kind(x) { return typeof x; }");
    const QDateTime date(QDate(2024, 2, 29), QTime(12, 0));
    QCOMPARE(runner.callFunction(runner.getGlobalFunction("year"), date).toInt(), 2024);
    QCOMPARE(runner.callFunction(runner.getGlobalFunction("year"), QVariant(date)).toInt(), 2024);
    QCOMPARE(runner.callFunction(runner.getGlobalFunction("kind"), QVariant("x")).toString(),
             QStringLiteral("string"));
    QCOMPARE(runner.callFunction(runner.getGlobalFunction("kind"), QVariant()).toString(),
             QStringLiteral("undefined"));

    // In the form in which host objects hand them out.
    Started dates(
        "function day(d) { return [d.getFullYear(), d.getMonth(), d.getDate(), d.getHours()].join(); }"
        "function text(t) { return String(t); }"
        "function kind(x) { return Object.prototype.toString.call(x); }");
    const QDate leap(2024, 2, 29);
    for (const QVariant& value : {QVariant(leap), QVariant::fromValue(leap.startOfDay())})
        QCOMPARE(dates.callFunction(dates.getGlobalFunction("day"), value).toString(),
                 QStringLiteral("2024,1,29,0"));
    QCOMPARE(dates.callFunction(dates.getGlobalFunction("day"), leap).toString(),
             QStringLiteral("2024,1,29,0"));
    const QTime time(14, 5, 9, 120);
    QCOMPARE(dates.callFunction(dates.getGlobalFunction("text"), time).toString(),
             QStringLiteral("14:05:09.120"));
    QCOMPARE(dates.callFunction(dates.getGlobalFunction("text"), QVariant(time)).toString(),
             QStringLiteral("14:05:09.120"));
    QCOMPARE(dates.callFunction(dates.getGlobalFunction("kind"), QDate()).toString(),
             QStringLiteral("[object Date]"));
    QCOMPARE(dates.callFunction(dates.getGlobalFunction("kind"), QRegularExpression("x")).toString(),
             QStringLiteral("[object RegExp]"));
}

void tst_KyScriptRunner::callPassesValueTypes()
{
    Describing runner;
    Dose dose;
    dose.amount = 2.5;
    QCOMPARE(runner.json(dose, QPoint(1, 2), QSizeF(1.5, 2)),
             QStringLiteral("[{\"amount\":2.5},{\"x\":1,\"y\":2},{\"width\":1.5,\"height\":2}]"));
    Started more(
        "function sum(r) { return r.x + r.y + r.width + r.height; } function host(u) { return u.host; }");
    QCOMPARE(more.callFunction(more.getGlobalFunction("sum"), QRect(1, 2, 3, 4)).toInt(), 10);
    QCOMPARE(more.callFunction(more.getGlobalFunction("host"), QUrl("http://name:5/")).toString(),
             QStringLiteral("name:5"));
    QCOMPARE(runner.json(QJsonObject{{"a", QJsonArray{1, "x"}}}, QJsonArray{true}, QJsonValue(5)),
             QStringLiteral("[{\"a\":[1,\"x\"]},[true],5]"));
}

void tst_KyScriptRunner::callTakesAnyNumberOfArguments()
{
    Started runner("function count() { return arguments.length; }"
                   "function all() { return Array.prototype.join.call(arguments, ''); }");
    QCOMPARE(runner.callFunction(runner.getGlobalFunction("count")).toInt(), 0);
    QCOMPARE(runner.callFunction(runner.getGlobalFunction("count"), 1).toInt(), 1);
    QCOMPARE(runner
                 .callFunction(runner.getGlobalFunction("all"), 1, "2", 3.0, QString("4"), std::string("5"),
                               6U, 7LL, QJSValue(8), QVariant(9), 10)
                 .toString(),
             QStringLiteral("12345678910"));
    QCOMPARE(runner.callFunction(runner.getGlobalFunction("count"), 1, 2, 3, 4, 5, 6, 7, 8, 9, 10).toInt(),
             10);
}

void tst_KyScriptRunner::callGivesTheValue()
{
    Started runner("function nothing() {} function object() { return {a: [1]}; }");
    QVERIFY(runner.callFunction(runner.getGlobalFunction("nothing")).isUndefined());
    QCOMPARE(runner.callFunction(runner.getGlobalFunction("object")).property("a").property(0).toInt(), 1);
}

void tst_KyScriptRunner::callLeavesOwnershipAlone()
{
    Started runner("function take(o) { mine = o; }", -1);
    const QPointer<Desk> desk = new Desk;
    runner.callFunction(runner.getGlobalFunction("take"), desk.data());
    runner.text("mine = null; collectGarbage(); collectGarbage(); 1");
    flushDeferredDeletes();
    QVERIFY(desk);
    delete desk.data();
}

void tst_KyScriptRunner::callOfAThrowingFunctionGivesTheErrorUnlogged()
{
    Started runner("function fail(text) { throw new Error(text); }");
    LogCapture log;
    const QJSValue value = runner.callFunction(runner.getGlobalFunction("fail"), "no luck");
    QVERIFY(value.isError());
    QCOMPARE(value.property("message").toString(), QStringLiteral("no luck"));
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(runner.text("1 + 1"), QStringLiteral("2"));
}

void tst_KyScriptRunner::callOfSomethingElseGivesUndefined_data()
{
    QTest::addColumn<QByteArray>("source");
    for (const char* source : {"undefined", "null", "5", "'f'", "({})", "[]"})
        QTest::newRow(source) << QByteArray(source);
}

void tst_KyScriptRunner::callOfSomethingElseGivesUndefined()
{
    QFETCH(QByteArray, source);
    Started runner("function give() { return " + source + "; }");
    const QJSValue value = runner.callFunction(runner.getGlobalFunction("give"));
    QVERIFY(runner.callFunction(value, 1, 2).isUndefined());
    QCOMPARE(runner.text("1 + 1"), QStringLiteral("2"));
}

void tst_KyScriptRunner::callHasNoGuardAndNoStore()
{
    Started runner("function kind() { return typeof Global; }");
    LogCapture log;
    QCOMPARE(runner.callFunction(runner.getGlobalFunction("kind")).toString(), QStringLiteral("undefined"));
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptRunner::functionOutlivesItsEngine()
{
    auto runner = std::make_unique<Started>("function f() { return 7; }");
    const QJSValue function = runner->getGlobalFunction("f");
    runner.reset();
    Started other;
    QVERIFY(other.callFunction(function, 1).isUndefined());
}

void tst_KyScriptRunner::scriptInsideACallIsNotStrict()
{
    Opened runner("function outer() { 'use strict'; return Desk.act(); }");
    auto* desk = new Desk;
    desk->action = [&] { return runner.text("undeclared = 6; undeclared + 1"); };
    runner.addScriptObjectToCurrentContext("Desk", desk);
    QCOMPARE(runner.callFunction(runner.getCurrentContextFunction("outer")).toString(), QStringLiteral("7"));
    runner.destroyCurrentContext();
    flushDeferredDeletes();
}

namespace {

const QString PendingLine = "3|Script Interface|Uncaught exception in host code before the run\n"
                            "Exception: left over\nLine: 0\nBacktrace:\n";

/// An open runner that publishes "Desk", and its engine.
struct Published : Opened
{
    explicit Published(const char* inSource = "")
        : Opened(inSource)
        , desk(new Desk)
    {
        addScriptObjectToCurrentContext("Desk", desk);
    }
    ~Published()
    {
        destroyCurrentContext();
        flushDeferredDeletes();
    }
    void leaveAnError() { qjsEngine(desk)->throwError(QStringLiteral("left over")); }
    bool hasError() const { return qjsEngine(desk)->hasError(); }

    Desk* const desk;
};

} // namespace

void tst_KyScriptRunner::pendingErrorIsLoggedAndTheFunctionCalled()
{
    Published runner("var calls = 0; function count(by) { calls += by.n; return calls; }"
                     "function text(time, map) { return time + ' ' + JSON.stringify(map); }");
    const QJSValue count = runner.getCurrentContextFunction("count");
    LogCapture log(2);
    for (int i = 1; i <= 2; ++i) {
        runner.leaveAnError();
        QCOMPARE(runner.callFunction(count, QVariantMap{{"n", 1}}).toInt(), i);
        QVERIFY(!runner.hasError());
        const QStringList lines = log.take();
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.first().startsWith(PendingLine), qPrintable(lines.first()));
    }
    runner.leaveAnError(); // arguments are made without it
    const QJSValue text = runner.getCurrentContextFunction("text");
    log.take();
    runner.leaveAnError();
    QCOMPARE(runner.callFunction(text, QTime(14, 5), QVariantMap{{"n", QVariantList{1}}}).toString(),
             QStringLiteral("14:05:00.000 {\"n\":[1]}"));
    QCOMPARE(log.take().size(), 1);
    QCOMPARE(runner.callFunction(count, QVariantMap{{"n", 1}}).toInt(), 3);
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptRunner::pendingErrorDoesNotHideAFunction_data()
{
    QTest::addColumn<bool>("withContext");
    QTest::newRow("of the context") << true;
    QTest::newRow("of the global object") << false;
}

void tst_KyScriptRunner::pendingErrorDoesNotHideAFunction()
{
    QFETCH(bool, withContext);
    Started runner("function f() { return 7; }");
    Desk desk;
    const auto name = QStringLiteral("f");
    runner.callFunction(runner.getGlobalFunction(name), &desk); // the engine knows the desk from now on
    if (withContext)
        runner.createCurrentContext();
    LogCapture log(2);
    qjsEngine(&desk)->throwError(QStringLiteral("left over"));
    const QJSValue f = withContext ? runner.getCurrentContextFunction(name) : runner.getGlobalFunction(name);
    QVERIFY(f.isCallable());
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), 1);
    QVERIFY2(lines.first().startsWith(PendingLine), qPrintable(lines.first()));
    QCOMPARE(runner.callFunction(f).toInt(), 7);
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptRunner::pendingErrorDoesNotDisturbTheContext()
{
    Opened runner;
    const QPointer<Desk> first = new Desk("first"), second = new Desk("second"), third = new Desk("third");
    runner.addScriptObjectToCurrentContext("First", first);
    LogCapture log(2);
    qjsEngine(first.data())->throwError(QStringLiteral("left over"));
    runner.addScriptObjectToCurrentContext("Second", second);
    QCOMPARE(log.take().size(), 1);
    QCOMPARE(runner.text("Second.label()"), QStringLiteral("second"));
    qjsEngine(first.data())->throwError(QStringLiteral("left over"));
    runner.addScriptObjectToCurrentContext("Second", third);
    QCOMPARE(log.take().size(), 1);
    QCOMPARE(runner.text("Second.label()"), QStringLiteral("third"));
    qjsEngine(first.data())->throwError(QStringLiteral("left over"));
    runner.destroyCurrentContext();
    QCOMPARE(log.take().size(), 1);
    QCOMPARE(runner.text("typeof First + typeof Second"), QStringLiteral("undefinedundefined"));
    QCOMPARE(log.take(), QStringList());
    flushDeferredDeletes();
    QVERIFY(!first && !second && !third);
}

void tst_KyScriptRunner::pendingErrorGoesBackToTheOuterScript_data()
{
    QTest::addColumn<bool>("byCall");
    QTest::addColumn<QString>("what");
    for (const char* what : {"call", "find", "publish"}) {
        QTest::addRow("%s inside a call", what) << true << what;
        QTest::addRow("%s inside an evaluation", what) << false << what;
    }
}

void tst_KyScriptRunner::pendingErrorGoesBackToTheOuterScript()
{
    QFETCH(bool, byCall);
    QFETCH(QString, what);
    Published runner(
        "function outer() { try { Desk.act(); return 'not told'; } catch (e) { return e.message; } }"
        "function inner() { return 7; }");
    const QJSValue inner = runner.getCurrentContextFunction("inner");
    bool worked = false;
    runner.desk->action = [&] {
        runner.leaveAnError();
        if (what == "call") {
            worked = runner.callFunction(inner).toInt() == 7;
        } else if (what == "find") {
            worked = runner.getCurrentContextFunction("inner").isCallable();
        } else {
            runner.addScriptObjectToCurrentContext("Further", new Desk);
            worked = true;
        }
        return QVariant();
    };
    LogCapture log(2);
    const QString told = byCall ? runner.callFunction(runner.getCurrentContextFunction("outer")).toString()
                                : runner.text("outer()");
    QCOMPARE(told, QStringLiteral("left over"));
    QVERIFY(worked);
    QVERIFY(!runner.hasError());
    QCOMPARE(log.take(), QStringList());
    if (what == "publish")
        QCOMPARE(runner.text("Further.label()"), QStringLiteral("desk"));
}

KY_TEST_MAIN(tst_KyScriptRunner)
#include "tst_KyScriptRunner.moc"
