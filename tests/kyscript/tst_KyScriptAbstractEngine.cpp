#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>

#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptExternalObject.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptProgram.h>

#include <QEventLoop>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

/// The way of a script back to its facade.
class Host : public QObject
{
    Q_OBJECT
public:
    explicit Host(KyScriptAbstractEngine& inFacade, const char* inName = "host")
        : mFacade(inFacade)
    {
        QJSEngine::setObjectOwnership(this, QJSEngine::CppOwnership);
        inFacade.globalObject().setProperty(QLatin1String(inName), inFacade.newQObject(this));
    }

    /// Runs a text at once.
    Q_INVOKABLE QJSValue run(QString inSource)
    {
        return mFacade.runScript(KyScriptProgram(inSource, "inner"), true, false, false);
    }
    /// Runs a text when the outermost run has ended.
    Q_INVOKABLE QJSValue later(QString inSource)
    {
        return mFacade.runScript(KyScriptProgram(inSource, "inner"), true, false, true);
    }
    Q_INVOKABLE QJSValue evaluate(QString inSource)
    {
        return mFacade.evaluate(KyScriptProgram(inSource, "inner"), false);
    }
    Q_INVOKABLE void note(QString inText) { notes.append(inText); }
    Q_INVOKABLE void act() { action(); }
    Q_INVOKABLE void spin()
    {
        QEventLoop loop;
        QTimer::singleShot(20, &loop, &QEventLoop::quit);
        loop.exec();
    }

    QStringList notes;
    std::function<void()> action;

private:
    KyScriptAbstractEngine& mFacade;
};

/// Notes each clear() with the host.
class Cleared : public KyScriptExternalObject
{
    Q_OBJECT
public:
    explicit Cleared(QStringList& ioNotes)
        : KyScriptExternalObject(nullptr, QStringLiteral("cleared"), ScriptExternalKindA)
        , mNotes(ioNotes)
    {}
    void clear() override { mNotes.append("clear"); }

private:
    QStringList& mNotes;
};

/// Enters a facade again from inside the first contract report.
class Reentry : public RnContractObserver
{
public:
    explicit Reentry(std::function<void()> inAction)
        : mAction(std::move(inAction))
    {}
    void contractBroken(const RnContractReport&) override
    {
        if (auto action = std::exchange(mAction, nullptr))
            action();
    }

private:
    std::function<void()> mAction;
};

using Operation = bool (*)(KyScriptAbstractEngine&);
Q_DECLARE_METATYPE(Operation)

class tst_KyScriptAbstractEngine : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void engineOfItsOwnHasParentAndOptions();
    void engineGoesWithItsFacade();
    void facadeSurvivesItsEngine();
    void facadeIsNoChildOfTheParent();

    void runScriptGivesTheValue();
    void runScriptPassesItsFlags_data();
    void runScriptPassesItsFlags();
    void outermostRunCleansUp();
    void evaluateGivesTheValueAndLeavesTheRest();
    void evaluateChecksTheFlagOfTheProgram_data();
    void evaluateChecksTheFlagOfTheProgram();
    void everyScriptIsValid();
    void errorsAreTold();
    void exceptionsAreLogged();
    void globalObjectIsThatOfTheEngine();
    void newObjectsBelongToTheEngine();
    void listOfAccessorsIsForwarded();
    void engineIsFound();
    void pushedContextIsTheGlobalObject();
    void poppingAContextIsAContractReport();
    void signalOfTheEngineIsForwarded();

    void withoutAnEngineEachOperationIsRefused_data();
    void withoutAnEngineEachOperationIsRefused();
    void guardIsEnteredWithoutAnEngine_data();
    void guardIsEnteredWithoutAnEngine();

    void serializedReentryRunsAfterTheOuterRun();
    void serializedResultIsDropped();
    void queuedScriptsKeepTheirOrder();
    void queuedScriptKeepsItsFlags_data();
    void queuedScriptKeepsItsFlags();
    void queuedIsolatedScriptWithoutAWrapperIsAContractReport();
    void queuedProgramIsACopy();
    void queuedScriptCleansUp();
    void scriptQueuedInANestedRunWaitsForTheOutermost();
    void scriptsQueuedDuringTheDrainRunAtOnceBehindTheirRun();
    void longChainOfQueuedScriptsRuns();
    void queueIsDrainedAfterAFailure();
    void failureOfAQueuedScriptIsLoggedAndTheNextRuns();
    void reentryWithoutSerializeRunsNested();
    void nestedRunLeavesTheStateOfTheOuterRunAlone();
    void depthReturnsAfterAFailure();
    void reentryThroughTheEventLoopIsSeen();

    void reentryThroughEvaluateIsNotReported();
    void runInsideEvaluateIsAReentry();
    void queueIsDrainedAfterEvaluate();
    void runOnTheEngineItselfDoesNotCount();
    void facadesCountApart();

    void reentryIsLogged_data();
    void reentryIsLogged();
    void delayIsLoggedBehindTheReentry();

    void facadeOfANameIsOne();
    void namesMindCase();
    void facadeOfANameIsBoundOnce();
    void signalOfANamedEngineIsForwarded();

private:
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
};

namespace {

const char* const Uninitialized = "Uninitialized engine";

KyScriptProgram program(const QString& inSource, const char* inInfo = nullptr)
{
    return KyScriptProgram(inSource, inInfo);
}

/// A facade whose engine has been deleted.
struct Orphan
{
    Orphan()
        : facade(nullptr, 0)
    {
        delete facade.jsEngine(true);
    }
    KyScriptAbstractEngine facade;
};

} // namespace

void tst_KyScriptAbstractEngine::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
}

void tst_KyScriptAbstractEngine::cleanup()
{
    const QString broken = mContracts->verify();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

void tst_KyScriptAbstractEngine::engineOfItsOwnHasParentAndOptions()
{
    QObject parent;
    KyScriptAbstractEngine facade(&parent, 0x12);
    QCOMPARE(facade.jsEngine(true)->parent(), &parent);
    QCOMPARE(facade.jsEngine(true)->options(), 0x12);
    QVERIFY(!facade.parent());
}

void tst_KyScriptAbstractEngine::engineGoesWithItsFacade()
{
    auto facade = std::make_unique<KyScriptAbstractEngine>(nullptr, 0);
    const QPointer<KyScriptEngine> engine = facade->jsEngine(true);
    QVERIFY(engine);
    facade.reset();
    QVERIFY(!engine);
}

void tst_KyScriptAbstractEngine::facadeSurvivesItsEngine()
{
    auto parent = std::make_unique<QObject>();
    KyScriptAbstractEngine facade(parent.get(), 0);
    parent.reset();
    QVERIFY(!facade.jsEngine(false));
}

void tst_KyScriptAbstractEngine::facadeIsNoChildOfTheParent()
{
    QObject parent;
    {
        KyScriptAbstractEngine facade(&parent, 0);
        QCOMPARE(parent.children().size(), 1);
    }
    QCOMPARE(parent.children().size(), 0);
}

void tst_KyScriptAbstractEngine::runScriptGivesTheValue()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    QCOMPARE(facade.runScript(program("return 6 * 7"), true, false, false).toInt(), 42);
    QCOMPARE(facade.runScript(program("return 6 * 7"), true, false, true).toInt(), 42);
    QVERIFY(facade.runScript(program("throw new Error('x')"), true, false, false).isError());
}

void tst_KyScriptAbstractEngine::runScriptPassesItsFlags_data()
{
    QTest::addColumn<bool>("pushContext");
    QTest::addColumn<bool>("noFunction");
    QTest::addColumn<bool>("scoped");
    QTest::newRow("true, false") << true << false << true;
    QTest::newRow("true, true") << true << true << false;
    QTest::newRow("false, false") << false << false << false;
    QTest::newRow("false, true") << false << true << false;
}

void tst_KyScriptAbstractEngine::runScriptPassesItsFlags()
{
    QFETCH(bool, pushContext);
    QFETCH(bool, noFunction);
    QFETCH(bool, scoped);
    KyScriptAbstractEngine facade(nullptr, 0);
    facade.runScript(program("var declared = 1"), pushContext, noFunction, false);
    QCOMPARE(facade.globalObject().hasProperty("declared"), !scoped);
}

void tst_KyScriptAbstractEngine::outermostRunCleansUp()
{
    QStringList notes;
    Cleared cleared(notes);
    KyScriptAbstractEngine facade(nullptr, 0);
    facade.runScript(program("1"), true, false, false);
    QCOMPARE(notes, QStringList("clear"));
    facade.runScript(program("1"), false, true, true);
    QCOMPARE(notes, QStringList({"clear", "clear"}));
}

void tst_KyScriptAbstractEngine::evaluateGivesTheValueAndLeavesTheRest()
{
    QStringList notes;
    Cleared cleared(notes);
    KyScriptAbstractEngine facade(nullptr, 0);
    LogCapture log(2);
    QCOMPARE(facade.evaluate(program("var declared = 6; declared * 7"), false).toInt(), 42);
    QVERIFY(facade.globalObject().hasProperty("declared"));
    QVERIFY(facade.evaluate(program("throw new Error('x')"), false).isError());
    QCOMPARE(facade.evaluate(program("typeof Global"), false).toString(), QStringLiteral("undefined"));
    QCOMPARE(notes, QStringList());
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptAbstractEngine::evaluateChecksTheFlagOfTheProgram_data()
{
    QTest::addColumn<bool>("isolated");
    QTest::addColumn<bool>("pushContext");
    QTest::newRow("false, false") << false << false;
    QTest::newRow("false, true") << false << true;
    QTest::newRow("true, false") << true << false;
    QTest::newRow("true, true") << true << true;
}

void tst_KyScriptAbstractEngine::evaluateChecksTheFlagOfTheProgram()
{
    QFETCH(bool, isolated);
    QFETCH(bool, pushContext);
    KyScriptAbstractEngine facade(nullptr, 0);
    KyScriptProgram script = program(isolated ? "var d = 7; return d" : "var d = 7; d");
    script.setIsolatedContext(isolated);
    if (isolated != pushContext)
        mContracts->expect("inPushContext == inScript.isolatedContext()");
    QCOMPARE(facade.evaluate(script, pushContext).toInt(), 7);
    QCOMPARE(facade.globalObject().hasProperty("d"), !isolated);
}

void tst_KyScriptAbstractEngine::everyScriptIsValid()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    QString message = "untouched";
    QVERIFY(facade.scriptIsValid(program("var = ;"), message));
    QVERIFY(facade.scriptIsValid(KyScriptProgram(), message));
    QCOMPARE(message, QStringLiteral("untouched"));
}

void tst_KyScriptAbstractEngine::errorsAreTold()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    const QJSValue error = facade.evaluate(KyScriptProgram("throw new Error('boom')", "a.js", 4), false);
    const QString text =
        "Uncaught exception in Report\nException: boom\nLine: 4\nBacktrace:\n%entry@file:a.js:4";
    QString bare;
    QCOMPARE(facade.errorMessage(error, "Report", &bare), text);
    QCOMPARE(bare, QStringLiteral("boom"));
    QCOMPARE(facade.errorMessage(error, "Report", nullptr), text);
    QCOMPARE(facade.errorMessage(QJSValue(5), "Report", nullptr), QString());
}

void tst_KyScriptAbstractEngine::exceptionsAreLogged()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    const QJSValue error = facade.evaluate(KyScriptProgram("throw new Error('boom')", "a.js", 4), false);
    LogCapture log(2);
    QVERIFY(facade.logException("Ctx", error, QString()));
    QVERIFY(!facade.logException("Ctx", QJSValue(5), QString()));
    QCOMPARE(log.take(), QStringList("3|Ctx|Uncaught JavaScript Exception\nException: boom\nLine: 4\n"
                                     "Backtrace:\n%entry@file:a.js:4"));
}

void tst_KyScriptAbstractEngine::globalObjectIsThatOfTheEngine()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    facade.globalObject().setProperty("made", 5);
    QCOMPARE(facade.runScript(program("return made")).toInt(), 5);
    QVERIFY(facade.globalObject().strictlyEquals(facade.jsEngine(true)->globalObject()));
}

void tst_KyScriptAbstractEngine::newObjectsBelongToTheEngine()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    QJSValue object = facade.newObject();
    QVERIFY(object.isObject());
    object.setProperty("a", 1);
    facade.globalObject().setProperty("object", object);
    QCOMPARE(facade.runScript(program("return JSON.stringify(object)")).toString(),
             QStringLiteral("{\"a\":1}"));

    QObject thing;
    QJSEngine::setObjectOwnership(&thing, QJSEngine::CppOwnership);
    QCOMPARE(facade.newQObject(&thing).toQObject(), &thing);
    QCOMPARE(KyScriptEngine::of(&thing), facade.jsEngine(true));
    QVERIFY(facade.newQObject(nullptr).isNull());
}

void tst_KyScriptAbstractEngine::listOfAccessorsIsForwarded()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    facade.setExtAcc({"a", "b"});
    QCOMPARE(facade.extAcc(), facade.jsEngine(true)->extAcc());
}

void tst_KyScriptAbstractEngine::engineIsFound()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    QVERIFY(facade.jsEngine(true));
    QCOMPARE(facade.jsEngine(false), facade.jsEngine(true));
}

void tst_KyScriptAbstractEngine::pushedContextIsTheGlobalObject()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    QVERIFY(facade.pushContext().strictlyEquals(facade.globalObject()));
    QVERIFY(facade.pushContext().strictlyEquals(facade.globalObject()));
}

void tst_KyScriptAbstractEngine::poppingAContextIsAContractReport()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    mContracts->expect("false");
    facade.popContext();
    QCOMPARE(facade.runScript(program("return 7")).toInt(), 7);
}

void tst_KyScriptAbstractEngine::signalOfTheEngineIsForwarded()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    QSignalSpy changed(&facade, &KyScriptAbstractEngine::extAccChanged);
    Q_EMIT facade.jsEngine(true)->extAccChanged();
    QCOMPARE(changed.size(), 1);
}

void tst_KyScriptAbstractEngine::withoutAnEngineEachOperationIsRefused_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QString>("condition");
    QTest::addColumn<QString>("message");
    const auto row = [](const char* inName, Operation inOperation, const char* inCondition = "0",
                        const char* inMessage = Uninitialized) {
        QTest::newRow(inName) << inOperation << QString(inCondition) << QString(inMessage);
    };
    using Facade = KyScriptAbstractEngine;
    row("runScript", [](Facade& f) { return f.runScript(program("return 1")).isUndefined(); });
    row("runScript, serialized",
        [](Facade& f) { return f.runScript(program("return 1"), true, false, true).isUndefined(); });
    row("evaluate", [](Facade& f) { return f.evaluate(program("1"), false).isUndefined(); });
    row("evaluate, flags differ", [](Facade& f) { return f.evaluate(program("1"), true).isUndefined(); });
    row("scriptIsValid", [](Facade& f) {
        QString message = "untouched";
        return !f.scriptIsValid(program("1"), message) && message == "untouched";
    });
    row("errorMessage", [](Facade& f) {
        QJSEngine other;
        QString bare = "untouched";
        return f.errorMessage(other.evaluate("new Error('x')"), "info", &bare).isEmpty() &&
               bare == "untouched";
    });
    row("logException", [](Facade& f) {
        QJSEngine other;
        LogCapture log;
        return !f.logException("Ctx", other.evaluate("new Error('x')"), "info") && log.take().isEmpty();
    });
    row(
        "globalObject", [](Facade& f) { return f.globalObject().isUndefined(); }, "engine", "");
    row("newObject", [](Facade& f) { return f.newObject().isUndefined(); });
    row("newQObject", [](Facade& f) { return f.newQObject(&f).isUndefined(); });
    row("extAcc", [](Facade& f) { return f.extAcc().isEmpty(); });
    row("setExtAcc", [](Facade& f) {
        QSignalSpy changed(&f, &Facade::extAccChanged);
        f.setExtAcc({"a"});
        return changed.isEmpty();
    });
    row(
        "jsEngine, asserted", [](Facade& f) { return !f.jsEngine(true); }, "!doAssert || d->mJsEngine.data()",
        "");
    row(
        "jsEngine", [](Facade& f) { return !f.jsEngine(false); }, "", "");
    row(
        "pushContext", [](Facade& f) { return f.pushContext().isUndefined(); }, "", "");
    row(
        "popContext",
        [](Facade& f) {
            f.popContext();
            return true;
        },
        "false", "");
}

void tst_KyScriptAbstractEngine::withoutAnEngineEachOperationIsRefused()
{
    QFETCH(Operation, operation);
    QFETCH(QString, condition);
    QFETCH(QString, message);
    Orphan orphan;
    if (!condition.isEmpty())
        mContracts->expect(condition, message);
    QVERIFY(operation(orphan.facade));
    QCOMPARE(mContracts->verify(), QString());
}

void tst_KyScriptAbstractEngine::guardIsEnteredWithoutAnEngine_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::newRow("evaluate") << Operation(
        [](KyScriptAbstractEngine& f) { return f.evaluate(program("1"), false).isUndefined(); });
    QTest::newRow("runScript") << Operation(
        [](KyScriptAbstractEngine& f) { return f.runScript(program("1")).isUndefined(); });
}

/// The report of the outer call comes while it is inside the guard: what enters then has to wait, and its own
/// report comes afterwards.
void tst_KyScriptAbstractEngine::guardIsEnteredWithoutAnEngine()
{
    QFETCH(Operation, operation);
    Orphan orphan;
    Reentry reentry([&] { orphan.facade.runScript(program("2", "inner"), true, false, true); });
    LogCapture log(2);
    mContracts->expect("0", Uninitialized);
    mContracts->expect("0", Uninitialized);
    QVERIFY(operation(orphan.facade));
    QCOMPARE(log.take(), QStringList({"2|Script Interface|Recursive script call: inner",
                                      "2|Script Interface|Delaying to serialize execution!"}));
}

void tst_KyScriptAbstractEngine::serializedReentryRunsAfterTheOuterRun()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    Cleared cleared(host.notes);
    facade.runScript(program("host.note('outer'); host.note(typeof host.later(\"host.note('inner')\"));"
                             "host.note('outer ends')"),
                     true, false, false);
    QCOMPARE(host.notes, QStringList({"outer", "undefined", "outer ends", "clear", "inner", "clear"}));
}

void tst_KyScriptAbstractEngine::serializedResultIsDropped()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    QCOMPARE(facade.runScript(program("host.later('return 99'); return 7")).toInt(), 7);
}

void tst_KyScriptAbstractEngine::queuedScriptsKeepTheirOrder()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    facade.runScript(
        program("for (var i = 1; i <= 3; ++i) host.later('host.note(' + i + ')'); host.note('outer')"));
    QCOMPARE(host.notes, QStringList({"outer", "1", "2", "3"}));
}

void tst_KyScriptAbstractEngine::queuedScriptKeepsItsFlags_data()
{
    runScriptPassesItsFlags_data();
}

void tst_KyScriptAbstractEngine::queuedScriptKeepsItsFlags()
{
    QFETCH(bool, pushContext);
    QFETCH(bool, noFunction);
    QFETCH(bool, scoped);
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    host.action = [&] {
        facade.runScript(program("var declared = 1; host.note('ran')"), pushContext, noFunction, true);
    };
    facade.runScript(program("host.act()"));
    QCOMPARE(host.notes, QStringList("ran"));
    QCOMPARE(facade.globalObject().hasProperty("declared"), !scoped);
}

void tst_KyScriptAbstractEngine::queuedIsolatedScriptWithoutAWrapperIsAContractReport()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    host.action = [&] {
        KyScriptProgram script = program("host.note('ran'); return 1");
        script.setIsolatedContext(true);
        facade.runScript(script, false, false, true);
        QVERIFY(mContracts->reports().isEmpty());
    };
    mContracts->expect("wrapToFunction == script.isolatedContext()");
    facade.runScript(program("host.act()"));
    QCOMPARE(host.notes, QStringList("ran"));
}

void tst_KyScriptAbstractEngine::queuedProgramIsACopy()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    host.action = [&] {
        KyScriptProgram script = program("host.note('as queued')");
        facade.runScript(script, true, false, true);
        script.setSourceCode("host.note('changed')");
    };
    facade.runScript(program("host.act()"));
    QCOMPARE(host.notes, QStringList("as queued"));
}

void tst_KyScriptAbstractEngine::queuedScriptCleansUp()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    Cleared cleared(host.notes);
    facade.runScript(program("host.later(\"host.note('1')\"); host.later(\"host.note('2')\")"));
    QCOMPARE(host.notes, QStringList({"clear", "1", "clear", "2", "clear"}));
}

void tst_KyScriptAbstractEngine::scriptQueuedInANestedRunWaitsForTheOutermost()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    facade.runScript(program("host.run(\"host.later('host.note(3)'); host.note(1)\"); host.note(2)"));
    QCOMPARE(host.notes, QStringList({"1", "2", "3"}));
}

/// The queue is taken as a whole: what a queued script queues is drained when that script ends, before those
/// that were queued with it.
void tst_KyScriptAbstractEngine::scriptsQueuedDuringTheDrainRunAtOnceBehindTheirRun()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    facade.runScript(
        program("host.later(\"host.later('host.note(2)'); host.later('host.note(3)'); host.note(1)\");"
                "host.later('host.note(4)'); host.note(0)"));
    QCOMPARE(host.notes, QStringList({"0", "1", "2", "3", "4"}));
}

void tst_KyScriptAbstractEngine::longChainOfQueuedScriptsRuns()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    facade.runScript(program("count = 0; step = 'if (++count < 200) host.later(step)'; host.later(step)"));
    QCOMPARE(facade.globalObject().property("count").toInt(), 200);
}

void tst_KyScriptAbstractEngine::queueIsDrainedAfterAFailure()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    QVERIFY(facade.runScript(program("host.later('host.note(1)'); throw new Error('x')")).isError());
    QCOMPARE(host.notes, QStringList("1"));
}

void tst_KyScriptAbstractEngine::failureOfAQueuedScriptIsLoggedAndTheNextRuns()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    LogCapture log(3);
    QCOMPARE(
        facade
            .runScript(program("host.later(\"throw new Error('x')\"); host.later('host.note(2)'); return 7"))
            .toInt(),
        7);
    QCOMPARE(host.notes, QStringList("2"));
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), 1);
    QVERIFY2(lines.first().startsWith("3|Script Interface|Uncaught exception in inner\nException: x\n"),
             qPrintable(lines.first()));
}

void tst_KyScriptAbstractEngine::reentryWithoutSerializeRunsNested()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    QCOMPARE(facade
                 .runScript(program("shared = 1; var v = host.run('shared = shared + 1; return 6 * 7');"
                                    "return v + ' ' + shared"))
                 .toString(),
             QStringLiteral("42 2"));
}

void tst_KyScriptAbstractEngine::nestedRunLeavesTheStateOfTheOuterRunAlone()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    Cleared cleared(host.notes);
    facade.runScript(program("host.run('1'); host.note('outer')"));
    QCOMPARE(host.notes, QStringList({"outer", "clear"}));
}

void tst_KyScriptAbstractEngine::depthReturnsAfterAFailure()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    facade.runScript(program("host.run(\"throw new Error('x')\"); throw new Error('y')"));
    facade.evaluate(program("throw new Error('z')"), false);
    LogCapture log(2);
    facade.runScript(program("host.note('ran')"), true, false, true);
    QCOMPARE(host.notes, QStringList("ran"));
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptAbstractEngine::reentryThroughTheEventLoopIsSeen()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    QTimer::singleShot(0, &host, [&] { host.later("host.note('tool')"); });
    LogCapture log(2);
    facade.runScript(program("host.spin(); host.note('outer')"));
    QCOMPARE(host.notes, QStringList({"outer", "tool"}));
    QCOMPARE(log.take(), QStringList({"2|Script Interface|Recursive script call: inner",
                                      "2|Script Interface|Delaying to serialize execution!"}));
}

void tst_KyScriptAbstractEngine::reentryThroughEvaluateIsNotReported()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    Cleared cleared(host.notes);
    LogCapture log(2);
    QCOMPARE(facade.runScript(program("return host.evaluate('6 * 7') + 1")).toInt(), 43);
    QCOMPARE(host.notes, QStringList("clear"));
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptAbstractEngine::runInsideEvaluateIsAReentry()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    Cleared cleared(host.notes);
    LogCapture log(2);
    QCOMPARE(facade.evaluate(program("host.run('return 7') + 1"), false).toInt(), 8);
    QCOMPARE(host.notes, QStringList());
    QCOMPARE(log.take(), QStringList("2|Script Interface|Recursive script call: inner"));
}

void tst_KyScriptAbstractEngine::queueIsDrainedAfterEvaluate()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    facade.evaluate(program("host.evaluate('host.later(\"host.note(3)\"); host.note(1)'); host.note(2)"),
                    false);
    QCOMPARE(host.notes, QStringList({"1", "2", "3"}));
}

void tst_KyScriptAbstractEngine::runOnTheEngineItselfDoesNotCount()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    LogCapture log(2);
    facade.jsEngine(true)->runScript(program("host.note(host.later('return 7'))"));
    QCOMPARE(host.notes, QStringList("7"));
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptAbstractEngine::facadesCountApart()
{
    KyScriptAbstractEngine first(nullptr, 0), second(nullptr, 0);
    Host host(second);
    QJSEngine::setObjectOwnership(&host, QJSEngine::CppOwnership);
    first.globalObject().setProperty("other", first.newQObject(&host));
    LogCapture log(2);
    QCOMPARE(first.runScript(program("return other.later('return 7')")).toInt(), 7);
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptAbstractEngine::reentryIsLogged_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("line");
    QTest::addColumn<QByteArray>("info");
    QTest::addColumn<QString>("text");
    const QString head = "Recursive script call";
    QTest::newRow("nothing") << "" << -1 << QByteArray() << head;
    QTest::newRow("info") << "" << -1 << QByteArray("Tool") << head + ": Tool";
    QTest::newRow("file") << "a.js" << -1 << QByteArray() << head + ", in file: a.js";
    QTest::newRow("file and line 0") << "a.js" << 0 << QByteArray() << head + ", in file: a.js";
    QTest::newRow("file and line 1") << "a.js" << 1 << QByteArray() << head + ", in file: a.js, line 1";
    QTest::newRow("line without a file") << "" << 12 << QByteArray() << head;
    QTest::newRow("all") << "a.js" << 12 << QByteArray("Tool") << head + ": Tool, in file: a.js, line 12";
    QTest::newRow("local encoding") << QString::fromUtf8("ü€.js") << 12 << QByteArray()
                                    << head + QString::fromUtf8(", in file: ü€.js, line 12");
    QTest::newRow("per cent sign") << "%s%1.js" << 12 << QByteArray("%d")
                                   << head + ": %d, in file: %s%1.js, line 12";
}

void tst_KyScriptAbstractEngine::reentryIsLogged()
{
    QFETCH(QString, file);
    QFETCH(int, line);
    QFETCH(QByteArray, info);
    QFETCH(QString, text);
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    KyScriptProgram script("1", file, line);
    script.setInfoString(info.constData());
    host.action = [&] { facade.runScript(script, true, false, false); };
    LogCapture log(2);
    facade.runScript(program("host.act()"));
    QCOMPARE(log.take(), QStringList("2|Script Interface|" + text));
}

void tst_KyScriptAbstractEngine::delayIsLoggedBehindTheReentry()
{
    KyScriptAbstractEngine facade(nullptr, 0);
    Host host(facade);
    LogCapture log(2);
    facade.runScript(program("host.later('1'); host.run('2'); host.later('3')"));
    const QString reentry = "2|Script Interface|Recursive script call: inner";
    const QString delay = "2|Script Interface|Delaying to serialize execution!";
    QCOMPARE(log.take(), QStringList({reentry, delay, reentry, reentry, delay}));
}

void tst_KyScriptAbstractEngine::facadeOfANameIsOne()
{
    KyScriptAbstractEngine& facade = KyScriptAbstractInterface::getInstance("one");
    QCOMPARE(&KyScriptAbstractInterface::getInstance("one"), &facade);
    QCOMPARE(facade.jsEngine(true), &KyScriptInterface::getInstance("one"));
    QCOMPARE(facade.jsEngine(true)->options(), -1);
    QVERIFY(!facade.parent());
    QCOMPARE(facade.runScript(program("return 7"), true, false, false).toInt(), 7);
}

void tst_KyScriptAbstractEngine::namesMindCase()
{
    KyScriptAbstractEngine& lower = KyScriptAbstractInterface::getInstance("a");
    KyScriptAbstractEngine& upper = KyScriptAbstractInterface::getInstance("A");
    QVERIFY(&lower != &upper);
    QVERIFY(lower.jsEngine(true) != upper.jsEngine(true));
    lower.runScript(program("mine = 1"));
    QVERIFY(!upper.globalObject().hasProperty("mine"));
    QVERIFY(&KyScriptAbstractInterface::getInstance("") != &lower);
    QCOMPARE(&KyScriptAbstractInterface::getInstance(QString()), &KyScriptAbstractInterface::getInstance(""));
}

void tst_KyScriptAbstractEngine::facadeOfANameIsBoundOnce()
{
    KyScriptAbstractEngine& facade = KyScriptAbstractInterface::getInstance("bound");
    delete facade.jsEngine(true);
    KyScriptInterface& anew = KyScriptInterface::getInstance("bound");
    QCOMPARE(&KyScriptAbstractInterface::getInstance("bound"), &facade);
    QVERIFY(!facade.jsEngine(false));
    mContracts->expect("0", Uninitialized);
    QVERIFY(facade.runScript(program("return 1")).isUndefined());
    QCOMPARE(anew.runScript(program("return 1")).toInt(), 1);

    QSignalSpy changed(&facade, &KyScriptAbstractEngine::extAccChanged);
    Q_EMIT anew.extAccChanged();
    QCOMPARE(changed.size(), 0);
}

void tst_KyScriptAbstractEngine::signalOfANamedEngineIsForwarded()
{
    KyScriptAbstractEngine& facade = KyScriptAbstractInterface::getInstance("signal");
    QSignalSpy changed(&facade, &KyScriptAbstractEngine::extAccChanged);
    Q_EMIT facade.jsEngine(true)->extAccChanged();
    QCOMPARE(changed.size(), 1);
}

KY_TEST_MAIN(tst_KyScriptAbstractEngine)
#include "tst_KyScriptAbstractEngine.moc"
