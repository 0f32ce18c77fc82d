// The samples of the guide on viewers, each run by kyrun on the sample studies.

#include <support/KyTest.h>

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

class tst_viewerGuide : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void samplesPrintWhatTheGuideSays_data();
    void samplesPrintWhatTheGuideSays();
    void furtherViewersAreFilled();

private:
    QByteArray output(const QStringList& inArguments);

    QTemporaryDir mSample;
};

void tst_viewerGuide::initTestCase()
{
    QCOMPARE(QProcess::execute(KYSAMPLE, {"--fusion", mSample.path()}), 0);
}

QByteArray tst_viewerGuide::output(const QStringList& inArguments)
{
    QProcess process;
    process.start(KYRUN, QStringList{"--studies", mSample.path()} + inArguments);
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        return "failed: " + process.readAllStandardError();
    return process.readAllStandardOutput();
}

void tst_viewerGuide::samplesPrintWhatTheGuideSays_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("printed");
    QFile guide(GUIDE);
    QVERIFY(guide.open(QIODevice::ReadOnly));
    const QRegularExpression sample("```js\n(.*?)```\n\n```\n(.*?)```",
                                    QRegularExpression::DotMatchesEverythingOption);
    int count = 0;
    for (const auto& match : sample.globalMatch(QString::fromUtf8(guide.readAll())))
        QTest::addRow("sample %d", ++count) << match.captured(1) << match.captured(2);
    QVERIFY(count >= 5);
}

void tst_viewerGuide::samplesPrintWhatTheGuideSays()
{
    QFETCH(QString, code);
    QTEST(QString::fromUtf8(output({"-e", code})), "printed");
}

void tst_viewerGuide::furtherViewersAreFilled()
{
    QCOMPARE(output({"--property", "Viewers.Layout=2x2", "-e",
                     "print([1, 2, 3, 4].map(i => "
                     "Orvane.viewer(String(i)).getTag('DICOM.SeriesDescription')).join('; '))"}),
             "Weichteil 5 mm; Weichteil 5 mm; Weichteil 5 mm; Lunge 2,5 mm\n");
    QCOMPARE(output({"--trigger", "Viewers.Layout1x2", "-e", "print(Orvane.viewer('2') === null)"}),
             "true\n");
}

KY_TEST_MAIN(tst_viewerGuide)
#include "tst_viewerGuide.moc"
