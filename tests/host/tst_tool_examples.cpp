// The tool files of examples/tools and the samples of the guides on tools and the application, run by kyrun
// on the sample studies.

#include <support/KyTest.h>

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QXmlStreamReader>

class tst_tool_examples : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void everyExampleIsWellMade_data();
    void everyExampleIsWellMade();

    void patientIsCopied();
    void priorIsFound();
    void reportIsFilled();
    void reportOfTheUserStays();
    void templateIsInserted();
    void reportGoesToWord();
    void reminderIsShownAndTakenAway();
    void layoutIsSwitched();
    void statusIsShown();
    void examplesWorkWithoutStudies_data();
    void examplesWorkWithoutStudies();

    void samplesOfTheApplicationGuideRun();
    void fileOfTheToolGuideWorks();
    void checkableToolOfTheGuideWorks();

private:
    struct Outcome
    {
        int status;
        QString out;
        QString err;
    };
    Outcome run(const QStringList& inArguments) const;
    /// Runs the example on the sample and triggers the tools, then a script on their engine that writes what
    /// it finds to the log; gives that, or all that stands on standard error when something went wrong.
    QString probe(const QString& inFile, const QStringList& inKeys, const QByteArray& inProbe,
                  const QStringList& inMore = {}) const;

    /// The blocks of that language in a guide.
    QStringList samples(const QString& inGuide, const QString& inLanguage) const;
    /// A file with one tool.
    QString toolFile(const QByteArray& inAttributes, const QByteArray& inScript) const;

    QTemporaryDir mFolder;
    QString mSample;
};

void tst_tool_examples::initTestCase()
{
    QVERIFY(mFolder.isValid());
    mSample = mFolder.filePath("sample");
    QCOMPARE(QProcess::execute(KYSAMPLE, {mSample}), 0);
}

tst_tool_examples::Outcome tst_tool_examples::run(const QStringList& inArguments) const
{
    QProcess process;
    process.start(KYRUN, inArguments);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return {-1, QString(), "crashed or hung: " + process.readAllStandardError()};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

QString tst_tool_examples::probe(const QString& inFile, const QStringList& inKeys, const QByteArray& inProbe,
                                 const QStringList& inMore) const
{
    QFile file(mFolder.filePath("probe.xml"));
    if (!file.open(QIODevice::WriteOnly))
        return file.errorString();
    file.write("<Tools ScriptEngine='site'><Tool Id='Probe' "
               "Enabled='whensupported'><OnSet><![CDATA[Message.warn('probe: ' + (" +
               inProbe + "))]]></OnSet></Tool></Tools>");
    file.close();

    QStringList arguments{"--studies", mSample,        "--tools", QStringLiteral(TOOLS "/") + inFile,
                          "--tools",   file.fileName()};
    for (const QString& key : inKeys + QStringList("Probe"))
        arguments += {"--trigger", key};
    const Outcome outcome = run(arguments + inMore);
    static const QRegularExpression line("^\\S+ \\S+ 2 \\[Script Interface\\] probe: ([^$]*)\n$");
    const auto match = line.match(outcome.err);
    return outcome.status == 0 && match.hasMatch() ? match.captured(1) : outcome.out + outcome.err;
}

void tst_tool_examples::everyExampleIsWellMade_data()
{
    QTest::addColumn<QString>("file");
    const QStringList files = QDir(TOOLS).entryList({"*.xml"}, QDir::Files);
    QCOMPARE(files.size(), 8);
    for (const QString& file : files)
        QTest::newRow(qPrintable(file)) << file;
}

/// Its icons are there, it has texts for people, and it does not depend on the default engine.
void tst_tool_examples::everyExampleIsWellMade()
{
    QFETCH(QString, file);
    QFile xml(QStringLiteral(TOOLS "/") + file);
    QVERIFY(xml.open(QIODevice::ReadOnly));
    QXmlStreamReader reader(&xml);
    int tools = 0;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement() && reader.name() == QLatin1String("Tools"))
            QCOMPARE(reader.attributes().value("ScriptEngine").toString(), QStringLiteral("site"));
        if (!reader.isStartElement() || reader.name() != QLatin1String("Tool"))
            continue;
        ++tools;
        const auto attributes = reader.attributes();
        QVERIFY(attributes.value("Id").startsWith(QLatin1String("Site.")));
        QVERIFY(!attributes.value("Label").isEmpty() && !attributes.value("Tooltip").isEmpty());
        QVERIFY(attributes.hasAttribute("Icon"));
    }
    QVERIFY2(!reader.hasError(), qPrintable(reader.errorString()));
    QCOMPARE(tools, 1);
    const Outcome outcome = run({"--tools", xml.fileName(), "-e", "0"});
    QCOMPARE(outcome.err, QString());
    QCOMPARE(outcome.status, 0);
}

void tst_tool_examples::patientIsCopied()
{
    const Outcome outcome = run({"--studies", mSample, "--tools", TOOLS "/copy-patient.xml", "--log", "-",
                                 "--trigger", "Site.CopyPatient"});
    QVERIFY2(outcome.err.contains(QString::fromUtf8("Copied text to clipboard: Müller, Änne; SAMPLE-1001; ")),
             qPrintable(outcome.err));
    QCOMPARE(outcome.status, 0);
    const QString tip =
        probe("copy-patient.xml", {"Site.CopyPatient"}, "Orvane.tool('Site.CopyPatient').toolTip");
    QVERIFY2(tip.startsWith(QString::fromUtf8("Copied: Müller, Änne; SAMPLE-1001; ")), qPrintable(tip));
}

/// The earlier one than what the active viewer shows.
void tst_tool_examples::priorIsFound()
{
    const QByteArray texts =
        "[Orvane.activeViewer().getTag('DICOM.StudyDescription'), Orvane.tool('Site.FindPrior').text,"
        " Orvane.tool('Site.FindPrior').toolTip].join('|')";
    const QString none = probe("prior-finder.xml", {"Site.FindPrior"}, texts);
    QCOMPARE(none, QStringLiteral("CT Thorax nativ, Erstuntersuchung|No Prior|No earlier study"));
    const QString found = probe("prior-finder.xml", {"Site.FindPrior"}, texts,
                                {"--property", "Viewers.Layout=2x2", "-e", "Orvane.activateViewer('2')"});
    QVERIFY2(found.startsWith(QString::fromUtf8("CT Thorax, Verlauf für Rundherd|Prior: ")) &&
                 found.contains("2024|") && found.endsWith(" 2024 CT Thorax nativ, Erstuntersuchung"),
             qPrintable(found));
}

void tst_tool_examples::reportIsFilled()
{
    const QString text =
        probe("report-template.xml", {"Site.ReportTemplate"}, "Orvane.editor('Report').text");
    QVERIFY2(text.startsWith("CT Thorax") &&
                 text.contains(QString::fromUtf8("Patient: Müller, Änne, SAMPLE-1001\n")) &&
                 text.contains("Lungs: [") && text.contains("Impression: [") && !text.contains("[NAME]"),
             qPrintable(text));
}

void tst_tool_examples::reportOfTheUserStays()
{
    const QString text =
        probe("report-template.xml", {"Site.ReportTemplate"},
              "Orvane.editor('Report').text + '|' + Orvane.tool('Site.ReportTemplate').toolTip",
              {"-e", "Orvane.editor('Report').text = 'by hand'"});
    QCOMPARE(text, QStringLiteral("by hand|The report is not empty"));
}

/// At the cursor, in place of what is selected, also twice.
void tst_tool_examples::templateIsInserted()
{
    const QStringList before{"-e",
                             "Orvane.editor('Report').text = 'by hand'; new RichEditCtrl({ windowClassName: "
                             "'OvReportEditor' }).setSelection(7, 7)"};
    QCOMPARE(probe("insert-template.xml", {"Site.InsertTemplate"},
                   "Orvane.editor('Report').text.replace(/\\n/g, '/')", before),
             QStringLiteral("by handLungs: Clear, no nodules./Mediastinum: No enlarged lymph nodes."));
    const QString twice = probe("insert-template.xml", {"Site.InsertTemplate", "Site.InsertTemplate"},
                                "Orvane.editor('Report').text.replace(/\\n/g, '/')");
    QCOMPARE(twice.count("Lungs:"), 2);
}

void tst_tool_examples::reportGoesToWord()
{
    const Outcome outcome = run({"--tools", TOOLS "/report-to-word.xml", "-e",
                                 "Orvane.editor('Report').text = 'x'", "--trigger", "Site.ReportToWord"});
    QVERIFY2(outcome.err.contains("Could not initialize COM."), qPrintable(outcome.err));
    QCOMPARE(probe("report-to-word.xml", {"Site.ReportToWord"}, "Orvane.tool('Site.ReportToWord').toolTip"),
             QStringLiteral("There is no report on view, or it is empty"));
}

void tst_tool_examples::reminderIsShownAndTakenAway()
{
    const QStringList tool{"--studies", mSample, "--tools",   TOOLS "/measurement-reminder.xml",
                           "--log",     "-",     "--trigger", "Site.MeasureReminder"};
    const QString hint = "[Viewers] Hint in viewer 1: ";
    const QString shown = "Measure: nodules above 6 mm\n";
    const Outcome on = run(tool);
    QCOMPARE(on.status, 0);
    QCOMPARE(on.err.count(hint), 1);
    QVERIFY2(on.err.contains(hint + shown), qPrintable(on.err));
    const Outcome off = run(tool + QStringList({"--trigger", "Site.MeasureReminder"}));
    QCOMPARE(off.status, 0);
    QCOMPARE(off.err.count(hint), 2);
    QVERIFY2(off.err.contains(hint + "\n"), qPrintable(off.err));
    QCOMPARE(
        probe(
            "measurement-reminder.xml", {"Site.MeasureReminder"},
            "[Orvane.tool('Site.MeasureReminder').checked, Orvane.tool('Site.MeasureReminder').text].join()"),
        QStringLiteral("true,Reminding"));
}

void tst_tool_examples::layoutIsSwitched()
{
    const QByteArray viewers =
        "['1', '2', '3', '4'].filter(function(id) { return Orvane.viewer(id); }).length + ' ' + "
        "['1x1', '1x2', '2x2'].filter(function(l) { return Orvane.tool('Viewers.Layout' + l).checked; })";
    QStringList steps;
    for (int count = 0; count < 4; ++count)
        steps.append(probe("layout-switcher.xml", QStringList(count, "Site.NextLayout"), viewers));
    QCOMPARE(steps, QStringList({"1 1x1", "2 1x2", "4 2x2", "1 1x1"}));
    // The tool of the layout that is there stays on.
    QCOMPARE(probe("layout-switcher.xml", {"Viewers.Layout1x2", "Viewers.Layout1x2"}, viewers),
             QStringLiteral("2 1x2"));
}

void tst_tool_examples::statusIsShown()
{
    const QString text = probe("worklist-status.xml", {"Site.WorklistStatus", "Site.WorklistStatus"},
                               "statusBox.title() + '|' + statusBox.fieldText('plaintext')");
    QVERIFY2(text.startsWith("Worklist status|") && text.contains("CT Thorax nativ, Erstuntersuchung") &&
                 text.contains("completed") && text.contains("scheduled"),
             qPrintable(text));
}

void tst_tool_examples::examplesWorkWithoutStudies_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("key");
    QTest::newRow("copy") << "copy-patient.xml"
                          << "Site.CopyPatient";
    QTest::newRow("prior") << "prior-finder.xml"
                           << "Site.FindPrior";
    QTest::newRow("layout") << "layout-switcher.xml"
                            << "Site.NextLayout";
    QTest::newRow("status") << "worklist-status.xml"
                            << "Site.WorklistStatus";
    QTest::newRow("report") << "report-template.xml"
                            << "Site.ReportTemplate";
}

void tst_tool_examples::examplesWorkWithoutStudies()
{
    QFETCH(QString, file);
    QFETCH(QString, key);
    const Outcome outcome = run({"--tools", QStringLiteral(TOOLS "/") + file, "--trigger", key});
    QCOMPARE(outcome.err, QString());
    QCOMPARE(outcome.status, 0);
}

QStringList tst_tool_examples::samples(const QString& inGuide, const QString& inLanguage) const
{
    QFile guide(QStringLiteral(GUIDES "/") + inGuide);
    if (!guide.open(QIODevice::ReadOnly))
        return {};
    const QRegularExpression block("```" + inLanguage + "\n(.*?)```",
                                   QRegularExpression::DotMatchesEverythingOption);
    QStringList found;
    for (const auto& match : block.globalMatch(QString::fromUtf8(guide.readAll())))
        found.append(match.captured(1));
    return found;
}

QString tst_tool_examples::toolFile(const QByteArray& inAttributes, const QByteArray& inScript) const
{
    QFile file(mFolder.filePath("tool.xml"));
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write a tool file");
    file.write("<Tools><Tool " + inAttributes + "><OnSet>\n<![CDATA[" + inScript +
               "]]></OnSet></Tool></Tools>");
    return file.fileName();
}

/// Each sample is followed by a line that shows what it has done.
void tst_tool_examples::samplesOfTheApplicationGuideRun()
{
    const QStringList all = samples("application.md", "js");
    QCOMPARE(all.size(), 3);
    const QString editor =
        toolFile("Id='Report.Editor' Enabled='whensupported'", "Message.warn('the editor is opened')");
    const Outcome tool = run({"--tools", editor, "-e", all[0] + "\nprint(editor.text)"});
    QCOMPARE(tool.out, QStringLiteral("Report.Editor\n"));
    QVERIFY2(tool.err.contains("the editor is opened\n"), qPrintable(tool.err));
    QCOMPARE(tool.status, 0);
    // It looks whether there is such a tool.
    const Outcome without = run({"-e", all[0]});
    QCOMPARE(without.err + without.out, QString());
    QCOMPARE(without.status, 0);

    const Outcome report = run({"-e", all[1] + "\nprint(report.text)"});
    QCOMPARE(report.err, QString());
    QCOMPARE(report.out, QStringLiteral("Patient: Doe, Jane\n"));

    const Outcome numbers = run({"--studies", mSample, "-e", all[2] + "\nprint(Orvane.isOutOfSync())"});
    QCOMPARE(numbers.out, QStringLiteral("true\n"));
    QVERIFY2(numbers.err.endsWith("other studies are open\n"), qPrintable(numbers.err));
    QCOMPARE(numbers.status, 0);
}

void tst_tool_examples::fileOfTheToolGuideWorks()
{
    const QStringList files = samples("tools.md", "xml");
    QCOMPARE(files.size(), 1);
    QFile file(mFolder.filePath("hello.xml"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(files[0].toUtf8());
    file.close();
    const Outcome hello = run({"--studies", mSample, "--tools", file.fileName(), "--trigger", "Site.Hello"});
    QVERIFY2(hello.err.endsWith("2 [Site.Hello] Hello from 3 studies\n"), qPrintable(hello.err));
    QCOMPARE(hello.err.count('\n'), 1);
    QCOMPARE(hello.status, 0);
    const Outcome misspelt = run({"--tools", file.fileName(), "--trigger", "Site.Helo"});
    QCOMPARE(misspelt.err, QStringLiteral("kyrun: There is no tool \"Site.Helo\"; there are Site.Hello\n"));
    QFile guide(GUIDES "/tools.md");
    QVERIFY(guide.open(QIODevice::ReadOnly) && guide.readAll().contains(misspelt.err.toUtf8()));
    QCOMPARE(misspelt.status, 2);
}

void tst_tool_examples::checkableToolOfTheGuideWorks()
{
    const QStringList all = samples("tools.md", "js");
    QCOMPARE(all.size(), 1);
    const QStringList tool{
        "--studies", mSample, "--tools",   toolFile("Id='Site.Reminder' Checkable='1'", all[0].toUtf8()),
        "--log",     "-",     "--trigger", "Site.Reminder"};
    const QString hint = "[Viewers] Hint in viewer 1: ";
    const Outcome on = run(tool);
    QVERIFY2(on.err.contains(hint + "Measure the nodules\n"), qPrintable(on.err));
    const Outcome off = run(tool + QStringList({"--trigger", "Site.Reminder"}));
    QCOMPARE(off.err.count(hint), 2);
    QVERIFY2(off.err.contains(hint + "\n"), qPrintable(off.err));
    QCOMPARE(off.status, 0);
}

KY_TEST_MAIN(tst_tool_examples)
#include "tst_tool_examples.moc"
