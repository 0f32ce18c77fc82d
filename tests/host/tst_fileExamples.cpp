// What the guide on files shows, run as a user runs it.

#include <support/KyTest.h>

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

class tst_fileExamples : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void studiesAreExportedAsATable();
    void tableThatCannotBeWrittenIsAnError();
    void cellsAreQuoted();
    void studiesAreExportedAsXml();
    void xmlThatCannotBeWrittenIsAnError();
    void forbiddenCharactersAreLeftOut();
    void dictationIsStarted_data();
    void dictationIsStarted();
    void dictationNeedsAProgramAndAStudy();
    void fileIsWatched();
    void watchEndsWhenNobodyWrites();
    void programGoesOnWhenTheClientEnds();
    void samplesOfTheGuideRun_data();
    void samplesOfTheGuideRun();

private:
    struct Outcome
    {
        int status;
        QString out;
        QString err;
    };
    Outcome run(const QStringList& inArguments) const;
    QString path(const QString& inName) const { return mFolder->filePath(inName); }
    static QByteArray read(const QString& inPath);
    static QByteArray source(const QString& inScript) { return read(QStringLiteral(SCRIPTS "/") + inScript); }

    QTemporaryDir mSampleFolder;
    QString mSample;
    std::unique_ptr<QTemporaryDir> mFolder;
};

tst_fileExamples::Outcome tst_fileExamples::run(const QStringList& inArguments) const
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("HOME", mFolder->path());
    environment.insert("ProgramFiles", path("Program Files"));
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(mFolder->path());
    process.start(KYRUN, QStringList({"--timeout", "60"}) + inArguments);
    if (!process.waitForFinished(90000) || process.exitStatus() != QProcess::NormalExit)
        return {-1, QString(), "crashed or hung: " + process.readAllStandardError()};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

QByteArray tst_fileExamples::read(const QString& inPath)
{
    QFile file(inPath);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("not there");
}

void tst_fileExamples::initTestCase()
{
    QVERIFY(mSampleFolder.isValid());
    mSample = mSampleFolder.filePath("sample");
    QCOMPARE(QProcess::execute(KYSAMPLE, {mSample}), 0);
}

void tst_fileExamples::init()
{
    mFolder = std::make_unique<QTemporaryDir>();
    QVERIFY(mFolder->isValid());
}

void tst_fileExamples::studiesAreExportedAsATable()
{
    const Outcome outcome = run({"-s", mSample, SCRIPTS "/export_studies_csv.js", path("studies.csv")});
    QCOMPARE(outcome.err, QString());
    QCOMPARE(outcome.status, 0);
    const QByteArray table = read(path("studies.csv"));
    QVERIFY(table.startsWith("\xef\xbb\xbf"));
    const QStringList lines = QString::fromUtf8(table.mid(3)).split("\r\n");
    QCOMPARE(lines.size(), 5); // head, three studies, and nothing behind the last line break
    QCOMPARE(lines.at(0),
             QString("PatientID,PatientName,AccessionNumber,StudyDate,StudyDescription,StudyInstanceUID"));
    QVERIFY2(
        lines.at(1).startsWith(QString::fromUtf8(
            "SAMPLE-1001,Müller^Änne,A240311001,2024-03-11,\"CT Thorax nativ, Erstuntersuchung\",2.25.")),
        qPrintable(lines.at(1)));
    QVERIFY(lines.at(3).startsWith(QString::fromUtf8("SAMPLE-1002,Sørensen^Bjørn,")));
    QCOMPARE(lines.at(4), QString());
}

void tst_fileExamples::tableThatCannotBeWrittenIsAnError()
{
    const Outcome outcome =
        run({"-s", mSample, SCRIPTS "/export_studies_csv.js", path("missing/studies.csv")});
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.err.contains("Cannot write " + path("missing/studies.csv")));
}

void tst_fileExamples::cellsAreQuoted()
{
    const QString script = QString::fromUtf8(source("export_studies_csv.js")).section("\nvar path", 0, 0);
    QVERIFY(script.contains("function line"));
    const Outcome outcome =
        run({"-p", "-e", script + "\nline(['a', 'b,c', 'd\"e', 'f\\ng', '', text(new Date(2024, 1, 29))])"});
    QCOMPARE(outcome.out, QString("a,\"b,c\",\"d\"\"e\",\"f\ng\",,2024-02-29\r\n\n"));
}

void tst_fileExamples::studiesAreExportedAsXml()
{
    const Outcome outcome = run({"-s", mSample, SCRIPTS "/export_studies_xml.js", path("new/folder")});
    QCOMPARE(outcome.err, QString());
    QCOMPARE(outcome.status, 0);
    QDomDocument document;
    QString error;
    QVERIFY2(document.setContent(read(path("new/folder/studies.xml")), false, &error), qPrintable(error));
    const QDomElement root = document.documentElement();
    QCOMPARE(root.tagName(), QString("studies"));
    QCOMPARE(root.childNodes().count(), 3);
    const QDomElement study = root.firstChildElement("study");
    QVERIFY(study.attribute("uid").startsWith("2.25."));
    QCOMPARE(study.firstChildElement("PatientName").text(), QString::fromUtf8("Müller^Änne"));
    QCOMPARE(study.firstChildElement("StudyDate").text(), QString("2024-03-11"));
    QCOMPARE(study.firstChildElement("ModalitiesInStudy").text(), QString("CT"));
}

void tst_fileExamples::xmlThatCannotBeWrittenIsAnError()
{
    QVERIFY(QFile::copy(SCRIPTS "/export_studies_xml.js", path("file")));
    const Outcome outcome = run({"-s", mSample, SCRIPTS "/export_studies_xml.js", path("file/x")});
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.err.contains("Cannot write to " + path("file/x")));
    QVERIFY(outcome.err.contains("Error creating directory " + path("file/x")));
}

void tst_fileExamples::forbiddenCharactersAreLeftOut()
{
    const QString script = QString::fromUtf8(source("export_studies_xml.js")).section("\nvar folder", 0, 0);
    QVERIFY(script.contains("function clean"));
    const Outcome outcome = run(
        {"-p", "-e",
         script +
             "\nclean('a\\u0001b\\t\\n\\r\\u000b\\ufffec\\ud83d\\ude00d\\ud83de\\ude00\\ude00f\\ude00') === "
             "'ab\\t\\n\\rc\\ud83d\\ude00def'"});
    QCOMPARE(outcome.out, QString("true\n"));
}

void tst_fileExamples::dictationIsStarted_data()
{
    QTest::addColumn<QString>("program");
    QTest::newRow("from the folder of programs") << "Program Files/Dictation/dictate.exe";
    QTest::newRow("named on the command line") << "other program";
}

void tst_fileExamples::dictationIsStarted()
{
    QFETCH(QString, program);
    QVERIFY(QDir().mkpath(QFileInfo(path(program)).path()));
    QFile file(path(program));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$HOME/part\"\nmv \"$HOME/part\" \"$HOME/arguments\"\n");
    file.close();
    QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::ExeOwner));

    QStringList arguments{"--log", path("log"), "-s", mSample, SCRIPTS "/start_dictation.js"};
    if (!program.startsWith("Program Files"))
        arguments.append(path(program));
    const Outcome outcome = run(arguments);
    QCOMPARE(outcome.err, QString());
    QCOMPARE(outcome.status, 0);
    QTRY_COMPARE(read(path("arguments")), QByteArray("--accession\nA240311001\n--patient\nSAMPLE-1001\n"));
    QVERIFY(read(path("log")).contains("[Script Interface] Copied text to clipboard: A240311001\n"));
}

void tst_fileExamples::dictationNeedsAProgramAndAStudy()
{
    const Outcome without = run({"-s", mSample, SCRIPTS "/start_dictation.js"});
    QCOMPARE(without.status, 1);
    QVERIFY(without.err.contains("There is no program Dictation/dictate.exe"));
    const Outcome empty = run({SCRIPTS "/start_dictation.js"});
    QCOMPARE(empty.status, 1);
    QVERIFY(empty.err.contains("There is no study"));
}

void tst_fileExamples::fileIsWatched()
{
    QProcess process;
    process.start(KYRUN, {"--timeout", "60", SCRIPTS "/watch_file.js", path("dictated.txt")});
    QVERIFY(process.waitForStarted(60000));
    QTest::qWait(300); // it looks before the file is there, or does not even run yet
    QFile file(path("part"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("Gr\xc3\xb6\xc3\x9f"
               "e: 12 mm");
    file.close();
    QVERIFY(file.rename(path("dictated.txt")));
    QVERIFY(process.waitForFinished(90000));
    QCOMPARE(process.readAllStandardError(), QByteArray());
    QCOMPARE(process.readAllStandardOutput(), QByteArray("Gr\xc3\xb6\xc3\x9f"
                                                         "e: 12 mm\n"));
    QCOMPARE(process.exitCode(), 0);
}

void tst_fileExamples::watchEndsWhenNobodyWrites()
{
    const Outcome outcome = run({SCRIPTS "/watch_file.js", path("dictated.txt"), "0.5"});
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.out, QString());
    QVERIFY(outcome.err.contains("Nobody has written " + path("dictated.txt")));
}

void tst_fileExamples::programGoesOnWhenTheClientEnds()
{
    const Outcome outcome = run(
        {"-e", "System.processCmd(Runner.args[0], ['wait', Runner.args[1]])", PROCESS_SAMPLE, path("mark")});
    QCOMPARE(outcome.err, QString());
    QCOMPARE(outcome.status, 0);
    QTRY_VERIFY(QFile::exists(path("mark")));
    const QByteArray stat = "/proc/" + read(path("mark")) + "/stat";
    QTest::qWait(100);
    QVERIFY(QRegularExpression("\\) [RS] ").match(read(stat)).hasMatch());
    QVERIFY(QFile::remove(path("mark")));
    QTRY_VERIFY(!QRegularExpression("\\) [RSD] ").match(read(stat)).hasMatch());
}

void tst_fileExamples::samplesOfTheGuideRun_data()
{
    QTest::addColumn<QString>("sample");
    const QString guide = QString::fromUtf8(read(GUIDE));
    const QRegularExpression block("```js\n(.*?)```", QRegularExpression::DotMatchesEverythingOption);
    int count = 0;
    for (auto blocks = block.globalMatch(guide); blocks.hasNext();)
        QTest::addRow("%d", ++count) << blocks.next().captured(1);
    QVERIFY(count >= 6);
}

void tst_fileExamples::samplesOfTheGuideRun()
{
    QFETCH(QString, sample);
    const Outcome outcome = run({"-e", sample});
    QCOMPARE(outcome.err, QString());
    QCOMPARE(outcome.status, 0);
}

KY_TEST_MAIN(tst_fileExamples)

#include "tst_fileExamples.moc"
