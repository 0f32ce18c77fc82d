#include <support/KyTest.h>

#include <jxbase/JxEventLoop.h>

#include <QElapsedTimer>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>

#include <memory>
#include <optional>

#include <unistd.h>

class TestJxEventLoop final : public QObject
{
    Q_OBJECT

private slots:
    void theWaitEndsWhenItsTimeIsOver()
    {
        JxEventLoop loop;
        QElapsedTimer elapsed;
        elapsed.start();
        QCOMPARE(loop.exec(50), 0);
        QVERIFY2(elapsed.elapsed() >= 49, qPrintable(QString::number(elapsed.elapsed())));
        QVERIFY(!loop.isRunning());
    }

    void eventsAreServedMeanwhile()
    {
        JxEventLoop loop;
        int ticks = 0;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] {
            if (++ticks == 3)
                loop.quit();
        });
        timer.start(1);
        QCOMPARE(loop.exec(60000), 0);
        QCOMPARE(ticks, 3);
    }

    void exitGivesItsCode()
    {
        JxEventLoop loop;
        QTimer::singleShot(0, &loop, [&] { loop.exit(7); });
        QCOMPARE(loop.exec(60000), 7);
    }

    void belowZeroThereIsNoLimit()
    {
        JxEventLoop loop;
        bool quit = false;
        QTimer::singleShot(30, &loop, [&] {
            quit = true;
            loop.quit();
        });
        QCOMPARE(loop.exec(-1), 0);
        QVERIFY(quit);
    }

    void zeroServesWhatIsPending()
    {
        JxEventLoop loop;
        bool served = false;
        QMetaObject::invokeMethod(
            this, [&] { served = true; }, Qt::QueuedConnection);
        QCOMPARE(loop.exec(0), 0);
        QVERIFY(served);
    }

    void aRunningLoopRefusesASecondWait()
    {
        JxEventLoop loop;
        std::optional<int> inner;
        QTimer::singleShot(0, &loop, [&] {
            inner = loop.exec(60000);
            loop.exit(3);
        });
        QCOMPARE(loop.exec(60000), 3);
        QCOMPARE(inner.value_or(0), -1);
    }

    void aLoopIsUsedAgain()
    {
        JxEventLoop loop;
        QTimer::singleShot(0, &loop, [&] { loop.exit(1); });
        QCOMPARE(loop.exec(60000), 1);
        QCOMPARE(loop.exec(10), 0);
    }

    void aTimeLimitEndsWithItsWait()
    {
        JxEventLoop loop;
        QTimer::singleShot(0, &loop, &QEventLoop::quit);
        QCOMPARE(loop.exec(20), 0);
        // The limit of the first wait would end the second one with 0.
        QTimer::singleShot(60, &loop, [&] { loop.exit(5); });
        QCOMPARE(loop.exec(60000), 5);
    }

    void loopsNest()
    {
        JxEventLoop outer;
        std::optional<int> inner;
        QTimer::singleShot(0, &outer, [&] {
            JxEventLoop nested;
            inner = nested.exec(5);
            outer.exit(2);
        });
        QCOMPARE(outer.exec(60000), 2);
        QCOMPARE(inner.value_or(-1), 0);
    }

    void theFlagsSayWhatIsServed_data()
    {
        QTest::addColumn<bool>("withSockets");
        QTest::newRow("all") << true;
        QTest::newRow("no sockets") << false;
    }
    void theFlagsSayWhatIsServed()
    {
        QFETCH(bool, withSockets);
        // On the loop of GLib sockets can't be left out; a thread may have the other one.
        qputenv("QT_NO_GLIB", "1");
        bool served = false;
        const std::unique_ptr<QThread> thread(QThread::create([&] { served = servesAPipe(withSockets); }));
        thread->start();
        QVERIFY(thread->wait(60000));
        qunsetenv("QT_NO_GLIB");
        QCOMPARE(served, withSockets);
    }

private:
    /// Whether a byte in a pipe is told during a wait.
    static bool servesAPipe(bool inWithSockets)
    {
        int ends[2];
        if (pipe(ends) != 0 || write(ends[1], "x", 1) != 1)
            qFatal("No pipe");
        bool served = false;
        QSocketNotifier notifier(ends[0], QSocketNotifier::Read);
        connect(&notifier, &QSocketNotifier::activated, &notifier, [&] {
            served = true;
            notifier.setEnabled(false);
        });
        JxEventLoop loop;
        loop.exec(20, inWithSockets ? QEventLoop::AllEvents : QEventLoop::ExcludeSocketNotifiers);
        notifier.setEnabled(false);
        close(ends[0]);
        close(ends[1]);
        return served;
    }
};

KY_TEST_MAIN(TestJxEventLoop)

#include "tst_JxEventLoop.moc"
