#include <support/KyTest.h>

#include <rnlib/RnWatch.h>

#include <QElapsedTimer>

class TestRnWatch final : public QObject
{
    Q_OBJECT

private slots:
    void itCountsWholeMilliseconds()
    {
        QElapsedTimer around;
        around.start();
        const RnWatch watch;
        QElapsedTimer within;
        within.start();
        QTRY_VERIFY(within.elapsed() >= 20);
        const long long inner = within.elapsed();
        const long long measured = watch.milliseconds();
        QVERIFY(inner <= measured);
        QVERIFY(measured <= around.elapsed());
    }

    void restartBeginsAnew()
    {
        RnWatch watch;
        QTRY_VERIFY(watch.milliseconds() >= 20);
        QElapsedTimer around;
        around.start();
        const long long before = watch.milliseconds();
        watch.restart();
        QVERIFY(watch.milliseconds() <= around.elapsed());
        QVERIFY(watch.milliseconds() < before);
    }
};

KY_TEST_MAIN(TestRnWatch)

#include "tst_RnWatch.moc"
