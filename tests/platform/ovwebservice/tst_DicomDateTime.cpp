#include <support/KyTest.h>

#include <ovwebservice/DicomDateTime.h>

#include <QTimeZone>

class TestDicomDateTime final : public QObject
{
    Q_OBJECT

private slots:
    void datesAreRead_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QDate>("expected");
        QTest::newRow("plain") << "20240229" << QDate(2024, 2, 29);
        QTest::newRow("with points") << "1991.12.31" << QDate(1991, 12, 31);
        for (const char* wrong : {"", "2024", "202402", "20230229", "20241332", "00000000", "2024-02-29",
                                  "1991.1.31", "20240229x", "+2024022", "20240101-20241231", "199.112.31"})
            QTest::newRow(wrong) << wrong << QDate();
    }
    void datesAreRead()
    {
        QFETCH(QString, text);
        QFETCH(QDate, expected);
        const auto date = Ovg::parseDicomDate(text);
        QCOMPARE(date.has_value(), expected.isValid());
        QCOMPARE(date.value_or(QDate()), expected);
    }

    void timesAreRead_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QTime>("expected");
        QTest::newRow("hours") << "08" << QTime(8, 0);
        QTest::newRow("minutes") << "0845" << QTime(8, 45);
        QTest::newRow("seconds") << "084512" << QTime(8, 45, 12);
        QTest::newRow("tenths") << "084512.5" << QTime(8, 45, 12, 500);
        QTest::newRow("thousandths") << "084512.375" << QTime(8, 45, 12, 375);
        QTest::newRow("millionths are cut") << "084512.375999" << QTime(8, 45, 12, 375);
        QTest::newRow("small fraction") << "084512.000001" << QTime(8, 45, 12);
        QTest::newRow("last moment") << "235959.999999" << QTime(23, 59, 59, 999);
        QTest::newRow("midnight") << "000000" << QTime(0, 0);
        QTest::newRow("colons") << "08:45:12" << QTime(8, 45, 12);
        QTest::newRow("colons and fraction") << "08:45:12.25" << QTime(8, 45, 12, 250);
        for (const char* wrong :
             {"", "8", "084", "08451", "24", "0860", "084561", "084512.", "084512.1234567", "0845.5",
              "084512,5", "08451x", "084512.5x", ".5", "0845-0900", "-08"})
            QTest::newRow(wrong) << wrong << QTime();
    }
    void timesAreRead()
    {
        QFETCH(QString, text);
        QFETCH(QTime, expected);
        const auto time = Ovg::parseDicomTime(text);
        QCOMPARE(time.has_value(), expected.isValid());
        QCOMPARE(time.value_or(QTime()), expected);
    }

    void offsetsAreRead_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<int>("seconds");
        QTest::newRow("east") << "+0130" << true << 5400;
        QTest::newRow("west") << "-0800" << true << -28800;
        QTest::newRow("none") << "+0000" << true << 0;
        for (const char* wrong : {"", "0100", "+100", "+01:00", "+1500", "+0160", "+01000", "Z"})
            QTest::newRow(wrong) << wrong << false << 0;
    }
    void offsetsAreRead()
    {
        QFETCH(QString, text);
        const auto offset = Ovg::parseDicomUtcOffset(text);
        QTEST(offset.has_value(), "ok");
        QTEST(offset.value_or(0), "seconds");
    }

    void instantsAreRead_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QDateTime>("expected");
        const auto local = [](QDate date, QTime time) { return QDateTime(date, time); };
        const auto at = [](QDate date, QTime time, int seconds) {
            return QDateTime(date, time, QTimeZone(seconds));
        };
        QTest::newRow("year") << "2024" << local({2024, 1, 1}, {0, 0});
        QTest::newRow("month") << "202403" << local({2024, 3, 1}, {0, 0});
        QTest::newRow("day") << "20240311" << local({2024, 3, 11}, {0, 0});
        QTest::newRow("hour") << "2024031108" << local({2024, 3, 11}, {8, 0});
        QTest::newRow("fraction") << "20240311084512.25" << local({2024, 3, 11}, {8, 45, 12, 250});
        QTest::newRow("offset") << "20240311084512.375-0500" << at({2024, 3, 11}, {8, 45, 12, 375}, -18000);
        QTest::newRow("year and offset") << "2024+0100" << at({2024, 1, 1}, {0, 0}, 3600);
        for (const char* wrong :
             {"", "202", "20240", "2024033", "20241301", "202403110", "2024031124", "20240311084512.",
              "20240311+1", "20240311+9900", "+0100", "2024031108:45:12", "x0240311"})
            QTest::newRow(wrong) << wrong << QDateTime();
    }
    void instantsAreRead()
    {
        QFETCH(QString, text);
        QFETCH(QDateTime, expected);
        const auto instant = Ovg::parseDicomDateTime(text, std::nullopt);
        QCOMPARE(instant.has_value(), expected.isValid());
        QCOMPARE(instant.value_or(QDateTime()), expected);
    }

    void anInstantWithoutOffsetTakesTheDataSets()
    {
        const auto instant = Ovg::parseDicomDateTime(QStringLiteral("20240311084512"), 7200);
        QVERIFY(instant.has_value());
        QCOMPARE(instant->toUTC(), QDateTime({2024, 3, 11}, {6, 45, 12}, Qt::UTC));
        const auto own = Ovg::parseDicomDateTime(QStringLiteral("20240311084512+0000"), 7200);
        QVERIFY(own.has_value());
        QCOMPARE(own->toUTC(), QDateTime({2024, 3, 11}, {8, 45, 12}, Qt::UTC));
    }
};

KY_TEST_MAIN(TestDicomDateTime)

#include "tst_DicomDateTime.moc"
