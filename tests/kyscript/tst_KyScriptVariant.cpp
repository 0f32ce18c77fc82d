#include <support/KyTest.h>

#include <kyscript/KyScriptVariant.h>

#include <QDateTime>
#include <QJSEngine>
#include <QRegularExpression>

/// What scripts call.
class Host : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE void take(const QVariant& inValue)
    {
        raw = inValue;
        taken = KyScriptVariant::normalised(inValue, *this);
        cut = KyScriptVariant::cut(inValue, this);
    }

    QVariant raw;
    QVariant taken;
    QVariant cut;
};

class tst_KyScriptVariant : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void valuesHaveTheirForm_data();
    void valuesHaveTheirForm();
    void arraysAndObjectsArriveAsValuesOfTheScript();
    void hostObjectsStay();
    void whatHasNoFormStays_data();
    void whatHasNoFormStays();
    void listsAndMapsMayBeUpToTheLimits();
    void whatIsBeyondTheLimitsStays_data();
    void whatIsBeyondTheLimitsStays();
    void errorsOfGettersEndHere_data();
    void errorsOfGettersEndHere();
    void valuesOfTheHostStay_data();
    void valuesOfTheHostStay();
    void valuesOfAnotherEngineDoNoHarm();
    void hostThatNoEngineKnowsIsHarmless();
    void textIsNoList();
    void listsAreReadOnlyOfLists();

    // What counts as far as it can be read
    void descriptionsHaveTheSameForm_data();
    void descriptionsHaveTheSameForm();
    void whatHasNoFormIsInvalidInDescriptions_data();
    void whatHasNoFormIsInvalidInDescriptions();
    void keysWithoutAValueStay();
    void inheritedPropertiesAreLeftOut();
    void circlesAreCut();
    void deepDescriptionsAreCut();
    void longArraysAreCut();
    void manyValuesAreCut();
    void descriptionsOfNoHostAreRead();
    void errorsInDescriptionsEndHere();

private:
    QVariant cut(const QString& inSource)
    {
        taken(inSource);
        return mHost->cut;
    }
    QVariant taken(const QString& inSource)
    {
        mHost->taken = QVariant("nothing");
        const QJSValue result = mEngine->evaluate("host.take(" + inSource + "); 'done'");
        return result.toString() == "done" ? mHost->taken : QVariant("failed: " + result.toString());
    }

    std::unique_ptr<QJSEngine> mEngine;
    std::unique_ptr<Host> mHost;
};

void tst_KyScriptVariant::init()
{
    mEngine = std::make_unique<QJSEngine>();
    mHost = std::make_unique<Host>();
    QJSEngine::setObjectOwnership(mHost.get(), QJSEngine::CppOwnership);
    mEngine->globalObject().setProperty("host", mEngine->newQObject(mHost.get()));
}

void tst_KyScriptVariant::cleanup()
{
    mHost->taken = mHost->raw = mHost->cut = QVariant();
    mEngine.reset();
    mHost.reset();
}

void tst_KyScriptVariant::valuesHaveTheirForm_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QVariant>("value");
    const auto row = [](const char* source, const QVariant& value) {
        QTest::newRow(source) << source << value;
    };
    row("true", true);
    row("2", 2);
    row("2.0", 2);
    row("-0", 0);
    row("0.5 * 4", 2);
    row("Math.round(2.4)", 2);
    row("Math.pow(2, 31) - 1", 2147483647);
    row("-Math.pow(2, 31)", -2147483647 - 1);
    row("Math.pow(2, 31)", 2147483648.0);
    row("-Math.pow(2, 31) - 1", -2147483649.0);
    row("2.5", 2.5);
    row("1e300", 1e300);
    row("Infinity", std::numeric_limits<double>::infinity());
    row("'text'", "text");
    row("''", "");
    row("null", QVariant::fromValue(nullptr));
    row("undefined", QVariant());
    row("[]", QVariantList());
    row("['a', 1, 0.5 * 4, true, null, undefined]",
        QVariantList({"a", 1, 2, true, QVariant::fromValue(nullptr), QVariant()}));
    row("['a',,'b']", QVariantList({"a", QVariant(), "b"}));
    row("[[], [['x']]]", QVariantList({QVariantList(), QVariantList({QVariantList({"x"})})}));
    row("({})", QVariantMap());
    row("({a: 0.5 * 4, b: [{c: 'd'}]})",
        QVariantMap({{"a", 2}, {"b", QVariantList({QVariantMap({{"c", "d"}})})}}));
    row("['a', function() {}, Symbol('s'), 'b']", QVariantList({"a", QVariant(), QVariant(), "b"}));
    row("({a: Symbol('s'), b: function() {}, c: Date, d: 1})",
        QVariantMap({{"a", QVariant()}, {"b", QVariant()}, {"c", QVariant()}, {"d", 1}}));
    row("({[Symbol('s')]: 1, b: 2})", QVariantMap({{"b", 2}}));
    row("new Date(2026, 0, 31, 14, 5, 9, 120)", QDateTime(QDate(2026, 1, 31), QTime(14, 5, 9, 120)));
    row("[new Date(2026, 0, 31)]", QVariantList({QDateTime(QDate(2026, 1, 31), QTime(0, 0))}));
    row("/a.b/i", QRegularExpression("a.b", QRegularExpression::CaseInsensitiveOption));
    row("new Uint8Array([1, 0, 255]).buffer", QByteArray("\x01\x00\xff", 3));
    row("[new ArrayBuffer(1)]", QVariantList({QByteArray("\0", 1)}));
    row("new Uint8Array([7, 8])", QVariantMap({{"0", 7}, {"1", 8}}));
    row("'abc'.split('')", QVariantList({"a", "b", "c"}));
}

void tst_KyScriptVariant::valuesHaveTheirForm()
{
    QFETCH(QString, source);
    QFETCH(QVariant, value);
    const QVariant found = taken(source);
    QCOMPARE(found.metaType(), value.metaType());
    QCOMPARE(found, value);
    QVERIFY(!mEngine->hasError());
}

/// Why this class is there.
void tst_KyScriptVariant::arraysAndObjectsArriveAsValuesOfTheScript()
{
    taken("['a']");
    QCOMPARE(mHost->raw.metaType(), QMetaType::fromType<QJSValue>());
    taken("0.5 * 4");
    QCOMPARE(mHost->raw.typeId(), int(QMetaType::Double));
}

void tst_KyScriptVariant::hostObjectsStay()
{
    QCOMPARE(taken("host").value<QObject*>(), mHost.get());
    QCOMPARE(taken("[host]").toList().value(0).value<QObject*>(), mHost.get());
}

void tst_KyScriptVariant::whatHasNoFormStays_data()
{
    QTest::addColumn<QString>("source");
    for (const char* source : {"function() {}", "Date", "Symbol('s')", "host.take", "class {}"})
        QTest::newRow(source) << source;
}

void tst_KyScriptVariant::whatHasNoFormStays()
{
    QFETCH(QString, source);
    QCOMPARE(taken(source).metaType(), QMetaType::fromType<QJSValue>());
}

void tst_KyScriptVariant::listsAndMapsMayBeUpToTheLimits()
{
    const QString nested =
        "(function() { var a = 'x'; for (var i = 0; i < %1; ++i) a = i % 2 ? [a] : {a: a}; return a; })()";
    QVERIFY(taken(nested.arg(KyScriptVariant::MaxDepth)).metaType() != QMetaType::fromType<QJSValue>());
    QCOMPARE(taken(nested.arg(KyScriptVariant::MaxDepth + 1)).metaType(), QMetaType::fromType<QJSValue>());
    // The list itself, its length, and its elements.
    QCOMPARE(taken("new Array(49999).fill('x')").toList().size(), 49999);
    QCOMPARE(taken("new Array(50000).fill('x')").metaType(), QMetaType::fromType<QJSValue>());
}

void tst_KyScriptVariant::whatIsBeyondTheLimitsStays_data()
{
    QTest::addColumn<QString>("source");
    QTest::newRow("30000 levels")
        << "(function() { var a = []; for (var i = 0; i < 30000; ++i) a = [a]; return a; })()";
    QTest::newRow("cycle of arrays") << "(function() { var a = []; a.push(a); return a; })()";
    QTest::newRow("cycle of objects") << "(function() { var a = {}; a.a = a; return a; })()";
    QTest::newRow("many ways round") << "(function() { var a = []; a.push(a, a, a); return a; })()";
    QTest::newRow("many holes") << "new Array(4294967295)";
    QTest::newRow("many holes inside") << "[1, new Array(4294967295)]";
    QTest::newRow("many names")
        << "(function() { var a = {}; for (var i = 0; i < 100001; ++i) a['n' + i] = i; return a; })()";
}

void tst_KyScriptVariant::whatIsBeyondTheLimitsStays()
{
    QFETCH(QString, source);
    QCOMPARE(taken(source).metaType(), QMetaType::fromType<QJSValue>());
    QCOMPARE(mEngine->evaluate("1 + 1").toInt(), 2);
}

void tst_KyScriptVariant::errorsOfGettersEndHere_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("object") << "({get a() { throw new Error('x'); }, b: 1})"
                            << QVariant(QVariantMap({{"a", QVariant()}, {"b", 1}}));
    QTest::newRow("last of an object") << "({a: 1, get b() { throw new Error('x'); }})"
                                       << QVariant(QVariantMap({{"a", 1}, {"b", QVariant()}}));
    QTest::newRow("array") << "Object.defineProperty(['a', 'b', 'c'], 1, {get() { throw new Error('x'); }})"
                           << QVariant(QVariantList({"a", QVariant(), "c"}));
    QTest::newRow("inside") << "[{get a() { throw new Error('x'); }}, 'b']"
                            << QVariant(QVariantList({QVariantMap({{"a", QVariant()}}), "b"}));
}

void tst_KyScriptVariant::errorsOfGettersEndHere()
{
    QFETCH(QString, source);
    QFETCH(QVariant, value);
    QCOMPARE(taken(source), value);
    QVERIFY(!mEngine->hasError());
    QCOMPARE(mEngine->evaluate("1 + 1").toInt(), 2);
}

void tst_KyScriptVariant::valuesOfTheHostStay_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("string list") << QVariant(QStringList({"a", "b"}));
    QTest::newRow("list") << QVariant(QVariantList({2.0}));
    QTest::newRow("long") << QVariant(7LL);
    QTest::newRow("float") << QVariant(7.0F);
    QTest::newRow("invalid") << QVariant();
}

void tst_KyScriptVariant::valuesOfTheHostStay()
{
    QFETCH(QVariant, value);
    const QVariant found = KyScriptVariant::normalised(value, *mHost);
    QCOMPARE(found.metaType(), value.metaType());
    QCOMPARE(found, value);
}

void tst_KyScriptVariant::valuesOfAnotherEngineDoNoHarm()
{
    QJSEngine other;
    other.globalObject().setProperty("host", other.newQObject(mHost.get()));
    QCOMPARE(other.evaluate("host.take(['a', {b: 0.5 * 4}]); 1").toInt(), 1);
    QCOMPARE(mHost->taken, QVariant(QVariantList({"a", QVariantMap({{"b", 2}})})));
    other.evaluate("host.take([{get a() { throw new Error('x'); }}])");
    QVERIFY(!mEngine->hasError());
    mHost->taken = mHost->raw = mHost->cut = QVariant();
}

void tst_KyScriptVariant::hostThatNoEngineKnowsIsHarmless()
{
    const Host unknown;
    QCOMPARE(KyScriptVariant::normalised(QVariant::fromValue(mEngine->evaluate("['a']")), unknown),
             QVariant(QVariantList({"a"})));
    QCOMPARE(KyScriptVariant::normalised(2.0, unknown), QVariant(2));
}

void tst_KyScriptVariant::textIsNoList()
{
    QVERIFY(KyScriptVariant::isList(QVariantList()));
    QVERIFY(KyScriptVariant::isList(QStringList()));
    QVERIFY(!KyScriptVariant::isList("abc"));
    QVERIFY(!KyScriptVariant::isList(QVariantMap()));
    QVERIFY(!KyScriptVariant::isList(QVariant()));
}

void tst_KyScriptVariant::listsAreReadOnlyOfLists()
{
    QCOMPARE(KyScriptVariant::listOf(QVariantList{1, 2}), QVariantList({1, 2}));
    QCOMPARE(KyScriptVariant::listOf(QStringList{"a"}), QVariantList({"a"}));
    QCOMPARE(KyScriptVariant::listOf("abc"), QVariantList());
    QCOMPARE(KyScriptVariant::listOf(QVariantMap({{"length", 2}})), QVariantList());
    QCOMPARE(KyScriptVariant::listOf(QVariant()), QVariantList());
}

void tst_KyScriptVariant::descriptionsHaveTheSameForm_data()
{
    valuesHaveTheirForm_data();
}

void tst_KyScriptVariant::descriptionsHaveTheSameForm()
{
    QFETCH(QString, source);
    QFETCH(QVariant, value);
    const QVariant found = cut(source);
    QCOMPARE(found.metaType(), value.metaType());
    QCOMPARE(found, value);
    QVERIFY(!mEngine->hasError());
}

void tst_KyScriptVariant::whatHasNoFormIsInvalidInDescriptions_data()
{
    whatHasNoFormStays_data();
}

void tst_KyScriptVariant::whatHasNoFormIsInvalidInDescriptions()
{
    QFETCH(QString, source);
    QVERIFY(!cut(source).isValid());
    QCOMPARE(cut("[" + source + ", 1]"), QVariant(QVariantList({QVariant(), 1})));
}

void tst_KyScriptVariant::keysWithoutAValueStay()
{
    QCOMPARE(cut("({ a: undefined, b: Symbol('x') })").toMap().keys(), QStringList({"a", "b"}));
}

void tst_KyScriptVariant::inheritedPropertiesAreLeftOut()
{
    QCOMPARE(cut("Object.create({ a: 1 })"), QVariant(QVariantMap()));
    QCOMPARE(taken("Object.create({ a: 1 })"), QVariant(QVariantMap()));
}

void tst_KyScriptVariant::circlesAreCut()
{
    const QVariantMap data = cut("(function() { var o = { x: 1 }; o.o = o; return o; })()").toMap();
    QCOMPARE(data.value("x"), QVariant(1));
    QCOMPARE(data.value("o").toMap().value("x"), QVariant(1));
}

void tst_KyScriptVariant::deepDescriptionsAreCut()
{
    QVariant data =
        cut("(function() { var a = 'x'; for (var i = 0; i < 30000; ++i) a = [a, i]; return a; })()");
    int depth = 0;
    for (; data.typeId() == QMetaType::QVariantList; ++depth) {
        QCOMPARE(data.toList().value(1), QVariant(29999 - depth));
        data = data.toList().value(0);
    }
    QCOMPARE(depth, KyScriptVariant::CutDepth);
    QVERIFY(!data.isValid());
}

void tst_KyScriptVariant::longArraysAreCut()
{
    QCOMPARE(cut("new Array(4294967295)").toList().size(), KyScriptVariant::CutValues - 1);
}

void tst_KyScriptVariant::manyValuesAreCut()
{
    const QVariantList data = cut("(function() { var a = [1, 2, 3]; for (var i = 0; i < 6; ++i) {"
                                  "  var b = []; for (var k = 0; k < 100; ++k) b.push(a); a = b; }"
                                  "  return a; })()")
                                  .toList();
    QVERIFY(!data.isEmpty() && data.size() < 100);
    QCOMPARE(cut("(function() { var o = {}; for (var i = 0; i < 100000; ++i) o['k' + i] = i; return o; })()")
                 .toMap()
                 .size(),
             KyScriptVariant::CutValues - 1);
}

/// As in constructors, where no engine is known yet.
void tst_KyScriptVariant::descriptionsOfNoHostAreRead()
{
    const QJSValue value = mEngine->evaluate("({ a: [0.5 * 4], b: Symbol('x') })");
    QCOMPARE(KyScriptVariant::cut(value), QVariant(QVariantMap({{"a", QVariantList({2})}, {"b", {}}})));
}

void tst_KyScriptVariant::errorsInDescriptionsEndHere()
{
    QCOMPARE(cut("({ get a() { throw new Error('x'); }, b: 1 })"),
             QVariant(QVariantMap({{"a", QVariant()}, {"b", 1}})));
    taken("new Proxy({ a: 1 }, { get: function() { throw new Error('x'); } })");
    QVERIFY(!mEngine->hasError());
    taken("new Proxy({}, { ownKeys: function() { throw new Error('x'); } })");
    QVERIFY(!mEngine->hasError());
    QCOMPARE(mEngine->evaluate("1 + 1").toInt(), 2);
}

KY_TEST_MAIN(tst_KyScriptVariant)
#include "tst_KyScriptVariant.moc"
