#include <support/KyTest.h>

#include <QProcess>

class TestRnLifetime final : public QObject
{
    Q_OBJECT

private slots:
    void logAndContractServeStaticObjects()
    {
        QProcess process;
        process.start(QStringLiteral(LIFETIME_SAMPLE), QStringList());
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
        QStringList lines =
            QString::fromUtf8(process.readAllStandardError()).split(u'\n', Qt::SkipEmptyParts);
        for (QString& line : lines)
            line = line.mid(QStringLiteral("2026-01-31 14:05:09.120 ").size());
        QVERIFY2(!lines.isEmpty() && lines.last().startsWith(
                                         QLatin1String("3 [Contract] Contract broken: 0 (last words) in ")),
                 qPrintable(lines.join(u'\n')));
        lines.removeLast();
        QCOMPARE(
            lines,
            QStringList({QStringLiteral("1 [Early] built"), QStringLiteral("1 [Observer] in main"),
                         QStringLiteral("1 [PerThread] destroyed"), QStringLiteral("1 [Early] destroyed")}));
    }
};

KY_TEST_MAIN(TestRnLifetime)

#include "tst_RnLifetime.moc"
