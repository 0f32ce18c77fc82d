#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>

#include <kyscript/KyScriptConstructible.h>
#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptProgram.h>

#include <ovbase/OvDateFormatter.h>

#include <QDate>
#include <QSignalSpy>
#include <QTest>
#include <QTextEdit>
#include <QTimeZone>

/// A class whose constructor throws a script error into an engine that it is told of.
class Failing : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE Failing() { sEngine->throwError(QStringLiteral("constructor failed")); }
    static inline QJSEngine* sEngine = nullptr;
};

class Unconstructible : public QObject
{
    Q_OBJECT
public:
    explicit Unconstructible(int) {}
};

class Plain : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE Plain() { ++sAlive; }
    ~Plain() override { --sAlive; }
    static inline int sAlive = 0;
};

/// Tells a script whether it is on the stack of its engine.
class StackWatch : public QObject
{
    Q_OBJECT
public:
    explicit StackWatch(KyScriptEngine& inEngine)
        : mEngine(inEngine)
    {
        QJSEngine::setObjectOwnership(this, QJSEngine::CppOwnership);
        inEngine.globalObject().setProperty(QStringLiteral("watch"), inEngine.newQObject(this));
    }
    Q_INVOKABLE bool isOnStack() { return mEngine.isOnStack(); }

private:
    KyScriptEngine& mEngine;
};

class tst_KyScriptEngine : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void emptyMaskInstallsOnlyTheFourFunctions();
    void fullMaskInstallsEveryName();
    void eachOptionInstallsItsName_data();
    void eachOptionInstallsItsName();
    void engineIsNamedScripting();
    void optionsAreKept();

    void constructorIsPublishedAndChecked();
    void constructorThatThrowsIsAContractReport();
    void classWithoutConstructorIsAContractReport();

    void globalsCannotBeDestroyedByAScript();
    void globalFunctionsSurviveGarbageCollection();
    void collectGarbageDeletesDroppedObjects();
    void collectGarbageElsewhereDoesNothing();
    void btoaEncodesUtf8_data();
    void btoaEncodesUtf8();
    void guiDateFormatsForTheUser();
    void guiTimeFormatsDatesAndTimes_data();
    void guiTimeFormatsDatesAndTimes();
    void guiTimeOfAValueWithoutATextIsAScriptError();
    void guiTimeOutsideAnEngineIsAContractReport();

    void printIsMissingUntilOutputIsRedirected();
    void printJoinsItsArguments_data();
    void printJoinsItsArguments();
    void printEndsAtAnAbsurdLength();
    void printWithoutAWidgetDoesNothing();
    void manyPrintedLinesStandThereAfterwards();
    void redirectingAgainReplacesBothFunctions();
    void engineTellsWhereItPrints();
    void printMethodJoinsUpToThreeValues();

    void convertVariantMakesLocalMidnightOfADate();
    void convertVariantMakesAPrintingObjectOfATime_data();
    void convertVariantMakesAPrintingObjectOfATime();
    void convertedTimePrintsWhereScriptsFreezePrototypes();
    void convertVariantLeavesOtherValues_data();
    void convertVariantLeavesOtherValues();
    void convertedTimeIsUnderstoodByGuiTime();

    void registeredObjectIsDeletedOnceByCleanup();
    void collectedObjectIsSkippedByCleanup();
    void objectDeletedByAnotherOneIsSkippedByCleanup();
    void engineIsUsableAfterCleanup();
    void destructorCleansUp();
    void registeringNothingIsHarmless();

    void extAccWithoutApplicationObjectIsEmpty();
    void engineOfAnObjectIsFound();
    void scriptOnTheStackIsTold_data();
    void scriptOnTheStackIsTold();

private:
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
};

namespace {

/// Opens the protected cleanup to a test.
class Engine : public KyScriptEngine
{
public:
    explicit Engine(int inOptions = 0)
        : KyScriptEngine(nullptr, inOptions)
    {}
    using KyScriptEngine::cleanup;

    QString text(const char* inSource) { return evaluate(QString::fromUtf8(inSource)).toString(); }
};

void flushDeferredDeletes()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QStringList globalNames(QJSEngine& ioEngine)
{
    const auto names =
        ioEngine.evaluate(QStringLiteral("Object.getOwnPropertyNames(this)")).toVariant().toStringList();
    QStringList added;
    QJSEngine bare;
    const auto standard =
        bare.evaluate(QStringLiteral("Object.getOwnPropertyNames(this)")).toVariant().toStringList();
    for (const QString& name : names) {
        if (!standard.contains(name))
            added.append(name);
    }
    added.sort();
    return added;
}

} // namespace

void tst_KyScriptEngine::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
}

void tst_KyScriptEngine::cleanup()
{
    const QString broken = mContracts->verify();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

void tst_KyScriptEngine::emptyMaskInstallsOnlyTheFourFunctions()
{
    Engine engine(0);
    QCOMPARE(globalNames(engine), QStringList({"btoa", "collectGarbage", "guiDate", "guiTime"}));
    QCOMPARE(engine.text("typeof print + typeof Orvane + typeof console + typeof qsTr"),
             QStringLiteral("undefinedundefinedundefinedundefined"));
}

void tst_KyScriptEngine::fullMaskInstallsEveryName()
{
    Engine engine(-1);
    QCOMPARE(globalNames(engine), QStringList({"AuthToken",
                                               "BrowserCtrl",
                                               "Dialog",
                                               "FileDialog",
                                               "FileWriter",
                                               "Global",
                                               "HttpRequest",
                                               "IdGenerator",
                                               "Message",
                                               "Orvane",
                                               "RichEditCtrl",
                                               "Server",
                                               "StudyList",
                                               "System",
                                               "Timer",
                                               "Url",
                                               "WebSocket",
                                               "WebSocketServer",
                                               "WebSocketServerSSL",
                                               "WordCtrl",
                                               "XmlFileWriter",
                                               "btoa",
                                               "collectGarbage",
                                               "guiDate",
                                               "guiTime"}));
}

void tst_KyScriptEngine::eachOptionInstallsItsName_data()
{
    QTest::addColumn<int>("option");
    QTest::addColumn<QString>("name");
    QTest::newRow("Global") << 0x1 << "Global";
    QTest::newRow("Message") << 0x2 << "Message";
    QTest::newRow("Server") << 0x4 << "Server";
    QTest::newRow("Orvane") << 0x8 << "Orvane";
    QTest::newRow("StudyList") << 0x10 << "StudyList";
    QTest::newRow("System") << 0x20 << "System";
    QTest::newRow("Url") << 0x40 << "Url";
    QTest::newRow("XmlFileWriter") << 0x80 << "XmlFileWriter";
    QTest::newRow("HttpRequest") << 0x100 << "HttpRequest";
    QTest::newRow("AuthToken") << 0x200 << "AuthToken";
    QTest::newRow("FileWriter") << 0x400 << "FileWriter";
    QTest::newRow("BrowserCtrl") << 0x800 << "BrowserCtrl";
    QTest::newRow("WebSocket") << 0x1000 << "WebSocket";
    QTest::newRow("WebSocketServer") << 0x2000 << "WebSocketServer";
    QTest::newRow("WebSocketServerSSL") << 0x2000 << "WebSocketServerSSL";
    QTest::newRow("FileDialog") << 0x4000 << "FileDialog";
    QTest::newRow("Timer") << 0x8000 << "Timer";
    QTest::newRow("RichEditCtrl") << 0x20000 << "RichEditCtrl";
    QTest::newRow("WordCtrl") << 0x10000 << "WordCtrl";
    QTest::newRow("IdGenerator") << 0x200000 << "IdGenerator";
    QTest::newRow("Dialog") << 0x400000 << "Dialog";
}

void tst_KyScriptEngine::eachOptionInstallsItsName()
{
    QFETCH(int, option);
    QFETCH(QString, name);
    Engine engine(option);
    QStringList names = globalNames(engine);
    QVERIFY(names.removeOne(name));
    if (option == ScriptWebSocketServer) // the one option with two names
        QVERIFY(names.removeOne(name.endsWith("SSL") ? "WebSocketServer" : "WebSocketServerSSL"));
    QCOMPARE(names, QStringList({"btoa", "collectGarbage", "guiDate", "guiTime"}));
    const QString type = engine.evaluate(QStringLiteral("typeof ") + name).toString();
    if (type == QStringLiteral("function")) // a constructor
        QCOMPARE(engine.evaluate(QStringLiteral("typeof new %1()").arg(name)).toString(),
                 QStringLiteral("object"));
    else
        QCOMPARE(type, QStringLiteral("object"));
}

void tst_KyScriptEngine::engineIsNamedScripting()
{
    QCOMPARE(Engine().objectName(), QStringLiteral("Scripting"));
}

void tst_KyScriptEngine::optionsAreKept()
{
    QCOMPARE(Engine(0x12).options(), 0x12);
    QCOMPARE(Engine(-1).options(), -1);
}

void tst_KyScriptEngine::constructorIsPublishedAndChecked()
{
    {
        Engine engine;
        addGlobalObjectFromMetaObject<Plain>(engine, QStringLiteral("Plain"));
        QCOMPARE(Plain::sAlive, 1);
        QCOMPARE(engine.text("typeof Plain"), QStringLiteral("function"));
        engine.evaluate(QStringLiteral("var p = new Plain()"));
        QCOMPARE(Plain::sAlive, 2);
        engine.collectGarbage();
        flushDeferredDeletes();
        QCOMPARE(Plain::sAlive, 1);
    }
    QCOMPARE(Plain::sAlive, 0);
}

void tst_KyScriptEngine::constructorThatThrowsIsAContractReport()
{
    Engine engine;
    Failing::sEngine = &engine;
    mContracts->expect(QStringLiteral("inEngine.evaluate(QStringLiteral(\"typeof new %1();\").arg(className))"
                                      ".toString() == QStringLiteral(\"object\")"));
    addGlobalObjectFromMetaObject<Failing>(engine, QStringLiteral("Failing"));
    QCOMPARE(engine.text("typeof Failing"), QStringLiteral("function"));
    QCOMPARE(engine.text("1 + 1"), QStringLiteral("2"));
}

void tst_KyScriptEngine::classWithoutConstructorIsAContractReport()
{
    Engine engine;
    mContracts->expect(QStringLiteral("inEngine.evaluate(QStringLiteral(\"typeof new %1();\").arg(className))"
                                      ".toString() == QStringLiteral(\"object\")"));
    addGlobalObjectFromMetaObject<Unconstructible>(engine, QStringLiteral("Unconstructible"));
    QCOMPARE(engine.text("1 + 1"), QStringLiteral("2"));
}

void tst_KyScriptEngine::globalsCannotBeDestroyedByAScript()
{
    Engine engine(-1);
    for (const char* name : {"StudyList", "Message", "Url", "WebSocketServer", "WebSocketServerSSL"}) {
        const QString source = QStringLiteral("%1.destroy()").arg(QLatin1String(name));
        QVERIFY2(engine.evaluate(source).isError(), name);
        QVERIFY(engine.globalObject().property(QLatin1String(name)).toQObject());
    }
    QCOMPARE(engine.text("StudyList.get('PRIMARY_STUDIES').length"), QStringLiteral("0"));
}

void tst_KyScriptEngine::globalFunctionsSurviveGarbageCollection()
{
    Engine engine(-1);
    engine.collectGarbage();
    flushDeferredDeletes();
    QCOMPARE(engine.text("var b = btoa; collectGarbage(); b('a')"), QStringLiteral("YQ=="));
    QCOMPARE(engine.text("typeof StudyList.get('').length"), QStringLiteral("number"));
}

void tst_KyScriptEngine::collectGarbageDeletesDroppedObjects()
{
    Engine engine;
    addGlobalObjectFromMetaObject<Plain>(engine, QStringLiteral("Plain"));
    engine.evaluate(QStringLiteral("for (var i = 0; i < 10; ++i) new Plain(); var kept = new Plain();"));
    engine.evaluate(QStringLiteral("collectGarbage()"));
    flushDeferredDeletes();
    QCOMPARE(Plain::sAlive, 1);
}

void tst_KyScriptEngine::collectGarbageElsewhereDoesNothing()
{
    QJSEngine plain;
    auto* scope = new GlobalScope(&plain);
    scope->collectGarbage();
    QCOMPARE(plain.evaluate(QStringLiteral("collectGarbage(); 1")).toInt(), 1);
}

void tst_KyScriptEngine::btoaEncodesUtf8_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("result");
    QTest::newRow("ä") << "btoa('\\u00e4')"
                       << "w6Q=";
    QTest::newRow("empty") << "btoa('')"
                           << "";
    QTest::newRow("ascii") << "btoa('abc')"
                           << "YWJj";
    QTest::newRow("beyond the first plane") << "btoa('\\ud83d\\ude00')"
                                            << "8J+YgA==";
    QTest::newRow("number") << "btoa(12)"
                            << "MTI=";
}

void tst_KyScriptEngine::btoaEncodesUtf8()
{
    QFETCH(QString, source);
    QFETCH(QString, result);
    Engine engine;
    QCOMPARE(engine.evaluate(source).toString(), result);
}

void tst_KyScriptEngine::guiDateFormatsForTheUser()
{
    Engine engine;
    QCOMPARE(engine.text("guiDate(new Date(2024, 1, 29, 23, 59))"),
             OvDateFormatter::guiDate(QDate(2024, 2, 29)));
    QVERIFY(!OvDateFormatter::guiDate(QDate(2024, 2, 29)).isEmpty());
    QCOMPARE(engine.text("guiDate(new Date(NaN))"), QString());
}

void tst_KyScriptEngine::guiTimeFormatsDatesAndTimes_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QTime>("time");
    QTest::newRow("Date") << "new Date(2024, 1, 29, 14, 5, 9, 120)" << QTime(14, 5, 9, 120);
    QTest::newRow("text") << "'14:05:09.120'" << QTime(14, 5, 9, 120);
    QTest::newRow("short text") << "'14:05'" << QTime(14, 5);
    QTest::newRow("object that prints")
        << "{toString: function() { return '14:05:09.120'; }}" << QTime(14, 5, 9, 120);
    QTest::newRow("empty text") << "''" << QTime();
    QTest::newRow("no time") << "'noon'" << QTime();
    QTest::newRow("undefined") << "undefined" << QTime();
    QTest::newRow("null") << "null" << QTime();
    QTest::newRow("number") << "7" << QTime();
    QTest::newRow("invalid Date") << "new Date(NaN)" << QTime();
}

void tst_KyScriptEngine::guiTimeFormatsDatesAndTimes()
{
    QFETCH(QString, argument);
    QFETCH(QTime, time);
    Engine engine;
    const QJSValue result = engine.evaluate(QStringLiteral("guiTime(%1)").arg(argument));
    QVERIFY(!result.isError());
    QCOMPARE(result.toString(), OvDateFormatter::guiTime(time, false, true));
    QCOMPARE(result.toString().isEmpty(), !time.isValid());
}

void tst_KyScriptEngine::guiTimeOfAValueWithoutATextIsAScriptError()
{
    Engine engine;
    QCOMPARE(engine.text("try { guiTime({toString: function() { throw new Error('no text'); }}); 'passed' }"
                         " catch (e) { e.message }"),
             QStringLiteral("no text"));
    QCOMPARE(engine.text("try { guiTime(Symbol('x')); 'passed' } catch (e) { e.name }"),
             QStringLiteral("TypeError"));
    QCOMPARE(engine.text("1 + 1"), QStringLiteral("2"));
}

void tst_KyScriptEngine::guiTimeOutsideAnEngineIsAContractReport()
{
    QJSEngine plain;
    new GlobalScope(&plain);
    mContracts->expect(QStringLiteral("eng"));
    QCOMPARE(plain.evaluate(QStringLiteral("guiTime('14:05')")).toString(), QString());
}

void tst_KyScriptEngine::printIsMissingUntilOutputIsRedirected()
{
    Engine engine(-1);
    QCOMPARE(engine.text("try { print('x') } catch (e) { e.name }"), QStringLiteral("ReferenceError"));
    QTextEdit output;
    engine.redirectPrintOutput(&output);
    QCOMPARE(engine.text("print('x')"), QStringLiteral("undefined"));
    QCOMPARE(output.toPlainText(), QStringLiteral("x"));
}

void tst_KyScriptEngine::printJoinsItsArguments_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("text");
    QTest::newRow("one") << "print('a')"
                         << "start\na";
    QTest::newRow("many") << "print('a', 1, true, null, undefined, [1,2], {})"
                          << "start\na 1 true null undefined 1,2 [object Object]";
    QTest::newRow("none") << "print()"
                          << "start\n";
    QTest::newRow("number to vprint") << "vprint(42)"
                                      << "start\n";
    QTest::newRow("text to vprint") << "vprint('str')"
                                    << "start\n";
    QTest::newRow("array to vprint") << "vprint(['a', 'b'])"
                                     << "start\na b";
    QTest::newRow("array-like to vprint") << "vprint({length: 2, 0: 'x', 1: 'y'})"
                                          << "start\nx y";
    QTest::newRow("negative length") << "vprint({length: -1})"
                                     << "start\n";
    QTest::newRow("length is a text") << "vprint({length: '2', 0: 'x'})"
                                      << "start\n";
    QTest::newRow("in a strict function") << "(function() { 'use strict'; print('s'); })()"
                                          << "start\ns";
    QTest::newRow("as a callback") << "['a'].forEach(function(x) { print(x); })"
                                   << "start\na";
}

void tst_KyScriptEngine::printJoinsItsArguments()
{
    QFETCH(QString, source);
    QFETCH(QString, text);
    Engine engine;
    QTextEdit output;
    engine.redirectPrintOutput(&output);
    engine.evaluate(QStringLiteral("print('start')"));
    const QJSValue result = engine.evaluate(source);
    QVERIFY2(!result.isError(), qPrintable(result.toString()));
    QCOMPARE(output.toPlainText(), text);
}

void tst_KyScriptEngine::printEndsAtAnAbsurdLength()
{
    Engine engine;
    QTextEdit output;
    engine.redirectPrintOutput(&output);
    engine.text(
        "vprint(new Proxy({}, {get: function(o, name) { return name === 'length' ? 2147483647 : ''; }}))");
    QCOMPARE(output.toPlainText().size(), 65535);
}

void tst_KyScriptEngine::printWithoutAWidgetDoesNothing()
{
    Engine engine;
    auto output = std::make_unique<QTextEdit>();
    engine.redirectPrintOutput(output.get());
    output.reset();
    QCOMPARE(engine.text("print('x'); vprint([1]); 'done'"), QStringLiteral("done"));
}

void tst_KyScriptEngine::manyPrintedLinesStandThereAfterwards()
{
    const QString source = QStringLiteral("for (var i = 0; i < 1234; ++i) print(i)");
    Engine engine;
    QTextEdit bare, run;
    engine.redirectPrintOutput(&bare);
    engine.evaluate(source);
    QCOMPARE(bare.document()->blockCount(), 1234);
    engine.redirectPrintOutput(&run);
    engine.runScript(KyScriptProgram(source, QString(), 1));
    QCOMPARE(run.toPlainText(), bare.toPlainText());
}

void tst_KyScriptEngine::redirectingAgainReplacesBothFunctions()
{
    Engine engine;
    QTextEdit first, second;
    engine.redirectPrintOutput(&first);
    engine.evaluate(QStringLiteral("var old = vprint"));
    engine.redirectPrintOutput(&second);
    engine.evaluate(QStringLiteral("print('a'); vprint(['b']); old(['c'])"));
    QCOMPARE(second.toPlainText(), QStringLiteral("a\nb"));
    QCOMPARE(first.toPlainText(), QStringLiteral("c"));
    QCOMPARE(engine.findChildren<MyPrintHelper*>().size(), 2);
}

void tst_KyScriptEngine::engineTellsWhereItPrints()
{
    Engine engine;
    QCOMPARE(engine.printOutput(), nullptr);
    QTextEdit first;
    engine.redirectPrintOutput(&first);
    QCOMPARE(engine.printOutput(), &first);
    auto second = std::make_unique<QTextEdit>();
    engine.redirectPrintOutput(second.get());
    QCOMPARE(engine.printOutput(), second.get());
    second.reset();
    QCOMPARE(engine.printOutput(), nullptr);
}

void tst_KyScriptEngine::printMethodJoinsUpToThreeValues()
{
    QTextEdit output;
    MyPrintHelper helper(nullptr, &output);
    helper.print(QVariant(1));
    helper.print(QVariant(QStringLiteral("a")), QVariant(2));
    helper.print(QVariant(), QVariant(2), QVariant(true));
    helper.print(QVariant());
    QCOMPARE(output.toPlainText(), QStringLiteral("1\na 2\n 2 true\n"));
}

void tst_KyScriptEngine::convertVariantMakesLocalMidnightOfADate()
{
    Engine engine;
    QVariant value = QDate(2024, 3, 31);
    engine.convertVariant(value);
    QCOMPARE(value.typeId(), int(QMetaType::QDateTime));
    QCOMPARE(value.toDateTime(), QDateTime(QDate(2024, 3, 31), QTime(0, 0)));

    engine.globalObject().setProperty(QStringLiteral("d"), engine.toScriptValue(value));
    QCOMPARE(engine.text("d instanceof Date"), QStringLiteral("true"));
    QCOMPARE(engine.text("[d.getFullYear(), d.getMonth(), d.getDate(), d.getHours()].join()"),
             QStringLiteral("2024,2,31,0"));
}

void tst_KyScriptEngine::convertVariantMakesAPrintingObjectOfATime_data()
{
    QTest::addColumn<QTime>("time");
    QTest::addColumn<QString>("text");
    QTest::newRow("with milliseconds") << QTime(14, 5, 9, 120) << "14:05:09.120";
    QTest::newRow("midnight") << QTime(0, 0) << "00:00:00.000";
    QTest::newRow("null") << QTime() << "";
}

void tst_KyScriptEngine::convertVariantMakesAPrintingObjectOfATime()
{
    QFETCH(QTime, time);
    QFETCH(QString, text);
    Engine engine;
    QVariant value = time;
    engine.convertVariant(value);
    engine.globalObject().setProperty(QStringLiteral("t"), engine.toScriptValue(value));
    QCOMPARE(engine.text("typeof t"), QStringLiteral("object"));
    QCOMPARE(engine.text("String(t)"), text);
    QCOMPARE(engine.text("t + ''"), text);
    QCOMPARE(engine.text("Object.keys(t).join()"), QStringLiteral("toString"));
}

void tst_KyScriptEngine::convertedTimePrintsWhereScriptsFreezePrototypes()
{
    Engine engine;
    engine.text("Object.freeze(Object.prototype)");
    QVariant value = QTime(14, 5, 9, 120);
    engine.convertVariant(value);
    engine.globalObject().setProperty(QStringLiteral("t"), engine.toScriptValue(value));
    QCOMPARE(engine.text("String(t)"), QStringLiteral("14:05:09.120"));
    QCOMPARE(engine.text("Object.keys(t) + (Object.getPrototypeOf(t) === Object.prototype)"),
             QStringLiteral("toStringtrue"));
}

void tst_KyScriptEngine::convertVariantLeavesOtherValues_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("QDateTime") << QVariant(QDateTime(QDate(2024, 1, 2), QTime(3, 4), Qt::UTC));
    QTest::newRow("QString") << QVariant(QStringLiteral("14:05"));
    QTest::newRow("int") << QVariant(7);
    QTest::newRow("list") << QVariant(QVariantList{QDate(2024, 1, 2)});
    QTest::newRow("invalid") << QVariant();
}

void tst_KyScriptEngine::convertVariantLeavesOtherValues()
{
    QFETCH(QVariant, value);
    Engine engine;
    QVariant converted = value;
    engine.convertVariant(converted);
    QCOMPARE(converted, value);
    QCOMPARE(converted.typeId(), value.typeId());
}

void tst_KyScriptEngine::convertedTimeIsUnderstoodByGuiTime()
{
    Engine engine;
    QVariant value = QTime(14, 5, 9, 120);
    engine.convertVariant(value);
    engine.globalObject().setProperty(QStringLiteral("t"), engine.toScriptValue(value));
    QCOMPARE(engine.text("guiTime(t)"), OvDateFormatter::guiTime(QTime(14, 5, 9, 120), false, true));

    QVariant null = QTime();
    engine.convertVariant(null);
    engine.globalObject().setProperty(QStringLiteral("t"), engine.toScriptValue(null));
    QCOMPARE(engine.text("guiTime(t)"), QString());
}

void tst_KyScriptEngine::registeredObjectIsDeletedOnceByCleanup()
{
    Engine engine;
    QPointer<QObject> object = new QObject;
    QSignalSpy destroyed(object, &QObject::destroyed);
    engine.registerForDestruction(object);
    engine.registerForDestruction(object);
    engine.cleanup();
    QVERIFY(!object);
    QCOMPARE(destroyed.count(), 1);
    engine.cleanup();
}

void tst_KyScriptEngine::collectedObjectIsSkippedByCleanup()
{
    Engine engine;
    addGlobalObjectFromMetaObject<Plain>(engine, QStringLiteral("Plain"));
    QPointer<QObject> object = engine.evaluate(QStringLiteral("new Plain()")).toQObject();
    engine.registerForDestruction(object);
    engine.collectGarbage();
    flushDeferredDeletes();
    QVERIFY(!object);
    engine.cleanup();
    QCOMPARE(Plain::sAlive, 0);

    // Collected, but not yet deleted: the object goes once.
    object = engine.evaluate(QStringLiteral("new Plain()")).toQObject();
    engine.registerForDestruction(object);
    engine.cleanup();
    flushDeferredDeletes();
    QVERIFY(!object);
    QCOMPARE(Plain::sAlive, 0);
}

void tst_KyScriptEngine::objectDeletedByAnotherOneIsSkippedByCleanup()
{
    Engine engine;
    auto* first = new QObject;
    auto* second = new QObject(first);
    engine.registerForDestruction(first);
    engine.registerForDestruction(second);
    QSignalSpy destroyed(second, &QObject::destroyed);
    engine.cleanup();
    QCOMPARE(destroyed.count(), 1);
}

void tst_KyScriptEngine::engineIsUsableAfterCleanup()
{
    Engine engine(-1);
    engine.cleanup();
    QCOMPARE(engine.runScript(KyScriptProgram(QStringLiteral("return btoa('a')"), "x")).toString(),
             QStringLiteral("YQ=="));
    QPointer<QObject> later = new QObject;
    engine.registerForDestruction(later);
    engine.cleanup();
    QVERIFY(!later);
}

void tst_KyScriptEngine::destructorCleansUp()
{
    QPointer<QObject> object = new QObject;
    {
        Engine engine;
        engine.registerForDestruction(object);
    }
    QVERIFY(!object);
}

void tst_KyScriptEngine::registeringNothingIsHarmless()
{
    Engine engine;
    engine.registerForDestruction(nullptr);
    engine.cleanup();
    QCOMPARE(engine.text("1 + 1"), QStringLiteral("2"));
}

void tst_KyScriptEngine::extAccWithoutApplicationObjectIsEmpty()
{
    Engine engine(0);
    QSignalSpy changed(&engine, &KyScriptEngine::extAccChanged);
    engine.setExtAcc({QStringLiteral("a")});
    QVERIFY(engine.extAcc().isEmpty());
    QCOMPARE(changed.count(), 0);
}

void tst_KyScriptEngine::engineOfAnObjectIsFound()
{
    Engine engine;
    QJSEngine other;
    QObject unknown, known, foreign;
    for (QObject* object : {&known, &foreign})
        QJSEngine::setObjectOwnership(object, QJSEngine::CppOwnership);
    engine.newQObject(&known);
    other.newQObject(&foreign);
    QCOMPARE(KyScriptEngine::of(&known), &engine);
    QVERIFY(!KyScriptEngine::of(&unknown));
    QVERIFY(!KyScriptEngine::of(&foreign));
}

void tst_KyScriptEngine::scriptOnTheStackIsTold_data()
{
    QTest::addColumn<QString>("before");
    QTest::newRow("plain") << "";
    QTest::newRow("class of errors replaced") << "Error = TypeError = null;";
    QTest::newRow("prototypes changed") << "Object.defineProperty(Object.prototype, 'stack', {value: ''});"
                                           "Object.defineProperty(Error.prototype, 'stack', {value: ''});";
}

/// Functions that Qt calls without a run, as it does handlers of signals.
void tst_KyScriptEngine::scriptOnTheStackIsTold()
{
    QFETCH(QString, before);
    KyScriptEngine engine(nullptr, 0);
    StackWatch watch(engine);
    QVERIFY(!engine.isOnStack());
    QVERIFY(engine.runScript(KyScriptProgram("return watch.isOnStack()", "")).toBool());
    const QJSValue handler =
        engine.QJSEngine::evaluate("(function() {" + before + "return watch.isOnStack(); })");
    QCOMPARE(handler.call().toString(), QStringLiteral("true"));
    QVERIFY(!engine.isOnStack());
}

KY_TEST_MAIN(tst_KyScriptEngine)
#include "tst_KyScriptEngine.moc"
