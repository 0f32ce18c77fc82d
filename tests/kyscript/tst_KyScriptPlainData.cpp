#include <support/KyTest.h>

#include <kyscript/KyScriptPlainData.h>

#include <QDateTime>
#include <QJSEngine>
#include <QJsonDocument>

class tst_KyScriptPlainData : public QObject
{
    Q_OBJECT

private slots:
    void valuesBecomePlainData_data();
    void valuesBecomePlainData();
    void datesStay();
    void anythingElseIsInvalid_data();
    void anythingElseIsInvalid();
    void keysWithoutAValueStay();
    void inheritedPropertiesAreLeftOut();
    void circlesEnd();
    void deepValuesAreCut();
    void longArraysAreCut();
    void manyValuesAreCut();
    void argumentsAreRead();
    void mapsAreObjectsOnly_data();
    void mapsAreObjectsOnly();
    void listsAreArraysOnly_data();
    void listsAreArraysOnly();
    void listsOfPlainData();
    void throwingGettersAreHarmless();

private:
    QJSValue value(const QString& inSource)
    {
        return mEngine.evaluate(QStringLiteral("(function() { return %1; })()").arg(inSource));
    }

    QJSEngine mEngine;
};

void tst_KyScriptPlainData::valuesBecomePlainData_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QVariant>("data");
    QTest::newRow("text") << "'ä€'" << QVariant(QString::fromUtf8("ä€"));
    QTest::newRow("number") << "5" << QVariant(5);
    QTest::newRow("fraction") << "1.5" << QVariant(1.5);
    QTest::newRow("truth") << "true" << QVariant(true);
    QTest::newRow("null") << "null" << QVariant::fromValue(nullptr);
    QTest::newRow("array") << "[1, 'a', [2]]" << QVariant(QVariantList{1, "a", QVariantList{2}});
    QTest::newRow("empty array") << "[]" << QVariant(QVariantList());
    QTest::newRow("object") << "{ a: 1, b: { c: 'x' } }"
                            << QVariant(QVariantMap{{"a", 1}, {"b", QVariantMap{{"c", "x"}}}});
    QTest::newRow("array with a hole") << "[1, , 2]" << QVariant(QVariantList{1, QVariant(), 2});
    QTest::newRow("symbol in an array") << "[Symbol('x'), 1]" << QVariant(QVariantList{QVariant(), 1});
    QTest::newRow("symbol in an object") << "{ a: Symbol('x') }" << QVariant(QVariantMap{{"a", QVariant()}});
}

void tst_KyScriptPlainData::valuesBecomePlainData()
{
    QFETCH(QString, source);
    QFETCH(QVariant, data);
    QCOMPARE(KyScriptPlainData::of(value(source)), data);
}

void tst_KyScriptPlainData::datesStay()
{
    const QDateTime date(QDate(2024, 3, 11), QTime(14, 5), Qt::UTC);
    QCOMPARE(KyScriptPlainData::of(value("new Date(Date.UTC(2024, 2, 11, 14, 5))")).toDateTime(), date);
}

void tst_KyScriptPlainData::anythingElseIsInvalid_data()
{
    QTest::addColumn<QString>("source");
    for (const char* source : {"undefined", "Symbol('x')", "function() {}", "Math.max"})
        QTest::newRow(source) << source;
}

void tst_KyScriptPlainData::anythingElseIsInvalid()
{
    QFETCH(QString, source);
    QVERIFY(!KyScriptPlainData::of(value(source)).isValid());
    QObject object;
    QJSEngine::setObjectOwnership(&object, QJSEngine::CppOwnership);
    QVERIFY(!KyScriptPlainData::of(mEngine.newQObject(&object)).isValid());
}

void tst_KyScriptPlainData::keysWithoutAValueStay()
{
    const QVariantMap map = KyScriptPlainData::mapOf(value("{ a: undefined, b: Symbol('x') }"));
    QCOMPARE(map.keys(), QStringList({"a", "b"}));
}

void tst_KyScriptPlainData::inheritedPropertiesAreLeftOut()
{
    QCOMPARE(KyScriptPlainData::mapOf(value("Object.create({ a: 1 })")), QVariantMap());
}

void tst_KyScriptPlainData::circlesEnd()
{
    const QVariant data =
        KyScriptPlainData::of(value("(function() { var o = { x: 1 }; o.o = o; return o; })()"));
    QCOMPARE(data.toMap().value("o").toMap().value("x"), QVariant(1));
}

void tst_KyScriptPlainData::deepValuesAreCut()
{
    QVariant data = KyScriptPlainData::of(
        value("(function() { var a = 'x'; for (var i = 0; i < 200000; ++i) a = [a]; return a; })()"));
    int depth = 0;
    for (; data.typeId() == QMetaType::QVariantList; ++depth)
        data = data.toList().value(0);
    QCOMPARE(depth, 8);
    QVERIFY(!data.isValid());
}

void tst_KyScriptPlainData::longArraysAreCut()
{
    QCOMPARE(KyScriptPlainData::of(value("new Array(4294967295)")).toList().size(), 65535);
}

void tst_KyScriptPlainData::manyValuesAreCut()
{
    const QVariant data = KyScriptPlainData::of(value("(function() { var a = [1, 2, 3]; for (var i = 0; i < "
                                                      "6; ++i) { var b = []; for (var k = 0; k < 100; ++k)"
                                                      " b.push(a); a = b; } return a; })()"));
    QVERIFY(data.toList().size() < 100);
    QCOMPARE(KyScriptPlainData::mapOf(value("(function() { var o = {}; for (var i = 0; i < 100000; ++i)"
                                            " o['k' + i] = i; return o; })()"))
                 .size(),
             65535);
}

void tst_KyScriptPlainData::argumentsAreRead()
{
    QCOMPARE(KyScriptPlainData::of(QVariant(5)), QVariant(5));
    QCOMPARE(KyScriptPlainData::of(QVariant("x")), QVariant("x"));
    QCOMPARE(KyScriptPlainData::of(QVariant::fromValue(value("[1]"))), QVariant(QVariantList{1}));
    QVERIFY(!KyScriptPlainData::of(QVariant::fromValue(value("Symbol('x')"))).isValid());
}

void tst_KyScriptPlainData::mapsAreObjectsOnly_data()
{
    QTest::addColumn<QString>("source");
    for (const char* source :
         {"undefined", "null", "5", "'x'", "[1]", "function() {}", "Symbol('x')", "new Date()"})
        QTest::newRow(source) << source;
}

void tst_KyScriptPlainData::mapsAreObjectsOnly()
{
    QFETCH(QString, source);
    QCOMPARE(KyScriptPlainData::mapOf(value(source)), QVariantMap());
}

void tst_KyScriptPlainData::listsAreArraysOnly_data()
{
    QTest::addColumn<QString>("source");
    for (const char* source :
         {"undefined", "null", "5", "'abc'", "{ length: 2 }", "function(a) {}", "Symbol('x')"})
        QTest::newRow(source) << source;
}

void tst_KyScriptPlainData::listsAreArraysOnly()
{
    QFETCH(QString, source);
    QCOMPARE(KyScriptPlainData::listOf(value(source)), QVariantList());
}

void tst_KyScriptPlainData::listsOfPlainData()
{
    QCOMPARE(KyScriptPlainData::listOf(QVariant(QVariantList{1, 2})), QVariantList({1, 2}));
    QCOMPARE(KyScriptPlainData::listOf(QVariant(QStringList{"a"})), QVariantList({"a"}));
    QCOMPARE(KyScriptPlainData::listOf(QVariant("abc")), QVariantList());
    QCOMPARE(KyScriptPlainData::listOf(QVariant()), QVariantList());
}

void tst_KyScriptPlainData::throwingGettersAreHarmless()
{
    const QVariantMap map = KyScriptPlainData::mapOf(value("{ get a() { throw new Error('no'); }, b: 2 }"));
    QCOMPARE(map.value("b"), QVariant(2));
    QVERIFY(!mEngine.hasError());
    KyScriptPlainData::of(value("new Proxy({ a: 1 }, { get: function() { throw new Error('no'); } })"));
    QVERIFY(!mEngine.hasError());
    QCOMPARE(mEngine.evaluate("1 + 1").toInt(), 2);
}

KY_TEST_MAIN(tst_KyScriptPlainData)
#include "tst_KyScriptPlainData.moc"
