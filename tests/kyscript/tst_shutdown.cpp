#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>
#include <support/ModalAnswer.h>

#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptExternalMetaObject.h>
#include <kyscript/KyScriptExternalObject.h>
#include <kyscript/KyScriptGlobal.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptProgram.h>
#include <kyscript/KyScriptRunner.h>

#include <QMessageBox>
#include <QPointer>
#include <QTest>

#include <cstdio>
#include <cstdlib>
#include <optional>

/// An object that a script may keep, and that a host publishes.
class Thing : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE Thing() {}
    Q_INVOKABLE QString name() const { return QStringLiteral("thing"); }
};

/// An external object that does something at the end of a run.
class EndOfRun : public KyScriptExternalObject
{
    Q_OBJECT
public:
    explicit EndOfRun(std::function<void()> inAction, int inKind = ScriptExternalKindA)
        : KyScriptExternalObject(nullptr, QStringLiteral("endOfRun%1").arg(inKind), inKind)
        , mAction(std::move(inAction))
    {}
    void clear() override
    {
        ++cleared;
        if (const auto action = std::exchange(mAction, nullptr))
            action();
    }
    int cleared = 0;

private:
    std::function<void()> mAction;
};

/// The way of a script to its facade.
class Host : public QObject
{
    Q_OBJECT
public:
    explicit Host(KyScriptAbstractEngine& inFacade)
        : mFacade(inFacade)
    {
        QJSEngine::setObjectOwnership(this, QJSEngine::CppOwnership);
        inFacade.globalObject().setProperty(QStringLiteral("host"), inFacade.newQObject(this));
    }
    Q_INVOKABLE void later(QString inSource)
    {
        mFacade.runScript(KyScriptProgram(inSource, "inner"), true, false, true);
    }
    Q_INVOKABLE void note(QString inText) { notes.append(inText); }
    Q_INVOKABLE void act() { action(); }

    QStringList notes;
    std::function<void()> action;

private:
    KyScriptAbstractEngine& mFacade;
};

namespace {

/// What happens when the process is nearly over: after the application object, with which named engines end.
/// A condition that does not hold then, and any contract report since the test, fails the process.
struct EndOfProcess
{
    ~EndOfProcess()
    {
        for (const auto& [text, holds] : conditions) {
            if (holds())
                continue;
            std::fprintf(stderr, "At the end of the process: %s\n", text);
            std::_Exit(3);
        }
    }

    std::optional<ContractWatch> contracts;
    std::vector<std::pair<const char*, std::function<bool()>>> conditions;
    std::shared_ptr<void> kept; ///< Ends now, before the contracts do.
};

/// Made before all that the module makes on first use, and so ended after it.
EndOfProcess sEnd;

} // namespace

/// Every function is a process of its own: its end is a part of the test.
class tst_shutdown : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void enginesOutliveThePlatform();
    void enginesOutliveThePlatformAndRun();
    void enginesAreCleanedUpAfterThePlatform();
    void enginesEndBeforeThePlatform();
    void platformGoesUnderAnOpenBox();

    void facadeOutlivesItsEngine();
    void facadeOfANameOutlivesItsEngine();

    void runnerEndsWithAnOpenContext();
    void runnerWithAnOpenContextOutlivesThePlatform();
    void runnerOutlivesItsEngine();
    void runnerEndsAfterTheApplication();

    void engineEndsWithAPendingQueue_data();
    void engineEndsWithAPendingQueue();
    void engineEndsWhileTheQueueIsDrained();
    void facadeEndsWithAPendingQueue();
    void facadeEndsWhileTheQueueIsDrained();

    void processEndsWithNamedEngines();
    void processEndsWithAFullGlobal();
    void processEndsWithoutAnyEngine();
    void engineEndsAfterTheApplication();
    void externalsEndAfterTheApplication();

private:
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
};

namespace {

constexpr const char* Uninitialized = "Uninitialized engine";

KyScriptProgram program(const char* inSource)
{
    return KyScriptProgram(QString::fromUtf8(inSource), "program");
}

QString text(KyScriptEngine& ioEngine, const char* inSource)
{
    return ioEngine.runScript(program(inSource), false).toString();
}

void flushDeferredDeletes()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

/// Uses what an engine of all options has of the platform.
constexpr const char* UseAll = "var studies = StudyList.get('PRIMARY_STUDIES');"
                               "StudyList.unite(studies, StudyList.get('ACTIVE_VIEWER'));"
                               "StudyList.lockForReporting(studies);"
                               "Message.warn('warned'); Message.trace('traced'); Message.hide();"
                               "guiDate(new Date()); guiTime(new Date()); btoa('x'); collectGarbage();"
                               "Global.count = (Global.count || 0) + 1;"
                               "studies.length";

} // namespace

void tst_shutdown::init()
{
    sEnd.contracts.reset(); // of the row before
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
}

void tst_shutdown::cleanup()
{
    const QString broken = mContracts->verify();
    mContracts.reset();
    mPlatform.reset();
    sEnd.contracts.emplace();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

void tst_shutdown::enginesOutliveThePlatform()
{
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("1"), KyTestPlatform::study("2")});
    const QPointer<KyScriptInterface> engine = &KyScriptInterface::getInstance("");
    KyScriptAbstractInterface::getInstance("other").runScript(program(UseAll), false);
    QCOMPARE(text(*engine, UseAll), QStringLiteral("2"));
    engine->runScript(program("kept = StudyList.get('PRIMARY_STUDIES')"), false, false, false); // no clean-up
    mPlatform.reset();
    QVERIFY(engine);
}

void tst_shutdown::enginesOutliveThePlatformAndRun()
{
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("1")});
    KyScriptInterface& engine = KyScriptInterface::getInstance("");
    engine.runScript(program("kept = StudyList.get('PRIMARY_STUDIES')"), false, false, false);
    mPlatform.reset();

    LogCapture log(2);
    QCOMPARE(text(engine, "kept[0].getTag('DICOM.StudyInstanceUID') + kept[0].worklistStatus() +"
                          "kept[0].getInterpretationStatus() + kept[0].getTimeSpent()"),
             QStringLiteral("10"));
    QCOMPARE(text(engine, UseAll), QStringLiteral("0"));
    QCOMPARE(text(KyScriptInterface::getInstance("born late"), UseAll), QStringLiteral("0"));
    QCOMPARE(log.take(), QStringList({"2|Script Interface|warned", "2|Script Interface|warned"}));
    ModalAnswer answer(ModalAnswer::clicking("OK"));
    QCOMPARE(text(engine, "Message.show('x'); Global.count"), QStringLiteral("2"));
}

void tst_shutdown::enginesAreCleanedUpAfterThePlatform()
{
    KyScriptInterface& engine = KyScriptInterface::getInstance("");
    const QPointer<Thing> thing = new Thing;
    engine.registerForDestruction(thing);
    text(engine, UseAll);
    mPlatform.reset();
    KyScriptInterface::cleanupInstances();
    QVERIFY(!thing);
    QCOMPARE(text(engine, "6 * 7"), QStringLiteral("42"));
    KyScriptInterface::cleanupInstances();
}

void tst_shutdown::enginesEndBeforeThePlatform()
{
    const QPointer<KyScriptInterface> engine = &KyScriptInterface::getInstance("");
    text(*engine, UseAll);
    delete static_cast<QObject*>(engine.data());
    QVERIFY(!KyScriptInterface::hasInstances());
    KyScriptInterface::cleanupInstances();
}

void tst_shutdown::platformGoesUnderAnOpenBox()
{
    KyScriptInterface& engine = KyScriptInterface::getInstance("");
    auto window = std::make_unique<QWidget>();
    mPlatform->monitors.setMainWindow(window.get());
    ModalAnswer ofShow([&](QWidget*) {
        mPlatform.reset();
        window.reset();
    });
    QCOMPARE(text(engine, "Message.show('x'); Message.warn('y'); StudyList.get('PRIMARY_STUDIES').length"),
             QStringLiteral("0"));
    ModalAnswer ofQuestion([&](QWidget* inWindow) {
        QVERIFY(!inWindow->parentWidget());
        ModalAnswer::clicking("b")(inWindow);
    });
    QCOMPARE(text(engine, "Message.question('x', ['a', 'b'])"), QStringLiteral("b"));
}

void tst_shutdown::facadeOutlivesItsEngine()
{
    auto parent = std::make_unique<QObject>();
    auto facade = std::make_unique<KyScriptAbstractEngine>(parent.get(), -1);
    const QJSValue function = facade->evaluate(program("(function() { return 7; })"), false);
    parent.reset();

    for (int i = 0; i < 6; ++i)
        mContracts->expect("0", Uninitialized);
    mContracts->expect("engine");
    QString message;
    QVERIFY(facade->runScript(program("1")).isUndefined());
    QVERIFY(facade->evaluate(program("1"), false).isUndefined());
    QVERIFY(!facade->scriptIsValid(program("1"), message));
    QVERIFY(!facade->logException("Ctx", QJSValue(), QString()));
    QVERIFY(facade->newObject().isUndefined());
    QVERIFY(facade->extAcc().isEmpty());
    QVERIFY(facade->globalObject().isUndefined());
    QVERIFY(facade->pushContext().isUndefined());
    QVERIFY(function.call().isUndefined());
    mPlatform.reset();
    facade.reset();
}

void tst_shutdown::facadeOfANameOutlivesItsEngine()
{
    KyScriptAbstractEngine& facade = KyScriptAbstractInterface::getInstance("gone");
    delete facade.jsEngine(true);
    mContracts->expect("0", Uninitialized);
    QVERIFY(facade.runScript(program("1"), true, false, true).isUndefined());
    QVERIFY(!facade.jsEngine(false));

    // Asked once more when its application has gone, and a second engine of the name with it.
    const QPointer<KyScriptInterface> anew = &KyScriptInterface::getInstance("gone");
    sEnd.conditions.emplace_back("the facade is there, without an engine", [&facade] {
        return !facade.jsEngine(false) && facade.pushContext().isUndefined();
    });
    sEnd.conditions.emplace_back("the second engine has ended", [anew] { return !anew; });
}

void tst_shutdown::runnerEndsWithAnOpenContext()
{
    auto runner = std::make_unique<KyScriptRunner>();
    QVERIFY(runner->initEngine(-1, program("function name() { return First.name(); }")));
    runner->createCurrentContext();
    const QPointer<Thing> first = new Thing, second = new Thing;
    runner->addScriptObjectToCurrentContext("First", first);
    runner->addScriptObjectToCurrentContext("Second", second);
    const QJSValue function = runner->getCurrentContextFunction("name");
    QCOMPARE(runner->callFunction(function).toString(), QStringLiteral("thing"));

    runner.reset();
    QVERIFY(first && second);
    QVERIFY(function.call().isUndefined());
    flushDeferredDeletes();
    QVERIFY(!first && !second);
}

void tst_shutdown::runnerWithAnOpenContextOutlivesThePlatform()
{
    auto runner = std::make_unique<KyScriptRunner>();
    QVERIFY(runner->initEngine(-1, program(UseAll)));
    runner->createCurrentContext();
    const QPointer<Thing> thing = new Thing;
    runner->addScriptObjectToCurrentContext("Thing", thing);
    mPlatform.reset();

    QString result;
    QVERIFY(runner->evaluateScript(program(UseAll), result));
    QCOMPARE(result, QStringLiteral("0"));
    runner.reset();
    flushDeferredDeletes();
    QVERIFY(!thing);
}

/// The engine is the runner's own, but a host that publishes an object can find it.
void tst_shutdown::runnerOutlivesItsEngine()
{
    auto runner = std::make_unique<KyScriptRunner>();
    QVERIFY(runner->initEngine(0, program("function f() { return 7; }")));
    runner->createCurrentContext();
    Thing thing;
    runner->addScriptObjectToCurrentContext("Thing", &thing);
    delete KyScriptEngine::of(&thing);

    QVERIFY(runner->hasEngine()); // the facade
    QVERIFY(!runner->hasCurrentContext());
    LogCapture log;
    mContracts->expect("0", Uninitialized);
    mContracts->expect("!message.isEmpty()");
    QVERIFY(!runner->isValidScript(program("1")));
    QCOMPARE(log.take(), QStringList("3|KyScriptRunner|"));
    mContracts->expect("0", Uninitialized); // evaluating
    mContracts->expect("0", Uninitialized); // asking whether the value is an error
    QString result = "old";
    QVERIFY(runner->evaluateScript(program("1"), result));
    QCOMPARE(result, QString());
    mContracts->expect("0", Uninitialized);
    QVERIFY(runner->createObject().isUndefined());
    mContracts->expect("hasCurrentContext()");
    QVERIFY(runner->getCurrentContextFunction("f").isUndefined());
    mContracts->expect("engine");
    QVERIFY(runner->getGlobalFunction("f").isUndefined());
    mContracts->expect("!doAssert || d->mJsEngine.data()");
    QVERIFY(runner->callFunction(QJSValue(), QString("text")).isUndefined());
    mContracts->expect("engine");
    mContracts->expect("!mContext.isUndefined()");
    runner->createCurrentContext();
    QVERIFY(!runner->hasCurrentContext());

    mContracts->expect("mContextObjects.empty()");
    runner.reset();
}

void tst_shutdown::runnerEndsAfterTheApplication()
{
    const auto runner = std::make_shared<KyScriptRunner>();
    QVERIFY(runner->initEngine(-1, program(UseAll)));
    runner->createCurrentContext();
    sEnd.kept = runner;
}

void tst_shutdown::engineEndsWithAPendingQueue_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("by an object of the first kind") << int(ScriptExternalKindA);
    QTest::newRow("by an object of the second kind") << int(ScriptExternalKindB);
}

/// Deleted when no script is on the stack any more: at the end of the run, before the queue is drained.
void tst_shutdown::engineEndsWithAPendingQueue()
{
    QFETCH(int, kind);
    KyScriptAbstractEngine facade(nullptr, -1);
    Host host(facade);
    const QPointer<KyScriptEngine> engine = facade.jsEngine(true);
    EndOfRun ending([&] { delete engine.data(); }, kind);
    EndOfRun other(nullptr, kind == ScriptExternalKindA ? ScriptExternalKindB : ScriptExternalKindA);
    LogCapture log(3);
    for (int i = 0; i < 3; ++i)
        mContracts->expect("0", Uninitialized);
    facade.runScript(program("host.note('outer'); Global.kept = 5;"
                             "for (var i = 0; i < 3; ++i) host.later(\"host.note('inner')\")"),
                     true, false, false);
    QVERIFY(!engine);
    QCOMPARE(host.notes, QStringList("outer"));
    QCOMPARE(KyScriptGlobal::instance().property("kept"), QVariant(5));
    QCOMPARE(ending.cleared, 1);
    QCOMPARE(log.take(), QStringList());

    mContracts->expect("0", Uninitialized);
    QVERIFY(facade.runScript(program("1")).isUndefined());
}

/// The first of the queue brings the object along that ends the engine at the end of its run.
void tst_shutdown::engineEndsWhileTheQueueIsDrained()
{
    KyScriptAbstractEngine facade(nullptr, -1);
    Host host(facade);
    const QPointer<KyScriptEngine> engine = facade.jsEngine(true);
    std::unique_ptr<EndOfRun> ending;
    host.action = [&] { ending = std::make_unique<EndOfRun>([&] { delete engine.data(); }); };
    mContracts->expect("0", Uninitialized);
    mContracts->expect("0", Uninitialized);
    facade.runScript(program("host.note('outer'); host.later(\"host.note('1'); host.act()\");"
                             "host.later('host.note(2)'); host.later('host.note(3)')"));
    QVERIFY(!engine);
    QCOMPARE(host.notes, QStringList({"outer", "1"}));
}

void tst_shutdown::facadeEndsWithAPendingQueue()
{
    auto facade = std::make_unique<KyScriptAbstractEngine>(nullptr, -1);
    Host host(*facade);
    const QPointer<KyScriptEngine> engine = facade->jsEngine(true);
    EndOfRun ending([&] { facade.reset(); });
    LogCapture log(3);
    facade->runScript(program("host.note('outer'); host.later(\"host.note('inner')\"); return 7"));
    QVERIFY(!facade);
    QVERIFY(!engine);
    QCOMPARE(host.notes, QStringList("outer"));
    QCOMPARE(log.take(), QStringList());
}

void tst_shutdown::facadeEndsWhileTheQueueIsDrained()
{
    auto facade = std::make_unique<KyScriptAbstractEngine>(nullptr, -1);
    Host host(*facade);
    std::unique_ptr<EndOfRun> ending;
    host.action = [&] { ending = std::make_unique<EndOfRun>([&] { facade.reset(); }); };
    facade->runScript(program("host.note('outer'); host.later(\"host.note('1'); host.act()\");"
                              "host.later('host.note(2)'); host.later('host.note(3)')"));
    QVERIFY(!facade);
    QCOMPARE(host.notes, QStringList({"outer", "1"}));
}

void tst_shutdown::processEndsWithNamedEngines()
{
    for (const char* name : {"", "a", "A"}) {
        const QPointer<KyScriptInterface> engine = &KyScriptInterface::getInstance(name);
        const QPointer<Thing> made = new Thing;
        engine->globalObject().setProperty("made", engine->newQObject(made));
        engine->registerForDestruction(new Thing);
        KyScriptAbstractInterface::getInstance(name).runScript(program(UseAll), false);
        engine->runScript(program("left = StudyList.get('PRIMARY_STUDIES')"), false, false, false);
        sEnd.conditions.emplace_back("a named engine has ended", [engine] { return !engine; });
        sEnd.conditions.emplace_back("an object of its scripts has ended", [made] { return !made; });
    }
    sEnd.conditions.emplace_back("no named engine is left",
                                 [] { return !KyScriptInterface::hasInstances(); });
}

void tst_shutdown::processEndsWithAFullGlobal()
{
    KyScriptInterface& engine = KyScriptInterface::getInstance("");
    const auto pinned = std::make_shared<Thing>();
    QJSEngine::setObjectOwnership(pinned.get(), QJSEngine::CppOwnership);
    engine.globalObject().setProperty("Thing", engine.newQMetaObject<Thing>());
    engine.globalObject().setProperty("pinned", engine.newQObject(pinned.get()));
    QCOMPARE(text(engine,
                  "Global.a = 1; Global.s = 'x'; Global.d = new Date(); Global.r = /x/i; Global.n = null;"
                  "Global.b = new ArrayBuffer(5); Global.list = [1, {x: [pinned, new Thing()]}];"
                  "Global.pinned = pinned; Global.made = new Thing(); Global.objectName = 'o';"
                  "Global['a\\u0000b'] = 5; for (var i = 0; i < 1000; ++i) Global['k' + i] = {i: i};"
                  "Object.keys(Global).length"),
             QStringLiteral("1011"));
    QCOMPARE(text(KyScriptInterface::getInstance("other"), "Global.pinned.name() + Global.k999.i"),
             QStringLiteral("thing999"));
    sEnd.kept = pinned;
}

void tst_shutdown::processEndsWithoutAnyEngine()
{
    QVERIFY(!KyScriptInterface::hasInstances());
    KyScriptInterface::cleanupInstances();
}

void tst_shutdown::engineEndsAfterTheApplication()
{
    KyScriptInterface* engine = &KyScriptInterface::getInstance("late");
    text(*engine, UseAll);
    engine->setParent(nullptr);
    sEnd.kept = std::shared_ptr<QObject>(static_cast<QObject*>(engine));
    sEnd.conditions.emplace_back("the engine is still the one of its name",
                                 [engine] { return &KyScriptInterface::getInstance("late") == engine; });
}

/// Objects of other modules are often static: made before the registries, and ended after them.
void tst_shutdown::externalsEndAfterTheApplication()
{
    class Offer : public KyScriptExternalMetaObject
    {
    public:
        Offer()
            : KyScriptExternalMetaObject(nullptr, "Offered", &Thing::staticMetaObject)
        {}
    };
    struct Externals
    {
        EndOfRun object{nullptr};
        KyScriptExternalObject later{nullptr, QString(), 0};
        Offer offer;
    };
    const auto externals = std::make_shared<Externals>();
    KyScriptExternalObject::registerExternalInstance(&externals->later, "later", ScriptExternalKindB);
    QCOMPARE(text(KyScriptInterface::getInstance(""),
                  "typeof later + typeof endOfRun262144 + typeof new Offered()"),
             QStringLiteral("objectobjectobject"));
    sEnd.kept = externals;
}

KY_TEST_MAIN(tst_shutdown)
#include "tst_shutdown.moc"
