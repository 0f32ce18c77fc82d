#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptProgram.h>
#include <kyscript/KyScriptTimer.h>

#include <QEventLoop>
#include <QPointer>
#include <QSignalSpy>

#include <limits>

/// What scripts call to have an event loop inside a handler, as a message box does.
class Waiter : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE void wait(int inMsecs)
    {
        QEventLoop loop;
        QTimer::singleShot(inMsecs, &loop, &QEventLoop::quit);
        loop.exec();
    }
};

class tst_KyScriptTimer : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void scriptsMakeThem();
    void constructionTakesAParent();
    void aNewTimerRestsAndRepeats();
    void aTimerRepeatsUntilItIsStopped();
    void aSingleShotComesOnce();
    void singleShotHoldsForARunningTimer();
    void singleShotIsTakenBack();
    void startBeginsAnew();
    void zeroComesWhenThereIsNothingElseToDo();
    void aNegativeTimeStops_data();
    void aNegativeTimeStops();
    void aStoppedTimerStartsAgain();
    void remainingTimeCountsDown();
    void remainingTimeOfAnOverdueTimerIsNought();
    void severalHandlersAreCalledInOrder();
    void aHandlerIsDisconnected();
    void handlersRunInNestedLoops();
    void aHandlerThatFailsStopsNothing();
    void aHandlerMayStopAndStartItsTimer();
    void aTimerMayEndInItsHandler();
    void aTimerMayEndInANestedLoopOfItsHandler();
    void aTimerMayBeCollectedInANestedLoopOfItsHandler();
    void anUnreferencedTimerIsCollected_data();
    void anUnreferencedTimerIsCollected();
    void aTimerIsKeptByAGlobalVariable();
    void aTimerIsKeptByItsHandler();
    void aTimerWithAParentIsKept();
    void aRunningTimerEndsWithItsEngine();
    void argumentsAreConvertedAsEver_data();
    void argumentsAreConvertedAsEver();

private:
    QJSValue run(const QString& inSource)
    {
        return mEngine->runScript(KyScriptProgram(inSource, ""), false, false, false);
    }
    int count(const char* inName) { return run(QLatin1String(inName)).toInt(); }
    void collect()
    {
        mEngine->collectGarbage();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    /// The timer that the script makes, which the script keeps or not.
    QPointer<KyScriptTimer> timer(const QString& inSource)
    {
        return qobject_cast<KyScriptTimer*>(run(inSource).toQObject());
    }

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<KyScriptEngine> mEngine;
    Waiter mWaiter;
};

void tst_KyScriptTimer::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptTimer);
    QJSEngine::setObjectOwnership(&mWaiter, QJSEngine::CppOwnership);
    mEngine->globalObject().setProperty("waiter", mEngine->newQObject(&mWaiter));
    run("var n = 0");
}

void tst_KyScriptTimer::cleanup()
{
    const QString broken = mContracts->verify();
    mEngine.reset();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

void tst_KyScriptTimer::scriptsMakeThem()
{
    QCOMPARE(run("typeof Timer").toString(), QStringLiteral("function"));
    QCOMPARE(run("typeof new Timer()").toString(), QStringLiteral("object"));
    const auto made = timer("var t = new Timer(); t");
    QVERIFY(made);
    QCOMPARE(made->parent(), nullptr);
    QVERIFY(timer("new Timer(5)"));
    QVERIFY(timer("new Timer('x', 2)"));
}

void tst_KyScriptTimer::constructionTakesAParent()
{
    QObject parent;
    const auto* child = new KyScriptTimer(&parent);
    QCOMPARE(child->parent(), &parent);
    const KyScriptTimer alone;
    QCOMPARE(alone.parent(), nullptr);
}

void tst_KyScriptTimer::aNewTimerRestsAndRepeats()
{
    run("var t = new Timer()");
    QCOMPARE(count("t.remainingTime()"), -1);
    QVERIFY(!run("t.isSingleShot()").toBool());
    QVERIFY(run("t.isSingleShot()").isBool());
}

void tst_KyScriptTimer::aTimerRepeatsUntilItIsStopped()
{
    run("var t = new Timer(); t.timeout.connect(function() { ++n; }); t.start(1)");
    QTRY_VERIFY(count("n") >= 5);
    run("t.stop()");
    const int now = count("n");
    QTest::qWait(30);
    QCOMPARE(count("n"), now);
    QCOMPARE(count("t.remainingTime()"), -1);
}

void tst_KyScriptTimer::aSingleShotComesOnce()
{
    run("var t = new Timer(); t.setSingleShot(true); t.timeout.connect(function() { ++n; }); t.start(1)");
    QVERIFY(run("t.isSingleShot()").toBool());
    QTRY_COMPARE(count("n"), 1);
    QCOMPARE(count("t.remainingTime()"), -1);
    QTest::qWait(30);
    QCOMPARE(count("n"), 1);
}

void tst_KyScriptTimer::singleShotHoldsForARunningTimer()
{
    run("var t = new Timer(); t.timeout.connect(function() { ++n; }); t.start(1); t.setSingleShot(true)");
    QTRY_COMPARE(count("n"), 1);
    QTest::qWait(30);
    QCOMPARE(count("n"), 1);
}

void tst_KyScriptTimer::singleShotIsTakenBack()
{
    run("var t = new Timer(); t.setSingleShot(true); t.setSingleShot(false);"
        "t.timeout.connect(function() { ++n; }); t.start(1)");
    QVERIFY(!run("t.isSingleShot()").toBool());
    QTRY_VERIFY(count("n") >= 2);
}

void tst_KyScriptTimer::startBeginsAnew()
{
    run("var t = new Timer(); t.timeout.connect(function() { ++n; }); t.start(1000000); t.start(1)");
    QTRY_VERIFY(count("n") >= 1);
    run("t.start(1000000); n = 0");
    QTest::qWait(30);
    QCOMPARE(count("n"), 0);
}

void tst_KyScriptTimer::zeroComesWhenThereIsNothingElseToDo()
{
    run("var t = new Timer(); t.setSingleShot(true); t.timeout.connect(function() { ++n; }); t.start(0);");
    QCOMPARE(count("n"), 0);
    QTRY_COMPARE(count("n"), 1);
}

void tst_KyScriptTimer::aNegativeTimeStops_data()
{
    QTest::addColumn<int>("time");
    QTest::newRow("-1") << -1;
    QTest::newRow("least") << std::numeric_limits<int>::min();
}

void tst_KyScriptTimer::aNegativeTimeStops()
{
    QFETCH(int, time);
    run("var t = new Timer(); t.timeout.connect(function() { ++n; }); t.start(1000000)");
    QTest::ignoreMessage(QtWarningMsg, "QObject::startTimer: Timers cannot have negative intervals");
    run(QStringLiteral("t.start(%1)").arg(time));
    QCOMPARE(count("t.remainingTime()"), -1);
    QTest::qWait(20);
    QCOMPARE(count("n"), 0);
}

void tst_KyScriptTimer::aStoppedTimerStartsAgain()
{
    run("var t = new Timer(); t.timeout.connect(function() { ++n; }); t.stop(); t.start(1); t.stop(); "
        "t.start(1)");
    QTRY_VERIFY(count("n") >= 1);
}

void tst_KyScriptTimer::remainingTimeCountsDown()
{
    run("var t = new Timer(); t.start(1000000)");
    const int first = count("t.remainingTime()");
    QVERIFY2(first > 900000 && first <= 1050000, qPrintable(QString::number(first)));
    QTRY_VERIFY(count("t.remainingTime()") < first);
}

void tst_KyScriptTimer::remainingTimeOfAnOverdueTimerIsNought()
{
    run("var t = new Timer(); t.start(1); for (var end = Date.now() + 20; Date.now() < end;);");
    QCOMPARE(count("t.remainingTime()"), 0);
}

void tst_KyScriptTimer::severalHandlersAreCalledInOrder()
{
    run("var order = ''; var t = new Timer(); t.setSingleShot(true);"
        "t.timeout.connect(function() { order += 'a'; }); t.timeout.connect(function() { order += 'b'; }); "
        "t.start(1)");
    QTRY_COMPARE(run("order").toString(), QStringLiteral("ab"));
}

void tst_KyScriptTimer::aHandlerIsDisconnected()
{
    run("var t = new Timer(); function f() { ++n; t.timeout.disconnect(f); } t.timeout.connect(f); "
        "t.start(1)");
    QTRY_COMPARE(count("n"), 1);
    QTest::qWait(20);
    QCOMPARE(count("n"), 1);
}

void tst_KyScriptTimer::handlersRunInNestedLoops()
{
    const QJSValue seen = run("var t = new Timer(); t.timeout.connect(function() { ++n; }); t.start(1);"
                              "while (n < 3) waiter.wait(5); n");
    QVERIFY(seen.toInt() >= 3);
}

void tst_KyScriptTimer::aHandlerThatFailsStopsNothing()
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("Error: no"));
    run("var t = new Timer(); t.timeout.connect(function() { if (++n === 1) throw new Error('no'); }); "
        "t.start(1)");
    QTRY_VERIFY(count("n") >= 3);
}

void tst_KyScriptTimer::aHandlerMayStopAndStartItsTimer()
{
    run("var t = new Timer(); t.timeout.connect(function() { t.stop(); if (++n < 3) t.start(1); }); "
        "t.start(1)");
    QTRY_COMPARE(count("n"), 3);
    QTest::qWait(20);
    QCOMPARE(count("n"), 3);
}

void tst_KyScriptTimer::aTimerMayEndInItsHandler()
{
    const auto made =
        timer("var t = new Timer(); t.timeout.connect(function() { ++n; t.destroy(); }); t.start(1); t");
    QTRY_VERIFY(!made);
    QVERIFY(count("n") >= 1);
}

void tst_KyScriptTimer::aTimerMayEndInANestedLoopOfItsHandler()
{
    run("var t = new Timer(), other = new Timer(), after = ''; other.setSingleShot(true);"
        "other.timeout.connect(function() { t.destroy(); });"
        "t.timeout.connect(function() { ++n; other.start(1);"
        "    for (var i = 0; i < 1000 && typeof t.stop === 'function'; ++i) waiter.wait(5);"
        "    after += typeof t.stop; });"
        "t.timeout.connect(function() { after += 'second'; }); t.setSingleShot(true); t.start(1)");
    QTRY_VERIFY(!run("after").toString().isEmpty());
    QCOMPARE(run("after").toString(), QStringLiteral("undefined"));
    QCOMPARE(count("n"), 1);
}

void tst_KyScriptTimer::aTimerMayBeCollectedInANestedLoopOfItsHandler()
{
    const auto made =
        timer("var t = new Timer(), u = new Timer(), done = false;"
              "u.setSingleShot(true); u.timeout.connect(function() { t = null; collectGarbage(); });"
              "t.timeout.connect(function() { u.start(1); waiter.wait(50); done = true; });"
              "t.setSingleShot(true); t.start(1); t");
    QTRY_VERIFY(run("done").toBool());
    collect();
    QVERIFY(!made);
}

void tst_KyScriptTimer::anUnreferencedTimerIsCollected_data()
{
    QTest::addColumn<QString>("source");
    QTest::newRow("at rest") << "new Timer()";
    QTest::newRow("running") << "(function() { var t = new Timer(); t.start(1); return t; })()";
    QTest::newRow("running with a handler")
        << "(function() { var t = new Timer(); t.timeout.connect(count); t.start(1); return t; })()";
    QTest::newRow("held by a variable that has changed")
        << "var t = new Timer(); t.start(1); var r = t; t = null; r";
}

void tst_KyScriptTimer::anUnreferencedTimerIsCollected()
{
    QFETCH(QString, source);
    run("function count() { ++n; }");
    const auto made = timer(source);
    QVERIFY(made);
    run("var r = undefined");
    collect();
    QVERIFY(!made);
    const int now = count("n");
    QTest::qWait(20);
    QCOMPARE(count("n"), now);
}

void tst_KyScriptTimer::aTimerIsKeptByAGlobalVariable()
{
    const auto made = timer("var t = new Timer(); t.timeout.connect(function() { ++n; }); t.start(1); t");
    collect();
    QVERIFY(made);
    QTRY_VERIFY(count("n") >= 2);
}

void tst_KyScriptTimer::aTimerIsKeptByItsHandler()
{
    const auto made =
        timer("(function() { var t = new Timer(); t.timeout.connect(function() { if (++n === 3) t.stop(); });"
              "t.start(1); return t; })()");
    collect();
    QVERIFY(made);
    QTRY_COMPARE(count("n"), 3);
    collect();
    QVERIFY(made);
}

void tst_KyScriptTimer::aTimerWithAParentIsKept()
{
    const auto made = timer("new Timer(waiter)");
    QVERIFY(made);
    QCOMPARE(made->parent(), &mWaiter);
    collect();
    QVERIFY(made);
    delete made;
}

void tst_KyScriptTimer::aRunningTimerEndsWithItsEngine()
{
    const auto made = timer("var t = new Timer(); t.timeout.connect(function() { ++n; }); t.start(1); t");
    QTRY_VERIFY(count("n") >= 1);
    mEngine.reset();
    QVERIFY(!made);
    QTest::qWait(20);
}

void tst_KyScriptTimer::argumentsAreConvertedAsEver_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("value");
    QTest::newRow("fraction") << "t.start(1000000.9); t.remainingTime() > 0"
                              << "true";
    QTest::newRow("no number is nought") << "t.start('x'); t.remainingTime() <= 0"
                                         << "true";
    QTest::newRow("text of a number") << "t.start('1000000'); t.remainingTime() > 900000"
                                      << "true";
    QTest::newRow("no argument") << "try { t.start(); } catch (e) { String(e.name); }"
                                 << "Error";
    QTest::newRow("text as truth value") << "t.setSingleShot('false'); t.isSingleShot()"
                                         << "true";
    QTest::newRow("null as truth value") << "t.setSingleShot(null); t.isSingleShot()"
                                         << "false";
}

void tst_KyScriptTimer::argumentsAreConvertedAsEver()
{
    QFETCH(QString, source);
    QFETCH(QString, value);
    QCOMPARE(run("var t = new Timer(); " + source).toString(), value);
}

KY_TEST_MAIN(tst_KyScriptTimer)
#include "tst_KyScriptTimer.moc"
