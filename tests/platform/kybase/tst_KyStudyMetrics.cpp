#include <kybase/KyStudyMetrics.h>

#include <QTest>

#include <limits>

class tst_KyStudyMetrics : public QObject
{
    Q_OBJECT

private slots:
    void nobodyIsHomeWithoutAnObject();
    void timesOfAStudyAddUp();
    void anUnknownStudyHasNoTime();
    void whatIsNoTimeIsIgnored_data();
    void whatIsNoTimeIsIgnored();
    void manySmallTimesAllCount();
};

void tst_KyStudyMetrics::nobodyIsHomeWithoutAnObject()
{
    QCOMPARE(KyStudyMetrics::instance(), nullptr);
    {
        KyStudyMetrics metrics;
        QCOMPARE(KyStudyMetrics::instance(), &metrics);
    }
    QCOMPARE(KyStudyMetrics::instance(), nullptr);
}

void tst_KyStudyMetrics::timesOfAStudyAddUp()
{
    KyStudyMetrics metrics;
    metrics.addTimeSpent(QStringLiteral("1.2"), 1.5F);
    metrics.addTimeSpent(QStringLiteral("1.2"), 2.25F);
    metrics.addTimeSpent(QStringLiteral("1.3"), 7.0F);
    QCOMPARE(metrics.getTimeSpent(QStringLiteral("1.2")), 3.75F);
    QCOMPARE(metrics.getTimeSpent(QStringLiteral("1.3")), 7.0F);
}

void tst_KyStudyMetrics::anUnknownStudyHasNoTime()
{
    const KyStudyMetrics metrics;
    QCOMPARE(metrics.getTimeSpent(QStringLiteral("1.2")), 0.0F);
    QCOMPARE(metrics.getTimeSpent(QString()), 0.0F);
}

void tst_KyStudyMetrics::whatIsNoTimeIsIgnored_data()
{
    QTest::addColumn<QString>("study");
    QTest::addColumn<float>("seconds");
    QTest::newRow("negative") << QStringLiteral("1.2") << -1.0F;
    QTest::newRow("not a number") << QStringLiteral("1.2") << std::numeric_limits<float>::quiet_NaN();
    QTest::newRow("no study") << QString() << 1.0F;
}

void tst_KyStudyMetrics::whatIsNoTimeIsIgnored()
{
    QFETCH(QString, study);
    QFETCH(float, seconds);
    KyStudyMetrics metrics;
    metrics.addTimeSpent(study, seconds);
    QCOMPARE(metrics.getTimeSpent(study), 0.0F);
}

void tst_KyStudyMetrics::manySmallTimesAllCount()
{
    KyStudyMetrics metrics;
    const QString study = QStringLiteral("1.2");
    metrics.addTimeSpent(study, 100000.0F);
    for (int i = 0; i < 100000; ++i)
        metrics.addTimeSpent(study, 0.001F);
    QVERIFY(qAbs(metrics.getTimeSpent(study) - 100100.0F) < 1.0F);
}

QTEST_APPLESS_MAIN(tst_KyStudyMetrics)
#include "tst_KyStudyMetrics.moc"
