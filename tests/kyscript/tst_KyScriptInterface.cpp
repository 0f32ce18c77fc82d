#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>

#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptProgram.h>
#include <kyscript/KyScriptRunner.h>

#include <QEvent>
#include <QPointer>
#include <QTest>

/// Does something whenever an engine announces itself to its parent, the application: that is in the middle
/// of its construction.
class Construction : public QObject
{
    Q_OBJECT
public:
    explicit Construction(std::function<void()> inAction)
        : mAction(std::move(inAction))
    {
        QCoreApplication::instance()->installEventFilter(this);
    }
    bool eventFilter(QObject* inWatched, QEvent* inEvent) override
    {
        if (inWatched == QCoreApplication::instance() && inEvent->type() == QEvent::ChildAdded)
            mAction();
        return false;
    }

private:
    const std::function<void()> mAction;
};

/// Does something when it is deleted.
class Ending : public QObject
{
    Q_OBJECT
public:
    explicit Ending(std::function<void()> inAction)
        : mAction(std::move(inAction))
    {}
    ~Ending() override { mAction(); }

private:
    const std::function<void()> mAction;
};

/// The registry of names is the process's: most functions run in a process of their own.
class tst_KyScriptInterface : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void noInstanceAtFirst();
    void privateEnginesAreNoInstances();
    void firstConstructionIsNotSeenBeforeItsEnd();
    void onlyTheFirstNameCounts();
    void nameMayBeAskedForDuringAConstruction();

    void engineOfANameIsOne();
    void engineHasAllOptionsAndBelongsToTheApplication();
    void namesMindCase();
    void emptyNameIsTheDefaultEngine();
    void enginesAreApart();

    void deletedEngineLeavesNoRow();
    void deletedEngineIsMadeAnew();
    void deletedFirstNameLeavesTheOthers();

    void cleanupWithoutInstancesIsHarmless();
    void cleanupReachesEveryEngineAndLeavesItUsable();
    void cleanupSurvivesEnginesThatEndAndBegin();

private:
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
};

namespace {

/// Engines of names end by their parent or, as here, as the objects that they are.
void end(KyScriptInterface& ioEngine)
{
    delete static_cast<QObject*>(&ioEngine);
}

} // namespace

void tst_KyScriptInterface::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
}

void tst_KyScriptInterface::cleanup()
{
    const QString broken = mContracts->verify();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

void tst_KyScriptInterface::noInstanceAtFirst()
{
    QVERIFY(!KyScriptInterface::hasInstances());
    KyScriptInterface::getInstance("any");
    QVERIFY(KyScriptInterface::hasInstances());
}

void tst_KyScriptInterface::privateEnginesAreNoInstances()
{
    KyScriptEngine engine(nullptr, -1);
    KyScriptAbstractEngine facade(nullptr, -1);
    KyScriptRunner runner;
    QVERIFY(runner.initEngine(-1, KyScriptProgram()));
    QVERIFY(!KyScriptInterface::hasInstances());
}

void tst_KyScriptInterface::firstConstructionIsNotSeenBeforeItsEnd()
{
    QList<bool> seen;
    const Construction watch([&] { seen.append(KyScriptInterface::hasInstances()); });
    KyScriptInterface::getInstance("");
    QCOMPARE(seen, QList<bool>({false}));
    QVERIFY(KyScriptInterface::hasInstances());

    KyScriptInterface::getInstance("further");
    QCOMPARE(seen, QList<bool>({false, true}));
}

void tst_KyScriptInterface::onlyTheFirstNameCounts()
{
    QList<bool> seen;
    KyScriptInterface::getInstance("b");
    const Construction watch([&] { seen.append(KyScriptInterface::hasInstances()); });
    // A further engine reports to the default one, which is made first: it stands in front of the others,
    // without an engine until it is made.
    KyScriptInterface::getInstance("c");
    QCOMPARE(seen, QList<bool>({true, false}));
    KyScriptInterface::getInstance("a");
    QCOMPARE(seen, QList<bool>({true, false, true}));
    QVERIFY(KyScriptInterface::hasInstances());
}

void tst_KyScriptInterface::nameMayBeAskedForDuringAConstruction()
{
    KyScriptInterface* inner = nullptr;
    bool asked = false, seen = false;
    const Construction watch([&] {
        if (std::exchange(asked, true))
            return;
        inner = &KyScriptInterface::getInstance("a");
        seen = KyScriptInterface::hasInstances();
    });
    KyScriptInterface& outer = KyScriptInterface::getInstance("b");
    QVERIFY(inner != &outer);
    QVERIFY(seen); // the first name, by then
    QCOMPARE(&KyScriptInterface::getInstance("a"), inner);
    QCOMPARE(&KyScriptInterface::getInstance("b"), &outer);
}

void tst_KyScriptInterface::engineOfANameIsOne()
{
    KyScriptInterface& engine = KyScriptInterface::getInstance("one");
    QCOMPARE(&KyScriptInterface::getInstance("one"), &engine);
    QCOMPARE(KyScriptAbstractInterface::getInstance("one").jsEngine(true), &engine);
}

void tst_KyScriptInterface::engineHasAllOptionsAndBelongsToTheApplication()
{
    KyScriptInterface& engine = KyScriptInterface::getInstance("all");
    QCOMPARE(engine.options(), -1);
    QCOMPARE(engine.parent(), QCoreApplication::instance());
    QCOMPARE(engine.objectName(), QStringLiteral("Scripting"));
    QCOMPARE(engine.runScript(KyScriptProgram("return typeof StudyList + typeof Message + typeof Global", ""))
                 .toString(),
             QStringLiteral("objectobjectobject"));
}

void tst_KyScriptInterface::namesMindCase()
{
    QVERIFY(&KyScriptInterface::getInstance("a") != &KyScriptInterface::getInstance("A"));
}

void tst_KyScriptInterface::emptyNameIsTheDefaultEngine()
{
    QCOMPARE(&KyScriptInterface::getInstance(QString()), &KyScriptInterface::getInstance(""));
    QVERIFY(&KyScriptInterface::getInstance("") != &KyScriptInterface::getInstance(" "));
}

void tst_KyScriptInterface::enginesAreApart()
{
    KyScriptInterface& first = KyScriptInterface::getInstance("first");
    KyScriptInterface& second = KyScriptInterface::getInstance("second");
    first.runScript(KyScriptProgram("mine = 1", ""));
    QVERIFY(first.globalObject().hasProperty("mine"));
    QVERIFY(!second.globalObject().hasProperty("mine"));
}

void tst_KyScriptInterface::deletedEngineLeavesNoRow()
{
    end(KyScriptInterface::getInstance("gone"));
    QVERIFY(!KyScriptInterface::hasInstances());
    KyScriptInterface::cleanupInstances();
}

void tst_KyScriptInterface::deletedEngineIsMadeAnew()
{
    KyScriptInterface& engine = KyScriptInterface::getInstance("again");
    engine.runScript(KyScriptProgram("old = 1", ""));
    const QPointer<KyScriptInterface> old = &engine;
    engine.deleteLater();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!old);

    KyScriptInterface& anew = KyScriptInterface::getInstance("again");
    QVERIFY(KyScriptInterface::hasInstances());
    QVERIFY(!anew.globalObject().hasProperty("old"));
    QCOMPARE(&KyScriptInterface::getInstance("again"), &anew);
}

void tst_KyScriptInterface::deletedFirstNameLeavesTheOthers()
{
    KyScriptInterface& second = KyScriptInterface::getInstance("b");
    end(KyScriptInterface::getInstance("a"));
    QVERIFY(KyScriptInterface::hasInstances());
    QCOMPARE(&KyScriptInterface::getInstance("b"), &second);
}

void tst_KyScriptInterface::cleanupWithoutInstancesIsHarmless()
{
    KyScriptInterface::cleanupInstances();
    QVERIFY(!KyScriptInterface::hasInstances());
}

void tst_KyScriptInterface::cleanupReachesEveryEngineAndLeavesItUsable()
{
    int deleted = 0;
    for (const char* name : {"", "b"}) {
        KyScriptInterface& engine = KyScriptInterface::getInstance(name);
        engine.registerForDestruction(new Ending([&] { ++deleted; }));
        engine.newQObject(new Ending([&] { ++deleted; })); // dropped at once: the collector's
    }
    KyScriptInterface::cleanupInstances();
    QCOMPARE(deleted, 2);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(deleted, 4);

    for (const char* name : {"", "b"})
        QCOMPARE(KyScriptInterface::getInstance(name).runScript(KyScriptProgram("return 7", "")).toInt(), 7);
    KyScriptInterface::cleanupInstances();
    QCOMPARE(deleted, 4);
}

void tst_KyScriptInterface::cleanupSurvivesEnginesThatEndAndBegin()
{
    KyScriptInterface& first = KyScriptInterface::getInstance("a");
    const QPointer<KyScriptInterface> second = &KyScriptInterface::getInstance("b");
    KyScriptInterface& third = KyScriptInterface::getInstance("c");
    bool reachedThird = false;
    first.registerForDestruction(new Ending([&] {
        end(*second);
        KyScriptInterface::getInstance("a0");
    }));
    third.registerForDestruction(new Ending([&] { reachedThird = true; }));
    KyScriptInterface::cleanupInstances();
    QVERIFY(!second);
    QVERIFY(reachedThird);
    QCOMPARE(&KyScriptInterface::getInstance("c"), &third);
}

KY_TEST_MAIN(tst_KyScriptInterface)
#include "tst_KyScriptInterface.moc"
