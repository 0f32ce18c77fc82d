#include <support/KyTest.h>

#include <jxbase/JxProcess.h>

#include <QElapsedTimer>
#include <QFile>
#include <QPointer>
#include <QTemporaryDir>
#include <QTimer>

#include <memory>

#include <signal.h>
#include <unistd.h>

class TestJxProcess final : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // output
    void outputIsKeptOnDemand();
    void outputGoesNowhereOtherwise();
    void muchOutputTakesNoMemory();

    // stableWaitForFinished
    void waitWithoutAProgramIsOver_data();
    void waitWithoutAProgramIsOver();
    void waitEndsWithTheProgram_data();
    void waitEndsWithTheProgram();
    void waitEndsWhenItsTimeIsOver();
    void waitWithoutALimitEndsWithTheProgram();
    void waitOfNoTimeSeesAnEndThatNoEventHasTold();
    void waitOfNoTimeOnARunningProgramGivesFalse();
    void waitEndsWhenTheProgramCannotStart();
    void eventsAreServedDuringTheWait();
    void programStartedDuringTheWaitIsWaitedForToo();
    void waitsMayBeNested();
    void waitSurvivesTheEndOfTheProcessObject();
    void waitEndsWithTheApplication();

    // leave
    void idleObjectGoesAtOnce();
    void leftProgramGoesOnAndItsObjectGoesWithIt();
    void leftProgramThatCannotStartGoesToo();
    void leftObjectDoesNotGoWithItsParent();
    void withoutLeavingTheProgramEndsWithTheObject();

private:
    /// Starts a program that runs until release() is called.
    void startWaiting(JxProcess& ioProcess);
    void release() { QFile::remove(mMark); }
    /// The process id of the program that waits; 0 before it runs.
    pid_t waitingPid() const;
    QString path(const QString& inName) const { return mFolder->filePath(inName); }

    std::unique_ptr<QTemporaryDir> mFolder;
    QString mMark;
};

namespace {

const QString Program = QStringLiteral(PROCESS_SAMPLE);

bool exists(pid_t inPid)
{
    return ::kill(inPid, 0) == 0;
}

/// The part of the memory of this process that is not shared, in bytes.
qint64 ownMemory()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const auto pages = file.readAll().split(' ');
    return (pages.at(1).toLongLong() - pages.at(2).toLongLong()) * sysconf(_SC_PAGESIZE);
}

void flushDeferredDeletes()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

void TestJxProcess::init()
{
    mFolder = std::make_unique<QTemporaryDir>();
    QVERIFY(mFolder->isValid());
    mMark = path("mark");
}

void TestJxProcess::cleanup()
{
    const pid_t pid = waitingPid();
    release();
    if (pid)
        QTRY_VERIFY(!exists(pid)); // neither running nor a zombie
    mFolder.reset();
}

void TestJxProcess::startWaiting(JxProcess& ioProcess)
{
    ioProcess.start(Program, {"wait", mMark});
    QTRY_VERIFY(QFile::exists(mMark));
}

pid_t TestJxProcess::waitingPid() const
{
    QFile file(mMark);
    return file.open(QIODevice::ReadOnly) ? file.readAll().toInt() : 0;
}

void TestJxProcess::outputIsKeptOnDemand()
{
    JxProcess process(nullptr, true);
    process.start(Program, {"print", "65536", path("done")});
    QVERIFY(process.stableWaitForFinished(30000));
    QCOMPARE(process.readAllStandardOutput().size(), 65536);
    QCOMPARE(process.readAllStandardError().size(), 65536);
}

void TestJxProcess::outputGoesNowhereOtherwise()
{
    JxProcess process(nullptr, false);
    process.start(Program, {"print", "65536", path("done")});
    QVERIFY(process.stableWaitForFinished(30000));
    QCOMPARE(process.exitCode(), 0);
    QVERIFY(QFile::exists(path("done")));
    QCOMPARE(process.bytesAvailable(), 0);
    QVERIFY(process.readAllStandardOutput().isEmpty());
    QVERIFY(process.readAllStandardError().isEmpty());
}

void TestJxProcess::muchOutputTakesNoMemory()
{
    const qint64 before = ownMemory();
    JxProcess process(nullptr, false);
    process.start(Program, {"print", "1000000000", path("done")});
    QVERIFY(process.stableWaitForFinished(60000));
    QCOMPARE(process.exitCode(), 0);
    QVERIFY(ownMemory() - before < 50'000'000);
}

void TestJxProcess::waitWithoutAProgramIsOver_data()
{
    QTest::addColumn<int>("limit");
    QTest::newRow("no time") << 0;
    QTest::newRow("long") << 60000;
    QTest::newRow("without a limit") << -1;
}

void TestJxProcess::waitWithoutAProgramIsOver()
{
    QFETCH(int, limit);
    JxProcess process(nullptr, false);
    QElapsedTimer elapsed;
    elapsed.start();
    QVERIFY(process.stableWaitForFinished(limit));
    QVERIFY(elapsed.elapsed() < 30000);
}

void TestJxProcess::waitEndsWithTheProgram_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("usual end") << QStringList({"exit", "0"});
    QTest::newRow("exit status") << QStringList({"exit", "3"});
    QTest::newRow("crash") << QStringList({"crash"});
}

void TestJxProcess::waitEndsWithTheProgram()
{
    QFETCH(QStringList, arguments);
    JxProcess process(nullptr, false);
    for (int i = 0; i < 2; ++i) { // the same object serves again
        process.start(Program, arguments);
        QVERIFY(process.stableWaitForFinished(60000));
        QCOMPARE(process.state(), QProcess::NotRunning);
    }
}

void TestJxProcess::waitEndsWhenItsTimeIsOver()
{
    JxProcess process(nullptr, false);
    startWaiting(process);
    QElapsedTimer elapsed;
    elapsed.start();
    QVERIFY(!process.stableWaitForFinished(50));
    QVERIFY(elapsed.elapsed() >= 49);
    QCOMPARE(process.state(), QProcess::Running);
    release();
    QVERIFY(process.stableWaitForFinished(60000));
}

void TestJxProcess::waitWithoutALimitEndsWithTheProgram()
{
    JxProcess process(nullptr, false);
    startWaiting(process);
    QTimer::singleShot(30, this, [this] { release(); });
    QVERIFY(process.stableWaitForFinished(-1));
}

void TestJxProcess::waitOfNoTimeSeesAnEndThatNoEventHasTold()
{
    JxProcess process(nullptr, false);
    process.start(Program, {"write", path("done")});
    QVERIFY(process.waitForStarted(60000));
    QElapsedTimer elapsed;
    elapsed.start();
    while (!process.stableWaitForFinished(0) && elapsed.elapsed() < 60000)
        ::usleep(1000); // without serving events
    QCOMPARE(process.state(), QProcess::NotRunning);
    QVERIFY(QFile::exists(path("done")));
}

void TestJxProcess::waitOfNoTimeOnARunningProgramGivesFalse()
{
    JxProcess process(nullptr, false);
    startWaiting(process);
    QVERIFY(!process.stableWaitForFinished(0));
    QCOMPARE(process.state(), QProcess::Running);
    release();
    QVERIFY(process.stableWaitForFinished(60000));
}

void TestJxProcess::waitEndsWhenTheProgramCannotStart()
{
    JxProcess process(nullptr, false);
    QSignalSpy errors(&process, &QProcess::errorOccurred);
    process.start(path("no such program"), {});
    QVERIFY(process.stableWaitForFinished(60000));
    QCOMPARE(errors.size(), 1);
    QCOMPARE(errors.at(0).at(0).value<QProcess::ProcessError>(), QProcess::FailedToStart);
}

void TestJxProcess::eventsAreServedDuringTheWait()
{
    JxProcess process(nullptr, false);
    startWaiting(process);
    int ticks = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] {
        if (++ticks == 5)
            release();
    });
    timer.start(1);
    QVERIFY(process.stableWaitForFinished(60000));
    QVERIFY(ticks >= 5);
}

void TestJxProcess::programStartedDuringTheWaitIsWaitedForToo()
{
    JxProcess process(nullptr, false);
    process.start(Program, {"exit", "0"});
    const auto connection = connect(&process, &QProcess::finished, this, [&] {
        if (!QFile::exists(path("second")))
            process.start(Program, {"write", path("second")});
    });
    QVERIFY(process.stableWaitForFinished(60000));
    QVERIFY(QFile::exists(path("second")));
    disconnect(connection);
}

void TestJxProcess::waitsMayBeNested()
{
    JxProcess process(nullptr, false);
    startWaiting(process);
    bool inner = false;
    QTimer::singleShot(0, this, [&] {
        QTimer::singleShot(30, this, [this] { release(); });
        inner = process.stableWaitForFinished(60000);
    });
    QVERIFY(process.stableWaitForFinished(60000));
    QVERIFY(inner);
}

void TestJxProcess::waitSurvivesTheEndOfTheProcessObject()
{
    QPointer<JxProcess> process(new JxProcess(nullptr, false));
    startWaiting(*process);
    QTimer::singleShot(0, this, [&] { delete process; });
    QVERIFY(!process->stableWaitForFinished(60000));
    QVERIFY(!process);
}

/// Without a look at that, the wait would spin until its time is over, since no loop runs any more.
void TestJxProcess::waitEndsWithTheApplication()
{
    JxProcess process(nullptr, false);
    startWaiting(process);
    bool over = true;
    QElapsedTimer elapsed;
    QTimer::singleShot(0, this, [&] {
        QTimer::singleShot(0, this, [] { QCoreApplication::quit(); });
        elapsed.start();
        over = process.stableWaitForFinished(60000);
    });
    QCoreApplication::exec();
    QVERIFY(!over);
    QVERIFY(elapsed.elapsed() < 30000);
    release();
    QVERIFY(process.waitForFinished(60000));
}

void TestJxProcess::idleObjectGoesAtOnce()
{
    const QPointer<JxProcess> fresh(new JxProcess(nullptr, false));
    fresh->leave();
    QVERIFY(!fresh);

    const QPointer<JxProcess> used(new JxProcess(nullptr, false));
    used->start(Program, {"exit", "0"});
    QVERIFY(used->stableWaitForFinished(60000));
    used->leave();
    QVERIFY(!used);
}

void TestJxProcess::leftProgramGoesOnAndItsObjectGoesWithIt()
{
    const QPointer<JxProcess> process(new JxProcess(nullptr, false));
    startWaiting(*process);
    const pid_t pid = waitingPid();
    process->leave();
    QTest::qWait(30);
    QVERIFY(process);
    QVERIFY(exists(pid));

    release();
    QTRY_VERIFY(!exists(pid));
    flushDeferredDeletes();
    QTRY_VERIFY(!process);
}

void TestJxProcess::leftProgramThatCannotStartGoesToo()
{
    const QPointer<JxProcess> process(new JxProcess(nullptr, false));
    process->start(path("no such program"), {});
    process->leave();
    QTRY_VERIFY((flushDeferredDeletes(), !process));
}

void TestJxProcess::leftObjectDoesNotGoWithItsParent()
{
    auto parent = std::make_unique<QObject>();
    const QPointer<JxProcess> process(new JxProcess(parent.get(), false));
    startWaiting(*process);
    const pid_t pid = waitingPid();
    process->leave();
    parent.reset();
    QVERIFY(process);
    QVERIFY(exists(pid));
}

void TestJxProcess::withoutLeavingTheProgramEndsWithTheObject()
{
    pid_t pid = 0;
    {
        JxProcess process(nullptr, false);
        startWaiting(process);
        pid = waitingPid();
    }
    QVERIFY(!exists(pid));
    release();
}

KY_TEST_MAIN(TestJxProcess)

#include "tst_JxProcess.moc"
