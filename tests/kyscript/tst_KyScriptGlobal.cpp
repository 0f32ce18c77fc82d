#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptGlobal.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptProgram.h>
#include <kyscript/KyScriptRunner.h>

#include <QDateTime>
#include <QPoint>
#include <QPointer>
#include <QRegularExpression>
#include <QTest>

/// The way of a script back into its engine.
class Host : public QObject
{
    Q_OBJECT
public:
    explicit Host(KyScriptEngine& inEngine)
        : mEngine(inEngine)
    {
        QJSEngine::setObjectOwnership(this, QJSEngine::CppOwnership);
        inEngine.globalObject().setProperty(QStringLiteral("host"), inEngine.newQObject(this));
    }
    Q_PROPERTY(QPoint place MEMBER mPlace)
    Q_PROPERTY(QList<int> numbers MEMBER mNumbers)
    Q_INVOKABLE QJSValue run(QString inSource)
    {
        return mEngine.runScript(KyScriptProgram(inSource, "inner"), false, false, false);
    }

private:
    KyScriptEngine& mEngine;
    QPoint mPlace{3, 4};
    QList<int> mNumbers{1, 2};
};

/// A host object that scripts keep.
class Thing : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE Thing() {}
    Q_INVOKABLE QString name() const { return QStringLiteral("thing"); }
};

class tst_KyScriptGlobal : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // runs and engines
    void valueIsThereInTheNextRun();
    void valueIsThereInAnotherEngine();
    void objectIsFreshInEachRun();
    void objectIsPlainAndOpen();
    void valueIsKeptAfterAFailure();
    void nestedObjectsComeBackAsNewOnes();
    void changeInsideANestedValueIsKept();
    void manyKeysFollowEachChange();
    void changedKindsFollow();
    void keysComeInTheirOrder();

    // values
    void valueSurvives_data();
    void valueSurvives();
    void valueWithoutAFormDoesNotSurvive_data();
    void valueWithoutAFormDoesNotSurvive();
    void nestedValuesWithoutAFormAreLeftOut();
    void zeroAndItsNegativeAreTold();
    void typesInTheStore_data();
    void typesInTheStore();

    // removing
    void deletedKeyComesBack();
    void undefinedRemovesAKey();
    void removedKeyCanBeSetAgain();

    // other keys
    void anyKeySurvives_data();
    void anyKeySurvives();
    void keysWithAZeroCharacterAreApart();
    void protoAsAKeyIsAnOrdinaryOne();
    void objectNameOfTheStoreIsLeftAlone();
    void symbolKeysAreIgnored();

    // Global replaced
    void replacedByNoMapSavesNothing_data();
    void replacedByNoMapSavesNothing();
    void replacedByAnObjectSavesItsKeys_data();
    void replacedByAnObjectSavesItsKeys();
    void anyObjectCountsAsWhatQtMakesOfIt_data();
    void anyObjectCountsAsWhatQtMakesOfIt();
    void frozenGlobalIsFreshInTheNextRun();
    void unwritableGlobalDoesNoHarm();
    void accessorGlobalDoesNoHarm_data();
    void accessorGlobalDoesNoHarm();

    // harm
    void throwingGetterLeavesItsKey();
    void throwingGetterDoesNotReachTheNextRun_data();
    void throwingGetterDoesNotReachTheNextRun();
    void getterThatRunsAScriptIsFine();
    void cyclesAreCut_data();
    void cyclesAreCut();
    void deepValueIsNotKept();
    void hugeValueIsNotKept_data();
    void hugeValueIsNotKept();
    void limitsAreBeyondUsualValues();
    void sharedValuesAreCopied();
    void proxiesAreRead_data();
    void proxiesAreRead();
    void disguisedObjectsDoNoHarm_data();
    void disguisedObjectsDoNoHarm();
    void replacedBuiltinsDoNoHarm();
    void prototypesStayOutside_data();
    void prototypesStayOutside();
    void unreadableGlobalIsLoggedAndNotSaved_data();
    void unreadableGlobalIsLoggedAndNotSaved();
    void exhaustedStackLeavesGlobalAlone();

    // nested runs
    void nestedRunReplacesTheObject();
    void lastSaveWinsForEachKey();
    void outerReferenceIsNotTheInnerObject();

    // evaluations
    void evaluationTakesNoPart();
    void runnerTakesNoPart_data();
    void runnerTakesNoPart();
    void runnerSeesWhatScriptsLeft();

    // host objects
    void hostObjectComesBackAsItself();
    void hostObjectInsideValuesComesBack();
    void deletedHostObjectIsLeftOut();
    void collectedHostObjectIsLeftOut();
    void pinnedHostObjectReachesOtherEngines();
    void scriptObjectStaysWithItsEngine();
    void hostObjectOfADeadEngineIsLeftOut();
    void keepingAnObjectDoesNotOwnIt();

    // the store
    void storeIsOneWithoutAParent();
    void savedValuesAreDynamicProperties();
    void dynamicPropertiesAreSeen_data();
    void dynamicPropertiesAreSeen();
    void changesOfAnotherEngineDuringARunAreKept();
    void revisionGrowsWithChangesOnly();

private:
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
};

namespace {

KyScriptGlobal& store()
{
    return KyScriptGlobal::instance();
}

struct Engine : KyScriptEngine
{
    explicit Engine(int inOptions = 0)
        : KyScriptEngine(nullptr, inOptions)
    {}
    /// A run at the top level.
    QJSValue run(const QString& inSource) { return runScript(KyScriptProgram(inSource, ""), false); }
    /// The value of a run, as text.
    QString text(const QString& inSource) { return run(inSource).toString(); }
};

void flushDeferredDeletes()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

void tst_KyScriptGlobal::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    const QStringList keys = store().values().keys();
    for (const QString& key : keys)
        store().setValue(key, QVariant());
}

void tst_KyScriptGlobal::cleanup()
{
    const QString broken = mContracts->verify();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

void tst_KyScriptGlobal::valueIsThereInTheNextRun()
{
    Engine engine;
    engine.run("Global.a = 1");
    QCOMPARE(engine.text("Global.a"), QStringLiteral("1"));
    QCOMPARE(engine.text("Global.a"), QStringLiteral("1"));
    engine.run("Global.a = 2");
    QCOMPARE(engine.text("Global.a"), QStringLiteral("2"));
}

void tst_KyScriptGlobal::valueIsThereInAnotherEngine()
{
    KyScriptInterface& first = KyScriptInterface::getInstance("first");
    KyScriptInterface& second = KyScriptInterface::getInstance("second");
    second.runScript(KyScriptProgram("1", ""));
    first.runScript(KyScriptProgram("Global.a = 1", ""));
    QCOMPARE(second.runScript(KyScriptProgram("return Global.a", "")).toInt(), 1);
    second.runScript(KyScriptProgram("Global.a = 2; Global.b = [1]", ""));
    QCOMPARE(first.runScript(KyScriptProgram("return Global.a + Global.b[0]", "")).toInt(), 3);
    Engine third(ScriptMessage);
    QCOMPARE(third.text("Global.a"), QStringLiteral("2"));
}

void tst_KyScriptGlobal::objectIsFreshInEachRun()
{
    Engine engine;
    engine.run("kept = Global; Global.a = 1");
    QCOMPARE(engine.text("kept === Global"), QStringLiteral("false"));
    engine.run("kept.a = 2");
    QCOMPARE(engine.text("Global.a"), QStringLiteral("1"));
}

void tst_KyScriptGlobal::objectIsPlainAndOpen()
{
    Engine engine;
    engine.run("Global.a = 1; Global.b = {}");
    QCOMPARE(engine.text("Object.getPrototypeOf(Global) === Object.prototype && Object.isExtensible(Global)"
                         " && Object.keys(Global).every(function(name) {"
                         "      var d = Object.getOwnPropertyDescriptor(Global, name);"
                         "      return d.writable && d.enumerable && d.configurable; })"),
             QStringLiteral("true"));
}

void tst_KyScriptGlobal::valueIsKeptAfterAFailure()
{
    Engine engine;
    engine.run("Global.a = 1; throw new Error('x')");
    engine.run("Global.b = 2; throw 'x'");
    engine.run("Global.c = ; ");
    QCOMPARE(engine.text("Global.a + Global.b"), QStringLiteral("3"));
}

void tst_KyScriptGlobal::nestedObjectsComeBackAsNewOnes()
{
    Engine engine;
    engine.run("object = {x: 1}; array = [1]; Global.object = object; Global.array = array;");
    QCOMPARE(engine.text("(Global.object === object) + ' ' + (Global.array === array)"),
             QStringLiteral("false false"));
    engine.run("object.x = 2");
    QCOMPARE(engine.text("Global.object.x"), QStringLiteral("1"));
    engine.run("before = Global.object");
    QCOMPARE(engine.text("before === Global.object"), QStringLiteral("false"));
}

void tst_KyScriptGlobal::changeInsideANestedValueIsKept()
{
    Engine first, second;
    first.run("Global.object = {list: [1, {x: 1}]}");
    second.run("Global.object.list[1].x = 2; Global.object.list.push(3)");
    QCOMPARE(first.text("JSON.stringify(Global.object)"), QStringLiteral("{\"list\":[1,{\"x\":2},3]}"));
    first.run("delete Global.object.list");
    QCOMPARE(second.text("JSON.stringify(Global.object)"), QStringLiteral("{}"));
}

void tst_KyScriptGlobal::manyKeysFollowEachChange()
{
    Engine first, second;
    first.run("for (var i = 0; i < 1000; ++i) Global['k' + i] = i");
    second.run("Global.k500 = 'changed'");
    QCOMPARE(first.text("Global.k500 + Global.k499"), QStringLiteral("changed499"));
    first.run("Global.k500 = 5; Global.k1 = undefined; Global.fresh = 1");
    first.run("Global.k2 = 7");
    QCOMPARE(
        second.text("[Object.keys(Global).length, Global.k500, Global.k1, Global.k2, Global.fresh].join()"),
        QStringLiteral("1000,5,,7,1"));
    QCOMPARE(
        first.text("[Object.keys(Global).length, Global.k500, Global.k1, Global.k2, Global.fresh].join()"),
        QStringLiteral("1000,5,,7,1"));
}

void tst_KyScriptGlobal::changedKindsFollow()
{
    Engine first, second;
    const QStringList kinds{
        "1",   "'1'",         "true",    "null", "2.5",   "{}",    "[]",   "{a: 1}",
        "'x'", "new Date(0)", "[[], 1]", "/x/",  "'/x/'", "false", "[{}]", "new ArrayBuffer(1)",
        "0"};
    for (const QString& kind : kinds) {
        first.run("Global.k = " + kind);
        const QString described = "Object.prototype.toString.call(Global.k) + JSON.stringify(Global.k)";
        QJSEngine bare;
        const QString expected = bare.evaluate("var Global = {k: " + kind + "}; " + described).toString();
        QCOMPARE(second.text(described), expected);
        QCOMPARE(first.text(described), expected);
    }
}

void tst_KyScriptGlobal::keysComeInTheirOrder()
{
    Engine first, second;
    first.run("Global.b = 1; Global.d = {}; Global.a = []; Global.c = 'x'; Global.B = 2");
    for (Engine* engine : {&first, &second})
        QCOMPARE(engine->text("Object.keys(Global).join()"), QStringLiteral("B,a,b,c,d"));
    first.run("Global.aa = 5; Global.b = {}; Global.d = 1");
    for (Engine* engine : {&first, &second})
        QCOMPARE(engine->text("Object.keys(Global).join()"), QStringLiteral("B,a,aa,b,c,d"));
    first.run("Global[10] = 'x'; Global[9] = 'y'"); // numbers come first, by their value
    for (Engine* engine : {&first, &second})
        QCOMPARE(engine->text("Object.keys(Global).join()"), QStringLiteral("9,10,B,a,aa,b,c,d"));
}

void tst_KyScriptGlobal::valueSurvives_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("check");
    const auto row = [](const char* inValue, const char* inCheck) {
        QTest::newRow(inValue) << QString::fromUtf8(inValue) << QString::fromUtf8(inCheck);
    };
    row("true", "v === true");
    row("false", "v === false");
    row("5", "v === 5");
    row("0", "Object.is(v, 0)");
    row("-0", "Object.is(v, -0)");
    row("-5", "v === -5");
    row("2147483648", "v === 2147483648");
    row("9007199254740991", "v === 9007199254740991");
    row("2.5", "v === 2.5");
    row("1e300", "v === 1e300");
    row("5e-324", "v === 5e-324");
    row("Math.round(2.4)", "v === 2");
    row("NaN", "v !== v");
    row("Infinity", "v === Infinity");
    row("-Infinity", "v === -Infinity");
    row("null", "v === null");
    row("''", "v === ''");
    row("'text'", "v === 'text'");
    row("'ü€\\ud83d\\ude00'", "v === 'ü€\\ud83d\\ude00'");
    row("'a\\u0000b'", "v === 'a\\u0000b'");
    row("'\\ud800'", "v === '\\ud800'");
    row("new Array(20000).join('x')", "v.length === 19999");

    row("{}", "JSON.stringify(v) === '{}' && Object.getPrototypeOf(v) === Object.prototype");
    row("[]", "Array.isArray(v) && v.length === 0");
    row("{a: 1, b: {c: [1, 2, {d: 'x'}]}}",
        "JSON.stringify(v) === '{\"a\":1,\"b\":{\"c\":[1,2,{\"d\":\"x\"}]}}'");
    row("[1, 'x', null, true, [2, []], {}]", "JSON.stringify(v) === '[1,\"x\",null,true,[2,[]],{}]'");
    row("[-0, NaN]", "Object.is(v[0], -0) && v[1] !== v[1]");
    row("[undefined, 1]", "v.length === 2 && v[0] === undefined && v[1] === 1");
    row("[1, , 3]", "v.length === 3 && v[1] === undefined && v[2] === 3");
    row("new Array(3)", "Array.isArray(v) && v.length === 3");
    row("{a: undefined, b: 1}", "'a' in v && v.a === undefined && v.b === 1");
    row("{a: null}", "v.a === null");
    row("{'': 1, 'objectName': 2, 'a\\u0000b': 3}",
        "v[''] === 1 && v.objectName === 2 && v['a\\u0000b'] === 3");
    row("{get a() { return 5; }}", "v.a === 5");
    row("Object.assign([1, 2], {extra: 3})", "JSON.stringify(v) === '[1,2]'");
    row("Object.create({inherited: 1}, {own: {value: 2, enumerable: true}, hidden: {value: 3}})",
        "JSON.stringify(v) === '{\"own\":2}' && v.inherited === undefined && v.hidden === undefined");
    row("Object.freeze({a: 1})", "v.a === 1 && !Object.isFrozen(v)");
    row("Object.assign(Object.create(null), {a: 1})", "v.a === 1");

    row("new Date(1709211909120)", "v instanceof Date && v.getTime() === 1709211909120");
    row("new Date(2024, 1, 29)", "v.getTime() === new Date(2024, 1, 29).getTime()");
    row("new Date(-1)", "v.getTime() === -1");
    row("new Date(NaN)", "v instanceof Date && isNaN(v)");
    row("[{d: new Date(5)}]", "v[0].d instanceof Date && v[0].d.getTime() === 5");
    row("/a.b/i", "v instanceof RegExp && String(v) === '/a.b/i' && v.test('xAyB')");
    row("/a/m", "String(v) === '/a/m'");
    row("/a/g", "String(v) === '/a/'"); // Qt's form of a value has no such flag
    row("[/a/]", "v[0] instanceof RegExp");
    row("new Uint8Array([1, 2, 255]).buffer",
        "v instanceof ArrayBuffer && new Uint8Array(v).join() === '1,2,255'");
    row("new ArrayBuffer(0)", "v instanceof ArrayBuffer && v.byteLength === 0");
    row("{b: new ArrayBuffer(0), c: [new ArrayBuffer(2)]}",
        "v.b.byteLength === 0 && v.c[0].byteLength === 2 && new Uint8Array(v.b).length === 0");

    // Objects without a form of their own come back as plain objects of what can be seen of them.
    row("new Uint8Array([1, 2])", "JSON.stringify(v) === '{\"0\":1,\"1\":2}'");
    row("new Map([[1, 2]])", "JSON.stringify(v) === '{}'");
    row("new Set([1])", "JSON.stringify(v) === '{}'");
    row("Object.assign(new Error('x'), {code: 5})", "v.code === 5 && !(v instanceof Error)");
    row("new String('ab')", "typeof v === 'object' && v[0] === 'a'");
    row("new Number(5)", "JSON.stringify(v) === '{}'");
    row("(function() { return arguments; })(1, 2)", "JSON.stringify(v) === '{\"0\":1,\"1\":2}'");
    row("new (class { constructor() { this.a = 1; } method() {} })",
        "JSON.stringify(v) === '{\"a\":1}' && Object.getPrototypeOf(v) === Object.prototype");
    row("Promise.resolve(1)", "JSON.stringify(v) === '{}'");
}

void tst_KyScriptGlobal::valueSurvives()
{
    QFETCH(QString, value);
    QFETCH(QString, check);
    Engine first, second;
    QVERIFY(!first.run("Global.v = " + value + "; 1").isError());
    const QString source = "var v = Global.v; " + check;
    QCOMPARE(first.text(source), QStringLiteral("true"));
    QCOMPARE(second.text(source), QStringLiteral("true"));
    QCOMPARE(first.text(source), QStringLiteral("true")); // saved and loaded once more
}

void tst_KyScriptGlobal::valueWithoutAFormDoesNotSurvive_data()
{
    QTest::addColumn<QString>("value");
    for (const char* value :
         {"function() {}", "() => 1", "class {}", "parseInt", "collectGarbage", "Thing",
          "new Proxy(function() {}, {})", "Symbol()", "Symbol('x')", "Symbol.iterator", "undefined"})
        QTest::newRow(value) << value;
}

void tst_KyScriptGlobal::valueWithoutAFormDoesNotSurvive()
{
    QFETCH(QString, value);
    Engine first, second;
    first.globalObject().setProperty("Thing", first.newQMetaObject<Thing>());
    first.run("Global.before = 1; Global.v = 'old'");
    QCOMPARE(first.text("Global.v = " + value + "; Global.z = 2; 'ran'"), QStringLiteral("ran"));
    QVERIFY(!first.hasError());
    for (Engine* engine : {&first, &second})
        QCOMPARE(engine->text("typeof Global.v + Object.keys(Global).join()"),
                 QStringLiteral("undefinedbefore,z"));
}

void tst_KyScriptGlobal::nestedValuesWithoutAFormAreLeftOut()
{
    Engine first, second;
    first.run("Global.o = {f: function() {}, s: Symbol(), u: undefined, c: class {}, a: [Symbol(), "
              "function() {}, 5],"
              "            deep: {s: [[Symbol('x')]]}, ok: 1}");
    QVERIFY(!first.hasError());
    for (Engine* engine : {&first, &second}) {
        QCOMPARE(engine->text("JSON.stringify(Global.o)"),
                 QStringLiteral("{\"a\":[null,null,5],\"deep\":{\"s\":[[null]]},\"ok\":1}"));
        QCOMPARE(engine->text(
                     "typeof Global.o.f + typeof Global.o.s + typeof Global.o.a[0] + typeof Global.o.a[1]"),
                 QStringLiteral("undefinedundefinedundefinedundefined"));
    }
}

void tst_KyScriptGlobal::zeroAndItsNegativeAreTold()
{
    Engine first, second;
    for (const char* zero : {"0", "-0", "Math.abs(-0)", "-0", "0.25 * 0", "-0", "Math.round(0.2)", "-0"}) {
        first.run(QStringLiteral("Global.z = ") + zero);
        const QString check = QStringLiteral("Object.is(Global.z, %1)").arg(zero);
        QCOMPARE(second.text(check), QStringLiteral("true"));
        QCOMPARE(first.text(check), QStringLiteral("true"));
    }
}

void tst_KyScriptGlobal::typesInTheStore_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QVariant>("stored");
    QTest::newRow("bool") << "true" << QVariant(true);
    QTest::newRow("int") << "5" << QVariant(5);
    QTest::newRow("double") << "2.5" << QVariant(2.5);
    QTest::newRow("text") << "'x'" << QVariant("x");
    QTest::newRow("null") << "null" << QVariant::fromValue(nullptr);
    QTest::newRow("date") << "new Date(2024, 1, 29, 12)"
                          << QVariant(QDateTime(QDate(2024, 2, 29), QTime(12, 0)));
    QTest::newRow("expression") << "/a/i"
                                << QVariant(
                                       QRegularExpression("a", QRegularExpression::CaseInsensitiveOption));
    QTest::newRow("bytes") << "new Uint8Array([97, 98]).buffer" << QVariant(QByteArray("ab"));
    QTest::newRow("value of the host") << "host.place" << QVariant(QPoint(3, 4));
    QTest::newRow("list") << "[1, 'x']" << QVariant(QVariantList{1, "x"});
    QTest::newRow("map") << "{a: {b: [1]}}"
                         << QVariant(QVariantMap{{"a", QVariantMap{{"b", QVariantList{1}}}}});
}

void tst_KyScriptGlobal::typesInTheStore()
{
    QFETCH(QString, value);
    QFETCH(QVariant, stored);
    Engine engine;
    Host host(engine);
    engine.run("Global.v = " + value);
    QCOMPARE(store().property("v").metaType(), stored.metaType());
    QCOMPARE(store().property("v"), stored);
    QCOMPARE(store().values(), QVariantMap({{"v", stored}}));
}

void tst_KyScriptGlobal::deletedKeyComesBack()
{
    Engine engine;
    engine.run("Global.a = 1; Global.b = {}");
    QCOMPARE(engine.text("delete Global.a; delete Global.b; Object.keys(Global).length"),
             QStringLiteral("0"));
    QCOMPARE(engine.text("Global.a + typeof Global.b"), QStringLiteral("1object"));
    engine.run("Global = {}");
    QCOMPARE(engine.text("Object.keys(Global).join()"), QStringLiteral("a,b"));
}

void tst_KyScriptGlobal::undefinedRemovesAKey()
{
    Engine first, second;
    first.run("Global.a = 1; Global.b = {}; Global.c = 3");
    second.run("1");
    first.run("Global.a = undefined; Global.b = undefined; Global.never = undefined");
    for (Engine* engine : {&first, &second})
        QCOMPARE(engine->text("Object.keys(Global).join()"), QStringLiteral("c"));
    QCOMPARE(store().dynamicPropertyNames(), QList<QByteArray>({"c"}));
}

void tst_KyScriptGlobal::removedKeyCanBeSetAgain()
{
    Engine first, second;
    first.run("Global.a = 1");
    first.run("Global.a = undefined");
    first.run("Global.a = 2");
    QCOMPARE(second.text("Global.a"), QStringLiteral("2"));
    first.run("Global.a = undefined; Global.a = 3");
    QCOMPARE(second.text("Global.a"), QStringLiteral("3"));
    QCOMPARE(first.text("Global.a"), QStringLiteral("3"));
}

void tst_KyScriptGlobal::anyKeySurvives_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("empty") << "";
    QTest::newRow("blank") << "a b";
    QTest::newRow("beyond Latin-1") << QString::fromUtf8("ä€");
    QTest::newRow("beyond the first plane") << QString::fromUtf8("😀");
    QTest::newRow("index") << "0";
    QTest::newRow("large number") << "4294967295";
    QTest::newRow("objectName") << "objectName";
    QTest::newRow("Qt's own prefix") << "_q_x";
    QTest::newRow("constructor") << "constructor";
    QTest::newRow("hasOwnProperty") << "hasOwnProperty";
    QTest::newRow("toString") << "toString";
    QTest::newRow("zero character") << QString("a\0b").left(1) + QChar(0) + "b";
    QTest::newRow("zero character alone") << QString(QChar(0));
    QTest::newRow("zero character at the end") << QString("a") + QChar(0);
    QTest::newRow("signal of a QObject") << "destroyed";
}

void tst_KyScriptGlobal::anyKeySurvives()
{
    QFETCH(QString, key);
    Engine first, second;
    for (Engine* engine : {&first, &second})
        engine->globalObject().setProperty("key", key);
    for (const char* value : {"5", "'x'", "[1]", "{a: 1}", "null"}) {
        first.run(QStringLiteral("Global[key] = ") + value);
        const QString described = "JSON.stringify(Global[key]) + Object.getOwnPropertyNames(Global).length";
        QJSEngine bare;
        const QString expected =
            bare.evaluate(QStringLiteral("JSON.stringify(%1) + 1").arg(value)).toString();
        QCOMPARE(second.text(described), expected);
        QCOMPARE(first.text(described), expected);
    }
    QCOMPARE(second.text("Object.keys(Global)[0] === key"), QStringLiteral("true"));
    first.run("delete Global[key]");
    QCOMPARE(second.text("Object.keys(Global).length"), QStringLiteral("1"));
    first.run("Global[key] = undefined");
    QCOMPARE(second.text("Object.keys(Global).length"), QStringLiteral("0"));
    QVERIFY(store().values().isEmpty());
}

void tst_KyScriptGlobal::keysWithAZeroCharacterAreApart()
{
    Engine first, second;
    first.run("Global.a = 'short'; Global['a\\u0000'] = 'zero'; Global['a\\u0000b'] = 'long'");
    const QString all = "[Global.a, Global['a\\u0000'], Global['a\\u0000b']].join()";
    QCOMPARE(first.text(all), QStringLiteral("short,zero,long"));
    QCOMPARE(second.text(all), QStringLiteral("short,zero,long"));
    first.run("Global['a\\u0000b'] = undefined");
    QCOMPARE(second.text(all), QStringLiteral("short,zero,"));
}

void tst_KyScriptGlobal::protoAsAKeyIsAnOrdinaryOne()
{
    Engine first, second;
    first.run("Global.__proto__ = {inherited: 1}"); // sets the prototype of that object, no key
    QCOMPARE(first.text("typeof Global.inherited + Object.keys(Global).length"),
             QStringLiteral("undefined0"));

    for (const char* value : {"7", "{\"inherited\": 1}", "[1]", "null", "\"x\""}) {
        first.run(QStringLiteral("Global = JSON.parse('{\"__proto__\": %1, \"a\": 1}')").arg(value));
        for (Engine* engine : {&first, &second, &first}) {
            QCOMPARE(engine->text("Object.getOwnPropertyNames(Global).join()"),
                     QStringLiteral("__proto__,a"));
            QCOMPARE(engine->text("Object.getPrototypeOf(Global) === Object.prototype"),
                     QStringLiteral("true"));
            QCOMPARE(engine->text("typeof Global.inherited"), QStringLiteral("undefined"));
            QCOMPARE(
                engine->text("JSON.stringify(Object.getOwnPropertyDescriptor(Global, '__proto__').value)"),
                QString(value).remove(' '));
        }
    }
    first.run(
        "Global.nested = JSON.parse('{\"__proto__\": {\"inherited\": 1}, \"k\": [{\"__proto__\": 5}]}')");
    for (Engine* engine : {&first, &second})
        QCOMPARE(
            engine->text("Object.getOwnPropertyNames(Global.nested).join() + typeof Global.nested.inherited +"
                         "Object.getOwnPropertyNames(Global.nested.k[0]).join()"),
            QStringLiteral("__proto__,kundefined__proto__"));
}

void tst_KyScriptGlobal::objectNameOfTheStoreIsLeftAlone()
{
    const QString before = store().objectName();
    Engine engine;
    engine.run("Global.objectName = 'mine'");
    QCOMPARE(store().objectName(), before);
    QCOMPARE(engine.text("Global.objectName"), QStringLiteral("mine"));
}

void tst_KyScriptGlobal::symbolKeysAreIgnored()
{
    Engine engine;
    engine.run("Global[Symbol('x')] = 1; Global.a = {[Symbol.iterator]: 1, b: 2}");
    QVERIFY(!engine.hasError());
    QCOMPARE(engine.text("Object.getOwnPropertySymbols(Global).length + JSON.stringify(Global)"),
             QStringLiteral("0{\"a\":{\"b\":2}}"));
}

void tst_KyScriptGlobal::replacedByNoMapSavesNothing_data()
{
    QTest::addColumn<QString>("statement");
    for (const char* value : {"5",
                              "'text'",
                              "true",
                              "null",
                              "undefined",
                              "[1, 2]",
                              "Object.assign([], {a: 9})",
                              "new Date(0)",
                              "(function() {})",
                              "Object.assign(function() {}, {a: 9})",
                              "/x/",
                              "Symbol('x')",
                              "host",
                              "new ArrayBuffer(2)",
                              "Object.assign(new Date(0), {a: 9})",
                              "new Map([['a', 9]])",
                              "new Set(['a'])",
                              "new Number(5)",
                              "new Boolean(true)",
                              "Promise.resolve(1)",
                              "new Error('x')",
                              "new URL('http://host/')",
                              "host.place",
                              "host.numbers",
                              "host.constructor",
                              "Object(Symbol())",
                              "Math"})
        QTest::newRow(value) << QStringLiteral("Global = ") + value;
    QTest::newRow("deleted") << "delete Global";
    QTest::newRow("deleted by its object") << "delete this.Global";
}

void tst_KyScriptGlobal::replacedByNoMapSavesNothing()
{
    QFETCH(QString, statement);
    Engine engine;
    Host host(engine);
    engine.run("Global.a = 1; Global.b = [2]");
    const QVariantMap before = store().values();
    engine.run("Global.a = 5; " + statement);
    QVERIFY(!engine.hasError());
    QCOMPARE(store().values(), before);
    QCOMPARE(engine.text("JSON.stringify(Global)"), QStringLiteral("{\"a\":1,\"b\":[2]}"));
}

void tst_KyScriptGlobal::replacedByAnObjectSavesItsKeys_data()
{
    QTest::addColumn<QString>("value");
    QTest::newRow("plain") << "{b: 2, c: {d: 3}}";
    QTest::newRow("instance") << "new (class { constructor() { this.b = 2; this.c = {d: 3}; } })";
    QTest::newRow("without a prototype") << "Object.assign(Object.create(null), {b: 2, c: {d: 3}})";
    QTest::newRow("error") << "Object.assign(new Error('x'), {b: 2, c: {d: 3}})";
    QTest::newRow("proxy") << "new Proxy({b: 2, c: {d: 3}}, {})";
    QTest::newRow("frozen") << "Object.freeze({b: 2, c: {d: 3}})";
    QTest::newRow("accessors") << "{get b() { return 2; }, get c() { return {d: 3}; }}";
    QTest::newRow("in a closure") << "(function() { var o = {b: 2}; o.c = {d: 3}; return o; })()";
}

void tst_KyScriptGlobal::replacedByAnObjectSavesItsKeys()
{
    QFETCH(QString, value);
    Engine first, second;
    first.run("Global.a = 1; Global.b = 1");
    first.run("Global = " + value);
    for (Engine* engine : {&first, &second})
        QCOMPARE(engine->text("JSON.stringify(Global)"), QStringLiteral("{\"a\":1,\"b\":2,\"c\":{\"d\":3}}"));
}

void tst_KyScriptGlobal::anyObjectCountsAsWhatQtMakesOfIt_data()
{
    QTest::addColumn<QString>("value");
    for (const char* value : {"{a: 9}",
                              "Object.create(null)",
                              "Object.create({a: 9})",
                              "new Error('x')",
                              "Object.assign(new Error('x'), {a: 9})",
                              "new (class extends Error { constructor() { super(); this.a = 9; } })",
                              "Promise.resolve(1)",
                              "Object.assign(Promise.resolve(1), {a: 9})",
                              "new Uint8Array([1, 2])",
                              "new Uint8Array(0)",
                              "new Int16Array([-1, 2])",
                              "new Float64Array([1.5, 2, -0])",
                              "new Uint8ClampedArray([300])",
                              "new DataView(new ArrayBuffer(2))",
                              "new ArrayBuffer(2)",
                              "new SharedArrayBuffer(2)",
                              "new String('ab')",
                              "new String('')",
                              "Object.assign(new String('ab'), {a: 9})",
                              "new (class extends String {})('ab')",
                              "new Number(5)",
                              "Object.assign(new Number(5), {a: 9})",
                              "new Boolean(false)",
                              "(function() { return arguments; })(1, 'x')",
                              "(function() { 'use strict'; return arguments; })(1, 'x')",
                              "new Date(0)",
                              "new Date(NaN)",
                              "Object.assign(new Date(0), {a: 9})",
                              "new (class extends Date {})(0)",
                              "Object.create(Date.prototype)",
                              "/x/i",
                              "Object.assign(/x/, {a: 9})",
                              "RegExp.prototype",
                              "new Map([['a', 9]])",
                              "Object.assign(new Map(), {a: 9})",
                              "new Set(['a'])",
                              "new WeakMap()",
                              "new WeakSet()",
                              "[1, [2]]",
                              "Object.assign([1], {a: 9})",
                              "new (class extends Array {})",
                              "Object.create(Array.prototype)",
                              "Array.prototype",
                              "new URL('http://host/')",
                              "new Proxy({a: 9}, {})",
                              "new Proxy([1, 2], {})",
                              "new Proxy(new Date(0), {})",
                              "new Proxy(new Uint8Array([1]), {})",
                              "Math",
                              "JSON",
                              "Reflect",
                              "(function*() { yield 1; })()",
                              "[1][Symbol.iterator]()",
                              "new Map().entries()",
                              "Object(1)",
                              "Object('ab')",
                              "host.place",
                              "host.numbers"})
        QTest::newRow(value) << value;
}

/// The same as the literal conversion, QJSValue::toVariant(), for everything that this can be asked about.
void tst_KyScriptGlobal::anyObjectCountsAsWhatQtMakesOfIt()
{
    QFETCH(QString, value);
    Engine engine;
    Host host(engine);
    const QVariant form = engine.QJSEngine::evaluate("(" + value + ")").toVariant();
    QVERIFY(form.isValid());

    const QVariantMap before{{"0", "old"}, {"a", 1}};
    QVariantMap expected = before;
    if (form.typeId() == QMetaType::QVariantMap)
        expected.insert(form.toMap());
    for (auto it = before.begin(); it != before.end(); ++it)
        store().setValue(it.key(), it.value());
    engine.run("Global = " + value + "; 1");
    QVERIFY(!engine.hasError());
    QCOMPARE(store().values(), expected);

    engine.run("Global.inside = {list: [" + value + "]}; 1");
    QVERIFY(!engine.hasError());
    expected.insert("inside", QVariantMap{{"list", QVariantList{form}}});
    QCOMPARE(store().values(), expected);
}

void tst_KyScriptGlobal::frozenGlobalIsFreshInTheNextRun()
{
    Engine engine;
    engine.run("Global.a = 1");
    QCOMPARE(engine.text("Object.freeze(Global); Global.a = 2; Global.b = 3; Global.a"), QStringLiteral("1"));
    QCOMPARE(engine.text("Global.b = 4; Global.a + Global.b"), QStringLiteral("5"));
    engine.run("Global.c = 6; Object.freeze(Global)");
    QCOMPARE(engine.text("Global.c + ' ' + Object.isFrozen(Global)"), QStringLiteral("6 false"));
}

/// The engine's own object then stays the one of the run that has locked it.
void tst_KyScriptGlobal::unwritableGlobalDoesNoHarm()
{
    Engine engine, other;
    engine.run("Global.a = 1");
    engine.run("Object.defineProperty(this, 'Global', {writable: false, configurable: false})");
    other.run("Global.a = 2; Global.b = 3");
    QCOMPARE(engine.text("Global.a + typeof Global.b"), QStringLiteral("1undefined"));
    QVERIFY(!engine.hasError());
    engine.run("Global.c = 5");
    QCOMPARE(other.text("Global.c"), QStringLiteral("5"));
}

void tst_KyScriptGlobal::accessorGlobalDoesNoHarm_data()
{
    QTest::addColumn<QString>("descriptor");
    QTest::newRow("throwing")
        << "{get: function() { throw new Error('g'); }, set: function() { throw new Error('s'); }}";
    QTest::newRow("without a setter") << "{get: function() { return {b: 2}; }}";
    QTest::newRow("without a getter") << "{set: function() {}}";
    QTest::newRow("number") << "{get: function() { return 5; }, set: function() {}}";
}

void tst_KyScriptGlobal::accessorGlobalDoesNoHarm()
{
    QFETCH(QString, descriptor);
    Engine engine, other;
    engine.run("Global.a = 1");
    engine.run("Object.defineProperty(this, 'Global', " + descriptor + ")");
    QVERIFY(!engine.hasError());
    LogCapture log(2);
    QCOMPARE(engine.text("6 * 7"), QStringLiteral("42"));
    QVERIFY(!engine.hasError());
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(other.text("Global.a"), QStringLiteral("1"));
}

void tst_KyScriptGlobal::throwingGetterLeavesItsKey()
{
    Engine first, second;
    first.run("Global.a = 'old'; Global.z = 1");
    first.run(
        "Object.defineProperty(Global, 'a', {enumerable: true, get: function() { throw new Error('x'); }});"
        "Global.b = 2; Global.z = 3");
    QVERIFY(!first.hasError());
    for (Engine* engine : {&first, &second})
        QCOMPARE(engine->text("JSON.stringify(Global)"), QStringLiteral("{\"a\":\"old\",\"b\":2,\"z\":3}"));
}

void tst_KyScriptGlobal::throwingGetterDoesNotReachTheNextRun_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("kept");
    const QString getter = "get bad() { throw new Error('x'); }";
    QTest::newRow("in an object") << "{a: 1, " + getter + ", c: 3}"
                                  << "{\"a\":1,\"c\":3}";
    QTest::newRow("deep") << "{a: [{" + getter + ", c: 3}]}"
                          << "{\"a\":[{\"c\":3}]}";
    QTest::newRow("in an array") << "Object.defineProperty([1, 2, 3], 1, {enumerable: true, get: function() "
                                    "{ throw new Error('x'); }})"
                                 << "[1,null,3]";
    QTest::newRow("throws a symbol") << "{a: 1, get bad() { throw Symbol(); }}"
                                     << "{\"a\":1}";
    QTest::newRow("in the prototype") << "Object.create({" + getter + "}, {a: {value: 1, enumerable: true}})"
                                      << "{\"a\":1}";
    QTest::newRow("toString and valueOf") << "{toString: function() { throw new Error('x'); }, valueOf: "
                                             "function() { throw new Error('x'); }, a: 1}"
                                          << "{\"a\":1}";
    QTest::newRow("toJSON") << "{a: 1, get toJSON() { throw new Error('x'); }}"
                            << "{\"a\":1}";
}

void tst_KyScriptGlobal::throwingGetterDoesNotReachTheNextRun()
{
    QFETCH(QString, value);
    QFETCH(QString, kept);
    Engine first, second;
    first.run("Global.v = " + value + "; 1");
    QVERIFY(!first.hasError());
    LogCapture log(2);
    QCOMPARE(first.text("6 * 7"), QStringLiteral("42"));
    QCOMPARE(log.take(), QStringList());
    for (Engine* engine : {&first, &second})
        QCOMPARE(engine->text("JSON.stringify(Global.v)"), kept);
}

/// The getter runs while the values are saved.
void tst_KyScriptGlobal::getterThatRunsAScriptIsFine()
{
    Engine engine, other;
    Host host(engine);
    engine.run("Global.a = 1; Global.o = {}");
    engine.run("Object.defineProperty(Global, 'b', {enumerable: true, get: function() {"
               "    host.run('Global.inner = 5; Global.a = 7; Global.o = {x: 1}'); return 2; }});"
               "Global.c = {get d() { host.run('Global.deep = 6'); return 3; }}; Global.z = 4");
    QVERIFY(!engine.hasError());
    for (Engine* one : {&engine, &other})
        QCOMPARE(one->text("[Global.b, Global.c.d, Global.z, Global.inner, Global.deep].join()"),
                 QStringLiteral("2,3,4,5,6"));
}

void tst_KyScriptGlobal::cyclesAreCut_data()
{
    QTest::addColumn<QString>("statement");
    QTest::addColumn<QString>("kept");
    QTest::newRow("object") << "var o = {a: 1}; o.me = o; Global.v = o"
                            << "{\"a\":1,\"me\":{}}";
    QTest::newRow("array") << "var o = [1]; o.push(o); Global.v = o"
                           << "[1,[]]";
    QTest::newRow("over two") << "var o = {}, p = [o]; o.p = p; Global.v = o"
                              << "{\"p\":[{}]}";
    QTest::newRow("Global itself") << "Global.v = Global"
                                   << "{\"v\":{}}";
}

void tst_KyScriptGlobal::cyclesAreCut()
{
    QFETCH(QString, statement);
    QFETCH(QString, kept);
    Engine first, second;
    first.run(statement);
    for (Engine* engine : {&first, &second})
        QCOMPARE(engine->text("JSON.stringify(Global.v)"), kept);
}

void tst_KyScriptGlobal::deepValueIsNotKept()
{
    Engine engine;
    engine.run("Global.v = 'old'; Global.z = 1");
    for (const char* wrap : {"{x: o}", "[o]"}) {
        LogCapture log(2);
        engine.run(
            QStringLiteral("var o = 1; for (var i = 0; i < 30000; ++i) o = %1; Global.v = o; Global.z = 2")
                .arg(wrap));
        QVERIFY(!engine.hasError());
        QCOMPARE(log.take(), QStringList("2|Script Interface|Global.v is too deep or too large to be kept"));
        QCOMPARE(engine.text("Global.v + Global.z"), QStringLiteral("old2"));
    }
    engine.run("o = null");
}

void tst_KyScriptGlobal::hugeValueIsNotKept_data()
{
    QTest::addColumn<QString>("value");
    QTest::newRow("sparse array") << "new Array(4294967295)";
    QTest::newRow("sparse array with an element")
        << "(function() { var a = []; a[2000000000] = 1; return a; })()";
    QTest::newRow("sparse array inside") << "{x: [{y: new Array(3000000)}]}";
    QTest::newRow("one sparse array many times") << "(function() { var a = new Array(900000), b = []; for "
                                                    "(var i = 0; i < 1000; ++i) b.push(a); return b; })()";
    QTest::newRow("shared values")
        << "(function() { var o = [1]; for (var i = 0; i < 40; ++i) o = [o, o]; return o; })()";
    QTest::newRow("endless") << "(function next() { return {get x() { return next(); }}; })()";
}

void tst_KyScriptGlobal::hugeValueIsNotKept()
{
    QFETCH(QString, value);
    Engine engine;
    engine.run("Global.v = 'old'");
    LogCapture log(2);
    engine.run("Global.v = " + value + "; Global.z = 2");
    QVERIFY(!engine.hasError());
    QCOMPARE(log.take(), QStringList("2|Script Interface|Global.v is too deep or too large to be kept"));
    QCOMPARE(engine.text("Global.v + Global.z"), QStringLiteral("old2"));
}

void tst_KyScriptGlobal::limitsAreBeyondUsualValues()
{
    Engine engine;
    LogCapture log(2);
    engine.run("Global.long = []; for (var i = 0; i < 50000; ++i) Global.long.push({i: i});"
               "var o = {}; for (var i = 0; i < 400; ++i) o = {x: o}; Global.deep = o");
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(engine.text("var n = 0; for (var o = Global.deep; o; o = o.x) ++n;"
                         "[n, Global.long.length, Global.long[49999].i].join()"),
             QStringLiteral("401,50000,49999"));
}

void tst_KyScriptGlobal::sharedValuesAreCopied()
{
    Engine engine;
    engine.run("var o = {x: 1}; Global.v = [o, o, {again: o}]; Global.w = o");
    QCOMPARE(engine.text("JSON.stringify(Global) + (Global.v[0] === Global.v[1])"),
             QStringLiteral("{\"v\":[{\"x\":1},{\"x\":1},{\"again\":{\"x\":1}}],\"w\":{\"x\":1}}false"));
}

void tst_KyScriptGlobal::proxiesAreRead_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("kept");
    const QString thrower = "function() { throw new Error('x'); }";
    QTest::newRow("object") << "new Proxy({a: 1}, {})"
                            << "{\"a\":1}";
    QTest::newRow("array") << "new Proxy([1, 2], {})"
                           << "{\"0\":1,\"1\":2}";
    QTest::newRow("traps") << "new Proxy({a: 1}, {get: function(o, n) { return n + '!'; }})"
                           << "{\"a\":\"a!\"}";
    QTest::newRow("throwing get") << "new Proxy({a: 1}, {get: " + thrower + "})"
                                  << "{}";
    QTest::newRow("throwing keys") << "new Proxy({a: 1}, {ownKeys: " + thrower + "})"
                                   << "{}";
    QTest::newRow("throwing descriptor") << "new Proxy({a: 1}, {getOwnPropertyDescriptor: " + thrower + "})"
                                         << "{\"a\":1}|{}"; // Qt 6.4 asks for none
    QTest::newRow("revoked")
        << "(function() { var r = Proxy.revocable({}, {}); r.revoke(); return r.proxy; })()"
        << "{}";
}

void tst_KyScriptGlobal::proxiesAreRead()
{
    QFETCH(QString, value);
    QFETCH(QString, kept);
    Engine engine;
    engine.run("Global.v = " + value + "; 1");
    QVERIFY(!engine.hasError());
    QVERIFY(kept.split('|').contains(engine.text("JSON.stringify(Global.v)")));

    // In place of Global itself.
    engine.run("Global.v = undefined");
    engine.run("Global = " + value + "; 1");
    QVERIFY(!engine.hasError());
    QVERIFY(kept.split('|').contains(engine.text("JSON.stringify(Global)")));
}

/// Objects that pass themselves off as something else, with something inside that has no form.
void tst_KyScriptGlobal::disguisedObjectsDoNoHarm_data()
{
    QTest::addColumn<QString>("value");
    for (const char* tag : {"ArrayBuffer", "Date", "RegExp", "Array", "Function", "Symbol"})
        QTest::addRow("tagged %s", tag)
            << QStringLiteral("{[Symbol.toStringTag]: '%1', s: Symbol(), f: function() {}, a: 1}")
                   .arg(QLatin1String(tag));
    QTest::newRow("throwing tag")
        << "{get [Symbol.toStringTag]() { throw new Error('x'); }, s: Symbol(), a: 1}";
    for (const char* type : {"ArrayBuffer", "Date", "RegExp", "Array", "Function", "Error", "Map"})
        QTest::addRow("prototype of %s", type)
            << QStringLiteral(
                   "Object.assign(Object.create(%1.prototype), {s: Symbol(), f: function() {}, a: 1})")
                   .arg(QLatin1String(type));
    QTest::newRow("length") << "{length: 4294967295, s: Symbol(), a: 1}";
}

void tst_KyScriptGlobal::disguisedObjectsDoNoHarm()
{
    QFETCH(QString, value);
    Engine engine;
    for (const char* target : {"Global.v", "Global"}) {
        engine.run(QStringLiteral("%1 = %2; 1").arg(QLatin1String(target), value));
        QVERIFY(!engine.hasError());
        QCOMPARE(engine.text(QStringLiteral("%1.a").arg(QLatin1String(target))), QStringLiteral("1"));
    }
}

void tst_KyScriptGlobal::replacedBuiltinsDoNoHarm()
{
    Engine engine;
    engine.run("Global.a = 1; Global.o = {x: 1}");
    engine.run("Object.assign = Object.keys = Object.getOwnPropertyNames = Object.defineProperty = null;"
               "Object.prototype.toString = Object.prototype.propertyIsEnumerable = null;"
               "Function.prototype.call = null; Object = null; Global.b = 2");
    QVERIFY(!engine.hasError());
    QCOMPARE(engine.text("JSON.stringify(Global)"), QStringLiteral("{\"a\":1,\"b\":2,\"o\":{\"x\":1}}"));
    engine.run("Global.o.x = 3; Global.a = 4");
    QCOMPARE(engine.text("JSON.stringify(Global)"), QStringLiteral("{\"a\":4,\"b\":2,\"o\":{\"x\":3}}"));
}

void tst_KyScriptGlobal::prototypesStayOutside_data()
{
    QTest::addColumn<QString>("statement");
    const auto row = [](const char* inName, const QString& inStatement) {
        QTest::newRow(inName) << inStatement;
    };
    const QString thrower = "function() { throw new Error('x'); }";
    const QString accessor = "{get: function() { return 5; }, set: function() {}, configurable: true}";
    const QString throwing = "{get: " + thrower + ", set: " + thrower + "}";
    row("nothing", "1");
    // Values that are set, one of them for the first time, and Global itself.
    for (const char* name : {"foo", "a", "fresh", "Global"}) {
        const QString of = "Object.defineProperty(Object.prototype, '" + QString(name) + "', ";
        QTest::addRow("value of %s", name) << "Object.prototype." + QString(name) + " = 5";
        QTest::addRow("hidden value of %s", name) << of + "{value: 5, writable: true})";
        QTest::addRow("read-only %s", name) << of + "{value: 5})";
        QTest::addRow("accessor of %s", name) << of + accessor + ")";
        QTest::addRow("throwing accessor of %s", name) << of + throwing + ")";
    }
    row("value of a new key", "Object.prototype.list = 5");
    for (const char* name : {"length", "value", "get", "set", "writable", "enumerable", "configurable",
                             "copy", "entries", "publish", "0", "1", "2"})
    {
        const QString of = "Object.defineProperty(Object.prototype, '" + QString(name) + "', ";
        QTest::addRow("read-only %s", name) << of + "{value: 5})";
        QTest::addRow("throwing accessor of %s", name) << of + throwing + ")";
    }
    for (const char* name : {"0", "1", "3"}) {
        const QString of = "Object.defineProperty(Array.prototype, '" + QString(name) + "', ";
        QTest::addRow("read-only index %s", name) << of + "{value: 5})";
        QTest::addRow("accessor of index %s", name) << of + accessor + ")";
        QTest::addRow("throwing accessor of index %s", name) << of + throwing + ")";
    }
    row("elements of all arrays", "Array.prototype.push(1, 2, 3)");
    row("frozen prototypes", "Object.freeze(Object.prototype); Object.freeze(Array.prototype)");
    row("no __proto__", "delete Object.prototype.__proto__");
    row("throwing __proto__", "Object.defineProperty(Object.prototype, '__proto__', " + throwing + ")");
    row("builtins gone",
        "['assign', 'create', 'setPrototypeOf', 'keys', 'getOwnPropertyNames', 'defineProperty'].forEach("
        "    function(name) { delete Object[name]; });"
        "Object.prototype.propertyIsEnumerable = Object.prototype.toString = Array.prototype.filter = null;"
        "Function.prototype.call = Function.prototype.bind = Function.prototype.apply = null;"
        "Object = Array = Function = null");
    row("builtins that lie",
        "Object.keys = Object.getOwnPropertyNames = function() { return ['evil', 'foo']; };"
        "Object.assign = Object.create = Object.setPrototypeOf = function() { return {evil: 1, foo: 7}; };"
        "Object.prototype.propertyIsEnumerable = function() { return false; };"
        "Function.prototype.call = Function.prototype.bind = function() { return {evil: 1}; };"
        "Array.prototype.filter = function() { return ['evil']; }");
}

/// The prototypes are changed before the first run, so that nothing could be put aside there.
void tst_KyScriptGlobal::prototypesStayOutside()
{
    QFETCH(QString, statement);
    Engine other;
    other.run("Global.foo = 1; Global.a = 1; Global.nested = {foo: [1]}");

    Engine engine;
    const QJSValue prototype = engine.QJSEngine::evaluate("Object.prototype");
    QVERIFY(!engine.QJSEngine::evaluate("(function() { " + statement + "})()").isError());
    LogCapture log(2);
    for (int foo : {5, 6}) {
        engine.run(QStringLiteral("Global.foo = %1; Global.a = 2; Global.nested.foo[0] = 3;"
                                  "Global.list = [7, 'x', {foo: %1}]; 1")
                       .arg(foo));
        const QVariantMap expected{{"foo", foo},
                                   {"a", 2},
                                   {"nested", QVariantMap{{"foo", QVariantList{3}}}},
                                   {"list", QVariantList{7, "x", QVariantMap{{"foo", foo}}}}};
        QCOMPARE(store().values(), expected);

        QCOMPARE(engine.text("'ran'"), QStringLiteral("ran"));
        const QJSValue global = engine.globalObject().property("Global");
        QVERIFY(global.prototype().strictlyEquals(prototype));
        QCOMPARE(global.toVariant(), QVariant(expected));
        QCOMPARE(store().values(), expected);
        QCOMPARE(
            other.text("JSON.stringify(Global)"),
            QStringLiteral("{\"a\":2,\"foo\":%1,\"list\":[7,\"x\",{\"foo\":%1}],\"nested\":{\"foo\":[3]}}")
                .arg(foo));
    }
    engine.run("Global = {fresh: 5}"); // also where the prototype refuses to have that set
    QCOMPARE(store().property("fresh"), QVariant(5));
    QCOMPARE(other.text("Global.fresh"), QStringLiteral("5"));
    QVERIFY(!engine.hasError());
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptGlobal::unreadableGlobalIsLoggedAndNotSaved_data()
{
    QTest::addColumn<QString>("thrown");
    for (const char* thrown :
         {"new Error('x')", "'x'", "Symbol()", "null", "undefined", "['a', 9]", "{a: 9}"})
        QTest::newRow(thrown) << thrown;
}

void tst_KyScriptGlobal::unreadableGlobalIsLoggedAndNotSaved()
{
    QFETCH(QString, thrown);
    Engine engine;
    engine.run("Global.a = 1");
    LogCapture log(2);
    engine.run("Global = new Proxy({a: 5}, {ownKeys: function() { throw " + thrown + "; }}); 1");
    QCOMPARE(log.take(), QStringList("2|Script Interface|Global can't be read, its values are not kept"));
    QVERIFY(!engine.hasError());
    QCOMPARE(engine.text("JSON.stringify(Global)"), QStringLiteral("{\"a\":1}"));
    QCOMPARE(log.take(), QStringList());
}

/// A nested run that begins where the stack ends can call no function, and must not leave an error as Global.
void tst_KyScriptGlobal::exhaustedStackLeavesGlobalAlone()
{
    Engine engine, other;
    Host host(engine);
    engine.run("Global.a = 1; Global.o = {x: 2}");
    QCOMPARE(engine.text("var depth = 0, failed = 0;"
                         "function deep() { ++depth; try { deep(); } catch (e) { ++failed; host.run('1'); } }"
                         "deep(); Global.c = 3; [depth > 100, failed > 0, Global.a, Global.o.x].join()"),
             QStringLiteral("true,true,1,2"));
    QVERIFY(!engine.hasError());
    for (Engine* one : {&engine, &other})
        QCOMPARE(one->text("JSON.stringify(Global)"), QStringLiteral("{\"a\":1,\"c\":3,\"o\":{\"x\":2}}"));
}

void tst_KyScriptGlobal::nestedRunReplacesTheObject()
{
    Engine engine;
    Host host(engine);
    engine.run("Global.a = 1");
    QCOMPARE(
        engine.text("Global.lost = 1; var seen = host.run('var s = typeof Global.lost; Global.b = 2; s');"
                    "Global.c = 3; [seen, Global.a, Global.b, typeof Global.lost].join()"),
        QStringLiteral("undefined,1,2,undefined"));
    QCOMPARE(engine.text("JSON.stringify(Global)"), QStringLiteral("{\"a\":1,\"b\":2,\"c\":3}"));
}

void tst_KyScriptGlobal::lastSaveWinsForEachKey()
{
    Engine engine;
    Host host(engine);
    engine.run("Global.a = 1; Global.b = 1; Global.c = 1");
    engine.run("var mine = Global; mine.a = 'outer'; mine.b = 'outer';"
               "host.run(\"Global.b = 'inner'; Global.c = 'inner'\"); Global = mine");
    QCOMPARE(engine.text("[Global.a, Global.b, Global.c].join()"), QStringLiteral("outer,outer,1"));

    engine.run("host.run(\"Global.b = 'inner'\"); Global.c = 'outer'");
    QCOMPARE(engine.text("[Global.a, Global.b, Global.c].join()"), QStringLiteral("outer,inner,outer"));
}

void tst_KyScriptGlobal::outerReferenceIsNotTheInnerObject()
{
    Engine engine;
    Host host(engine);
    QCOMPARE(engine.text("var mine = Global; host.run('1'); mine.lost = 1; mine === Global"),
             QStringLiteral("false"));
    QCOMPARE(engine.text("typeof Global.lost"), QStringLiteral("undefined"));
}

void tst_KyScriptGlobal::evaluationTakesNoPart()
{
    Engine engine;
    QCOMPARE(engine.evaluate(KyScriptProgram("typeof Global", ""), false).toString(),
             QStringLiteral("undefined"));
    engine.run("Global.a = 1; Global.b = undefined");
    // As the run has left it; what is set here is lost.
    QCOMPARE(engine.evaluate(KyScriptProgram("Global.c = 5; Global.a + String('b' in Global)", ""), false)
                 .toString(),
             QStringLiteral("1true"));
    QCOMPARE(engine.evaluate(KyScriptProgram("Global.c", ""), false).toInt(), 5);
    QCOMPARE(store().values().keys(), QStringList("a"));
    QCOMPARE(engine.text("typeof Global.c"), QStringLiteral("undefined"));
}

void tst_KyScriptGlobal::runnerTakesNoPart_data()
{
    QTest::addColumn<int>("options");
    QTest::addColumn<QString>("seen");
    QTest::newRow("without the option") << 0 << "undefined";
    QTest::newRow("with the option") << int(ScriptGlobal) << "object";
}

void tst_KyScriptGlobal::runnerTakesNoPart()
{
    QFETCH(int, options);
    QFETCH(QString, seen);
    Engine engine;
    engine.run("Global.a = 1");
    KyScriptRunner runner;
    QVERIFY(runner.initEngine(options, KyScriptProgram()));
    QString result;
    QVERIFY(runner.evaluateScript(KyScriptProgram("typeof Global", ""), result));
    QCOMPARE(result, seen);
    QVERIFY(runner.evaluateScript(KyScriptProgram("this.Global && Object.keys(Global).length", ""), result));
    QCOMPARE(result, QString(options ? "0" : ""));
    QVERIFY(runner.evaluateScript(KyScriptProgram("Global = {a: 2}; void 0", "")));
    QCOMPARE(engine.text("Global.a"), QStringLiteral("1"));
}

void tst_KyScriptGlobal::runnerSeesWhatScriptsLeft()
{
    KyScriptRunner runner;
    QVERIFY(runner.initEngine(ScriptGlobal, KyScriptProgram("function read() { return Global.kept; }", "")));
    QVERIFY(runner.evaluateScript(KyScriptProgram("Global.kept = 7; void 0", "")));
    QCOMPARE(runner.callFunction(runner.getGlobalFunction("read")).toInt(), 7);
    QVERIFY(store().values().isEmpty());
}

void tst_KyScriptGlobal::hostObjectComesBackAsItself()
{
    Engine engine;
    Host host(engine);
    engine.run("Global.h = host");
    for (int i = 0; i < 3; ++i)
        QCOMPARE(engine.text("Global.h === host && Global.h.run('6 * 7')"), QStringLiteral("42"));
}

void tst_KyScriptGlobal::hostObjectInsideValuesComesBack()
{
    Engine engine;
    Host host(engine);
    engine.run("Global.v = {list: [1, host], o: {h: host}, plain: 'x'}");
    for (int i = 0; i < 3; ++i)
        QCOMPARE(
            engine.text("Global.v.list[1] === host && Global.v.o.h === host && Array.isArray(Global.v.list)"
                        " && Global.v.list[0] === 1 && Global.v.plain"),
            QStringLiteral("x"));
}

void tst_KyScriptGlobal::deletedHostObjectIsLeftOut()
{
    Engine engine, other;
    auto thing = std::make_unique<Thing>();
    QJSEngine::setObjectOwnership(thing.get(), QJSEngine::CppOwnership);
    engine.globalObject().setProperty("thing", engine.newQObject(thing.get()));
    engine.run("Global.t = thing; Global.list = [thing, 1]; Global.o = {t: thing, a: 1}; Global.z = 5");
    thing.reset();
    for (Engine* one : {&engine, &other, &engine})
        QCOMPARE(
            one->text(
                "[typeof Global.t, 't' in Global, typeof Global.list[0], Global.list[1], typeof Global.o.t,"
                " Global.o.a, Global.z].join()"),
            QStringLiteral("undefined,false,undefined,1,undefined,1,5"));

    // What has been deleted before it is saved has no form either.
    engine.run("Global.dead = thing; Global.dead2 = [thing]");
    QCOMPARE(engine.text("typeof Global.dead + typeof Global.dead2[0]"),
             QStringLiteral("undefinedundefined"));
    QVERIFY(!engine.hasError());
}

void tst_KyScriptGlobal::collectedHostObjectIsLeftOut()
{
    Engine engine;
    engine.globalObject().setProperty("Thing", engine.newQMetaObject<Thing>());
    engine.run("Global.t = new Thing(); Global.o = {t: new Thing()}");
    engine.run("collectGarbage()");
    flushDeferredDeletes();
    QCOMPARE(engine.text("Global.t.name() + Global.o.t.name()"), QStringLiteral("thingthing"));

    engine.run("Global = {}; collectGarbage()"); // no script holds them, only the store
    QCOMPARE(engine.text("typeof Global.t + typeof Global.o.t + ('t' in Global)"),
             QStringLiteral("undefinedundefinedfalse"));
    flushDeferredDeletes();
    QCOMPARE(engine.text("typeof Global.t + typeof Global.o.t"), QStringLiteral("undefinedundefined"));
}

void tst_KyScriptGlobal::pinnedHostObjectReachesOtherEngines()
{
    Engine first, second;
    Host host(first);
    first.run("Global.h = host; Global.list = [host]");
    QCOMPARE(second.text("typeof Global.h.run + (Global.h === Global.list[0])"),
             QStringLiteral("functiontrue"));
    QCOMPARE(first.text("Global.h === host && Global.list[0] === host"), QStringLiteral("true"));
}

void tst_KyScriptGlobal::scriptObjectStaysWithItsEngine()
{
    Engine first, second;
    first.globalObject().setProperty("Thing", first.newQMetaObject<Thing>());
    first.run("Global.t = new Thing(); kept = Global.t; Global.z = 1");
    QCOMPARE(second.text("typeof Global.t + Global.z"), QStringLiteral("undefined1"));
    second.run("Global.z = 2; collectGarbage()");
    flushDeferredDeletes();
    QCOMPARE(first.text("Global.t === kept && Global.t.name() + Global.z"), QStringLiteral("thing2"));
    second.run("Global.t = undefined");
    QCOMPARE(first.text("typeof Global.t"), QStringLiteral("undefined"));
}

void tst_KyScriptGlobal::hostObjectOfADeadEngineIsLeftOut()
{
    auto first = std::make_unique<Engine>();
    Engine second;
    first->globalObject().setProperty("Thing", first->newQMetaObject<Thing>());
    auto pinned = std::make_unique<Thing>();
    QJSEngine::setObjectOwnership(pinned.get(), QJSEngine::CppOwnership);
    first->globalObject().setProperty("pinned", first->newQObject(pinned.get()));
    first->run("Global.t = new Thing(); Global.p = pinned; Global.z = 1");
    first.reset();
    QCOMPARE(second.text("typeof Global.t + Global.p.name() + Global.z"), QStringLiteral("undefinedthing1"));
}

void tst_KyScriptGlobal::keepingAnObjectDoesNotOwnIt()
{
    const QPointer<Thing> thing = new Thing;
    QJSEngine::setObjectOwnership(thing, QJSEngine::CppOwnership);
    {
        Engine engine;
        engine.globalObject().setProperty("thing", engine.newQObject(thing));
        engine.run("Global.t = thing; thing = null");
        engine.run("Global.t = undefined; collectGarbage()");
        engine.run("collectGarbage()");
        flushDeferredDeletes();
        QVERIFY(thing);
        QCOMPARE(QJSEngine::objectOwnership(thing), QJSEngine::CppOwnership);
    }
    QVERIFY(thing);
    delete thing.data();
}

void tst_KyScriptGlobal::storeIsOneWithoutAParent()
{
    QCOMPARE(&KyScriptGlobal::instance(), &store());
    QVERIFY(!store().parent());
    QCOMPARE(store().metaObject()->methodCount(), QObject::staticMetaObject.methodCount());
}

void tst_KyScriptGlobal::savedValuesAreDynamicProperties()
{
    Engine engine;
    engine.run(QString::fromUtf8("Global.b = 1; Global['ä€'] = 'x'; Global[''] = 2; Global.objectName = 3"));
    QList<QByteArray> names = store().dynamicPropertyNames();
    std::sort(names.begin(), names.end());
    QCOMPARE(names, QList<QByteArray>({"", "b", QString::fromUtf8("ä€").toUtf8()}));
    QCOMPARE(store().property("b"), QVariant(1));
    QCOMPARE(store().property(QString::fromUtf8("ä€").toUtf8().constData()), QVariant("x"));
}

void tst_KyScriptGlobal::dynamicPropertiesAreSeen_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("check");
    QTest::newRow("int") << QVariant(5) << "v === 5";
    QTest::newRow("double") << QVariant(2.5) << "v === 2.5";
    QTest::newRow("float") << QVariant(0.5F) << "v === 0.5";
    QTest::newRow("long long") << QVariant(qlonglong(7)) << "v === 7";
    QTest::newRow("unsigned") << QVariant(4000000000U) << "v === 4000000000";
    QTest::newRow("text") << QVariant(QString::fromUtf8("ü€")) << QString::fromUtf8("v === 'ü€'");
    QTest::newRow("null text") << QVariant(QString()) << "v === ''";
    QTest::newRow("list of texts") << QVariant(QStringList({"a", "b"}))
                                   << "JSON.stringify(v) === '[\"a\",\"b\"]'";
    QTest::newRow("list") << QVariant(QVariantList{1, QVariantMap{{"a", 2}}})
                          << "JSON.stringify(v) === '[1,{\"a\":2}]'";
    QTest::newRow("map") << QVariant(QVariantMap{{"a", QVariant()}}) << "'a' in v && v.a === undefined";
    QTest::newRow("date") << QVariant(QDateTime::fromMSecsSinceEpoch(5)) << "v.getTime() === 5";
    QTest::newRow("bytes") << QVariant(QByteArray("ab")) << "v.byteLength === 2";
    QTest::newRow("no bytes") << QVariant(QByteArray()) << "v.byteLength === 0";
    QTest::newRow("null") << QVariant::fromValue(nullptr) << "v === null";
}

void tst_KyScriptGlobal::dynamicPropertiesAreSeen()
{
    QFETCH(QVariant, value);
    QFETCH(QString, check);
    Engine first, second;
    first.run("1");
    store().setProperty("v", value);
    for (Engine* engine : {&first, &second, &first})
        QCOMPARE(engine->text("var v = Global.v; " + check), QStringLiteral("true"));
    store().setProperty("v", QVariant());
    QCOMPARE(first.text("'v' in Global"), QStringLiteral("false"));
}

/// The store changes under a run, which then saves what it holds itself: the last save wins for each key.
void tst_KyScriptGlobal::changesOfAnotherEngineDuringARunAreKept()
{
    Engine engine, other;
    Host host(other);
    engine.globalObject().setProperty("other", engine.newQObject(&host));
    engine.run("Global.a = 1; Global.b = 1");
    engine.run("other.run('Global.b = 2; Global.c = 3'); Global.a = 5; Global.d = {}");
    for (Engine* one : {&engine, &other})
        QCOMPARE(one->text("[Global.a, Global.b, Global.c, typeof Global.d].join()"),
                 QStringLiteral("5,1,3,object"));
}

void tst_KyScriptGlobal::revisionGrowsWithChangesOnly()
{
    Engine engine;
    engine.run("Global.a = 1; Global.s = 'x'");
    const quint64 before = store().revision();
    engine.run("1");
    engine.run("Global.a = 1; Global.s = 'x'; Global.never = undefined; delete Global.a");
    QCOMPARE(store().revision(), before);
    engine.run("Global.a = 2");
    QCOMPARE(store().revision(), before + 1);
}

KY_TEST_MAIN(tst_KyScriptGlobal)
#include "tst_KyScriptGlobal.moc"
