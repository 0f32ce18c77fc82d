#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>

#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptExternalObject.h>
#include <kyscript/KyScriptProgram.h>

#include <QPointer>
#include <QTest>

/// An object of another module.
class External : public KyScriptExternalObject
{
    Q_OBJECT
public:
    External(const QString& inName, int inKind, QStringList* ioCleared = nullptr)
        : KyScriptExternalObject(nullptr, inName, inKind)
        , label(inName)
        , mCleared(ioCleared)
    {}
    Q_INVOKABLE QString whoAmI() const { return label; }
    void clear() override
    {
        if (mCleared)
            mCleared->append(label);
        if (onClear)
            onClear();
    }

    QString label;
    std::function<void()> onClear;

Q_SIGNALS:
    void called(const QString& inText);

private:
    QStringList* const mCleared;
};

/// One that is no KyScriptExternalObject, though it has a method of that name.
class Plain : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE void clear() { ++cleared; }
    Q_INVOKABLE QString whoAmI() const { return QStringLiteral("plain"); }
    int cleared = 0;
};

class tst_KyScriptExternalObject : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // registration
    void objectRegistersItself();
    void emptyNameOfAnObjectIsNoRow();
    void objectMayRegisterLater();
    void instanceGetsTheNameAsItsObjectName();
    void factoryObjectKeepsItsObjectName();
    void emptyNameIsAContractReport();
    void duplicateIsAContractReportForEachKind();
    void duplicateAcrossKindsKeepsBothRows();
    void duplicateInAKindLeavesTheFirst();
    void deletedObjectLeavesNoRow();
    void unregisteringTakesOneRowOfEachKind();
    void unregisteringKeepsTheOrderOfTheOthers();
    void unregisteringNothingLeavesFactories();
    void otherKindIsNeverAskedFor();

    // what engines see
    void engineSeesTheKindsOfItsOptions_data();
    void engineSeesTheKindsOfItsOptions();
    void factoryOfAMissingKindIsNeverCalled();
    void objectRegisteredLaterIsSeenAtTheNextEvaluation();
    void presentNameStays_data();
    void presentNameStays();
    void standardNameStays();
    void throwingAccessorOfTheNameStays();
    void instanceIsSharedByEngines();
    void signalsReachEveryEngine();
    void eachEngineHasAnObjectOfTheFactory();
    void factoryObjectBelongsToTheScriptSide();
    void factoryObjectWithAParentStays();
    void factoryThatGivesNullGivesNull();
    void emptyFactoryIsSkipped();
    void factoryMayRegisterRowsOfAnotherKind();
    void deadInstanceIsSkipped();
    void removalDoesNotReachEngines();
    void scriptAndCollectorLeaveAnInstanceAlone();
    void plainEngineCanBeServed();

    // clear
    void clearComesAtTheEndOfTheOutermostRun();
    void clearReachesKindsInTheirOrder();
    void clearReachesTheKindsOfTheOptions_data();
    void clearReachesTheKindsOfTheOptions();
    void clearFindsAFactoryObjectThroughItsName();
    void clearLeavesOtherClassesAlone();
    void clearReachesAnInstanceWhoseNameIsTaken();
    void clearOfADeadInstanceLooksAtTheName();
    void clearMayEndOtherObjects();
    void clearMayEndItself();
    void clearMayRegisterFurtherObjects();
    void clearWithoutARowDoesNothing();

private:
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
};

namespace {

constexpr int A = ScriptExternalKindA;
constexpr int B = ScriptExternalKindB;
constexpr const char* Taken = "it == objects.end()";

QString takenMessage(const char* inName)
{
    return QStringLiteral("Duplicate external script object name '%1'").arg(QLatin1String(inName));
}

/// A name that no other function uses: factories and dead instances stay in the registry.
QString fresh(const char* inName)
{
    static int sCount = 0;
    return QStringLiteral("%1_%2").arg(QLatin1String(inName)).arg(++sCount);
}

/// Registers a factory and gives the count of its calls. A factory stays in the registry for the rest of the
/// process: it must not refer to anything of the function that registers it.
std::shared_ptr<int> offer(
    const QString& inName, int inKind, const std::function<QObject*()>& inCreator = [] { return new Plain; })
{
    const auto calls = std::make_shared<int>(0);
    KyScriptExternalObject::registerExternalCreator(
        [calls, inCreator] {
            ++*calls;
            return inCreator();
        },
        inName, inKind);
    return calls;
}

struct Engine : KyScriptEngine
{
    explicit Engine(int inOptions = 0)
        : KyScriptEngine(nullptr, inOptions)
    {}
    /// The text of an evaluation that adds external objects, `%1` being \a inName.
    QString text(const char* inSource, const QString& inName = QString())
    {
        QString source = QString::fromUtf8(inSource);
        source.replace(QLatin1String("%1"), inName);
        return evaluate(KyScriptProgram(source, ""), false).toString();
    }
    void run(const char* inSource = "1") { runScript(KyScriptProgram(QString::fromUtf8(inSource), "")); }
};

void flushDeferredDeletes()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

void tst_KyScriptExternalObject::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
}

void tst_KyScriptExternalObject::cleanup()
{
    const QString broken = mContracts->verify();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

void tst_KyScriptExternalObject::objectRegistersItself()
{
    External external("Desk", A);
    Engine engine;
    QCOMPARE(engine.text("Desk.whoAmI()"), QStringLiteral("Desk"));
}

void tst_KyScriptExternalObject::emptyNameOfAnObjectIsNoRow()
{
    External first("", A), second("", A);
    QCOMPARE(first.objectName(), QString());
    first.setObjectName("own");
    Engine engine;
    engine.text("1");
    QVERIFY(!engine.globalObject().hasProperty(""));
    QVERIFY(!engine.globalObject().hasProperty("own"));
}

void tst_KyScriptExternalObject::objectMayRegisterLater()
{
    External external("", A);
    KyScriptExternalObject::registerExternalInstance(&external, "Later", B);
    Engine engine(B);
    QCOMPARE(engine.text("typeof Later.whoAmI"), QStringLiteral("function"));
}

void tst_KyScriptExternalObject::instanceGetsTheNameAsItsObjectName()
{
    External external("Desk", A);
    QCOMPARE(external.objectName(), QStringLiteral("Desk"));
    Plain plain;
    plain.setObjectName("before");
    KyScriptExternalObject::registerExternalInstance(&plain, "Plain", A);
    QCOMPARE(plain.objectName(), QStringLiteral("Plain"));
    KyScriptExternalObject::unregisterExternalInstance(&plain);
}

void tst_KyScriptExternalObject::factoryObjectKeepsItsObjectName()
{
    const QString name = fresh("Made");
    offer(name, A, [] {
        auto* object = new Plain;
        object->setObjectName("own");
        return object;
    });
    Engine engine;
    QCOMPARE(engine.text("%1.objectName", name), QStringLiteral("own"));
}

void tst_KyScriptExternalObject::emptyNameIsAContractReport()
{
    const QString message = "Invalid name for external script object";
    Plain plain;
    mContracts->expect("!inName.isEmpty()", message);
    KyScriptExternalObject::registerExternalInstance(&plain, "", 7);
    // The row is there all the same, and so the empty name is taken.
    mContracts->expect("!inName.isEmpty()", message);
    mContracts->expect(Taken, takenMessage(""));
    offer("", 8);
    mContracts->expect("!inName.isEmpty()", message);
    mContracts->expect(Taken, takenMessage(""));
    mContracts->expect(Taken, takenMessage(""));
    KyScriptExternalObject::registerExternalInstance(&plain, "", 7);
    KyScriptExternalObject::unregisterExternalInstance(&plain);
    KyScriptExternalObject::unregisterExternalInstance(&plain);
}

void tst_KyScriptExternalObject::duplicateIsAContractReportForEachKind()
{
    External first("Twice", A);
    mContracts->expect(Taken, takenMessage("Twice"));
    External second("Twice", A);
    mContracts->expect(Taken, takenMessage("Twice"));
    External third("Twice", A); // two rows of one kind are one report
    mContracts->expect(Taken, takenMessage("Twice"));
    External fourth("Twice", B);
    mContracts->expect(Taken, takenMessage("Twice"));
    mContracts->expect(Taken, takenMessage("Twice"));
    External fifth("Twice", B);

    External other("twice", A); // names mind case
}

void tst_KyScriptExternalObject::duplicateAcrossKindsKeepsBothRows()
{
    External a("Both", A);
    mContracts->expect(Taken, takenMessage("Both"));
    External b("Both", B);
    a.label = "a";
    b.label = "b";
    Engine onlyA(A), onlyB(B), both(A | B);
    QCOMPARE(onlyA.text("Both.whoAmI()"), QStringLiteral("a"));
    QCOMPARE(onlyB.text("Both.whoAmI()"), QStringLiteral("b"));
    QCOMPARE(both.text("Both.whoAmI()"), QStringLiteral("a"));
}

void tst_KyScriptExternalObject::duplicateInAKindLeavesTheFirst()
{
    auto first = std::make_unique<External>("Two", A);
    mContracts->expect(Taken, takenMessage("Two"));
    External second("Two", A);
    first->label = "first";
    second.label = "second";
    Engine engine;
    QCOMPARE(engine.text("Two.whoAmI()"), QStringLiteral("first"));

    first.reset();
    Engine later;
    QCOMPARE(later.text("Two.whoAmI()"), QStringLiteral("second"));
    QCOMPARE(engine.text("typeof Two + typeof Two.whoAmI"), QStringLiteral("objectundefined"));
}

void tst_KyScriptExternalObject::deletedObjectLeavesNoRow()
{
    {
        External external("Gone", A);
    }
    External again("Gone", A); // no report: the name is free
    Engine engine;
    QCOMPARE(engine.text("Gone.whoAmI()"), QStringLiteral("Gone"));
}

void tst_KyScriptExternalObject::unregisteringTakesOneRowOfEachKind()
{
    Plain plain;
    KyScriptExternalObject::registerExternalInstance(&plain, "One", A);
    KyScriptExternalObject::registerExternalInstance(&plain, "Other", A);
    KyScriptExternalObject::registerExternalInstance(&plain, "Third", B);
    KyScriptExternalObject::unregisterExternalInstance(&plain);
    Engine engine;
    QCOMPARE(engine.text("typeof One + typeof Other + typeof Third"),
             QStringLiteral("undefinedobjectundefined"));
    KyScriptExternalObject::unregisterExternalInstance(&plain);
    Engine later;
    QCOMPARE(later.text("typeof One + typeof Other + typeof Third"),
             QStringLiteral("undefinedundefinedundefined"));
}

void tst_KyScriptExternalObject::unregisteringKeepsTheOrderOfTheOthers()
{
    QStringList cleared;
    auto first = std::make_unique<External>("First", A, &cleared);
    auto second = std::make_unique<External>("Second", A, &cleared);
    External third("Third", A, &cleared);
    External fourth("Fourth", A, &cleared);
    second.reset();
    Engine engine;
    engine.run();
    QCOMPARE(cleared, QStringList({"First", "Third", "Fourth"}));
    cleared.clear();
    first.reset();
    engine.run();
    QCOMPARE(cleared, QStringList({"Third", "Fourth"}));
}

void tst_KyScriptExternalObject::unregisteringNothingLeavesFactories()
{
    const QString name = fresh("Factory");
    offer(name, A);
    KyScriptExternalObject::unregisterExternalInstance(nullptr);
    Plain stranger;
    KyScriptExternalObject::unregisterExternalInstance(&stranger);
    Engine engine;
    QCOMPARE(engine.text("%1.whoAmI()", name), QStringLiteral("plain"));
}

void tst_KyScriptExternalObject::otherKindIsNeverAskedFor()
{
    QStringList cleared;
    External external("Odd", 7, &cleared);
    mContracts->expect(Taken, takenMessage("Odd"));
    External duplicate("Odd", -3, &cleared);
    for (const int options : {0, -1, 7}) {
        Engine engine(options);
        engine.run();
        QCOMPARE(engine.text("typeof Odd"), QStringLiteral("undefined"));
    }
    QCOMPARE(cleared, QStringList());
}

void tst_KyScriptExternalObject::engineSeesTheKindsOfItsOptions_data()
{
    QTest::addColumn<int>("options");
    QTest::addColumn<QString>("seen");
    QTest::newRow("0") << 0 << "a b";
    QTest::newRow("-1") << -1 << "a b";
    QTest::newRow("kind A") << A << "a";
    QTest::newRow("kind B") << B << "b";
    QTest::newRow("both") << (A | B) << "a b";
    QTest::newRow("neither") << int(ScriptGlobal) << "";
    QTest::newRow("only classes") << int(ScriptExternalMetaObjects) << "";
}

void tst_KyScriptExternalObject::engineSeesTheKindsOfItsOptions()
{
    QFETCH(int, options);
    QFETCH(QString, seen);
    External a("OfA", A), b("OfB", B);
    Engine engine(options);
    engine.text("1");
    QStringList names;
    if (engine.globalObject().hasProperty("OfA"))
        names.append("a");
    if (engine.globalObject().hasProperty("OfB"))
        names.append("b");
    QCOMPARE(names.join(' '), seen);
}

void tst_KyScriptExternalObject::factoryOfAMissingKindIsNeverCalled()
{
    const auto calls = offer(fresh("Never"), B);
    Engine onlyA(A), neither(ScriptGlobal), onlyClasses(ScriptExternalMetaObjects);
    onlyA.run();
    neither.run();
    onlyClasses.run();
    QCOMPARE(*calls, 0);
    Engine onlyB(B);
    onlyB.run();
    QCOMPARE(*calls, 1);
}

void tst_KyScriptExternalObject::objectRegisteredLaterIsSeenAtTheNextEvaluation()
{
    Engine engine;
    QCOMPARE(engine.text("typeof Late"), QStringLiteral("undefined"));
    External external("Late", A);
    QVERIFY(!engine.globalObject().hasProperty("Late"));
    QCOMPARE(engine.text("Late.whoAmI()"), QStringLiteral("Late"));
}

void tst_KyScriptExternalObject::presentNameStays_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("stays");
    QTest::newRow("number") << "5" << true;
    QTest::newRow("zero") << "0" << true;
    QTest::newRow("empty text") << "''" << true;
    QTest::newRow("false") << "false" << true;
    QTest::newRow("function") << "(function() {})" << true;
    QTest::newRow("object") << "({})" << true;
    QTest::newRow("undefined") << "undefined" << false;
    QTest::newRow("null") << "null" << false;
}

void tst_KyScriptExternalObject::presentNameStays()
{
    QFETCH(QString, value);
    QFETCH(bool, stays);
    const QString made = fresh("Made");
    const auto calls = offer(made, B);
    External external("Present", A);
    Engine engine;
    // Not through an evaluation that adds them.
    engine.QJSEngine::evaluate(QStringLiteral("var Present = %1, %2 = %1").arg(value, made));
    QCOMPARE(engine.text("Present && Present.whoAmI ? 'external' : 'script'"),
             QString(stays ? "script" : "external"));
    QCOMPARE(*calls, stays ? 0 : 1);
}

void tst_KyScriptExternalObject::standardNameStays()
{
    External math("Math", A), message("Message", A);
    Engine engine(-1);
    QCOMPARE(engine.text("typeof Math.whoAmI + typeof Message.whoAmI"), QStringLiteral("undefinedundefined"));
}

void tst_KyScriptExternalObject::throwingAccessorOfTheNameStays()
{
    External external("Thrower", A);
    Engine engine;
    engine.QJSEngine::evaluate(
        "Object.defineProperty(this, 'Thrower', {get: function() { throw new Error('x'); }})");
    QCOMPARE(engine.text("6 * 7"), QStringLiteral("42"));
    QVERIFY(!engine.hasError());
    QCOMPARE(engine.text("try { Thrower } catch (e) { e.message }"), QStringLiteral("x"));
}

void tst_KyScriptExternalObject::instanceIsSharedByEngines()
{
    External external("Shared", A);
    Engine first, second;
    first.text("1");
    second.text("1");
    QCOMPARE(first.globalObject().property("Shared").toQObject(), &external);
    QCOMPARE(second.globalObject().property("Shared").toQObject(), &external);
}

void tst_KyScriptExternalObject::signalsReachEveryEngine()
{
    External external("Caller", A);
    auto first = std::make_unique<Engine>();
    Engine second;
    for (Engine* engine : {first.get(), &second})
        engine->text("heard = ''; Caller.called.connect(function(text) { heard += text; })");
    Q_EMIT external.called("a");
    QCOMPARE(first->text("heard"), QStringLiteral("a"));
    first.reset();
    Q_EMIT external.called("b");
    QCOMPARE(second.text("heard"), QStringLiteral("ab"));
}

void tst_KyScriptExternalObject::eachEngineHasAnObjectOfTheFactory()
{
    const QString name = fresh("Made");
    const auto calls = offer(name, A);
    Engine first, second;
    for (int i = 0; i < 3; ++i) {
        first.text("1");
        second.run();
    }
    QCOMPARE(*calls, 2);
    QObject* const made = first.globalObject().property(name).toQObject();
    QVERIFY(qobject_cast<Plain*>(made));
    QVERIFY(made != second.globalObject().property(name).toQObject());
    first.text("%1 = null", name); // free again
    first.text("1");
    QCOMPARE(*calls, 3);
}

void tst_KyScriptExternalObject::factoryObjectBelongsToTheScriptSide()
{
    const QString name = fresh("Made");
    offer(name, A);
    Engine engine;
    engine.text("1");
    const QPointer<QObject> made = engine.globalObject().property(name).toQObject();
    QVERIFY(made);
    engine.text("collectGarbage()");
    flushDeferredDeletes();
    QVERIFY(made);
    engine.text("%1 = 0", name);
    engine.text("collectGarbage()");
    flushDeferredDeletes();
    QVERIFY(!made);
}

void tst_KyScriptExternalObject::factoryObjectWithAParentStays()
{
    QObject parent;
    const QPointer<QObject> guard(&parent);
    const QString name = fresh("Made");
    offer(name, A, [guard]() -> QObject* {
        auto* object = new Plain;
        object->setParent(guard);
        return object;
    });
    {
        Engine engine;
        engine.text("1");
        QCOMPARE(parent.children().size(), 1);
        engine.text("%1 = 0", name);
        engine.text("collectGarbage()");
    }
    flushDeferredDeletes();
    QCOMPARE(parent.children().size(), 1);
}

void tst_KyScriptExternalObject::factoryThatGivesNullGivesNull()
{
    const QString name = fresh("Null");
    const auto calls = offer(name, A, [] { return nullptr; });
    Engine engine;
    QCOMPARE(engine.text("%1 === null", name), QStringLiteral("true"));
    QCOMPARE(*calls, 1);
    QCOMPARE(engine.text("%1 === null", name), QStringLiteral("true"));
    QCOMPARE(*calls, 2); // null doesn't take the name
    engine.run();
}

void tst_KyScriptExternalObject::emptyFactoryIsSkipped()
{
    const QString name = fresh("Empty");
    KyScriptExternalObject::registerExternalCreator(nullptr, name, A);
    KyScriptExternalObject::registerExternalInstance(nullptr, name + "_instance", A);
    Engine engine;
    engine.run();
    QVERIFY(!engine.globalObject().hasProperty(name));
    QVERIFY(!engine.globalObject().hasProperty(name + "_instance"));
}

void tst_KyScriptExternalObject::factoryMayRegisterRowsOfAnotherKind()
{
    const QString name = fresh("Outer"), inner = fresh("Inner");
    const auto registered = std::make_shared<bool>(false);
    offer(name, A, [=] {
        if (!std::exchange(*registered, true))
            offer(inner, B);
        return new Plain;
    });
    Engine engine;
    QCOMPARE(engine.text("%1.whoAmI()", name), QStringLiteral("plain"));
    QCOMPARE(engine.text("%1.whoAmI()", inner), QStringLiteral("plain"));
    QVERIFY(engine.globalObject().property(name).toQObject() !=
            engine.globalObject().property(inner).toQObject());
}

void tst_KyScriptExternalObject::deadInstanceIsSkipped()
{
    const QString name = fresh("Dead");
    {
        Plain plain; // leaves without a word
        KyScriptExternalObject::registerExternalInstance(&plain, name, A);
    }
    Engine engine;
    engine.run();
    QVERIFY(!engine.globalObject().hasProperty(name));
}

void tst_KyScriptExternalObject::removalDoesNotReachEngines()
{
    Engine engine;
    auto external = std::make_unique<External>("Removed", A);
    Plain plain;
    KyScriptExternalObject::registerExternalInstance(&plain, "Alive", A);
    engine.text("1");
    external.reset();
    KyScriptExternalObject::unregisterExternalInstance(&plain);
    engine.run();
    QCOMPARE(engine.text("typeof Removed + ' ' + typeof Removed.whoAmI"), QStringLiteral("object undefined"));
    QCOMPARE(engine.text("Alive.whoAmI()"), QStringLiteral("plain"));
}

void tst_KyScriptExternalObject::scriptAndCollectorLeaveAnInstanceAlone()
{
    const QPointer<External> external = new External("Pinned", A);
    {
        Engine engine;
        QCOMPARE(engine.text("try { Pinned.destroy(); 'passed' } catch (e) { 'refused' }"),
                 QStringLiteral("refused"));
        engine.text("Pinned = 0");
        engine.text("collectGarbage()");
        engine.collectGarbage();
        flushDeferredDeletes();
        QVERIFY(external);
    }
    flushDeferredDeletes();
    QVERIFY(external);
    delete external.data();
}

void tst_KyScriptExternalObject::plainEngineCanBeServed()
{
    QStringList cleared;
    External external("Served", A, &cleared);
    QJSEngine engine;
    KyScriptExternalObject::addToEngine(engine, B);
    QVERIFY(!engine.globalObject().hasProperty("Served"));
    KyScriptExternalObject::addToEngine(engine, A);
    QCOMPARE(engine.evaluate("Served.whoAmI()").toString(), QStringLiteral("Served"));
    KyScriptExternalObject::clearObjects(engine, B);
    QCOMPARE(cleared, QStringList());
    KyScriptExternalObject::clearObjects(engine, A);
    QCOMPARE(cleared, QStringList("Served"));
}

void tst_KyScriptExternalObject::clearComesAtTheEndOfTheOutermostRun()
{
    QStringList cleared;
    External external("Kept", A, &cleared);
    Engine engine;
    engine.text("1");
    engine.runScript(KyScriptProgram("1", ""), true, false, false);
    QCOMPARE(cleared, QStringList());
    engine.runScript(KyScriptProgram("throw new Error('x')", ""));
    QCOMPARE(cleared, QStringList("Kept"));
}

void tst_KyScriptExternalObject::clearReachesKindsInTheirOrder()
{
    QStringList cleared;
    External b2("b2", B, &cleared), a2("a2", A, &cleared), b1("b1", B, &cleared), a1("a1", A, &cleared);
    Engine engine;
    engine.run();
    QCOMPARE(cleared, QStringList({"a2", "a1", "b2", "b1"}));
}

void tst_KyScriptExternalObject::clearReachesTheKindsOfTheOptions_data()
{
    engineSeesTheKindsOfItsOptions_data();
}

void tst_KyScriptExternalObject::clearReachesTheKindsOfTheOptions()
{
    QFETCH(int, options);
    QFETCH(QString, seen);
    QStringList cleared;
    External a("a", A, &cleared), b("b", B, &cleared);
    Engine engine(options);
    engine.run();
    QCOMPARE(cleared.join(' '), seen);
}

void tst_KyScriptExternalObject::clearFindsAFactoryObjectThroughItsName()
{
    const auto cleared = std::make_shared<QStringList>();
    const QString name = fresh("Made");
    offer(name, A, [cleared] {
        auto* object = new External("", 0);
        object->onClear = [cleared] { cleared->append("made"); };
        return object;
    });
    Engine engine;
    engine.run();
    QCOMPARE(*cleared, QStringList("made"));
    engine.text("%1 = 5", name);
    engine.run();
    QCOMPARE(*cleared, QStringList("made"));

    External other("", 0, cleared.get());
    other.label = "other";
    QJSEngine::setObjectOwnership(&other, QJSEngine::CppOwnership);
    engine.globalObject().setProperty(name, engine.newQObject(&other));
    engine.run();
    QCOMPARE(*cleared, QStringList({"made", "other"}));
}

void tst_KyScriptExternalObject::clearLeavesOtherClassesAlone()
{
    Plain plain;
    const QString name = fresh("Made");
    offer(name, A);
    KyScriptExternalObject::registerExternalInstance(&plain, "PlainOne", A);
    Engine engine;
    engine.run();
    const auto* made = qobject_cast<Plain*>(engine.globalObject().property(name).toQObject());
    QVERIFY(made);
    QCOMPARE(made->cleared, 0);
    QCOMPARE(plain.cleared, 0);
    KyScriptExternalObject::unregisterExternalInstance(&plain);
}

void tst_KyScriptExternalObject::clearReachesAnInstanceWhoseNameIsTaken()
{
    QStringList cleared;
    External external("Hidden", A, &cleared);
    Engine engine;
    engine.QJSEngine::evaluate("var Hidden = 5");
    engine.run();
    QCOMPARE(cleared, QStringList("Hidden"));
}

void tst_KyScriptExternalObject::clearOfADeadInstanceLooksAtTheName()
{
    const QString name = fresh("Dead");
    {
        Plain plain;
        KyScriptExternalObject::registerExternalInstance(&plain, name, A);
    }
    QStringList cleared;
    External other("", 0, &cleared);
    other.label = "other";
    QJSEngine::setObjectOwnership(&other, QJSEngine::CppOwnership);
    Engine engine;
    engine.run();
    engine.globalObject().setProperty(name, engine.newQObject(&other));
    engine.run();
    QCOMPARE(cleared, QStringList("other"));
}

void tst_KyScriptExternalObject::clearMayEndOtherObjects()
{
    QStringList cleared;
    External first("First", A, &cleared);
    auto second = std::make_unique<External>("Second", A, &cleared);
    External third("Third", A, &cleared);
    auto ofB = std::make_unique<External>("OfB", B, &cleared);
    first.onClear = [&] {
        second.reset();
        ofB.reset();
    };
    Engine engine;
    engine.run();
    QCOMPARE(cleared, QStringList({"First", "Third"}));
}

void tst_KyScriptExternalObject::clearMayEndItself()
{
    QStringList cleared;
    auto* first = new External("First", A, &cleared);
    External second("Second", A, &cleared);
    first->onClear = [first] { delete first; };
    Engine engine;
    engine.run();
    QCOMPARE(cleared, QStringList({"First", "Second"}));
}

void tst_KyScriptExternalObject::clearMayRegisterFurtherObjects()
{
    QStringList cleared;
    External first("First", A, &cleared);
    std::vector<std::unique_ptr<External>> further;
    first.onClear = [&] {
        if (further.empty())
            for (int i = 0; i < 100; ++i)
                further.push_back(std::make_unique<External>(QStringLiteral("Further%1").arg(i), A));
    };
    External second("Second", A, &cleared);
    Engine engine;
    engine.run();
    QCOMPARE(cleared, QStringList({"First", "Second"}));
    QCOMPARE(engine.text("Further99.whoAmI()"), QStringLiteral("Further99"));
}

void tst_KyScriptExternalObject::clearWithoutARowDoesNothing()
{
    QJSEngine engine;
    KyScriptExternalObject::clearObjects(engine, 12345);
    KyScriptExternalObject::addToEngine(engine, 12345);
    QCOMPARE(engine.evaluate("1 + 1").toInt(), 2);
}

KY_TEST_MAIN(tst_KyScriptExternalObject)
#include "tst_KyScriptExternalObject.moc"
