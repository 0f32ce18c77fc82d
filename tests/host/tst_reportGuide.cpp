// The samples of the guide on report text, each run by kyrun.

#include <support/KyTest.h>

#include <QFile>
#include <QProcess>
#include <QRegularExpression>

class tst_reportGuide : public QObject
{
    Q_OBJECT

private slots:
    void samplesPrintWhatTheGuideSays_data();
    void samplesPrintWhatTheGuideSays();
    void linesOfTheLogAreThoseOfTheGuide();
    void reportIsThatOfTheEditor();
};

void tst_reportGuide::samplesPrintWhatTheGuideSays_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("printed");
    QFile guide(GUIDE);
    QVERIFY(guide.open(QIODevice::ReadOnly));
    const QRegularExpression sample("```js\n(.*?)```\n\n```\n(.*?)```",
                                    QRegularExpression::DotMatchesEverythingOption);
    const QString text = QString::fromUtf8(guide.readAll());
    int count = 0;
    for (const auto& match : sample.globalMatch(text))
        QTest::addRow("sample %d", ++count) << match.captured(1) << match.captured(2);
    QCOMPARE(count, int(text.count("```js")));
    QVERIFY(count >= 6);
}

namespace {

QByteArray run(const QStringList& inArguments, QByteArray* outErrors = nullptr)
{
    QProcess process;
    process.start(KYRUN, inArguments);
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        return "failed: " + process.readAllStandardError();
    if (outErrors)
        *outErrors = process.readAllStandardError();
    return process.readAllStandardOutput();
}

} // namespace

void tst_reportGuide::samplesPrintWhatTheGuideSays()
{
    QFETCH(QString, code);
    QTEST(QString::fromUtf8(run({"-e", code})), "printed");
}

void tst_reportGuide::linesOfTheLogAreThoseOfTheGuide()
{
    QByteArray log;
    run({"--log", "-", "-e", "new RichEditCtrl({ processName: 'a', windowClassName: 'b' }).isValid()"}, &log);
    QVERIFY2(log.contains(" 1 [KyScriptRichEdit] RichEdit not found (processName 'a', windowClassName 'b'"),
             log.constData());
    run({"-e", "new WordCtrl().insertString('x')"}, &log);
    QVERIFY2(log.contains(" 3 Could not initialize COM."), log.constData());
}

/// As the application's own object has it.
void tst_reportGuide::reportIsThatOfTheEditor()
{
    QCOMPARE(run({"-p", "-e",
                  "new RichEditCtrl({ windowClassName: 'OvReportEditor' }).setHtml('<b>x</b>');"
                  "Orvane.editor('Report').append('y'); "
                  "new RichEditCtrl({ windowClassName: 'OvReportEditor' }).getText() + "
                  "Orvane.editor('Report').text"}),
             QByteArray("xyxy\n"));
}

KY_TEST_MAIN(tst_reportGuide)
#include "tst_reportGuide.moc"
