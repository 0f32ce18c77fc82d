#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptIdGenerator.h>
#include <kyscript/KyScriptProgram.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>

#include <bit>
#include <limits>

class tst_KyScriptIdGenerator : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void scriptsMakeThem();
    void constructionTakesAParent();
    void idsAreUnique();
    void uuidHasItsForm_data();
    void uuidHasItsForm();
    void uuidsAreUnique();
    void asciiHashOfKnownTexts_data();
    void asciiHashOfKnownTexts();
    void asciiHashHasTwelveDigits();
    void numbersOfDigitsOutsideCountAsTwenty_data();
    void numbersOfDigitsOutsideCountAsTwenty();
    void sigmoidHashOfKnownTexts();
    void startsOutsideCountAsNought_data();
    void startsOutsideCountAsNought();
    void startSixteenReadsTheLastBytes();
    void hashesAgreeWithOthers_data();
    void hashesAgreeWithOthers();
    void hashCanBeExactlyOne();
    void loneSurrogatesAreHashed();
    void argumentsAreConvertedAsEver_data();
    void argumentsAreConvertedAsEver();

private:
    QJSValue run(const QString& inSource)
    {
        return mEngine->runScript(KyScriptProgram(inSource, ""), false, false, false);
    }

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<KyScriptEngine> mEngine;
    const KyScriptIdGenerator mGenerator;
};

void tst_KyScriptIdGenerator::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptIdGenerator);
}

void tst_KyScriptIdGenerator::cleanup()
{
    const QString broken = mContracts->verify();
    mEngine.reset();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

void tst_KyScriptIdGenerator::scriptsMakeThem()
{
    QCOMPARE(run("typeof IdGenerator").toString(), QStringLiteral("function"));
    QCOMPARE(run("typeof new IdGenerator()").toString(), QStringLiteral("object"));
    QVERIFY(
        run("var g = new IdGenerator(); g.asciiHash('abc') === new IdGenerator().asciiHash('abc')").toBool());
    QVERIFY(qobject_cast<KyScriptIdGenerator*>(run("g").toQObject()));
    QCOMPARE(run("g").toQObject()->parent(), nullptr);
}

void tst_KyScriptIdGenerator::constructionTakesAParent()
{
    QObject parent;
    const auto* child = new KyScriptIdGenerator(&parent);
    QCOMPARE(child->parent(), &parent);
    QCOMPARE(mGenerator.parent(), nullptr);
}

void tst_KyScriptIdGenerator::idsAreUnique()
{
    const QRegularExpression form(QStringLiteral("^[\\x21-\\x7e]{32}$"));
    QSet<QString> ids;
    for (int i = 0; i < 10000; ++i)
        ids.insert(mGenerator.generateId());
    QCOMPARE(ids.size(), 10000);
    for (const QString& id : std::as_const(ids))
        QVERIFY2(form.match(id).hasMatch(), qPrintable(id));
    QVERIFY(run("var g = new IdGenerator(); g.generateId() !== g.generateId()").toBool());
    QCOMPARE(run("typeof g.generateId()").toString(), QStringLiteral("string"));
}

void tst_KyScriptIdGenerator::uuidHasItsForm_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("form");
    const QString plain =
        QStringLiteral("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}");
    QTest::newRow("no argument") << "generateUuid()" << plain;
    QTest::newRow("true") << "generateUuid(true)" << plain;
    QTest::newRow("false") << "generateUuid(false)"
                           << "\\{" + plain + "\\}";
}

void tst_KyScriptIdGenerator::uuidHasItsForm()
{
    QFETCH(QString, call);
    QFETCH(QString, form);
    const QString uuid = run("new IdGenerator()." + call).toString();
    QVERIFY2(QRegularExpression("^" + form + "$").match(uuid).hasMatch(), qPrintable(uuid));
    QCOMPARE(uuid.size(), call.contains("false") ? 38 : 36);
}

void tst_KyScriptIdGenerator::uuidsAreUnique()
{
    QSet<QString> ids;
    for (int i = 0; i < 10000; ++i)
        ids.insert(mGenerator.generateUuid());
    QCOMPARE(ids.size(), 10000);
}

void tst_KyScriptIdGenerator::asciiHashOfKnownTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("digits");
    QTest::addColumn<QString>("hash");
    QTest::newRow("bytes below 0x80") << "1" << 6 << "R8ZHNT";
    QTest::newRow("two widened bytes") << "abc" << 4 << "ZJ0S";
    // DA and A3 widen, 39 and EE: 0xFFFFFFDA mod 36 = 2, 0x39 mod 36 = 21, 0xFFFFFFA3 mod 36 = 19.
    QTest::newRow("empty text") << "" << 3 << "CVT";
}

void tst_KyScriptIdGenerator::asciiHashOfKnownTexts()
{
    QFETCH(QString, text);
    QFETCH(int, digits);
    QFETCH(QString, hash);
    QCOMPARE(mGenerator.asciiHash(text, digits), hash);
    QCOMPARE(run(QStringLiteral("new IdGenerator().asciiHash('%1', %2)").arg(text).arg(digits)).toString(),
             hash);
}

void tst_KyScriptIdGenerator::asciiHashHasTwelveDigits()
{
    QCOMPARE(mGenerator.asciiHash("abc"), mGenerator.asciiHash("abc", 12));
    QCOMPARE(mGenerator.asciiHash("abc").size(), 12);
    QCOMPARE(run("new IdGenerator().asciiHash('abc')").toString(), mGenerator.asciiHash("abc", 12));
}

void tst_KyScriptIdGenerator::numbersOfDigitsOutsideCountAsTwenty_data()
{
    QTest::addColumn<int>("digits");
    for (const int digits :
         {0, -1, 21, 22, 1000, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        QTest::addRow("%d", digits) << digits;
}

void tst_KyScriptIdGenerator::numbersOfDigitsOutsideCountAsTwenty()
{
    QFETCH(int, digits);
    QCOMPARE(mGenerator.asciiHash("abc", digits), mGenerator.asciiHash("abc", 20));
    QCOMPARE(mGenerator.asciiHash("abc", digits).size(), 20);
}

void tst_KyScriptIdGenerator::sigmoidHashOfKnownTexts()
{
    QCOMPARE(mGenerator.sigmoidHash("abc"), float(0x363E99A9 / 4294967296.0));
    QCOMPARE(QString::number(double(mGenerator.sigmoidHash("abc")), 'f', 5), QStringLiteral("0.21189"));
    QCOMPARE(run("new IdGenerator().sigmoidHash('abc').toFixed(5)").toString(), QStringLiteral("0.21189"));
    QCOMPARE(run("new IdGenerator().sigmoidHash('abc', 0)").toNumber(),
             double(mGenerator.sigmoidHash("abc")));
    QCOMPARE(mGenerator.sigmoidHash(""), float(0xEEA339DA / 4294967296.0));
}

void tst_KyScriptIdGenerator::startsOutsideCountAsNought_data()
{
    QTest::addColumn<int>("start");
    for (const int start :
         {17, 18, 20, 1000, -1, -16, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        QTest::addRow("%d", start) << start;
}

void tst_KyScriptIdGenerator::startsOutsideCountAsNought()
{
    QFETCH(int, start);
    QCOMPARE(mGenerator.sigmoidHash("abc", start), mGenerator.sigmoidHash("abc", 0));
    QVERIFY(mGenerator.sigmoidHash("abc", 1) != mGenerator.sigmoidHash("abc", 0));
}

/// The digest of "abc" ends with 9C D0 D8 9D.
void tst_KyScriptIdGenerator::startSixteenReadsTheLastBytes()
{
    QCOMPARE(mGenerator.sigmoidHash("abc", 16), float(0x9DD8D09C / 4294967296.0));
}

/// The table was computed by data/make_id_hashes.py.
void tst_KyScriptIdGenerator::hashesAgreeWithOthers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QJsonArray>("ascii");
    QTest::addColumn<QJsonArray>("sigmoid");
    QFile table(QStringLiteral(ID_HASHES));
    QVERIFY(table.open(QIODevice::ReadOnly));
    int count = 0;
    while (!table.atEnd()) {
        const QJsonObject row = QJsonDocument::fromJson(table.readLine()).object();
        QTest::addRow("%d", ++count) << row["part"].toString().repeated(row["count"].toInt())
                                     << row["ascii"].toArray() << row["sigmoid"].toArray();
    }
    QVERIFY(count >= 200);
}

void tst_KyScriptIdGenerator::hashesAgreeWithOthers()
{
    QFETCH(QString, text);
    QFETCH(QJsonArray, ascii);
    QFETCH(QJsonArray, sigmoid);
    QCOMPARE(ascii.size(), 20);
    for (int digits = 1; digits <= 20; ++digits)
        QCOMPARE(mGenerator.asciiHash(text, digits), ascii[digits - 1].toString());
    QCOMPARE(sigmoid.size(), 17);
    for (int start = 0; start <= 16; ++start) {
        const float hash = mGenerator.sigmoidHash(text, start);
        QVERIFY(hash >= 0 && hash <= 1);
        QCOMPARE(std::bit_cast<quint32>(hash), sigmoid[start].toString().toUInt(nullptr, 16));
    }
    mEngine->globalObject().setProperty("text", text);
    QCOMPARE(run("new IdGenerator().asciiHash(text, 20)").toString(), ascii[19].toString());
    QCOMPARE(std::bit_cast<quint32>(float(run("new IdGenerator().sigmoidHash(text, 16)").toNumber())),
             sigmoid[16].toString().toUInt(nullptr, 16));
}

/// A text that has four bytes within 128 of 2 to the power 32.
void tst_KyScriptIdGenerator::hashCanBeExactlyOne()
{
    bool isOne = false;
    for (int start = 0; start <= 16; ++start)
        isOne = isOne || mGenerator.sigmoidHash("round 1268310", start) == 1.0F;
    QVERIFY(isOne);
}

void tst_KyScriptIdGenerator::loneSurrogatesAreHashed()
{
    QCOMPARE(run("new IdGenerator().asciiHash('\\ud800').length").toInt(), 12);
    QVERIFY(run("new IdGenerator().sigmoidHash('\\udc00') <= 1").toBool());
}

void tst_KyScriptIdGenerator::argumentsAreConvertedAsEver_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("same");
    QTest::newRow("number as text") << "asciiHash(5)"
                                    << "asciiHash('5')";
    QTest::newRow("object as text") << "asciiHash({})"
                                    << "asciiHash('[object Object]')";
    QTest::newRow("null as text") << "asciiHash(null)"
                                  << "asciiHash('')";
    QTest::newRow("fraction of digits") << "asciiHash('a', 2.9)"
                                        << "asciiHash('a', 2)";
    QTest::newRow("no number of digits") << "asciiHash('a', 'x')"
                                         << "asciiHash('a', 20)";
    QTest::newRow("undefined digits") << "asciiHash('a', undefined)"
                                      << "asciiHash('a', 12)";
    QTest::newRow("no number as start") << "sigmoidHash('a', NaN)"
                                        << "sigmoidHash('a', 0)";
    QTest::newRow("undefined start") << "sigmoidHash('a', undefined)"
                                     << "sigmoidHash('a')";
}

void tst_KyScriptIdGenerator::argumentsAreConvertedAsEver()
{
    QFETCH(QString, call);
    QFETCH(QString, same);
    const QString script = QStringLiteral("var g = new IdGenerator(); g.%1 === g.%2").arg(call, same);
    QVERIFY2(run(script).toBool(), qPrintable(run("g." + call).toString()));
}

KY_TEST_MAIN(tst_KyScriptIdGenerator)
#include "tst_KyScriptIdGenerator.moc"
