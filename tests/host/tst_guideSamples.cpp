// The samples of the guides on settings and on timers, each run by kyrun as a user runs it.

#include <support/KyTest.h>

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

namespace {

/// What is run around a sample, and what both print.
struct Frame
{
    const char* before;
    const char* after;
    const char* printed;
};

/// One for each sample of settings.md, in its order.
constexpr Frame Settings[] = {
    {"", "print(Orvane.propertyVariant('Scripting.LogNumLines'));", "1\n1\n1\n"},
    {"",
     "print(Orvane.propertyVariant('MyTool.Report.AutoSign'));"
     "print(Orvane.propertyVariant('MyTool.Report.Sections'));"
     "Orvane.setPropertyVariant('MyTool.Zoom', 2.5); print(Orvane.propertyVariant('MyTool.Zoom'));",
     "true\nFindings,Impression\n2.5\n"},
    {"", "print(Orvane.getRegistryValue('MyTool/LastFolder', 'none yet'));",
     "/data/in\nLastFolder\nnone yet\n"},
    {"", "print(Orvane.getRegistryValue('HKEY_CURRENT_USER/Software/MyMaker/Station'));",
     "MyMaker/Station\nCT 2\n"},
    {"Orvane.setRegistryValue('MyTool/Count', '4'); Orvane.setRegistryValue('MyTool/IsOn', 'true');",
     "print(count); print(isOn); print(Orvane.getRegistryValue('MyTool/Count'));", "5\ntrue\n5\n"},
};

/// Likewise of timers.md.
constexpr Frame Timers[] = {
    {"", "print(reminder.isSingleShot()); print(reminder.remainingTime() > 9 * 60 * 1000);", "true\ntrue\n"},
    {"function tick() {}", "", ""},
    {"", "later(1, function() { print('done'); Runner.exit(0); }); Runner.keepRunning = true;", "done\n"},
    {"", "print(ids.generateId() !== ids.generateId()); print(ids.generateUuid().length);", "true\n36\n"},
    {"var ids = new IdGenerator();",
     "print(ids.asciiHash('abc')); print(ids.asciiHash('abc', 4)); print(ids.sigmoidHash('abc'));",
     "ZJ0S9GV8G0BF\nZJ0S\n0.21189270913600922\n"},
};

QStringList samplesOf(const char* inGuide)
{
    QFile guide(QStringLiteral(GUIDES "/%1.md").arg(inGuide));
    if (!guide.open(QIODevice::ReadOnly))
        return {};
    const QRegularExpression block("```js\n(.*?)```", QRegularExpression::DotMatchesEverythingOption);
    QStringList samples;
    for (const auto& match : block.globalMatch(QString::fromUtf8(guide.readAll())))
        samples.append(match.captured(1));
    return samples;
}

} // namespace

class tst_guideSamples : public QObject
{
    Q_OBJECT

private slots:
    void samplesDoWhatTheGuideSays_data();
    void samplesDoWhatTheGuideSays();
    void hashesStandInTheGuideAsTheyAre();
};

void tst_guideSamples::samplesDoWhatTheGuideSays_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("printed");
    const auto add = [](const char* guide, const auto& frames) {
        const QStringList samples = samplesOf(guide);
        QCOMPARE(samples.size(), qsizetype(std::size(frames)));
        for (int i = 0; i < int(samples.size()); ++i)
            QTest::addRow("%s %d", guide, i + 1)
                << QStringLiteral("%1\n%2\n%3").arg(frames[i].before, samples.at(i), frames[i].after)
                << frames[i].printed;
    };
    add("settings", Settings);
    add("timers", Timers);
}

void tst_guideSamples::samplesDoWhatTheGuideSays()
{
    QFETCH(QString, code);
    QTemporaryDir profile;
    QProcess process;
    process.start(KYRUN, {"--profile", profile.path(), "-e", code});
    QVERIFY(process.waitForFinished(60000));
    QCOMPARE(QString::fromUtf8(process.readAllStandardError()), QString());
    QTEST(QString::fromUtf8(process.readAllStandardOutput()), "printed");
    QCOMPARE(process.exitCode(), 0);
}

void tst_guideSamples::hashesStandInTheGuideAsTheyAre()
{
    const QString sample = samplesOf("timers").value(4);
    for (const char* hash : {"\"ZJ0S9GV8G0BF\"", "\"ZJ0S\"", " 0.21189270913600922,"})
        QVERIFY2(sample.contains(hash), hash);
}

KY_TEST_MAIN(tst_guideSamples)
#include "tst_guideSamples.moc"
