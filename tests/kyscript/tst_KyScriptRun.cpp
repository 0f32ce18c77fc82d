#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptExternalObject.h>
#include <kyscript/KyScriptProgram.h>

#include <kybase/KyTool.h>
#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvTranslationProperty.h>

#include <QCryptographicHash>
#include <QEventLoop>
#include <QTest>
#include <QTimer>
#include <QUuid>

/// Runs and evaluates from inside a script.
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

    Q_INVOKABLE QJSValue run(QString inSource)
    {
        return mEngine.runScript(KyScriptProgram(inSource, "inner"), false, false, false);
    }
    Q_INVOKABLE bool triggered() { return KyTool::triggeredByScript(); }
    Q_INVOKABLE void fail(QString inText) { mEngine.throwError(inText); }
    Q_INVOKABLE QString failThenRun(QString inText, QString inSource)
    {
        mEngine.throwError(inText);
        return mEngine.runScript(KyScriptProgram(inSource, "inner"), false, false, false).toString();
    }
    Q_INVOKABLE void spin(int inMSecs)
    {
        QEventLoop loop;
        QTimer::singleShot(inMSecs, &loop, &QEventLoop::quit);
        loop.exec();
    }

private:
    KyScriptEngine& mEngine;
};

class Counter : public KyScriptExternalObject
{
    Q_OBJECT
public:
    Counter(const QString& inName, int inKind)
        : KyScriptExternalObject(nullptr, inName, inKind)
    {}
    void clear() override { ++cleared; }
    int cleared = 0;
};

class tst_KyScriptRun : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void propertyIsRegisteredWithItsLabels();

    void flagsDecideOnTheScope_data();
    void flagsDecideOnTheScope();
    void isolatedProgramWithoutWrapperIsAContractReport();
    void callersProgramIsNeverChanged();
    void everyArgumentCountIsInvokable();
    void emptyProgramGivesUndefined();
    void wrappedProgramWithoutReturnGivesUndefined();
    void declarationsOfARunStayAtTheTopLevelOnly();
    void assignmentToAnUndeclaredNameReachesTheGlobalObject();

    void errorIsReturnedAndLogged();
    void syntaxErrorIsReturnedAndLoggedWithItsLine();
    void thrownValueThatIsNoErrorIsAResult_data();
    void thrownValueThatIsNoErrorIsAResult();
    void globalIsSavedAlsoAfterAnError();
    void evaluateLogsNoErrorAndLeavesGlobalAlone();
    void cleanupClearsStudiesAndExternalObjects();
    void withoutCleanupNothingIsCleared();
    void maskOfZeroClearsBothKinds();

    void firstRunLogsLinesOfTheSource_data();
    void firstRunLogsLinesOfTheSource();
    void secondRunLogsOnlyTheIdentity();
    void identityIsTheHashOfTheSourceAsWritten();
    void sourcesThatDifferOutsideLatin1AreOneScript();
    void infoAndPlaceAreLogged_data();
    void infoAndPlaceAreLogged();
    void zeroLinesLogNothing();
    void longRunLogsItsDuration();
    void withoutAPoolOneLineIsLogged();

    void lineBelowOneIsEvaluatedFromLineOne_data();
    void lineBelowOneIsEvaluatedFromLineOne();
    void lineCountsAlsoWithoutAFile();

    void toolMarkIsSetDuringTheRun();
    void endOfANestedRunEndsTheToolMark();

    void errorMessageIsFilledInOrder_data();
    void errorMessageIsFilledInOrder();
    void errorMessageOfNoErrorIsEmpty_data();
    void errorMessageOfNoErrorIsEmpty();
    void logExceptionTellsWhetherThereWasOne();
    void everyScriptCountsAsValid();

    void nestedRunGivesItsValueToTheOuterScript();
    void errorOfANestedRunStaysInIt();
    void nestedRunIsNotStrictUnderAStrictFunction();
    void pendingErrorOfTheHostIsLoggedAndDoesNotStopARun();
    void errorThrownBeforeANestedRunReachesTheOuterScript();
    void runInsideANestedEventLoopWorks();
    void endlessRecursionIsAnErrorAndTheEngineStaysUsable();

private:
    void setLogLines(int inLines);

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
};

namespace {

/// Texts are known again for the life of the process: every test takes new ones.
QString fresh(const QString& inSource)
{
    static int sCount = 0;
    return QStringLiteral("/*%1*/").arg(++sCount) + inSource;
}

QString identity(const QByteArray& inLatin1)
{
    return QUuid::fromRfc4122(QCryptographicHash::hash(inLatin1, QCryptographicHash::Md5)).toString();
}

KyScriptProgram program(const QString& inSource, const char* inInfo = nullptr)
{
    return KyScriptProgram(inSource, inInfo);
}

/// The lines without the one about the duration, which a slow machine adds to any run.
QStringList runLines(LogCapture& ioLog)
{
    return ioLog.take().filter(
        QRegularExpression(QStringLiteral("^(?!1\\|Script Interface\\|Executed script )")));
}

} // namespace

void tst_KyScriptRun::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
}

void tst_KyScriptRun::cleanup()
{
    const QString broken = mContracts->verify();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

void tst_KyScriptRun::setLogLines(int inLines)
{
    auto* property =
        dynamic_cast<OvProperty<int>*>(OvPropertyPool::instance()->variant("Scripting.LogNumLines"));
    QVERIFY(property);
    property->value = inLines;
}

void tst_KyScriptRun::propertyIsRegisteredWithItsLabels()
{
    auto* property = OvPropertyPool::instance()->variant("Scripting.LogNumLines");
    QVERIFY(property);
    QCOMPARE(property->toQString(), QStringLiteral("1"));
    QVERIFY(property->type() == typeid(int));
    QCOMPARE(property->serializer(), OvPropertyPool::instance()->defaultSerializer());
    QCOMPARE(OvTranslationProperty::label(QStringLiteral("Scripting")), QStringLiteral("Advanced Settings"));
    QCOMPARE(OvTranslationProperty::label(QStringLiteral("Scripting.LogNumLines")),
             QStringLiteral("Number of Logged Lines for Scripts"));
}

void tst_KyScriptRun::flagsDecideOnTheScope_data()
{
    QTest::addColumn<bool>("pushContext");
    QTest::addColumn<bool>("noFunction");
    QTest::addColumn<bool>("scoped");
    QTest::newRow("true, false") << true << false << true;
    QTest::newRow("true, true") << true << true << false;
    QTest::newRow("false, false") << false << false << false;
    QTest::newRow("false, true") << false << true << false;
}

void tst_KyScriptRun::flagsDecideOnTheScope()
{
    QFETCH(bool, pushContext);
    QFETCH(bool, noFunction);
    QFETCH(bool, scoped);
    KyScriptEngine engine(nullptr, 0);
    engine.runScript(program(fresh("var declared = 1;")), pushContext, noFunction);
    QCOMPARE(engine.globalObject().hasProperty("declared"), !scoped);
}

void tst_KyScriptRun::isolatedProgramWithoutWrapperIsAContractReport()
{
    KyScriptEngine engine(nullptr, 0);
    KyScriptProgram isolated = program(fresh("var declared = 1; return 7"));
    isolated.setIsolatedContext(true);
    mContracts->expect("wrapToFunction == script.isolatedContext()");
    QCOMPARE(engine.runScript(isolated, false).toInt(), 7);
    QVERIFY(!engine.globalObject().hasProperty("declared"));
    QCOMPARE(engine.runScript(isolated, true).toInt(), 7);
}

void tst_KyScriptRun::callersProgramIsNeverChanged()
{
    KyScriptEngine engine(nullptr, 0);
    const KyScriptProgram script = program(fresh("return 1"), "info");
    engine.runScript(script, true);
    QVERIFY(!script.isolatedContext());
    QCOMPARE(script.infoString(), QStringLiteral("info"));
}

void tst_KyScriptRun::everyArgumentCountIsInvokable()
{
    KyScriptEngine engine(nullptr, 0);
    const KyScriptProgram script = program(fresh("7"));
    for (const bool flag : {true, false}) {
        QJSValue value;
        QVERIFY(QMetaObject::invokeMethod(&engine, "runScript", Q_RETURN_ARG(QJSValue, value),
                                          Q_ARG(KyScriptProgram, script), Q_ARG(bool, flag)));
        QCOMPARE(value.isUndefined(), flag);
    }
    QJSValue value;
    QVERIFY(QMetaObject::invokeMethod(&engine, "runScript", Q_RETURN_ARG(QJSValue, value),
                                      Q_ARG(KyScriptProgram, script)));
    QVERIFY(value.isUndefined());
    QVERIFY(QMetaObject::invokeMethod(&engine, "runScript", Q_RETURN_ARG(QJSValue, value),
                                      Q_ARG(KyScriptProgram, script), Q_ARG(bool, true), Q_ARG(bool, true)));
    QCOMPARE(value.toInt(), 7);
    QVERIFY(QMetaObject::invokeMethod(&engine, "runScript", Q_RETURN_ARG(QJSValue, value),
                                      Q_ARG(KyScriptProgram, script), Q_ARG(bool, true), Q_ARG(bool, true),
                                      Q_ARG(bool, false)));
    QCOMPARE(value.toInt(), 7);
}

void tst_KyScriptRun::emptyProgramGivesUndefined()
{
    KyScriptEngine engine(nullptr, 0);
    QVERIFY(engine.runScript(KyScriptProgram()).isUndefined());
    QVERIFY(engine.runScript(KyScriptProgram(), false).isUndefined());
}

void tst_KyScriptRun::wrappedProgramWithoutReturnGivesUndefined()
{
    KyScriptEngine engine(nullptr, 0);
    const KyScriptProgram script = program(fresh("1 + 1"));
    QVERIFY(engine.runScript(script).isUndefined());
    QCOMPARE(engine.runScript(script, false).toInt(), 2);
}

void tst_KyScriptRun::declarationsOfARunStayAtTheTopLevelOnly()
{
    KyScriptEngine engine(nullptr, 0);
    engine.runScript(program(fresh("var v = 1; function f() { return v + 1; }")), false, false);
    QCOMPARE(engine.runScript(program(fresh("return f()"))).toInt(), 2);
    engine.runScript(program(fresh("var w = 1;")));
    QCOMPARE(engine.runScript(program(fresh("typeof w")), false).toString(), QStringLiteral("undefined"));
}

void tst_KyScriptRun::assignmentToAnUndeclaredNameReachesTheGlobalObject()
{
    KyScriptEngine engine(nullptr, 0);
    engine.runScript(program(fresh("undeclared = 5;")));
    QCOMPARE(engine.globalObject().property("undeclared").toInt(), 5);
}

void tst_KyScriptRun::errorIsReturnedAndLogged()
{
    KyScriptEngine engine(nullptr, 0);
    setLogLines(0);
    LogCapture log;
    const KyScriptProgram script(fresh("\nthrow new Error('no luck')"), "a.js", 10);
    const QJSValue result = engine.runScript(script, false);
    QVERIFY(result.isError());
    QCOMPARE(log.take(), QStringList({"3|Script Interface|Uncaught JavaScript Exception\nException: no luck\n"
                                      "Line: 11\nBacktrace:\n%entry@file:a.js:11"}));
}

void tst_KyScriptRun::syntaxErrorIsReturnedAndLoggedWithItsLine()
{
    KyScriptEngine engine(nullptr, 0);
    setLogLines(0);
    LogCapture log;
    const QJSValue result =
        engine.runScript(KyScriptProgram(fresh("var a;\nvar b;\nvar = 3;"), "a.js", 1), false);
    QVERIFY(result.isError());
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), 1);
    QVERIFY2(lines.first().startsWith(
                 "3|Script Interface|Uncaught JavaScript Exception\nException: Expected token"),
             qPrintable(lines.first()));
    QVERIFY2(lines.first().contains("\nLine: 3\n"), qPrintable(lines.first()));
}

void tst_KyScriptRun::thrownValueThatIsNoErrorIsAResult_data()
{
    QTest::addColumn<QString>("value");
    QTest::newRow("text") << "'text'";
    QTest::newRow("number") << "42";
    QTest::newRow("null") << "null";
    QTest::newRow("object") << "({toString: function() { return 'o'; }})";
}

void tst_KyScriptRun::thrownValueThatIsNoErrorIsAResult()
{
    QFETCH(QString, value);
    KyScriptEngine engine(nullptr, 0);
    setLogLines(0);
    LogCapture log;
    const QJSValue result = engine.runScript(program(fresh("throw " + value)), false);
    QVERIFY(!result.isError());
    QCOMPARE(result.toString(), engine.evaluate(value).toString());
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptRun::globalIsSavedAlsoAfterAnError()
{
    KyScriptEngine engine(nullptr, 0);
    engine.runScript(program(fresh("Global.savedAlthough = 1; throw new Error('x')")));
    QCOMPARE(engine.runScript(program(fresh("return Global.savedAlthough"))).toInt(), 1);
}

void tst_KyScriptRun::evaluateLogsNoErrorAndLeavesGlobalAlone()
{
    KyScriptEngine engine(nullptr, 0);
    setLogLines(0);
    LogCapture log;
    QVERIFY(engine.evaluate(program(fresh("throw new Error('x')")), false).isError());
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(engine.evaluate(program(fresh("typeof Global")), true).toString(), QStringLiteral("undefined"));
}

void tst_KyScriptRun::cleanupClearsStudiesAndExternalObjects()
{
    Counter a("counterA", 0x40000), b("counterB", 0x80000);
    KyScriptEngine engine(nullptr, 0x40000);
    engine.runScript(program(fresh("1")));
    QCOMPARE(a.cleared, 1);
    QCOMPARE(b.cleared, 0);
}

void tst_KyScriptRun::withoutCleanupNothingIsCleared()
{
    Counter a("counterA", 0x40000);
    KyScriptEngine engine(nullptr, -1);
    engine.runScript(program(fresh("1")), true, false, false);
    QCOMPARE(a.cleared, 0);
    engine.evaluate(program(fresh("1")), false);
    QCOMPARE(a.cleared, 0);
}

void tst_KyScriptRun::maskOfZeroClearsBothKinds()
{
    Counter a("counterA", 0x40000), b("counterB", 0x80000);
    KyScriptEngine engine(nullptr, 0);
    engine.runScript(program(fresh("1")));
    QCOMPARE(a.cleared, 1);
    QCOMPARE(b.cleared, 1);
}

void tst_KyScriptRun::firstRunLogsLinesOfTheSource_data()
{
    QTest::addColumn<int>("lines");
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("logged");
    QTest::newRow("one of three") << 1 << "a=1\nb=2\nc=3"
                                  << "a=1\n...";
    QTest::newRow("one without a break") << 1 << "a=1"
                                         << "a=1";
    QTest::newRow("two of one without a break") << 2 << "a=1"
                                                << "a=1";
    QTest::newRow("two of exactly two that end in a break") << 2 << "a=1\nb=2\n"
                                                            << "a=1\nb=2\n...";
    QTest::newRow("two of two without a last break") << 2 << "a=1\nb=2"
                                                     << "a=1\nb=2";
    QTest::newRow("all") << -1 << "a=1\nb=2\nc=3\n"
                         << "a=1\nb=2\nc=3\n";
    QTest::newRow("CRLF becomes LF") << 2 << "a=1\r\nb=2\r\nc=3"
                                     << "a=1\nb=2\n...";
    QTest::newRow("all with CRLF") << -5 << "a=1\r\nb=2"
                                   << "a=1\nb=2";
    QTest::newRow("outside Latin-1") << 1 << QString::fromUtf8("a='ü€'") << QString::fromUtf8("a='ü?'");
    QTest::newRow("empty line first") << 1 << "\na=1"
                                      << "\n...";
}

void tst_KyScriptRun::firstRunLogsLinesOfTheSource()
{
    QFETCH(int, lines);
    QFETCH(QString, source);
    QFETCH(QString, logged);
    KyScriptEngine engine(nullptr, 0);
    setLogLines(lines);
    const QString mark = fresh(QString());
    source = mark + source;
    LogCapture log;
    engine.runScript(program(source), false);
    QCOMPARE(runLines(log), QStringList("1|Script Interface|Executing script " + identity(source.toLatin1()) +
                                        ", source code:\n" + mark + logged));
}

void tst_KyScriptRun::secondRunLogsOnlyTheIdentity()
{
    KyScriptEngine first(nullptr, 0), second(nullptr, 0);
    const QString source = fresh("1\n2");
    first.runScript(KyScriptProgram(source, "a.js", 3));
    LogCapture log;
    second.runScript(KyScriptProgram(source, "b.js", 7));
    QCOMPARE(runLines(log), QStringList("1|Script Interface|Executing script " + identity(source.toLatin1()) +
                                        ", in file: b.js, line 7"));
}

void tst_KyScriptRun::identityIsTheHashOfTheSourceAsWritten()
{
    KyScriptEngine engine(nullptr, 0);
    const QString source = fresh("return 1;\r\n");
    LogCapture log;
    engine.runScript(program(source)); // wrapped, and logged with LF
    QVERIFY(runLines(log).value(0).contains(identity(source.toLatin1())));
}

void tst_KyScriptRun::sourcesThatDifferOutsideLatin1AreOneScript()
{
    KyScriptEngine engine(nullptr, 0);
    const QString source = fresh("'%1'");
    engine.runScript(program(source.arg(QChar(0x20ac))));
    LogCapture log;
    engine.runScript(program(source.arg(QChar(0x4e00))));
    QCOMPARE(runLines(log),
             QStringList("1|Script Interface|Executing script " + identity(source.arg('?').toLatin1())));
}

void tst_KyScriptRun::infoAndPlaceAreLogged_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("line");
    QTest::addColumn<QByteArray>("info");
    QTest::addColumn<QString>("behind");
    QTest::newRow("nothing") << "" << -1 << QByteArray() << "";
    QTest::newRow("info") << "" << -1 << QByteArray("Tool") << " Tool";
    QTest::newRow("file") << "a.js" << -1 << QByteArray() << ", in file: a.js";
    QTest::newRow("file and line 0") << "a.js" << 0 << QByteArray() << ", in file: a.js";
    QTest::newRow("file and line 1") << "a.js" << 1 << QByteArray() << ", in file: a.js, line 1";
    QTest::newRow("all") << "a.js" << 12 << QByteArray("Tool") << " Tool, in file: a.js, line 12";
    QTest::newRow("line without a file") << "" << 12 << QByteArray() << "";
}

void tst_KyScriptRun::infoAndPlaceAreLogged()
{
    QFETCH(QString, file);
    QFETCH(int, line);
    QFETCH(QByteArray, info);
    QFETCH(QString, behind);
    KyScriptEngine engine(nullptr, 0);
    const QString source = fresh("1");
    KyScriptProgram script(source, file, line);
    script.setInfoString(info.constData());
    engine.runScript(script);
    LogCapture log;
    engine.runScript(script);
    QCOMPARE(runLines(log),
             QStringList("1|Script Interface|Executing script " + identity(source.toLatin1()) + behind));
}

void tst_KyScriptRun::zeroLinesLogNothing()
{
    KyScriptEngine engine(nullptr, 0);
    setLogLines(0);
    LogCapture log;
    engine.runScript(program(fresh("var end = Date.now() + 5; while (Date.now() < end);")));
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptRun::longRunLogsItsDuration()
{
    KyScriptEngine engine(nullptr, 0);
    const QString source = fresh("var end = Date.now() + 20; while (Date.now() < end);");
    LogCapture log;
    engine.runScript(program(source));
    const QString last = log.take().value(1);
    const QRegularExpression form(
        "^1\\|Script Interface\\|Executed script (\\{[-0-9a-f]{36}\\}) in (\\d+) ms$");
    const auto match = form.match(last);
    QVERIFY2(match.hasMatch(), qPrintable(last));
    QCOMPARE(match.captured(1), identity(source.toLatin1()));
    QVERIFY(match.captured(2).toInt() >= 19);
}

void tst_KyScriptRun::withoutAPoolOneLineIsLogged()
{
    mPlatform.reset();
    KyScriptEngine engine(nullptr, 0);
    LogCapture log;
    const QString source = fresh("1\n2");
    engine.runScript(program(source));
    QVERIFY(runLines(log).value(0).endsWith("\n..."));
}

void tst_KyScriptRun::lineBelowOneIsEvaluatedFromLineOne_data()
{
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("reported");
    QTest::newRow("-1") << -1 << 1;
    QTest::newRow("0") << 0 << 1;
    QTest::newRow("-7") << -7 << 1;
    QTest::newRow("1") << 1 << 1;
    QTest::newRow("12") << 12 << 12;
}

void tst_KyScriptRun::lineBelowOneIsEvaluatedFromLineOne()
{
    QFETCH(int, line);
    QFETCH(int, reported);
    KyScriptEngine engine(nullptr, 0);
    const QJSValue result = engine.runScript(KyScriptProgram(fresh("throw new Error('x')"), "a.js", line));
    QCOMPARE(result.property("lineNumber").toInt(), reported);
}

void tst_KyScriptRun::lineCountsAlsoWithoutAFile()
{
    KyScriptEngine engine(nullptr, 0);
    LogCapture log(3);
    engine.runScript(KyScriptProgram(fresh("throw new Error('x')"), QString(), 12), false);
    QCOMPARE(log.take(),
             QStringList("3|Script Interface|Uncaught JavaScript Exception\nException: x\nLine: 12\n"
                         "Backtrace:\n%entry@:12"));
}

void tst_KyScriptRun::toolMarkIsSetDuringTheRun()
{
    KyScriptEngine engine(nullptr, 0);
    Host host(engine);
    QVERIFY(!KyTool::triggeredByScript());
    QVERIFY(engine.runScript(program(fresh("return host.triggered()"))).toBool());
    QVERIFY(!KyTool::triggeredByScript());
    engine.runScript(program(fresh("throw new Error('x')")));
    QVERIFY(!KyTool::triggeredByScript());
}

void tst_KyScriptRun::endOfANestedRunEndsTheToolMark()
{
    KyScriptEngine engine(nullptr, 0);
    Host host(engine);
    QCOMPARE(engine
                 .runScript(program(fresh("var inner = host.run('host.triggered()');"
                                          "return inner + ' ' + host.triggered()")))
                 .toString(),
             QStringLiteral("true false"));
}

void tst_KyScriptRun::errorMessageIsFilledInOrder_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("info");
    QTest::addColumn<QString>("text");
    const QString place = "Line: 4\nBacktrace:\n%entry@file:a.js:4";
    QTest::newRow("without info") << "boom"
                                  << ""
                                  << "Uncaught JavaScript Exception\nException: boom\n" + place;
    QTest::newRow("with info") << "boom"
                               << "Report"
                               << "Uncaught exception in Report\nException: boom\n" + place;
    QTest::newRow("empty message") << ""
                                   << ""
                                   << "Uncaught JavaScript Exception\nException: \n" + place;
    QTest::newRow("marker for the line")
        << "a %2 b"
        << ""
        << "Uncaught JavaScript Exception\nException: a 4 b\nLine: 4\nBacktrace:\n%entry@file:a.js:4";
    QTest::newRow("marker for the stack") << "a %3 b"
                                          << ""
                                          << "Uncaught JavaScript Exception\nException: a %entry@file:a.js:4 "
                                             "b\nLine: 4\nBacktrace:\n%entry@file:a.js:4";
}

void tst_KyScriptRun::errorMessageIsFilledInOrder()
{
    QFETCH(QString, message);
    QFETCH(QString, info);
    QFETCH(QString, text);
    KyScriptEngine engine(nullptr, 0);
    const QJSValue error = engine.evaluate("throw new Error('" + message + "')", "a.js", 4);
    QString bare = "untouched";
    QCOMPARE(engine.errorMessage(error, info, &bare), text);
    QCOMPARE(bare, message);
    QCOMPARE(engine.errorMessage(error, info, nullptr), text);
}

void tst_KyScriptRun::errorMessageOfNoErrorIsEmpty_data()
{
    QTest::addColumn<QString>("source");
    for (const char* source :
         {"undefined", "null", "1", "'Error'", "({message: 'x', lineNumber: 1})", "throw 'x'", "throw 5"})
        QTest::newRow(source) << source;
}

void tst_KyScriptRun::errorMessageOfNoErrorIsEmpty()
{
    QFETCH(QString, source);
    KyScriptEngine engine(nullptr, 0);
    QString bare = "untouched";
    QCOMPARE(engine.errorMessage(engine.evaluate(source), "info", &bare), QString());
    QCOMPARE(bare, QStringLiteral("untouched"));
}

void tst_KyScriptRun::logExceptionTellsWhetherThereWasOne()
{
    KyScriptEngine engine(nullptr, 0);
    LogCapture log;
    QVERIFY(!engine.logException("Ctx", QJSValue(5), "info"));
    QCOMPARE(log.take(), QStringList());
    QVERIFY(engine.logException("Ctx", engine.evaluate("throw new Error('ü€')"), "info"));
    QCOMPARE(log.take(),
             QStringList(QString::fromUtf8("3|Ctx|Uncaught exception in info\nException: ü?\nLine: 1\n"
                                           "Backtrace:\n%entry@:1")));
}

void tst_KyScriptRun::everyScriptCountsAsValid()
{
    KyScriptEngine engine(nullptr, 0);
    QString message = "untouched";
    QVERIFY(engine.scriptIsValid(program("var = ;"), message));
    QVERIFY(engine.scriptIsValid(KyScriptProgram(), message));
    QCOMPARE(message, QStringLiteral("untouched"));
}

void tst_KyScriptRun::nestedRunGivesItsValueToTheOuterScript()
{
    KyScriptEngine engine(nullptr, 0);
    Host host(engine);
    QCOMPARE(engine.runScript(program(fresh("return host.run('6 * 7') + 1"))).toInt(), 43);
}

void tst_KyScriptRun::errorOfANestedRunStaysInIt()
{
    KyScriptEngine engine(nullptr, 0);
    Host host(engine);
    LogCapture log(3);
    QCOMPARE(
        engine.runScript(program(fresh("var e = host.run(\"throw new Error('inner')\"); return e.message")))
            .toString(),
        QStringLiteral("inner"));
    QCOMPARE(log.lines().size(), 1);
    QVERIFY(
        log.take().first().startsWith("3|Script Interface|Uncaught exception in inner\nException: inner\n"));
}

void tst_KyScriptRun::nestedRunIsNotStrictUnderAStrictFunction()
{
    KyScriptEngine engine(nullptr, 0);
    Host host(engine);
    engine.runScript(program(fresh("'use strict'; host.run('undeclared = 3')")));
    QCOMPARE(engine.globalObject().property("undeclared").toInt(), 3);
}

void tst_KyScriptRun::pendingErrorOfTheHostIsLoggedAndDoesNotStopARun()
{
    KyScriptEngine engine(nullptr, 0);
    setLogLines(0);
    engine.throwError(QStringLiteral("left by the host"));
    LogCapture log;
    QCOMPARE(engine.runScript(program(fresh("return 7"))).toInt(), 7);
    QVERIFY(!engine.hasError());
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), 1);
    QVERIFY2(lines.first().startsWith("3|Script Interface|Uncaught exception in host code before the run\n"
                                      "Exception: left by the host\n"),
             qPrintable(lines.first()));
}

void tst_KyScriptRun::errorThrownBeforeANestedRunReachesTheOuterScript()
{
    KyScriptEngine engine(nullptr, 0);
    Host host(engine);
    QCOMPARE(engine
                 .runScript(program(fresh("try { host.failThenRun('mine', 'ran = 1'); return 'passed' }"
                                          "catch (e) { return e.message + ran }")))
                 .toString(),
             QStringLiteral("mine1"));
}

void tst_KyScriptRun::runInsideANestedEventLoopWorks()
{
    KyScriptEngine engine(nullptr, 0);
    Host host(engine);
    QJSValue inner;
    QTimer::singleShot(0, &host, [&] { inner = engine.runScript(program(fresh("throw new Error('x')"))); });
    QCOMPARE(engine.runScript(program(fresh("host.spin(30); return 'outer'"))).toString(),
             QStringLiteral("outer"));
    QVERIFY(inner.isError());
}

void tst_KyScriptRun::endlessRecursionIsAnErrorAndTheEngineStaysUsable()
{
    KyScriptEngine engine(nullptr, 0);
    const QJSValue result = engine.runScript(program(fresh("function f() { return f() + 1; } return f()")));
    QVERIFY(result.isError());
    QVERIFY(result.toString().startsWith("RangeError"));
    QCOMPARE(engine.runScript(program(fresh("return 7"))).toInt(), 7);
}

KY_TEST_MAIN(tst_KyScriptRun)
#include "tst_KyScriptRun.moc"
