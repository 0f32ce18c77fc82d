#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>

#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptOrvane.h>
#include <kyscript/KyScriptProgram.h>

#include <QSignalSpy>

class tst_KyScriptOrvane : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // the global
    void globalComesWithItsOption();
    void globalCannotBeDestroyed();
    void classIsNotConstructible();

    // extAcc
    void extAccIsEmptyAtFirst();
    void extAccIsReadAndWritten_data();
    void extAccIsReadAndWritten();
    void extAccIsACopy();
    void extAccIsRefusedWhenItIsNoList_data();
    void extAccIsRefusedWhenItIsNoList();
    void equalExtAccSignalsNothing();
    void differentExtAccSignals_data();
    void differentExtAccSignals();
    void extAccIsSharedAndOnlyTheWriterSignals();
    void extAccOutlivesItsObjects();
    void engineOffersExtAcc();
    void enginesReportToThemselvesWithoutNamedOnes();
    void enginesReportToTheDefaultOne();
    void firstNamedEngineReportsToItself();
    void facadeTellsOfExtAcc();
    void handlerMayEndTheEngineThatOwnsTheList();

private:
    QString text(const QString& inCode, KyScriptEngine* inEngine = nullptr);

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<LogCapture> mLog;
    std::unique_ptr<KyScriptEngine> mEngine;
};

void tst_KyScriptOrvane::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mLog = std::make_unique<LogCapture>(2);
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptOrvane);
    mEngine->setExtAcc({});
}

/// No operation reports anything, whatever is missing.
void tst_KyScriptOrvane::cleanup()
{
    const QStringList lines = mLog->take();
    const QString broken = mContracts->verify();
    mEngine.reset();
    mLog.reset();
    mContracts.reset();
    mPlatform.reset();
    QCOMPARE(lines, QStringList());
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

QString tst_KyScriptOrvane::text(const QString& inCode, KyScriptEngine* inEngine)
{
    KyScriptEngine& engine = inEngine ? *inEngine : *mEngine;
    return engine.runScript(KyScriptProgram(inCode, ""), false).toString();
}

void tst_KyScriptOrvane::globalComesWithItsOption()
{
    KyScriptEngine without(nullptr, ScriptAllOptions & ~ScriptOrvane);
    QCOMPARE(text("typeof Orvane", &without), QStringLiteral("undefined"));
    QCOMPARE(text("typeof Orvane"), QStringLiteral("object"));
    auto* orvane = qobject_cast<KyScriptOrvane*>(mEngine->globalObject().property("Orvane").toQObject());
    QVERIFY(orvane);
    QCOMPARE(orvane->parent(), mEngine.get());
}

void tst_KyScriptOrvane::globalCannotBeDestroyed()
{
    QCOMPARE(text("try { Orvane.destroy(); 'gone' } catch (e) { 'refused' }"), QStringLiteral("refused"));
    QCOMPARE(text("collectGarbage(); typeof Orvane.extAcc.length"), QStringLiteral("number"));
}

void tst_KyScriptOrvane::classIsNotConstructible()
{
    QCOMPARE(KyScriptOrvane::staticMetaObject.constructorCount(), 0);
    QCOMPARE(text("typeof KyScriptOrvane"), QStringLiteral("undefined"));
}

void tst_KyScriptOrvane::extAccIsEmptyAtFirst()
{
    QCOMPARE(text("Array.isArray(Orvane.extAcc) + ':' + Orvane.extAcc.length"), QStringLiteral("true:0"));
}

void tst_KyScriptOrvane::extAccIsReadAndWritten_data()
{
    QTest::addColumn<QString>("written");
    QTest::addColumn<QStringList>("list");
    QTest::newRow("two") << "['A1', 'A2']" << QStringList({"A1", "A2"});
    QTest::newRow("none") << "[]" << QStringList();
    QTest::newRow("duplicates stay") << "['a', 'a']" << QStringList({"a", "a"});
    QTest::newRow("empty text") << "['']" << QStringList("");
    QTest::newRow("beyond Latin-1") << QString::fromUtf8("['ü€']") << QStringList(QString::fromUtf8("ü€"));
    QTest::newRow("number") << "[5]" << QStringList("5");
    QTest::newRow("text") << "'abc'" << QStringList("abc");
}

void tst_KyScriptOrvane::extAccIsReadAndWritten()
{
    QFETCH(QString, written);
    QFETCH(QStringList, list);
    text("Orvane.extAcc = ['before']; Orvane.extAcc = " + written);
    QCOMPARE(mEngine->extAcc(), list);
    QCOMPARE(text("JSON.stringify(Orvane.extAcc.slice())"),
             text(QStringLiteral("JSON.stringify([%1])")
                      .arg(list.isEmpty() ? QString() : "'" + list.join("', '") + "'")));
}

void tst_KyScriptOrvane::extAccIsACopy()
{
    QCOMPARE(text("Orvane.extAcc = ['a']; var list = Orvane.extAcc; list.push('b'); list[0] = 'c';"
                  "Orvane.extAcc.push('d'); String(Orvane.extAcc)"),
             QStringLiteral("a"));
}

void tst_KyScriptOrvane::extAccIsRefusedWhenItIsNoList_data()
{
    QTest::addColumn<QString>("value");
    for (const char* value : {"5", "null", "undefined", "true"})
        QTest::newRow(value) << value;
}

void tst_KyScriptOrvane::extAccIsRefusedWhenItIsNoList()
{
    QFETCH(QString, value);
    QCOMPARE(text("Orvane.extAcc = ['a']; try { Orvane.extAcc = " + value +
                  "; 'taken' } catch (e) { 'refused ' + Orvane.extAcc }"),
             QStringLiteral("refused a"));
}

void tst_KyScriptOrvane::equalExtAccSignalsNothing()
{
    text("Orvane.extAcc = ['a', 'b']");
    QSignalSpy changed(mEngine.get(), &KyScriptEngine::extAccChanged);
    text("Orvane.extAcc = ['a', 'b']");
    mEngine->setExtAcc({"a", "b"});
    QCOMPARE(changed.size(), 0);
}

void tst_KyScriptOrvane::differentExtAccSignals_data()
{
    QTest::addColumn<QString>("written");
    QTest::newRow("longer") << "['a', 'b', 'c']";
    QTest::newRow("shorter") << "['a']";
    QTest::newRow("order") << "['b', 'a']";
    QTest::newRow("case") << "['a', 'B']";
    QTest::newRow("empty") << "[]";
}

void tst_KyScriptOrvane::differentExtAccSignals()
{
    QFETCH(QString, written);
    text("Orvane.extAcc = ['a', 'b']; var heard = 0; Orvane.extAccChanged.connect(function() { heard++; })");
    QSignalSpy changed(mEngine.get(), &KyScriptEngine::extAccChanged);
    QCOMPARE(text("Orvane.extAcc = " + written + "; heard"), QStringLiteral("1"));
    QCOMPARE(changed.size(), 1);
}

void tst_KyScriptOrvane::extAccIsSharedAndOnlyTheWriterSignals()
{
    KyScriptOrvane writer(nullptr), reader(nullptr);
    QSignalSpy ofWriter(&writer, &KyScriptOrvane::extAccChanged);
    QSignalSpy ofReader(&reader, &KyScriptOrvane::extAccChanged);
    writer.setExtAcc({"a"});
    QCOMPARE(reader.extAcc(), QStringList("a"));
    QCOMPARE(text("String(Orvane.extAcc)"), QStringLiteral("a"));
    QCOMPARE(ofWriter.size(), 1);
    QCOMPARE(ofReader.size(), 0);
}

void tst_KyScriptOrvane::extAccOutlivesItsObjects()
{
    std::make_unique<KyScriptOrvane>(nullptr)->setExtAcc({"kept"});
    QCOMPARE(KyScriptOrvane(nullptr).extAcc(), QStringList("kept"));
}

void tst_KyScriptOrvane::engineOffersExtAcc()
{
    QSignalSpy changed(mEngine.get(), &KyScriptEngine::extAccChanged);
    mEngine->setExtAcc({"a", "b"});
    QCOMPARE(mEngine->extAcc(), QStringList({"a", "b"}));
    QCOMPARE(text("String(Orvane.extAcc)"), QStringLiteral("a,b"));
    QCOMPARE(changed.size(), 1);
}

/// In a process of its own, as those below: named engines stay.
void tst_KyScriptOrvane::enginesReportToThemselvesWithoutNamedOnes()
{
    KyScriptEngine other(nullptr, ScriptOrvane);
    QSignalSpy ofEngine(mEngine.get(), &KyScriptEngine::extAccChanged);
    QSignalSpy ofOther(&other, &KyScriptEngine::extAccChanged);
    other.setExtAcc({"a"});
    QCOMPARE(ofOther.size(), 1);
    QCOMPARE(ofEngine.size(), 0);
    QVERIFY(!KyScriptInterface::hasInstances());
}

void tst_KyScriptOrvane::enginesReportToTheDefaultOne()
{
    KyScriptInterface& named = KyScriptInterface::getInstance("b");
    KyScriptEngine later(nullptr, ScriptOrvane);
    KyScriptInterface& standard = KyScriptInterface::getInstance("");
    QSignalSpy ofStandard(&standard, &KyScriptEngine::extAccChanged);
    QSignalSpy ofNamed(&named, &KyScriptEngine::extAccChanged);
    QSignalSpy ofLater(&later, &KyScriptEngine::extAccChanged);
    later.setExtAcc({"a"});
    QCOMPARE(ofStandard.size(), 1);
    standard.setExtAcc({"b"});
    QCOMPARE(ofStandard.size(), 2);
    KyScriptInterface::getInstance("c").setExtAcc({"c"});
    QCOMPARE(ofStandard.size(), 3);
    QCOMPARE(ofNamed.size(), 0);
    QCOMPARE(ofLater.size(), 0);
}

void tst_KyScriptOrvane::firstNamedEngineReportsToItself()
{
    KyScriptInterface& named = KyScriptInterface::getInstance("first");
    QSignalSpy ofNamed(&named, &KyScriptEngine::extAccChanged);
    KyScriptInterface& standard = KyScriptInterface::getInstance("");
    QSignalSpy ofStandard(&standard, &KyScriptEngine::extAccChanged);
    named.setExtAcc({"a"});
    QCOMPARE(ofNamed.size(), 1);
    QCOMPARE(ofStandard.size(), 0);
}

void tst_KyScriptOrvane::facadeTellsOfExtAcc()
{
    KyScriptAbstractEngine& facade = KyScriptAbstractInterface::getInstance("");
    QSignalSpy changed(&facade, &KyScriptAbstractEngine::extAccChanged);
    KyScriptEngine later(nullptr, ScriptOrvane);
    later.setExtAcc({"a"});
    QCOMPARE(changed.size(), 1);
    QCOMPARE(facade.extAcc(), QStringList("a"));
    facade.setExtAcc({"b"});
    QCOMPARE(changed.size(), 2);
}

void tst_KyScriptOrvane::handlerMayEndTheEngineThatOwnsTheList()
{
    auto other = std::make_unique<KyScriptEngine>(nullptr, ScriptOrvane);
    connect(other.get(), &KyScriptEngine::extAccChanged, this, [&] { other.reset(); });
    other->setExtAcc({"a"});
    QVERIFY(!other);
    QCOMPARE(mEngine->extAcc(), QStringList("a"));
}

KY_TEST_MAIN(tst_KyScriptOrvane)
#include "tst_KyScriptOrvane.moc"
